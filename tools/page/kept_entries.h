// The latest of what the feed told, for whoever asks for frames or a capture. What is put into
// words is put so when it is asked for: keeping an exchange costs a copy of its bytes. Bounded in
// bytes, the oldest go first. One thread.
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
    // Some 80,000 exchanges.
    static constexpr size_t kMostBytes = 32 << 20;

    explicit KeptEntries(size_t mostBytes = kMostBytes) : mostBytes_(mostBytes) {}

    void take(const FeedEntry& entry);
    // So many entries are missing here.
    void gap(quint64 missed);

    // Numbers of entries: of the oldest that is kept, and of the one to come.
    quint64 begin() const { return begin_; }
    quint64 end() const { return begin_ + entries_.size(); }

    // The entry of that number, which must be kept. None: entries are missing there.
    std::optional<FeedEntry> at(quint64 number) const;
    quint64 missedAt(quint64 number) const { return kept(number).missed; }
    // The number of the first kept entry at or behind the moment.
    quint64 firstAt(Clock::time_point moment) const;

    // How the connection stood before that entry, as a reader that comes late is told it.
    std::optional<FeedEntry> connectionBefore(quint64 number) const;

    // Calls take(entry, number) or gap(missed, number) for each from that number on.
    using Take = std::function<void(const FeedEntry& entry, quint64 number)>;
    using Gap = std::function<void(quint64 missed, quint64 number)>;
    void visit(quint64 from, const Take& take, const Gap& gap) const;

private:
    // An exchange packed, or another entry as it is, or a gap.
    struct Kept {
        Clock::time_point at;
        WallClock::time_point wall;
        std::vector<unsigned char> exchange;
        std::unique_ptr<const FeedEntry> other;
        quint64 missed = 0;

        size_t bytes() const;
    };

    const Kept& kept(quint64 number) const
    {
        return entries_[static_cast<size_t>(number - begin_)];
    }
    void add(Kept kept);
    static bool isLink(const FeedEntry& entry);

    const size_t mostBytes_;
    size_t bytes_ = 0;
    std::deque<Kept> entries_;
    quint64 begin_ = 1;
    std::vector<std::vector<unsigned char>> spare_; // of exchanges that went
    std::deque<quint64> links_;           // numbers of kept entries that tell of the connection
    std::optional<FeedEntry> connection_; // before all that are kept
};

} // namespace tavmir::host

#endif
