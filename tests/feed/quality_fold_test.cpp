// The quality of each value and its reason, rule by rule.
#include "feed/value_fold.h"

#include "made_exchange.h"

#include <gtest/gtest.h>

namespace tavmir::host
{

namespace
{

using project::DataType;

constexpr quint8 kWriteBits = 101;
constexpr quint8 kWriteDoubleWords = 109;

// A request that names the addresses, as madeRead makes it, with another end.
Exchange ended(Exchange exchange, ExchangeEnd end)
{
    exchange.end = end;
    exchange.replySize = end == ExchangeEnd::exception ? 9 : 0;
    exchange.exceptionCode = end == ExchangeEnd::exception ? 2 : 0;
    exchange.replyTimeoutMs = 500;
    exchange.sentBytes = end == ExchangeEnd::notSent ? 0 : exchange.requestSize;
    return exchange;
}

class Qualities : public testing::Test
{
protected:
    Qualities() { link(FeedKind::connected, 0); }

    // The variables are words at 160, 176 and so on.
    void poll(int words)
    {
        std::vector<PolledElement> polled;
        for (int i = 0; i < words; ++i) {
            polled.push_back(madeVariable(DataType::word, 160 + 16 * i));
        }
        poll(polled);
    }

    void poll(const std::vector<PolledElement>& polled)
    {
        FeedEntry plan = madePlan(1, polled);
        plan.at = momentAt(0);
        fold_.take(plan);
    }

    static Exchange reading(const std::vector<qint32>& addresses, int ms)
    {
        std::vector<ReadElement> elements;
        for (const qint32 address : addresses) {
            elements.push_back({address, 7});
        }
        return madeRead(kReadWords, 1, elements, momentAt(ms));
    }

    void answered(const std::vector<qint32>& addresses, int ms)
    {
        fold_.take(entryOf(reading(addresses, ms)));
    }

    void failed(const std::vector<qint32>& addresses, ExchangeEnd end, int ms)
    {
        fold_.take(entryOf(ended(reading(addresses, ms), end)));
    }

    void gaveUp(const std::vector<qint32>& addresses, ExchangeEnd end, int ms)
    {
        failed(addresses, end, ms);
        fold_.take(entryNow(FeedKind::gaveUp));
    }

    // A request that writes; its entries are as long as the type's.
    void wrote(quint8 function, qint32 address, ExchangeEnd end, int ms, int station = 1)
    {
        Exchange exchange = madeRead(function, station, {{address, 9}}, momentAt(ms));
        std::copy(exchange.reply, exchange.reply + exchange.replySize, exchange.request);
        exchange.requestSize = exchange.replySize;
        exchange.replySize = exchange.expectedReply = 9;
        exchange.kind = RequestKind::write;
        fold_.take(entryOf(end == ExchangeEnd::reply ? exchange : ended(exchange, end)));
    }

    void writeEnded(OutcomeState state, qint32 address, int elements, int bitsApart, int ms)
    {
        FeedEntry entry = entryNow(FeedKind::operationEnded, "why");
        entry.at = momentAt(ms);
        entry.operation.state = state;
        entry.operation.elements = elements;
        entry.operation.station = 1;
        entry.operation.firstAddress = address;
        entry.operation.bitsApart = bitsApart;
        fold_.take(entry);
    }

    void link(FeedKind kind, int ms, const QString& why = QString())
    {
        FeedEntry entry;
        entry.kind = kind;
        entry.at = momentAt(ms);
        entry.text = why;
        fold_.take(entry);
    }

    // "good", "bad: why"
    std::string quality(size_t variable, int ms) const
    {
        const ValueQuality quality = fold_.quality(variable, momentAt(ms));
        const std::string word = qualityWord(quality.quality);
        return quality.reason.isEmpty() ? word : word + ": " + quality.reason.toStdString();
    }

