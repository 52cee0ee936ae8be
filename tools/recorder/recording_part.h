// One file of a recording, read. It may be written to meanwhile: each call reads what has been
// committed until then, and holds the file for as long as it takes. Ids are those of this file. One
// thread.
#ifndef TAVMIR_RECORDER_RECORDING_PART_H
#define TAVMIR_RECORDER_RECORDING_PART_H

#include "covered_time.h"
#include "database.h"
#include "recorded_rows.h"
#include "recording_folder.h"

#include <functional>

namespace tavmir::recorder
{

// How a variable stands at a time.
struct Standing {
    RecordedValue value;
    Micros at = 0; // of its last sample, or when it was read
    host::ValueQuality quality;
    Micros qualityAt = 0;
};

class RecordingPart
{
public:
    // Null: `problem` says why in one line without the file's name; empty when it is gone, or has
    // only just been begun.
    static std::unique_ptr<RecordingPart> open(const Member& member, QString& problem);

    quint64 number() const { return number_; }
    Micros began() const { return began_; }
    // As it was when the file was opened.
    Micros coveredUntil() const { return coveredUntil_; }
    const std::vector<NewVariable>& variables() const { return variables_; }
    // What it covers but for its gaps, ascending.
    std::vector<TimeSpan> stretches();
    // The last moment until then that it covers; its beginning where there is none.
    Micros recordedUntil(Micros at);
    // False: the file's time is over by then, or there is a gap.
    bool isRecordedAt(Micros at);
    QByteArray project();
    QString projectName();
    QString about(const QString& key);

    // Those polled at the time, in the order of the list.
    std::vector<VariableId> polledAt(Micros at);
    Standing standingAt(VariableId variable, Micros at);

    // Rows with from <= at < to, ascending by time.
    void samples(VariableId variable, Micros from, Micros to,
                 const std::function<void(const SampleRow&)>& take);
    void qualities(VariableId variable, Micros from, Micros to,
                   const std::function<void(const QualityRow&)>& take);
    // The first `limit` events with from <= at < to.
    std::vector<EventRow> events(Micros from, Micros to, qint64 limit);
    // The last `limit` events with at <= `at`, the latest first.
    std::vector<EventRow> lastEvents(Micros at, size_t limit);
    // Those of these kinds with at <= `until`, ascending.
    std::vector<EventRow> eventsOf(const std::vector<const char*>& kinds, Micros until);
    // Those that say that nothing was recorded.
    std::vector<EventRow> gaps();
    std::vector<MinuteRow> minutes(Micros from, Micros to);

private:
    RecordingPart(std::unique_ptr<Database> database, quint64 number)
        : database_(std::move(database)), number_(number)
    {
    }
    bool readFacts(QString& problem);
    EventRow eventOf(const Statement& row) const;
    QString addressNamed(const QString& name) const;

    std::unique_ptr<Database> database_;
    const quint64 number_;
    Micros began_ = 0;
    Micros coveredUntil_ = 0;
    std::vector<NewVariable> variables_;
};

} // namespace tavmir::recorder

#endif
