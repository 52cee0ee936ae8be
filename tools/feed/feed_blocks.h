// The feed's memory: a row of blocks, the readers' places in it, and the lock around both.
// Private to the feed.
#ifndef TAVMIR_FEED_FEED_BLOCKS_H
#define TAVMIR_FEED_FEED_BLOCKS_H

#include "feed_entry.h"

#include <atomic>
#include <deque>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <vector>

namespace tavmir::host
{

class FeedReader;

// Entries are filled front to back and never changed once they count, so that a reader may look
// at them without the lock while the rest is filled.
struct FeedBlock {
    static constexpr size_t kEntries = 64;

    std::unique_ptr<FeedEntry[]> entries = std::make_unique<FeedEntry[]>(kEntries);
    quint64 first = 0;    // number of the first entry
    size_t count = 0;     // entries filled
    int holders = 0;      // readers that look at it
    bool dropped = false; // waits for its holders only
};

class FeedBlocks
{
public:
    explicit FeedBlocks(size_t mostBlocks) : mostBlocks_(mostBlocks) {}

    void add(const FeedReader* reader);
    void remove(const FeedReader* reader);
    bool isRead() const { return readers_.load(std::memory_order_relaxed) > 0; }

    // Fills the next entry under the lock: fill(FeedEntry&).
    //   standing  null, or an entry that tells later readers how things stand
    template <typename Fill> void publish(Fill fill, const FeedEntry* standing)
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        if (standing != nullptr) {
            remember(*standing);
        }
        if (places_.empty()) {
            return;
        }
        FeedBlock& block = blockWithRoom();
        fill(block.entries[block.count]);
        ++block.count;
        ++published_;
    }

    quint64 published() const;

    struct Piece {
        const FeedEntry* entries = nullptr;
        size_t count = 0;
        quint64 missed = 0;
    };
    // The reader's next entries below `end`; holds their block until the next call.
    Piece next(const FeedReader* reader, quint64 end);

private:
    struct Place {
        quint64 next = 0; // number of the entry to read next
        FeedBlock* held = nullptr;
        std::vector<FeedEntry> standing; // told first
        bool toldStanding = false;
    };

    void remember(const FeedEntry& entry);
    FeedBlock& blockWithRoom();
    void stand(Place& place) const;
    void letGo(Place& place);
    void dropRead();
    void drop(std::unique_ptr<FeedBlock> block);

    mutable std::mutex mutex_;
    std::atomic<int> readers_{0};
    const size_t mostBlocks_;
    std::deque<std::unique_ptr<FeedBlock>> row_;
    std::vector<std::unique_ptr<FeedBlock>> dropped_; // held by a reader still
    std::vector<std::unique_ptr<FeedBlock>> spare_;   // last used, first taken: still in the cache
    std::map<const FeedReader*, Place> places_;
    quint64 published_ = 0;
    std::optional<FeedEntry> plan_;
    std::optional<FeedEntry> connection_;
};

} // namespace tavmir::host

#endif
