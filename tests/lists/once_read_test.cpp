// One-shot reads: parsed, expanded into one-element entries, without duplicates.
#include "support/driver_test.h"
#include "support/label_tree.h"
#include "support/locks.h"
#include "support/records.h"

#include <climits>
#include <functional>

using namespace tavmir::test;

namespace
{

class OnceRead : public DriverTest
{
protected:
    OnceRead()
    {
        const QList<int> upTo3 = QList<int>() << 0 << 3;
        const QList<int> upTo10 = QList<int>() << 0 << 10;
        QList<Label_Type_Info> variables;
        variables << variable("B", 1, 100) << arrayVariable("Bs", 1, 200, upTo3)
                  << variable("W", 4, 1000) << arrayVariable("Ws", 4, 2000, upTo3)
                  << variable("D", 6, 3000) << arrayVariable("Ds", 6, 4000, upTo10)
                  << variable("U", 7, 5000) << arrayVariable("Us", 7, 6000, upTo10)
                  << textVariable("T", 7000, 8) << variable("T0", 10, 7500)
                  << textVariable("TNegative", 7600, -1);
        Label_Type_Info texts = arrayVariable("Ts", 10, 8000, upTo3);
        texts.elementSizes << 8;
        variables << texts;
        Label_Type_Info empty = arrayVariable("Empty", 4, 9000, QList<int>() << 5 << 5);
        Label_Type_Info reversed = arrayVariable("Reversed", 4, 9500, QList<int>() << 5 << 3);
        variables << empty << reversed;
        for (const int code : {0, 2, 3, 5, 8, 9, 11, 12})
            variables << variable(qPrintable(QString::fromLatin1("X%1").arg(code)), code, 9900);
        passLabels({label("P", variables)});
    }

    static RW_VAR request(const char* address, int count)
    {
        RW_VAR var;
        var.addressText = QString::fromUtf8(address);
        var.count = count;
        var.station = 3;
        var.hostKey = 11;
        var.varKey = 12;
        return var;
    }

