// Events of a recording out of the feed: what became of the connection, of operations and of
// variables that are refused. One thread.
#ifndef TAVMIR_RECORDER_LINE_EVENTS_H
#define TAVMIR_RECORDER_LINE_EVENTS_H

#include "feed/value_fold.h"
#include "recorded_rows.h"
#include "recording_clock.h"

namespace tavmir::recorder
{

class LineEvents
{
public:
    explicit LineEvents(const QString& controller) : controller_(controller) {}

    // values  have taken the entry
    void take(const host::FeedEntry& entry, const host::ValueFold& values,
              const RecordingClock& clock, std::vector<EventRow>& events);

private:
    bool isKnown(const host::FeedEntry& entry);
    std::optional<EventRow> eventOf(const host::FeedEntry& entry, const host::ValueFold& values);
    std::optional<EventRow> silenceOf(const host::FeedEntry& entry, const host::ValueFold& values);

    QString controller_;
    QString failure_; // to connect, as it was told last
    bool isConnected_ = false;
    bool isSilent_ = false;
    quint32 generation_ = 0;
};

} // namespace tavmir::recorder

#endif
