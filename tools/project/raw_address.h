// Addresses without a variable: "@word:3016" is the word at bit address 3016, "@dword:4000:8" the
// double word at 4000 and the seven behind it. What lies there need not be in the project.
//
// The driver takes address texts of labels only, so that such an element has an address text of its
// own, of a label that every tree of labels holds beside the project's (plan/label_tree.h).
#ifndef TAVMIR_PROJECT_RAW_ADDRESS_H
#define TAVMIR_PROJECT_RAW_ADDRESS_H

#include "address_expansion.h"

namespace tavmir::project
{

constexpr int kMostRawElements = 4096;

// True for texts that mean to be one: no address of a variable begins so.
bool isRawAddress(const QString& text);

// Its elements; or what is wrong with it, and what is allowed.
Expansion rawElements(const QString& text);

// The elements behind what a user names: an address of the project, or one without a variable.
Expansion expandNamed(const Project& project, const QString& text);

// The same for a single element.
Resolution resolveNamed(const Project& project, const QString& text);

// The element as rawElements makes it, by its type and address.
Element rawElement(DataType type, quint32 address);

// The address as a user spells it.
QString shownAddress(const Element& element);

// The label that the driver knows these elements by. It holds, for each name of rawVariables, an
// array with elements one bit apart, of a structure with the one member kRawMember.
constexpr char kRawLabel[] = "~";
constexpr char kRawMember[] = "v";

struct RawVariable {
    QString name;
    DataType type = DataType::word;
    quint32 offset = 0; // of index 0; indices go up to kMostRawIndex
};
constexpr int kMostRawIndex = 0x7FFFFFFF;
std::vector<RawVariable> rawVariables();

} // namespace tavmir::project

#endif
