// Wakes a thread that waits in poll(). Any thread may wake it, any number of times.
#ifndef TAVMIR_LINK_WAKE_EVENT_H
#define TAVMIR_LINK_WAKE_EVENT_H

namespace tavmir::host
{

class WakeEvent
{
public:
    WakeEvent();
    ~WakeEvent();
    WakeEvent(const WakeEvent&) = delete;
    WakeEvent& operator=(const WakeEvent&) = delete;

    // Readable from now on, until taken.
    void wake();
    // Takes all wakes so far.
    void take();

    int descriptor() const { return descriptor_; }

private:
    int descriptor_;
};

} // namespace tavmir::host

#endif
