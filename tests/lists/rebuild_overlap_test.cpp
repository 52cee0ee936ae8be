// Variables that cover each other over and over: one entry an address, the last record's.
#include "support/driver_test.h"
#include "support/label_tree.h"
#include "support/records.h"

#include <gtest/gtest.h>

#include <climits>

using namespace tavmir::test;

namespace
{

class RebuildOverlap : public DriverTest
{
protected:
    int rebuild(QList<HOSTVAR> vars) { return ReCreatReadVarList(&vars); }
};

TEST_F(RebuildOverlap, OfVeryManyRecordsForTheSameAddressesTheLastOneCounts)
{
    passLabels({label("P", QList<Label_Type_Info>()
                               << arrayVariable("Ws", 4, 1600, QList<int>() << 0 << 100)
                               << variable("W", 4, 1616))});
    const int kElements = 100;
    const int kRecords = 1500; // 150,000 elements wanted
    QList<HOSTVAR> vars;
    for (int i = 0; i < kRecords; ++i) {
        vars << hostVar("P.Ws[0]", kElements, 1, qPrintable(QString::number(i)));
    }
    vars << hostVar("P.W", 1, 1, "last");

    ASSERT_EQ(rebuild(vars), kElements);
    for (int i = 0; i < kElements; ++i) {
        const RW_VAR& entry = PLC_driver.pendingReadList.at(i);
        EXPECT_EQ(entry.elementAddress, 1600 + 16 * i);
        EXPECT_EQ(entry.auxText, i == 1 ? QString("last") : QString::number(kRecords - 1)) << i;
    }
}

// The addresses of a variable whose step is 2 to the power of 31 come round after two.
TEST_F(RebuildOverlap, AddressesThatComeRoundLeaveOneEntryEach)
{
    Label_Type_Info texts = arrayVariable("Ts", 10, 16, QList<int>() << 0 << 2000000000);
    texts.elementSizes << INT_MIN;
    passLabels({label("P", QList<Label_Type_Info>() << texts)});
    ASSERT_EQ(rebuild(QList<HOSTVAR>() << hostVar("P.Ts[0]", 2000000000)), 2);
    EXPECT_EQ(addressesOf(PLC_driver.pendingReadList), (std::vector<int>{INT_MIN + 16, 16}));
}

TEST_F(RebuildOverlap, ATextWithoutWidthIsOneEntryHoweverLong)
{
    Label_Type_Info texts = arrayVariable("Ts", 10, 16, QList<int>() << 0 << 2000000000);
    passLabels({label("P", QList<Label_Type_Info>() << texts)});
    ASSERT_EQ(rebuild(QList<HOSTVAR>() << hostVar("P.Ts[0]", 2000000000)), 1);
    EXPECT_EQ(PLC_driver.pendingReadList.first().elementAddress, 16);
}

} // namespace
