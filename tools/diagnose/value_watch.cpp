// Histories of three readings, and writes that wait for a reading.
#include "value_watch.h"

namespace tavmir::diagnose
{

namespace
{

constexpr std::uint64_t kLeastReadings = 8;
constexpr std::uint64_t kMostShare = 4; // one in so many readings, or it is a value that moves
constexpr std::size_t kMostWritten = 1000;

} // namespace

void ValueWatch::read(const Exchange& exchange, const Attempt& attempt, const Came& reply)
{
    for (const PlaceAndValue& one : elementsOfReply(reply.bytes)) {
        const Sighting now = {one,
                              0,
                              reply.at,
                              attempt.ordinal,
                              exchange.view().transactionId,
                              exchange.requestNumber};
        History& history = histories_[one.place];
        const bool isChange = history.readings > 0 && one.value != history.last;
        const bool isBack = isChange && history.readings > 1 && one.value == history.before;
        if (isBack) {
            history.single.push_back(history.latest);
            history.single.back().other = one.value;
        }
        history.changes += isChange ? 1 : 0;
        ++history.readings;
        history.before = history.last;
        history.last = one.value;
        history.latest = now;

        const auto asked = written_.find(one.place);
        if (asked == written_.end() || asked->second.at > attempt.at) {
            continue;
        }
        if (asked->second.value != one.value) {
            otherwise_.push_back(now);
            otherwise_.back().other = asked->second.value;
        }
        written_.erase(asked);
    }
}

void ValueWatch::forgetOverlapping(const PlaceAndValue& written)
{
    const std::uint64_t begin = written.place.address;
    const std::uint64_t end = begin + static_cast<std::uint64_t>(written.bits);
    for (auto entry = written_.begin(); entry != written_.end();) {
        const std::uint64_t from = entry->first.address;
        const bool overlaps = entry->first.station == written.place.station && from < end &&
                              begin < from + static_cast<std::uint64_t>(entry->second.bits);
        entry = overlaps ? written_.erase(entry) : std::next(entry);
    }
}

void ValueWatch::written(const Exchange& exchange, bool acknowledged, Nanoseconds at)
{
    for (const PlaceAndValue& one : elementsOfRequest(exchange.request)) {
        histories_.erase(one.place); // it moves, and is meant to
        forgetOverlapping(one);
        if (acknowledged && written_.size() < kMostWritten) {
            written_[one.place] = {one.value, one.bits, at};
        }
    }
}

std::vector<Sighting> ValueWatch::thatStandOut() const
{
    std::vector<Sighting> all;
    for (const auto& entry : histories_) {
        const History& history = entry.second;
        // Every change belongs to a single reading: it went there and came back.
        if (history.readings >= kLeastReadings && history.changes == 2 * history.single.size() &&
            history.single.size() * kMostShare <= history.readings) {
            all.insert(all.end(), history.single.begin(), history.single.end());
        }
    }
    return all;
}

} // namespace tavmir::diagnose