    ValueFold fold_{QualityRules{2000, "plant:5020"}};
};

const std::string kTimeOut = "the controller did not answer within 500 ms";
const std::string kRefusal =
    "the controller refused the request: exception 2 (illegal data address)";

} // namespace

TEST_F(Qualities, NeverUntilAReplyBringsIt)
{
    poll(2);
    EXPECT_EQ("never: no reply has brought it yet", quality(0, 10));
    answered({160}, 20);
    EXPECT_EQ("good", quality(0, 20));
    EXPECT_EQ("never: no reply has brought it yet", quality(1, 20));
}

TEST_F(Qualities, WhatWasNeverReadSaysThatTheLineIsDead)
{
    poll(1);
    link(FeedKind::connectFailed, 10, "plant:5020: Connection refused");
    EXPECT_EQ("never: no reply has brought it yet: not connected to plant:5020: Connection refused",
              quality(0, 20));
}

TEST_F(Qualities, StaleBehindItsTime)
{
    poll(1);
    answered({160}, 100);
    EXPECT_EQ("good", quality(0, 2100));
    EXPECT_EQ("stale: not read for 2.0 s", quality(0, 2101));
    EXPECT_EQ("stale: not read for 5.0 s", quality(0, 5100));
    answered({160}, 5100);
    EXPECT_EQ("good", quality(0, 5200));
}

TEST_F(Qualities, ThreePassesAreWaitedForWhenTheyTakeLonger)
{
    poll(2);
    answered({160}, 500);
    answered({176}, 1000);
    EXPECT_EQ("good", quality(0, 3500)) << "three passes of 1 s";
    EXPECT_EQ("stale: not read for 3.0 s", quality(0, 3501));
}

TEST_F(Qualities, RequestsGivenUpBelongToThePassToo)
{
    poll(2);
    answered({160}, 100);
    gaveUp({176}, ExchangeEnd::timeout, 2000);
    answered({160}, 2100);
    EXPECT_EQ("good", quality(0, 8100)) << "three passes of 2 s";
    EXPECT_EQ("stale: not read for 6.0 s", quality(0, 8101));
}

TEST_F(Qualities, ADeadLinkMakesAllStaleAtOnceWithItsReason)
{
    poll(2);
    answered({160}, 100);
    link(FeedKind::connectionLost, 110, "the controller closed the connection");
    EXPECT_EQ("stale: not connected to plant:5020: the controller closed the connection",
              quality(0, 110));
    link(FeedKind::connectFailed, 120, "plant:5020: Connection refused");
    EXPECT_EQ("stale: not connected to plant:5020: Connection refused", quality(0, 130));
    link(FeedKind::connected, 140);
    EXPECT_EQ("good", quality(0, 150)) << "young enough still";
}

TEST_F(Qualities, RequestsThatWentDownWithTheLinkAreTheLinksFault)
{
    poll(1);
    answered({160}, 100);
    link(FeedKind::connectionLost, 110, "cut");
    gaveUp({160}, ExchangeEnd::lost, 111);
    gaveUp({160}, ExchangeEnd::notSent, 112);
    EXPECT_EQ("stale: not connected to plant:5020: cut", quality(0, 113));
    link(FeedKind::connected, 120);
    EXPECT_EQ("bad: no connection to the controller: cut", quality(0, 121))
        << "its request was given up, the others are good";
    answered({160}, 130);
    EXPECT_EQ("good", quality(0, 131));
}

TEST_F(Qualities, ASilentControllerMakesAllStaleHoweverLongAPassIs)
{
    poll(2);
    answered({160}, 3000);
    answered({176}, 6000); // a pass takes 6 s
    failed({160}, ExchangeEnd::timeout, 6500);
    EXPECT_EQ("good", quality(1, 8000));
    EXPECT_EQ("stale: no reply from plant:5020 for 2.0 s: " + kTimeOut, quality(1, 8001));
    answered({160}, 8100);
    EXPECT_EQ("good", quality(1, 8101));
}

TEST_F(Qualities, BadWhenItsRequestWasGivenUp)
{
    poll(3);
    answered({160, 176, 192}, 100);
    failed({160, 176}, ExchangeEnd::timeout, 600);
    EXPECT_EQ("good", quality(0, 600)) << "it is repeated still";
    gaveUp({160, 176}, ExchangeEnd::timeout, 1100);
    EXPECT_EQ("bad: " + kTimeOut, quality(0, 1100));
    EXPECT_EQ("bad: " + kTimeOut, quality(1, 1100));
    EXPECT_EQ("good", quality(2, 1100));
    answered({176}, 1200);
    EXPECT_EQ("bad: " + kTimeOut, quality(0, 1200));
    EXPECT_EQ("good", quality(1, 1200)) << "a later good reply makes it good";
}

TEST_F(Qualities, WhatWasNeverReadCanBeBad)
{
    poll(1);
    gaveUp({160}, ExchangeEnd::exception, 100);
    EXPECT_EQ("bad: " + kRefusal, quality(0, 100));
    EXPECT_FALSE(fold_.value(0).readAt);
}

TEST_F(Qualities, ARepetitionThatSucceedsIsNothingBad)
{
    poll(1);
    failed({160}, ExchangeEnd::timeout, 600);
    answered({160}, 700);
    fold_.take(entryNow(FeedKind::gaveUp)); // of nothing that this fold saw fail
    EXPECT_EQ("good", quality(0, 700));
}

TEST_F(Qualities, ARefusedRequestOfManyAccusesNobodyUntilOneIsTriedAlone)
{
    poll(3);
    gaveUp({160, 176, 192}, ExchangeEnd::exception, 100);
    EXPECT_EQ("bad: in a refused request of 3: " + kRefusal, quality(1, 100));
    gaveUp({176}, ExchangeEnd::exception, 110);
    EXPECT_EQ("bad: " + kRefusal, quality(1, 110));
    EXPECT_EQ("bad: in a refused request of 3: " + kRefusal, quality(2, 110));
    gaveUp({160, 176, 192}, ExchangeEnd::exception, 120);
    EXPECT_EQ("bad: " + kRefusal, quality(1, 120)) << "it has been tried alone";
    answered({176}, 130);
    gaveUp({160, 176, 192}, ExchangeEnd::exception, 140);
    EXPECT_EQ("bad: in a refused request of 3: " + kRefusal, quality(1, 140))
        << "it was answered meanwhile";
}

TEST_F(Qualities, TimeOutsOfManyAreThoseOfEach)
{
    poll(2);
    gaveUp({160, 176}, ExchangeEnd::timeout, 100);
    EXPECT_EQ("bad: " + kTimeOut, quality(0, 100));
}

TEST_F(Qualities, TroubleBelongsToItsClassAndStation)
{
    const auto plan = [](DataType type, int station) { return madeVariable(type, 160, station); };
    poll({plan(DataType::word, 1), plan(DataType::word, 2), plan(DataType::dword, 1),
          plan(DataType::bit, 1)});
    gaveUp({160}, ExchangeEnd::exception, 100);
    EXPECT_EQ("bad: " + kRefusal, quality(0, 100));
    for (const size_t other : {1, 2, 3}) {
        EXPECT_EQ("never: no reply has brought it yet", quality(other, 100)) << other;
    }
}

TEST_F(Qualities, AnotherPlanKeepsWhatIsKnown)
{
    poll(2);
    answered({160}, 90);
    gaveUp({160, 176}, ExchangeEnd::exception, 100);
    poll(1);
    EXPECT_EQ("bad: in a refused request of 2: " + kRefusal, quality(0, 100));
}

TEST_F(Qualities, AWriteThatIsNotAcknowledgedLeavesTheOldValueUnconfirmed)
{
    poll(2);
    answered({160, 176}, 100);
    wrote(kWriteWords, 160, ExchangeEnd::timeout, 600);
    EXPECT_EQ("unconfirmed: a write of it is not acknowledged: " + kTimeOut, quality(0, 600));
    EXPECT_EQ(QByteArray("\x07\0", 2), fold_.value(0).bytes) << "never the value asked for";
    EXPECT_EQ("good", quality(1, 600));
    wrote(kWriteWords, 160, ExchangeEnd::reply, 700);
    EXPECT_EQ("good", quality(0, 700)) << "acknowledged";
    wrote(kWriteWords, 160, ExchangeEnd::exception, 800);
    EXPECT_EQ("unconfirmed: a write of it is not acknowledged: " + kRefusal, quality(0, 800));
    answered({160}, 900);
    EXPECT_EQ("good", quality(0, 900)) << "read since";
}

TEST_F(Qualities, WritesOfEachClassAreFoundByTheirPlace)
{
    poll({madeVariable(DataType::bit, 5), madeVariable(DataType::dword, 320),
          madeVariable(DataType::word, 320), madeVariable(DataType::bit, 6)});
    wrote(kWriteBits, 5, ExchangeEnd::timeout, 600);
    wrote(kWriteDoubleWords, 320, ExchangeEnd::timeout, 1200);
    const std::string unconfirmed = "unconfirmed: a write of it is not acknowledged: " + kTimeOut;
    EXPECT_EQ(unconfirmed, quality(0, 1200));
    EXPECT_EQ(unconfirmed, quality(1, 1200));
    EXPECT_EQ("never", quality(2, 1200).substr(0, 5));
    EXPECT_EQ("never", quality(3, 1200).substr(0, 5));
}

TEST_F(Qualities, ADeadLinkDoesNotHideAnUnconfirmedWrite)
{
    poll(2);
    answered({160, 176}, 100);
    link(FeedKind::connectionLost, 110, "cut");
    wrote(kWriteWords, 160, ExchangeEnd::lost, 111);
    EXPECT_EQ("unconfirmed: a write of it is not acknowledged: the connection was lost: cut",
              quality(0, 112));
    EXPECT_EQ("stale: not connected to plant:5020: cut", quality(1, 112));
}

TEST_F(Qualities, AnOperationThatEndedOtherwiseThanDoneMarksEachOfItsElements)
{
    poll(4);
    answered({160, 176, 192, 208}, 100);
    writeEnded(OutcomeState::notSent, 176, 2, 16, 200);
    EXPECT_EQ("good", quality(0, 200));
    EXPECT_EQ("unconfirmed: a write of it ended as not sent: why", quality(1, 200));
    EXPECT_EQ("unconfirmed: a write of it ended as not sent: why", quality(2, 200));
    EXPECT_EQ("good", quality(3, 200));
    answered({160, 176, 192, 208}, 300);
    writeEnded(OutcomeState::done, 160, 4, 16, 400);
    writeEnded(OutcomeState::refused, 160, 4, 32, 400); // double words
    for (const size_t variable : {0, 1, 2, 3}) {
        EXPECT_EQ("good", quality(variable, 400)) << variable;
    }
}

TEST_F(Qualities, AFailedReadIsNoFailedWrite)
{
    poll(1);
    answered({160}, 100);
    FeedEntry entry = entryNow(FeedKind::operationEnded, "why");
    entry.at = momentAt(200);
    entry.operation = {OperationKind::read, OutcomeState::unknown, 1, 1, 0, 1, 160, 16};
    fold_.take(entry);
    EXPECT_EQ("good", quality(0, 200));
}

TEST_F(Qualities, TheNewestTroubleCounts)
{
    poll(1);
    answered({160}, 100);
    wrote(kWriteWords, 160, ExchangeEnd::timeout, 600);
    gaveUp({160}, ExchangeEnd::timeout, 1100);
    EXPECT_EQ("bad: " + kTimeOut, quality(0, 1100));
    wrote(kWriteWords, 160, ExchangeEnd::exception, 1200);
    EXPECT_EQ("unconfirmed: a write of it is not acknowledged: " + kRefusal, quality(0, 1200));
}

TEST_F(Qualities, ATextIsAsBadAsItsWorstWordAndAsOldAsItsOldest)
{
    poll({madeVariable(DataType::text, 320, 1, 2)});
    answered({320}, 100);
    EXPECT_EQ("never: no reply has brought it yet", quality(0, 100));
    answered({336}, 300);
    EXPECT_EQ("good", quality(0, 2100));
    EXPECT_EQ("stale: not read for 2.0 s", quality(0, 2101));
    gaveUp({336}, ExchangeEnd::timeout, 2200);
    EXPECT_EQ("bad: " + kTimeOut, quality(0, 2200));
    answered({320, 336}, 2300);
    EXPECT_EQ("good", quality(0, 2300));
    gaveUp({320, 336}, ExchangeEnd::exception, 2400);
    EXPECT_EQ("bad: " + kRefusal, quality(0, 2400)) << "its own words alone";
}

TEST_F(Qualities, BitsOfAWordShareItsQuality)
{
    poll({madeBitOf(DataType::word, 160, 3), madeBitOf(DataType::word, 160, 4)});
    answered({160}, 100);
    wrote(kWriteWords, 160, ExchangeEnd::timeout, 200);
    EXPECT_EQ("unconfirmed", quality(0, 200).substr(0, 11));
    EXPECT_EQ("unconfirmed", quality(1, 200).substr(0, 11));
}

TEST_F(Qualities, WhatTheControllerRefusesIsBadAndOfNoPass)
{
    FeedEntry entry =
        madePlan(1, {madeVariable(DataType::word, 160), madeVariable(DataType::word, 176),
                     madeVariable(DataType::word, 192), madeVariable(DataType::word, 208)});
    auto plan = std::make_shared<PolledGeneration>(*entry.plan);
    plan->setAside.push_back({3, "another"});
    plan->setAside.push_back({1, "refused, code 2 (illegal data address)"});
    entry.plan = plan;
    entry.at = momentAt(0);
    fold_.take(entry);
    EXPECT_EQ("never: no reply has brought it yet", quality(0, 1));
    EXPECT_EQ("bad: refused, code 2 (illegal data address)", quality(1, 1));
    EXPECT_EQ("bad: another", quality(3, 1));
    answered({160, 192}, 1000);
    EXPECT_EQ("good", quality(0, 4000)) << "a pass over two took 1 s";
    EXPECT_EQ("stale: not read for 3.0 s", quality(0, 4001));
    EXPECT_EQ("good", quality(2, 4000));
    answered({176}, 4000);
    EXPECT_EQ("good", quality(1, 4000)) << "somebody asked for it, and it was answered";
    link(FeedKind::connectionLost, 4100, "cut");
    EXPECT_EQ("stale: not connected to plant:5020: cut", quality(1, 4200));
    poll(3);
    link(FeedKind::connected, 4300);
    EXPECT_EQ("good", quality(1, 4400)) << "it is polled again";
}

TEST_F(Qualities, AfterAGapAGiveUpAccusesNobody)
{
    poll(1);
    answered({160}, 100);
    failed({160}, ExchangeEnd::timeout, 200);
    fold_.gap();
    fold_.take(entryNow(FeedKind::gaveUp));
    EXPECT_EQ("good", quality(0, 200));
}

TEST(QualityWords, EachHasAWordAndAMark)
{
    const struct {
        Quality quality;
        const char* word;
        const char* mark;
    } all[] = {{Quality::never, "never", ""},
               {Quality::good, "good", ""},
               {Quality::stale, "stale", "~"},
               {Quality::bad, "bad", "!"},
               {Quality::unconfirmed, "unconfirmed", "?"}};
    for (const auto& one : all) {
        EXPECT_STREQ(one.word, qualityWord(one.quality));
        EXPECT_STREQ(one.mark, qualityMark(one.quality));
    }
}

} // namespace tavmir::host
