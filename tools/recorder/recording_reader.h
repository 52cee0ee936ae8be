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

// What a variable did within a part of a time span.
struct HistoryBucket {
    quint64 count = 0; // samples
    // Of them; none of texts, or without any.
    std::optional<double> min;
    std::optional<double> max;
    RecordedValue last;
};

// Its value was not good, or was not recorded, from then until then.
struct NotGood {
    TimeSpan span;
    host::ValueQuality quality;
};

struct RecordedHistory {
    bool isKnown = false; // the recording has such a variable
    RecordedVariable variable;
    RecordedValue before; // as it stood where the span begins
    std::vector<HistoryBucket> buckets;
    std::vector<NotGood> notGood; // ascending
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

    // Of the newest file.
    QByteArray project() const;
    QString controller() const;
    // All that any file knows, as the newest has them; those of older ones behind.
    std::vector<RecordedVariable> variables() const;

    // address  or the name of a variable
    // buckets  1 or more, into which the span is divided evenly
    RecordedHistory history(const QString& address, TimeSpan span, size_t buckets) const;

    // The variables polled at the time, in their order. Where nothing was recorded then, as they
    // stood last, not good and with a reason. Empty: before everything.
    std::vector<RecordedValueAt> valuesAt(Micros at) const;

    // The first `limit` events within the span.
    std::vector<EventRow> events(TimeSpan span, size_t limit) const;
    std::vector<MinuteRow> minutes(TimeSpan span) const;

    // Each file that can be read, the oldest first, until `take` returns false. A file that cannot
    // be read is told with its problem instead.
    using TakePart = std::function<bool(RecordingPart& part)>;
    using TakeProblem = std::function<void(const QString& problem)>;
    void parts(const TakePart& take, const TakeProblem& tell = TakeProblem()) const;
    // Those of them that may know something of the span.
    void partsWithin(TimeSpan span, const TakePart& take) const;

private:
    explicit RecordingReader(const std::string& folder) : folder_(folder) {}

    std::string folder_;
};

constexpr char kNotRecorded[] = "nothing was recorded at this time";

} // namespace tavmir::recorder

#endif
