// What the feed carries, as the rows of a recording: values when they change and once a minute,
// qualities when they change, events, and the line's figures by the minute. Knows no file. One
// thread.
#ifndef TAVMIR_RECORDER_FEED_RECORDING_H
#define TAVMIR_RECORDER_FEED_RECORDING_H

#include "feed/value_fold.h"
#include "line_events.h"
#include "minute_figures.h"
#include "recording_clock.h"

#include <QtCore/QHash>

namespace tavmir::recorder
{

class FeedRecording
{
public:
    // every  least time between two samples of one variable; what changed meanwhile is written
    //        as it stands when the time is over
    FeedRecording(const host::QualityRules& rules, std::chrono::milliseconds every,
                  const RecordingClock& clock);

    void take(const host::FeedEntry& entry);
    // So many entries are missing here.
    void gap(quint64 missed, host::Clock::time_point now);
    // What time alone brings: qualities, samples that waited, those of the minute. Some times a
    // second; now: not before the last entry.
    void look(host::Clock::time_point now);
    // Nothing comes any more: what still waits for its time is written.
    void end(host::Clock::time_point now);

    void add(const EventRow& event) { batch_.events.push_back(event); }

    // Rows that wait.
    size_t waiting() const { return batch_.samples.size() + batch_.qualities.size(); }
    // They, with the minute under way.
    Batch takeBatch(host::Clock::time_point now);

    // How everything stands, for a file that begins now.
    Batch standing(host::Clock::time_point now) const;
    // Every value and quality once more: what was to be written before is lost.
    void tellAll(host::Clock::time_point now);

    const RecordingClock& clock() const { return clock_; }
    // Rows count by another clock from now on; none waits.
    void setClock(const RecordingClock& clock, host::Clock::time_point now);

private:
    struct Tracked {
        VariableId id = 0;
        host::Clock::time_point lastAt; // of the last sample
        Micros lastMicros = 0;
        Micros lastQualityMicros = 0;
        std::optional<RecordedValue> held; // waits until `every` is over
        host::Quality quality = host::Quality::never;
        QString reason; // without its durations
        bool isTold = false;
        bool hasSample = false;
    };

    void watch(const host::FeedEntry& entry);
    VariableId idOf(const host::PolledElement& variable);
    void valueChanged(size_t place, host::Clock::time_point at);
    void writeHeld(Tracked& tracked, host::Clock::time_point at);
    void writeSample(Tracked& tracked, const RecordedValue& value, host::Clock::time_point at);
    void refreshQuality(size_t place, host::Clock::time_point now);
    RecordedValue valueOf(size_t place) const;

    RecordingClock clock_;
    const host::Clock::duration every_;
    host::ValueFold values_;
    LineEvents events_;
    MinuteFigures minutes_;
    std::vector<Tracked> tracked_; // as the variables of values_
    std::vector<NewVariable> known_;
    QHash<QString, VariableId> ids_;
    host::Clock::time_point nextQualities_;
    Batch batch_;
};

} // namespace tavmir::recorder

#endif
