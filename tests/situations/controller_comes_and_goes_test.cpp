// The controller is absent, silent, gone in the middle, and back.
#include "situation_test.h"

namespace tavmir::situations
{
namespace
{

using host::ExchangeEnd;
using test::CommFail;
using test::VarDone;

class ControllerComesAndGoes : public SituationTest
{
};

TEST_F(ControllerComesAndGoes, AbsentAtStartItIsPolledOnceItComes)
{
    pollLevels(3);
    const Turn first = turn();
    EXPECT_EQ(ExchangeEnd::notSent, first.result);
    EXPECT_EQ(41, first.status) << "a poll has host key 0";
    EXPECT_TRUE(PLC_driver.commFailed);

    controller.start(answering(0x1234));
    EXPECT_TRUE(recovers());
    EXPECT_EQ(0x1234, level(2));
    EXPECT_FALSE(PLC_driver.commFailed);
}

TEST_F(ControllerComesAndGoes, GoneInMidCycleItKeepsLastValuesAndComesBack)
{
    controller.start(answering(100));
    pollLevels(3);
    ASSERT_TRUE(recovers());
    controller.stop();
    ASSERT_NE(1, turn().status);
    ASSERT_GT(writeLevel(30, 7, 20, 1), 0);
    EXPECT_NE(1, turn().status);
    EXPECT_EQ((std::vector<VarDone>{{70, 20, 1, 2}}), callbacks.done) << "failed, and said once";
    EXPECT_EQ(100, level(2)) << "the last value known";

    controller.start(answering(200));
    EXPECT_TRUE(recovers());
    EXPECT_EQ(200, level(2));
}

TEST_F(ControllerComesAndGoes, AcceptingButNeverAnsweringItIsGivenUpAfterTheRetries)
{
    controller.start([](Peer& peer) {
        while (!peer.request().isEmpty()) {
        }
    });
    host.info.retryLimit = 2;
    replyTimeoutMs = 30;
    connectLink();
    pollLevels(1);
    const Turn first = turn();
    const Turn second = turn();
    const Turn third = turn();
    EXPECT_EQ(0, first.status);
    EXPECT_EQ(0, second.status);
    EXPECT_EQ(41, third.status);
    EXPECT_EQ(first.frame, second.frame) << "resent unchanged";
    EXPECT_EQ(first.frame, third.frame);
    EXPECT_EQ((std::vector<CommFail>{{0, 0, 1}}), callbacks.failed);
}

TEST_F(ControllerComesAndGoes, GiveUpsInEachKindOfTurnReportAndDropWhatTheyMust)
{
    controller.start([](Peer& peer) {
        while (!peer.request().isEmpty()) {
        }
    });
    replyTimeoutMs = 30;
    connectLink();
    pollLevels(2);
    for (int i = 0; i < 40; ++i) { // 38 go with the first batch
        writeLevel(i, i, 20, i);
    }
    readLevelOnce(3, 21, 1);
    readLevelOnce(4, 21, 2);

    EXPECT_EQ(41, turn().status);
    EXPECT_EQ(38U, callbacks.done.size());
    EXPECT_EQ((VarDone{70, 20, 37, 2}), callbacks.done.front()) << "from the back";
    EXPECT_TRUE(PLC_driver.writeVarList.isEmpty()) << "the two behind are dropped unreported";

    callbacks.done.clear();
    EXPECT_EQ(41, turn().status);
    EXPECT_EQ((std::vector<VarDone>{{70, 21, 2, 2}, {70, 21, 1, 2}}), callbacks.done);
    EXPECT_TRUE(PLC_driver.onceReadList.isEmpty());

    callbacks.done.clear();
    EXPECT_EQ(41, turn().status);
    EXPECT_TRUE(callbacks.done.empty());
    EXPECT_EQ(2, PLC_driver.readVarList.size()) << "polling goes on";
    EXPECT_EQ(3U, callbacks.failed.size());
}

} // namespace
} // namespace tavmir::situations
