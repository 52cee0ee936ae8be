// Names the elements of requests for the trace, by their address and width.
#ifndef TAVMIR_CONTROLLER_ELEMENT_NAMES_H
#define TAVMIR_CONTROLLER_ELEMENT_NAMES_H

#include <QtCore/QString>

#include <cstdint>
#include <vector>

namespace tavmir::controller
{

class ElementNames
{
public:
    // A variable, `bits` wide. Call sort when all are added.
    void add(std::uint32_t address, int bits, const QString& name);
    void sort();

    // "Main.Axis[1].Pos" for a variable of this address and width; "Main.Title+16" for a part of
    // a variable, with its distance in bits; the address itself when no variable covers it.
    QString nameOf(std::uint32_t address, int bits) const;

private:
    struct Named {
        std::uint32_t address;
        int bits;
        QString name;
    };
    std::vector<Named> named_; // by address, then wide before narrow
};

} // namespace tavmir::controller

#endif
