#include "stop_signals.h"

#include <QtCore/QSocketNotifier>

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <unistd.h>
#include <utility>

namespace tavmir::controller
{

namespace
{

volatile std::sig_atomic_t signalPipe = -1;

void passOn(int)
{
    const int savedError = errno;
    const char byte = 1;
    // A full pipe already says what there is to say.
    const ssize_t written = write(signalPipe, &byte, 1);
    static_cast<void>(written);
    errno = savedError;
}

void handleWith(void (*handler)(int))
{
    struct sigaction action = {};
    action.sa_handler = handler;
    action.sa_flags = SA_RESTART;
    sigemptyset(&action.sa_mask);
    sigaction(SIGINT, &action, nullptr);
    sigaction(SIGTERM, &action, nullptr);
}

} // namespace

StopSignals::StopSignals(std::function<void()> onStop) : onStop_(std::move(onStop))
{
    int ends[2];
    if (pipe2(ends, O_NONBLOCK | O_CLOEXEC) != 0)
        return;
    readEnd_ = ends[0];
    writeEnd_ = ends[1];
    auto* notifier = new QSocketNotifier(readEnd_, QSocketNotifier::Read, this);
    connect(notifier, &QSocketNotifier::activated, this, [this] { takeSignals(); });
    signalPipe = writeEnd_;
    handleWith(passOn);
}

StopSignals::~StopSignals()
{
    if (!isReady())
        return;
    handleWith(SIG_DFL);
    signalPipe = -1;
    close(readEnd_);
    close(writeEnd_);
}

void StopSignals::takeSignals()
{
    char bytes[16];
    while (read(readEnd_, bytes, sizeof bytes) > 0) {
    }
    onStop_();
}

} // namespace tavmir::controller
