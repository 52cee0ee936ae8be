// Follows an address text through labels, variables and structures. Private to this folder.
#ifndef TAVMIR_PROJECT_ADDRESS_WALK_H
#define TAVMIR_PROJECT_ADDRESS_WALK_H

#include "address_resolver.h"

namespace tavmir::project
{

// Where an address text leads.
struct AddressWalk {
    int driverCode = 0;
    QString problem;                    // empty: the text is right as far as it goes
    const Variable* variable = nullptr; // the last variable or member named
    quint32 base = 0;                   // its address, without its own index
    QString prefix;                     // the text before its index: "Main.Axis[1].Arr"
    bool openArray = false;             // an array whose index is left out, in the last part
    std::vector<int> indices;           // its indices, when it is indexed
    std::optional<int> bitNumber;
};

AddressWalk walkAddress(const Project& project, const QString& address);

// Bits from one element of an array of `variable` to the next.
quint32 arrayStride(const Project& project, const Variable& variable);

// Row-major index as the driver counts it: a dimension's size is deliberately high - low, so
// that elements of neighbouring rows share an address.
quint32 linearIndex(const ArrayShape& shape, const std::vector<int>& indices);

// An index as the array's radix writes it.
QString indexText(int index, int radix);

// The element of a non-structure variable. `text` becomes its address text.
Element makeElement(const Variable& variable, quint32 address, const QString& text);

} // namespace tavmir::project

#endif
