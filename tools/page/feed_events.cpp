// Entries into events.
#include "feed_events.h"

#include "feed/line_health.h"
#include "moments.h"
#include "project/counted.h"

#include <algorithm>
#include <limits>

namespace tavmir::host
{

namespace
{

ElementClass classOf(int bitsApart)
{
    if (bitsApart == 1) {
        return ElementClass::bits;
    }
    return bitsApart == 16 ? ElementClass::words : ElementClass::doubleWords;
}

} // namespace

void FeedEvents::tell(const FeedEntry& entry, const char* kind, const QString& text, bool bad,
                      const EventSubject& about)
{
    PageEvent event;
    event.at = msOf(entry.wall);
    event.kind = kind;
    event.bad = bad;
    const qint64 second = wholeMsOf(entry.wall) / 1000;
    flood_.tellMore(second, store_);
    if (!flood_.admits(kind, second)) {
        return;
    }
    event.text = text;
    event.variable = about.variable;
    event.address = about.address;
    store_.add(event);
}

void FeedEvents::tellRest(WallClock::time_point now)
{
    tellUntil(std::numeric_limits<double>::infinity());
    flood_.tellMore(wholeMsOf(now) / 1000, store_);
}

void FeedEvents::tellUntil(double at)
{
    const auto later = std::stable_partition(
        waiting_.begin(), waiting_.end(), [at](const Told& told) { return told.event.at <= at; });
    for (auto told = waiting_.begin(); told != later; ++told) {
        forget(told->element);
        store_.add(told->event);
    }
    waiting_.erase(waiting_.begin(), later);
}

void FeedEvents::take(const FeedEntry& entry)
{
    if (entry.kind == FeedKind::planChanged) {
        takePlan(entry);
        return;
    }
    if (entry.standing) {
        return;
    }
    if (!waiting_.empty()) {
        tellUntil(msOf(entry.wall));
    }
    switch (entry.kind) {
    case FeedKind::exchange:
        takeExchange(entry);
        break;
    case FeedKind::gaveUp:
        tell(entry, "gaveUp",
             QString("given up after %1: %2")
                 .arg(project::counted(last_.attempt, "attempt", "attempts"),
                      subjects_.inWords(last_)),
             true, subjects_.onlyOne(last_));
        break;
    case FeedKind::connected:
        failure_ = QString();
        tell(entry, "connected", "connected to " + controller_, false);
        break;
    case FeedKind::connectFailed:
        if (failure_ != entry.text) { // it is tried again and again
            failure_ = entry.text;
            tell(entry, "connectFailed", "cannot connect to " + withController(entry.text), true);
        }
        break;
    case FeedKind::connectionLost:
        failure_ = QString();
        tell(entry, "connectionLost", QString("lost %1: %2").arg(controller_, entry.text), true);
        break;
    case FeedKind::closed:
        tell(entry, "closed", "the host closed the connection", false);
        break;
    case FeedKind::strayBytes:
        takeStray(entry);
        break;
    case FeedKind::operationEnded:
        takeOperation(entry);
        break;
    case FeedKind::elementSetAside:
        tell(entry, "setAside", QString("%1: %2").arg(entry.variable, entry.text), true,
             subjects_.named(entry.variable));
        break;
    case FeedKind::elementBack:
        tell(entry, "back", entry.variable + ": answers again", false,
             subjects_.named(entry.variable));
        break;
    case FeedKind::framesDropped: // each of them was told
    case FeedKind::planChanged:
        break;
    }
}

void FeedEvents::gap(quint64 missed, WallClock::time_point at)
{
    FeedEntry entry;
    entry.wall = at;
    tell(entry, "gap",
         project::counted(missed, "event was", "events were") +
             " missed: what happened meanwhile is not shown",
         true);
}

void FeedEvents::takePlan(const FeedEntry& entry)
{
    const bool isFirst = subjects_.isEmpty();
    if (!subjects_.setPolled(entry.plan->polled)) {
        return; // only other variables are set aside, which are told one by one
    }
    if (!entry.standing && !isFirst) {
        tell(entry, "planChanged",
             project::counted(entry.plan->polled.size(), "variable is", "variables are") +
                 " polled",
             false);
    }
}

void FeedEvents::takeExchange(const FeedEntry& entry)
{
    if (entry.exchange.isGood()) {
        return; // a hundred thousand a second may go through here
    }
    copyExchange(entry.exchange, nullptr, nullptr, last_);
    const EventSubject about = subjects_.onlyOne(last_);
    const auto text = [&] {
        return QString("%1: %2").arg(endInWords(last_, QString()), subjects_.inWords(last_));
    };
    switch (last_.end) {
    case ExchangeEnd::timeout:
    case ExchangeEnd::cut:
        tell(entry, "timeout", text(), true, about);
        break;
    case ExchangeEnd::exception:
        tell(entry, "exception", text(), true, about);
        break;
    case ExchangeEnd::reply:
    case ExchangeEnd::broken:
        tell(entry, "stray", text(), true, about);
        break;
    case ExchangeEnd::lost: // told as the connection's end
    case ExchangeEnd::notSent:
    case ExchangeEnd::suppressed:
    case ExchangeEnd::stopped:
        break;
    }
}

void FeedEvents::takeStray(const FeedEntry& entry)
{
    const QString since = durationText(entry.at - entry.askedAt);
    switch (entry.stray) {
    case Stray::late:
        tell(entry, "late", QString("a reply came too late, %1 after its request").arg(since),
             true);
        break;
    case Stray::duplicate:
        tell(entry, "stray", QString("a reply came once more, %1 after its request").arg(since),
             true);
        break;
    case Stray::foreign:
        tell(entry, "stray", "a frame came that answers no request", true);
        break;
    case Stray::remainder:
        tell(entry, "stray",
             project::counted(entry.received.size(), "byte", "bytes") +
                 " of no whole frame came before the connection ended",
             true);
        break;
    }
}

void FeedEvents::forget(const WireElement& element)
{
    const auto found = toldElsewhere_.find(element);
    if (found != toldElsewhere_.end()) {
        toldElsewhere_.erase(found);
    }
}

void FeedEvents::told(const WireElement& element, const PageEvent& event)
{
    waiting_.push_back({element, event});
}

void FeedEvents::takeOperation(const FeedEntry& entry)
{
    const OperationEnd& ended = entry.operation;
    const WireElement element = {classOf(ended.bitsApart), ended.firstAddress,
                                 static_cast<quint8>(ended.station)};
    const bool isWrite = ended.kind == OperationKind::write;
    if (ended.bitsApart > 0 && toldElsewhere_.count(element) > 0) {
        return;
    }
    Outcome outcome;
    outcome.state = ended.state;
    outcome.reason = entry.text;
    const EventSubject about =
        ended.bitsApart > 0 ? subjects_.at(element, ended.bitsApart) : EventSubject();
    tell(entry, isWrite ? "write" : "read",
         QString("%1 of %2: %3")
             .arg(isWrite ? "write" : "read",
                  about.address.isNull() ? QString("a value") : about.address,
                  outcomeInWords(outcome)),
         ended.state != OutcomeState::done, about);
}

// What failed names its address by itself, unless it is a name that was looked up.
QString FeedEvents::withController(const QString& why) const
{
    return why.startsWith(controller_ + ": ") ? why : controller_ + ": " + why;
}

} // namespace tavmir::host
