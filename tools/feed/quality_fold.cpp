// Entries into troubles, troubles and ages into qualities.
#include "quality_fold.h"

#include "wire/frame_layout.h"

#include <algorithm>

namespace tavmir::host
{

namespace
{

constexpr int kPasses = 3; // that a value may miss

bool writes(const Exchange& exchange)
{
    const wire::FunctionCode* function =
        wire::findFunctionCode(exchange.request[wire::kFunctionOffset]);
    return function != nullptr && function->write;
}

QString failureWords(const ElementTrouble& trouble, size_t ownElements)
{
    return trouble.refused && trouble.inRequestOf > ownElements
               ? QString("in a refused request of %1: %2")
                     .arg(trouble.inRequestOf)
                     .arg(trouble.failure)
               : trouble.failure;
}

} // namespace

QualityFold::QualityFold(const QualityRules& rules)
    : staleAfter_(std::chrono::milliseconds(rules.staleAfterMs)), line_(rules.controller)
{
}

void QualityFold::take(const FeedEntry& entry)
{
    line_.take(entry);
    switch (entry.kind) {
    case FeedKind::exchange:
        takeExchange(entry.exchange);
        break;
    case FeedKind::gaveUp:
        takeGiveUp();
        break;
    case FeedKind::connected:
        pass_.resume(entry.at);
        break;
    case FeedKind::planChanged:
        pass_.restart(wireOrder(entry.plan->polled).size(), entry.at);
        break;
    case FeedKind::operationEnded:
        if (entry.operation.kind == OperationKind::write &&
            entry.operation.state != OutcomeState::done && entry.operation.bitsApart > 0) {
            troubles_.writeEnded(entry);
        }
        break;
    default:
        break;
    }
}

void QualityFold::takeExchange(const Exchange& exchange)
{
    lastFailed_ = false;
    const bool good = exchange.isGood();
    if (good && exchange.kind == RequestKind::poll) {
        pass_.asked(exchange.request[wire::kCountOffset], exchange.endedAt);
        return;
    }
    if (writes(exchange)) {
        troubles_.writeTried(exchange, good ? QString() : endInWords(exchange, line_.problem()));
    } else if (!good) {
        copyExchange(exchange, nullptr, nullptr, failed_);
        lastFailed_ = true;
    }
}

void QualityFold::takeGiveUp()
{
    if (!lastFailed_) {
        return;
    }
    lastFailed_ = false;
    if (failed_.kind == RequestKind::poll) {
        pass_.asked(failed_.request[wire::kCountOffset], failed_.endedAt);
    }
    troubles_.readGivenUp(failed_, endInWords(failed_, line_.problem()));
}

std::optional<ValueQuality> QualityFold::trouble(const std::vector<ReadPlace>& places) const
{
    std::optional<ValueQuality> found;
    Clock::rep newest = 0;
    const auto consider = [&](Clock::rep at, Clock::rep readAt, Quality quality,
                              const QString& reason) {
        if (at > readAt && at > newest) {
            newest = at;
            found = ValueQuality{quality, reason};
        }
    };
    for (const ReadPlace& place : places) {
        const ElementTrouble* trouble = troubles_.find(place.element);
        if (trouble == nullptr) {
            continue;
        }
        const bool named = trouble->refused && trouble->refusedAloneAt > place.readAt;
        if (!trouble->ofLink || line_.isConnected()) {
            consider(trouble->failedAt, place.readAt, Quality::bad,
                     named ? trouble->refusalAlone : failureWords(*trouble, places.size()));
        }
        consider(trouble->writtenAt, place.readAt, Quality::unconfirmed, trouble->writeProblem);
    }
    return found;
}

ValueQuality QualityFold::byAge(Clock::duration age, Clock::time_point now) const
{
    const Clock::duration limit = std::max<Clock::duration>(staleAfter_, kPasses * pass_.length());
    if (!line_.isConnected() || (line_.isSilent() && line_.quietFor(now) > staleAfter_)) {
        return {Quality::stale, line_.words(now)};
    }
    if (age > limit) {
        return {Quality::stale, QString("not read for %1").arg(durationText(age))};
    }
    return {Quality::good, QString()};
}

ValueQuality QualityFold::of(const std::vector<ReadPlace>& places,
                             const std::optional<Clock::time_point>& readAt,
                             Clock::time_point now) const
{
    if (const std::optional<ValueQuality> troubled = trouble(places)) {
        return *troubled;
    }
    if (readAt) {
        return byAge(now - *readAt, now);
    }
    const QString nothing = "no reply has brought it yet";
    return {Quality::never,
            line_.isAlive() ? nothing : QString("%1: %2").arg(nothing, line_.words(now))};
}

} // namespace tavmir::host