    // Registers on an empty list and returns the addresses that were queued.
    std::vector<int> queued(const char* address, int count)
    {
        PLC_driver.onceReadList.clear();
        RW_VAR var = request(address, count);
        const int result = AddListOnceReadVar(&var);
        EXPECT_EQ(result, PLC_driver.onceReadList.size());
        return addressesOf(PLC_driver.onceReadList);
    }
};

typedef std::vector<int> Addresses;

TEST_F(OnceRead, ARefusedAddressReturnsZeroAndLeavesTheRecord)
{
    for (const char* address : {"", "P", "Q.W", "P.Nope", "P.W[1]", "P.Ws[x]"}) {
        RW_VAR var = request(address, 5);
        EXPECT_EQ(AddListOnceReadVar(&var), 0) << address;
        EXPECT_TRUE(sameRecord(var, request(address, 5))) << address;
    }
    EXPECT_TRUE(PLC_driver.onceReadList.isEmpty());
}

TEST_F(OnceRead, ATypeThatCannotBeReadReturnsZeroWithTypeAndStationWritten)
{
    PLC_driver.onceReadList.append(element(4, 0));
    for (const char* address : {"P.X0", "P.X2", "P.X3", "P.X5", "P.X8", "P.X9", "P.X11"}) {
        RW_VAR var = request(address, 5);
        var.dataType = 77;
        EXPECT_EQ(AddListOnceReadVar(&var), 0) << address;
        RW_VAR expected = request(address, 5);
        expected.dataType = 0;
        expected.station = 7;
        EXPECT_TRUE(sameRecord(var, expected)) << address;
    }
    EXPECT_EQ(PLC_driver.onceReadList.size(), 1);
}

TEST_F(OnceRead, TheDefaultStationReplacesTheRecordsOwnWhileTheModeIsZero)
{
    RW_VAR var = request("P.W", 1);
    AddListOnceReadVar(&var);
    EXPECT_EQ(var.station, 7);
    EXPECT_EQ(PLC_driver.onceReadList.first().station, 7);
    for (const qint32 mode : {1, 2, -1}) {
        PLC_driver.onceReadList.clear();
        host.info.stationMode = mode;
        RW_VAR own = request("P.W", 1);
        AddListOnceReadVar(&own);
        EXPECT_EQ(own.station, 3);
        EXPECT_EQ(PLC_driver.onceReadList.first().station, 3);
    }
}

TEST_F(OnceRead, AnEntryIsACopyOfTheRecordWithItsOwnAddress)
{
    RW_VAR var = request("P.Ws[0]", 2);
    var.auxText = QLatin1String("aux");
    var.hostData2 = 2;
    var.hostData3 = 3;
    var.hostData4 = 4;
    var.status = 5;
    var.hostData12 = 12;
    var.hostData13 = 13;
    var.value = hex("0A");
    RW_VAR expected = var;
    EXPECT_EQ(AddListOnceReadVar(&var), 2);
    expected.station = 7;
    expected.dataType = 4;
    expected.count = 1;
    for (int i = 0; i < 2; ++i) {
        expected.elementAddress = 2000 + 16 * i;
        EXPECT_TRUE(sameRecord(PLC_driver.onceReadList.at(i), expected)) << i;
    }
    expected.elementAddress = 2032;
    EXPECT_TRUE(sameRecord(var, expected)) << "the caller's record stands behind the last element";
}

TEST_F(OnceRead, BitsAndWordsOutsideAnArrayAreOneElementWhateverTheCount)
{
    for (const int count : {1, 5, 0, -3, INT_MAX}) {
        EXPECT_EQ(queued("P.B", count), Addresses{100}) << count;
        EXPECT_EQ(queued("P.W", count), Addresses{1000}) << count;
    }
}

TEST_F(OnceRead, BitsAndWordsOfAnArrayAreCutToItsLimit)
{
    EXPECT_EQ(queued("P.Bs[0]", 5), (Addresses{200, 201, 202}));
    EXPECT_EQ(queued("P.Bs[0]", 3), (Addresses{200, 201, 202}));
    EXPECT_EQ(queued("P.Bs[0]", 2), (Addresses{200, 201}));
    EXPECT_EQ(queued("P.Ws[0]", 5), (Addresses{2000, 2016, 2032}));
    EXPECT_EQ(queued("P.Ws[1]", 5), (Addresses{2016, 2032, 2048}))
        << "the limit does not shrink with the index";
    EXPECT_EQ(queued("P.Ws[0]", INT_MAX), (Addresses{2000, 2016, 2032}));
}

TEST_F(OnceRead, NoElementsOfAnArrayLeaveTheListAsItIs)
{
    for (const char* address : {"P.Bs[0]", "P.Ws[0]", "P.Ds[0]", "P.Us[0]"}) {
        for (const int count : {0, -1, INT_MIN}) {
            EXPECT_EQ(queued(address, count), Addresses{}) << address << ' ' << count;
        }
    }
    EXPECT_EQ(queued("P.Empty[5]", 4), Addresses{});
    EXPECT_EQ(queued("P.Reversed[5]", 4), Addresses{}) << "a negative limit";

    PLC_driver.onceReadList.append(element(4, 0));
    RW_VAR var = request("P.Ws[1]", 0);
    EXPECT_EQ(AddListOnceReadVar(&var), 1) << "the size, not 0";
    EXPECT_EQ(var.elementAddress, 2016);
    EXPECT_EQ(var.count, 1);
    EXPECT_EQ(var.dataType, 4);
}

TEST_F(OnceRead, DoubleWordsCountTwoUnitsEach)
{
    EXPECT_EQ(queued("P.Ds[0]", 5), (Addresses{4000, 4032, 4064}));
    EXPECT_EQ(queued("P.Us[0]", 5), (Addresses{6000, 6032, 6064}));
    EXPECT_EQ(queued("P.Ds[0]", 4), (Addresses{4000, 4032}));
    EXPECT_EQ(queued("P.Ds[0]", 1), Addresses{4000});
    EXPECT_EQ(queued("P.Ds[0]", 21).size(), 10u) << "(21 + 1) / 2 is 11, the limit 10";
    EXPECT_EQ(queued("P.Ds[0]", 2000000000).size(), 10u);
}

TEST_F(OnceRead, TheLargestCountWrapsBeforeItIsHalved)
{
    EXPECT_EQ(queued("P.Ds[0]", INT_MAX), Addresses{});
    EXPECT_EQ(queued("P.D", INT_MAX), Addresses{3000});
}

TEST_F(OnceRead, HalvingTruncatesTowardsZero)
{
    EXPECT_EQ(queued("P.Ds[0]", -2), Addresses{}) << "-1 / 2 is 0";
    EXPECT_EQ(queued("P.Ds[0]", -1), Addresses{});
}

TEST_F(OnceRead, DoubleWordsOutsideAnArrayAreOneElementWhateverTheCount)
{
    for (const int count : {5, 1, 0, -9}) {
        EXPECT_EQ(queued("P.D", count), Addresses{3000}) << count;
        EXPECT_EQ(queued("P.U", count), Addresses{5000}) << count;
    }
}

TEST_F(OnceRead, TextsAreLimitedByTheirWidthAndSteppedBy16)
{
    const Addresses eight = {7000, 7016, 7032, 7048, 7064, 7080, 7096, 7112};
    EXPECT_EQ(queued("P.T", 40), eight);
    EXPECT_EQ(queued("P.T", 8), eight);
    EXPECT_EQ(queued("P.T", 3), (Addresses{7000, 7016, 7032}));
    EXPECT_EQ(queued("P.T", 0), Addresses{});
    EXPECT_EQ(queued("P.T0", 40), Addresses{}) << "no width, no element";
}

TEST_F(OnceRead, TheTextLimitIsComparedUnsigned)
{
    EXPECT_EQ(queued("P.T", -1).size(), 8u) << "-1 is a large count";
    EXPECT_EQ(queued("P.T", INT_MIN).size(), 8u);
    EXPECT_EQ(queued("P.TNegative", 5).size(), 5u) << "-1 is a large width";
    EXPECT_EQ(queued("P.TNegative", -1), Addresses{}) << "the smaller one, as a count, is -1";
}

TEST_F(OnceRead, TextsDoNotLookAtTheArrayMembers)
{
    EXPECT_EQ(queued("P.Ts[1]", 5), (Addresses{8256, 8272, 8288, 8304, 8320}))
        << "the array's limit of 3 is not used";
}

TEST_F(OnceRead, TheSameRequestAgainAddsNothing)
{
    RW_VAR var = request("P.Ws[0]", 3);
    EXPECT_EQ(AddListOnceReadVar(&var), 3);
    RW_VAR again = request("P.Ws[0]", 3);
    EXPECT_EQ(AddListOnceReadVar(&again), 3);
    EXPECT_EQ(again.elementAddress, 2048) << "the record is stepped all the same";
    RW_VAR overlapping = request("P.Ws[2]", 3);
    EXPECT_EQ(AddListOnceReadVar(&overlapping), 5);
    EXPECT_EQ(addressesOf(PLC_driver.onceReadList), (Addresses{2000, 2016, 2032, 2048, 2064}));
}

TEST_F(OnceRead, EightMembersMakeADuplicate)
{
    host.info.stationMode = 1;
    const std::function<void(RW_VAR&)> changes[] = {
        [](RW_VAR& var) { var.hostKey = 99; }, [](RW_VAR& var) { var.varKey = 99; },
        [](RW_VAR& var) { var.station = 99; }, [](RW_VAR& var) { var.hostData4 = 99; },
        [](RW_VAR& var) { var.hostData13 = 99; }};
    for (const auto& change : changes) {
        PLC_driver.onceReadList.clear();
        RW_VAR first = request("P.W", 1);
        AddListOnceReadVar(&first);
        RW_VAR other = request("P.W", 1);
        change(other);
        EXPECT_EQ(AddListOnceReadVar(&other), 2);
    }
    const std::function<void(RW_VAR&)> entryChanges[] = {
        [](RW_VAR& var) { var.elementAddress = 99; }, [](RW_VAR& var) { var.count = 2; },
        [](RW_VAR& var) { var.dataType = 10; }};
    for (const auto& change : entryChanges) {
        PLC_driver.onceReadList.clear();
        RW_VAR first = request("P.W", 1);
        AddListOnceReadVar(&first);
        change(PLC_driver.onceReadList.first());
        RW_VAR other = request("P.W", 1);
        EXPECT_EQ(AddListOnceReadVar(&other), 2);
    }
}

TEST_F(OnceRead, OtherMembersDoNotMakeADifference)
{
    RW_VAR first = request("P.W", 1);
    AddListOnceReadVar(&first);
    RW_VAR other = request("P.W", 1);
    other.hostData2 = 99;
    other.hostData3 = 99;
    other.status = 99;
    other.auxText = QLatin1String("other");
    other.hostData12 = 99;
    other.value = hex("99");
    EXPECT_EQ(AddListOnceReadVar(&other), 1);
    EXPECT_EQ(PLC_driver.onceReadList.first().hostData2, 0) << "the first one stays";
}

TEST_F(OnceRead, ADuplicateIsFoundAnywhereInTheList)
{
    for (int i = 0; i < 5; ++i)
        PLC_driver.onceReadList.append(element(4, i));
    RW_VAR var = request("P.W", 1);
    EXPECT_EQ(AddListOnceReadVar(&var), 6);
    for (int i = 0; i < 5; ++i)
        PLC_driver.onceReadList.append(element(4, i));
    RW_VAR again = request("P.W", 1);
    EXPECT_EQ(AddListOnceReadVar(&again), 11);
}

TEST_F(OnceRead, TheListHoldsAtMost1024)
{
    for (int i = 0; i < 1023; ++i)
        PLC_driver.onceReadList.append(element(1, i));
    RW_VAR var = request("P.Ws[0]", 3);
    EXPECT_EQ(AddListOnceReadVar(&var), 1024) << "one of three fits";
    EXPECT_EQ(PLC_driver.onceReadList.last().elementAddress, 2000);
    EXPECT_EQ(var.elementAddress, 2048);
    RW_VAR other = request("P.D", 1);
    EXPECT_EQ(AddListOnceReadVar(&other), 1024);
    RW_VAR duplicate = request("P.Ws[0]", 1);
    EXPECT_EQ(AddListOnceReadVar(&duplicate), 1024);
    EXPECT_EQ(diagnostics.lines(), QStringList());
}

TEST_F(OnceRead, AnOverfullListOfTheHostStaysAsItIs)
{
    for (int i = 0; i < 1030; ++i)
        PLC_driver.onceReadList.append(element(1, i));
    RW_VAR var = request("P.W", 1);
    EXPECT_EQ(AddListOnceReadVar(&var), 1030);
}

TEST_F(OnceRead, AddressesWrapIn32Bits)
{
    passLabels({label("End", QList<Label_Type_Info>()
                                 << arrayVariable("W", 4, INT_MAX - 15, QList<int>() << 0 << 9))});
    EXPECT_EQ(queued("End.W[0]", 2), (Addresses{INT_MAX - 15, INT_MIN}));
}

TEST_F(OnceRead, RegistrationWaitsForTheListMutexAfterParsing)
{
    EXPECT_TRUE(waitsFor(PLC_driver.listMutex, [] {
        RW_VAR var = request("P.W", 1);
        AddListOnceReadVar(&var);
    }));
    EXPECT_TRUE(waitsFor(PLC_driver.listMutex, [] {
        RW_VAR var = request("P.Ws[0]", 0);
        AddListOnceReadVar(&var);
    })) << "also when no element is left";
    EXPECT_TRUE(isFree(PLC_driver.listMutex));
    EXPECT_TRUE(endsWhileHeld(PLC_driver.listMutex, [] {
        RW_VAR refused = request("P.Nope", 1);
        AddListOnceReadVar(&refused);
        RW_VAR unreadable = request("P.X3", 1);
        AddListOnceReadVar(&unreadable);
    }));
}

} // namespace
