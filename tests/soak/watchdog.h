// Ends the program when a thread stands still: every thread's stack is printed first.
#ifndef TAVMIR_TESTS_SOAK_WATCHDOG_H
#define TAVMIR_TESTS_SOAK_WATCHDOG_H

#include <cstdint>
#include <functional>
#include <vector>

namespace tavmir::soak
{

class Watchdog
{
public:
    // `progress` gives one number for each watched thread, each growing while it is alive.
    // Call look about once a second.
    Watchdog(std::function<std::vector<std::uint64_t>()> progress, int deadlineSeconds);

    // False when one of the numbers has stood for the deadline; stacks are then printed.
    bool look();

private:
    std::function<std::vector<std::uint64_t>()> progress_;
    int deadline_;
    std::vector<std::uint64_t> last_;
    std::vector<int> standing_;
};

// The stacks of all threads of this process, on standard error.
void printAllStacks();

} // namespace tavmir::soak

#endif
