// SIGINT and SIGTERM as something a program waits for.
#ifndef TAVMIR_WIRE_STOP_SIGNAL_H
#define TAVMIR_WIRE_STOP_SIGNAL_H

namespace tavmir
{
namespace wire
{

// Make it before the first thread is started, one at a time in a process: threads started later
// leave the signals to it. The first signal is the program's to answer; with its being taken the
// signals have their usual effect again, so that a second one ends the program at once. Use it
// from the thread that made it.
class StopSignal
{
public:
    StopSignal();
    ~StopSignal();
    StopSignal(const StopSignal&) = delete;
    StopSignal& operator=(const StopSignal&) = delete;

    // Readable when a signal has come; -1: the system gave none, the signals keep their usual
    // effect.
    int descriptor() const { return descriptor_; }

    // Takes the signal: true when one of the two has come. True again ever after.
    bool take();

    // The same, waiting for it `ms` at most.
    bool waitMs(int ms);

private:
    int descriptor_;
    bool came_ = false;
};

} // namespace wire
} // namespace tavmir

#endif
