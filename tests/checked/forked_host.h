// Runs a host in a process of its own, with the checked driver fresh, and reads what it was told.
#ifndef TAVMIR_TESTS_CHECKED_FORKED_HOST_H
#define TAVMIR_TESTS_CHECKED_FORKED_HOST_H

#include <set>
#include <string>
#include <vector>

namespace tavmir::checked_tests
{

struct HostRun {
    bool ended = false; // false: it had to be killed at the deadline
    int status = -1;    // as waitpid gives it
    std::string reports;
    std::string errors; // standard error

    // The identifiers of the blocks, in their order.
    std::vector<std::string> ids() const;

    bool endedWell() const { return ended && status == 0; }
};

enum class Ending {
    AtOnce, // as a host that is killed: nothing is unloaded
    ByExit, // with everything that the end of a process brings
};

// `setting` is the host's TAVMIR_CHECK, to which a log file is added.
HostRun runHost(void (*host)(), const std::string& setting, Ending ending = Ending::AtOnce);

// The same with exactly that setting; null: none. `reports` stays empty.
HostRun runHostWith(void (*host)(), const char* setting, Ending ending = Ending::AtOnce);

// Within a host: whether a block with that identifier has been written. Waits for it.
bool waitForReport(const char* id);

} // namespace tavmir::checked_tests

#endif
