// How a run shows its values. One view for each output format; the main thread only.
#ifndef TAVMIR_HOST_RUN_VIEW_H
#define TAVMIR_HOST_RUN_VIEW_H

#include "console.h"
#include "feed/recent_figures.h"
#include "row_formats.h"

#include <memory>

namespace tavmir::host
{

// How the recording is; without words nothing is recorded.
struct RecordingStrip {
    QString words;
    bool isFailing = false;
};

// How the line is, in words and as a flag, and how it has been lately.
struct LineState {
    bool connected = false; // and the last request was answered
    QString words;
    RecentLine recent = RecentLine();
    RecordingStrip recording = RecordingStrip();
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

    // True where the table stays in its place, so that a line above it would not be seen.
    virtual bool staysInPlace() const { return false; }

    // Looks at what is typed where the values are shown, and answers it. False: that the run is to
    // end.
    virtual bool look() { return true; }

    // Gives lines that are typed there, as standard input would; -1: none are taken there.
    virtual int commands() const { return -1; }

    // No value comes any more; what follows are messages and the closing lines.
    virtual void leave() {}

    // The closing lines, below everything; `json` instead of `lines` when that is the format.
    virtual void close(const QStringList& lines, const QJsonObject& json) = 0;
};

// lineByLine     what is shown stays where it is: no table that is drawn anew in its place
// takesCommands  lines of the operator are wanted
std::unique_ptr<RunView> makeRunView(OutputFormat format, bool lineByLine, bool takesCommands,
                                     Console& console);

} // namespace tavmir::host

#endif
