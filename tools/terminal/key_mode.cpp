// termios.
#include "key_mode.h"

#include <csignal>
#include <unistd.h>

namespace tavmir::host
{

namespace
{

bool isInBackground(int descriptor)
{
    const pid_t foreground = ::tcgetpgrp(descriptor);
    return foreground >= 0 && foreground != ::getpgrp(); // -1: not the controlling terminal
}

// A program that has been put into the background meanwhile is not stopped by it.
void set(int descriptor, const termios& mode)
{
    sigset_t stopping;
    sigset_t before;
    sigemptyset(&stopping);
    sigaddset(&stopping, SIGTTOU);
    pthread_sigmask(SIG_BLOCK, &stopping, &before);
    ::tcsetattr(descriptor, TCSANOW, &mode);
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
}

} // namespace

KeyMode::KeyMode(int descriptor) : descriptor_(descriptor)
{
    if (::tcgetattr(descriptor, &before_) != 0 || isInBackground(descriptor)) {
        return;
    }
    termios mode = before_;
    mode.c_lflag &= ~static_cast<tcflag_t>(ICANON | ECHO);
    mode.c_cc[VMIN] = 1;
    mode.c_cc[VTIME] = 0;
    mode.c_cc[VSUSP] = _POSIX_VDISABLE;
    set(descriptor, mode);
    isSet_ = true;
}

void KeyMode::end()
{
    if (isSet_) {
        set(descriptor_, before_);
    }
    isSet_ = false;
}

} // namespace tavmir::host
