// Samples packed, dropped and found again.
#include "history_store.h"

#include "packed_numbers.h"
#include "sample_buckets.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace tavmir::host
{

namespace
{

constexpr size_t kBlockBytes = 480;
constexpr size_t kLongestSample = 15; // ten bytes of time, five of the number
// What still stands is kept when it is the oldest. So many are looked at for one sample, the others
// for the next: no sample waits for a round of all.
constexpr int kMostKept = 16;

} // namespace

size_t HistoryStore::addTrack(NumberShape shape)
{
    tracks_.emplace_back();
    tracks_.back().shape = shape;
    bytes_ += sizeof(Track);
    return tracks_.size() - 1;
}

void HistoryStore::setShape(size_t track, NumberShape shape)
{
    tracks_[track].shape = shape;
}

void HistoryStore::beginBlock(size_t track, qint64 at, quint32 number)
{
    Track& one = tracks_[track];
    if (!one.isEmpty) {
        const size_t before = one.older.bytes();
        one.older.push_back(std::move(one.newest));
        bytes_ += one.older.bytes() - before;
    }
    {
        const Block dropped(std::move(one.newest)); // its memory goes, where it did not move
    }
    one.newest = Block();
    one.isEmpty = false;
    one.newest.firstAt = at;
    one.newest.lastAt = at;
    one.newest.firstNumber = number;
    one.newest.lastNumber = number;
    one.newest.shape = one.shape;
    count(one.newest, number);
    bytes_ += kOverhead + one.newest.differences.capacity();
    droppable_.push_back({track, false});
}

void HistoryStore::count(Block& block, quint32 number)
{
    const double value = numberOf(block.shape, number);
    if (value < block.low || std::isnan(block.low)) {
        block.low = value;
    }
    if (value > block.high || std::isnan(block.high)) {
        block.high = value;
    }
}

size_t HistoryStore::bytesOf(const HistoryGap& gap)
{
    return sizeof(HistoryGap) + kOverhead + 2 * static_cast<size_t>(gap.reason.size());
}

void HistoryStore::addSample(size_t track, qint64 at, quint32 number)
{
    Track& one = tracks_[track];
    Block& block = one.newest;
    const qint64 later = one.isEmpty ? at : std::max(at, block.lastAt);
    const bool isFull = block.differences.size() + kLongestSample > kBlockBytes;
    if (one.isEmpty || isFull || block.shape != one.shape) {
        beginBlock(track, later, number);
    } else {
        const size_t before = block.differences.capacity();
        appendPacked(block.differences, static_cast<quint64>(later - block.lastAt));
        appendPacked(block.differences, folded(number - block.lastNumber));
        block.lastAt = later;
        block.lastNumber = number;
        count(block, number);
        bytes_ += block.differences.capacity() - before;
    }
    for (int kept = 0; bytes_ > mostBytes_ && droppable_.size() > 1 && kept < kMostKept;) {
        const size_t before = bytes_;
        dropOldest();
        kept += bytes_ < before ? 0 : 1;
    }
}

void HistoryStore::setGap(size_t track, qint64 at, const QString& reason)
{
    FrontRow<HistoryGap>& gaps = tracks_[track].gaps;
    if (!gaps.empty() && gaps.back().to == kOpen) {
        if (gaps.back().reason == reason) {
            return;
        }
        gaps.back().to = std::max(at, gaps.back().from);
    }
    if (reason.isNull()) {
        return;
    }
    gaps.push_back({at, kOpen, reason});
    bytes_ += bytesOf(gaps.back());
    droppable_.push_back({track, true});
}

void HistoryStore::dropOldestGap(const Droppable& oldest)
{
    FrontRow<HistoryGap>& gaps = tracks_[oldest.track].gaps;
    const HistoryGap gap = gaps.front();
    gaps.pop_front();
    if (gap.to == kOpen) { // it still holds: kept as the newest
        gaps.push_back(gap);
        droppable_.push_back(oldest);
        return;
    }
    bytes_ -= bytesOf(gap);
    from_ = std::max(from_, gap.to);
}

void HistoryStore::dropOldest()
{
    const Droppable oldest = droppable_.front();
    droppable_.pop_front();
    if (oldest.isGap) {
        dropOldestGap(oldest);
        return;
    }
    Track& track = tracks_[oldest.track];
    Block& block = track.older.empty() ? track.newest : track.older.front();
    from_ = std::max(from_, block.lastAt);
    bytes_ -= kOverhead + block.differences.capacity();
    if (track.older.empty()) { // its value still stands
        track.isEmpty = true;
        beginBlock(oldest.track, block.lastAt, block.lastNumber);
        return;
    }
    const size_t before = track.older.bytes();
    track.older.pop_front();
    bytes_ -= before - track.older.bytes();
}

const HistoryStore::Block& HistoryStore::blockOf(const Track& track, size_t index)
{
    return index < track.older.size() ? track.older[index] : track.newest;
}

size_t HistoryStore::blocksOf(const Track& track)
{
    return track.isEmpty ? 0 : track.older.size() + 1;
}

// The last block that begins no later, which holds the sample that stood there; or the first.
size_t HistoryStore::blockAt(const Track& track, qint64 moment)
{
    size_t first = 0;
    size_t behind = blocksOf(track);
    while (behind > first + 1) {
        const size_t middle = first + (behind - first) / 2;
        if (blockOf(track, middle).firstAt <= moment) {
            first = middle;
        } else {
            behind = middle;
        }
    }
    return first;
}

// The last sample before `from`, then those until `to`: one(at, number), which is false when it has
// seen enough. Not those of a block behind `from` that whole(block) takes as a whole.
template <typename Whole, typename One>
void HistoryStore::each(const Track& track, qint64 from, qint64 to, Whole whole, One one)
{
    bool hasBefore = false;
    qint64 beforeAt = 0;
    quint32 before = 0;
    const auto goOn = [&](qint64 at, quint32 number) {
        if (at <= from) {
            hasBefore = true;
            beforeAt = at;
            before = number;
            return true;
        }
        const bool isFirst = std::exchange(hasBefore, false);
        return (!isFirst || one(beforeAt, before)) && one(at, number);
    };
    const size_t blocks = blocksOf(track);
    for (size_t i = blockAt(track, from); i < blocks && blockOf(track, i).firstAt <= to; ++i) {
        const Block& block = blockOf(track, i);
        if (!hasBefore && block.firstAt > from && block.lastAt <= to && whole(block)) {
            continue;
        }
        qint64 at = block.firstAt;
        quint32 number = block.firstNumber;
        const char* byte = block.differences.data();
        const char* const end = byte + block.differences.size();
        for (bool isThere = true; isThere && at <= to;) {
            if (!goOn(at, number)) {
                return;
            }
            isThere = byte < end;
            if (isThere) {
                at += static_cast<qint64>(takePacked(byte));
                number += unfolded(static_cast<quint32>(takePacked(byte)));
            }
        }
    }
    if (hasBefore) {
        one(beforeAt, before);
    }
}

HistoryPiece HistoryStore::piece(size_t track, qint64 from, qint64 to, size_t points) const
{
    HistoryPiece piece;
    const Track& one = tracks_[track];
    if (!one.isEmpty || !one.gaps.empty()) {
        piece.oldest = from_;
    }
    const auto byOne = [](const Block&) { return false; };
    size_t count = 0;
    each(one, from, to, byOne, [&](qint64, quint32) { return ++count <= points; });
    if (count <= points) {
        each(one, from, to, byOne, [&](qint64 at, quint32 number) {
            const double value = numberOf(one.shape, number);
            piece.add(static_cast<double>(at), value, value, value);
            return true;
        });
    } else {
        SampleBuckets buckets(from, to, std::max<size_t>(1, points - 1), piece);
        const auto isWhole = [&](const Block& block) {
            if (block.shape != one.shape || !buckets.isOneSpan(block.firstAt, block.lastAt)) {
                return false;
            }
            buckets.add(block.firstAt, block.low, block.high,
                        numberOf(one.shape, block.lastNumber));
            return true;
        };
        each(one, from, to, isWhole, [&](qint64 at, quint32 number) {
            buckets.add(at, numberOf(one.shape, number));
            return true;
        });
        buckets.end();
    }
    for (size_t i = 0; i < one.gaps.size(); ++i) {
        const HistoryGap& gap = one.gaps[i];
        if (gap.from <= to && gap.to > from) {
            piece.gaps.push_back({gap.from, std::min(gap.to, to), gap.reason});
        }
    }
    return piece;
}

} // namespace tavmir::host
