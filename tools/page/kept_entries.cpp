// Entries packed and unpacked.
#include "kept_entries.h"

#include <algorithm>
#include <cstddef>
#include <cstring>

namespace tavmir::host
{

namespace
{

constexpr size_t kHead = offsetof(Exchange, request);
constexpr size_t kWall = sizeof(WallClock::time_point);
constexpr size_t kLongest = kWall + kHead + 2 * Exchange::kMostBytes;
constexpr size_t kMostOfABlock = 64 << 10;
constexpr size_t kBlocks = 8;  // at least, where there is little room
constexpr size_t kMemory = 16; // that a piece of memory costs beside its bytes

size_t packedBytes(const Exchange& exchange)
{
    return kWall + kHead + exchange.requestKept() + exchange.replyKept();
}

// The moment, then what is set of the exchange: its head, then the bytes of its frames.
void pack(const FeedEntry& entry, unsigned char* bytes)
{
    const Exchange& exchange = entry.exchange;
    const size_t request = exchange.requestKept();
    std::memcpy(bytes, &entry.wall, kWall);
    std::memcpy(bytes + kWall, &exchange, kHead);
    copyBytes(bytes + kWall + kHead, exchange.request, request);
    copyBytes(bytes + kWall + kHead + request, exchange.reply, exchange.replyKept());
}

void unpack(const unsigned char* bytes, FeedEntry& entry)
{
    Exchange& exchange = entry.exchange;
    std::memcpy(static_cast<void*>(&entry.wall), bytes, kWall);
    std::memcpy(static_cast<void*>(&exchange), bytes + kWall, kHead);
    const size_t request = exchange.requestKept();
    copyBytes(exchange.request, bytes + kWall + kHead, request);
    copyBytes(exchange.reply, bytes + kWall + kHead + request, exchange.replyKept());
}

} // namespace

KeptEntries::KeptEntries(size_t mostBytes)
    : mostBytes_(mostBytes),
      blockBytes_(std::max(kLongest, std::min(kMostOfABlock, mostBytes / kBlocks)))
{
}

size_t KeptEntries::bytesOf(const Block& block) const
{
    const size_t exchanges = block.exchanges ? blockBytes_ + kMemory : 0;
    return sizeof(Block) + exchanges + block.places.capacity() * sizeof(Place) +
           block.others.capacity() * sizeof(Other) + 2 * kMemory + block.otherBytes;
}

bool KeptEntries::isLink(const FeedEntry& entry)
{
    return entry.kind == FeedKind::connected || entry.kind == FeedKind::connectFailed ||
           entry.kind == FeedKind::connectionLost;
}

void KeptEntries::take(const FeedEntry& entry)
{
    if (entry.kind == FeedKind::planChanged) {
        return;
    }
    if (entry.kind != FeedKind::exchange || !entry.received.empty()) {
        if (isLink(entry)) {
            links_.push_back(end_);
        }
        add({std::make_unique<const FeedEntry>(entry), 0}, entry.at);
        return;
    }
    const size_t bytes = packedBytes(entry.exchange);
    Block& block = blockWithRoom(bytes);
    if (!block.exchanges) {
        block.exchanges.reset(new unsigned char[blockBytes_]);
    }
    pack(entry, block.exchanges.get() + block.used);
    block.places.push_back({entry.at, static_cast<quint32>(block.used), false});
    block.used += bytes;
    ++end_;
}

void KeptEntries::gap(quint64 missed)
{
    const bool isFirst = begin() == end_;
    add({nullptr, missed}, isFirst ? Clock::now() : blocks_.back().places.back().at);
}

void KeptEntries::add(Other other, Clock::time_point at)
{
    const size_t bytes =
        kMemory + (other.entry ? sizeof(FeedEntry) + other.entry->received.size() : 0);
    Block& block = blockWithRoom(bytes);
    block.places.push_back({at, static_cast<quint32>(block.others.size()), true});
    block.others.push_back(std::move(other));
    block.otherBytes += bytes;
    ++end_;
}

KeptEntries::Block& KeptEntries::blockWithRoom(size_t bytes)
{
    const bool hasRoom = !blocks_.empty() &&
                         (blocks_.back().places.empty() ||
                          blocks_.back().used + blocks_.back().otherBytes + bytes <= blockBytes_);
    if (!hasRoom) {
        beginBlock();
    }
    return blocks_.back();
}

void KeptEntries::beginBlock()
{
    bytes_ += blocks_.empty() ? 0 : bytesOf(blocks_.back());
    // The new one may hold as much again beside exchanges.
    while (bytes_ + 2 * blockBytes_ > mostBytes_ && blocks_.size() > 1) {
        dropOldest();
    }
    blocks_.push_back(spare_ ? std::move(*spare_) : Block());
    spare_.reset();
    blocks_.back().first = end_;
}

void KeptEntries::dropOldest()
{
    Block& oldest = blocks_.front();
    const quint64 next = oldest.first + oldest.places.size();
    for (; !links_.empty() && links_.front() < next; links_.pop_front()) {
        connection_ = at(links_.front());
        connection_->standing = true;
    }
    bytes_ -= bytesOf(oldest);
    oldest.places.clear();
    oldest.others.clear();
    oldest.used = 0;
    oldest.otherBytes = 0;
    spare_ = std::move(oldest);
    blocks_.pop_front();
}

const KeptEntries::Block& KeptEntries::blockOf(quint64 number) const
{
    const auto behind =
        std::upper_bound(blocks_.begin(), blocks_.end(), number,
                         [](quint64 wanted, const Block& block) { return wanted < block.first; });
    return *(behind - 1);
}

quint64 KeptEntries::missedAt(quint64 number) const
{
    const Block& block = blockOf(number);
    const Place& place = block.places[static_cast<size_t>(number - block.first)];
    return place.isOther ? block.others[place.index].missed : 0;
}

std::optional<FeedEntry> KeptEntries::at(quint64 number) const
{
    const Block& block = blockOf(number);
    const Place& place = block.places[static_cast<size_t>(number - block.first)];
    if (place.isOther) {
        const Other& other = block.others[place.index];
        return other.entry ? std::make_optional(*other.entry) : std::nullopt;
    }
    FeedEntry entry;
    entry.at = place.at;
    unpack(block.exchanges.get() + place.index, entry);
    return entry;
}

std::optional<Clock::time_point> KeptEntries::wholeSince() const
{
    const bool isWhole = begin() == 1 || blocks_.empty();
    return isWhole ? std::nullopt : std::make_optional(blocks_.front().places.front().at);
}

quint64 KeptEntries::firstAt(Clock::time_point moment) const
{
    for (const Block& block : blocks_) {
        const auto found = std::find_if(block.places.begin(), block.places.end(),
                                        [&](const Place& place) { return place.at >= moment; });
        if (found != block.places.end()) {
            return block.first + static_cast<quint64>(found - block.places.begin());
        }
    }
    return end_;
}

std::optional<FeedEntry> KeptEntries::connectionBefore(quint64 number) const
{
    const auto behind = std::lower_bound(links_.begin(), links_.end(), number);
    if (behind == links_.begin()) {
        return connection_;
    }
    std::optional<FeedEntry> entry = at(*(behind - 1));
    entry->standing = true;
    return entry;
}

void KeptEntries::visit(quint64 from, const Take& take, const Gap& gap) const
{
    for (quint64 number = std::max(from, begin()); number < end_; ++number) {
        if (const std::optional<FeedEntry> entry = at(number)) {
            take(*entry, number);
        } else {
            gap(missedAt(number), number);
        }
    }
}

} // namespace tavmir::host
