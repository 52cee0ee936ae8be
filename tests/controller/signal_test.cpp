// Moving signals, on a clock that the test turns.
#include "controller/signal_board.h"
#include "controller/signal_generator.h"

#include <gtest/gtest.h>

#include <cstring>

using namespace tavmir::controller;
using tavmir::project::DataType;
using tavmir::project::Element;
using tavmir::project::Signal;
using tavmir::project::SignalKind;

namespace
{

Signal signal(SignalKind kind, double low, double high, int periodMs, double step = 1,
              quint32 seed = 1)
{
    Signal made;
    made.kind = kind;
    made.low = low;
    made.high = high;
    made.periodMs = periodMs;
    made.step = step;
    made.seed = seed;
    return made;
}

Element element(DataType type, quint32 address)
{
    Element made;
    made.type = type;
    made.address = address;
    return made;
}

std::vector<double> valuesAt(const Signal& given, const std::vector<std::int64_t>& times)
{
    SignalGenerator generator(given);
    std::vector<double> values;
    for (const std::int64_t ms : times) {
        values.push_back(generator.at(ms));
    }
    return values;
}

} // namespace

TEST(Signal, ConstantStays)
{
    EXPECT_EQ(valuesAt(signal(SignalKind::constant, 12, 12, 1000), {0, 1, 999999}),
              (std::vector<double>{12, 12, 12}));
}

TEST(Signal, RampRisesAndStartsAgain)
{
    EXPECT_EQ(valuesAt(signal(SignalKind::ramp, -10, 10, 1000), {0, 250, 500, 750, 1000, 1250}),
              (std::vector<double>{-10, -5, 0, 5, -10, -5}));
}

TEST(Signal, SineSwingsAroundTheMiddle)
{
    SignalGenerator sine(signal(SignalKind::sine, 10, 30, 4000));
    EXPECT_NEAR(sine.at(0), 20, 1e-9);
    EXPECT_NEAR(sine.at(1000), 30, 1e-9);
    EXPECT_NEAR(sine.at(2000), 20, 1e-9);
    EXPECT_NEAR(sine.at(3000), 10, 1e-9);
    EXPECT_NEAR(sine.at(4000), 20, 1e-9);
    for (int ms = 0; ms < 8000; ++ms) {
        ASSERT_GE(sine.at(ms), 10);
        ASSERT_LE(sine.at(ms), 30);
    }
}

TEST(Signal, SquareChangesAfterHalfAPeriod)
{
    EXPECT_EQ(valuesAt(signal(SignalKind::square, 0, 1, 1000), {0, 499, 500, 999, 1000}),
              (std::vector<double>{0, 0, 1, 1, 0}));
}

TEST(Signal, CounterStepsOncePerPeriodAndStartsAgainBeforeItPassesHigh)
{
    EXPECT_EQ(valuesAt(signal(SignalKind::counter, 5, 10, 100, 2), {0, 99, 100, 200, 300, 400}),
              (std::vector<double>{5, 5, 7, 9, 5, 7}));
}

TEST(Signal, ACounterWithoutAStepStays)
{
    EXPECT_EQ(valuesAt(signal(SignalKind::counter, 5, 10, 100, 0), {0, 100, 200}),
              (std::vector<double>{5, 5, 5}));
}

TEST(Signal, RandomWalkStaysWithinItsLimitsAndItsStep)
{
    SignalGenerator walk(signal(SignalKind::randomWalk, 0, 100, 10, 8, 3));
    double before = walk.at(0);
    EXPECT_EQ(before, 50);
    bool moved = false;
    for (int ms = 10; ms <= 20000; ms += 10) {
        const double now = walk.at(ms);
        ASSERT_GE(now, 0);
        ASSERT_LE(now, 100);
        ASSERT_LE(std::abs(now - before), 8);
        moved = moved || now != before;
        before = now;
    }
    EXPECT_TRUE(moved);
}

