// What the host does at awkward moments: rebuilds, wraps the transaction id, reads and
// registers inside callbacks.
#include "situation_test.h"

#include "support/locks.h"
#include "support/wait_until.h"

#include <atomic>

namespace tavmir::situations
{
namespace
{

using test::VarDone;

class HostAtWork : public SituationTest
{
};

TEST_F(HostAtWork, ARebuildWhileARequestIsInFlightLeavesThatRequestWhole)
{
    std::atomic<int> rebuilt{0};
    controller.start([&](Peer& peer) {
        for (QByteArray request = peer.request(); !request.isEmpty(); request = peer.request()) {
            if (rebuilt == 0) { // the request is in flight: another thread of the host rebuilds
                QList<HOSTVAR> list;
                HOSTVAR variable;
                variable.addressText = "Main.Level[20]";
                variable.count = 2;
                list.append(variable);
                rebuilt = ReCreatReadVarList(&list);
            }
            peer.send(rightReply(request, 55));
        }
    });
    replyTimeoutMs = 20000;
    connectLink();
    pollLevels(3);
    const Turn first = turn();
    EXPECT_EQ(1, first.status);
    EXPECT_EQ(2, rebuilt);
    EXPECT_EQ(55, level(2)) << "stored under the addresses that were asked for";
    EXPECT_EQ(0, level(20));
    const Turn second = turn();
    EXPECT_EQ(9 + 4 * 2, second.frame.size()) << "the rebuilt list";
    EXPECT_EQ(55, level(21));
}

TEST_F(HostAtWork, TheTransactionIdWrapsAfter65536Requests)
{
    controller.start(answering(9));
    replyTimeoutMs = 20000;
    connectLink();
    pollLevels(1);
    const Turn first = turn();
    ASSERT_EQ(1, first.status);
    for (int request = 1; request < 65536; ++request) {
        ASSERT_EQ(1, turn().status) << request;
    }
    EXPECT_EQ(0, PLC_driver.transactionCounter);
    const Turn again = turn();
    EXPECT_EQ(1, again.status);
    EXPECT_EQ(first.frame, again.frame);
    EXPECT_EQ(0U, link->figures.discarded);
}

TEST_F(HostAtWork, ACallbackMayReadValues)
{
    controller.start(answering(321));
    replyTimeoutMs = 20000;
    connectLink();
    int seen = 0;
    callbacks.insideCallback = [&] { seen = level(6); };
    ASSERT_EQ(1, readLevelOnce(6, 21, 9));
    EXPECT_EQ(1, turn().status);
    EXPECT_EQ((std::vector<VarDone>{{70, 21, 9, 1}}), callbacks.done);
    EXPECT_EQ(321, seen);
}

// The driver holds its list lock while it calls: a registration made in a callback would wait
// for the callback's own end, for ever. Seen from another thread it waits just as long.
TEST_F(HostAtWork, ARegistrationWaitsUntilTheCallbackHasReturned)
{
    controller.start(answering(1));
    replyTimeoutMs = 20000;
    connectLink();
    std::atomic<bool> registered{false};
    bool registeredInside = false;
    bool lockWasFree = false;
    std::thread registration;
    callbacks.insideCallback = [&] {
        lockWasFree = test::isFree(PLC_driver.listMutex);
        registration = std::thread([&] {
            writeLevel(1, 1, 20, 2);
            registered = true;
        });
        registeredInside = test::waitUntil([&] { return registered.load(); }, 100);
    };
    ASSERT_GT(writeLevel(0, 1, 20, 1), 0);
    EXPECT_EQ(1, turn().status);
    registration.join();
    EXPECT_FALSE(lockWasFree);
    EXPECT_FALSE(registeredInside);
    EXPECT_TRUE(registered);
    EXPECT_EQ(1, PLC_driver.writeVarList.size());
}

} // namespace
} // namespace tavmir::situations
