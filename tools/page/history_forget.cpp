// What was kept of times that come once more, as the clock was set back.
#include "history_store.h"
#include "packed_numbers.h"

#include <algorithm>

namespace tavmir::host
{

void HistoryStore::forgetLater(qint64 now)
{
    from_ = std::min(from_, now);
    std::vector<Forgotten> forgotten;
    forgotten.reserve(tracks_.size());
    for (Track& track : tracks_) {
        forgotten.push_back(forgetLater(track, now));
    }
    std::vector<Forgotten> left = forgotten;
    const auto isForgotten = [&left](const Droppable& one) {
        size_t& count = one.isGap ? left[one.track].gaps : left[one.track].blocks;
        return count > 0 && count-- > 0;
    };
    const auto kept = std::remove_if(droppable_.rbegin(), droppable_.rend(), isForgotten);
    droppable_.erase(droppable_.begin(), kept.base());
    for (size_t track = 0; track < tracks_.size(); ++track) {
        if (forgotten[track].standing) {
            addSample(track, now, *forgotten[track].standing);
        }
    }
}

HistoryStore::Forgotten HistoryStore::forgetLater(Track& track, qint64 now)
{
    Forgotten forgotten;
    forgotten.gaps = forgetLaterGaps(track.gaps, now);
    if (track.isEmpty || track.newest.lastAt <= now) {
        return forgotten;
    }
    forgotten.standing = track.newest.lastNumber;
    for (; !track.isEmpty && track.newest.firstAt > now; ++forgotten.blocks) {
        forgetNewestBlock(track);
    }
    if (!track.isEmpty) {
        cut(track.newest, now);
    }
    return forgotten;
}

void HistoryStore::forgetNewestBlock(Track& track)
{
    bytes_ -= kOverhead + track.newest.differences.capacity();
    {
        const Block gone(std::move(track.newest)); // with its memory
    }
    track.newest = Block();
    track.isEmpty = track.older.empty();
    if (track.isEmpty) {
        return;
    }
    const size_t before = track.older.bytes();
    track.newest = std::move(track.older.back());
    track.older.pop_back();
    bytes_ -= before - track.older.bytes();
}

// Of a block that begins no later than now.
void HistoryStore::cut(Block& block, qint64 now)
{
    const char* const begin = block.differences.data();
    const char* const end = begin + block.differences.size();
    const char* kept = begin;
    qint64 at = block.firstAt;
    quint32 number = block.firstNumber;
    block.low = std::numeric_limits<double>::quiet_NaN();
    block.high = block.low;
    for (const char* byte = begin; at <= now;) {
        block.lastAt = at;
        block.lastNumber = number;
        count(block, number);
        kept = byte;
        if (byte == end) {
            break;
        }
        at += static_cast<qint64>(takePacked(byte));
        number += unfolded(static_cast<quint32>(takePacked(byte)));
    }
    block.differences.resize(static_cast<size_t>(kept - begin));
}

// How many there were. What still holds does so from now on, where it began later.
size_t HistoryStore::forgetLaterGaps(FrontRow<HistoryGap>& gaps, qint64 now)
{
    std::optional<HistoryGap> holds;
    if (!gaps.empty() && gaps.back().to == kOpen) {
        holds = gaps.back();
        holds->from = std::min(holds->from, now);
        gaps.pop_back();
    }
    size_t forgotten = 0;
    for (; !gaps.empty() && gaps.back().from > now; ++forgotten) {
        bytes_ -= bytesOf(gaps.back());
        gaps.pop_back();
    }
    if (!gaps.empty()) {
        gaps.back().to = std::min(gaps.back().to, now);
    }
    if (holds) {
        gaps.push_back(*holds);
    }
    return forgotten;
}

} // namespace tavmir::host
