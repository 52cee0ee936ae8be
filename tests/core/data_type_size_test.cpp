// Reply bytes per element, for every data type code and beyond.
#include "support/driver_test.h"

#include <climits>

using namespace tavmir::test;

namespace
{

class DataTypeSize : public DriverTest
{
};

TEST_F(DataTypeSize, OfTheTenCodes)
{
    const int sizes[10] = {5, 6, 6, 6, 6, 8, 8, 6, 6, 6};
    for (int dataType = 1; dataType <= 10; ++dataType) {
        EXPECT_EQ(PLC_driver.get_data_type_size(dataType), sizes[dataType - 1]) << dataType;
    }
}

TEST_F(DataTypeSize, OfEveryOtherNumberIsSix)
{
    for (const int dataType : {0, 11, 12, 255, 256, 257, -1, -5, INT_MAX, INT_MIN}) {
        EXPECT_EQ(PLC_driver.get_data_type_size(dataType), 6) << dataType;
    }
}

} // namespace
