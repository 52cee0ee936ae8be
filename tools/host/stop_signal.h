// SIGINT and SIGTERM as something a program waits for.
#ifndef TAVMIR_HOST_STOP_SIGNAL_H
#define TAVMIR_HOST_STOP_SIGNAL_H

namespace tavmir::host
{

// Make it before the first thread is started: threads started later leave the signals to it.
class StopSignal
{
public:
    StopSignal();
    ~StopSignal();
    StopSignal(const StopSignal&) = delete;
    StopSignal& operator=(const StopSignal&) = delete;

    // True when one of the signals has come, at once or within `ms`.
    bool waitMs(int ms);

private:
    int descriptor_;
    bool came_ = false;
};

} // namespace tavmir::host

#endif
