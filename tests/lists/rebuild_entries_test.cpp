// The polled list rebuilt out of the host's variables: one entry per element, ordered, without
// duplicates.
#include "support/driver_test.h"
#include "support/label_tree.h"
#include "support/records.h"

#include <climits>

using namespace tavmir::test;

namespace
{

typedef std::vector<int> Addresses;

class Rebuild : public DriverTest
{
protected:
    Rebuild()
    {
        const QList<int> upTo3 = QList<int>() << 0 << 3;
        Label_Type_Info texts = arrayVariable("Ts", 10, 8000, QList<int>() << 0 << 8);
        texts.elementSizes << 48;
        passLabels({label("P", QList<Label_Type_Info>()
                                   << variable("B10", 1, 10) << variable("B11", 1, 11)
                                   << variable("B500", 1, 500) << variable("W200", 4, 200)
                                   << variable("W216", 4, 216) << variable("D100", 6, 100)
                                   << variable("U100", 7, 100) << textVariable("T200", 200, 48)
                                   << variable("T0", 10, 7000) << texts
                                   << arrayVariable("Ws", 4, 2000, upTo3))});
    }

    int rebuild(const QList<HOSTVAR>& vars)
    {
        QList<HOSTVAR> list = vars;
        return ReCreatReadVarList(&list);
    }

