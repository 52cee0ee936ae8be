#include "watchdog.h"

#include <csignal>
#include <cstdio>
#include <cstdlib>

#include <dirent.h>
#include <execinfo.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace tavmir::soak
{

namespace
{

void printOwnStack(int)
{
    void* frames[64];
    const int count = backtrace(frames, 64);
    const char title[] = "--- a thread's stack\n";
    if (write(STDERR_FILENO, title, sizeof title - 1) > 0) {
        backtrace_symbols_fd(frames, count, STDERR_FILENO);
    }
}

} // namespace

void printAllStacks()
{
    struct sigaction action = {};
    action.sa_handler = printOwnStack;
    sigaction(SIGUSR2, &action, nullptr);
    DIR* tasks = opendir("/proc/self/task");
    if (tasks == nullptr) {
        return;
    }
    while (const dirent* entry = readdir(tasks)) {
        const long thread = std::strtol(entry->d_name, nullptr, 10);
        if (thread == 0) {
            continue;
        }
        syscall(SYS_tgkill, getpid(), thread, SIGUSR2);
        usleep(100000); // one stack after the other
    }
    closedir(tasks);
}

Watchdog::Watchdog(std::function<std::vector<std::uint64_t>()> progress, int deadlineSeconds)
    : progress_(std::move(progress)), deadline_(deadlineSeconds), last_(progress_()),
      standing_(last_.size(), 0)
{
}

bool Watchdog::look()
{
    const std::vector<std::uint64_t> now = progress_();
    for (std::size_t i = 0; i < now.size(); ++i) {
        standing_[i] = now[i] == last_[i] ? standing_[i] + 1 : 0;
        if (standing_[i] < deadline_) {
            continue;
        }
        std::fprintf(stderr, "thread %zu has stood still for %d s\n", i, deadline_);
        printAllStacks();
        return false;
    }
    last_ = now;
    return true;
}

} // namespace tavmir::soak
