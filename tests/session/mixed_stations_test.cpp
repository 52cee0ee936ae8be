// Threads that work on several stations at once: each request carries elements of one station,
// and each gets its own station's values.
#include "running_session.h"

#include "support/wait_until.h"

#include <atomic>
#include <thread>

namespace tavmir::host
{

namespace
{

constexpr int kThreads = 4;
constexpr int kOperations = 3000; // of each thread

// Words and double words at two stations each; the station is told by the address.
class MixedStations : public RunningSession
{
protected:
    void SetUp() override
    {
        RunningSession::SetUp();
        for (const int station : {0, 1, 2, 255}) {
            const auto own = static_cast<quint32>(station);
            controller_.setAt(station, 'f', kWordAt, 51000 + own);
            controller_.setAt(station, 'l', kDwordAt, 52000 + own);
            controller_.setAt(station, 'l', kPairAt, 54000 + own);
            for (quint32 i = 0; i < 4; ++i) {
                controller_.setAt(station, 'f', kManyAt + 16 * i, 53000 + own);
            }
        }
        Setting setting;
        setting.connection = ", \"stationMode\": \"own\", \"station\": 0";
        setting.polled =
            R"({ "address": "M.w", "station": 2 }, { "address": "M.d", "station": 255 },
                            { "address": "M.bit", "station": 1 })";
        options_.polls = false;
        open(setting);
    }

    static int stationOfElement(quint32 address)
    {
        return address == kWordAt ? 2 : address == kDwordAt ? 255 : 0;
    }

    size_t requestsToWrongStations()
    {
        size_t wrong = 0;
        for (const QByteArray& request : controller_.requests("fglm")) {
            for (const quint32 address : addressesOf(request)) {
                if (stationOf(request) != stationOfElement(address)) {
                    ++wrong;
                    break;
                }
            }
        }
        return wrong;
    }

    // Runs it on all threads, with the thread's number.
    static void onAllThreads(const std::function<void(int)>& work)
    {
        std::vector<std::thread> threads;
        for (int i = 0; i < kThreads; ++i) {
            threads.emplace_back([&work, i] { work(i); });
        }
        for (std::thread& thread : threads) {
            thread.join();
        }
    }
};

struct Target {
    const char* address;
    const char* value; // that its station has
};

constexpr Target kTargets[] = {
    {"M.w", "51002"}, {"M.many[1]", "53000"}, {"M.d", "52255"}, {"M.pair[0]", "54000"}};

} // namespace

TEST_F(MixedStations, ReadsOfManyThreadsKeepToTheirStations)
{
    std::atomic<int> wrongValues{0};
    std::atomic<int> notDone{0};
    onAllThreads([&](int thread) {
        for (int i = 0; i < kOperations; ++i) {
            // Two threads at a time want the same class from two stations.
            const Target& target = kTargets[i / 16 % 2 * 2 + thread % 2];
            const Ended ended = read(target.address);
            notDone += ended.state == "done" ? 0 : 1;
            wrongValues += ended.value == target.value ? 0 : 1;
        }
    });
    EXPECT_EQ(0u, requestsToWrongStations());
    EXPECT_EQ(0, wrongValues);
    EXPECT_EQ(0, notDone);
}

TEST_F(MixedStations, QueuedReadsOfManyThreadsKeepToTheirStations)
{
    std::atomic<int> wrongValues{0};
    onAllThreads([&](int thread) {
        for (int i = 0; i < kOperations; i += 10) {
            std::vector<Asked> asked;
            for (int k = 0; k < 10; ++k) {
                asked.push_back(queueRead(kTargets[(k / 3 + thread) % 4].address));
            }
            for (int k = 0; k < 10; ++k) {
                const Ended ended = await(asked[static_cast<size_t>(k)]);
                wrongValues += ended.value == kTargets[(k / 3 + thread) % 4].value ? 0 : 1;
            }
        }
    });
    EXPECT_EQ(0u, requestsToWrongStations());
    EXPECT_EQ(0, wrongValues);
}

TEST_F(MixedStations, WritesAndReadsOfManyThreadsKeepToTheirStations)
{
    std::atomic<int> notDone{0};
    onAllThreads([&](int thread) {
        for (int i = 0; i < kOperations; ++i) {
            const char* address = kTargets[(i + thread) % 4].address;
            const Ended ended = i % 3 == 0 ? read(address) : write(address, QString::number(i));
            notDone += ended.state == "done" ? 0 : 1;
        }
    });
    EXPECT_EQ(0u, requestsToWrongStations());
    EXPECT_EQ(0, notDone);
    for (const quint32 address : {kWordAt, kManyAt + 16}) {
        for (const int station : {0, 1, 2, 255}) {
            const quint32 number = controller_.getAt(station, 'f', address);
            EXPECT_EQ(station == stationOfElement(address), number < kOperations)
                << address << " at " << station;
        }
    }
}

TEST_F(MixedStations, OneElementReadByManyThreadsIsReadForEach)
{
    std::atomic<int> wrong{0};
    onAllThreads([&](int) {
        for (int i = 0; i < kOperations / 4; ++i) {
            wrong += read("M.w").value == "51002" ? 0 : 1;
        }
    });
    EXPECT_EQ(0, wrong);
    EXPECT_EQ(0u, requestsToWrongStations());
}

// Who waits for another station's end waits for nothing else: those for one station go together.
TEST_F(MixedStations, ThoseInLineForOneStationGoTogether)
{
    constexpr int kWaiting = 8;
    std::atomic<bool> mayAnswer{false};
    controller_.judge("g", [&](const QByteArray&, int number) {
        if (number > 1) {
            return FakeController::Mood::silent;
        }
        test::waitUntil([&] { return mayAnswer.load(); });
        return FakeController::Mood::answers;
    });
    const Asked other = queueWrite("M.w", "1");
    ASSERT_TRUE(reaches("g", 1));
    std::atomic<int> queued{0};
    std::vector<std::thread> threads;
    for (int i = 0; i < kWaiting; ++i) {
        threads.emplace_back([&, i] {
            queueWrite(QString("M.many[%1]").arg(i), "2");
            ++queued;
        });
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(100)); // until they wait in line
    EXPECT_EQ(0, queued);
    mayAnswer = true;
    EXPECT_TRUE(test::waitUntil([&] { return queued == kWaiting; })); // none of them has ended
    session_->stop();
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ("done", await(other).state);
}

} // namespace tavmir::host
