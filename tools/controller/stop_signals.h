// Turns SIGINT and SIGTERM into a call on the event loop, where everything may be done that must
// not be done in a signal handler.
#ifndef TAVMIR_CONTROLLER_STOP_SIGNALS_H
#define TAVMIR_CONTROLLER_STOP_SIGNALS_H

#include <QtCore/QObject>

#include <functional>

namespace tavmir::controller
{

// One object per process at a time; it needs the application object. `onStop` is called on this
// object's thread, once per signal.
class StopSignals : public QObject
{
public:
    explicit StopSignals(std::function<void()> onStop);
    ~StopSignals() override;

    // False: the operating system gave no pipe; the signals keep their usual effect.
    bool isReady() const { return readEnd_ >= 0; }

private:
    void takeSignals();

    std::function<void()> onStop_;
    int readEnd_ = -1;
    int writeEnd_ = -1;
};

} // namespace tavmir::controller

#endif
