// The feed: what readers are told, what slow ones miss, and what is kept.
#include "feed/feed.h"

#include "made_exchange.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <thread>

namespace tavmir::host
{

namespace
{

constexpr quint32 kBlock = 64; // entries that are kept or missed together
constexpr auto kLate = std::chrono::seconds(120);

// An exchange that is known by its number in every part of it.
Exchange numbered(quint32 number)
{
    Exchange exchange;
    exchange.receivedBytes = number;
    exchange.endedAt = momentAt(static_cast<int>(number));
    exchange.requestSize = exchange.replySize = Exchange::kMostBytes;
    for (size_t i = 0; i < Exchange::kMostBytes; ++i) {
        exchange.request[i] = static_cast<unsigned char>(number * 7 + i);
        exchange.reply[i] = static_cast<unsigned char>(number * 11 + i);
    }
    return exchange;
}

bool isWhole(const Exchange& exchange)
{
    const Exchange expected = numbered(exchange.receivedBytes);
    return exchange.endedAt == expected.endedAt &&
           std::equal(exchange.request, exchange.request + Exchange::kMostBytes,
                      expected.request) &&
           std::equal(exchange.reply, exchange.reply + Exchange::kMostBytes, expected.reply);
}

// What one reader was told.
struct Told {
    std::vector<quint32> numbers;
    std::vector<FeedKind> kinds;
    std::vector<quint64> gaps;
    std::vector<size_t> gapBefore; // entries told when the gap was
    quint64 inGaps = 0;

