// What a check has found, in each output format.
#ifndef TAVMIR_HOST_CHECK_REPORT_H
#define TAVMIR_HOST_CHECK_REPORT_H

#include "plan/overlaps.h"
#include "row_formats.h"
#include "session/project_check.h"

namespace tavmir::host
{

struct CheckReport {
    const std::vector<PolledElement>& polled;
    const CheckResult& result; // one for each polled variable
    std::vector<Overlap> overlaps;
};

// True when every variable answered, alone and in its request.
bool isAllGood(const CheckReport& report);

// One line for each variable, and a heading in front where the format has one.
QStringList checkLines(const CheckReport& report, OutputFormat format);

// What it comes to: how many answered, which stations are silent, which variables overlap. One JSON
// object, {"check": …}, where that is the format.
QStringList checkSummary(const CheckReport& report, OutputFormat format);

} // namespace tavmir::host

#endif
