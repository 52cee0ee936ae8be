// The list of polled elements changes while the cycle runs.
#include "running_session.h"

#include "support/wait_until.h"

namespace tavmir::host
{

namespace
{

class PolledList : public RunningSession
{
protected:
    void openPolling()
    {
        Setting setting;
        setting.polled = R"({ "address": "M.w" }, { "address": "M.d" })";
        open(setting);
        ASSERT_TRUE(reaches("f", 3));
    }

    // A request of the old list may be under way when the list changes: it has gone, and the
    // driver has taken the new one, when a few operations have been done.
    void settle()
    {
        for (int i = 0; i < 12; ++i) {
            EXPECT_EQ("done", write("M.bit", "1").state);
        }
    }
};

} // namespace

TEST_F(PolledList, AnEmptyListStopsPolling)
{
    openPolling();
    EXPECT_EQ("", poll({}));
    settle();
    const size_t words = controller_.count("f");
    const size_t doubleWords = controller_.count("l");
    settle();
    EXPECT_EQ(words, controller_.count("f"));
    EXPECT_EQ(doubleWords, controller_.count("l"));
    EXPECT_EQ(0u, session_->polledElementsOnWire());
}

TEST_F(PolledList, PollingGoesOnAfterAnEmptyList)
{
    options_.idleMs = 100 * kPatientMs; // only the new list wakes the cycle
    openPolling();
    for (int round = 0; round < 5; ++round) {
        EXPECT_EQ("", poll({}));
        settle();
        const size_t texts = controller_.requestsOf("f", kTextAt).size();
        EXPECT_EQ("", poll({"M.text"}));
        EXPECT_TRUE(test::waitUntil(
            [&] { return controller_.requestsOf("f", kTextAt).size() > texts + 2; }));
    }
}

TEST_F(PolledList, OnlyTheNewListIsPolled)
{
    openPolling();
    EXPECT_EQ("", poll({"M.a[0]", "M.a[1]"}));
    settle();
    const size_t old = controller_.requestsOf("fl", kWordAt).size() + controller_.count("l");
    const size_t polls = controller_.requestsOf("f", kArrayAt).size();
    EXPECT_TRUE(
        test::waitUntil([&] { return controller_.requestsOf("f", kArrayAt).size() > polls + 20; }));
    EXPECT_EQ(old, controller_.requestsOf("fl", kWordAt).size() + controller_.count("l"));
    for (const QByteArray& request : controller_.requestsOf("f", kArrayAt)) {
        EXPECT_EQ((std::vector<quint32>{kArrayAt, kArrayAt + 16}), addressesOf(request));
    }
}

TEST_F(PolledList, SessionThatPollsNothingMayBeginTo)
{
    options_.idleMs = 100 * kPatientMs;
    open();
    EXPECT_EQ("done", write("M.w", "1").state);
    EXPECT_EQ(0u, controller_.count("f"));
    EXPECT_EQ("", poll({"M.w"}));
    EXPECT_TRUE(reaches("f", 3));
}

} // namespace tavmir::host
