// The work for each operation does not grow with the number of others. Compared is processor time
// of the thread that asks, which a busy machine does not change much.
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
        ::clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
        return static_cast<double>(now.tv_sec) + 1e-9 * static_cast<double>(now.tv_nsec);
    }

    // Seconds that it takes to ask for reads, or writes, of that many elements of M.many.
    double secondsOfAsking(int first, int count, bool reads)
    {
        const double start = processorSeconds();
        for (int i = first; i < first + count; ++i) {
            const QString address = QString("M.many[%1]").arg(i);
            unawaited_.push_back(reads ? queueRead(address) : queueWrite(address, "1"));
        }
        return processorSeconds() - start;
    }

    // Asks for all elements of M.many in chunks: the last ones take no longer than the first.
    void expectNoGrowth(bool reads)
    {
        constexpr int kChunks = 12;
        constexpr int kChunk = 2500;
        std::vector<double> seconds;
        for (int i = 0; i < kChunks; ++i) {
            seconds.push_back(secondsOfAsking(i * kChunk, kChunk, reads));
        }
        const double early = *std::max_element(seconds.begin(), seconds.begin() + 2);
        const double late = *std::min_element(seconds.end() - 3, seconds.end());
        EXPECT_LT(late / early, 3) << early << " s and " << late << " s";
    }

    std::vector<Asked> unawaited_;
};

} // namespace

TEST_F(ManyOperations, TheLastOfThirtyThousandReadsCostNoMoreThanTheFirst)
{
    open();
    expectNoGrowth(true);
    for (const Asked& one : unawaited_) {
        EXPECT_EQ("done", await(one).state);
    }
}

TEST_F(ManyOperations, TheLastOfThirtyThousandWritesCostNoMoreThanTheFirst)
{
    open();
    expectNoGrowth(false);
    EXPECT_EQ("done", write("M.w", "1").state); // and each of those before it is done
    EXPECT_EQ("done", await(unawaited_.front()).state);
    EXPECT_EQ("done", await(unawaited_.back()).state);
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
