// A session at work on a bad line: eight workers that read and write, an operator who changes what
// is polled and switches stations, and a reader of the feed, all at the same time.
#ifndef TAVMIR_TESTS_SOAK_RUNTIME_RUNTIME_UNDER_TEST_H
#define TAVMIR_TESTS_SOAK_RUNTIME_RUNTIME_UNDER_TEST_H

#include "books.h"
#include "dice.h"
#include "feed/value_fold.h"
#include "session/host_session.h"

#include <array>
#include <atomic>
#include <memory>
#include <thread>

namespace tavmir::soak
{

class RuntimeUnderTest
{
public:
    RuntimeUnderTest(const Plant& plant, Books& books, std::unique_ptr<host::Driver> driver,
                     std::uint64_t seed);
    ~RuntimeUnderTest();
    RuntimeUnderTest(const RuntimeUnderTest&) = delete;
    RuntimeUnderTest& operator=(const RuntimeUnderTest&) = delete;

    void start();

    // Ends the workers and the operator: each sees its calls to their end.
    void stopWork();
    // Lets them work again.
    void workAgain();
    // Ends the session, whatever is under way.
    void stopSession() { session_.stop(); }
    // Ends the reader of the feed when it has seen everything.
    void stopReading();

    // Of the line; when the reading has ended.
    const host::LineFigures& figures() const { return figures_; }
    std::uint64_t polls() const { return polls_; }

    // Grow while the threads are alive: the workers', the operator's, the reader's, the cycle's.
    std::vector<std::uint64_t> progress() const;

private:
    enum Beside { OperatorThread = kWorkers, ReaderThread, CycleThread, kThreads };

    void work(int worker, std::uint64_t seed);
    void workOnce(int worker, Dice& dice);
    void write(int worker, Dice& dice);
    void writeBit(int worker, Dice& dice);
    void read(Dice& dice);
    void lookAtCache(Dice& dice);
    int variableToWrite(int worker, Dice& dice) const;

    void operate(std::uint64_t seed);
    void pollSome(Dice& dice);
    void switchStation(Dice& dice);
    void joinFeed();

    void readFeed();
    void readNow();
    void take(const host::FeedEntry& entry);
    void planChanged();
    void valueChanged(size_t place);

    void tick(int thread) { ++progress_[Plant::asIndex(thread)]; }

    const Plant& plant_;
    Books& books_;
    std::vector<host::PolledElement> all_; // that may be polled
    host::HostSession session_;
    std::uint64_t seed_;

    // The reader's:
    std::unique_ptr<host::FeedReader> reader_;
    host::LineFigures figures_;
    host::ValueFold fold_;
    std::vector<int> folded_; // variables of the plant
    Time requestSent_;        // for the first time
    Time replied_;

    std::array<std::atomic<std::uint64_t>, kThreads> progress_{};
    std::atomic<std::uint64_t> polls_{0};
    std::atomic<bool> stopWork_{false};
    std::atomic<bool> stopReading_{false};
    std::vector<std::thread> workers_;
    std::thread feed_;
};

} // namespace tavmir::soak

#endif
