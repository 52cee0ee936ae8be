// What a write is said to have come to, over all attempts and all requests that it took.
#include "running_session.h"

#include "support/wait_until.h"
#include "wire/frame_layout.h"

#include <gmock/gmock.h>

namespace tavmir::host
{

namespace
{

using Mood = FakeController::Mood;
using testing::AnyOf;
using testing::HasSubstr;

class Outcomes : public RunningSession
{
protected:
    void openWithRetries(int retryLimit, int replyTimeoutMs = kPatientMs)
    {
        Setting setting;
        setting.connection = ", \"retryLimit\": " + QByteArray::number(retryLimit);
        setting.replyTimeoutMs = replyTimeoutMs;
        open(setting);
    }

    quint32 textWord(int word)
    {
        return controller_.get('f', kTextAt + static_cast<quint32>(16 * word));
    }
};

// One variable of each class: its address text, a value, how its writes are called on the wire,
// and where it lies.
struct OfClass {
    const char* address;
    const char* value;
    char writeFunction;
    quint32 place;
    quint32 number;
};

constexpr OfClass kClasses[] = {{"M.bit", "1", 'e', kBitAt, 1},
                                {"M.w", "513", 'g', kWordAt, 513},
                                {"M.d", "70000", 'm', kDwordAt, 70000},
                                {"M.r", "1.5", 'm', kRealAt, 0x3FC00000},
                                {"M.names[1]", "ab", 'g', kNamesAt, 0x6261}};

QByteArray nameOf(char function)
{
    return QByteArray(1, function);
}

constexpr quint32 kZ = 0x7A7A; // "zz"

} // namespace

TEST_F(Outcomes, DoneStandsInTheController)
{
    openWithRetries(0);
    for (const OfClass& one : kClasses) {
        const Ended ended = write(one.address, one.value);
        EXPECT_EQ("done", ended.state) << one.address << ": " << ended.reason;
        EXPECT_EQ(one.number, controller_.get(static_cast<char>(one.writeFunction - 1), one.place));
    }
}

TEST_F(Outcomes, RefusedIsSaidWithTheExceptionInWords)
{
    openWithRetries(1);
    controller_.treat("egm", Mood::refuses);
    for (const OfClass& one : kClasses) {
        const Ended ended = write(one.address, one.value);
        EXPECT_EQ("refused", ended.state) << one.address << ": " << ended.reason;
        EXPECT_THAT(ended.reason, HasSubstr(wire::exceptionWords(FakeController::kExceptionCode)));
        EXPECT_EQ(0u, controller_.get(static_cast<char>(one.writeFunction - 1), one.place));
    }
}

// The case that must never be called "not written": it has been, twice.
TEST_F(Outcomes, CarriedOutTwiceWithLostRepliesThenTheLineWentIsUnknown)
{
    openWithRetries(2);
    controller_.judge("g", [](const QByteArray&, int number) {
        return number == 1 ? Mood::losesAndCloses : Mood::losesAndLeaves;
    });
    const Ended ended = write("M.w", "5");
    EXPECT_EQ("unknown", ended.state) << ended.reason;
    EXPECT_EQ(5u, controller_.get('f', kWordAt));
    EXPECT_EQ(2u, controller_.count("g"));
}

TEST_F(Outcomes, CarriedOutOnceThenTheLineWentIsUnknownForEveryClass)
{
    openWithRetries(0);
    for (const OfClass& one : kClasses) {
        controller_.treat("egm", Mood::losesAndCloses);
        const Ended ended = write(one.address, one.value);
        EXPECT_EQ("unknown", ended.state) << one.address << ": " << ended.reason;
        EXPECT_EQ(one.number, controller_.get(static_cast<char>(one.writeFunction - 1), one.place));
    }
}

TEST_F(Outcomes, LostBeforeItWasCarriedOutIsUnknownToo)
{
    openWithRetries(0);
    controller_.treat("g", Mood::closes);
    EXPECT_EQ("unknown", write("M.w", "5").state);
    EXPECT_EQ(0u, controller_.get('f', kWordAt));
}

TEST_F(Outcomes, NoAnswerInTimeIsUnknown)
{
    openWithRetries(1, kSoonMs);
    controller_.treat("g", Mood::loses);
    const Ended ended = write("M.w", "5");
    EXPECT_EQ("unknown", ended.state) << ended.reason;
    EXPECT_EQ(2u, controller_.count("g"));
}

TEST_F(Outcomes, RefusedAfterALostReplyIsUnknown)
{
    openWithRetries(1);
    controller_.judge("g", [](const QByteArray&, int number) {
        return number == 1 ? Mood::losesAndCloses : Mood::refuses;
    });
    const Ended ended = write("M.w", "5");
    EXPECT_EQ("unknown", ended.state) << ended.reason;
    EXPECT_EQ(5u, controller_.get('f', kWordAt));
}

TEST_F(Outcomes, LostReplyAfterARefusalIsUnknown)
{
    openWithRetries(1);
    controller_.judge("g", [](const QByteArray&, int number) {
        return number == 1 ? Mood::refuses : Mood::losesAndCloses;
    });
    EXPECT_EQ("unknown", write("M.w", "5").state);
}

TEST_F(Outcomes, NothingThatWasEverSentIsNotSent)
{
    controller_.unplug();
    openWithRetries(2);
    for (const OfClass& one : kClasses) {
        const Ended ended = write(one.address, one.value, kSoonMs / 4);
        EXPECT_EQ("not sent", ended.state) << one.address << ": " << ended.reason;
    }
    controller_.plug();
    EXPECT_EQ("done", write("M.many[0]", "1").state);
    for (const OfClass& one : kClasses) {
        EXPECT_TRUE(controller_.requestsOf("egm", one.place).empty()) << one.address;
    }
}

// Each loss but the last is made good by the next attempt; the limit itself is still enough.
TEST_F(Outcomes, AsManyLossesAsTheLimitAllowsAreMadeGood)
{
    constexpr int kLimit = 3;
    for (const OfClass& one : kClasses) {
        openWithRetries(kLimit);
        const QByteArray function = nameOf(one.writeFunction);
        const size_t before = controller_.count(function);
        controller_.judge(function, untilNumber(kLimit + 1, Mood::losesAndCloses));
        const Ended ended = write(one.address, one.value);
        EXPECT_EQ("done", ended.state) << one.address << ": " << ended.reason;
        EXPECT_EQ(before + kLimit + 1, controller_.count(function));
        reset();
    }
}

TEST_F(Outcomes, OneLossMoreThanTheLimitIsUnknownAndNotRepeated)
{
    constexpr int kLimit = 3;
    openWithRetries(kLimit);
    controller_.judge("g", untilNumber(kLimit + 2, Mood::losesAndCloses));
    const Ended ended = write("M.w", "5");
    EXPECT_EQ("unknown", ended.state) << ended.reason;
    EXPECT_EQ(static_cast<size_t>(kLimit + 1), controller_.count("g"));
}

TEST_F(Outcomes, ASeriesOfWritesEachWithLossesEndsAsBooked)
{
    constexpr int kWrites = 60;
    openWithRetries(1000);
    // Of five requests three are lost, after and before they were carried out.
    controller_.judge("g", [](const QByteArray&, int number) {
        const Mood moods[] = {Mood::losesAndCloses, Mood::closes, Mood::answers,
                              Mood::losesAndCloses, Mood::answers};
        return moods[number % 5];
    });
    for (int i = 0; i < kWrites; ++i) {
        const Ended ended = write(QString("M.many[%1]").arg(i), QString::number(i + 1));
        EXPECT_EQ("done", ended.state) << i << ": " << ended.reason;
        EXPECT_EQ(static_cast<quint32>(i + 1),
                  controller_.get('f', kManyAt + static_cast<quint32>(16 * i)));
    }
}

TEST_F(Outcomes, HalfATextIsPartial)
{
    openWithRetries(0);
    controller_.judge("g", [](const QByteArray&, int number) {
        return number == 1 ? Mood::answers : Mood::refuses;
    });
    const Ended ended = write("M.text", QString(2 * kTextWords, 'z'));
    EXPECT_EQ("partial", ended.state) << ended.reason;
    EXPECT_EQ(kWordsOfARequest, ended.acknowledged);
    EXPECT_EQ(kTextWords, ended.elements);
    EXPECT_EQ(kZ, textWord(kWordsOfARequest - 1));
    EXPECT_EQ(0u, textWord(kWordsOfARequest));
}

TEST_F(Outcomes, TextWhoseSecondHalfIsNeverAnsweredIsPartial)
{
    openWithRetries(0);
    controller_.judge("g", [](const QByteArray&, int number) {
        return number == 1 ? Mood::answers : Mood::losesAndCloses;
    });
    const Ended ended = write("M.text", QString(2 * kTextWords, 'z'));
    EXPECT_EQ("partial", ended.state) << ended.reason;
    EXPECT_EQ(kWordsOfARequest, ended.acknowledged);
    EXPECT_EQ(kTextWords, ended.elements);
}

TEST_F(Outcomes, TextRefusedFromItsStartIsRefused)
{
    openWithRetries(0);
    controller_.treat("g", Mood::refuses);
    const Ended ended = write("M.text", QString(2 * kTextWords, 'z'));
    EXPECT_EQ("refused", ended.state) << ended.reason;
    EXPECT_EQ(0u, textWord(0));
    EXPECT_EQ(1u, controller_.count("g"));
}

TEST_F(Outcomes, TextWhoseFirstHalfWasLostIsUnknown)
{
    openWithRetries(0);
    controller_.treat("g", Mood::losesAndCloses);
    const Ended ended = write("M.text", QString(2 * kTextWords, 'z'));
    EXPECT_EQ("unknown", ended.state) << ended.reason;
    EXPECT_EQ(kZ, textWord(0));
}

TEST_F(Outcomes, WholeTextIsDoneWithAllItsElements)
{
    openWithRetries(1);
    controller_.judge("g", [](const QByteArray&, int number) {
        return number == 2 ? Mood::losesAndCloses : Mood::answers; // the second half's first try
    });
    const Ended ended = write("M.text", QString(2 * kTextWords, 'z'));
    EXPECT_EQ("done", ended.state) << ended.reason;
    EXPECT_EQ(kTextWords, ended.acknowledged);
    EXPECT_EQ(kTextWords, ended.elements);
    EXPECT_EQ(3u, controller_.count("g"));
    EXPECT_EQ(kZ, textWord(kTextWords - 1));
}

// The driver drops what waits behind a request that it gives up: none of that was ever sent.
TEST_F(Outcomes, OnlyWhatWasInTheRefusedRequestIsRefused)
{
    constexpr int kWrites = 100;
    Setting setting;
    setting.connection = ", \"retryLimit\": 0";
    prepare(setting);
    controller_.judge("g", [](const QByteArray&, int number) {
        return number == 1 ? Mood::refuses : Mood::answers;
    });
    std::vector<Asked> asked;
    for (int i = 0; i < kWrites; ++i) {
        asked.push_back(queueWrite(QString("M.many[%1]").arg(i), "7"));
    }
    start();
    for (int i = 0; i < kWrites; ++i) {
        const Ended ended = await(asked[static_cast<size_t>(i)]);
        const quint32 stored = controller_.get('f', kManyAt + static_cast<quint32>(16 * i));
        if (i < kWordsOfARequest) {
            EXPECT_EQ("refused", ended.state) << i << ": " << ended.reason;
            EXPECT_EQ(0u, stored) << i;
            continue;
        }
        EXPECT_THAT(ended.state, AnyOf("not sent", "done")) << i << ": " << ended.reason;
        EXPECT_EQ(ended.state == "done", stored == 7u) << i;
    }
    EXPECT_EQ("done", write("M.many[5]", "9").state);
}

TEST_F(Outcomes, TheSameElementTwiceInARequestEndsTwice)
{
    prepare(Setting());
    const Asked first = queueWrite("M.w", "1");
    const Asked second = queueWrite("M.w", "2");
    start();
    EXPECT_EQ("done", await(first).state);
    EXPECT_EQ("done", await(second).state);
    EXPECT_EQ(1u, controller_.count("g"));
    EXPECT_EQ(2u, controller_.get('f', kWordAt));
}

TEST_F(Outcomes, AFullRequestAndOneElementMore)
{
    for (const int elements : {kWordsOfARequest, kWordsOfARequest + 1}) {
        prepare(Setting());
        const size_t before = controller_.count("g");
        std::vector<Asked> asked;
        for (int i = 0; i < elements; ++i) {
            asked.push_back(
                queueWrite(QString("M.many[%1]").arg(i), QString::number(i + elements)));
        }
        start();
        for (const Asked& one : asked) {
            EXPECT_EQ("done", await(one).state);
        }
        EXPECT_EQ(before + (elements > kWordsOfARequest ? 2u : 1u), controller_.count("g"));
        EXPECT_EQ(static_cast<quint32>(2 * elements - 1),
                  controller_.get('f', kManyAt + static_cast<quint32>(16 * (elements - 1))));
        reset();
    }
}

} // namespace tavmir::host
