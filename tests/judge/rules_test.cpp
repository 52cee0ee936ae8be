// Of each rule: a host that breaks it is noticed, by this rule alone, and one that does not is
// told that it kept it.
#include "wire_play.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <ostream>

namespace tavmir::test
{

namespace
{

using Kind = Event::Kind;

struct Case {
    Rule rule;
    std::function<void(WirePlay&)> right;
    std::function<void(WirePlay&)> broken;
};

std::ostream& operator<<(std::ostream& stream, const Case& one)
{
    return stream << judge::rowOf(one.rule).name;
}

const Bytes kFirst = readWord(1, 16);
const Bytes kSecond = readWord(2, 32);
const Bytes kThird = readWord(3, 48);

judge::HostTraits traits()
{
    judge::HostTraits host;
    host.stations = std::bitset<256>(0b10); // station 1
    host.counting = judge::CountingWrites{wire::ElementClass::words, 64};
    return host;
}

void polls(WirePlay& play, unsigned from = 1)
{
    play.exchanges(readWord(from, 16));
    play.exchanges(readWord(from + 1, 32));
}

// The host takes a reply that is none for the one it waits for, or does not.
std::function<void(WirePlay&)> behindStray(Play situation, Reply kind, bool isTaken)
{
    return [=](WirePlay& play) {
        play.begins(situation);
        if (kind == Reply::duplicate) {
            play.exchanges(kFirst);
            play.replies(0, answerTo(kFirst), kind);
            play.asks(10, kSecond);
        } else {
            play.asks(0, kSecond);
            play.replies(1, answerTo(kFirst), kind);
        }
        if (isTaken) {
            play.asks(5, kThird);
            return;
        }
        play.replies(200, answerTo(kSecond));
        play.asks(5, kThird);
    };
}

std::function<void(WirePlay&)> behindBad(Play situation, Reply kind, bool isTaken)
{
    return [=](WirePlay& play) {
        play.begins(situation);
        for (unsigned number = 1; number < 4; ++number) {
            const Bytes request = readWord(number, 16);
            play.asks(100, request);
            play.replies(1, request, kind); // which bytes they are, the play says
            if (!isTaken) {
                play.exchanges(request, 1);
            }
        }
    };
}

// Connections that are ended at once, with these pauses.
std::function<void(WirePlay&)> pauses(std::vector<int> ms)
{
    return [=](WirePlay& play) {
        play.connects();
        play.begins(Play::rejected);
        play.controllerCloses();
        int client = 1;
        for (const int pause : ms) {
            play.connects(pause, ++client);
            play.controllerCloses();
        }
        play.happens(Kind::ends, 10);
        play.connects(100, ++client);
    };
}

// Requests that are all refused, in 6 s: so many in each third.
std::function<void(WirePlay&)> refusedRates(std::vector<int> counts)
{
    return [=](WirePlay& play) {
        play.begins(Play::refuseAll);
        unsigned number = 0;
        for (const int count : counts) {
            for (int i = 0; i < count; ++i) {
                const Bytes request = readWord(++number, 16);
                play.asks(2000 / count - 1, request);
                play.refuses(request);
            }
        }
        play.happens(Kind::ends);
    };
}

const Case kCases[] = {
    {Rule::frameHeader, [](WirePlay& play) { polls(play); },
     [](WirePlay& play) {
         polls(play);
         Bytes request = readWord(3, 16);
         request[3] = 1;
         play.asks(100, request);
     }},
    {Rule::frameFunction, [](WirePlay& play) { polls(play); },
     [](WirePlay& play) { play.asks(0, header(1, 65, 0, 0)); }},
    {Rule::frameCount, [](WirePlay& play) { polls(play); },
     [](WirePlay& play) {
         Bytes request = readWord(1, 16);
         request[wire::kCountOffset] = 2;
         play.asks(0, request);
     }},
    {Rule::frameLimit, [](WirePlay& play) { polls(play); },
     [](WirePlay& play) { // fits itself, and its reply does not
         Bytes request = header(1, 102, 60, 240);
         request.resize(request.size() + 240);
         play.asks(0, request);
     }},
    {Rule::frameWhole, [](WirePlay& play) { polls(play); },
     [](WirePlay& play) {
         play.asks(0, Bytes(kFirst.begin(), kFirst.begin() + 10));
         play.waits(1200);
     }},
    {Rule::stationKnown, [](WirePlay& play) { polls(play); },
     [](WirePlay& play) { play.exchanges(readWord(1, 16, 2)); }},
    {Rule::idFresh, [](WirePlay& play) { polls(play); },
     [](WirePlay& play) {
         play.exchanges(readWord(1, 16));
         play.exchanges(readWord(1, 32));
     }},
    {Rule::oneInFlight, [](WirePlay& play) { polls(play); },
     [](WirePlay& play) {
         play.asks(0, kFirst);
         play.asks(100, kSecond);
     }},
    {Rule::waitOut,
     [](WirePlay& play) {
         play.asks(0, kFirst);
         play.asks(500, kFirst);
     },
     [](WirePlay& play) {
         play.asks(0, kFirst);
         play.asks(300, kFirst);
     }},
    {Rule::sameBytes,
     [](WirePlay& play) {
         play.asks(0, kFirst);
         play.asks(500, kFirst);
     },
     [](WirePlay& play) {
         play.asks(0, writeWord(1, 16, 5));
         play.asks(500, writeWord(1, 16, 6));
     }},
    {Rule::attempts,
     [](WirePlay& play) {
         for (int i = 0; i < 3; ++i) {
             play.asks(500, kFirst);
         }
         play.asks(500, kSecond);
     },
     [](WirePlay& play) {
         for (int i = 0; i < 4; ++i) {
             play.asks(500, kFirst);
         }
     }},
    {Rule::slowPatience,
     [](WirePlay& play) {
         play.begins(Play::slow);
         play.asks(0, kFirst);
         play.replies(250, answerTo(kFirst));
     },
     [](WirePlay& play) {
         play.begins(Play::slow);
         play.asks(0, kFirst);
         play.hostCloses(200);
     }},
    {Rule::lateDropped, behindStray(Play::late, Reply::late, false),
     behindStray(Play::late, Reply::late, true)},
    {Rule::duplicateDropped, behindStray(Play::duplicate, Reply::duplicate, false),
     behindStray(Play::duplicate, Reply::duplicate, true)},
    {Rule::foreignDropped, behindStray(Play::foreign, Reply::foreign, false),
     behindStray(Play::foreign, Reply::foreign, true)},
    {Rule::shortRefused, behindBad(Play::tooShort, Reply::tooShort, false),
     behindBad(Play::tooShort, Reply::tooShort, true)},
    {Rule::longRefused, behindBad(Play::tooLong, Reply::tooLong, false),
     behindBad(Play::tooLong, Reply::tooLong, true)},
    {Rule::cutCloses,
     [](WirePlay& play) {
         play.asks(0, kFirst);
         play.replies(1, Bytes(4), Reply::cut);
         play.hostCloses(500);
     },
     [](WirePlay& play) {
         play.asks(0, kFirst);
         play.replies(1, Bytes(4), Reply::cut);
         play.asks(500, kFirst);
     }},
    {Rule::exceptionKeepsLine,
     [](WirePlay& play) {
         play.asks(0, kFirst);
         play.refuses(kFirst);
         play.exchanges(kSecond);
     },
     [](WirePlay& play) {
         play.asks(0, kFirst);
         play.refuses(kFirst);
         play.hostCloses(1);
     }},
    {Rule::exceptionGoesOn,
     [](WirePlay& play) {
         play.begins(Play::exception);
         polls(play);
         play.asks(100, kThird);
         play.refuses(kThird);
         polls(play, 4);
     },
     [](WirePlay& play) {
         play.begins(Play::exception);
         polls(play);
         play.asks(100, kThird);
         play.refuses(kThird);
         play.waits(4000);
     }},
    {Rule::refusedRateFalls, refusedRates({200, 80, 60}), refusedRates({100, 100, 100})},
    {Rule::oneConnection,
     [](WirePlay& play) {
         play.connects(0, 1);
         play.hostCloses(10);
         play.connects(100, 2);
         play.waits(2000);
     },
     [](WirePlay& play) {
         play.connects(0, 1);
         play.connects(100, 2);
         play.waits(2000);
     }},
    {Rule::reconnectWithin,
     [](WirePlay& play) {
         play.begins(Play::disconnect);
         play.connects();
         play.controllerCloses(10);
         play.waits(9000);
         play.connects(0, 2);
     },
     [](WirePlay& play) {
         play.begins(Play::disconnect);
         play.connects();
         play.controllerCloses(10);
         play.waits(11000);
     }},
    {Rule::reconnectPause,
     [](WirePlay& play) {
         play.connects();
         play.controllerCloses(10);
         play.connects(60, 2);
     },
     [](WirePlay& play) {
         play.connects();
         play.controllerCloses(10);
         play.connects(5, 2);
     }},
    {Rule::reconnectGrows, pauses({100, 200, 400}), pauses({100, 100, 100, 110})},
    {Rule::recovers,
     [](WirePlay& play) {
         play.begins(Play::silent);
         play.happens(Kind::ends, 1000);
         play.happens(Kind::recovered, 1000);
     },
     [](WirePlay& play) {
         play.connects();
         play.begins(Play::silent);
         play.happens(Kind::ends, 1000);
         play.happens(Kind::notRecovered, 10000);
     }},
    {Rule::pollGoesOn,
     [](WirePlay& play) {
         play.begins(Play::calm);
         polls(play);
     },
     [](WirePlay& play) {
         play.begins(Play::calm);
         polls(play);
         play.waits(4000);
     }},
    {Rule::pollBesideWrites,
     [](WirePlay& play) {
         play.begins(Play::calm);
         polls(play);
         play.exchanges(writeWord(3, 16, 1));
         polls(play, 4);
     },
     [](WirePlay& play) {
         play.begins(Play::calm);
         polls(play);
         for (unsigned i = 3; i < 50; ++i) {
             play.exchanges(writeWord(i, 16, i));
         }
         play.waits(10);
     }},
    {Rule::writeOnce,
     [](WirePlay& play) {
         play.exchanges(writeWord(1, 16, 5));
         play.exchanges(kSecond);
     },
     [](WirePlay& play) {
         play.exchanges(writeWord(1, 16, 5));
         play.exchanges(writeWord(1, 16, 5));
     }},
    {Rule::writeKept,
     [](WirePlay& play) {
         play.exchanges(writeWord(1, 64, 5));
         play.exchanges(writeWord(2, 64, 6));
     },
     [](WirePlay& play) {
         play.exchanges(writeWord(1, 64, 5));
         play.exchanges(writeWord(2, 64, 7));
     }},
};
static_assert(sizeof kCases / sizeof kCases[0] == judge::kRuleCount, "a case for each rule");

std::string nameOf(const ::testing::TestParamInfo<Case>& one)
{
    std::string name = judge::rowOf(one.param.rule).name;
    std::replace(name.begin(), name.end(), '-', '_');
    return name;
}

class Rules : public ::testing::TestWithParam<Case>
{
};

} // namespace

TEST_P(Rules, ARightHostKeepsIt)
{
    WirePlay play(traits());
    GetParam().right(play);
    EXPECT_EQ(play.brokenRules(), std::set<std::string>());
    EXPECT_EQ(play.verdictOf(GetParam().rule), judge::Verdict::kept);
}

TEST_P(Rules, ABrokenHostIsToldThisRuleAndNoOther)
{
    WirePlay play(traits());
    GetParam().broken(play);
    EXPECT_EQ(play.brokenRules(), std::set<std::string>{judge::rowOf(GetParam().rule).name});
}

TEST_P(Rules, NobodyCanTellWhenNothingHappens)
{
    const WirePlay play(traits());
    EXPECT_EQ(play.verdictOf(GetParam().rule), judge::Verdict::notJudged);
}

INSTANTIATE_TEST_SUITE_P(Judge, Rules, ::testing::ValuesIn(kCases), nameOf);

} // namespace tavmir::test
