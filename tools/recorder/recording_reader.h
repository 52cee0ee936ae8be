// Reads a folder with a recording, also while it is recorded into: nothing is written, and files
// that go meanwhile are left out. Each call opens the files that it needs and closes them again, so
// that the recorder can tidy up. One thread.
#ifndef TAVMIR_RECORDER_RECORDING_READER_H
#define TAVMIR_RECORDER_RECORDING_READER_H

#include "covered_time.h"
#include "recording_part.h"

#include <map>
#include <memory>

namespace tavmir::recorder
{

struct RecordedValueAt {
    RecordedVariable variable;
    Standing standing;
};

class RecordingReader
{
public:
    // Null: there is no such folder, or no recording in it; `problem` says it in one line.
    static std::unique_ptr<RecordingReader> open(const QString& folder, QString& problem);

    // The number of the oldest file; another one when files have gone. 0: there is none.
    quint64 oldest() const;
    // The least beginning of a file; no file is opened for it.
    Micros begin() const;
    // From the least beginning to the greatest end of all files; gaps included.
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
    // Those that reach into the span.
    std::vector<MinuteRow> minutes(TimeSpan span) const;

    // The file that knows what was at that time: of several the one that was recorded last; where
    // none was written then, the one that was written last before it. Null: before everything.
    std::unique_ptr<RecordingPart> partAt(Micros at) const;
    std::unique_ptr<RecordingPart> newestPart() const;

    // Each file that can be read, the oldest first, until `take` returns false. A file that cannot
    // be read is told with its problem instead.
    using TakePart = std::function<bool(RecordingPart& part)>;
    using TakeProblem = std::function<void(const QString& problem)>;
    void parts(const TakePart& take, const TakeProblem& tell = TakeProblem()) const;
    // Those of them that may know something of the span.
    void partsWithin(TimeSpan span, const TakePart& take) const;
    // What is recorded within the span, in the order of time, each moment once: where files lie
    // over each other, the one that was recorded last is told.
    using TakePiece = std::function<void(RecordingPart& part, TimeSpan piece)>;
    void piecesWithin(TimeSpan span, const TakePiece& take) const;

private:
    struct Piece {
        quint64 number = 0; // of the file
        TimeSpan span;
    };

    std::vector<Piece> piecesOf(TimeSpan span) const;
    // Until when a file covers the time; only the newest of the members still grows.
    Micros endOf(const Member& member, const std::vector<Member>& members) const;
    std::unique_ptr<RecordingPart> partOf(quint64 number) const;

    explicit RecordingReader(const std::string& folder) : folder_(folder) {}

    std::string folder_;
    mutable std::map<quint64, Micros> ends_; // by number, of files that do not grow
};

constexpr char kNotRecorded[] = "nothing was recorded at this time";

} // namespace tavmir::recorder

#endif
