// Series of losses: reads, writes, texts and bits of several threads and stations, while the
// controller loses requests before and after it has carried them out.
#include "running_session.h"

#include "support/wait_until.h"

#include <atomic>
#include <thread>

namespace tavmir::host
{

namespace
{

using Mood = FakeController::Mood;

constexpr int kThreads = 4;

class Losses : public RunningSession
{
protected:
    // With a limit that no series of the tests reaches: everything is done in the end.
    void openTolerant(const QByteArray& more = "", const QByteArray& polled = "")
    {
        Setting setting;
        setting.connection = ", \"retryLimit\": 1000" + more;
        setting.polled = polled;
        open(setting);
    }

    // Of seven requests, in every class, four are lost in three ways.
    void loseMany()
    {
        controller_.judge("defglm", [](const QByteArray&, int number) {
            const Mood moods[] = {Mood::answers,        Mood::losesAndCloses, Mood::closes,
                                  Mood::losesAndCloses, Mood::answers,        Mood::refuses,
                                  Mood::answers};
            return moods[number % 7];
        });
    }

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

} // namespace

TEST_F(Losses, EveryWriteAndReadOfEveryKindIsDoneInTheEnd)
{
    openTolerant();
    loseMany();
    std::atomic<int> wrong{0};
    onAllThreads([&](int thread) {
        for (int i = 0; i < 25; ++i) {
            const QString words = QString("M.many[%1]").arg(100 * thread + i);
            const QString doubleWords = QString("M.pair[%1]").arg(thread);
            const QString number = QString::number(1000 * thread + i + 70000);
            const QString word = QString::number(1000 * thread + i);
            wrong += write(words, word).state == "done" ? 0 : 1;
            wrong += write(doubleWords, number).state == "done" ? 0 : 1;
            wrong += read(words).value == word.toStdString() ? 0 : 1;
            wrong += read(doubleWords).value == number.toStdString() ? 0 : 1;
        }
    });
    EXPECT_EQ(0, wrong);
}

TEST_F(Losses, TextsAreWholeInTheEnd)
{
    openTolerant();
    loseMany();
    for (int i = 0; i < 20; ++i) {
        const QString text(2 * kTextWords, 'a' + i);
        const Ended ended = write("M.text", text);
        EXPECT_EQ("done", ended.state) << ended.reason;
        EXPECT_EQ(text.toStdString(), read("M.text").value);
    }
}

TEST_F(Losses, BitsOfManyThreadsAllArrive)
{
    openTolerant(", \"stationMode\": \"own\"", R"({ "address": "M.w", "station": 2 })");
    loseMany();
    std::atomic<int> notDone{0};
    onAllThreads([&](int thread) {
        for (int bit = thread; bit < 16; bit += kThreads) {
            notDone += write(QString("M.w.b[%1]").arg(bit), "1").state == "done" ? 0 : 1;
            notDone += write(QString("M.d.b[%1]").arg(bit + 16), "1").state == "done" ? 0 : 1;
        }
    });
    EXPECT_EQ(0, notDone);
    EXPECT_EQ(0xFFFFu, controller_.getAt(2, 'f', kWordAt));
    EXPECT_EQ(0u, controller_.getAt(1, 'f', kWordAt));
    EXPECT_EQ(0xFFFF0000u, controller_.getAt(1, 'l', kDwordAt));
}

// The word that a bit is changed in is read when all writes before it are over, however many wait.
TEST_F(Losses, ABitIsPutIntoTheWordThatWasWrittenBefore)
{
    openTolerant("", R"({ "address": "M.d" })");
    for (quint32 round = 1; round <= 10; ++round) {
        for (int i = 0; i < 10 * kWordsOfARequest; ++i) {
            queueWrite(QString("M.many[%1]").arg(i), "1");
        }
        queueWrite("M.w", QString::number(0x100 * round));
        EXPECT_EQ("done", write("M.w.b[4]", "1").state);
        EXPECT_EQ(0x100 * round + 0x10, controller_.get('f', kWordAt));
    }
}

// With a limit that is often reached, the books still close: what is called done stands in the
// controller, what is called refused or not sent does not.
TEST_F(Losses, BooksCloseWhenWritesAreGivenUp)
{
    constexpr int kWrites = 150;
    Setting setting;
    setting.connection = ", \"retryLimit\": 1";
    open(setting);
    loseMany();
    std::vector<std::string> states(kThreads * kWrites);
    onAllThreads([&](int thread) {
        for (int i = kWrites * thread; i < kWrites * (thread + 1); ++i) {
            states[static_cast<size_t>(i)] = write(QString("M.many[%1]").arg(i), "7").state;
        }
    });
    controller_.treat("defglm", Mood::answers);
    EXPECT_EQ("done", write("M.w", "1").state); // what is still to come has come
    std::map<std::string, int> books;
    for (size_t i = 0; i < states.size(); ++i) {
        ++books[states[i]];
        const bool stands = controller_.get('f', kManyAt + static_cast<quint32>(16 * i)) == 7;
        EXPECT_FALSE(states[i] == "done" && !stands) << i;
        EXPECT_FALSE((states[i] == "not sent" || states[i] == "refused") && stands)
            << i << " " << states[i];
    }
    EXPECT_GT(books["done"], 0);
    EXPECT_GT(books["unknown"], 0);
    const int known = books["done"] + books["unknown"] + books["refused"] + books["not sent"];
    EXPECT_EQ(kThreads * kWrites, known);
}

TEST_F(Losses, PollingSurvivesThem)
{
    openTolerant("", R"({ "address": "M.w" }, { "address": "M.d" }, { "address": "M.bit" })");
    loseMany();
    ASSERT_TRUE(reaches("d", 100));
    ASSERT_TRUE(reaches("f", 100));
    ASSERT_TRUE(reaches("l", 100));
    EXPECT_EQ("done", write("M.w", "5").state);
}

} // namespace tavmir::host
