// Entries kept, dropped and handed out again.
#include "page/kept_entries.h"

#include "feed/made_exchange.h"

#include <gtest/gtest.h>

#include <cstring>

namespace tavmir::host
{

namespace
{

FeedEntry exchangeAt(int ms, quint32 number = 7)
{
    Exchange exchange = madeRead(kReadWords, 1, {{3000, number}}, momentAt(ms));
    exchange.attempt = 3;
    return entryOf(exchange);
}

FeedEntry linkAt(int ms, FeedKind kind, const QString& text = QString())
{
    FeedEntry entry;
    entry.kind = kind;
    entry.at = momentAt(ms);
    entry.text = text;
    return entry;
}

} // namespace

TEST(KeptEntries, AnExchangeComesBackAsItWas)
{
    KeptEntries kept;
    const FeedEntry entry = exchangeAt(10);
    kept.take(entry);
    const FeedEntry again = *kept.at(1);
    EXPECT_EQ(entry.at, again.at);
    EXPECT_EQ(entry.exchange.attempt, again.exchange.attempt);
    EXPECT_EQ(entry.exchange.end, again.exchange.end);
    EXPECT_EQ(0, std::memcmp(entry.exchange.request, again.exchange.request,
                             entry.exchange.requestKept()));
    EXPECT_EQ(0,
              std::memcmp(entry.exchange.reply, again.exchange.reply, entry.exchange.replyKept()));
}

TEST(KeptEntries, AReplyThatIsLongerThanUsualIsKeptWhole)
{
    KeptEntries kept;
    FeedEntry entry = exchangeAt(10);
    entry.received.assign(300, 0xAB);
    kept.take(entry);
    EXPECT_EQ(entry.received, kept.at(1)->received);
}

TEST(KeptEntries, TheOldestGoWhenThereIsNoRoom)
{
    KeptEntries kept(10000);
    kept.take(exchangeAt(0));
    EXPECT_FALSE(kept.wholeSince()) << "nothing has gone";
    for (int i = 1; i < 1000; ++i) {
        kept.take(exchangeAt(i));
    }
    EXPECT_EQ(momentAt(static_cast<int>(kept.begin()) - 1), kept.wholeSince());
    EXPECT_EQ(1001, kept.end());
    EXPECT_GT(kept.end() - kept.begin(), 20);
    EXPECT_LT(kept.end() - kept.begin(), 100);
    EXPECT_EQ(momentAt(999), kept.at(1000)->at);
    EXPECT_EQ(kept.begin(), kept.firstAt(momentAt(0)));
    EXPECT_EQ(1000, kept.firstAt(momentAt(999)));
    EXPECT_EQ(1001, kept.firstAt(momentAt(5000)));
}

TEST(KeptEntries, HowTheConnectionStoodIsKnownOfAnyEntry)
{
    KeptEntries kept(10000);
    EXPECT_FALSE(kept.connectionBefore(1));
    kept.take(linkAt(0, FeedKind::connected));
    kept.take(exchangeAt(1));
    kept.take(linkAt(2, FeedKind::connectionLost, "why"));
    kept.take(exchangeAt(3));
    EXPECT_FALSE(kept.connectionBefore(1));
    EXPECT_EQ(FeedKind::connected, kept.connectionBefore(3)->kind);
    EXPECT_EQ(FeedKind::connectionLost, kept.connectionBefore(4)->kind);
    EXPECT_TRUE(kept.connectionBefore(4)->standing);
    for (int i = 0; i < 1000; ++i) {
        kept.take(exchangeAt(i));
    }
    EXPECT_EQ("why", kept.connectionBefore(kept.begin())->text) << "though it is not kept itself";
}

TEST(KeptEntries, AGapStandsInItsPlace)
{
    KeptEntries kept;
    kept.take(exchangeAt(1));
    kept.gap(17);
    kept.take(exchangeAt(2));
    std::string seen;
    kept.visit(
        0, [&](const FeedEntry&, quint64 number) { seen += std::to_string(number) + " "; },
        [&](quint64 missed, quint64) { seen += "gap of " + std::to_string(missed) + " "; });
    EXPECT_EQ("1 gap of 17 3 ", seen);
}

} // namespace tavmir::host
