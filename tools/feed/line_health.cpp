// Link events and the ends of exchanges.
#include "line_health.h"

namespace tavmir::host
{

namespace
{

// Refusals count as the line's state when they go on for this long and nothing good comes between
// them: one that is tried again between slow passes says nothing of the others.
constexpr auto kRefusesFor = std::chrono::seconds(2);

} // namespace

QString durationText(Clock::duration duration)
{
    const auto ms = std::chrono::duration_cast<std::chrono::milliseconds>(duration).count();
    if (ms < 1000) {
        return QString("%1 ms").arg(ms);
    }
    if (ms < 60000) {
        return QString("%1 s").arg(static_cast<double>(ms) / 1000, 0, 'f', 1);
    }
    return QString("%1 min").arg(ms / 60000);
}

LineHealth::LineHealth(const QString& controller) : controller_(controller) {}

void LineHealth::take(const FeedEntry& entry)
{
    switch (entry.kind) {
    case FeedKind::exchange:
        takeExchange(entry.exchange);
        break;
    case FeedKind::connected:
        connected_ = true;
        wasConnected_ = true;
        heard_ = false;
        goodOnThis_ = false;
        refusal_ = 0;
        silence_ = QString();
        heardAt_ = entry.at;
        break;
    case FeedKind::connectFailed:
    case FeedKind::connectionLost:
        connected_ = false;
        disconnection_ = entry.text;
        break;
    default:
        break;
    }
}

void LineHealth::takeExchange(const Exchange& exchange)
{
    if (!exchange.answered()) {
        takeSilence(exchange);
        return;
    }
    heardAt_ = exchange.endedAt;
    heard_ = true;
    if (!silence_.isNull()) {
        silence_ = QString();
    }
    if (exchange.isGood()) {
        goodOnThis_ = true;
        refusal_ = 0;
    } else {
        refusedSince_ = refusal_ == 0 ? exchange.endedAt : refusedSince_;
        refusedAt_ = exchange.endedAt;
        refusal_ = exchange.exceptionCode;
    }
}

void LineHealth::takeSilence(const Exchange& exchange)
{
    // What ends the connection is told as its loss; what never left says nothing about the line.
    if (exchange.end == ExchangeEnd::timeout) {
        silence_ = endInWords(exchange, QString());
    }
}

bool LineHealth::isRefusing() const
{
    return isAlive() && refusal_ != 0 && (!goodOnThis_ || refusedAt_ - refusedSince_ > kRefusesFor);
}

// What failed names its address by itself, unless it is a name that was looked up.
QString LineHealth::withController(const QString& why) const
{
    return why.startsWith(controller_ + ": ") ? why : controller_ + ": " + why;
}

QString LineHealth::words(Clock::time_point now) const
{
    if (!connected_) {
        return "not connected to " + withController(disconnection_);
    }
    if (isSilent()) {
        return heard_ ? QString("no reply from %1 for %2: %3")
                            .arg(controller_, durationText(quietFor(now)), silence_)
                      : QString("no reply from %1 yet: %2").arg(controller_, silence_);
    }
    if (isRefusing()) {
        return QString("connected to %1, which refuses what it is asked: %2")
            .arg(controller_, exceptionInWords(refusal_));
    }
    return "connected to " + controller_;
}

} // namespace tavmir::host
