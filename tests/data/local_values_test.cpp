// Storing a written record in the caches.
#include "data/local_values.h"

#include "support/driver_test.h"
#include "support/records.h"

#include <climits>

using namespace tavmir::test;

namespace
{

class LocalValues : public DriverTest
{
protected:
    void store(int dataType, int address, const char* value, int count = 1)
    {
        RW_VAR var = writeOf(dataType, address, hex(value));
        var.count = count;
        WriteDataToLocal(&var);
    }
};

TEST_F(LocalValues, OneElementOfEachType)
{
    store(1, 10, "FE");
    EXPECT_EQ(PLC_driver.byteCache.value(10), 0xFE);
    store(4, 16, "34 12");
    EXPECT_EQ(PLC_driver.wordCache.value(16), 0x1234);
    store(10, 32, "FF FE");
    EXPECT_EQ(PLC_driver.wordCache.value(32), 0xFEFF);
    store(6, 64, "78 56 34 12");
    EXPECT_EQ(PLC_driver.dwordCache.value(64), 0x12345678u);
    store(7, 96, "FF FE FD FC");
    EXPECT_EQ(PLC_driver.dwordCache.value(96), 0xFCFDFEFFu);
}

TEST_F(LocalValues, KeysAreOneApartWhateverTheType)
{
    store(1, 10, "01 02 03", 3);
    EXPECT_EQ(PLC_driver.byteCache.value(11), 2);
    EXPECT_EQ(PLC_driver.byteCache.value(12), 3);
    store(4, 16, "01 00 02 00", 2);
    EXPECT_EQ(PLC_driver.wordCache.value(16), 1);
    EXPECT_EQ(PLC_driver.wordCache.value(17), 2);
    store(6, 64, "01 00 00 00 02 00 00 00", 2);
    EXPECT_EQ(PLC_driver.dwordCache.value(64), 1u);
    EXPECT_EQ(PLC_driver.dwordCache.value(65), 2u);
}

TEST_F(LocalValues, BytesPastTheValueCountAsZero)
{
    PLC_driver.wordCache.insert(17, 0xFFFF);
    store(4, 16, "34 12", 2);
    EXPECT_EQ(PLC_driver.wordCache.value(16), 0x1234);
    EXPECT_EQ(PLC_driver.wordCache.value(17), 0);
    EXPECT_EQ(PLC_driver.wordCache.size(), 2);
    store(6, 64, "34 12", 4);
    EXPECT_EQ(PLC_driver.dwordCache.value(64), 0x1234u);
    EXPECT_EQ(PLC_driver.dwordCache.size(), 4);
    EXPECT_EQ(PLC_driver.dwordCache.value(67, 9), 0u);
    store(4, 200, "AB");
    EXPECT_EQ(PLC_driver.wordCache.value(200), 0x00AB);
    store(1, 10, "");
    EXPECT_EQ(PLC_driver.byteCache.value(10, 9), 0);
}

TEST_F(LocalValues, NoElementsStoreNothing)
{
    for (const int count : {0, -1, INT_MIN}) {
        for (const int dataType : {1, 4, 6, 7, 10}) {
            store(dataType, 16, "01 02 03 04", count);
        }
    }
    EXPECT_TRUE(PLC_driver.byteCache.isEmpty());
    EXPECT_TRUE(PLC_driver.wordCache.isEmpty());
    EXPECT_TRUE(PLC_driver.dwordCache.isEmpty());
}

TEST_F(LocalValues, OtherTypesStoreNothingAndSayNothing)
{
    for (const int dataType : {0, 2, 3, 5, 8, 9, 11, 12, -1}) {
        store(dataType, 16, "01 02 03 04", 2);
    }
    EXPECT_TRUE(PLC_driver.byteCache.isEmpty());
    EXPECT_TRUE(PLC_driver.wordCache.isEmpty());
    EXPECT_TRUE(PLC_driver.dwordCache.isEmpty());
    EXPECT_EQ(diagnostics.lines(), QStringList());
}

TEST_F(LocalValues, KeysWrapIn32Bits)
{
    store(1, INT_MAX, "01 02", 2);
    EXPECT_EQ(PLC_driver.byteCache.value(INT_MAX), 1);
    EXPECT_EQ(PLC_driver.byteCache.value(INT_MIN), 2);
}

TEST_F(LocalValues, TheRecordIsNotChanged)
{
    RW_VAR var = writeOf(4, 16, hex("34 12"));
    const RW_VAR copy = var;
    WriteDataToLocal(&var);
    EXPECT_TRUE(sameRecord(var, copy));
    EXPECT_EQ(copy.value, hex("34 12"));
}

} // namespace
