// Entries into rows.
#include "feed_recording.h"

#include "project/counted.h"
#include "state_words.h"

#include <algorithm>

namespace tavmir::recorder
{

namespace
{

using namespace tavmir::host;

constexpr auto kRepeatEach = std::chrono::minutes(1);
constexpr auto kQualitiesEach = std::chrono::milliseconds(200);

QString keyOf(const RecordedVariable& variable)
{
    return QStringList({variable.address, variable.name, variable.type, variable.format,
                        QString::number(variable.words), QString::number(variable.station)})
        .join('\n');
}

} // namespace

FeedRecording::FeedRecording(const QualityRules& rules, std::chrono::milliseconds every,
                             const RecordingClock& clock)
    : clock_(clock), every_(every), values_(rules), events_(rules.controller)
{
    minutes_.restart(clock.began());
}

void FeedRecording::take(const FeedEntry& entry)
{
    minutes_.take(entry);
    values_.take(entry, [&](size_t place) { valueChanged(place, entry.at); });
    if (entry.kind == FeedKind::planChanged) {
        watch(entry);
    }
    events_.take(entry, values_, clock_, batch_.events);
}

void FeedRecording::gap(quint64 missed, Clock::time_point now)
{
    minutes_.gap(missed);
    values_.gap();
    batch_.events.push_back({clock_.at(now), 0, event_kind::kMissed, QString(),
                             project::counted(missed, "event was", "events were") +
                                 " missed: changes meanwhile are not recorded"});
}

// Another list: what is known of variables that stay in it is kept.
void FeedRecording::watch(const FeedEntry& entry)
{
    QHash<VariableId, Tracked> before;
    for (const Tracked& tracked : tracked_) {
        before.insert(tracked.id, tracked);
    }
    tracked_.clear();
    const Micros at = clock_.at(entry.at);
    for (const PolledElement& variable : values_.variables()) {
        const VariableId id = idOf(variable);
        Tracked tracked = before.value(id);
        tracked.id = id;
        batch_.polled.push_back({at, static_cast<quint32>(tracked_.size()), id});
        tracked_.push_back(tracked);
    }
}

VariableId FeedRecording::idOf(const PolledElement& variable)
{
    const RecordedVariable recorded = recordedVariable(variable);
    const QString key = keyOf(recorded);
    const auto found = ids_.constFind(key);
    if (found != ids_.constEnd()) {
        return *found;
    }
    const auto id = static_cast<VariableId>(ids_.size() + 1);
    ids_.insert(key, id);
    known_.push_back({id, recorded});
    batch_.variables.push_back(known_.back());
    return id;
}

RecordedValue FeedRecording::valueOf(size_t place) const
{
    return recordedValue(values_.variables()[place], values_.value(place).bytes);
}

void FeedRecording::valueChanged(size_t place, Clock::time_point at)
{
    Tracked& tracked = tracked_[place];
    writeHeld(tracked, at);
    if (tracked.hasSample && at - tracked.lastAt < every_) {
        tracked.held = valueOf(place);
    } else {
        writeSample(tracked, valueOf(place), at);
    }
    refreshQuality(place, at);
}

// What waits stands from when its time is over.
void FeedRecording::writeHeld(Tracked& tracked, Clock::time_point at)
{
    if (tracked.held && at - tracked.lastAt >= every_) {
        const RecordedValue value = *tracked.held;
        writeSample(tracked, value, tracked.lastAt + every_);
    }
}

void FeedRecording::writeSample(Tracked& tracked, const RecordedValue& value, Clock::time_point at)
{
    tracked.held.reset();
    tracked.hasSample = true;
    tracked.lastAt = at;
    tracked.lastMicros = std::max(tracked.lastMicros + 1, clock_.at(at));
    batch_.samples.push_back({tracked.id, tracked.lastMicros, value});
}

void FeedRecording::refreshQuality(size_t place, Clock::time_point now)
{
    Tracked& tracked = tracked_[place];
    const ValueQuality quality = values_.quality(place, now);
    if (tracked.isTold && tracked.quality == quality.quality && quality.quality == Quality::good) {
        return;
    }
    const QString reason = withoutDurations(quality.reason);
    if (tracked.isTold && tracked.quality == quality.quality && tracked.reason == reason) {
        return;
    }
    tracked.isTold = true;
    tracked.quality = quality.quality;
    tracked.reason = reason;
    tracked.lastQualityMicros = std::max(tracked.lastQualityMicros + 1, clock_.at(now));
    batch_.qualities.push_back({tracked.id, tracked.lastQualityMicros, quality});
}

void FeedRecording::look(Clock::time_point now)
{
    const bool looksAtQualities = now >= nextQualities_;
    const Clock::duration repeat = std::max<Clock::duration>(kRepeatEach, every_);
    for (size_t place = 0; place < tracked_.size(); ++place) {
        Tracked& tracked = tracked_[place];
        writeHeld(tracked, now);
        if (tracked.hasSample && !tracked.held && now - tracked.lastAt >= repeat) {
            writeSample(tracked, valueOf(place), now);
        }
        if (looksAtQualities) {
            refreshQuality(place, now);
        }
    }
    if (looksAtQualities) {
        nextQualities_ = now + kQualitiesEach;
    }
}

void FeedRecording::end(Clock::time_point now)
{
    for (Tracked& tracked : tracked_) {
        if (tracked.held) {
            const RecordedValue value = *tracked.held;
            writeSample(tracked, value, now);
        }
    }
}

Batch FeedRecording::takeBatch(Clock::time_point now)
{
    batch_.minutes.push_back(minutes_.row(clock_.at(now)));
    Batch taken;
    std::swap(taken, batch_);
    return taken;
}

Batch FeedRecording::standing(Clock::time_point now) const
{
    Batch batch;
    batch.variables = known_;
    const Micros at = clock_.at(now);
    for (size_t place = 0; place < tracked_.size(); ++place) {
        const VariableId id = tracked_[place].id;
        batch.polled.push_back({at, static_cast<quint32>(place), id});
        const FoldedValue value = values_.value(place);
        OpeningRow row;
        row.variable = id;
        row.quality = values_.quality(place, now);
        if (value.readAt) {
            row.value = recordedValue(values_.variables()[place], value.bytes);
            row.readAt = clock_.at(*value.readAt);
        }
        batch.opening.push_back(row);
    }
    return batch;
}

void FeedRecording::tellAll(Clock::time_point now)
{
    batch_ = Batch();
    batch_.variables = known_;
    for (size_t place = 0; place < tracked_.size(); ++place) {
        Tracked& tracked = tracked_[place];
        batch_.polled.push_back({clock_.at(now), static_cast<quint32>(place), tracked.id});
        if (tracked.hasSample) {
            writeSample(tracked, valueOf(place), now);
        }
        tracked.isTold = false;
        refreshQuality(place, now);
    }
}

void FeedRecording::setClock(const RecordingClock& clock, Clock::time_point now)
{
    clock_ = clock;
    minutes_.restart(clock_.at(now));
    for (Tracked& tracked : tracked_) {
        tracked.lastMicros = 0;
        tracked.lastQualityMicros = 0;
    }
}

} // namespace tavmir::recorder
