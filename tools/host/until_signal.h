// Work with a session that a signal ends early.
#ifndef TAVMIR_HOST_UNTIL_SIGNAL_H
#define TAVMIR_HOST_UNTIL_SIGNAL_H

#include "console.h"
#include "session/host_session.h"
#include "wire/stop_signal.h"

#include <functional>

namespace tavmir::host
{

// Runs `work` on a thread of its own and returns when it does. Meanwhile whoever prints waits for
// the reader. A signal stops the session, so that every operation that the work waits for ends,
// with its outcome, and ends the waits for the reader.
void workUntilSignal(wire::StopSignal& stop, HostSession& session, Console& console,
                     const std::function<void()>& work);

} // namespace tavmir::host

#endif
