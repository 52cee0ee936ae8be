// When passes over the polled list begin, and that work which is queued does not wait for them.
#include "running_session.h"

#include "support/wait_until.h"

namespace tavmir::host
{

namespace
{

constexpr int kForeverMs = 100 * kPatientMs; // a test that waits through it has failed
constexpr int kWork = 100;

class PassPace : public RunningSession
{
protected:
    // Polls a bit, two words and a double word: three requests a pass.
    void openPolling(int passMs, int idleMs = kForeverMs)
    {
        options_.passMs = passMs;
        options_.idleMs = idleMs;
        Setting setting;
        setting.polled = R"({ "address": "M.bit" }, { "address": "M.w" }, { "address": "M.a[0]" },
                            { "address": "M.d" })";
        open(setting);
    }

    // Requests so far for the polled elements, of each class.
    size_t bitPolls() { return controller_.requestsOf("d", kBitAt).size(); }
    size_t wordPolls() { return controller_.requestsOf("f", kWordAt).size(); }
    size_t doubleWordPolls() { return controller_.requestsOf("l", kDwordAt).size(); }

    bool firstPassIsOver()
    {
        return test::waitUntil([&] { return doubleWordPolls() >= 1; });
    }

    void expectOnePass()
    {
        EXPECT_EQ(1u, bitPolls());
        EXPECT_EQ(1u, wordPolls());
        EXPECT_EQ(1u, doubleWordPolls());
    }
};

} // namespace

TEST_F(PassPace, WritesBetweenPassesAreDoneAtOnceAndStartNoPass)
{
    openPolling(kForeverMs);
    ASSERT_TRUE(firstPassIsOver());
    for (int i = 0; i < kWork; ++i) {
        EXPECT_EQ("done", write(QString("M.many[%1]").arg(i % 7), QString::number(i)).state);
        EXPECT_EQ("done", write("M.pair[1]", QString::number(i)).state);
    }
    expectOnePass();
}

TEST_F(PassPace, AReadBehindManyWritesHasItsTurnAfterFiveOfThem)
{
    options_.idleMs = kForeverMs;
    prepare(Setting()); // nothing is polled: no pass is ever due
    for (int i = 0; i < 7 * 38; ++i) {
        session_->queueWrite(element(QString("M.many[%1]").arg(i % 100)), QByteArray(2, 'x'),
                             Deadline(kPatientMs));
    }
    const OperationId read = session_->queueRead(element("M.w"), Deadline(kPatientMs));
    start();
    EXPECT_TRUE(session_->await(read).ok());
    const std::vector<QByteArray> requests = controller_.requests("fg");
    ASSERT_GE(requests.size(), 6u);
    EXPECT_EQ('f', requests[5].at(7));
    for (int i = 0; i < 5; ++i) {
        EXPECT_EQ('g', requests[static_cast<size_t>(i)].at(7));
    }
}

TEST_F(PassPace, ReadsBetweenPassesAreDoneAtOnceAndStartNoPass)
{
    openPolling(kForeverMs);
    ASSERT_TRUE(firstPassIsOver());
    for (int i = 0; i < kWork; ++i) {
        EXPECT_EQ("done", read(QString("M.many[%1]").arg(i % 7)).state);
        EXPECT_EQ("done", read("M.pair[1]").state);
    }
    expectOnePass();
}

TEST_F(PassPace, ManyQueuedAtOnceBetweenPassesStartNoPass)
{
    openPolling(kForeverMs);
    ASSERT_TRUE(firstPassIsOver());
    std::vector<Asked> asked;
    for (int i = 0; i < 20 * kWork; ++i) {
        const QString address = QString("M.many[%1]").arg(i);
        asked.push_back(i % 2 == 0 ? queueWrite(address, "1") : queueRead(address));
    }
    for (const Asked& one : asked) {
        EXPECT_EQ("done", await(one).state);
    }
    expectOnePass();
}

TEST_F(PassPace, BitsAndTextsBetweenPassesStartNoPass)
{
    openPolling(kForeverMs);
    ASSERT_TRUE(firstPassIsOver());
    for (int i = 0; i < 10; ++i) {
        EXPECT_EQ("done", write("M.pair[2]", "1").state);
        EXPECT_EQ("done", write("M.text", QString(2 * kTextWords, 'a' + i)).state);
        EXPECT_EQ("done", read("M.text").state);
    }
    expectOnePass();
}

TEST_F(PassPace, APassOfSeveralRequestsIsNoLongerThanThat)
{
    options_.passMs = kForeverMs;
    options_.idleMs = kForeverMs;
    Setting setting;
    setting.polled = R"({ "address": "M.many[0]", "count": 100 })";
    open(setting);
    ASSERT_TRUE(reaches("f", 3));
    for (int i = 0; i < kWork; ++i) {
        EXPECT_EQ("done", write("M.d", QString::number(i)).state);
    }
    EXPECT_EQ(3u, controller_.count("f")); // 38 + 38 + the last 24 and the first again
}

