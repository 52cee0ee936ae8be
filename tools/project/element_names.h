// What the elements of frames are called and mean in a project, for traces: names by address and
// width, values in the format of the polled entry or of the variable's type, texts as texts.
#ifndef TAVMIR_PROJECT_ELEMENT_NAMES_H
#define TAVMIR_PROJECT_ELEMENT_NAMES_H

#include "address_resolver.h"

#include "wire/frame_words.h"

#include <QtCore/QString>

#include <cstdint>
#include <string>
#include <vector>

namespace tavmir::project
{

class ElementNames
{
public:
    ElementNames() = default;
    // All variables of the project. Of several polled entries for one element the last counts
    // that gives a format which fits.
    explicit ElementNames(const Project& project);

    // A variable, and how its values are shown. Call sort when all are added.
    void add(const Element& element, Format format);
    void sort();

    // "Main.Axis[1].Pos" for a variable of this address and width; "Main.Title+16" for a part of
    // a variable, with its distance in bits; the address itself when no variable covers it.
    QString nameOf(std::uint32_t address, int bits) const;

    // For wire::requestInWords and replyInWords. The words of a text that follow each other are
    // one: Main.Title="Hello". A part of any other variable is a number.
    wire::ElementsInWords describe(const wire::ElementInFrame* first, std::size_t count) const;

private:
    struct Named {
        Element element; // whose address is that of its lowest bit
        int bits;
        Format format;
        std::string name; // the element's, ready for frames
    };
    // The variable that an element is, or the widest near one that covers it; null: none.
    const Named* find(std::uint32_t address, int bits) const;
    static QString nameOf(const Named* named, std::uint32_t address, int bits);
    static wire::ElementsInWords describeText(const Named& text, const wire::ElementInFrame* first,
                                              std::size_t count);

    std::vector<Named> named_; // by address, then wide before narrow
};

} // namespace tavmir::project

#endif
