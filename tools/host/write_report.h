// How a write went, in each output format; and what a look at what stands there afterwards makes of
// it.
#ifndef TAVMIR_HOST_WRITE_REPORT_H
#define TAVMIR_HOST_WRITE_REPORT_H

#include "assignment.h"
#include "row_formats.h"

namespace tavmir::host
{

// What was read after the write.
struct ReadBack {
    ValueRow row;         // without a value: it could not be read
    QByteArray bytes;     // of the value
    bool asAsked = false; // the value that was to be written stands there
};

struct WriteReport {
    Outcome outcome;
    std::optional<ReadBack> readBack; // none: nobody asked
};

// The value that was asked for stands there: what was in doubt is done. What the controller refused
// or nobody sent stays so, whatever stands there.
Outcome settled(const Outcome& written, const ReadBack& readBack);

// True when nothing that was asked for is left undone.
bool isDone(const WriteReport& report);

// "Main.Setpoint = 5: written", "Main.Setpoint = 5: unknown: the controller did not answer within
// 500 ms; 7 stands there".
QString writeLine(const Assignment& assignment, const WriteReport& report);

// {"address", "asked", "outcome", "reason", "elements", "acknowledged"}, and "readBack" with what
// jsonOf says of the value that stands there.
QJsonObject writeJson(const Assignment& assignment, const WriteReport& report);

// "time,address,asked,outcome,reason,elements,acknowledged,stands_there,quality,read_reason".
QString writeCsvHeading();
QString writeCsv(const Assignment& assignment, const WriteReport& report, const QString& time);

} // namespace tavmir::host

#endif
