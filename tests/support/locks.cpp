#include "support/locks.h"

#include "support/wait_until.h"

#include <atomic>
#include <thread>

namespace tavmir
{
namespace test
{

namespace
{

// For a thread to be given a processor at all.
const int kStartDeadlineMs = 20000;

bool endsWithin(QMutex& mutex, const std::function<void()>& call, int deadlineMs)
{
    std::atomic<bool> started(false);
    std::atomic<bool> ended(false);
    mutex.lock();
    std::thread thread([&] {
        started = true;
        call();
        ended = true;
    });
    waitUntil([&] { return started.load(); }, kStartDeadlineMs);
    const bool endedWhileHeld = waitUntil([&] { return ended.load(); }, deadlineMs);
    mutex.unlock();
    thread.join();
    return endedWhileHeld;
}

} // namespace

bool waitsFor(QMutex& mutex, const std::function<void()>& call)
{
    return !endsWithin(mutex, call, 60);
}

bool endsWhileHeld(QMutex& mutex, const std::function<void()>& call)
{
    return endsWithin(mutex, call, 20000);
}

} // namespace test
} // namespace tavmir
