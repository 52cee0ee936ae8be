// The feed's memory of values: every change of every variable and every time in which one was not
// good, for as long as there is room. A sample takes two to eight bytes: 64 MiB hold the last ten
// minutes of 1,000 variables that change ten times a second. When there is no room the oldest go,
// whosesoever they are, and it is known from when everything is there. One thread.
#ifndef TAVMIR_PAGE_HISTORY_STORE_H
#define TAVMIR_PAGE_HISTORY_STORE_H

#include "front_row.h"
#include "history_source.h"
#include "number_shape.h"

#include <deque>
#include <limits>
#include <optional>
#include <string>
#include <vector>

namespace tavmir::host
{

class HistoryStore
{
public:
    static constexpr size_t kMostBytes = 64 << 20;

    // begin  when it began, milliseconds since 1970 as all times here
    explicit HistoryStore(qint64 begin, size_t mostBytes = kMostBytes)
        : from_(begin), mostBytes_(mostBytes)
    {
    }

    // A further variable, of which nothing is known; they are counted from 0 on.
    size_t addTrack(NumberShape shape = NumberShape::unsignedNumber);
    // From now on its samples are such numbers.
    void setShape(size_t track, NumberShape shape);

    // A change; moments of one track ascend, one that does not counts as the latest.
    //   number  the value's bits
    void addSample(size_t track, qint64 at, quint32 number);

    // From now on the value is not good, for this reason; or is, with a null one.
    void setGap(size_t track, qint64 at, const QString& reason);

    // The clock was set back: what is kept of later times is forgotten, as these have not come yet.
    // What stood last stands from `now` on.
    void forgetLater(qint64 now);

    // From then on everything is there.
    qint64 from() const { return from_; }
    size_t bytes() const { return bytes_; }
    size_t mostBytes() const { return mostBytes_; }

    // What is kept of a track between two moments, as the numbers that its samples are now. Takes
    // about as long for any number of samples: they are looked at where spans meet.
    HistoryPiece piece(size_t track, qint64 from, qint64 to, size_t points) const;

private:
    static constexpr qint64 kOpen = std::numeric_limits<qint64>::max();
    // Of a piece of memory, and of its place in the lists.
    static constexpr size_t kOverhead = 48;

    // Samples behind the first one are differences: of time, then of the number.
    struct Block {
        qint64 firstAt = 0;
        qint64 lastAt = 0;
        quint32 firstNumber = 0;
        quint32 lastNumber = 0;
        // Of all its samples, as numbers of this shape; NaN: none is a number.
        double low = std::numeric_limits<double>::quiet_NaN();
        double high = std::numeric_limits<double>::quiet_NaN();
        NumberShape shape = NumberShape::unsignedNumber;
        std::string differences;
    };
    struct Track {
        Block newest; // is filled; here, since each sample of many tracks goes there
        bool isEmpty = true;
        NumberShape shape = NumberShape::unsignedNumber;
        FrontRow<Block> older;
        FrontRow<HistoryGap> gaps; // `to` of one that goes on is kOpen
    };
    // What can be dropped, in the order in which it came.
    struct Droppable {
        size_t track;
        bool isGap;
    };
    // So much of a track was kept of later times.
    struct Forgotten {
        size_t blocks = 0;
        size_t gaps = 0;
        std::optional<quint32> standing; // the latest of the samples
    };

    void beginBlock(size_t track, qint64 at, quint32 number);
    static void count(Block& block, quint32 number);
    void dropOldest();
    void dropOldestGap(const Droppable& oldest);
    Forgotten forgetLater(Track& track, qint64 now);
    void forgetNewestBlock(Track& track);
    static void cut(Block& block, qint64 now);
    size_t forgetLaterGaps(FrontRow<HistoryGap>& gaps, qint64 now);
    static size_t bytesOf(const HistoryGap& gap);
    static const Block& blockOf(const Track& track, size_t index);
    static size_t blocksOf(const Track& track);
    static size_t blockAt(const Track& track, qint64 moment);
    template <typename Whole, typename One>
    static void each(const Track& track, qint64 from, qint64 to, Whole whole, One one);

    std::vector<Track> tracks_;
    std::deque<Droppable> droppable_;
    qint64 from_;
    size_t bytes_ = 0;
    const size_t mostBytes_;
};

} // namespace tavmir::host

#endif
