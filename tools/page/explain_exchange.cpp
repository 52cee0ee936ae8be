// Exchanges in words.
#include "explain_exchange.h"

#include "frames_json.h"
#include "project/counted.h"
#include "wire/frame_layout.h"

namespace tavmir::host
{

namespace
{

// "0.41 ms"
QString msText(Clock::duration duration)
{
    const double ms = std::chrono::duration<double, std::milli>(duration).count();
    return QString("%1 ms").arg(ms, 0, 'f', ms < 1 ? 3 : ms < 100 ? 1 : 0);
}

// Of a variable no exchange of which was found: what is known all the same.
ExplainStep noExchangeStep(const ExplainFacts& facts, const FoundExchanges& found, size_t place)
{
    ExplainStep step = {"exchange", "Last exchange", std::nullopt, QString(), QString()};
    if (!facts.values.line().isConnected()) {
        step.ok = false;
        step.text = "nothing is sent: " + facts.values.line().words(facts.now);
        return step;
    }
    if (found.isAll) {
        step.text = "not asked for yet: its turn will come";
        return step;
    }
    step.text = outOfSight(found);
    const std::optional<Clock::time_point> readAt = facts.values.readAt(place);
    const ValueQuality quality = facts.values.quality(place, facts.now);
    if (readAt) {
        step.text += "; it was read " + agoInWords(facts, *readAt);
    }
    if (quality.quality == Quality::bad) {
        step.ok = false;
        step.text += "; of the one before: " + quality.reason;
    }
    return step;
}

} // namespace

QString outOfSight(const FoundExchanges& found)
{
    return found.last || found.isAll
               ? QString()
               : QString("no request for it is among the last %1")
                     .arg(project::counted(found.lookedThrough, "exchange", "exchanges"));
}

QString agoInWords(const ExplainFacts& facts, Clock::time_point moment)
{
    return durationText(facts.now - moment) + " ago";
}

ExplainStep exchangeStep(const ExplainFacts& facts, const FoundExchanges& found, size_t place)
{
    if (!found.last) {
        return noExchangeStep(facts, found, place);
    }
    const Exchange& exchange = found.last->exchange;
    const QString took = msText(exchange.endedAt - exchange.sentAt);
    QString text =
        exchange.isGood()
            ? QString("answered %1, after %2").arg(agoInWords(facts, exchange.endedAt), took)
            : QString("%1, %2").arg(endInWords(exchange, facts.values.line().problem()),
                                    agoInWords(facts, exchange.endedAt));
    if (exchange.attempt > 1) {
        text += QString(", attempt %1").arg(exchange.attempt);
    }
    QString detail = "> " + bytesInWords(exchange.request, exchange.requestKept());
    if (exchange.answered()) {
        detail += "\n< " + bytesInWords(exchange.reply, exchange.replyKept());
    }
    return {"exchange", "Last exchange", exchange.isGood(), text, detail};
}

ExplainStep bytesStep(const ExplainFacts& facts, const FoundExchanges& found, size_t place)
{
    const std::optional<size_t> at =
        found.lastGood ? offsetInReply(found.lastGood->exchange, *found.element) : std::nullopt;
    if (!at) {
        return {"bytes", "Bytes", std::nullopt, "no reply that is still kept brought any",
                QString()};
    }
    const Exchange& exchange = found.lastGood->exchange;
    const size_t size = wire::findFunctionCode(exchange.request[wire::kFunctionOffset])->valueBytes;
    const unsigned char* value = exchange.reply + *at + wire::kAddressBytes;
    const bool isPart = facts.values.parts(place) > 1;
    return {"bytes", "Bytes", true,
            QString("bytes %1 to %2 of the reply %3: %4%5")
                .arg(*at + wire::kAddressBytes + 1)
                .arg(*at + wire::kAddressBytes + size)
                .arg(agoInWords(facts, exchange.endedAt), bytesInWords(value, size),
                     isPart ? QString(", one of its %1 words")
                                  .arg(facts.values.variables()[place].element.words)
                            : QString()),
            "< " + bytesInWords(exchange.reply, exchange.replyKept())};
}

} // namespace tavmir::host
