// Entries packed and unpacked.
#include "kept_entries.h"

#include <algorithm>
#include <cstddef>
#include <cstring>

namespace tavmir::host
{

namespace
{

constexpr size_t kMostSpare = 16;
constexpr size_t kHead = offsetof(Exchange, request);

// What is set of an exchange: its head, then the bytes of its frames.
void pack(const Exchange& exchange, std::vector<unsigned char>& bytes)
{
    const auto* const head = reinterpret_cast<const unsigned char*>(&exchange);
    bytes.clear();
    bytes.reserve(kHead + exchange.requestKept() + exchange.replyKept());
    bytes.insert(bytes.end(), head, head + kHead);
    bytes.insert(bytes.end(), exchange.request, exchange.request + exchange.requestKept());
    bytes.insert(bytes.end(), exchange.reply, exchange.reply + exchange.replyKept());
}

void unpack(const std::vector<unsigned char>& bytes, Exchange& exchange)
{
    std::memcpy(static_cast<void*>(&exchange), bytes.data(), kHead);
    const size_t request = exchange.requestKept();
    std::memcpy(exchange.request, bytes.data() + kHead, request);
    std::memcpy(exchange.reply, bytes.data() + kHead + request, exchange.replyKept());
}

} // namespace

size_t KeptEntries::Kept::bytes() const
{
    constexpr size_t kMemory = 16; // that a piece of memory costs beside its bytes
    const size_t whole = other ? sizeof(FeedEntry) + kMemory + other->received.size() : 0;
    return sizeof(Kept) + kMemory + exchange.capacity() + whole;
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
    Kept kept;
    kept.at = entry.at;
    kept.wall = entry.wall;
    if (entry.kind == FeedKind::exchange && entry.received.empty()) {
        if (!spare_.empty()) {
            kept.exchange = std::move(spare_.back());
            spare_.pop_back();
        }
        pack(entry.exchange, kept.exchange);
    } else {
        kept.other = std::make_unique<FeedEntry>(entry);
    }
    if (isLink(entry)) {
        links_.push_back(end());
    }
    add(std::move(kept));
}

void KeptEntries::gap(quint64 missed)
{
    Kept kept;
    kept.at = entries_.empty() ? Clock::now() : entries_.back().at;
    kept.missed = missed;
    add(std::move(kept));
}

void KeptEntries::add(Kept kept)
{
    bytes_ += kept.bytes();
    entries_.push_back(std::move(kept));
    while (bytes_ > mostBytes_ && entries_.size() > 1) {
        Kept& oldest = entries_.front();
        if (!links_.empty() && links_.front() == begin_) {
            connection_ = *oldest.other;
            connection_->standing = true;
            links_.pop_front();
        }
        bytes_ -= oldest.bytes();
        if (spare_.size() < kMostSpare && oldest.exchange.capacity() > 0) {
            spare_.push_back(std::move(oldest.exchange));
        }
        entries_.pop_front();
        ++begin_;
    }
}

std::optional<FeedEntry> KeptEntries::at(quint64 number) const
{
    const Kept& found = kept(number);
    if (found.missed > 0) {
        return std::nullopt;
    }
    if (found.other) {
        return *found.other;
    }
    FeedEntry entry;
    entry.at = found.at;
    entry.wall = found.wall;
    unpack(found.exchange, entry.exchange);
    return entry;
}

quint64 KeptEntries::firstAt(Clock::time_point moment) const
{
    const auto found = std::find_if(entries_.begin(), entries_.end(),
                                    [&](const Kept& kept) { return kept.at >= moment; });
    return begin_ + static_cast<quint64>(found - entries_.begin());
}

std::optional<FeedEntry> KeptEntries::connectionBefore(quint64 number) const
{
    const auto behind = std::lower_bound(links_.begin(), links_.end(), number);
    if (behind == links_.begin()) {
        return connection_;
    }
    FeedEntry entry = *kept(*(behind - 1)).other;
    entry.standing = true;
    return entry;
}

void KeptEntries::visit(quint64 from, const Take& take, const Gap& gap) const
{
    for (quint64 number = std::max(from, begin_); number < end(); ++number) {
        if (const std::optional<FeedEntry> entry = at(number)) {
            take(*entry, number);
        } else {
            gap(missedAt(number), number);
        }
    }
}

} // namespace tavmir::host
