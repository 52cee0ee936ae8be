// What came promptly first, then the rest from the end.
#include "exchange_fold.h"

#include <algorithm>

namespace tavmir::diagnose
{

namespace
{

// Two replies within this time, right behind an attempt, are one sent twice; where they differ,
// they had waited behind each other.
constexpr Nanoseconds kTogether = 5 * kMillisecond;
constexpr Nanoseconds kRightBehind = 20 * kMillisecond;

bool isTwin(const Exchange& exchange, std::size_t number)
{
    if (number == 0) {
        return false;
    }
    const Came& before = exchange.came[number - 1];
    const Came& came = exchange.came[number];
    if (before.bytes != came.bytes || came.at - before.at > kTogether) {
        return false;
    }
    for (const Attempt& attempt : exchange.attempts) {
        if (attempt.ordinal > before.behind && attempt.ordinal <= came.behind) {
            return false; // asked again in between: it has its own
        }
    }
    for (const Attempt& attempt : exchange.attempts) {
        if (attempt.ordinal <= before.behind && before.at - attempt.at <= kRightBehind) {
            return true;
        }
    }
    return false;
}

std::size_t sentBy(const Exchange& exchange, std::uint64_t ordinal)
{
    return static_cast<std::size_t>(
        std::count_if(exchange.attempts.begin(), exchange.attempts.end(),
                      [&](const Attempt& attempt) { return attempt.ordinal <= ordinal; }));
}

// The attempt that the reply is right behind of, or kNothing.
//   place  in single
std::size_t promptlyAnswered(const Exchange& exchange, const std::vector<std::size_t>& single,
                             std::size_t place)
{
    const Came& came = exchange.came[single[place]];
    if (place + 1 < single.size() && exchange.came[single[place + 1]].at - came.at <= kTogether) {
        return kNothing;
    }
    const std::size_t sent = sentBy(exchange, came.behind);
    const bool isPrompt = sent > 0 && came.at - exchange.attempts[sent - 1].at <= kRightBehind;
    return isPrompt ? sent - 1 : kNothing;
}

} // namespace

Pairing pairUp(const Exchange& exchange)
{
    Pairing pairing;
    const std::size_t attempts = exchange.attempts.size();
    pairing.replyOf.assign(attempts, kNothing);
    std::vector<std::size_t> single;
    for (std::size_t i = 0; i < exchange.came.size(); ++i) {
        const bool isTooMany = single.size() == sentBy(exchange, exchange.came[i].behind);
        (isTooMany || isTwin(exchange, i) ? pairing.duplicates : single).push_back(i);
    }
    std::vector<std::size_t> rest;
    for (std::size_t i = 0; i < single.size(); ++i) {
        const std::size_t attempt = promptlyAnswered(exchange, single, i);
        if (attempt != kNothing && pairing.replyOf[attempt] == kNothing) {
            pairing.replyOf[attempt] = single[i];
        } else {
            rest.push_back(single[i]);
        }
    }
    std::size_t free = attempts;
    for (std::size_t left = rest.size(); left > 0; --left) {
        const std::uint64_t behind = exchange.came[rest[left - 1]].behind;
        const auto canAnswer = [&](std::size_t attempt) {
            return pairing.replyOf[attempt] == kNothing &&
                   exchange.attempts[attempt].ordinal <= behind;
        };
        while (free > 0 && !canAnswer(free - 1)) {
            --free;
        }
        if (free == 0) {
            break;
        }
        pairing.replyOf[--free] = rest[left - 1];
    }
    return pairing;
}

bool nothingCameDuring(const Exchange& exchange, const Attempt& attempt)
{
    return std::none_of(exchange.came.begin(), exchange.came.end(),
                        [&](const Came& came) { return came.behind == attempt.ordinal; });
}

bool cameLate(const Attempt& attempt, const Came& reply)
{
    return reply.behind > attempt.ordinal;
}

} // namespace tavmir::diagnose
