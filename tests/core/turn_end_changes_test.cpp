// What a host, or one of its callbacks, changed in the context is taken as it is when it is needed:
// a batch count, a shortened list, the station, the failed state, the callback itself.
#include "support/cycle_test.h"

#include <QtCore/QMutexLocker>

#include <climits>
#include <functional>
#include <vector>

using namespace tavmir::test;

namespace
{

enum class Kind { write, once };

class ChangedTurnEnd : public CycleTest, public ::testing::WithParamInterface<Kind>
{
protected:
    QList<RW_VAR>& list()
    {
        return GetParam() == Kind::write ? PLC_driver.writeVarList : PLC_driver.onceReadList;
    }

    // Variable (i, i) for each number; another type than the one before begins another batch.
    void queue(int dataType, const std::vector<int>& variables)
    {
        for (const int i : variables) {
            if (GetParam() == Kind::write) {
                queueWrite(dataType, 32 * i, i, i);
            } else {
                queueOnce(dataType, 32 * i, i, i);
            }
        }
    }

    // Runs inside the first report only.
    void atFirstReport(const std::function<void()>& change)
    {
        callbacks.insideCallback = [this, change] {
            if (callbacks.done.size() == 1) {
                change();
            }
        };
    }

    // The last variable comes first: pairs are recorded from the back.
    std::vector<VarDone> reports() const { return callbacks.done; }
};

TEST_P(ChangedTurnEnd, ABatchCountBelowOneRemovesAndReportsNothing)
{
    for (const int count : {0, -1, -2, INT_MIN}) {
        list().clear();
        queue(4, {1, 2});
        ComCommunication();
        PLC_driver.batchCount = count;
        EXPECT_EQ(answer(), 1) << count;
        EXPECT_EQ(list().size(), 2) << count;
        EXPECT_TRUE(reports().empty()) << count;
        PLC_driver.writeTurns = 0;
        PLC_driver.onceReadTurns = 0;
    }
}

TEST_P(ChangedTurnEnd, ABatchCountAboveTheListEmptiesIt)
{
    queue(4, {1, 2});
    ComCommunication();
    PLC_driver.batchCount = INT_MAX;
    EXPECT_EQ(answer(), 1);
    EXPECT_TRUE(list().isEmpty());
    EXPECT_EQ(reports(), (std::vector<VarDone>{{70, 2, 2, 1}, {70, 1, 1, 1}}));
}

TEST_P(ChangedTurnEnd, EachReportCarriesTheStationOfItsTime)
{
    queue(4, {1, 2});
    ComCommunication();
    atFirstReport([this] { host.info.comStation = 71; });
    answer();
    EXPECT_EQ(reports(), (std::vector<VarDone>{{70, 2, 2, 1}, {71, 1, 1, 1}}));
}

TEST_P(ChangedTurnEnd, ARecordHandedOverInsideAReportNamesTheStationOfTheNext)
{
    HostRecord other;
    other.info.comStation = 99;
    queue(4, {1, 2});
    ComCommunication();
    atFirstReport([&other] { SetComInfo(&other.info); });
    answer();
    EXPECT_EQ(reports(), (std::vector<VarDone>{{70, 2, 2, 1}, {99, 1, 1, 1}}));
}

TEST_P(ChangedTurnEnd, ACallbackTakenAwayInsideAReportIsNotCalledAgain)
{
    queue(4, {1, 2, 3});
    ComCommunication();
    atFirstReport([] { RegistCallBackFuncIntf(nullptr, nullptr); });
    answer();
    EXPECT_EQ(reports(), (std::vector<VarDone>{{70, 3, 3, 1}}));
    EXPECT_TRUE(list().isEmpty());
}

TEST_P(ChangedTurnEnd, AStateMarkedFailedInsideAReportFailsTheNext)
{
    queue(4, {1, 2});
    queue(1, {1, 9});
    ComCommunication();
    atFirstReport([] { PLC_driver.commFailed = true; });
    EXPECT_EQ(answer(), 1);
    EXPECT_EQ(reports(), (std::vector<VarDone>{{70, 2, 2, 1}, {70, 1, 1, 2}}))
        << "a failure is reported also for a variable that waits again";
    EXPECT_EQ(callbacks.failed, (std::vector<CommFail>{{0, 0, 1}}));
    EXPECT_TRUE(list().isEmpty()) << "what waited behind a failed turn is dropped";
}

TEST_P(ChangedTurnEnd, AStateMarkedGoodInsideAReportKeepsWhatWaits)
{
    queue(4, {1, 2, 3});
    queue(1, {1, 9});
    ComCommunication();
    atFirstReport([] { PLC_driver.commFailed = false; });
    EXPECT_EQ(answerNothing(), 42);
    EXPECT_EQ(reports(), (std::vector<VarDone>{{70, 3, 3, 2}, {70, 2, 2, 1}}))
        << "variable 1 waits again and is held back";
    EXPECT_TRUE(callbacks.failed.empty());
    EXPECT_EQ(list().size(), 2);
}

TEST_P(ChangedTurnEnd, AVariableQueuedInsideAReportIsHeldBack)
{
    queue(4, {1, 2, 3});
    ComCommunication();
    atFirstReport([this] { queue(1, {2}); });
    answer();
    EXPECT_EQ(reports(), (std::vector<VarDone>{{70, 3, 3, 1}, {70, 1, 1, 1}}));
}

TEST_P(ChangedTurnEnd, AVariableTakenOutInsideAReportIsReported)
{
    queue(4, {1, 2, 3});
    queue(1, {1, 9});
    ComCommunication();
    atFirstReport([this] { list().removeFirst(); });
    answer();
    EXPECT_EQ(reports(), (std::vector<VarDone>{{70, 3, 3, 1}, {70, 2, 2, 1}, {70, 1, 1, 1}}));
    EXPECT_EQ(list().size(), 1);
}

TEST_P(ChangedTurnEnd, AVariableRenamedInPlaceInsideAReportIsSeen)
{
    queue(4, {1, 2, 3});
    queue(1, {1, 9});
    ComCommunication();
    atFirstReport([this] {
        list().first().varKey = 8;
        list().last().hostKey = 2;
        list().last().varKey = 2;
    });
    answer();
    EXPECT_EQ(reports(), (std::vector<VarDone>{{70, 3, 3, 1}, {70, 1, 1, 1}}));
}

TEST_P(ChangedTurnEnd, EachReportSeesTheListOfItsTime)
{
    queue(4, {1, 2, 3, 4});
    ComCommunication();
    callbacks.insideCallback = [this] {
        // Holds the next one back, then no longer the one after it.
        if (callbacks.done.size() == 1) {
            queue(1, {3});
        } else {
            list().clear();
        }
        queue(1, {1});
    };
    answer();
    EXPECT_EQ(reports(), (std::vector<VarDone>{{70, 4, 4, 1}, {70, 2, 2, 1}}));
    EXPECT_EQ(list().size(), 1);
}

std::string kindName(const ::testing::TestParamInfo<Kind>& info)
{
    return info.param == Kind::write ? "Write" : "OneShot";
}

INSTANTIATE_TEST_SUITE_P(EachList, ChangedTurnEnd, ::testing::Values(Kind::write, Kind::once),
                         kindName);

class ChangedPollTurn : public CycleTest
{
};

TEST_F(ChangedPollTurn, ABatchCountBelowOneTurnsNothing)
{
    for (const int count : {0, -1, INT_MIN}) {
        PLC_driver.readVarList.clear();
        pollMany(3, 4);
        ComCommunication();
        PLC_driver.batchCount = count;
        EXPECT_EQ(answer(), 1) << count;
        EXPECT_EQ(addressesOf(PLC_driver.readVarList), (std::vector<int>{0, 32, 64})) << count;
    }
}

// The line that refuses a batch is written before the batch is dropped: there a test can change
// the list in between.
class RefusedMeanwhile : public CycleTest
{
};

TEST_F(RefusedMeanwhile, AListShortenedMeanwhileIsNotErasedPastItsEnd)
{
    queueWrite(3, 0);
    queueWrite(3, 16);
    queueWrite(3, 32);
    poll(4, 0);
    diagnostics.onLine([](const QString&) {
        const QMutexLocker lock(&PLC_driver.listMutex);
        PLC_driver.writeVarList.removeLast();
        PLC_driver.writeVarList.removeLast();
    });
    const Protocol* request = ComCommunication();
    ASSERT_NE(request, nullptr);
    EXPECT_EQ(request->frame.at(7), 'f') << "polling goes on";
    EXPECT_TRUE(PLC_driver.writeVarList.isEmpty());
    EXPECT_EQ(diagnostics.lines().size(), 1);
}

TEST_F(RefusedMeanwhile, AListEmptiedMeanwhileStaysEmpty)
{
    queueWrite(3, 0);
    queueWrite(3, 16);
    diagnostics.onLine([](const QString&) {
        const QMutexLocker lock(&PLC_driver.listMutex);
        PLC_driver.writeVarList.clear();
    });
    EXPECT_EQ(ComCommunication(), nullptr);
    EXPECT_TRUE(PLC_driver.writeVarList.isEmpty());
}

} // namespace
