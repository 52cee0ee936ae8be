// What the process holds of the machine.
#ifndef TAVMIR_TESTS_SOAK_RESOURCES_H
#define TAVMIR_TESTS_SOAK_RESOURCES_H

#include <string>

namespace tavmir::soak
{

struct Resources {
    long residentKiB = 0;
    int threads = 0;
    int descriptors = 0;

    static Resources now();
    std::string text() const;
};

// Empty, or what grew from the warmed-up state to the end. Memory may grow by `slackKiB`: the
// allocator's, not the program's; descriptors by the few that a connection in the making takes.
std::string growth(const Resources& warm, const Resources& end, long slackKiB);

} // namespace tavmir::soak

#endif
