// A queue and the thread that empties it.
#include "output.h"

#include "link/wake_event.h"

#include <poll.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <climits>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <thread>
#include <utility>

namespace tavmir::host
{

// Outlives the Output when its thread is caught inside a write that nobody lets go on.
class Output::Shared
{
public:
    Shared(int descriptor, size_t mostWaiting) : descriptor_(descriptor), most_(mostWaiting) {}

    void add(QByteArray piece)
    {
        std::unique_lock<std::mutex> lock(mutex_);
        const auto size = static_cast<size_t>(piece.size());
        const auto isOpen = [&] { return !ended_ && error_ == 0; };
        const auto hasRoom = [&] { return pieces_.empty() || waiting_ + size <= most_; };
        changed_.wait(lock, [&] { return !patient_ || !isOpen() || hasRoom(); });
        if (!isOpen() || !hasRoom()) {
            ++dropped_;
            return;
        }
        waiting_ += size;
        pieces_.push_back(std::move(piece));
        changed_.notify_all();
    }

    void run()
    {
        for (;;) {
            QByteArray piece;
            {
                std::unique_lock<std::mutex> lock(mutex_);
                changed_.wait(lock, [&] { return ended_ || !pieces_.empty(); });
                if (ended_ || error_ != 0) {
                    break;
                }
                piece = pieces_.front();
            }
            const int error = writeAll(piece);
            const std::lock_guard<std::mutex> lock(mutex_);
            if (error != 0) {
                error_ = error;
                dropped_ += pieces_.size();
                pieces_.clear();
                waiting_ = 0;
            } else if (!ended_) {
                pieces_.pop_front();
                waiting_ -= static_cast<size_t>(piece.size());
            }
            ++progress_;
            changed_.notify_all();
        }
        const std::lock_guard<std::mutex> lock(mutex_);
        threadEnded_ = true;
        changed_.notify_all();
    }

    void setPatient(bool patient)
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        patient_ = patient;
        changed_.notify_all();
    }

    bool isBehind() const
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        return !pieces_.empty();
    }

    quint64 dropped() const
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        return dropped_;
    }

    int error() const
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        return error_;
    }

    bool finish(int ms)
    {
        std::unique_lock<std::mutex> lock(mutex_);
        while (!pieces_.empty() && error_ == 0) {
            const quint64 before = progress_;
            const bool moved = changed_.wait_for(lock, std::chrono::milliseconds(ms),
                                                 [&] { return progress_ != before; });
            if (!moved) {
                break;
            }
        }
        return pieces_.empty() && error_ == 0;
    }

    // False: the thread is inside a write and cannot be waited for.
    bool end()
    {
        std::unique_lock<std::mutex> lock(mutex_);
        ended_ = true;
        dropped_ += pieces_.size();
        pieces_.clear();
        stop_.wake();
        changed_.notify_all();
        return changed_.wait_for(lock, std::chrono::milliseconds(kEndMs),
                                 [&] { return threadEnded_; });
    }

private:
    static constexpr int kEndMs = 100;

    // 0, or the errno. A pipe or a terminal that is ready takes a few bytes without waiting, so
    // that the wait is in poll(), where it can be ended.
    int writeAll(const QByteArray& piece)
    {
        int done = 0;
        while (done < piece.size()) {
            pollfd waits[2] = {{descriptor_, POLLOUT, 0}, {stop_.descriptor(), POLLIN, 0}};
            const int ready = ::poll(waits, 2, -1);
            if (ready < 0 && errno != EINTR) {
                return errno;
            }
            if (waits[1].revents != 0) {
                return ECANCELED;
            }
            if (ready <= 0) {
                continue;
            }
            const auto size = static_cast<size_t>(std::min(piece.size() - done, PIPE_BUF));
            const ssize_t written = ::write(descriptor_, piece.constData() + done, size);
            if (written < 0 && errno != EINTR && errno != EAGAIN) {
                return errno;
            }
            done += static_cast<int>(std::max<ssize_t>(0, written));
            const std::lock_guard<std::mutex> lock(mutex_);
            ++progress_;
            changed_.notify_all();
        }
        return 0;
    }

    const int descriptor_;
    const size_t most_;
    WakeEvent stop_;
    mutable std::mutex mutex_;
    std::condition_variable changed_;
    std::deque<QByteArray> pieces_; // the first one is being written
    size_t waiting_ = 0;            // bytes of them
    quint64 dropped_ = 0;
    quint64 progress_ = 0;
    int error_ = 0;
    bool patient_ = false; // writers wait for room
    bool ended_ = false;
    bool threadEnded_ = false;
};

Output::Output(int descriptor, size_t mostWaiting)
    : shared_(std::make_shared<Shared>(descriptor, mostWaiting))
{
    std::thread([shared = shared_] { shared->run(); }).detach();
}

Output::~Output()
{
    shared_->end();
}

void Output::waitForRoom()
{
    shared_->setPatient(true);
}

void Output::hurry()
{
    shared_->setPatient(false);
}

void Output::write(const QByteArray& piece)
{
    if (!piece.isEmpty()) {
        // Its own bytes: the other thread shares none with the caller.
        shared_->add(QByteArray(piece.constData(), piece.size()));
    }
}

bool Output::isBehind() const
{
    return shared_->isBehind();
}

quint64 Output::dropped() const
{
    return shared_->dropped();
}

bool Output::finish(int ms)
{
    return shared_->finish(ms);
}

int Output::error() const
{
    return shared_->error();
}

} // namespace tavmir::host