    Addresses rebuilt(const QList<HOSTVAR>& vars)
    {
        const int result = rebuild(vars);
        EXPECT_EQ(result, PLC_driver.pendingReadList.size());
        return addressesOf(PLC_driver.pendingReadList);
    }
};

TEST_F(Rebuild, OverlappingBitsLeaveOneEntryEach)
{
    EXPECT_EQ(rebuilt({hostVar("P.B10", 3), hostVar("P.B11", 3)}), (Addresses{10, 11, 12, 13}));
}

TEST_F(Rebuild, ClassesComeInOrderBitsWordsDoubleWords)
{
    EXPECT_EQ(rebuilt({hostVar("P.D100", 1), hostVar("P.W200", 2), hostVar("P.B500", 1)}),
              (Addresses{500, 200, 216, 100}));
    std::vector<int> types;
    for (const RW_VAR& var : PLC_driver.pendingReadList) {
        types.push_back(var.dataType);
    }
    EXPECT_EQ(types, (std::vector<int>{1, 4, 4, 6}));
}

TEST_F(Rebuild, InsideAClassAddressesAscend)
{
    EXPECT_EQ(rebuilt({hostVar("P.W216", 1), hostVar("P.B500", 1), hostVar("P.W200", 1),
                       hostVar("P.B10", 1)}),
              (Addresses{10, 500, 200, 216}));
}

TEST_F(Rebuild, NegativeAddressesComeFirst)
{
    passLabels(
        {label("N", QList<Label_Type_Info>() << variable("A", 4, -16) << variable("B", 4, INT_MIN)
                                             << variable("C", 4, INT_MAX))});
    EXPECT_EQ(
        rebuilt({hostVar("N.C", 1), hostVar("N.A", 1), hostVar("P.W200", 1), hostVar("N.B", 1)}),
        (Addresses{INT_MIN, -16, 200, INT_MAX}));
}

TEST_F(Rebuild, DoubleWordsCountTwoUnitsEach)
{
    EXPECT_EQ(rebuilt({hostVar("P.D100", 5)}), (Addresses{100, 132, 164}));
    EXPECT_EQ(rebuilt({hostVar("P.U100", 4)}), (Addresses{100, 132}));
    EXPECT_EQ(rebuilt({hostVar("P.D100", 0), hostVar("P.B10", 1)}), Addresses{10});
    EXPECT_EQ(rebuilt({hostVar("P.D100", -1), hostVar("P.D100", -2), hostVar("P.B10", 1)}),
              Addresses{10});
    EXPECT_EQ(rebuilt({hostVar("P.D100", INT_MAX), hostVar("P.B10", 1)}), Addresses{10})
        << "the count wraps before it is halved";
}

TEST_F(Rebuild, TheCountIsNotCutByTheArray)
{
    EXPECT_EQ(rebuilt({hostVar("P.Ws[0]", 5)}), (Addresses{2000, 2016, 2032, 2048, 2064}));
    EXPECT_EQ(rebuilt({hostVar("P.W200", 3)}), (Addresses{200, 216, 232}));
}

TEST_F(Rebuild, CountsBelowOneGiveNoEntryAndNoLine)
{
    EXPECT_EQ(rebuilt({hostVar("P.B10", 0), hostVar("P.W200", -1), hostVar("P.D100", INT_MIN)}),
              Addresses{});
    EXPECT_EQ(diagnostics.lines().size(), 1) << "the opening line only";
}

TEST_F(Rebuild, ATextOutsideAnArrayIsOneEntry)
{
    for (const int count : {20, 1, 0, -4}) {
        EXPECT_EQ(rebuilt({hostVar("P.T200", count)}), Addresses{200}) << count;
    }
}

TEST_F(Rebuild, ATextOfAnArrayIsCutToItsLimitAndSteppedByItsWidth)
{
    EXPECT_EQ(rebuilt({hostVar("P.Ts[0]", 20)}),
              (Addresses{8000, 8048, 8096, 8144, 8192, 8240, 8288, 8336}));
    EXPECT_EQ(rebuilt({hostVar("P.Ts[1]", 2)}), (Addresses{8256, 8304}));
    EXPECT_EQ(rebuilt({hostVar("P.Ts[0]", 0), hostVar("P.B10", 1)}), Addresses{10});
    EXPECT_EQ(rebuilt({hostVar("P.Ts[0]", -1), hostVar("P.B10", 1)}), Addresses{10})
        << "compared signed";
}

TEST_F(Rebuild, ATextWithoutWidthStaysOnItsAddress)
{
    EXPECT_EQ(rebuilt({hostVar("P.T0", 5)}), Addresses{7000});
}

TEST_F(Rebuild, AtOneAddressOfAClassTheLaterVariableWins)
{
    host.info.stationMode = 1;
    rebuild({hostVar("P.B10", 1, 1, "first"), hostVar("P.B10", 1, 2, "second")});
    ASSERT_EQ(PLC_driver.pendingReadList.size(), 1);
    EXPECT_EQ(PLC_driver.pendingReadList.first().station, 2);
    EXPECT_EQ(PLC_driver.pendingReadList.first().auxText, "second");
}

TEST_F(Rebuild, WordsAndTextsReplaceEachOther)
{
    rebuild({hostVar("P.W200", 2), hostVar("P.T200", 1)});
    ASSERT_EQ(addressesOf(PLC_driver.pendingReadList), (Addresses{200, 216}));
    EXPECT_EQ(PLC_driver.pendingReadList.at(0).dataType, 10);
    EXPECT_EQ(PLC_driver.pendingReadList.at(1).dataType, 4);
    rebuild({hostVar("P.T200", 1), hostVar("P.W200", 1)});
    ASSERT_EQ(PLC_driver.pendingReadList.size(), 1);
    EXPECT_EQ(PLC_driver.pendingReadList.first().dataType, 4);
}

TEST_F(Rebuild, BothDoubleWordTypesReplaceEachOther)
{
    rebuild({hostVar("P.D100", 1), hostVar("P.U100", 1)});
    ASSERT_EQ(PLC_driver.pendingReadList.size(), 1);
    EXPECT_EQ(PLC_driver.pendingReadList.first().dataType, 7);
}

TEST_F(Rebuild, EqualAddressesOfDifferentClassesStayApart)
{
    passLabels({label("N", QList<Label_Type_Info>() << variable("B", 1, 64) << variable("W", 4, 64)
                                                    << variable("D", 6, 64))});
    EXPECT_EQ(rebuilt({hostVar("N.D", 1), hostVar("N.W", 1), hostVar("N.B", 1)}),
              (Addresses{64, 64, 64}));
}

TEST_F(Rebuild, EveryMemberOfAnEntryIsSet)
{
    host.info.stationMode = 1;
    rebuild({hostVar("P.Ws[1]", 2, 200, "aux")});
    ASSERT_EQ(PLC_driver.pendingReadList.size(), 2);
    RW_VAR expected;
    expected.hostKey = 0;
    expected.varKey = -1;
    expected.hostData2 = 0;
    expected.hostData3 = 14014;
    expected.hostData4 = 15015;
    expected.status = 0;
    expected.addressText = "P.Ws[1]";
    expected.auxText = "aux";
    expected.dataType = 4;
    expected.station = 200;
    expected.count = 1;
    for (int i = 0; i < 2; ++i) {
        expected.elementAddress = 2016 + 16 * i;
        EXPECT_TRUE(sameRecord(PLC_driver.pendingReadList.at(i), expected)) << i;
    }
}

TEST_F(Rebuild, TheDefaultStationIsUsedWhileTheModeIsZero)
{
    rebuild({hostVar("P.B10", 1, 200)});
    EXPECT_EQ(PLC_driver.pendingReadList.first().station, 7);
    for (const qint32 mode : {1, 5, -1}) {
        host.info.stationMode = mode;
        rebuild({hostVar("P.B10", 1, 200)});
        EXPECT_EQ(PLC_driver.pendingReadList.first().station, 200);
    }
    host.info.stationMode = 0;
    host.info.defaultStation = 70000;
    rebuild({hostVar("P.B10", 1, 200)});
    EXPECT_EQ(PLC_driver.pendingReadList.first().station, 70000);
}

TEST_F(Rebuild, OnlyTheNamedMembersOfAHostVariableAreRead)
{
    HOSTVAR var = hostVar("P.B10", 1, 3, "aux");
    var.hostByte0 = 0xFF;
    var.hostByte1 = 0xFF;
    var.hostByte3 = 0xFF;
    var.hostWord4 = -1;
    rebuild({hostVar("P.B10", 1, 3, "aux")});
    const RW_VAR plain = PLC_driver.pendingReadList.first();
    rebuild({var});
    EXPECT_TRUE(sameRecord(PLC_driver.pendingReadList.first(), plain));
}

TEST_F(Rebuild, ALaterRebuildReplacesAnEarlierOne)
{
    rebuild({hostVar("P.B10", 1)});
    EXPECT_EQ(rebuilt({hostVar("P.W200", 1)}), Addresses{200});
}

TEST_F(Rebuild, ThePolledListItselfWaitsForTheCycle)
{
    PLC_driver.readVarList.append(element(4, 16));
    rebuild({hostVar("P.B10", 1)});
    EXPECT_EQ(addressesOf(PLC_driver.readVarList), Addresses{16});
    ComCommunication();
    EXPECT_EQ(addressesOf(PLC_driver.readVarList), Addresses{10});
}

TEST_F(Rebuild, ThePassStartsAgain)
{
    PLC_driver.scanCount = 9;
    host.info.scanDone = 1;
    rebuild({hostVar("P.B10", 1)});
    EXPECT_EQ(PLC_driver.scanCount, 0);
    EXPECT_EQ(host.info.scanDone, 0);
}

TEST_F(Rebuild, LinesOfASuccessfulRebuild)
{
    host.info.stationMode = 1;
    rebuild({hostVar("P.W200", 2, 9), hostVar("P.B500", 1, 8)});
    const auto entryLine = [](int station, int dataType, int address) {
        return expectedLine({"Func_Init", " ", quoted("ReCreatReadVarList"), " ", 357, "INFO ",
                             station, " ", dataType, " ", address, " ", 1, " "});
    };
    EXPECT_EQ(diagnostics.lines(),
              QStringList() << expectedLine({"Func_Init", " ", quoted("ReCreatReadVarList"), " ",
                                             197, "TRACE ", ""})
                            << entryLine(8, 1, 500) << entryLine(9, 4, 200)
                            << entryLine(9, 4, 216));
}

TEST_F(Rebuild, TheHostsListIsNotChanged)
{
    QList<HOSTVAR> vars = {hostVar("P.W200", 2, 9, "aux")};
    ReCreatReadVarList(&vars);
    ASSERT_EQ(vars.size(), 1);
    EXPECT_EQ(vars.at(0).count, 2);
    EXPECT_EQ(vars.at(0).addressText, "P.W200");
    EXPECT_EQ(vars.at(0).auxText, "aux");
}

TEST_F(Rebuild, AddressesWrapIn32Bits)
{
    passLabels({label("N", QList<Label_Type_Info>() << variable("W", 4, INT_MAX - 15))});
    EXPECT_EQ(rebuilt({hostVar("N.W", 2)}), (Addresses{INT_MIN, INT_MAX - 15}));
}

TEST_F(Rebuild, ThereIsNoLimitOfEntries)
{
    EXPECT_EQ(rebuild({hostVar("P.B10", 5000)}), 5000);
    EXPECT_EQ(PLC_driver.pendingReadList.last().elementAddress, 5009);
}

} // namespace
