// A signalfd.
#include "stop_signal.h"

#include "wire/deadline.h"

#include <poll.h>
#include <pthread.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include <csignal>

namespace tavmir::host
{

namespace
{

sigset_t stopSignals()
{
    sigset_t set;
    sigemptyset(&set);
    sigaddset(&set, SIGINT);
    sigaddset(&set, SIGTERM);
    return set;
}

} // namespace

StopSignal::StopSignal()
{
    const sigset_t set = stopSignals();
    pthread_sigmask(SIG_BLOCK, &set, nullptr);
    descriptor_ = ::signalfd(-1, &set, SFD_CLOEXEC | SFD_NONBLOCK);
}

StopSignal::~StopSignal()
{
    ::close(descriptor_);
    const sigset_t set = stopSignals();
    pthread_sigmask(SIG_UNBLOCK, &set, nullptr);
}

bool StopSignal::waitMs(int ms)
{
    const wire::Deadline deadline(ms);
    while (!came_) {
        pollfd wait = {descriptor_, POLLIN, 0};
        const int ready = ::poll(&wait, 1, deadline.remainingMs());
        if (ready > 0) {
            signalfd_siginfo info;
            came_ = ::read(descriptor_, &info, sizeof info) == static_cast<ssize_t>(sizeof info);
        } else if (deadline.passed()) {
            return false;
        }
    }
    return true;
}

} // namespace tavmir::host
