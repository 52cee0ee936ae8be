// Reads a folder with a recording, also while it is recorded into: nothing is written, and files
// that go meanwhile are left out. Each call opens the files that it needs and closes them again, so
// that the recorder can tidy up. One thread.
#ifndef TAVMIR_RECORDER_RECORDING_READER_H
#define TAVMIR_RECORDER_RECORDING_READER_H

#include "recording_part.h"

#include <memory>

namespace tavmir::recorder
{

struct TimeSpan {
    Micros from = 0;
    Micros until = 0;
};

struct RecordedValueAt {
    RecordedVariable variable;
    Standing standing;
};

class RecordingReader
{
public:
    // Null: there is no such folder, or no recording in it; `problem` says it in one line.
    static std::unique_ptr<RecordingReader> open(const QString& folder, QString& problem);

    // Where the oldest file begins; no file is opened for it.
    Micros begin() const;
    // From the beginning of the oldest file to the end of the newest; gaps included.
    TimeSpan coverage() const;
    // Each stretch without a gap, ascending.
    std::vector<TimeSpan> stretches() const;

    // All that any file knows, as the newest has them; those of older ones behind.
    std::vector<RecordedVariable> variables() const;

    // The variables polled at the time, in their order. Where nothing was recorded then, as they
    // stood last, not good and with a reason. Empty: before everything.
    std::vector<RecordedValueAt> valuesAt(Micros at) const;
    // The same, of the file that partAt gave.
    static std::vector<RecordedValueAt> valuesAt(RecordingPart& part, Micros at);

    // The last `limit` events until then, that moment included; ascending by time.
    std::vector<EventRow> lastEvents(Micros at, size_t limit) const;
    // The last one that says how the line was; none: nothing before says it.
    std::optional<EventRow> lastLineEvent(Micros at) const;
    // Those that reach into the span.
    std::vector<MinuteRow> minutes(TimeSpan span) const;

    // The file that knows what was at that time; where none was written then, the one before it.
    // Null: before everything.
    std::unique_ptr<RecordingPart> partAt(Micros at) const;
    std::unique_ptr<RecordingPart> newestPart() const;

    // Each file that can be read, the oldest first, until `take` returns false. A file that cannot
    // be read is told with its problem instead.
    using TakePart = std::function<bool(RecordingPart& part)>;
    using TakeProblem = std::function<void(const QString& problem)>;
    void parts(const TakePart& take, const TakeProblem& tell = TakeProblem()) const;
    // Those of them that may know something of the span.
    void partsWithin(TimeSpan span, const TakePart& take) const;

private:
    // Files that begin no later, the newest first.
    void partsBackFrom(Micros at, const TakePart& take) const;

    explicit RecordingReader(const std::string& folder) : folder_(folder) {}

    std::string folder_;
};

constexpr char kNotRecorded[] = "nothing was recorded at this time";

} // namespace tavmir::recorder

#endif
