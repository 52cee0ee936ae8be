// The memory of values when the clock is set back: what was later is forgotten, exactly.
#include "page/history_store.h"

#include <gtest/gtest.h>

namespace tavmir::host
{

namespace
{

using Numbers = std::vector<double>;

constexpr qint64 kEnd = 1000000;

void fill(HistoryStore& store, size_t track, qint64 from, qint64 to)
{
    for (qint64 at = from; at < to; ++at) {
        store.addSample(track, at, static_cast<quint32>(at) * 7919);
    }
}

} // namespace

TEST(HistoryForgotten, WhatIsLaterIsGoneAndTheLatestStandsFromNowOn)
{
    HistoryStore store(0);
    const size_t track = store.addTrack();
    for (int i = 1; i <= 1000; ++i) {
        store.addSample(track, 100 * i, static_cast<quint32>(i));
    }
    store.forgetLater(40050);
    EXPECT_EQ((Numbers{39900, 40000, 40050}), store.piece(track, 39900, kEnd, 1000).t);
    EXPECT_EQ((Numbers{399, 400, 1000}), store.piece(track, 39900, kEnd, 1000).last);
    store.addSample(track, 40060, 7);
    EXPECT_EQ((Numbers{40050, 40060}), store.piece(track, 40050, kEnd, 1000).t);
}

TEST(HistoryForgotten, WhatHasNotChangedSinceStaysAsItIs)
{
    HistoryStore store(0);
    const size_t track = store.addTrack();
    store.addSample(track, 10, 4);
    store.addSample(track, 20, 5);
    store.forgetLater(20);
    EXPECT_EQ((Numbers{10, 20}), store.piece(track, 0, kEnd, 10).t);
    EXPECT_EQ((Numbers{4, 5}), store.piece(track, 0, kEnd, 10).last);
}

TEST(HistoryForgotten, SumsAreOfWhatIsLeft)
{
    HistoryStore store(0);
    const size_t track = store.addTrack();
    for (int i = 0; i < 50; ++i) {
        store.addSample(track, 1000 + i, i < 25 ? 3 : 9000);
    }
    store.addSample(track, 1050, 4);
    store.forgetLater(1024);
    const HistoryPiece piece = store.piece(track, 0, 100000, 3);
    ASSERT_EQ(1U, piece.t.size());
    EXPECT_EQ(4, piece.max[0]);
    EXPECT_EQ(3, piece.min[0]);
}

TEST(HistoryForgotten, AGapThatHoldsDoesSoFromNowOn)
{
    HistoryStore store(0);
    const size_t track = store.addTrack();
    store.setGap(track, 100, "never: x");
    store.setGap(track, 200, QString());
    store.setGap(track, 300, "stale: y");
    store.setGap(track, 350, QString());
    store.setGap(track, 400, "bad: z");
    store.forgetLater(150);
    const HistoryPiece piece = store.piece(track, 0, 250, 10);
    ASSERT_EQ(2U, piece.gaps.size());
    EXPECT_EQ(100, piece.gaps[0].from);
    EXPECT_EQ(150, piece.gaps[0].to) << "good again, and then bad, came later";
    EXPECT_EQ(150, piece.gaps[1].from);
    EXPECT_EQ(250, piece.gaps[1].to) << "it goes on";
    EXPECT_EQ("bad: z", piece.gaps[1].reason);
}

TEST(HistoryForgotten, WhenAllOfItWasLaterEverythingIsKnownFromNowOn)
{
    HistoryStore store(50000);
    const size_t track = store.addTrack();
    store.addSample(track, 50010, 3);
    store.addSample(track, 50020, 4);
    store.forgetLater(10000);
    EXPECT_EQ(10000, store.from());
    const HistoryPiece piece = store.piece(track, 0, 20000, 10);
    EXPECT_EQ(10000, *piece.oldest);
    EXPECT_EQ(Numbers{10000}, piece.t);
    EXPECT_EQ(Numbers{4}, piece.last);
}

TEST(HistoryForgotten, ItsBytesAreThoseOfAStoreThatNeverHadIt)
{
    HistoryStore plain(0);
    HistoryStore store(0);
    for (size_t track = 0; track < 3; ++track) {
        plain.setGap(plain.addTrack(), 5, "never: x");
        plain.addSample(track, 90, 4);
        store.setGap(store.addTrack(), 5, "never: x");
    }
    for (int round = 0; round < 20; ++round) {
        fill(store, 0, 100, 20000);
        fill(store, 2, 100, 150);
        store.setShape(2, round % 2 == 0 ? NumberShape::signed16 : NumberShape::signed32);
        fill(store, 2, 150, 20000);
        store.addSample(1, 300, 9);
        store.setGap(0, 400, QString());
        store.setGap(0, 500, "stale: yes");
        store.setGap(0, 600, QString());
        store.forgetLater(90 - round);
        EXPECT_EQ(plain.bytes(), store.bytes());
    }
}

TEST(HistoryForgotten, AsMuchIsKeptAsBeforeAndWhatIsQuietStillStands)
{
    constexpr size_t kMost = 100000;
    HistoryStore store(0, kMost);
    const size_t busy = store.addTrack();
    const size_t quiet = store.addTrack();
    const size_t empty = store.addTrack();
    store.addSample(quiet, 5, 42);
    for (int round = 0; round < 50; ++round) {
        fill(store, busy, 1000, 30000);
        store.setGap(quiet, 30000, "stale: x");
        store.setGap(quiet, 30001, QString());
        store.forgetLater(1000 + 500 * round);
    }
    fill(store, busy, 40000, 140000);
    EXPECT_LE(store.bytes(), kMost);
    EXPECT_GT(store.bytes(), kMost * 9 / 10);
    EXPECT_EQ(139999, store.piece(busy, 0, kEnd, 1000000).t.back());
    EXPECT_EQ(Numbers{42}, store.piece(quiet, 139000, kEnd, 10).last);
    EXPECT_TRUE(store.piece(quiet, 0, kEnd, 10).gaps.empty());
    EXPECT_TRUE(store.piece(empty, 0, kEnd, 10).t.empty());
}

} // namespace tavmir::host
