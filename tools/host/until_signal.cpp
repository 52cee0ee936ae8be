// A thread for the work, this one for the signal.
#include "until_signal.h"

#include "link/wake_event.h"

#include <poll.h>

#include <thread>

namespace tavmir::host
{

void workUntilSignal(wire::StopSignal& stop, HostSession& session, Console& console,
                     const std::function<void()>& work)
{
    console.waitForRoom();
    WakeEvent done;
    std::thread worker([&] {
        work();
        done.wake();
    });
    pollfd waits[2] = {{done.descriptor(), POLLIN, 0}, {stop.descriptor(), POLLIN, 0}};
    while (waits[0].revents == 0) {
        if (::poll(waits, 2, -1) > 0 && waits[1].revents != 0 && stop.take()) {
            console.hurry();
            session.stop();
            break;
        }
    }
    worker.join();
    console.hurry();
}

} // namespace tavmir::host
