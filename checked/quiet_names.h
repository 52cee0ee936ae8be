// Forced into the address parser when it is compiled once more: a parser of its own for the checks,
// which resolves the same texts and writes no diagnostic line, so that the lines of a checked host
// are those of the host's own calls.
#ifndef TAVMIR_CHECKED_QUIET_NAMES_H
#define TAVMIR_CHECKED_QUIET_NAMES_H

#include "core/diagnostic_log.h"

namespace tavmir
{

// Takes a line's payload and drops it.
struct QuietLine {
    template <typename Item> QuietLine& operator<<(const Item&) { return *this; }
};

inline QuietLine quietLine(const char*, const char*, DiagnosticLineNumber, const char*)
{
    return QuietLine();
}

} // namespace tavmir

#define diagnosticLine quietLine
#define get_label_address_info tavmir_quiet_address_info
#define get_label_address_1 tavmir_quiet_address_1
#define get_label_address_2 tavmir_quiet_address_2
#define get_label_address_array_memory_index tavmir_quiet_array_index
#define get_label_address_query tavmir_quiet_query

#endif
