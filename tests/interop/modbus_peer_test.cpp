// The driver against an independent Modbus implementation, over real loopback TCP.
#include "interop/host_loop.h"
#include "interop/modbus_peer.h"
#include "support/exchange_test.h"
#include "support/label_tree.h"
#include "support/wait_until.h"

#include <QtCore/QCoreApplication>

#include <atomic>
#include <thread>

using namespace tavmir::test;

namespace
{

const int kUnit = 7; // the default station of the test's connection record

class Interop : public ExchangeTest
{
protected:
    static void SetUpTestSuite()
    {
        static int argc = 1;
        static char name[] = "interop_tests";
        static char* argv[] = {name, nullptr};
        static QCoreApplication application(argc, argv);
    }

    void SetUp() override
    {
        ASSERT_TRUE(peer.listen()) << peer.errorString().toUtf8().constData();
        ASSERT_NE(peer.port(), 0);
    }

    // Runs the cycle beside the peer until `done`; the peer lives on this thread.
    LoopResult run(const std::function<bool()>& done)
    {
        LoopResult result;
        std::atomic<bool> ended(false);
        std::thread hostThread([&] {
            result = runHostLoop(peer.port(), done);
            ended = true;
        });
        waitUntil([&] {
            QCoreApplication::processEvents();
            return ended.load();
        });
        EXPECT_TRUE(ended);
        hostThread.join();
        // The module frees a connection's memory only when it sees the connection end.
        EXPECT_TRUE(waitUntil([this] {
            QCoreApplication::processEvents();
            QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
            return !peer.hasClients();
        }));
        EXPECT_EQ(result.error, "");
        return result;
    }

    // Runs until this many requests were answered.
    LoopResult run(int requests)
    {
        int begun = 0;
        return run([&begun, requests] { return begun++ == requests; });
    }

    static bool nothingQueued()
    {
        return PLC_driver.writeVarList.isEmpty() && PLC_driver.onceReadList.isEmpty() &&
               PLC_driver.protocolList.isEmpty();
    }

