// Addresses that the controller does not have: requests that touch them are answered with an
// exception. Rules come from texts, "word:3000-3099=2" or "Main.Axis=2".
#ifndef TAVMIR_CONTROLLER_REFUSED_ADDRESSES_H
#define TAVMIR_CONTROLLER_REFUSED_ADDRESSES_H

#include "request.h"

#include "project/project_model.h"

#include <QtCore/QString>

#include <cstdint>
#include <optional>
#include <vector>

namespace tavmir::controller
{

// Bits of memory, first and last included, and the requests that may not touch them.
struct RefusedRange {
    std::uint32_t from = 0;
    std::uint32_t to = 0;
    std::optional<wire::ElementClass> elements; // none: requests of any class
    std::uint8_t code = 0;
};

// A rule as it was given: a range, or an address text that only a project makes one.
struct RefuseRule {
    RefusedRange range;
    QString variable; // not empty: `range` has only the code yet
};

// "CLASS:FROM-TO=CODE" or "CLASS:AT=CODE" with CLASS bit, word, dword or any, bit addresses, and
// CODE from 1 to 255; else "ADDRESS=CODE". Nothing when it is neither; `problem` then says why.
std::optional<RefuseRule> parseRefuseRule(const QString& text, QString* problem);

// The ranges of all rules in their order; an array or a structure refuses all of its elements.
// Nothing when an address is none of the project's (null: there is no project).
std::optional<std::vector<RefusedRange>> refusedRanges(const std::vector<RefuseRule>& rules,
                                                       const project::Project* project,
                                                       QString* problem);

// The exception code of the first range that an element of a well-formed request touches with
// any of its bits; 0: none.
std::uint8_t refusalOf(const std::vector<RefusedRange>& ranges, const Request& request);

} // namespace tavmir::controller

#endif
