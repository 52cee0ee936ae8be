// Blocks in a row.
#include "feed_blocks.h"

#include <algorithm>

namespace tavmir::host
{

void FeedBlocks::add(const FeedReader* reader)
{
    const std::lock_guard<std::mutex> lock(mutex_);
    Place place;
    place.next = published_;
    stand(place);
    places_[reader] = std::move(place);
    readers_ = static_cast<int>(places_.size());
}

// The reader is told next how things stand.
void FeedBlocks::stand(Place& place) const
{
    place.standing.clear();
    for (const std::optional<FeedEntry>& entry : {plan_, connection_}) {
        if (entry) {
            place.standing.push_back(*entry);
        }
    }
    place.toldStanding = false;
}

void FeedBlocks::remove(const FeedReader* reader)
{
    const std::lock_guard<std::mutex> lock(mutex_);
    letGo(places_[reader]);
    places_.erase(reader);
    readers_ = static_cast<int>(places_.size());
    dropRead();
}

void FeedBlocks::remember(const FeedEntry& entry)
{
    std::optional<FeedEntry>& kept = entry.kind == FeedKind::planChanged ? plan_ : connection_;
    kept = entry;
    kept->standing = true;
}

quint64 FeedBlocks::published() const
{
    const std::lock_guard<std::mutex> lock(mutex_);
    return published_;
}

FeedBlock& FeedBlocks::blockWithRoom()
{
    if (!row_.empty() && row_.back()->count < FeedBlock::kEntries) {
        return *row_.back();
    }
    if (row_.size() == mostBlocks_) {
        std::unique_ptr<FeedBlock> oldest = std::move(row_.front());
        row_.pop_front();
        drop(std::move(oldest));
    }
    std::unique_ptr<FeedBlock> block;
    if (spare_.empty()) {
        block = std::make_unique<FeedBlock>();
    } else {
        block = std::move(spare_.back());
        spare_.pop_back();
    }
    block->first = published_;
    block->count = 0;
    block->dropped = false;
    row_.push_back(std::move(block));
    return *row_.back();
}

void FeedBlocks::drop(std::unique_ptr<FeedBlock> block)
{
    block->dropped = true;
    (block->holders > 0 ? dropped_ : spare_).push_back(std::move(block));
}

// Blocks that every reader is through with.
void FeedBlocks::dropRead()
{
    quint64 needed = published_;
    for (const auto& [reader, place] : places_) {
        needed = std::min(needed, place.next);
    }
    while (!row_.empty() && row_.front()->first + FeedBlock::kEntries <= needed) {
        std::unique_ptr<FeedBlock> block = std::move(row_.front());
        row_.pop_front();
        drop(std::move(block));
    }
}

void FeedBlocks::letGo(Place& place)
{
    FeedBlock* block = place.held;
    place.held = nullptr;
    if (block == nullptr || --block->holders > 0 || !block->dropped) {
        return;
    }
    const auto found = std::find_if(dropped_.begin(), dropped_.end(),
                                    [&](const auto& other) { return other.get() == block; });
    if (found != dropped_.end()) {
        spare_.push_back(std::move(*found));
        dropped_.erase(found);
    }
}

FeedBlocks::Piece FeedBlocks::next(const FeedReader* reader, quint64 end)
{
    const std::lock_guard<std::mutex> lock(mutex_);
    Place& place = places_[reader];
    letGo(place);
    dropRead();
    Piece piece;
    if (!place.toldStanding) {
        place.toldStanding = true;
        if (!place.standing.empty()) {
            piece.entries = place.standing.data();
            piece.count = place.standing.size();
            return piece;
        }
    }
    place.standing.clear();
    if (place.next >= end || row_.empty()) {
        return piece;
    }
    if (place.next < row_.front()->first) {
        piece.missed = row_.front()->first - place.next;
        place.next = row_.front()->first;
        stand(place); // what was missed may have changed how things stand
        return piece;
    }
    // The row is at most a few hundred blocks long: these fit where a size has 32 bits.
    const auto number =
        static_cast<size_t>((place.next - row_.front()->first) / FeedBlock::kEntries);
    FeedBlock& block = *row_[number];
    const auto from = static_cast<size_t>(place.next - block.first);
    piece.entries = block.entries.get() + from;
    const quint64 there = end > block.first ? end - block.first : 0;
    piece.count = static_cast<size_t>(std::min<quint64>(block.count, there)) - from;
    place.next += piece.count;
    place.held = &block;
    ++block.holders;
    return piece;
}

} // namespace tavmir::host
