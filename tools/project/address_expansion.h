// Lists the elements behind an address that names more than one: an array without index, a
// structure, an array of structures, or `count` neighbours from an indexed element on.
#ifndef TAVMIR_PROJECT_ADDRESS_EXPANSION_H
#define TAVMIR_PROJECT_ADDRESS_EXPANSION_H

#include "address_resolver.h"

namespace tavmir::project
{

struct Expansion {
    bool ok = false;
    std::vector<Element> elements; // in declaration and index order, each with its own text
    QString problem;
};

// count  1, or for an address whose last part is indexed the number of elements along its
//        last dimension; it may not pass the high bound.
Expansion expandAddress(const Project& project, const QString& address, int count = 1);

// Every element of every label, in declaration order.
std::vector<Element> leafElements(const Project& project);

} // namespace tavmir::project

#endif
