// A session begins with a driver that knows of no session before it, and no key comes twice.
#include "running_session.h"

#include "support/driver_file.h"
#include "support/wait_until.h"

#include <set>

namespace tavmir::host
{

namespace
{

using Mood = FakeController::Mood;

class UsedOnce : public RunningSession
{
};

} // namespace

TEST_F(UsedOnce, WhatASessionLeftIsNotDoneByTheNext)
{
    controller_.treat("gm", Mood::silent);
    open();
    queueWrite("M.w", "5");
    ASSERT_TRUE(reaches("g", 1));
    queueWrite("M.a[0]", "6");
    queueWrite("M.d", "7");
    queueRead("M.r");
    reset();
    controller_.treat("gm", Mood::answers);

    open();
    const size_t before = controller_.count("efglm");
    EXPECT_EQ("done", write("M.a[1]", "8").state);
    EXPECT_EQ("done", read("M.a[1]").state);
    EXPECT_EQ("8", read("M.a[1]").value);
    EXPECT_EQ(before + 3, controller_.count("efglm")) << "those three and no other";
    EXPECT_EQ(0u, controller_.get('f', kWordAt));
    EXPECT_EQ(0u, controller_.get('f', kArrayAt));
    EXPECT_EQ(0u, controller_.get('l', kDwordAt));
}

TEST_F(UsedOnce, EveryWriteOfASessionAfterOthersEndsOnce)
{
    for (int round = 0; round < 3; ++round) {
        controller_.treat("g", Mood::silent);
        open();
        queueWrite("M.w", "5");
        ASSERT_TRUE(reaches("g", 1));
        queueWrite("M.a[0]", "6");
        reset();

        controller_.treat("g", Mood::answers);
        open();
        for (int i = 0; i < 10; ++i) {
            const Ended ended = write(QString("M.a[%1]").arg(i), QString::number(10 + i), 2000);
            EXPECT_EQ("done", ended.state) << round << ", " << i << ": " << ended.reason;
            EXPECT_EQ(static_cast<quint32>(10 + i),
                      controller_.get('f', kArrayAt + static_cast<quint32>(16 * i)));
        }
        reset();
    }
}

TEST_F(UsedOnce, ADriverIsNotLoadedTwiceAtATime)
{
    QStringList problems;
    std::unique_ptr<Driver> first = Driver::load(test::driverFile(TAVMIR_DRIVER), problems);
    ASSERT_TRUE(first) << problems.join('\n').toStdString();
    EXPECT_FALSE(Driver::load(test::driverFile(TAVMIR_DRIVER), problems));
    EXPECT_EQ(1, problems.size());
    problems.clear();
    first.reset();
    EXPECT_TRUE(Driver::load(test::driverFile(TAVMIR_DRIVER), problems))
        << problems.join('\n').toStdString();
}

TEST_F(UsedOnce, ADriverThatASessionHasIsNotLoadedAgain)
{
    open();
    QStringList problems;
    EXPECT_FALSE(Driver::load(test::driverFile(TAVMIR_DRIVER), problems));
    EXPECT_EQ(1, problems.size());
    session_->stop();
    EXPECT_FALSE(Driver::load(test::driverFile(TAVMIR_DRIVER), problems));
    EXPECT_EQ("not sent", write("M.w", "6").state); // the session is not disturbed by it
    reset();
    problems.clear();
    EXPECT_TRUE(Driver::load(test::driverFile(TAVMIR_DRIVER), problems))
        << problems.join('\n').toStdString();
}

TEST_F(UsedOnce, NoKeyComesTwice)
{
    std::set<quint64> keys;
    for (int round = 0; round < 3; ++round) {
        open();
        for (int i = 0; i < 5; ++i) {
            const Asked writing = queueWrite("M.w", "5");
            const Asked reading = queueRead("M.d");
            EXPECT_TRUE(keys.insert(writing.id.key).second) << writing.id.key;
            EXPECT_TRUE(keys.insert(reading.id.key).second) << reading.id.key;
            EXPECT_EQ("done", await(writing).state);
            EXPECT_EQ("done", await(reading).state);
        }
        reset();
    }
}

TEST_F(UsedOnce, ANewSessionKnowsNoValuesOfTheOneBefore)
{
    controller_.set('f', kWordAt, 5);
    Setting setting;
    setting.polled = R"({ "address": "M.w" })";
    open(setting);
    ASSERT_TRUE(reaches("f", 3));
    reset();

    controller_.treat("f", Mood::silent);
    const size_t before = controller_.count("f");
    open(setting);
    ASSERT_TRUE(reaches("f", before + 1));
    EXPECT_EQ(QByteArray(2, '\0'), session_->cachedValue(element("M.w")));
}

} // namespace tavmir::host
