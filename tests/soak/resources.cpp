#include "resources.h"

#include <cstdlib>
#include <fstream>

#include <dirent.h>

namespace tavmir::soak
{

namespace
{

const int kDescriptorsInTheMaking = 6;

int entriesOf(const char* folder)
{
    DIR* open = opendir(folder);
    if (open == nullptr) {
        return 0;
    }
    int entries = -2; // "." and ".."
    while (readdir(open) != nullptr) {
        ++entries;
    }
    closedir(open);
    return entries;
}

} // namespace

Resources Resources::now()
{
    Resources resources;
    std::ifstream status("/proc/self/status");
    std::string line;
    while (std::getline(status, line)) {
        if (line.compare(0, 6, "VmRSS:") == 0) {
            resources.residentKiB = std::strtol(line.c_str() + 6, nullptr, 10);
        }
    }
    resources.threads = entriesOf("/proc/self/task");
    resources.descriptors = entriesOf("/proc/self/fd");
    return resources;
}

std::string Resources::text() const
{
    return std::to_string(residentKiB) + " KiB resident, " + std::to_string(threads) +
           " threads, " + std::to_string(descriptors) + " descriptors";
}

std::string growth(const Resources& warm, const Resources& end, long slackKiB)
{
    if (end.threads > warm.threads) {
        return "threads grew";
    }
    if (end.descriptors > warm.descriptors + kDescriptorsInTheMaking) {
        return "descriptors grew";
    }
    if (slackKiB > 0 && end.residentKiB > warm.residentKiB + slackKiB) {
        return "memory grew";
    }
    return std::string();
}

} // namespace tavmir::soak
