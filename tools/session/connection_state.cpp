// A flag, a reason, and waiting for it.
#include "connection_state.h"

#include "feed/own_copy.h"

namespace tavmir::host
{

void ConnectionState::connected()
{
    const std::lock_guard<std::mutex> lock(mutex_);
    connected_ = true;
    changed_.notify_all();
}

void ConnectionState::disconnected(const QString& why)
{
    const std::lock_guard<std::mutex> lock(mutex_);
    connected_ = false;
    failed_ = true;
    problem_ = ownCopy(why);
    changed_.notify_all();
}

void ConnectionState::close()
{
    const std::lock_guard<std::mutex> lock(mutex_);
    closed_ = true;
    connected_ = false;
    problem_ = "the host stops";
    changed_.notify_all();
}

bool ConnectionState::isConnected() const
{
    const std::lock_guard<std::mutex> lock(mutex_);
    return connected_;
}

QString ConnectionState::problem() const
{
    const std::lock_guard<std::mutex> lock(mutex_);
    return ownCopy(problem_);
}

bool ConnectionState::awaitAttempt(const Deadline& deadline) const
{
    std::unique_lock<std::mutex> lock(mutex_);
    changed_.wait_until(lock, deadline.end(), [&] { return connected_ || failed_ || closed_; });
    return connected_;
}

} // namespace tavmir::host
