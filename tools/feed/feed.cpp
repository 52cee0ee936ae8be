// Publishing and subscribing.
#include "feed.h"

#include "feed_blocks.h"

namespace tavmir::host
{

namespace
{

// True for what later readers are told too: how things stand since then.
bool standsOn(FeedKind kind)
{
    return kind == FeedKind::planChanged || kind == FeedKind::connected ||
           kind == FeedKind::connectFailed || kind == FeedKind::connectionLost;
}

} // namespace

FeedEntry entryNow(FeedKind kind, const QString& text)
{
    FeedEntry entry;
    entry.kind = kind;
    entry.at = Clock::now();
    entry.wall = WallClock::now();
    entry.text = text;
    return entry;
}

WallClock::time_point wallAt(const FeedEntry& entry, Clock::time_point moment)
{
    return entry.wall - std::chrono::duration_cast<WallClock::duration>(entry.at - moment);
}

FeedReader::FeedReader(std::shared_ptr<FeedBlocks> blocks) : blocks_(std::move(blocks))
{
    blocks_->add(this);
}

FeedReader::~FeedReader()
{
    blocks_->remove(this);
}

quint64 FeedReader::published() const
{
    return blocks_->published();
}

FeedReader::Chunk FeedReader::next(quint64 end)
{
    const FeedBlocks::Piece piece = blocks_->next(this, end);
    missed_ += piece.missed;
    return {piece.entries, piece.count, piece.missed};
}

Feed::Feed(size_t most)
    : blocks_(std::make_shared<FeedBlocks>(
          std::max<size_t>(1, (most + FeedBlock::kEntries - 1) / FeedBlock::kEntries)))
{
}

Feed::~Feed() = default;

std::unique_ptr<FeedReader> Feed::subscribe()
{
    return std::make_unique<FeedReader>(blocks_);
}

bool Feed::isRead() const
{
    return blocks_->isRead();
}

void Feed::publish(const Exchange& exchange, const char* request, const char* reply)
{
    if (!isRead()) {
        return;
    }
    const auto fill = [&](FeedEntry& entry) {
        if (entry.kind != FeedKind::exchange) {
            entry.text.clear();
            entry.variable.clear();
            entry.plan.reset();
            entry.attempts.reset();
        }
        entry.received.clear();
        if (reply != nullptr && exchange.replySize > Exchange::kMostBytes) {
            entry.received.assign(reply, reply + exchange.replySize);
        }
        entry.kind = FeedKind::exchange;
        entry.at = exchange.endedAt;
        entry.wall = exchange.endedWall;
        copyExchange(exchange, request, reply, entry.exchange);
    };
    blocks_->publish(fill, nullptr);
}

void Feed::publish(const FeedEntry& entry)
{
    const auto fill = [&](FeedEntry& kept) {
        kept.kind = entry.kind;
        kept.at = entry.at;
        kept.wall = entry.wall;
        kept.text = entry.text;
        kept.variable = entry.variable;
        kept.operation = entry.operation;
        kept.brokenStream = entry.brokenStream;
        kept.frames = entry.frames;
        kept.bytes = entry.bytes;
        kept.plan = entry.plan;
        kept.attempts = entry.attempts;
        kept.closedBy = entry.closedBy;
        kept.stray = entry.stray;
        kept.askedAt = entry.askedAt;
        kept.received = entry.received;
    };
    blocks_->publish(fill, standsOn(entry.kind) ? &entry : nullptr);
}

} // namespace tavmir::host
