// One-shot reads: parsed, queued as one-element entries, without duplicates.
#include "lists/once_read_fixture.h"
#include "support/locks.h"

#include <climits>
#include <functional>

using namespace tavmir::test;

namespace
{

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
    var.auxText = "aux";
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
    other.auxText = "other";
    other.hostData12 = 99;
    other.value = hex("99");
    EXPECT_EQ(AddListOnceReadVar(&other), 1);
    EXPECT_EQ(PLC_driver.onceReadList.first().hostData2, 0) << "the first one stays";
}

TEST_F(OnceRead, ADuplicateIsFoundAnywhereInTheList)
{
    for (int i = 0; i < 5; ++i) {
        PLC_driver.onceReadList.append(element(4, i));
    }
    RW_VAR var = request("P.W", 1);
    EXPECT_EQ(AddListOnceReadVar(&var), 6);
    for (int i = 0; i < 5; ++i) {
        PLC_driver.onceReadList.append(element(4, i));
    }
    RW_VAR again = request("P.W", 1);
    EXPECT_EQ(AddListOnceReadVar(&again), 11);
}

TEST_F(OnceRead, DuplicatesAreFoundFromTheFirstElementToTheLastOnly)
{
    // The element before the first, the first, the last and the one behind it.
    for (const char* address : {"P.Ws[0]", "P.Ws[1]", "P.Ws[3]", "P.Ws[4]"}) {
        RW_VAR var = request(address, 1);
        AddListOnceReadVar(&var);
    }
    RW_VAR var = request("P.Ws[1]", 3);
    EXPECT_EQ(AddListOnceReadVar(&var), 5);
    EXPECT_EQ(addressesOf(PLC_driver.onceReadList), (Addresses{2000, 2016, 2048, 2064, 2032}));
}

TEST_F(OnceRead, DuplicatesAreFoundWhereAddressesWrap)
{
    passLabels({label("End", QList<Label_Type_Info>()
                                 << arrayVariable("W", 4, INT_MAX - 15, QList<int>() << 0 << 9))});
    RW_VAR second = request("End.W[1]", 1);
    EXPECT_EQ(AddListOnceReadVar(&second), 1);
    RW_VAR all = request("End.W[0]", 3);
    EXPECT_EQ(AddListOnceReadVar(&all), 3);
    EXPECT_EQ(addressesOf(PLC_driver.onceReadList),
              (Addresses{INT_MIN, INT_MAX - 15, INT_MIN + 16}));
}

TEST_F(OnceRead, TheListHoldsAtMost1024)
{
    for (int i = 0; i < 1023; ++i) {
        PLC_driver.onceReadList.append(element(1, i));
    }
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
    for (int i = 0; i < 1030; ++i) {
        PLC_driver.onceReadList.append(element(1, i));
    }
    RW_VAR var = request("P.W", 1);
    EXPECT_EQ(AddListOnceReadVar(&var), 1030);
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
