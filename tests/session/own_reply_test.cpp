// A read shows what its own reply said, not what the driver's caches hold when it is looked at.
#include "running_session.h"

#include "support/wait_until.h"

namespace tavmir::host
{

namespace
{

using Mood = FakeController::Mood;

class OwnReply : public RunningSession
{
};

} // namespace

TEST_F(OwnReply, NotWhatPollingBroughtLater)
{
    Setting setting;
    setting.polled = R"({ "address": "M.w" }, { "address": "M.a[0]" })";
    open(setting);
    // Polls carry both words, the read one alone.
    controller_.judge("f", [this](const QByteArray& request, int number) {
        controller_.set('f', kWordAt,
                        countOf(request) == 1 ? 7 : 1000 + static_cast<quint32>(number));
        return Mood::answers;
    });
    for (int i = 0; i < 5; ++i) {
        const size_t before = controller_.count("f");
        const Asked reading = queueRead("M.w");
        ASSERT_TRUE(reaches("f", before + 20)); // it was answered, and polls behind it
        EXPECT_EQ("7", await(reading).value);
    }
}

TEST_F(OwnReply, NotWhatAWriteHandedInLater)
{
    open();
    controller_.set('l', kDwordAt, 70000);
    const Asked reading = queueRead("M.d");
    ASSERT_TRUE(reaches("l", 1));
    EXPECT_EQ("done", write("M.d", "80000").state);
    EXPECT_EQ("70000", await(reading).value);
}

TEST_F(OwnReply, EachOfManyReadsOfOneElementHasItsOwn)
{
    open();
    controller_.judge("f", [this](const QByteArray&, int number) {
        controller_.set('f', kWordAt, static_cast<quint32>(number));
        return Mood::answers;
    });
    std::vector<Asked> asked;
    for (size_t i = 0; i < 20; ++i) {
        asked.push_back(queueRead("M.w"));
        ASSERT_TRUE(reaches("f", i + 1));
    }
    for (size_t i = 0; i < 20; ++i) {
        EXPECT_EQ(std::to_string(i + 1), await(asked[i]).value);
    }
}

TEST_F(OwnReply, OfATextThatTakesTwoRequests)
{
    Setting setting;
    setting.polled = R"({ "address": "M.text" })";
    options_.polls = false;
    open(setting);
    for (quint32 word = 0; word < static_cast<quint32>(kTextWords); ++word) {
        controller_.set('f', kTextAt + 16 * word, 0x6161);
    }
    const Asked reading = queueRead("M.text");
    ASSERT_TRUE(reaches("f", 2));
    EXPECT_EQ("done", read("M.a[0]").state); // its second half has been answered
    EXPECT_EQ("done", write("M.text", QString(2 * kTextWords, 'b')).state);
    EXPECT_EQ(std::string(2 * kTextWords, 'a'), await(reading).value);
}

TEST_F(OwnReply, NotAnotherRequestsReply)
{
    controller_.treat("defglm", Mood::straysFirst);
    controller_.set('d', kBitAt, 1);
    controller_.set('f', kWordAt, 7);
    controller_.set('l', kDwordAt, 70000);
    open();
    for (int i = 0; i < 10; ++i) {
        EXPECT_EQ("1", read("M.bit").value);
        EXPECT_EQ("7", read("M.w").value);
        EXPECT_EQ("70000", read("M.d").value);
        EXPECT_EQ("done", write("M.a[1]", QString::number(i)).state);
        EXPECT_EQ(std::to_string(i), read("M.a[1]").value);
    }
    EXPECT_EQ(10u, controller_.count("g"));
}

TEST_F(OwnReply, OfEveryKindOfValue)
{
    controller_.set('d', kBitAt, 1);
    controller_.set('f', kWordAt, 0x8020);
    controller_.set('l', kDwordAt, 0x80000001u);
    controller_.set('l', kRealAt, 0x3FC00000);
    controller_.set('f', kNamesAt + 256, 0x6261);
    open();
    EXPECT_EQ("1", read("M.bit").value);
    EXPECT_EQ("32800", read("M.w").value);
    EXPECT_EQ("1", read("M.w.b[5]").value);
    EXPECT_EQ("0", read("M.w.b[6]").value);
    EXPECT_EQ("2147483649", read("M.d").value);
    EXPECT_EQ("1", read("M.d.b[31]").value);
    EXPECT_EQ("0", read("M.d.b[30]").value);
    EXPECT_EQ("1.5", read("M.r").value);
    EXPECT_EQ("ab", read("M.names[2]").value);
}

} // namespace tavmir::host
