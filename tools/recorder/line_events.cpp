// Entries into events.
#include "line_events.h"

#include "project/raw_address.h"

namespace tavmir::recorder
{

namespace
{

using namespace tavmir::host;

// By the distance of its elements.
ElementClass classOf(const OperationEnd& operation)
{
    switch (operation.bitsApart) {
    case 1:
        return ElementClass::bits;
    case 16:
        return ElementClass::words;
    default:
        return ElementClass::doubleWords;
    }
}

// The variable that begins where the operation does; else the address.
QString subjectOf(const OperationEnd& operation, const ValueFold& values)
{
    if (operation.bitsApart == 0) {
        return QString();
    }
    const WireElement place = {classOf(operation), operation.firstAddress,
                               static_cast<quint8>(operation.station)};
    for (const PolledElement& variable : values.variables()) {
        if (wireElements(variable.element, variable.station).front() == place) {
            return project::shownAddress(variable.element);
        }
    }
    const project::DataType type = place.elements == ElementClass::bits ? project::DataType::bit
                                   : place.elements == ElementClass::words
                                       ? project::DataType::word
                                       : project::DataType::dword;
    return project::shownAddress(project::rawElement(type, static_cast<quint32>(place.address)));
}

QString outcomeOf(const FeedEntry& entry)
{
    const OperationEnd& operation = entry.operation;
    QString words = outcomeWord(operation.state);
    if (!entry.text.isEmpty()) {
        words += ": " + entry.text;
    }
    return operation.state == OutcomeState::partial ? QString("%1 (%2 of %3 elements)")
                                                          .arg(words)
                                                          .arg(operation.acknowledged)
                                                          .arg(operation.elements)
                                                    : words;
}

EventRow eventOf(const char* kind, const QString& subject, const QString& text = QString())
{
    return {0, 0, kind, subject, text};
}

} // namespace

void LineEvents::take(const FeedEntry& entry, const ValueFold& values, const RecordingClock& clock,
                      std::vector<EventRow>& events)
{
    for (std::optional<EventRow> event : {eventOf(entry, values), silenceOf(entry, values)}) {
        if (event) {
            event->at = clock.at(entry.at);
            events.push_back(*event);
        }
    }
}

std::optional<EventRow> LineEvents::eventOf(const FeedEntry& entry, const ValueFold& values)
{
    if (isKnown(entry)) {
        return std::nullopt;
    }
    switch (entry.kind) {
    case FeedKind::connected:
        return recorder::eventOf(event_kind::kConnected, controller_);
    case FeedKind::connectFailed:
        return recorder::eventOf(event_kind::kConnectFailed, controller_, entry.text);
    case FeedKind::connectionLost:
        return recorder::eventOf(event_kind::kLost, controller_, entry.text);
    case FeedKind::closed:
        return recorder::eventOf(event_kind::kClosed, controller_);
    case FeedKind::operationEnded:
        return recorder::eventOf(entry.operation.kind == OperationKind::write ? event_kind::kWrite
                                                                              : event_kind::kRead,
                                 subjectOf(entry.operation, values), outcomeOf(entry));
    case FeedKind::elementSetAside:
        return recorder::eventOf(event_kind::kSetAside, entry.variable, entry.text);
    case FeedKind::elementBack:
        return recorder::eventOf(event_kind::kBack, entry.variable);
    case FeedKind::planChanged:
        return recorder::eventOf(event_kind::kPlan, QString(),
                                 QString("%1, of which %2 are refused")
                                     .arg(entry.plan->polled.size())
                                     .arg(entry.plan->setAside.size()));
    default:
        return std::nullopt;
    }
}

// What was told already, or is told again to a reader that missed something.
bool LineEvents::isKnown(const FeedEntry& entry)
{
    switch (entry.kind) {
    case FeedKind::connected: {
        const bool wasConnected = isConnected_;
        isConnected_ = true;
        failure_.clear();
        return entry.standing && wasConnected;
    }
    case FeedKind::connectFailed: {
        const bool isSame = failure_ == entry.text && !entry.text.isEmpty();
        isConnected_ = false;
        failure_ = entry.text;
        return isSame;
    }
    case FeedKind::connectionLost: {
        const bool wasConnected = isConnected_;
        isConnected_ = false;
        return entry.standing && !wasConnected;
    }
    case FeedKind::closed:
        isConnected_ = false;
        return false;
    case FeedKind::planChanged: {
        const bool isSame = generation_ == entry.plan->generation;
        generation_ = entry.plan->generation;
        return isSame && entry.standing;
    }
    default:
        return false;
    }
}

// One lost reply is no news: a request that was given up is.
std::optional<EventRow> LineEvents::silenceOf(const FeedEntry& entry, const ValueFold& values)
{
    const LineHealth& line = values.line();
    if (!isSilent_ && entry.kind == FeedKind::gaveUp && line.isSilent()) {
        isSilent_ = true;
        return recorder::eventOf(event_kind::kSilent, controller_, line.problem());
    }
    if (isSilent_ && line.isAlive()) {
        isSilent_ = false;
        return recorder::eventOf(event_kind::kAnswers, controller_);
    }
    return std::nullopt;
}

} // namespace tavmir::recorder
