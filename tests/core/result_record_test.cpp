// Copying into the result record: everything but the value.
#include "core/result_record.h"

#include "support/driver_test.h"
#include "support/records.h"

using namespace tavmir::test;

namespace
{

RW_VAR distinctRecord()
{
    RW_VAR var;
    var.hostKey = 100;
    var.varKey = 101;
    var.hostData2 = 102;
    var.hostData3 = 103;
    var.hostData4 = 104;
    var.status = -1;
    var.addressText = "Main.Run";
    var.auxText = "aux";
    var.dataType = 108;
    var.elementAddress = 109;
    var.station = 110;
    var.count = 111;
    var.hostData12 = 112;
    var.hostData13 = 113;
    var.value = hex("01 02");
    return var;
}

TEST(ResultRecord, TakesEveryMemberButTheValue)
{
    const RW_VAR from = distinctRecord();
    RW_VAR to;
    passRetValue(from, to);

    RW_VAR expected = distinctRecord();
    expected.value.clear();
    EXPECT_TRUE(sameRecord(to, expected));
    EXPECT_EQ(to.status, -1);
}

TEST(ResultRecord, LosesTheValueItHad)
{
    RW_VAR to;
    to.value = hex("0A 0B 0C");
    passRetValue(distinctRecord(), to);
    EXPECT_TRUE(to.value.isEmpty());
}

TEST(ResultRecord, LeavesItsSourceAsItWas)
{
    const RW_VAR from = distinctRecord();
    RW_VAR to;
    passRetValue(from, to);
    EXPECT_TRUE(sameRecord(from, distinctRecord()));
}

} // namespace
