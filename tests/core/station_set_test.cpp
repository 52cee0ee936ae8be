// The set of disabled stations.
#include "support/driver_test.h"
#include "support/locks.h"

#include <climits>

using namespace tavmir::test;

namespace
{

class StationSet : public DriverTest
{
};

TEST_F(StationSet, ZeroDisablesAndTwiceLeavesOneEntryOfZero)
{
    EnCommStation(3, 0);
    EnCommStation(3, 0);
    EXPECT_EQ(PLC_driver.stationMap.count(3), 1);
    EXPECT_EQ(PLC_driver.stationMap.size(), 1);
    EXPECT_EQ(PLC_driver.stationMap.value(3, 99), 0);
    EXPECT_TRUE(Ethernetcontains(3));
}

TEST_F(StationSet, DisablingAgainPutsTheValueBackToZero)
{
    PLC_driver.stationMap.insert(3, 42);
    EnCommStation(3, 0);
    EXPECT_EQ(PLC_driver.stationMap.value(3, 99), 0);
}

TEST_F(StationSet, OneEnablesThatStationOnly)
{
    EnCommStation(3, 0);
    EnCommStation(4, 0);
    EnCommStation(3, 1);
    EXPECT_FALSE(Ethernetcontains(3));
    EXPECT_TRUE(Ethernetcontains(4));
    EXPECT_EQ(PLC_driver.stationMap.size(), 1);
}

TEST_F(StationSet, EnablingAnAbsentStationChangesNothing)
{
    EnCommStation(3, 1);
    EXPECT_TRUE(PLC_driver.stationMap.isEmpty());
}

TEST_F(StationSet, StationZeroIsAStation)
{
    EnCommStation(0, 0);
    EXPECT_TRUE(Ethernetcontains(0));
    EXPECT_EQ(PLC_driver.stationMap.size(), 1);
}

TEST_F(StationSet, ANegativeStationEnablesAllWhateverEnableSays)
{
    for (const int station : {-1, -2, INT_MIN}) {
        for (const int enable : {0, 1, 5, -1}) {
            EnCommStation(3, 0);
            EnCommStation(9, 0);
            EnCommStation(station, enable);
            EXPECT_TRUE(PLC_driver.stationMap.isEmpty()) << station << ' ' << enable;
        }
    }
}

TEST_F(StationSet, OtherEnableValuesDoNothing)
{
    for (const int enable : {2, 3, -1, INT_MAX, INT_MIN}) {
        PLC_driver.stationMap.clear();
        EnCommStation(3, enable);
        EXPECT_TRUE(PLC_driver.stationMap.isEmpty()) << enable;
        EnCommStation(3, 0);
        EnCommStation(3, enable);
        EXPECT_TRUE(Ethernetcontains(3)) << enable;
    }
}

TEST_F(StationSet, TheOtherNameDoesTheSame)
{
    EnableEthernet(7, 0);
    EXPECT_TRUE(Ethernetcontains(7));
    EnableEthernet(8, 0);
    EnableEthernet(7, 1);
    EXPECT_FALSE(Ethernetcontains(7));
    EXPECT_TRUE(Ethernetcontains(8));
    EnableEthernet(8, 2);
    EXPECT_TRUE(Ethernetcontains(8));
    EnableEthernet(-1, 5);
    EXPECT_TRUE(PLC_driver.stationMap.isEmpty());
}

TEST_F(StationSet, LookupFindsExactlyTheKey)
{
    EnCommStation(3, 0);
    EnCommStation(10, 0);
    EXPECT_FALSE(Ethernetcontains(2));
    EXPECT_TRUE(Ethernetcontains(3));
    EXPECT_FALSE(Ethernetcontains(4));
    EXPECT_TRUE(Ethernetcontains(10));
    EXPECT_FALSE(Ethernetcontains(11));
    EXPECT_FALSE(Ethernetcontains(-3));
    EXPECT_FALSE(Ethernetcontains(INT_MAX));
}

TEST_F(StationSet, LookupInsertsNothing)
{
    EXPECT_FALSE(Ethernetcontains(5));
    EXPECT_TRUE(PLC_driver.stationMap.isEmpty());
}

TEST_F(StationSet, ADisabledStationIsStillAskedAndWritten)
{
    RW_VAR var;
    var.dataType = 4;
    var.station = 5;
    AddListReadVar(&var);
    EnCommStation(5, 0);
    const Protocol* request = ComCommunication();
    ASSERT_NE(request, nullptr);
    EXPECT_EQ(request->frame.at(6), char(5));
}

TEST_F(StationSet, EveryCallTakesTheStationMutexAndNoOther)
{
    EXPECT_TRUE(waitsFor(PLC_driver.stationMutex, [] { EnCommStation(3, 0); }));
    EXPECT_TRUE(waitsFor(PLC_driver.stationMutex, [] { EnableEthernet(4, 0); }));
    EXPECT_TRUE(waitsFor(PLC_driver.stationMutex, [] { EnCommStation(-1, 0); }));
    EXPECT_TRUE(waitsFor(PLC_driver.stationMutex, [] { Ethernetcontains(3); }));
    for (QMutex* other : {&PLC_driver.listMutex, &PLC_driver.cacheMutex}) {
        EXPECT_TRUE(endsWhileHeld(*other, [] {
            EnCommStation(3, 0);
            EnCommStation(3, 1);
            EnableEthernet(-1, 0);
            Ethernetcontains(3);
        }));
    }
}

} // namespace