    ModbusPeer peer{kUnit};
};

TEST_F(Interop, PolledValuesOfEveryTypeArrive)
{
    peer.setValue('d', 100, 1);
    for (quint32 i = 0; i < 3; ++i) {
        peer.setValue('f', 16 * i, 0x1234 + i);
    }
    peer.setValue('l', 2000, 0xFEDCBA98u);
    peer.setValue('l', 3000, 100000);
    for (quint32 i = 0; i < 3; ++i) {
        peer.setValue('f', 4000 + 16 * i, 0x4241 + 0x0202 * i);
    }
    QList<HOSTVAR> polled = {hostVar("P.B", 1), hostVar("P.Ws[0]", 3), hostVar("P.D", 1),
                             hostVar("P.U", 1), hostVar("P.T", 1)};
    ASSERT_EQ(ReCreatReadVarList(&polled), 7);

    // Bits, words, a text, double words of type 6 and of type 7: five batches.
    const LoopResult result = run(5);

    EXPECT_EQ(result.statuses, std::vector<int>(5, 1));
    EXPECT_EQ(read("P.B", 1), hex("01"));
    EXPECT_EQ(read("P.Ws[0]", 3), hex("34 12 35 12 36 12"));
    EXPECT_EQ(read("P.D", 1), hex("98 BA DC FE"));
    EXPECT_EQ(read("P.U", 1), hex("A0 86 01 00"));
    EXPECT_EQ(read("P.T", 1), QByteArray("AB"));
}

TEST_F(Interop, WrittenValuesOfEveryTypeReadBack)
{
    write("P.B", hex("01"), 1);
    write("P.Ws[0]", hex("34 12 78 56"), 2);
    write("P.D", hex("98 BA DC FE"), 1);
    write("P.U", hex("A0 86 01 00"), 1);
    write("P.T", "AB", 1);
    run([] { return nothingQueued(); });
    EXPECT_EQ(peer.value('d', 100), 1u);
    EXPECT_EQ(peer.value('f', 0), 0x1234u);
    EXPECT_EQ(peer.value('f', 16), 0x5678u);
    EXPECT_EQ(peer.value('l', 2000), 0xFEDCBA98u);
    EXPECT_EQ(peer.value('l', 3000), 100000u);
    EXPECT_EQ(peer.value('f', 4000), 0x4241u);

    // What comes back comes from the peer, not from what the write left in the caches.
    PLC_driver.byteCache.clear();
    PLC_driver.wordCache.clear();
    PLC_driver.dwordCache.clear();
    callbacks.done.clear();
    for (const char* address : {"P.B", "P.Ws[0]", "P.D", "P.U", "P.T"}) {
        RW_VAR var;
        var.addressText = QString::fromLatin1(address);
        var.count = address == std::string("P.Ws[0]") ? 2 : 1;
        var.varKey = 5;
        AddListOnceReadVar(&var);
    }
    run([] { return nothingQueued(); });
    EXPECT_EQ(read("P.B", 1), hex("01"));
    EXPECT_EQ(read("P.Ws[0]", 2), hex("34 12 78 56"));
    EXPECT_EQ(read("P.D", 1), hex("98 BA DC FE"));
    EXPECT_EQ(read("P.U", 1), hex("A0 86 01 00"));
    EXPECT_EQ(read("P.T", 1), QByteArray("AB"));
    ASSERT_FALSE(callbacks.done.empty());
    EXPECT_EQ(callbacks.done.back(), (VarDone{70, 0, 5, 1}));
    EXPECT_TRUE(callbacks.failed.empty());
}

TEST_F(Interop, TheLargestRequestsOfEachKindPassThePeersFraming)
{
    passLabels({label("Big", QList<Label_Type_Info>() << variable("B", 1, 0) << variable("W", 4, 0)
                                                      << variable("D", 6, 0))});
    for (quint32 i = 0; i < 60; ++i) {
        peer.setValue('d', i, i % 2);
        peer.setValue('f', 16 * i, 1000 + i);
        peer.setValue('l', 32 * i, 100000 + i);
    }
    QList<HOSTVAR> polled = {hostVar("Big.B", 45), hostVar("Big.W", 38), hostVar("Big.D", 56)};
    ASSERT_EQ(ReCreatReadVarList(&polled), 45 + 38 + 28);
    run(3);
    ASSERT_EQ(peer.requests.size(), 3u);
    EXPECT_EQ(peer.requests[0].elements, 45);
    EXPECT_EQ(peer.requests[1].elements, 38);
    EXPECT_EQ(peer.requests[2].elements, 28);
    EXPECT_EQ(PLC_driver.byteCache.value(43), 1);
    EXPECT_EQ(PLC_driver.wordCache.value(16 * 37), 1037);
    EXPECT_EQ(PLC_driver.dwordCache.value(32 * 27), 100027u);

    peer.requests.clear();
    write("Big.B", QByteArray(45, 1), 45);
    write("Big.W", QByteArray(76, 2), 38);
    write("Big.D", QByteArray(112, 3), 56);
    run([] { return nothingQueued(); });
    ASSERT_GE(peer.requests.size(), 3u);
    EXPECT_EQ(peer.requests[0].functionCode, 101);
    EXPECT_EQ(peer.requests[0].elements, 45);
    EXPECT_EQ(peer.requests[1].functionCode, 103);
    EXPECT_EQ(peer.requests[1].elements, 38);
    EXPECT_EQ(peer.requests[2].functionCode, 109);
    EXPECT_EQ(peer.requests[2].elements, 28);
    EXPECT_EQ(peer.value('d', 44), 1u);
    EXPECT_EQ(peer.value('f', 16 * 37), 0x0202u);
    EXPECT_EQ(peer.value('l', 32 * 27), 0x03030303u);
}

TEST_F(Interop, AnExceptionReplyToAReadIsAWrongLength)
{
    QList<HOSTVAR> polled = {hostVar("P.Ws[0]", 2)};
    ASSERT_EQ(ReCreatReadVarList(&polled), 2);
    host.info.retryLimit = 1;
    const LoopResult result = run(2);
    EXPECT_EQ(result.statuses, (std::vector<int>{0, 71}));
    EXPECT_TRUE(PLC_driver.commFailed);
    EXPECT_TRUE(PLC_driver.wordCache.isEmpty());
    EXPECT_EQ(callbacks.failed.size(), 1u);

    peer.setValue('f', 0, 1);
    peer.setValue('f', 16, 2);
    EXPECT_EQ(run(1).statuses, std::vector<int>{1});
    EXPECT_FALSE(PLC_driver.commFailed);
    EXPECT_EQ(read("P.Ws[0]", 2), hex("01 00 02 00"));
}

} // namespace
