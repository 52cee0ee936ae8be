// Samples packed, dropped and found again.
#include "history_store.h"

#include "sample_buckets.h"

#include <algorithm>
#include <limits>

namespace tavmir::host
{

namespace
{

constexpr qint64 kOpen = std::numeric_limits<qint64>::max();
constexpr size_t kBlockBytes = 240;
constexpr size_t kLongestSample = 15; // ten bytes of time, five of the number
// Of a piece of memory, and of its place in the lists.
constexpr size_t kOverhead = 48;

size_t bytesOf(const HistoryGap& gap)
{
    return sizeof(HistoryGap) + kOverhead + 2 * static_cast<size_t>(gap.reason.size());
}

// Seven bits a byte, the lowest first; the top bit says that more follow.
void append(std::string& bytes, quint64 number)
{
    for (; number >= 0x80; number >>= 7) {
        bytes += static_cast<char>((number & 0x7F) | 0x80);
    }
    bytes += static_cast<char>(number);
}

quint64 take(const char*& byte)
{
    quint64 number = 0;
    for (int shift = 0;; shift += 7) {
        const auto part = static_cast<unsigned char>(*byte++);
        number |= static_cast<quint64>(part & 0x7F) << shift;
        if (part < 0x80) {
            return number;
        }
    }
}

// Small differences as small numbers, whatever their sign.
quint32 folded(quint32 difference)
{
    return difference << 1 ^ (difference >> 31 != 0 ? 0xFFFFFFFF : 0);
}

quint32 unfolded(quint32 number)
{
    return number >> 1 ^ ((number & 1) != 0 ? 0xFFFFFFFF : 0);
}

} // namespace

size_t HistoryStore::addTrack()
{
    tracks_.emplace_back();
    return tracks_.size() - 1;
}

void HistoryStore::beginBlock(size_t track, qint64 at, quint32 number)
{
    Block block;
    block.firstAt = at;
    block.lastAt = at;
    block.firstNumber = number;
    block.lastNumber = number;
    bytes_ += sizeof(Block) + kOverhead;
    tracks_[track].blocks.push_back(std::move(block));
    droppable_.push_back({track, false});
}

void HistoryStore::addSample(size_t track, qint64 at, quint32 number)
{
    std::deque<Block>& blocks = tracks_[track].blocks;
    const bool isFull =
        blocks.empty() || blocks.back().differences.size() + kLongestSample > kBlockBytes;
    if (isFull) {
        beginBlock(track, blocks.empty() ? at : std::max(at, blocks.back().lastAt), number);
    } else {
        Block& block = blocks.back();
        const size_t before = block.differences.capacity();
        const qint64 later = std::max(at, block.lastAt);
        append(block.differences, static_cast<quint64>(later - block.lastAt));
        append(block.differences, folded(number - block.lastNumber));
        block.lastAt = later;
        block.lastNumber = number;
        bytes_ += block.differences.capacity() - before;
    }
    while (bytes_ > mostBytes_ && droppable_.size() > 1) {
        dropOldest();
    }
}

void HistoryStore::setGap(size_t track, qint64 at, const QString& reason)
{
    std::deque<HistoryGap>& gaps = tracks_[track].gaps;
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

void HistoryStore::dropOldest()
{
    const Droppable oldest = droppable_.front();
    droppable_.pop_front();
    Track& track = tracks_[oldest.track];
    if (oldest.isGap) {
        const HistoryGap gap = track.gaps.front();
        track.gaps.pop_front();
        bytes_ -= bytesOf(gap);
        if (gap.to == kOpen) { // it still holds: kept as the newest
            track.gaps.push_back(gap);
            bytes_ += bytesOf(gap);
            droppable_.push_back(oldest);
        } else {
            from_ = std::max(from_, gap.to);
        }
        return;
    }
    const Block& block = track.blocks.front();
    from_ = std::max(from_, block.lastAt);
    bytes_ -= sizeof(Block) + kOverhead + block.differences.capacity();
    const qint64 lastAt = block.lastAt;
    const quint32 lastNumber = block.lastNumber;
    track.blocks.pop_front();
    if (track.blocks.empty()) { // its value still stands
        beginBlock(oldest.track, lastAt, lastNumber);
    }
}

void HistoryStore::each(const Track& track, qint64 from, qint64 to, const Take& take)
{
    // The last block that begins no later than `from` holds the sample before it.
    auto block = std::upper_bound(track.blocks.begin(), track.blocks.end(), from,
                                  [](qint64 at, const Block& one) { return at < one.firstAt; });
    block = block == track.blocks.begin() ? block : block - 1;
    bool hasBefore = false;
    qint64 beforeAt = 0;
    quint32 before = 0;
    const auto one = [&](qint64 at, quint32 number) {
        if (at <= from) {
            hasBefore = true;
            beforeAt = at;
            before = number;
            return;
        }
        if (hasBefore) {
            take(beforeAt, before);
            hasBefore = false;
        }
        take(at, number);
    };
    for (; block != track.blocks.end() && block->firstAt <= to; ++block) {
        qint64 at = block->firstAt;
        quint32 number = block->firstNumber;
        one(at, number);
        const char* byte = block->differences.data();
        const char* const end = byte + block->differences.size();
        while (byte < end) {
            at += static_cast<qint64>(host::take(byte));
            number += unfolded(static_cast<quint32>(host::take(byte)));
            if (at > to) {
                break;
            }
            one(at, number);
        }
    }
    if (hasBefore) {
        take(beforeAt, before);
    }
}

HistoryPiece HistoryStore::piece(size_t track, qint64 from, qint64 to, size_t points,
                                 const NumberOf& numberOf) const
{
    HistoryPiece piece;
    const Track& one = tracks_[track];
    if (!one.blocks.empty() || !one.gaps.empty()) {
        piece.oldest = from_;
    }
    size_t count = 0;
    each(one, from, to, [&](qint64, quint32) { ++count; });
    if (count <= points) {
        each(one, from, to, [&](qint64 at, quint32 number) {
            const double value = numberOf(number);
            piece.add(static_cast<double>(at), value, value, value);
        });
    } else {
        SampleBuckets buckets(from, to, std::max<size_t>(1, points - 1), piece);
        each(one, from, to, [&](qint64 at, quint32 number) { buckets.add(at, numberOf(number)); });
        buckets.end();
    }
    for (const HistoryGap& gap : one.gaps) {
        if (gap.from <= to && gap.to > from) {
            piece.gaps.push_back({gap.from, std::min(gap.to, to), gap.reason});
        }
    }
    return piece;
}

} // namespace tavmir::host
