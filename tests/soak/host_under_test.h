// A host at work on a bad line: the cycle, two readers, two writers and an operator who rebuilds
// the polled list, reads once and switches stations, all at the same time and all on the
// driver's own locks. Only bit writes are kept apart from everything else, as the driver asks.
#ifndef TAVMIR_TESTS_SOAK_HOST_UNDER_TEST_H
#define TAVMIR_TESTS_SOAK_HOST_UNDER_TEST_H

#include "feed/line_figures.h"
#include "layout.h"
#include "ledger.h"
#include "link/tcp_link.h"

#include <array>
#include <atomic>
#include <shared_mutex>
#include <thread>
#include <vector>

namespace tavmir::soak
{

enum Worker { CycleWorker, Reader0, Reader1, Writer0, Writer1, Operator, kWorkers };

class HostUnderTest
{
public:
    // One at a time: the driver has one context.
    HostUnderTest(int port, int replyTimeoutMs, std::uint64_t seed);
    ~HostUnderTest();

    HostUnderTest(const HostUnderTest&) = delete;
    HostUnderTest& operator=(const HostUnderTest&) = delete;

    void start();

    // Ends all threads but the cycle: what is queued is still carried out.
    void stopWork();
    void stopCycle();

    bool isIdle() const { return writes_.open() == 0 && reads_.open() == 0; }

    const Ledger& writes() const { return writes_; }
    const Ledger& reads() const { return reads_; }
    // Of the line; when the cycle has ended.
    const host::LineFigures& figures() const { return figures_; }
    std::uint64_t giveUps() const { return giveUps_; }
    std::uint64_t valuesRead() const { return valuesRead_; }
    std::uint64_t rebuilds() const { return rebuilds_; }
    std::vector<std::string> findings() const;

    // Grows while the worker is alive.
    std::uint64_t progressOf(int worker) const
    {
        return progress_[static_cast<std::size_t>(worker)];
    }

private:
    void runCycle();
    void runReader(int reader, std::uint64_t seed);
    void runWriter(int writer, std::uint64_t seed);
    void runOperator(std::uint64_t seed);

    void write(int writer, Area area, int index, int count);
    void writeBit(int writer, int index, int bit, bool on);
    void queueRecord(int writer, Area area, int index);
    void readOnce(int index, int count);
    void rebuild(int variant);
    void check(Area area, int index, int count);
    void found(const std::string& finding);
    bool tick(Worker worker);

    static int varDone(int station, int hostKey, int varKey, int result);
    static int commFail(QList<RW_VAR> vars, int hostKey, int flag);

    ComInfo words_;
    host::LineFigures figures_; // the cycle's
    host::TcpLink link_;
    std::uint64_t seed_;
    Ledger writes_;
    Ledger reads_;
    std::shared_mutex gate_; // exclusive: a bit write; shared: every other call of the driver
    std::array<std::atomic<std::uint32_t>, kWriters> written_{};
    std::array<std::atomic<std::uint64_t>, kWorkers> progress_{};
    std::atomic<std::uint64_t> giveUps_{0};
    std::atomic<std::uint64_t> valuesRead_{0};
    std::atomic<std::uint64_t> rebuilds_{0};
    std::atomic<bool> stopWork_{false};
    std::atomic<bool> stopCycle_{false};
    mutable std::mutex findingsMutex_;
    std::vector<std::string> findings_;
    std::vector<std::thread> workers_;
    std::thread cycle_;
};

} // namespace tavmir::soak

#endif
