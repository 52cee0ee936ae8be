// The table of docs/host-duties.md as the code's table gives it.
#ifndef TAVMIR_TESTS_CHECKED_DUTY_PAGE_H
#define TAVMIR_TESTS_CHECKED_DUTY_PAGE_H

#include "checked/duties.h"

#include <string>

namespace tavmir::checked_tests
{

inline std::string dutyTable()
{
    std::string table =
        "| identifier | the host's duty | what the driver does when it is broken |\n"
        "|---|---|---|\n";
    for (int i = 0; i < checked::kDuties; ++i) {
        const checked::DutyText& row = checked::textOf(static_cast<checked::Duty>(i));
        table +=
            std::string("| `") + row.id + "` | " + row.sentence + " | " + row.otherwise + " |\n";
    }
    return table;
}

} // namespace tavmir::checked_tests

#endif
