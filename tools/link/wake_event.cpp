// An eventfd.
#include "wake_event.h"

#include <QtCore/QtGlobal>

#include <sys/eventfd.h>
#include <unistd.h>

#include <cstdint>

namespace tavmir::host
{

WakeEvent::WakeEvent() : descriptor_(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK))
{
    if (descriptor_ < 0) {
        qFatal("no event descriptor left");
    }
}

WakeEvent::~WakeEvent()
{
    ::close(descriptor_);
}

void WakeEvent::wake()
{
    const uint64_t one = 1;
    // A counter that is full is readable as well.
    const ssize_t written = ::write(descriptor_, &one, sizeof one);
    Q_UNUSED(written)
}

void WakeEvent::take()
{
    uint64_t count = 0;
    const ssize_t taken = ::read(descriptor_, &count, sizeof count);
    Q_UNUSED(taken)
}

} // namespace tavmir::host
