// Which requests are served: stations, rate, addresses, and which of them is looked at first.
#include "controller/admission.h"
#include "frames.h"

#include <gtest/gtest.h>

using namespace tavmir::controller;
using namespace tavmir::test;

namespace
{

constexpr std::int64_t kSecondUs = 1000000;

Request readOf(int station, std::uint32_t address = 16)
{
    return parseRequest(readFrame(1, station, 102, {address}));
}

AdmissionRules withStations(const char* list)
{
    AdmissionRules rules;
    rules.stations = parseStations(list);
    EXPECT_TRUE(rules.stations);
    return rules;
}

// How many of the requests that come every `everyUs` for `us` are served at once.
int servedOf(RateLimit rate, std::int64_t everyUs, std::int64_t us)
{
    int served = 0;
    for (std::int64_t now = kSecondUs; now < kSecondUs + us; now += everyUs) {
        if (rate.waitUs(now) == 0) {
            rate.take(now);
            ++served;
        }
    }
    return served;
}

} // namespace

TEST(StationList, TakesNumbersAndRanges)
{
    const auto stations = parseStations("1,2,10-12,255,0");
    ASSERT_TRUE(stations);
    EXPECT_EQ(stations->count(), 7u);
    for (const std::size_t station : {0u, 1u, 2u, 10u, 11u, 12u, 255u}) {
        EXPECT_TRUE(stations->test(station)) << station;
    }
}

TEST(StationList, AnythingElseIsNone)
{
    for (const char* text :
         {"", ",", "1,", "256", "-1", "3-2", "1-", "a", "1-300", "1--2", "1.5"}) {
        EXPECT_FALSE(parseStations(text)) << text;
    }
}

TEST(RateLimit, ServesTheNumberThatItIsToldOverSeconds)
{
    for (const int perSecond : {1, 7, 50, 1000, 20000}) {
        const int served = servedOf(RateLimit(perSecond), 37, 4 * kSecondUs);
        EXPECT_GE(served, 4 * perSecond);
        EXPECT_LE(served, 4 * perSecond + perSecond / 10 + 1) << "a tenth of a second is kept";
    }
}

TEST(RateLimit, WithoutANumberNobodyWaits)
{
    EXPECT_EQ(servedOf(RateLimit(), 1, 1000), 1000);
}

TEST(RateLimit, SaysHowLongTheNextOneWaits)
{
    RateLimit rate(4);
    rate.take(kSecondUs);
    EXPECT_EQ(rate.waitUs(kSecondUs), 250000);
    EXPECT_EQ(rate.waitUs(kSecondUs + 200000), 50000);
    rate.take(kSecondUs);
    EXPECT_EQ(rate.waitUs(kSecondUs), 500000) << "each takes its part";
    EXPECT_EQ(rate.waitUs(kSecondUs + 500000), 0);
}

TEST(Admission, WithoutRulesAllIsServed)
{
    Gatekeeper gatekeeper;
    for (int station = 0; station < 256; ++station) {
        const Verdict verdict = gatekeeper.judge(readOf(station), 0);
        EXPECT_TRUE(verdict.isAnswered);
        EXPECT_EQ(verdict.exceptionCode, 0);
        EXPECT_EQ(verdict.waitUs, 0);
        EXPECT_FALSE(verdict.aboveRate || verdict.unknownStation || verdict.refusedAddress);
    }
}

TEST(Admission, UnknownStationsGetException11OrNothing)
{
    AdmissionRules rules = withStations("1,2");
    Gatekeeper refusing(rules);
    EXPECT_EQ(refusing.judge(readOf(2), 0).exceptionCode, 0);
    const Verdict refused = refusing.judge(readOf(3), 0);
    EXPECT_TRUE(refused.unknownStation);
    EXPECT_TRUE(refused.isAnswered);
    EXPECT_EQ(refused.exceptionCode, 11);
    rules.silentForOthers = true;
    Gatekeeper silent(rules);
    EXPECT_TRUE(silent.judge(readOf(1), 0).isAnswered);
    const Verdict unheard = silent.judge(readOf(3), 0);
    EXPECT_TRUE(unheard.unknownStation);
    EXPECT_FALSE(unheard.isAnswered);
}

TEST(Admission, AboveTheRateRequestsAreBusyOrWait)
{
    AdmissionRules rules;
    rules.mostRequestsPerSecond = 2;
    Gatekeeper refusing(rules);
    EXPECT_EQ(refusing.judge(readOf(1), kSecondUs).exceptionCode, 0);
    for (int i = 0; i < 3; ++i) {
        const Verdict verdict = refusing.judge(readOf(1), kSecondUs + i);
        EXPECT_TRUE(verdict.aboveRate);
        EXPECT_EQ(verdict.exceptionCode, 6);
        EXPECT_EQ(verdict.waitUs, 0);
    }
    EXPECT_EQ(refusing.judge(readOf(1), kSecondUs + 500000).exceptionCode, 0)
        << "what was refused took no part";
    rules.delaysAboveRate = true;
    Gatekeeper delaying(rules);
    EXPECT_FALSE(delaying.judge(readOf(1), kSecondUs).aboveRate);
    const Verdict verdict = delaying.judge(readOf(1), kSecondUs);
    EXPECT_TRUE(verdict.aboveRate);
    EXPECT_EQ(verdict.exceptionCode, 0);
    EXPECT_EQ(verdict.waitUs, 500000);
    EXPECT_EQ(delaying.judge(readOf(1), kSecondUs).waitUs, 1000000);
}

TEST(Admission, RateThenStationThenSenseThenAddress)
{
    AdmissionRules rules = withStations("1");
    rules.mostRequestsPerSecond = 1;
    rules.refused = {{0, 100, std::nullopt, 2}};
    Gatekeeper gatekeeper(rules);
    const Request senseless = parseRequest(frame(1, 1, 102, 9));
    EXPECT_EQ(gatekeeper.judge(readOf(3), 0).exceptionCode, 11);
    EXPECT_EQ(gatekeeper.judge(readOf(3), 1).exceptionCode, 6);
    const Verdict left = gatekeeper.judge(senseless, 2 * kSecondUs);
    EXPECT_EQ(left.exceptionCode, 0) << "whoever carries it out says what is wrong";
    EXPECT_FALSE(left.refusedAddress);
    const Verdict refused = gatekeeper.judge(readOf(1), 4 * kSecondUs);
    EXPECT_EQ(refused.exceptionCode, 2);
    EXPECT_TRUE(refused.refusedAddress);
}
