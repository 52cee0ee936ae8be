// What each entry of the feed counts for: in these figures, and in no other.
#include "feed/line_figures.h"

#include "made_exchange.h"

#include <gtest/gtest.h>

#include <map>

namespace tavmir::host
{

namespace
{

using Counts = std::map<std::string, quint64>;

// Every figure that is not 0.
Counts countsOf(const LineFigures& figures)
{
    Counts all = {
        {"requests", figures.requests},
        {"replies", figures.replies},
        {"retries", figures.retries},
        {"giveUps", figures.giveUps},
        {"timeouts", figures.timeouts},
        {"notConnected", figures.notConnected},
        {"lost", figures.lost},
        {"suppressed", figures.suppressed},
        {"exceptions", figures.exceptions},
        {"discarded", figures.discarded},
        {"refusedReplies", figures.refusedReplies},
        {"brokenStreams", figures.brokenStreams},
        {"connects", figures.connects},
        {"connectFailures", figures.connectFailures},
        {"lostConnections", figures.lostConnections},
        {"bytesSent", figures.bytesSent},
        {"bytesReceived", figures.bytesReceived},
        {"polledElements", figures.polledElements},
        {"missed", figures.missed},
        {"roundTrips", figures.roundTrip.count()},
    };
    for (const OperationKind kind : {OperationKind::write, OperationKind::read}) {
        const std::string name = kind == OperationKind::write ? "write " : "read ";
        for (int state = 0; state < kOutcomeStates; ++state) {
            const auto outcome = static_cast<OutcomeState>(state);
            all[name + outcomeWord(outcome)] = figures.ended(kind, outcome);
        }
    }
    for (auto count = all.begin(); count != all.end();) {
        count = count->second == 0 ? all.erase(count) : std::next(count);
    }
    return all;
}

Counts countsOf(const FeedEntry& entry)
{
    LineFigures figures;
    figures.take(entry);
    return countsOf(figures);
}

// An exchange with numbers of its own in everything that is added up.
Exchange exchangeThat(ExchangeEnd end, quint32 attempt = 1)
{
    Exchange exchange = madeRead(kReadWords, 1, {{16, 1}, {32, 2}, {48, 3}}, momentAt(0));
    exchange.end = end;
    exchange.attempt = attempt;
    exchange.foreignFrames = 2;
    exchange.sentBytes = 20; // of 21
    exchange.receivedBytes = 50;
    return exchange;
}

// What every exchange counts for, and `more`.
Counts withBytes(Counts more, const char* request = "requests")
{
    more.insert({{request, 1}, {"discarded", 2}, {"bytesSent", 20}, {"bytesReceived", 50}});
    return more;
}

Counts countsOf(const Exchange& exchange)
{
    return countsOf(entryOf(exchange));
}

FeedEntry entryWith(FeedKind kind)
{
    FeedEntry entry = entryOf(exchangeThat(ExchangeEnd::reply)); // which only an exchange counts
    entry.kind = kind;
    return entry;
}

} // namespace

TEST(LineFigures, NothingIsZero)
{
    EXPECT_EQ(Counts(), countsOf(LineFigures()));
    EXPECT_EQ(0u, LineFigures().ended(OperationKind::write));
}

TEST(LineFigures, AGoodReplyToPolling)
{
    EXPECT_EQ(withBytes({{"replies", 1}, {"polledElements", 3}, {"roundTrips", 1}}),
              countsOf(exchangeThat(ExchangeEnd::reply)));
}

TEST(LineFigures, GoodRepliesToOthersPollNothing)
{
    for (const RequestKind kind : {RequestKind::write, RequestKind::read}) {
        Exchange exchange = exchangeThat(ExchangeEnd::reply);
        exchange.kind = kind;
        EXPECT_EQ(withBytes({{"replies", 1}, {"roundTrips", 1}}), countsOf(exchange));
    }
}

TEST(LineFigures, AReplyOfWrongLengthIsRefused)
{
    for (const int difference : {-1, 1}) {
        Exchange exchange = exchangeThat(ExchangeEnd::reply);
        exchange.expectedReply =
            static_cast<quint32>(static_cast<int>(exchange.replySize) + difference);
        EXPECT_EQ(withBytes({{"refusedReplies", 1}, {"roundTrips", 1}}), countsOf(exchange));
    }
}

TEST(LineFigures, EachOtherEnd)
{
    const std::vector<std::pair<ExchangeEnd, Counts>> ends = {
        {ExchangeEnd::exception, {{"exceptions", 1}, {"roundTrips", 1}}},
        {ExchangeEnd::timeout, {{"timeouts", 1}}},
        {ExchangeEnd::cut, {{"timeouts", 1}}},
        {ExchangeEnd::lost, {{"lost", 1}}},
        {ExchangeEnd::broken, {{"lost", 1}}},
        {ExchangeEnd::notSent, {{"notConnected", 1}}},
        {ExchangeEnd::suppressed, {{"suppressed", 1}}},
        {ExchangeEnd::stopped, {}},
    };
    for (const auto& [end, counts] : ends) {
        EXPECT_EQ(withBytes(counts), countsOf(exchangeThat(end))) << static_cast<int>(end);
    }
}

TEST(LineFigures, RepetitionsAreNoRequests)
{
    EXPECT_EQ(withBytes({{"timeouts", 1}}, "retries"),
              countsOf(exchangeThat(ExchangeEnd::timeout, 2)));
    EXPECT_EQ(withBytes({{"replies", 1}, {"polledElements", 3}, {"roundTrips", 1}}, "retries"),
              countsOf(exchangeThat(ExchangeEnd::reply, 3)));
}

TEST(LineFigures, RoundTripsAreFromSendingToTheAnswer)
{
    LineFigures figures;
    for (const int us : {250, 750, 2000}) {
        Exchange exchange = exchangeThat(us == 750 ? ExchangeEnd::exception : ExchangeEnd::reply);
        exchange.sentAt = momentAt(10);
        exchange.endedAt = momentAt(10) + std::chrono::microseconds(us);
        figures.take(entryOf(exchange));
    }
    EXPECT_EQ(3u, figures.roundTrip.count());
    EXPECT_EQ(250000u, figures.roundTrip.minimum());
    EXPECT_EQ(2000000u, figures.roundTrip.maximum());
    EXPECT_DOUBLE_EQ(1000000.0, figures.roundTrip.mean());
}

TEST(LineFigures, EachOtherKindOfEntry)
{
    EXPECT_EQ((Counts{{"giveUps", 1}}), countsOf(entryWith(FeedKind::gaveUp)));
    EXPECT_EQ((Counts{{"connects", 1}}), countsOf(entryWith(FeedKind::connected)));
    EXPECT_EQ((Counts{{"connectFailures", 1}}), countsOf(entryWith(FeedKind::connectFailed)));
    EXPECT_EQ((Counts{{"lostConnections", 1}}), countsOf(entryWith(FeedKind::connectionLost)));
    EXPECT_EQ(Counts(), countsOf(entryWith(FeedKind::planChanged)));
    FeedEntry broken = entryWith(FeedKind::connectionLost);
    broken.brokenStream = true;
    EXPECT_EQ((Counts{{"lostConnections", 1}, {"brokenStreams", 1}}), countsOf(broken));
    FeedEntry dropped = entryWith(FeedKind::framesDropped);
    dropped.frames = 3;
    dropped.bytes = 40;
    EXPECT_EQ((Counts{{"discarded", 3}, {"bytesReceived", 40}}), countsOf(dropped));
}

TEST(LineFigures, EachEndOfAnOperation)
{
    LineFigures all;
    for (const OperationKind kind : {OperationKind::write, OperationKind::read}) {
        for (int state = 0; state < kOutcomeStates; ++state) {
            FeedEntry entry = entryWith(FeedKind::operationEnded);
            entry.operation.kind = kind;
            entry.operation.state = static_cast<OutcomeState>(state);
            const std::string name = (kind == OperationKind::write ? "write " : "read ") +
                                     std::string(outcomeWord(entry.operation.state));
            EXPECT_EQ((Counts{{name, 1}}), countsOf(entry));
            const int times = kind == OperationKind::write ? state + 1 : 10;
            for (int i = 0; i < times; ++i) {
                all.take(entry);
            }
        }
    }
    EXPECT_EQ(15u, all.ended(OperationKind::write));
    EXPECT_EQ(50u, all.ended(OperationKind::read));
    EXPECT_EQ(2u, all.ended(OperationKind::write, OutcomeState::refused));
}

TEST(LineFigures, WhatHappenedBeforeTheReaderCameIsNotCounted)
{
    for (const FeedKind kind :
         {FeedKind::connected, FeedKind::connectFailed, FeedKind::connectionLost}) {
        FeedEntry entry = entryWith(kind);
        entry.standing = true;
        EXPECT_EQ(Counts(), countsOf(entry));
    }
}

TEST(LineFigures, EverythingAddsUp)
{
    LineFigures figures;
    for (int i = 0; i < 3; ++i) {
        figures.take(entryOf(exchangeThat(ExchangeEnd::reply)));
        figures.take(entryOf(exchangeThat(ExchangeEnd::timeout, 2)));
    }
    figures.gap(5);
    figures.gap(7);
    EXPECT_EQ((Counts{{"requests", 3},
                      {"replies", 3},
                      {"retries", 3},
                      {"timeouts", 3},
                      {"discarded", 12},
                      {"bytesSent", 120},
                      {"bytesReceived", 300},
                      {"polledElements", 9},
                      {"roundTrips", 3},
                      {"missed", 12}}),
              countsOf(figures));
}

} // namespace tavmir::host
