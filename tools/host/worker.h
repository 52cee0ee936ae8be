// Work that takes long, one piece after the other on a thread of its own.
#ifndef TAVMIR_HOST_WORKER_H
#define TAVMIR_HOST_WORKER_H

#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>

namespace tavmir::host
{

class Worker
{
public:
    Worker();
    // Waits for the piece under way; what has not begun is never done.
    ~Worker();
    Worker(const Worker&) = delete;
    Worker& operator=(const Worker&) = delete;

    // Any thread.
    void add(std::function<void()> work);

private:
    void loop();

    std::mutex mutex_;
    std::deque<std::function<void()>> waiting_; // under the mutex
    bool isEnding_ = false;                     // under the mutex
    std::condition_variable wakes_;
    std::thread thread_;
};

} // namespace tavmir::host

#endif