TEST_F(PassPace, PassesBeginWhenTheyAreDueWhileWritesGoOn)
{
    constexpr int kPassMs = 50;
    const Clock::time_point start = Clock::now();
    openPolling(kPassMs);
    int writes = 0;
    while (bitPolls() < 8) {
        ASSERT_EQ("done", write("M.many[1]", QString::number(writes++)).state);
        ASSERT_LT(Clock::now() - start, std::chrono::milliseconds(kPatientMs));
    }
    const auto took = std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - start);
    EXPECT_GE(took.count(), 6 * kPassMs) << writes << " writes voided the pace";
}

TEST_F(PassPace, PassesBeginWhenTheyAreDueWithoutOtherWork)
{
    constexpr int kPassMs = 50;
    const Clock::time_point start = Clock::now();
    openPolling(kPassMs);
    ASSERT_TRUE(test::waitUntil([&] { return doubleWordPolls() >= 8; }));
    const auto took = std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - start);
    EXPECT_GE(took.count(), 6 * kPassMs);
    EXPECT_LE(bitPolls(), static_cast<size_t>(took.count() / kPassMs) + 2);
}

// A controller that refuses everything is not asked more often for it.
TEST_F(PassPace, RefusedPassesKeepThePace)
{
    constexpr int kPassMs = 50;
    controller_.treat("dfl", FakeController::Mood::isBusy);
    const Clock::time_point start = Clock::now();
    openPolling(kPassMs);
    ASSERT_TRUE(test::waitUntil([&] { return doubleWordPolls() >= 8 * 3; }));
    const auto took = std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - start);
    EXPECT_GE(took.count(), 6 * kPassMs);
    EXPECT_LE(bitPolls(), 3 * (static_cast<size_t>(took.count() / kPassMs) + 2));
}

TEST_F(PassPace, PassesOfNoTimeFollowEachOther)
{
    openPolling(0);
    EXPECT_TRUE(test::waitUntil([&] { return bitPolls() > 200; }));
    for (int i = 0; i < kWork; ++i) {
        EXPECT_EQ("done", write("M.many[1]", QString::number(i)).state);
    }
    const size_t before = bitPolls();
    EXPECT_TRUE(test::waitUntil([&] { return bitPolls() > before + 200; }));
}

// Writes that never end keep neither reads waiting nor, once it is due, a pass.
TEST_F(PassPace, ReadsTakeTurnsWithWrites)
{
    constexpr int kWrites = 40 * kWordsOfARequest;
    options_.idleMs = kForeverMs;
    prepare(Setting());
    std::vector<Asked> writes;
    for (int i = 0; i < kWrites; ++i) {
        writes.push_back(queueWrite(QString("M.many[%1]").arg(i), "1"));
    }
    const Asked word = queueRead("M.a[0]");
    const Asked doubleWord = queueRead("M.d");
    size_t writtenBefore = 0;
    controller_.judge("fl", [&](const QByteArray&, int) {
        writtenBefore = controller_.count("g");
        return FakeController::Mood::answers;
    });
    start();
    EXPECT_EQ("done", await(word).state);
    EXPECT_EQ("done", await(doubleWord).state);
    EXPECT_LT(writtenBefore, 20u) << "of 40 requests with writes";
    for (const Asked& one : writes) {
        EXPECT_EQ("done", await(one).state);
    }
}

TEST_F(PassPace, APassThatIsDueDoesNotWaitForAllWrites)
{
    constexpr int kWrites = 40 * kWordsOfARequest;
    Setting setting;
    setting.polled = R"({ "address": "M.w" })";
    prepare(setting);
    std::vector<Asked> writes;
    for (int i = 0; i < kWrites; ++i) {
        writes.push_back(queueWrite(QString("M.many[%1]").arg(i), "1"));
    }
    start();
    for (const Asked& one : writes) {
        EXPECT_EQ("done", await(one).state);
    }
    EXPECT_GE(controller_.count("f"), 4u) << "passes beside 40 requests with writes";
}

TEST_F(PassPace, WithNothingToPollTheCycleSleepsAndWorkWakesIt)
{
    options_.idleMs = kForeverMs;
    open();
    for (int i = 0; i < kWork; ++i) {
        EXPECT_EQ("done", write("M.w", QString::number(i)).state);
        EXPECT_EQ("done", read("M.d").state);
    }
    EXPECT_EQ(static_cast<size_t>(kWork), controller_.count("g"));
    EXPECT_EQ(static_cast<size_t>(kWork), controller_.count("l"));
}

} // namespace tavmir::host
