// Everything at once: hosts writing, one-shot reading, rebuilding and reading values while the
// cycle runs. At the end the books must balance.
#include "support/cycle_test.h"
#include "support/label_tree.h"
#include "support/wait_until.h"

#include <atomic>
#include <map>
#include <thread>
#include <utility>

using namespace tavmir::test;

namespace
{

const int kWriters = 3;
const int kWritesEach = 400;
const int kOnceReadsEach = 300;

class Threads : public CycleTest
{
protected:
    // The host's communication thread: every request gets a good answer, values are the low
    // bits of the address that the frame names.
    void runCycle()
    {
        while (true) {
            const bool lastRound = producersDone;
            Protocol* request = ComCommunication();
            if (request == nullptr) {
                if (lastRound && allListsEmpty()) {
                    return;
                }
                continue;
            }
            QByteArray reply = answerTo(*request);
            DataCom(&reply, reply.size());
            if (lastRound && allListsEmpty()) {
                return;
            }
        }
    }

    static QByteArray answerTo(const Protocol& request)
    {
        QByteArray reply(request.replyLength, '\0');
        if (request.replyLength == 9) {
            return reply;
        }
        const int entries = static_cast<unsigned char>(request.frame.at(8));
        const int size = (request.replyLength - 9) / entries;
        for (int i = 0; i < entries; ++i) {
            const QByteArray address = request.frame.mid(9 + 4 * i, 4);
            const QByteArray entry = address + address.right(size - 4);
            reply.replace(9 + size * i, size, entry);
        }
        return reply;
    }

    static bool allListsEmpty()
    {
        PLC_driver.listMutex.lock();
        const bool empty = PLC_driver.writeVarList.isEmpty() && PLC_driver.onceReadList.isEmpty();
        PLC_driver.listMutex.unlock();
        return empty && PLC_driver.protocolList.isEmpty();
    }

    std::atomic<bool> producersDone{false};
};

TEST_F(Threads, EveryWriteAndOneShotReadIsReportedExactlyOnce)
{
    passLabels(
        {label("P", QList<Label_Type_Info>() << arrayVariable("W", 4, 0, QList<int>() << 0 << 2000)
                                             << arrayVariable("D", 6, 0, QList<int>() << 0 << 2000)
                                             << variable("R", 1, 7))});
    QList<HOSTVAR> polled;
    polled << hostVar("P.W[0]", 200) << hostVar("P.D[0]", 100) << hostVar("P.R", 1);
    ASSERT_EQ(ReCreatReadVarList(&polled), 200 + 50 + 1);

    std::thread cycle([this] { runCycle(); });
    std::vector<std::thread> producers;
    for (int writer = 0; writer < kWriters; ++writer) {
        producers.emplace_back([&, writer] {
            for (int i = 0; i < kWritesEach; ++i) {
                const RW_VAR var =
                    writeOf(i % 3 == 0 ? 6 : 4, 32 * i, hex("01 02 03 04"), writer, i);
                // The cycle may have taken it already.
                EXPECT_GE(AddListWriteVar(&var), 0);
            }
        });
    }
    producers.emplace_back([&] {
        for (int i = 0; i < kOnceReadsEach; ++i) {
            RW_VAR var;
            var.hostKey = 50;
            var.varKey = i;
            var.addressText = QString("P.W[%1]").arg(i);
            var.count = 1;
            AddListOnceReadVar(&var);
        }
    });
    producers.emplace_back([&] {
        for (int i = 0; i < 100; ++i) {
            ReCreatReadVarList(&polled);
        }
    });
    producers.emplace_back([&] {
        for (int i = 0; i < 2000; ++i) {
            QByteArray data;
            EXPECT_EQ(GetRegisterData("P.W[3]", 0, 0, 0, &data, 10), 1);
            EXPECT_EQ(data.size(), 20);
            EnCommStation(i % 7, i % 2);
            Ethernetcontains(i % 7);
        }
    });
    for (std::thread& producer : producers) {
        producer.join();
    }
    producersDone = true;
    cycle.join();

    // `commFailed` and the callbacks belong to the cycle's thread, which has ended.
    std::map<std::pair<int, int>, int> reports;
    for (const VarDone& done : callbacks.done) {
        EXPECT_EQ(done.result, 1);
        ++reports[std::make_pair(done.hostKey, done.varKey)];
    }
    EXPECT_EQ(reports.size(), static_cast<std::size_t>(kWriters * kWritesEach + kOnceReadsEach));
    for (const auto& report : reports) {
        EXPECT_EQ(report.second, 1) << report.first.first << '/' << report.first.second;
    }
    EXPECT_TRUE(callbacks.failed.empty());
    EXPECT_TRUE(PLC_driver.writeVarList.isEmpty());
    EXPECT_TRUE(PLC_driver.onceReadList.isEmpty());
}

TEST_F(Threads, AReaderSeesAReplyWholeOrNotAtAll)
{
    passLabels({label("P", QList<Label_Type_Info>()
                               << arrayVariable("W", 4, 0, QList<int>() << 0 << 38))});
    for (int i = 0; i < 38; ++i) {
        poll(4, 16 * i);
    }
    std::atomic<bool> stop(false);
    std::atomic<int> torn(0);
    std::thread reader([&] {
        while (!stop) {
            QByteArray data;
            GetRegisterData("P.W[0]", 0, 0, 0, &data, 38);
            for (int i = 1; i < 38; ++i) {
                if (data.mid(2 * i, 2) != data.left(2)) {
                    ++torn;
                }
            }
        }
    });
    for (unsigned int round = 0; round < 300; ++round) {
        ComCommunication();
        QByteArray reply = readReply(2, std::vector<unsigned int>(38, round));
        DataCom(&reply, reply.size());
    }
    stop = true;
    reader.join();
    EXPECT_EQ(torn, 0);
}

} // namespace
