// How a run shows its values. One view for each output format; the main thread only.
#ifndef TAVMIR_HOST_RUN_VIEW_H
#define TAVMIR_HOST_RUN_VIEW_H

#include "console.h"
#include "row_formats.h"

#include <memory>

namespace tavmir::host
{

// How the line is, in words and as a flag.
struct LineState {
    bool connected = false; // and the last request was answered
    QString words;
};

class RunView
{
public:
    virtual ~RunView() = default;

    // All values as they are now.
    virtual void show(const std::vector<ValueRow>& rows, const LineState& state) = 0;

    // One value that has changed, at the time of the reply that brought it, or whose quality has.
    virtual void change(const ValueRow& row, WallClock::time_point time) = 0;

    // One line beside the values.
    virtual void message(const QString& text) = 0;

    // The closing lines, below everything; `json` instead of `lines` when that is the format.
    virtual void close(const QStringList& lines, const QJsonObject& json) = 0;
};

// everyChange  changes are shown, line by line, and never all values
std::unique_ptr<RunView> makeRunView(OutputFormat format, bool everyChange, Console& console);

} // namespace tavmir::host

#endif