    void readFrom(FeedReader& reader)
    {
        reader.read(
            [this](const FeedEntry& entry) {
                kinds.push_back(entry.kind);
                numbers.push_back(entry.exchange.receivedBytes);
            },
            [this](quint64 count) {
                gaps.push_back(count);
                gapBefore.push_back(numbers.size());
                inGaps += count;
            });
    }
};

std::vector<quint32> numbersFrom(quint32 first, quint32 end)
{
    std::vector<quint32> numbers;
    for (quint32 number = first; number < end; ++number) {
        numbers.push_back(number);
    }
    return numbers;
}

void publishNumbers(Feed& feed, quint32 first, quint32 end)
{
    for (quint32 number = first; number < end; ++number) {
        feed.publish(numbered(number));
    }
}

FeedEntry entryWith(FeedKind kind, const QString& text)
{
    FeedEntry entry;
    entry.kind = kind;
    entry.text = text;
    return entry;
}

} // namespace

TEST(Feed, ToldOnceAndInOrder)
{
    Feed feed;
    const auto reader = feed.subscribe();
    publishNumbers(feed, 0, 200);
    Told told;
    told.readFrom(*reader);
    EXPECT_EQ(numbersFrom(0, 200), told.numbers);
    told.readFrom(*reader);
    EXPECT_EQ(200u, told.numbers.size()) << "nothing twice";
    publishNumbers(feed, 200, 201);
    told.readFrom(*reader);
    EXPECT_EQ(numbersFrom(0, 201), told.numbers) << "in a block that was read from before";
    EXPECT_TRUE(told.gaps.empty());
    EXPECT_EQ(0u, reader->missed());
}

TEST(Feed, AnExchangeComesWhole)
{
    Feed feed;
    const auto reader = feed.subscribe();
    Exchange exchange = numbered(77);
    exchange.sentAt = momentAt(5);
    exchange.endedWall = WallClock::time_point(std::chrono::milliseconds(1234567));
    exchange.generation = 9;
    exchange.kind = RequestKind::read;
    exchange.end = ExchangeEnd::exception;
    exchange.exceptionCode = 4;
    feed.publish(exchange);
    int count = 0;
    reader->read([&](const FeedEntry& entry) {
        ++count;
        EXPECT_EQ(FeedKind::exchange, entry.kind);
        EXPECT_FALSE(entry.standing);
        EXPECT_EQ(exchange.endedAt, entry.at);
        EXPECT_EQ(exchange.endedWall, entry.wall);
        EXPECT_TRUE(isWhole(entry.exchange));
        EXPECT_EQ(momentAt(5), entry.exchange.sentAt);
        EXPECT_EQ(9u, entry.exchange.generation);
        EXPECT_EQ(RequestKind::read, entry.exchange.kind);
        EXPECT_EQ(ExchangeEnd::exception, entry.exchange.end);
        EXPECT_EQ(4, entry.exchange.exceptionCode);
    });
    EXPECT_EQ(1, count);
}

TEST(Feed, OtherEntriesComeWhole)
{
    Feed feed;
    const auto reader = feed.subscribe();
    FeedEntry sent = entryWith(FeedKind::operationEnded, "why");
    sent.at = momentAt(3);
    sent.wall = WallClock::time_point(std::chrono::milliseconds(99));
    sent.operation = {OperationKind::read, OutcomeState::partial, 12, 5, 3, 7};
    sent.brokenStream = true;
    sent.frames = 21;
    sent.bytes = 22;
    sent.plan = std::make_shared<PolledGeneration>();
    sent.attempts = std::make_shared<std::vector<wire::ConnectAttempt>>();
    sent.closedBy = ClosedBy::network;
    sent.stray = Stray::duplicate;
    sent.askedAt = momentAt(2);
    sent.received = {1, 2, 3};
    feed.publish(sent);
    int count = 0;
    reader->read([&](const FeedEntry& entry) {
        ++count;
        EXPECT_EQ(FeedKind::operationEnded, entry.kind);
        EXPECT_FALSE(entry.standing);
        EXPECT_EQ(sent.at, entry.at);
        EXPECT_EQ(sent.wall, entry.wall);
        EXPECT_EQ("why", entry.text.toStdString());
        EXPECT_EQ(OperationKind::read, entry.operation.kind);
        EXPECT_EQ(OutcomeState::partial, entry.operation.state);
        EXPECT_EQ(12u, entry.operation.key);
        EXPECT_EQ(5, entry.operation.elements);
        EXPECT_EQ(3, entry.operation.acknowledged);
        EXPECT_EQ(7, entry.operation.station);
        EXPECT_TRUE(entry.brokenStream);
        EXPECT_EQ(21u, entry.frames);
        EXPECT_EQ(22u, entry.bytes);
        EXPECT_EQ(sent.plan, entry.plan);
        EXPECT_EQ(sent.attempts, entry.attempts);
        EXPECT_EQ(ClosedBy::network, entry.closedBy);
        EXPECT_EQ(Stray::duplicate, entry.stray);
        EXPECT_EQ(momentAt(2), entry.askedAt);
        EXPECT_EQ((std::vector<unsigned char>{1, 2, 3}), entry.received);
    });
    EXPECT_EQ(1, count);
}

TEST(Feed, AReplyThatIsLongerThanAnExchangeKeepsComesWholeBesideIt)
{
    Feed feed;
    const auto reader = feed.subscribe();
    const std::string longest(Exchange::kMostBytes, 'a');
    const std::string longer(Exchange::kMostBytes + 1, 'b');
    Exchange exchange = numbered(1);
    for (const std::string& reply : {longer, longest, longer}) {
        exchange.replySize = static_cast<quint32>(reply.size());
        feed.publish(exchange, nullptr, reply.data());
    }
    std::vector<std::string> beside;
    reader->read([&](const FeedEntry& entry) {
        beside.emplace_back(entry.received.begin(), entry.received.end());
    });
    EXPECT_EQ((std::vector<std::string>{longer, "", longer}), beside);
}

TEST(Feed, AMomentBeforeAnEntryHasItsTimeOnTheWallClock)
{
    FeedEntry entry;
    entry.at = momentAt(500);
    entry.wall = WallClock::time_point(std::chrono::milliseconds(7000));
    EXPECT_EQ(WallClock::time_point(std::chrono::milliseconds(6990)), wallAt(entry, momentAt(490)));
}

TEST(Feed, AnEntryOfNowIsStampedWithBothClocks)
{
    const Clock::time_point before = Clock::now();
    const WallClock::time_point wallBefore = WallClock::now();
    const FeedEntry entry = entryNow(FeedKind::gaveUp, "because");
    EXPECT_EQ(FeedKind::gaveUp, entry.kind);
    EXPECT_EQ("because", entry.text.toStdString());
    EXPECT_GE(entry.at, before);
    EXPECT_LE(entry.at, Clock::now());
    EXPECT_GE(entry.wall, wallBefore);
    EXPECT_LE(entry.wall, WallClock::now());
}

TEST(Feed, AnExchangeCarriesNothingOfAnEntryWhoseRoomItTook)
{
    Feed feed(kBlock);
    const auto reader = feed.subscribe();
    for (quint64 i = 0; i < kBlock; ++i) {
        FeedEntry entry = madePlan(1, {});
        entry.text = "old";
        feed.publish(entry);
    }
    Told told;
    told.readFrom(*reader);
    publishNumbers(feed, 0, 2 * kBlock);
    size_t exchanges = 0;
    reader->read([&](const FeedEntry& entry) {
        if (entry.standing) {
            return; // behind the gap
        }
        ++exchanges;
        EXPECT_EQ(FeedKind::exchange, entry.kind);
        EXPECT_TRUE(entry.text.isEmpty());
        EXPECT_EQ(nullptr, entry.plan);
    });
    EXPECT_EQ(kBlock, exchanges);
}

TEST(Feed, BehindAGapItSaysHowThingsStand)
{
    Feed feed(kBlock);
    const auto reader = feed.subscribe();
    feed.publish(entryNow(FeedKind::connected));
    feed.publish(madePlan(7, {}));
    feed.publish(entryNow(FeedKind::connectionLost, "gone"));
    publishNumbers(feed, 0, 3 * kBlock);
    std::vector<FeedEntry> standing;
    bool told = false;
    reader->read(
        [&](const FeedEntry& entry) {
            if (entry.standing) {
                EXPECT_TRUE(told) << "first how many were missed";
                standing.push_back(entry);
            }
        },
        [&](quint64) { told = true; });
    ASSERT_EQ(2u, standing.size());
    EXPECT_EQ(7u, standing[0].plan->generation);
    EXPECT_EQ(FeedKind::connectionLost, standing[1].kind);
    EXPECT_EQ("gone", standing[1].text.toStdString());
}

TEST(Feed, ReadersReadEachAtTheirOwnPace)
{
    Feed feed;
    const auto quick = feed.subscribe();
    const auto slow = feed.subscribe();
    Told toQuick;
    for (quint32 i = 0; i < 150; ++i) {
        publishNumbers(feed, i, i + 1);
        toQuick.readFrom(*quick);
        ASSERT_EQ(i + 1, toQuick.numbers.size());
    }
    EXPECT_EQ(numbersFrom(0, 150), toQuick.numbers);
    Told toSlow;
    toSlow.readFrom(*slow);
    EXPECT_EQ(numbersFrom(0, 150), toSlow.numbers);
    EXPECT_EQ(0u, slow->missed());
}

TEST(Feed, KeepsExactlyWhatItSaysAndThenTheOldestGo)
{
    Feed feed(2 * kBlock);
    const auto reader = feed.subscribe();
    publishNumbers(feed, 0, 2 * kBlock);
    Told told;
    told.readFrom(*reader);
    EXPECT_EQ(numbersFrom(0, 2 * kBlock), told.numbers);
    EXPECT_EQ(0u, reader->missed());

    const auto late = feed.subscribe();
    publishNumbers(feed, 0, 2 * kBlock + 1);
    Told ofLate;
    ofLate.readFrom(*late);
    EXPECT_EQ(std::vector<quint64>{kBlock}, ofLate.gaps) << "the oldest block, with one too many";
    EXPECT_EQ(std::vector<size_t>{0}, ofLate.gapBefore) << "told in place of what was missed";
    EXPECT_EQ(numbersFrom(kBlock, 2 * kBlock + 1), ofLate.numbers);
    EXPECT_EQ(kBlock, late->missed());
}

TEST(Feed, WithoutALimitOfItsOwnItKeeps16384)
{
    ASSERT_EQ(16384u, Feed::kMostEntries);
    Feed feed;
    const auto reader = feed.subscribe();
    publishNumbers(feed, 0, 16384);
    Told told;
    told.readFrom(*reader);
    EXPECT_EQ(16384u, told.numbers.size());
    EXPECT_EQ(0u, reader->missed());
    publishNumbers(feed, 0, 16385);
    Told again;
    again.readFrom(*reader);
    EXPECT_EQ(kBlock, reader->missed());
    EXPECT_EQ(numbersFrom(kBlock, 16385), again.numbers);
}

TEST(Feed, LimitsAreRoundedUpToWholeBlocks)
{
    const auto keeps = [](size_t most) {
        Feed feed(most);
        const auto reader = feed.subscribe();
        publishNumbers(feed, 0, 8 * kBlock);
        Told told;
        told.readFrom(*reader);
        EXPECT_EQ(8 * kBlock, told.numbers.size() + reader->missed());
        return told.numbers.size();
    };
    EXPECT_EQ(kBlock, keeps(0));
    EXPECT_EQ(kBlock, keeps(1));
    EXPECT_EQ(kBlock, keeps(kBlock));
    EXPECT_EQ(2 * kBlock, keeps(kBlock + 1));
}

TEST(Feed, MissedEntriesAddUp)
{
    Feed feed(kBlock);
    const auto reader = feed.subscribe();
    Told told;
    quint64 published = 0;
    for (int round = 1; round <= 20; ++round) {
        publishNumbers(feed, 0, static_cast<quint32>(37 * round));
        published += static_cast<quint64>(37) * round;
        told.readFrom(*reader);
        ASSERT_EQ(published, told.numbers.size() + told.inGaps);
        ASSERT_EQ(told.inGaps, reader->missed());
    }
    EXPECT_GT(told.gaps.size(), 5u);
    EXPECT_GT(told.numbers.size(), 15u * 37);
}

TEST(Feed, AReaderThatKeepsUpMissesNothing)
{
    Feed feed(2 * kBlock);
    const auto reader = feed.subscribe();
    Told told;
    for (quint32 i = 0; i < 5 * kBlock; ++i) {
        publishNumbers(feed, i, i + 1);
        told.readFrom(*reader);
        ASSERT_EQ(i + 1, told.numbers.size());
    }
    EXPECT_EQ(numbersFrom(0, 5 * kBlock), told.numbers);
    EXPECT_EQ(0u, reader->missed());
}

TEST(Feed, AReaderThatIsAlwaysOneBehindMissesNothing)
{
    Feed feed(2 * kBlock);
    const auto reader = feed.subscribe();
    std::vector<quint32> numbers;
    quint32 next = 1;
    publishNumbers(feed, 0, 1);
    for (quint32 round = 1; round < 5 * kBlock; ++round) {
        reader->read([&](const FeedEntry& entry) {
            numbers.push_back(entry.exchange.receivedBytes);
            publishNumbers(feed, next, next + 1);
            ++next;
        });
        ASSERT_EQ(round, numbers.size());
    }
    EXPECT_EQ(numbersFrom(0, next - 1), numbers);
    EXPECT_EQ(0u, reader->missed());
}

TEST(Feed, AReaderThatMissesHoldsNobodyUp)
{
    Feed feed(kBlock);
    const auto slow = feed.subscribe();
    const auto quick = feed.subscribe();
    Told toQuick;
    for (quint32 i = 0; i < 10 * kBlock; ++i) {
        publishNumbers(feed, i, i + 1);
        toQuick.readFrom(*quick);
    }
    EXPECT_EQ(numbersFrom(0, 10 * kBlock), toQuick.numbers);
    EXPECT_EQ(0u, quick->missed());
    Told toSlow;
    toSlow.readFrom(*slow);
    EXPECT_EQ(numbersFrom(9 * kBlock, 10 * kBlock), toSlow.numbers);
    EXPECT_EQ(9 * kBlock, slow->missed());
}

TEST(Feed, NothingIsKeptWithoutAReader)
{
    Feed feed;
    EXPECT_FALSE(feed.isRead());
    publishNumbers(feed, 0, 100);
    auto first = feed.subscribe();
    const auto second = feed.subscribe();
    EXPECT_TRUE(feed.isRead());
    Told told;
    told.readFrom(*first);
    EXPECT_TRUE(told.numbers.empty());
    publishNumbers(feed, 100, 103);
    first.reset();
    EXPECT_TRUE(feed.isRead());
    told.readFrom(*second);
    EXPECT_EQ(numbersFrom(100, 103), told.numbers);
}

TEST(Feed, WhatHappenedBetweenTwoReadersIsToldToNeither)
{
    Feed feed;
    auto before = feed.subscribe();
    publishNumbers(feed, 0, 3);
    Told told;
    told.readFrom(*before);
    before.reset();
    EXPECT_FALSE(feed.isRead());
    publishNumbers(feed, 3, 8);
    feed.publish(entryWith(FeedKind::gaveUp, "unread"));
    const auto after = feed.subscribe();
    publishNumbers(feed, 8, 10);
    Told later;
    later.readFrom(*after);
    EXPECT_EQ(numbersFrom(8, 10), later.numbers);
    EXPECT_EQ(0u, after->missed());
}

TEST(Feed, ALaterReaderBeginsInTheMiddleOfABlock)
{
    Feed feed;
    const auto early = feed.subscribe();
    publishNumbers(feed, 0, 40);
    const auto late = feed.subscribe();
    publishNumbers(feed, 40, 90);
    Told toLate;
    toLate.readFrom(*late);
    EXPECT_EQ(numbersFrom(40, 90), toLate.numbers);
    Told toEarly;
    toEarly.readFrom(*early);
    EXPECT_EQ(numbersFrom(0, 90), toEarly.numbers);
}

TEST(Feed, ALateReaderIsToldOnceHowThingsStand)
{
    Feed feed;
    feed.publish(madePlan(1, {}));
    feed.publish(madePlan(2, {}));
    feed.publish(entryWith(FeedKind::connectFailed, "refused"));
    feed.publish(entryWith(FeedKind::connected, "now"));
    feed.publish(entryWith(FeedKind::gaveUp, "passing"));
    feed.publish(entryWith(FeedKind::operationEnded, "passing"));
    feed.publish(entryWith(FeedKind::framesDropped, "passing"));
    const auto reader = feed.subscribe();
    publishNumbers(feed, 0, 1);
    std::vector<FeedKind> kinds;
    std::vector<bool> standing;
    reader->read([&](const FeedEntry& entry) {
        kinds.push_back(entry.kind);
        standing.push_back(entry.standing);
        if (entry.kind == FeedKind::planChanged) {
            EXPECT_EQ(2u, entry.plan->generation) << "the latest only";
        }
        if (entry.kind == FeedKind::connected) {
            EXPECT_EQ("now", entry.text.toStdString());
        }
    });
    EXPECT_EQ(
        (std::vector<FeedKind>{FeedKind::planChanged, FeedKind::connected, FeedKind::exchange}),
        kinds);
    EXPECT_EQ((std::vector<bool>{true, true, false}), standing);
    Told told;
    told.readFrom(*reader);
    EXPECT_TRUE(told.kinds.empty());
}

TEST(Feed, HowThingsStandIsToldToAReaderThatReadsFirstWithNothingPublished)
{
    Feed feed;
    feed.publish(entryWith(FeedKind::connectionLost, "cut"));
    const auto reader = feed.subscribe();
    Told told;
    told.readFrom(*reader);
    EXPECT_EQ(std::vector<FeedKind>{FeedKind::connectionLost}, told.kinds);
    publishNumbers(feed, 0, 2);
    told.readFrom(*reader);
    EXPECT_EQ(
        (std::vector<FeedKind>{FeedKind::connectionLost, FeedKind::exchange, FeedKind::exchange}),
        told.kinds);
}

TEST(Feed, EachKindOfConnectionEntryStands)
{
    for (const FeedKind kind :
         {FeedKind::connected, FeedKind::connectFailed, FeedKind::connectionLost}) {
        Feed feed;
        feed.publish(entryWith(FeedKind::connected, "first"));
        feed.publish(entryWith(kind, "last"));
        const auto reader = feed.subscribe();
        int count = 0;
        reader->read([&](const FeedEntry& entry) {
            ++count;
            EXPECT_EQ(kind, entry.kind);
            EXPECT_EQ("last", entry.text.toStdString());
            EXPECT_TRUE(entry.standing);
        });
        EXPECT_EQ(1, count);
    }
}

TEST(Feed, ToWhoIsThereAConnectionIsNoStandingEntry)
{
    Feed feed;
    const auto early = feed.subscribe();
    feed.publish(entryWith(FeedKind::connected, "now"));
    const auto late = feed.subscribe();
    std::vector<bool> standing;
    early->read([&](const FeedEntry& entry) { standing.push_back(entry.standing); });
    late->read([&](const FeedEntry& entry) { standing.push_back(entry.standing); });
    EXPECT_EQ((std::vector<bool>{false, true}), standing) << "to each once";
}

TEST(Feed, WhatHappensWhileAReaderReadsComesWithItsNextCall)
{
    Feed feed;
    const auto reader = feed.subscribe();
    publishNumbers(feed, 0, 100);
    std::vector<quint32> first;
    quint32 next = 100;
    reader->read([&](const FeedEntry& entry) {
        first.push_back(entry.exchange.receivedBytes);
        publishNumbers(feed, next, next + 1);
        ++next;
    });
    EXPECT_EQ(numbersFrom(0, 100), first);
    Told told;
    told.readFrom(*reader);
    EXPECT_EQ(numbersFrom(100, 200), told.numbers);
}

TEST(Feed, EntriesStayAsTheyAreWhileAReaderLooksAtThem)
{
    Feed feed(kBlock);
    const auto reader = feed.subscribe();
    publishNumbers(feed, 0, kBlock);
    std::vector<quint32> seen;
    quint32 next = kBlock;
    reader->read([&](const FeedEntry& entry) {
        publishNumbers(feed, next, next + 3 * kBlock);
        next += 3 * kBlock;
        seen.push_back(entry.exchange.receivedBytes);
        EXPECT_TRUE(isWhole(entry.exchange));
    });
    EXPECT_EQ(numbersFrom(0, kBlock), seen);
    Told told;
    told.readFrom(*reader);
    EXPECT_EQ(next, seen.size() + told.numbers.size() + reader->missed());
    EXPECT_EQ(numbersFrom(next - kBlock, next), told.numbers);
}

TEST(Feed, AReaderThatLosesGroundWhileReadingIsToldItsGapInPlace)
{
    Feed feed(2 * kBlock);
    const auto reader = feed.subscribe();
    publishNumbers(feed, 0, 2 * kBlock);
    quint64 expected = 0;
    bool more = true;
    const auto take = [&](const FeedEntry& entry) {
        EXPECT_EQ(expected, entry.exchange.receivedBytes);
        ++expected;
        if (more) {
            more = false;
            publishNumbers(feed, 2 * kBlock, 10 * kBlock);
        }
    };
    const auto gap = [&](quint64 count) { expected += count; };
    reader->read(take, gap);
    EXPECT_GE(expected, 2 * kBlock);
    reader->read(take, gap);
    EXPECT_EQ(10 * kBlock, expected);
    EXPECT_EQ(7 * kBlock, reader->missed());
}

TEST(Feed, AReaderMayOutliveIt)
{
    auto feed = std::make_unique<Feed>();
    const auto reader = feed->subscribe();
    publishNumbers(*feed, 0, 70);
    feed.reset();
    Told told;
    told.readFrom(*reader);
    EXPECT_EQ(numbersFrom(0, 70), told.numbers);
    told.readFrom(*reader);
    EXPECT_EQ(70u, told.numbers.size());
}

// The plan that an entry carries is counted for as long as the entry is kept.
TEST(Feed, KeepsNoMoreForASlowReader)
{
    Feed feed(2 * kBlock);
    const auto reader = feed.subscribe();
    FeedEntry entry = madePlan(1, {});
    for (int i = 0; i < 5000; ++i) {
        feed.publish(entry);
    }
    EXPECT_LE(entry.plan.use_count(), static_cast<long>(2 * kBlock) + 2);
    EXPECT_GE(entry.plan.use_count(), static_cast<long>(kBlock));
}

TEST(Feed, KeepsNothingThatEveryReaderIsThroughWith)
{
    Feed feed;
    FeedEntry entry = madePlan(1, {});
    const auto one = feed.subscribe();
    const auto other = feed.subscribe();
    size_t told = 0;
    for (int i = 0; i < 5000; ++i) {
        feed.publish(entry);
        one->read([&](const FeedEntry&) { ++told; });
        other->read([&](const FeedEntry&) { ++told; });
    }
    EXPECT_EQ(10000u, told);
    EXPECT_LE(entry.plan.use_count(), static_cast<long>(4 * kBlock));
}

TEST(Feed, KeepsNothingForReadersThatAreGone)
{
    Feed feed(2 * kBlock);
    FeedEntry entry = madePlan(1, {});
    const auto stays = feed.subscribe();
    for (int round = 0; round < 50; ++round) {
        auto reader = feed.subscribe();
        feed.publish(entry);
        const auto take = [&](const FeedEntry&) {
            for (quint32 i = 0; i < 3 * kBlock; ++i) {
                feed.publish(entry);
            }
            throw std::runtime_error("gone with a block in hand that is dropped meanwhile");
        };
        EXPECT_THROW(reader->read(take), std::runtime_error);
    }
    EXPECT_LE(entry.plan.use_count(), static_cast<long>(8 * kBlock));
    publishNumbers(feed, 0, 5);
    Told told;
    told.readFrom(*stays);
    ASSERT_GE(told.numbers.size(), 5u);
    EXPECT_EQ(numbersFrom(0, 5), std::vector<quint32>(told.numbers.end() - 5, told.numbers.end()));
}

TEST(Feed, ASlowReaderThatGoesFreesWhatWasKeptForIt)
{
    Feed feed;
    FeedEntry entry = madePlan(1, {});
    const auto quick = feed.subscribe();
    auto slow = feed.subscribe();
    for (int i = 0; i < 1000; ++i) {
        feed.publish(entry);
        quick->read([](const FeedEntry&) {});
    }
    slow.reset();
    const FeedEntry other = madePlan(2, {});
    for (int i = 0; i < 1100; ++i) {
        feed.publish(other);
        quick->read([](const FeedEntry&) {});
    }
    EXPECT_LE(other.plan.use_count(), static_cast<long>(4 * kBlock))
        << "freed blocks are filled again, no new ones are made";
}

TEST(Feed, ManyThreadsPublishAndReadAtOnce)
{
    constexpr quint32 kEach = 30000;
    constexpr quint32 kSecond = 1000000; // where the second publisher's numbers begin
    Feed feed(8 * kBlock);
    std::atomic<int> publishing{2};
    const auto publisher = [&](quint32 first) {
        for (quint32 i = 0; i < kEach; ++i) {
            feed.publish(numbered(first + i));
        }
        --publishing;
    };
    struct Reading {
        std::unique_ptr<FeedReader> reader;
        quint64 told = 0;
        bool whole = true;
        bool ordered = true;
    };
    std::vector<Reading> readings(3);
    for (Reading& reading : readings) {
        reading.reader = feed.subscribe();
    }
    const auto readAll = [&](Reading& reading) {
        quint32 next[2] = {0, kSecond};
        const auto take = [&](const FeedEntry& entry) {
            const quint32 number = entry.exchange.receivedBytes;
            quint32& expected = next[number >= kSecond ? 1 : 0];
            reading.whole = reading.whole && isWhole(entry.exchange);
            reading.ordered = reading.ordered && number >= expected;
            expected = number + 1;
            ++reading.told;
        };
        const Clock::time_point late = Clock::now() + kLate;
        while (publishing > 0 && Clock::now() < late) {
            reading.reader->read(take);
            std::this_thread::yield();
        }
        reading.reader->read(take);
    };
    std::atomic<bool> comesAndGoes{true};
    std::thread visitor([&] {
        while (comesAndGoes) {
            const auto reader = feed.subscribe();
            std::this_thread::yield();
            reader->read([&](const FeedEntry& entry) {
                EXPECT_TRUE(isWhole(entry.exchange));
                EXPECT_TRUE(feed.isRead());
            });
        }
    });
    std::vector<std::thread> threads;
    for (Reading& reading : readings) {
        threads.emplace_back([&] { readAll(reading); });
    }
    threads.emplace_back(publisher, 0);
    threads.emplace_back(publisher, kSecond);
    for (std::thread& thread : threads) {
        thread.join();
    }
    comesAndGoes = false;
    visitor.join();
    for (const Reading& reading : readings) {
        EXPECT_EQ(2 * kEach, reading.told + reading.reader->missed());
        EXPECT_GT(reading.told, 0u);
        EXPECT_TRUE(reading.whole);
        EXPECT_TRUE(reading.ordered);
    }
}

} // namespace tavmir::host
