// The latest of what the feed told, for whoever asks for frames or a capture. What is put into
// words is put so when it is asked for: keeping an exchange costs a copy of its bytes, into blocks
// that are used again. Bounded in bytes, the oldest go first, a block at a time. One thread.
#ifndef TAVMIR_PAGE_KEPT_ENTRIES_H
#define TAVMIR_PAGE_KEPT_ENTRIES_H

#include "feed/feed_entry.h"

#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace tavmir::host
{

class KeptEntries
{
public:
    // 60,000 exchanges of 38 words, or more of fewer.
    static constexpr size_t kMostBytes = 32 << 20;

    explicit KeptEntries(size_t mostBytes = kMostBytes);

    void take(const FeedEntry& entry);
    // So many entries are missing here.
    void gap(quint64 missed);

    // Numbers of entries: of the first ever, of the oldest that is kept, and of the one to come.
    static constexpr quint64 kFirst = 1;
    quint64 begin() const { return blocks_.empty() ? end_ : blocks_.front().first; }
    quint64 end() const { return end_; }

    // The entry of that number, which must be kept. None: entries are missing there.
    std::optional<FeedEntry> at(quint64 number) const;
    quint64 missedAt(quint64 number) const;
    // Since when all is kept that the feed told. None: nothing has gone yet.
    std::optional<Clock::time_point> wholeSince() const;
    // The number of the first kept entry at or behind the moment.
    quint64 firstAt(Clock::time_point moment) const;

    // How the connection stood before that entry, as a reader that comes late is told it.
    std::optional<FeedEntry> connectionBefore(quint64 number) const;

    // Calls take(entry, number) or gap(missed, number) for each from that number on.
    using Take = std::function<void(const FeedEntry& entry, quint64 number)>;
    using Gap = std::function<void(quint64 missed, quint64 number)>;
    void visit(quint64 from, const Take& take, const Gap& gap) const;

private:
    // What is no exchange, or one whose reply is longer than usual; or a gap.
    struct Other {
        std::unique_ptr<const FeedEntry> entry;
        quint64 missed = 0;
    };
    struct Place {
        Clock::time_point at;
        quint32 index = 0; // of the first byte of an exchange, or in `others`
        bool isOther = false;
    };
    // Entries that follow each other, and go together.
    struct Block {
        quint64 first = 0; // number of the first entry
        std::vector<Place> places;
        std::unique_ptr<unsigned char[]> exchanges; // packed
        size_t used = 0;                            // bytes of them
        std::vector<Other> others;
        size_t otherBytes = 0;
    };

    size_t bytesOf(const Block& block) const;
    const Block& blockOf(quint64 number) const;
    Block& blockWithRoom(size_t bytes);
    void beginBlock();
    void add(Other other, Clock::time_point at);
    void dropOldest();
    static bool isLink(const FeedEntry& entry);

    const size_t mostBytes_;
    const size_t blockBytes_; // for packed exchanges, of a block
    size_t bytes_ = 0;        // of all blocks but the last one
    std::deque<Block> blocks_;
    quint64 end_ = kFirst;
    std::optional<Block> spare_;          // one that went
    std::deque<quint64> links_;           // numbers of kept entries that tell of the connection
    std::optional<FeedEntry> connection_; // before all that are kept
};

} // namespace tavmir::host

#endif
