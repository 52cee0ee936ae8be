// The thread.
#include "worker.h"

namespace tavmir::host
{

Worker::Worker() : thread_([this] { loop(); }) {}

Worker::~Worker()
{
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        isEnding_ = true;
    }
    wakes_.notify_one();
    thread_.join();
}

void Worker::add(std::function<void()> work)
{
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        waiting_.push_back(std::move(work));
    }
    wakes_.notify_one();
}

void Worker::loop()
{
    std::unique_lock<std::mutex> lock(mutex_);
    for (;;) {
        wakes_.wait(lock, [this] { return isEnding_ || !waiting_.empty(); });
        if (isEnding_) {
            return;
        }
        const std::function<void()> work = std::move(waiting_.front());
        waiting_.pop_front();
        lock.unlock();
        work();
        lock.lock();
    }
}

} // namespace tavmir::host
