// The work for each operation does not grow with the number of others. Compared is processor time,
// of the thread that asks and of all, which a busy machine does not change much.
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
    static double processorSeconds(clockid_t clock)
    {
        timespec now = {};
        ::clock_gettime(clock, &now);
        return static_cast<double>(now.tv_sec) + 1e-9 * static_cast<double>(now.tv_nsec);
    }

    // Asks for elements of M.many, and sees the last one end.
    void askFor(int first, int count, bool reads)
    {
        for (int i = first; i < first + count; ++i) {
            const QString address = QString("M.many[%1]").arg(i);
            unawaited_.push_back(reads ? queueRead(address) : queueWrite(address, "1"));
        }
        unawaited_.pop_back();
        EXPECT_EQ("done", reads ? read("M.w").state : write("M.w", "1").state);
    }

    // Asks for reads and writes of all elements of M.many in chunks and awaits none of them. The
    // last chunks take about as long as the first.
    void expectNoGrowth(clockid_t clock, double most)
    {
        constexpr int kChunks = 24;
        constexpr int kChunk = 2500;
        std::vector<double> seconds;
        for (int i = 0; i < kChunks; ++i) {
            const double start = processorSeconds(clock);
            askFor(i / 2 * kChunk, kChunk, i % 2 == 0);
            seconds.push_back(processorSeconds(clock) - start);
        }
        const double early = *std::max_element(seconds.begin(), seconds.begin() + 4);
        const double late = *std::min_element(seconds.end() - 6, seconds.end());
        EXPECT_LT(late / early, most) << early << " s and " << late << " s";
    }

    std::vector<Asked> unawaited_;
};

} // namespace

TEST_F(ManyOperations, AskingCostsTheSameBesideSixtyThousandThatEnded)
{
    open();
    expectNoGrowth(CLOCK_THREAD_CPUTIME_ID, 2);
}

TEST_F(ManyOperations, CarryingOutCostsTheSameBesideSixtyThousandThatEnded)
{
    open();
    expectNoGrowth(CLOCK_PROCESS_CPUTIME_ID, 2.5);
    for (const Asked& one : unawaited_) {
        EXPECT_EQ("done", await(one).state);
    }
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