TEST(Signal, RandomWalkOfOneSeedIsTheSameHoweverOftenItIsAsked)
{
    const Signal given = signal(SignalKind::randomWalk, 0, 100, 10, 8, 3);
    SignalGenerator often(given);
    for (int ms = 0; ms < 5000; ++ms) {
        often.at(ms);
    }
    EXPECT_EQ(often.at(5000), SignalGenerator(given).at(5000));
    EXPECT_EQ(often.at(20), often.at(5000)) << "it does not go back";
    EXPECT_NE(SignalGenerator(signal(SignalKind::randomWalk, 0, 100, 10, 8, 4)).at(5000),
              often.at(5000));
}

TEST(Signal, AJumpOfTheClockDoesNotKeepAWalkBusy)
{
    SignalGenerator walk(signal(SignalKind::randomWalk, 0, 100, 1, 1));
    const double value = walk.at(std::int64_t{1} << 60);
    EXPECT_GE(value, 0);
    EXPECT_LE(value, 100);
}

TEST(Signal, ATimeBeforeTheStartCountsAsTheStart)
{
    EXPECT_EQ(valuesAt(signal(SignalKind::ramp, 0, 10, 10), {-5}), std::vector<double>{0});
}

TEST(SignalBoard, WritesEveryTypeAsTheDriverReadsIt)
{
    SignalBoard board;
    Element bitOfWord = element(DataType::word, 64);
    bitOfWord.bitNumber = 5;
    board.add(signal(SignalKind::counter, 0, 1, 10), element(DataType::bit, 3));
    board.add(signal(SignalKind::square, 0, 1, 20), bitOfWord);
    board.add(signal(SignalKind::counter, -3, 100, 10), element(DataType::word, 128));
    board.add(signal(SignalKind::counter, 4000000000.0, 4000000100.0, 10),
              element(DataType::dword, 192));
    board.add(signal(SignalKind::counter, 1.5, 100, 10), element(DataType::real, 256));
    BitMemory memory;
    ASSERT_TRUE(board.advanceTo(10, 9, memory));
    EXPECT_EQ(memory.read(9, 3, 1), 1u);
    EXPECT_EQ(memory.read(9, 64, 16), 0x20u);
    EXPECT_EQ(memory.read(9, 128, 16), 0xFFFEu);
    EXPECT_EQ(memory.read(9, 192, 32), 4000000001u);
    const std::uint32_t bits = memory.read(9, 256, 32);
    float real = 0;
    std::memcpy(&real, &bits, sizeof real);
    EXPECT_EQ(real, 2.5F);
    EXPECT_EQ(memory.read(1, 3, 1), 0u) << "another station's memory";
}

TEST(SignalBoard, RoundsToTheNearestWholeNumber)
{
    SignalBoard board;
    board.add(signal(SignalKind::ramp, 0, 10, 100), element(DataType::word, 0));
    BitMemory memory;
    board.advanceTo(26, 1, memory);
    EXPECT_EQ(memory.read(1, 0, 16), 3u);
}

TEST(SignalBoard, TakesBackWhatAClientWrote)
{
    SignalBoard board;
    board.add(signal(SignalKind::constant, 7, 7, 100), element(DataType::word, 0));
    BitMemory memory;
    board.advanceTo(0, 1, memory);
    memory.write(1, 0, 16, 99);
    EXPECT_EQ(memory.read(1, 0, 16), 99u);
    board.advanceTo(20, 1, memory);
    EXPECT_EQ(memory.read(1, 0, 16), 7u);
}

TEST(SignalBoard, SaysWhenTheMemoryIsFullAndMovesTheOthers)
{
    SignalBoard board;
    board.add(signal(SignalKind::constant, 1, 1, 100), element(DataType::word, 100000));
    board.add(signal(SignalKind::constant, 2, 2, 100), element(DataType::word, 0));
    BitMemory memory(1);
    memory.write(1, 0, 16, 1);
    EXPECT_FALSE(board.advanceTo(0, 1, memory));
    EXPECT_EQ(memory.read(1, 0, 16), 2u);
}
