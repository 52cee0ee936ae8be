// The work for each operation does not grow with the number of others. Compared is processor
// time, which a busy machine does not change much.
#include "running_session.h"

#include <algorithm>
#include <ctime>

namespace tavmir::host
{

namespace
{

constexpr int kOnceReadRoom = 1024; // what the driver's list of one-shot reads takes

class ManyOperations : public RunningSession
{
protected:
    static double processorSeconds()
    {
        timespec now = {};
        ::clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
        return static_cast<double>(now.tv_sec) + 1e-9 * static_cast<double>(now.tv_nsec);
    }

    // Seconds that it takes to queue reads of that many elements of M.many and to see the last
    // of them end.
    double secondsOfReads(int first, int count)
    {
        const double start = processorSeconds();
        for (int i = first; i + 1 < first + count; ++i) {
            unawaited_.push_back(queueRead(QString("M.many[%1]").arg(i)));
        }
        EXPECT_EQ("done", read(QString("M.many[%1]").arg(first + count - 1)).state);
        return processorSeconds() - start;
    }

    // Seconds that writes and reads take which are awaited one by one.
    double secondsOfSingleOnes(int count)
    {
        const double start = processorSeconds();
        for (int i = 0; i < count; ++i) {
            EXPECT_EQ("done", write("M.w", "1").state);
            EXPECT_EQ("done", read("M.d").state);
        }
        return processorSeconds() - start;
    }

    std::vector<Asked> unawaited_;
};

} // namespace

TEST_F(ManyOperations, TheLastOfThirtyThousandReadsCostNoMoreThanTheFirst)
{
    constexpr int kChunks = 12;
    constexpr int kChunk = 2500;
    open();
    std::vector<double> seconds;
    for (int i = 0; i < kChunks; ++i) {
        seconds.push_back(secondsOfReads(i * kChunk, kChunk));
    }
    const double early = *std::max_element(seconds.begin(), seconds.begin() + 2);
    const double late = *std::min_element(seconds.end() - 3, seconds.end());
    EXPECT_LT(late / early, 6) << early << " s and " << late << " s";
    for (const Asked& one : unawaited_) {
        EXPECT_EQ("done", await(one).state);
    }
}

TEST_F(ManyOperations, ThoseThatEndedAndAreNotAwaitedSlowNothingDown)
{
    open();
    const double before = std::max(secondsOfSingleOnes(200), secondsOfSingleOnes(200));
    for (int i = 0; i < 25000; ++i) {
        queueWrite(QString("M.many[%1]").arg(i), "1");
        queueRead(QString("M.many[%1]").arg(i));
    }
    EXPECT_EQ("done", write("M.w", "1").state);
    EXPECT_EQ("done", read("M.w").state); // all of them have ended
    const double after =
        std::min({secondsOfSingleOnes(200), secondsOfSingleOnes(200), secondsOfSingleOnes(200)});
    EXPECT_LT(after / before, 8) << before << " s and " << after << " s";
}

TEST_F(ManyOperations, AsManyReadsAsTheDriverTakesAndOneMore)
{
    for (int i = 0; i <= kOnceReadRoom; ++i) {
        controller_.set('f', kManyAt + static_cast<quint32>(16 * i), static_cast<quint32>(i));
    }
    prepare(Setting());
    std::vector<Asked> asked;
    for (int i = 0; i < kOnceReadRoom; ++i) {
        asked.push_back(queueRead(QString("M.many[%1]").arg(i)));
    }
    start(); // there is room for one more only now
    asked.push_back(queueRead(QString("M.many[%1]").arg(kOnceReadRoom)));
    for (size_t i = 0; i < asked.size(); ++i) {
        const Ended ended = await(asked[i]);
        EXPECT_EQ(std::to_string(i), ended.value) << ended.state << ": " << ended.reason;
    }
}

} // namespace tavmir::host
