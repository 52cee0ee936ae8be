// What looks like a mistake and is none, and mistakes that have another look than the usual one.
#include "wire_play.h"

#include <gtest/gtest.h>

namespace tavmir::test
{

namespace
{

using Kind = Event::Kind;
using Names = std::set<std::string>;

judge::HostTraits countingHost()
{
    judge::HostTraits host;
    host.counting = judge::CountingWrites{wire::ElementClass::words, 64};
    return host;
}

} // namespace

TEST(RightHosts, AReplyThatMeetsItsRepetitionOnTheWayIsNoSecondWrite)
{
    WirePlay play;
    play.asks(0, writeWord(1, 16, 5));
    play.replies(495, answerTo(writeWord(1, 16, 5)));
    play.asks(5, writeWord(1, 16, 5));
    EXPECT_EQ(play.brokenRules(), Names());
}

TEST(RightHosts, AWriteWhoseAcknowledgementMayBeLostWithTheConnectionComesAgain)
{
    WirePlay play;
    const Bytes write = writeWord(1, 16, 5);
    play.exchanges(write);
    play.controllerCloses(1);
    play.connects(100, 2);
    play.exchanges(write);
    EXPECT_EQ(play.brokenRules(), Names());
}

TEST(RightHosts, AWriteThatWasAcknowledgedLongAgoDoesNotComeAgainOnANewConnection)
{
    WirePlay play;
    const Bytes write = writeWord(1, 16, 5);
    play.exchanges(write);
    play.controllerCloses(1500);
    play.connects(100, 2);
    play.exchanges(write);
    EXPECT_EQ(play.brokenRules(), Names{"write-once"});
}

TEST(RightHosts, AttemptsAreCountedOverConnections)
{
    WirePlay play;
    const Bytes read = readWord(1, 16);
    for (int client = 1; client <= 4; ++client) {
        play.connects(200, client);
        play.asks(1, read);
        play.controllerCloses(1);
    }
    EXPECT_EQ(play.brokenRules(), Names{"attempts"});
}

TEST(RightHosts, OneBadReplyMayBeGivenUp)
{
    WirePlay play;
    play.begins(Play::tooLong);
    for (unsigned number = 1; number < 9; ++number) {
        const Bytes request = readWord(number, 16);
        play.asks(100, request);
        play.replies(1, request, Reply::tooLong);
        if (number % 2 == 0) {
            play.exchanges(request, 1);
        }
    }
    EXPECT_EQ(play.brokenRules(), Names());
    EXPECT_EQ(play.verdictOf(Rule::longRefused), judge::Verdict::kept);
}

TEST(RightHosts, WithOneAttemptNobodyCanTellABadReplyGivenUpFromOneTaken)
{
    judge::HostTraits host;
    host.attempts = 1;
    WirePlay play(host);
    for (unsigned number = 1; number < 6; ++number) {
        play.asks(100, readWord(number, 16));
        play.replies(1, readWord(number, 16), Reply::tooShort);
    }
    EXPECT_EQ(play.brokenRules(), Names());
    EXPECT_EQ(play.verdictOf(Rule::shortRefused), judge::Verdict::notJudged);
}

TEST(RightHosts, GivingTheConnectionUpBehindAStrayReplyIsNoMistake)
{
    WirePlay play;
    play.asks(0, readWord(2, 16));
    play.replies(1, answerTo(readWord(1, 16)), Reply::late);
    play.hostCloses(1);
    EXPECT_EQ(play.brokenRules(), Names());
    EXPECT_EQ(play.verdictOf(Rule::lateDropped), judge::Verdict::kept);
}

TEST(RightHosts, ARepetitionBehindAStrayReplyIsEarly)
{
    WirePlay play;
    play.asks(0, readWord(2, 16));
    play.replies(1, answerTo(readWord(1, 16)), Reply::foreign);
    play.asks(1, readWord(2, 16));
    EXPECT_EQ(play.brokenRules(), Names{"foreign-dropped"});
}

TEST(RightHosts, SomeTimesMayBeShorterByTheSlack)
{
    judge::HostTraits host;
    host.slackPercent = 50;
    WirePlay play(host);
    play.asks(0, readWord(1, 16));
    play.asks(260, readWord(1, 16));
    EXPECT_EQ(play.brokenRules(), Names());
}

TEST(RightHosts, ARequestThatWasNoticedLateMayBeRepeatedSooner)
{
    for (const int slowMs : {0, 150}) {
        WirePlay play;
        play.asks(200, readWord(1, 16), slowMs);
        play.asks(300, readWord(1, 16));
        EXPECT_EQ(play.brokenRules(), slowMs > 0 ? Names() : Names{"wait-out"});
    }
}

TEST(RightHosts, PausesThatAreLongNeedNotGrow)
{
    WirePlay play;
    play.connects();
    play.begins(Play::rejected);
    play.controllerCloses();
    for (int client = 2; client < 6; ++client) {
        play.connects(2000, client);
        play.controllerCloses();
    }
    play.happens(Kind::ends);
    EXPECT_EQ(play.brokenRules(), Names());
    EXPECT_EQ(play.verdictOf(Rule::reconnectGrows), judge::Verdict::kept);
}

TEST(RightHosts, AFewRefusedRequestsNeedNotBecomeFewer)
{
    WirePlay play;
    play.begins(Play::refuseAll);
    for (unsigned number = 1; number < 60; ++number) {
        play.asks(99, readWord(number, 16));
        play.refuses(readWord(number, 16));
    }
    play.happens(Kind::ends);
    EXPECT_EQ(play.brokenRules(), Names());
}

TEST(RightHosts, NothingIsReadWhileNothingIsAnswered)
{
    WirePlay play;
    play.begins(Play::silent);
    play.asks(0, readWord(1, 16));
    play.waits(20000);
    EXPECT_EQ(play.brokenRules(), Names());
}

TEST(RightHosts, NumbersBeginAnewWithAConnection)
{
    WirePlay play;
    play.exchanges(readWord(1, 16));
    play.exchanges(readWord(2, 16));
    play.controllerCloses(2000);
    play.connects(100, 2);
    play.exchanges(readWord(1, 16));
    play.exchanges(readWord(2, 16));
    EXPECT_EQ(play.brokenRules(), Names());
}

TEST(RightHosts, ANumberReturnsWhenThirtyTwoOthersWereUsed)
{
    for (const unsigned others : {31u, 32u}) {
        WirePlay play;
        play.exchanges(readWord(1, 16));
        for (unsigned i = 0; i < others; ++i) {
            play.exchanges(readWord(2 + i, 16));
        }
        play.exchanges(readWord(1, 32));
        EXPECT_EQ(play.brokenRules().count("id-fresh"), others < 32 ? 1u : 0u) << others;
    }
}

TEST(RightHosts, RequestsMayComeInPiecesAndTogether)
{
    WirePlay play;
    const Bytes read = readWord(1, 16);
    play.asks(0, Bytes(read.begin(), read.begin() + 3));
    play.asks(100, Bytes(read.begin() + 3, read.end()));
    play.replies(1, answerTo(read));
    EXPECT_EQ(play.brokenRules(), Names());
    Bytes two = readWord(2, 16);
    const Bytes third = readWord(3, 16);
    two.insert(two.end(), third.begin(), third.end());
    play.asks(100, two);
    EXPECT_EQ(play.brokenRules(), Names{"one-in-flight"});
}

TEST(RightHosts, AConnectionThatEndsWithHalfARequestIsTold)
{
    WirePlay play;
    play.asks(0, Bytes{0, 1, 0});
    play.hostCloses(1);
    EXPECT_EQ(play.brokenRules(), Names{"frame-whole"});
}

TEST(RightHosts, AFrameThatPromisesTooMuchIsTooLong)
{
    WirePlay play;
    play.asks(0, Bytes{0, 1, 0, 0, 1, 44, 1, 102, 72});
    EXPECT_EQ(play.brokenRules(), Names{"frame-limit"});
}

TEST(RightHosts, SlowRepliesArePatientlyWaitedFor)
{
    WirePlay play;
    play.begins(Play::slow);
    play.asks(0, readWord(1, 16));
    play.asks(200, readWord(1, 16));
    EXPECT_EQ(play.brokenRules(), Names{"slow-patience"});
}

TEST(RightHosts, ACountingWriteThatFailedMayBeLeftBehind)
{
    WirePlay play(countingHost());
    for (int i = 0; i < 3; ++i) {
        play.asks(500, writeWord(1, 64, 5));
    }
    play.exchanges(writeWord(2, 64, 8), 500);
    play.exchanges(writeWord(3, 64, 9));
    EXPECT_EQ(play.brokenRules(), Names());
}

TEST(RightHosts, ACountingWriteComesAgainOnlyAsARepetition)
{
    WirePlay play(countingHost());
    play.asks(0, writeWord(1, 64, 5));
    play.asks(500, writeWord(2, 64, 5));
    EXPECT_EQ(play.brokenRules(), Names{"write-once"});
}

TEST(RightHosts, ACountingWriteThatIsOverDoesNotComeBack)
{
    WirePlay play(countingHost());
    play.exchanges(writeWord(1, 64, 5));
    play.exchanges(writeWord(2, 64, 6));
    play.exchanges(writeWord(3, 64, 5));
    EXPECT_EQ(play.brokenRules(), Names{"write-once"});
}

TEST(RightHosts, ACountingWriteGoesOnBehindTheGreatestWord)
{
    WirePlay play(countingHost());
    play.exchanges(writeWord(1, 64, 65535));
    play.exchanges(writeWord(2, 64, 0));
    EXPECT_EQ(play.brokenRules(), Names());
    EXPECT_EQ(play.verdictOf(Rule::writeKept), judge::Verdict::kept);
}

TEST(RightHosts, TimeOutAndAttemptsAreLearnedFromSilence)
{
    judge::HostTraits host;
    host.replyTimeout = 0;
    host.attempts = 0;
    WirePlay play(host);
    play.begins(Play::silent);
    for (int i = 0; i < 4; ++i) {
        play.asks(300, readWord(1, 16));
    }
    play.asks(300, readWord(2, 16));
    play.happens(Kind::ends);
    EXPECT_EQ(play.judge().host().replyTimeout, judge::milliseconds(300));
    EXPECT_EQ(play.judge().host().attempts, 4);
    EXPECT_EQ(play.brokenRules(), Names());
    play.asks(100, readWord(2, 16));
    EXPECT_EQ(play.brokenRules(), Names{"wait-out"});
}

TEST(RightHosts, AHostThatDoesNotComeBackWhereItCouldIsToldSo)
{
    WirePlay play;
    play.connects();
    play.begins(Play::refused);
    play.controllerCloses();
    play.happens(Kind::ends, 2000);
    play.happens(Kind::notRecovered, 10000);
    EXPECT_EQ(play.brokenRules(), Names{"reconnect-within"});
}

} // namespace tavmir::test
