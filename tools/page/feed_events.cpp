// Entries into events.
#include "feed_events.h"

#include "feed/line_health.h"
#include "moments.h"
#include "wire/frame_layout.h"

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

bool isSame(const std::vector<PolledElement>& left, const std::vector<PolledElement>& right)
{
    if (left.size() != right.size()) {
        return false;
    }
    for (size_t i = 0; i < left.size(); ++i) {
        if (left[i].name != right[i].name ||
            left[i].element.addressText != right[i].element.addressText) {
            return false;
        }
    }
    return true;
}

} // namespace

void FeedEvents::tell(const FeedEntry& entry, const char* kind, const QString& text, bool bad,
                      const QString& variable, const QString& address)
{
    PageEvent event;
    event.at = msOf(entry.wall);
    event.kind = kind;
    event.bad = bad;
    tellRest(entry.wall);
    OfAKind& ofKind = kinds_[kind];
    const qint64 second = wholeMsOf(entry.wall) / 1000;
    if (second != ofKind.second) {
        ofKind = {second, 0, 0};
    }
    if (++ofKind.told > kMostOfAKind) {
        ++ofKind.more;
        return;
    }
    event.text = text;
    event.variable = variable;
    event.address = address;
    store_.add(event);
}

void FeedEvents::tellRest(WallClock::time_point now)
{
    for (auto& [kind, ofKind] : kinds_) {
        if (ofKind.more == 0 || ofKind.second == wholeMsOf(now) / 1000) {
            continue;
        }
        PageEvent event;
        event.at = static_cast<double>(ofKind.second * 1000 + 999);
        event.kind = kind.c_str();
        event.text = QString("%1 more of this kind within a second").arg(ofKind.more);
        event.bad = true;
        store_.add(event);
        ofKind.more = 0;
    }
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
    switch (entry.kind) {
    case FeedKind::exchange:
        takeExchange(entry);
        break;
    case FeedKind::gaveUp:
        tell(entry, "gaveUp",
             QString("given up after %1 %2: %3")
                 .arg(last_.attempt)
                 .arg(last_.attempt == 1 ? "attempt" : "attempts", subjectOf(last_)),
             true, onlyName(last_), onlyName(last_));
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
             entry.variable);
        break;
    case FeedKind::elementBack:
        tell(entry, "back", entry.variable + ": answers again", false, entry.variable);
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
    tell(entry, "gap", QString("%1 events were missed: what they held is not shown").arg(missed),
         true);
}

void FeedEvents::takePlan(const FeedEntry& entry)
{
    if (isSame(entry.plan->polled, polled_)) {
        return; // only other variables are set aside, which are told one by one
    }
    polled_ = entry.plan->polled;
    if (!entry.standing) {
        tell(entry, "planChanged", QString("%1 variables are polled").arg(polled_.size()), false);
    }
}

void FeedEvents::takeExchange(const FeedEntry& entry)
{
    copyExchange(entry.exchange, nullptr, nullptr, last_);
    const QString name = onlyName(last_);
    const auto text = [&] {
        return QString("%1: %2").arg(endInWords(last_, QString()), subjectOf(last_));
    };
    switch (last_.end) {
    case ExchangeEnd::timeout:
    case ExchangeEnd::cut:
    case ExchangeEnd::broken:
        tell(entry, "timeout", text(), true, name, name);
        break;
    case ExchangeEnd::exception:
        tell(entry, "exception", text(), true, name, name);
        break;
    case ExchangeEnd::reply:
        if (!last_.isGood()) {
            tell(entry, "stray", text(), true, name, name);
        }
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
             QString("%1 bytes of no whole frame were left when the connection ended")
                 .arg(entry.received.size()),
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
    forget(element);
    store_.add(event);
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
    QString name;
    if (ended.bitsApart > 0) {
        name = names_.nameOf(static_cast<quint32>(ended.firstAddress), ended.bitsApart);
    }
    tell(entry, isWrite ? "write" : "read",
         QString("%1 of %2: %3")
             .arg(isWrite ? "write" : "read", name.isNull() ? QString("a value") : name,
                  outcomeInWords(outcome)),
         ended.state != OutcomeState::done, name, name);
}

QString FeedEvents::subjectOf(const Exchange& exchange) const
{
    const auto* function = wire::findFunctionCode(exchange.request[wire::kFunctionOffset]);
    if (function == nullptr || exchange.requestKept() < wire::kHeaderBytes + wire::kAddressBytes) {
        return "a request";
    }
    const int count = exchange.request[wire::kCountOffset];
    const QString first = names_.nameOf(wire::bigEndian32(exchange.request + wire::kHeaderBytes),
                                        function->valueBits);
    return count == 1
               ? QString("%1, station %2").arg(first).arg(exchange.request[wire::kStationOffset])
               : QString("%1 %2 of station %3 from %4 on")
                     .arg(count)
                     .arg(wire::elementsName(function->elements))
                     .arg(exchange.request[wire::kStationOffset])
                     .arg(first);
}

QString FeedEvents::onlyName(const Exchange& exchange) const
{
    const auto* function = wire::findFunctionCode(exchange.request[wire::kFunctionOffset]);
    const bool isOne = function != nullptr && exchange.request[wire::kCountOffset] == 1 &&
                       exchange.requestKept() >= wire::kHeaderBytes + wire::kAddressBytes;
    return isOne ? names_.nameOf(wire::bigEndian32(exchange.request + wire::kHeaderBytes),
                                 function->valueBits)
                 : QString();
}

// What failed names its address by itself, unless it is a name that was looked up.
QString FeedEvents::withController(const QString& why) const
{
    return why.startsWith(controller_ + ": ") ? why : controller_ + ": " + why;
}

} // namespace tavmir::host
