// Event by event.
#include "event_fold.h"

#include <QtCore/QRegularExpression>

namespace tavmir::recorder
{

namespace
{

bool isOf(const EventRow& event, const char* kind)
{
    return event.kind == kind;
}

} // namespace

const std::vector<const char*>& EventFold::kinds()
{
    static const std::vector<const char*> all = {
        event_kind::kBegan,  event_kind::kEnded,   event_kind::kConnected,
        event_kind::kLost,   event_kind::kClosed,  event_kind::kConnectFailed,
        event_kind::kSilent, event_kind::kAnswers, event_kind::kSetAside,
        event_kind::kBack,   event_kind::kPlan,    event_kind::kMissed,
        event_kind::kStorage};
    return all;
}

void EventFold::take(const EventRow& event)
{
    takeLine(event);
    takeAside(event);
}

void EventFold::miss()
{
    *this = EventFold();
}

// Not connected: since the first event that said so, whatever reasons came later.
void EventFold::down(const EventRow& event, bool isLoss)
{
    if (!down_ || (isLoss && isOf(down_->last, event_kind::kBegan))) {
        // An attempt that failed has one before it, unless the connection was lost just now.
        down_ = LinePast{event, event.at, !isLoss && !up_};
    }
    up_.reset();
    line_ = LinePast{event, down_->since, down_->isSinceOr};
}

void EventFold::takeLine(const EventRow& event)
{
    if (isOf(event, event_kind::kBegan) || isOf(event, event_kind::kEnded)) {
        up_.reset();
        line_ = down_ = LinePast{event, event.at};
    } else if (isOf(event, event_kind::kConnected)) {
        down_.reset();
        line_ = up_ = LinePast{event, event.at};
    } else if (isOf(event, event_kind::kAnswers)) {
        down_.reset();
        up_ = LinePast{event, up_ ? up_->since : event.at, !up_ || up_->isSinceOr};
        line_ = up_;
    } else if (isOf(event, event_kind::kSilent)) {
        line_ = LinePast{event, event.at};
    } else if (isOf(event, event_kind::kLost) || isOf(event, event_kind::kClosed)) {
        down(event, true);
    } else if (isOf(event, event_kind::kConnectFailed)) {
        down(event, false);
    } else if (isOf(event, event_kind::kMissed) || isOf(event, event_kind::kStorage)) {
        // It may have been lost meanwhile, or have come back.
        line_.reset();
        up_.reset();
        down_.reset();
    }
}

void EventFold::takeAside(const EventRow& event)
{
    if (isOf(event, event_kind::kSetAside)) {
        polled_.erase(event.subject);
        asides_[event.subject] = {event.text, event.at};
    } else if (isOf(event, event_kind::kBack)) {
        asides_.erase(event.subject);
        polled_.insert(event.subject);
    } else if (isOf(event, event_kind::kPlan)) {
        takePlan(event);
    } else if (isOf(event, event_kind::kBegan)) {
        asides_.clear();
        polled_.clear();
        isWhole_ = true; // a program begins with none
    } else if (isOf(event, event_kind::kMissed) || isOf(event, event_kind::kStorage)) {
        asides_.clear();
        polled_.clear();
        isWhole_ = false;
    }
}

// It says how many are set aside: none, as many as the events before it, or some of them are
// missing.
void EventFold::takePlan(const EventRow& event)
{
    static const QRegularExpression words("of which (\\d+) are refused");
    const QRegularExpressionMatch match = words.match(event.text);
    const size_t count = match.hasMatch() ? match.captured(1).toULong() : asides_.size();
    if (count == 0) {
        asides_.clear();
        polled_.clear();
        isWhole_ = isWhole_ || match.hasMatch();
    } else if (count != asides_.size()) {
        asides_.clear();
        polled_.clear();
        isWhole_ = false;
    }
}

WhetherAside EventFold::isAside(const QString& name) const
{
    if (asides_.count(name) > 0) {
        return WhetherAside::yes;
    }
    return isWhole_ || polled_.count(name) > 0 ? WhetherAside::no : WhetherAside::unknown;
}

} // namespace tavmir::recorder
