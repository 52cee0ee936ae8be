// The one feed of a session, from which terminal, statistics and whatever else shows or keeps
// what happens live. The session writes, any number of readers read, each on a thread of its own.
//
//   communication thread ── publish ──▶ blocks ── read ──▶ reader ──▶ values, figures, lines
//
// Publishing copies under a short lock and wakes nobody: readers look when it suits them and are
// handed whole blocks. What the feed keeps is bounded. A reader that is too slow misses the
// oldest entries, is told how many, and never holds anyone up. Without a reader nothing is kept.
#ifndef TAVMIR_FEED_FEED_H
#define TAVMIR_FEED_FEED_H

#include "feed_entry.h"

#include <atomic>
#include <memory>

namespace tavmir::host
{

class FeedBlocks;

// One reader. All calls on one thread at a time. May outlive the feed.
class FeedReader
{
public:
    explicit FeedReader(std::shared_ptr<FeedBlocks> blocks);
    ~FeedReader();
    FeedReader(const FeedReader&) = delete;
    FeedReader& operator=(const FeedReader&) = delete;

    // Hands every entry that was published until this call began, once and in order, to
    // `take(const FeedEntry&)`, which must keep no reference. Where entries were missed,
    // `gap(count)` is called in their place, and behind it standing entries say how things stand.
    template <typename Take, typename Gap> void read(Take take, Gap gap)
    {
        const quint64 end = published();
        while (const Chunk chunk = next(end)) {
            if (chunk.missed > 0) {
                gap(chunk.missed);
            }
            for (size_t i = 0; i < chunk.count; ++i) {
                take(chunk.entries[i]);
            }
        }
    }
    template <typename Take> void read(Take take)
    {
        read(take, [](quint64) {});
    }

    // Entries missed since the reader was made.
    quint64 missed() const { return missed_; }

private:
    struct Chunk {
        const FeedEntry* entries = nullptr;
        size_t count = 0;
        quint64 missed = 0;

        explicit operator bool() const { return count > 0 || missed > 0; }
    };

    quint64 published() const;
    Chunk next(quint64 end); // gives the chunk before it back

    std::shared_ptr<FeedBlocks> blocks_;
    quint64 missed_ = 0;
};

class Feed
{
public:
    // What it keeps at most for readers that are behind: some 10 MB.
    static constexpr size_t kMostEntries = 16384;

    // most  entries kept, rounded up to whole blocks
    explicit Feed(size_t most = kMostEntries);
    ~Feed();
    Feed(const Feed&) = delete;
    Feed& operator=(const Feed&) = delete;

    // A reader of everything from now on. It is first told the polled list and the state of the
    // connection, as entries. Any thread.
    std::unique_ptr<FeedReader> subscribe();

    // True while there is a reader: else nobody wants the bytes of an exchange.
    bool isRead() const;

    // Any thread.
    //   request, reply  bytes in place of those in `exchange`, as many as its sizes say; null: its
    //                   own
    void publish(const Exchange& exchange, const char* request = nullptr,
                 const char* reply = nullptr);
    void publish(const FeedEntry& entry);

private:
    std::shared_ptr<FeedBlocks> blocks_;
};

} // namespace tavmir::host

#endif
