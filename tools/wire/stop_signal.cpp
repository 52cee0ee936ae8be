// A signalfd.
#include "stop_signal.h"

#include "deadline.h"

#include <poll.h>
#include <pthread.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include <csignal>

namespace tavmir
{
namespace wire
{

namespace
{

const int kSignals[] = {SIGINT, SIGTERM};

sigset_t stopSignals()
{
    sigset_t set;
    sigemptyset(&set);
    for (const int signal : kSignals) {
        sigaddset(&set, signal);
    }
    return set;
}

void block(int how)
{
    const sigset_t set = stopSignals();
    pthread_sigmask(how, &set, nullptr);
}

} // namespace

StopSignal::StopSignal()
{
    const sigset_t set = stopSignals();
    block(SIG_BLOCK);
    descriptor_ = ::signalfd(-1, &set, SFD_CLOEXEC | SFD_NONBLOCK);
    if (descriptor_ < 0) {
        block(SIG_UNBLOCK);
    }
}

StopSignal::~StopSignal()
{
    if (descriptor_ >= 0) {
        ::close(descriptor_);
    }
    block(SIG_UNBLOCK);
}

bool StopSignal::take()
{
    signalfd_siginfo info;
    if (came_ || ::read(descriptor_, &info, sizeof info) != static_cast<ssize_t>(sizeof info)) {
        return came_;
    }
    came_ = true;
    for (const int signal : kSignals) {
        std::signal(signal, SIG_DFL); // whoever started the program may have had them ignored
    }
    block(SIG_UNBLOCK);
    return true;
}

bool StopSignal::waitMs(int ms)
{
    const Deadline deadline(ms);
    while (!take()) {
        pollfd wait = {descriptor_, POLLIN, 0};
        const int ready = ::poll(&wait, 1, deadline.remainingMs());
        if (ready <= 0 && deadline.passed()) {
            return false;
        }
    }
    return true;
}

} // namespace wire
} // namespace tavmir
