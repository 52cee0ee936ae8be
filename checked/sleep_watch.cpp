#include "checked/sleep_watch.h"

#include "checked/report.h"
#include "checked/text.h"
#include "tavmir_kx_tcp/host_interface.h"

#include <ctime>
#include <sys/resource.h>

namespace tavmir
{
namespace checked
{

namespace
{

// Shorter waits are those of a machine with much to do.
const long kShortestSleepMs = 20;

struct Null {
    bool previous; // the call before gave null too
    bool withWork;
    long givenUpProcessor; // how often the thread has waited for something so far
    timespec at;
};

Null null;

long timesWaited()
{
    rusage usage = rusage();
    getrusage(RUSAGE_THREAD, &usage);
    return usage.ru_nvcsw;
}

long msSince(const timespec& then)
{
    timespec now = timespec();
    clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<long>(now.tv_sec - then.tv_sec) * 1000 +
           (now.tv_nsec - then.tv_nsec) / 1000000;
}

bool workIsQueued()
{
    if (!PLC_driver.listMutex.tryLock()) {
        return false;
    }
    const bool queued = !PLC_driver.writeVarList.isEmpty() || !PLC_driver.onceReadList.isEmpty();
    PLC_driver.listMutex.unlock();
    return queued;
}

} // namespace

void noteNull()
{
    null.withWork = !null.previous && workIsQueued();
    null.previous = true;
    if (!null.withWork) {
        return;
    }
    clock_gettime(CLOCK_MONOTONIC, &null.at);
    null.givenUpProcessor = timesWaited();
}

void noteRequest()
{
    null.previous = false;
}

void checkSleep(const Call& call)
{
    if (!null.withWork) {
        return;
    }
    null.withWork = false;
    const long slept = msSince(null.at);
    if (slept >= kShortestSleepMs && timesWaited() != null.givenUpProcessor) {
        report(kSleepWithWork, call,
               text("came %ld ms after one null, with work queued at that time.", slept));
    }
}

} // namespace checked
} // namespace tavmir
