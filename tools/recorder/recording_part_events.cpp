// Events of a file, and the time that it covers but for its gaps.
#include "recording_part.h"

#include <QtCore/QStringList>

#include <algorithm>

namespace tavmir::recorder
{

namespace
{

// The subject is a variable as the polled list names it; of the others it is an address already.
bool isOfNamed(const QString& kind)
{
    return kind == event_kind::kSetAside || kind == event_kind::kBack;
}

bool isOfAddress(const QString& kind)
{
    return kind == event_kind::kWrite || kind == event_kind::kRead;
}

EventRow rowOf(const Statement& row)
{
    return {row.number(0), row.isNull(1) ? 0 : row.number(1), row.text(2), row.text(3),
            row.text(4)};
}

} // namespace

EventRow RecordingPart::eventOf(const Statement& row) const
{
    EventRow event = rowOf(row);
    if (isOfAddress(event.kind)) {
        event.address = event.subject;
    } else if (isOfNamed(event.kind)) {
        event.address = addressNamed(event.subject);
    }
    return event;
}

// Of variables with the same name it is the first, as where it runs.
QString RecordingPart::addressNamed(const QString& name) const
{
    const auto found =
        std::find_if(variables_.begin(), variables_.end(),
                     [&](const NewVariable& row) { return row.variable.name == name; });
    if (found != variables_.end()) {
        return found->variable.address;
    }
    const bool isAddress =
        std::any_of(variables_.begin(), variables_.end(),
                    [&](const NewVariable& row) { return row.variable.address == name; });
    return isAddress ? name : QString();
}

std::vector<EventRow> RecordingPart::events(Micros from, Micros to, qint64 limit)
{
    Statement rows = database_->prepare("SELECT at, until, kind, subject, text FROM event "
                                        "WHERE at >= ? AND at < ? ORDER BY at, id LIMIT ?");
    rows.bind(1, from);
    rows.bind(2, to);
    rows.bind(3, limit);
    std::vector<EventRow> events;
    while (rows.step()) {
        events.push_back(eventOf(rows));
    }
    return events;
}

std::vector<EventRow> RecordingPart::lastEvents(Micros at, size_t limit)
{
    Statement rows = database_->prepare("SELECT at, until, kind, subject, text FROM event "
                                        "WHERE at <= ? ORDER BY at DESC, id DESC LIMIT ?");
    rows.bind(1, at);
    rows.bind(2, static_cast<qint64>(limit));
    std::vector<EventRow> events;
    while (rows.step()) {
        events.push_back(eventOf(rows));
    }
    return events;
}

std::vector<EventRow> RecordingPart::eventsOf(const std::vector<const char*>& kinds, Micros until)
{
    QStringList places;
    for (size_t i = 0; i < kinds.size(); ++i) {
        places << "?";
    }
    Statement rows =
        database_->prepare(QString("SELECT at, until, kind, subject, text FROM event WHERE at <= ? "
                                   "AND kind IN (%1) ORDER BY at, id")
                               .arg(places.join(','))
                               .toUtf8());
    rows.bind(1, until);
    int place = 2;
    for (const char* kind : kinds) {
        rows.bind(place++, QString(kind));
    }
    std::vector<EventRow> events;
    while (rows.step()) {
        events.push_back(rowOf(rows));
    }
    return events;
}

std::vector<EventRow> RecordingPart::gaps()
{
    Statement rows = database_->prepare(
        "SELECT at, until, kind, subject, text FROM event WHERE kind = ? ORDER BY at, id");
    rows.bind(1, QString(event_kind::kGap));
    std::vector<EventRow> gaps;
    while (rows.step()) {
        gaps.push_back(eventOf(rows));
    }
    return gaps;
}

std::vector<TimeSpan> RecordingPart::stretches()
{
    std::vector<TimeSpan> spans;
    const auto add = [&](Micros from, Micros until) {
        if (until > from) {
            spans.push_back({from, until});
        }
    };
    Micros from = began_;
    for (const EventRow& gap : gaps()) {
        add(from, std::min(gap.at, coveredUntil_));
        from = std::max(from, gap.until);
    }
    add(from, coveredUntil_);
    return spans;
}

Micros RecordingPart::recordedUntil(Micros at)
{
    Micros until = began_;
    for (const TimeSpan& span : stretches()) {
        if (span.from <= at) {
            until = std::min(at, span.until);
        }
    }
    return until;
}

bool RecordingPart::isRecordedAt(Micros at)
{
    return recordedUntil(at) == at;
}

} // namespace tavmir::recorder
