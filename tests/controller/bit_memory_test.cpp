// The memory: single bits under every address, shared by whatever overlaps, within a limit.
#include "controller/bit_memory.h"

#include <gtest/gtest.h>

using tavmir::controller::BitMemory;

TEST(BitMemory, HoldsZeroEverywhereAtFirst)
{
    const BitMemory memory;
    EXPECT_EQ(memory.read(0, 0, 32), 0u);
    EXPECT_EQ(memory.read(255, 0xFFFFFFFF, 1), 0u);
}

TEST(BitMemory, BitsOfAValueLieFromItsAddressOn)
{
    BitMemory memory;
    ASSERT_TRUE(memory.write(1, 100, 16, 0x8005));
    for (std::uint32_t bit = 0; bit < 16; ++bit) {
        EXPECT_EQ(memory.read(1, 100 + bit, 1), bit == 0 || bit == 2 || bit == 15 ? 1u : 0u) << bit;
    }
    EXPECT_EQ(memory.read(1, 99, 1), 0u);
    EXPECT_EQ(memory.read(1, 116, 1), 0u);
}

TEST(BitMemory, EveryAddressAndWidthReadsBackWhatWasWrittenAndLeavesItsNeighbours)
{
    for (const int bits : {1, 8, 16, 32}) {
        const std::uint32_t value = bits == 32 ? 0xA5C3F00Du : 0xA5C3F00Du & ((1u << bits) - 1);
        for (std::uint32_t address = 4060; address < 4110; ++address) {
            BitMemory memory;
            const auto after = address + static_cast<std::uint32_t>(bits);
            ASSERT_TRUE(memory.write(7, address - 32, 32, 0xFFFFFFFF));
            ASSERT_TRUE(memory.write(7, after, 32, 0xFFFFFFFF));
            ASSERT_TRUE(memory.write(7, address, bits, value));
            EXPECT_EQ(memory.read(7, address, bits), value) << address;
            EXPECT_EQ(memory.read(7, address - 32, 32), 0xFFFFFFFF) << address;
            EXPECT_EQ(memory.read(7, after, 32), 0xFFFFFFFF) << address;
        }
    }
}

TEST(BitMemory, OverlappingVariablesShareTheirBits)
{
    BitMemory memory;
    ASSERT_TRUE(memory.write(1, 3000, 32, 0x12345678));
    EXPECT_EQ(memory.read(1, 3000, 16), 0x5678u);
    EXPECT_EQ(memory.read(1, 3016, 16), 0x1234u);
    EXPECT_EQ(memory.read(1, 3008, 16), 0x3456u);
    ASSERT_TRUE(memory.write(1, 3003, 1, 0));
    EXPECT_EQ(memory.read(1, 3000, 32), 0x12345670u);
    ASSERT_TRUE(memory.write(1, 3016, 16, 0xBEEF));
    EXPECT_EQ(memory.read(1, 3000, 32), 0xBEEF5670u);
}

TEST(BitMemory, StationsHaveMemoriesOfTheirOwn)
{
    BitMemory memory;
    ASSERT_TRUE(memory.write(1, 64, 16, 111));
    ASSERT_TRUE(memory.write(2, 64, 16, 222));
    EXPECT_EQ(memory.read(1, 64, 16), 111u);
    EXPECT_EQ(memory.read(2, 64, 16), 222u);
    EXPECT_EQ(memory.read(3, 64, 16), 0u);
}

TEST(BitMemory, AddressesWrapAtTheEndOfTheirRange)
{
    BitMemory memory;
    ASSERT_TRUE(memory.write(254, 0xFFFFFFF0, 32, 0xABCD1234));
    EXPECT_EQ(memory.read(254, 0xFFFFFFF0, 32), 0xABCD1234u);
    EXPECT_EQ(memory.read(254, 0xFFFFFFF0, 16), 0x1234u);
    EXPECT_EQ(memory.read(254, 0, 16), 0xABCDu);
    EXPECT_EQ(memory.read(255, 0, 16), 0u) << "the next station's memory";
    EXPECT_EQ(memory.read(0, 0, 16), 0u);
    ASSERT_TRUE(memory.write(254, 0xFFFFFFFF, 1, 1));
    EXPECT_EQ(memory.read(254, 0xFFFFFFFF, 32), 0xABCDu << 1 | 1u);
    EXPECT_EQ(memory.read(254, 0xFFFFFFF0, 16), 0x9234u);
}

TEST(BitMemory, ZeroTakesNoRoom)
{
    BitMemory memory(1);
    ASSERT_TRUE(memory.write(1, 0, 16, 5));
    EXPECT_TRUE(memory.write(1, 1000000, 32, 0));
    EXPECT_EQ(memory.pageCount(), 1u);
}

TEST(BitMemory, RefusesAWriteBeyondItsLimitWholly)
{
    BitMemory memory(2);
    ASSERT_TRUE(memory.write(1, 0, 16, 5));
    EXPECT_FALSE(memory.write(1, 16, {{0, 9}, {100000, 1}, {200000, 1}}));
    EXPECT_EQ(memory.read(1, 0, 16), 5u);
    EXPECT_EQ(memory.read(1, 100000, 16), 0u);
    EXPECT_EQ(memory.pageCount(), 1u);
    EXPECT_TRUE(memory.write(1, 16, {{0, 9}, {100000, 1}, {100016, 2}}));
    EXPECT_EQ(memory.read(1, 0, 16), 9u);
    EXPECT_EQ(memory.read(1, 100016, 16), 2u);
    EXPECT_FALSE(memory.write(2, 0, 1, 1));
}

TEST(BitMemory, CountsBothPagesOfAValueAcrossTheirBorder)
{
    const std::uint32_t border = 32 * BitMemory::kWordsPerPage;
    BitMemory small(1);
    EXPECT_FALSE(small.write(1, border - 8, 16, 0xFFFF));
    EXPECT_TRUE(small.write(1, border - 8, 16, 0x00FF));
    BitMemory enough(2);
    EXPECT_TRUE(enough.write(1, border - 8, 16, 0xFFFF));
    EXPECT_EQ(enough.read(1, border, 8), 0xFFu);
}

TEST(BitMemory, LaterValuesOfOneWriteWin)
{
    BitMemory memory;
    ASSERT_TRUE(memory.write(1, 16, {{10, 0xFFFF}, {10, 0x0001}, {18, 0x0002}}));
    EXPECT_EQ(memory.read(1, 10, 16), 0x0201u);
}
