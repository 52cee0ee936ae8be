#include "checked/locks.h"

#include "checked/calls.h"
#include "checked/report.h"
#include "checked/text.h"
#include "tavmir_kx_tcp/host_interface.h"

#include <atomic>

namespace tavmir
{
namespace checked
{

namespace
{

// A right host holds a mutex for microseconds; a loaded machine may make that many of them.
const int kPatienceMs = 5000;

std::atomic<bool> leftLocked;
std::string leftLockedAddress;

std::string holder(const Call& waiting)
{
    const std::string calls = runningCalls(&waiting);
    return calls.empty() ? "no call of the driver is running beside it: a host's thread holds it, "
                           "perhaps this one."
                         : "running beside it: " + calls + '.';
}

void expectOpen(QMutex& mutex, const char* name, const Call& call)
{
    if (!mutex.tryLock() && !mutex.tryLock(kPatienceMs)) {
        report(kLockHeldTooLong, call,
               text("has waited %d ms for %s and goes on waiting; ", kPatienceMs, name) +
                   holder(call));
        return;
    }
    mutex.unlock();
}

} // namespace

void expectListsOpen(const Call& call)
{
    if (!leftLocked.load(std::memory_order_acquire)) {
        expectOpen(PLC_driver.listMutex, "listMutex", call);
        return;
    }
    if (PLC_driver.listMutex.tryLock(kPatienceMs)) {
        PLC_driver.listMutex.unlock();
        leftLocked = false;
        return;
    }
    report(kListsLeftLocked, call, "waits for listMutex from here on.",
           "a rebuild left it locked at " + leftLockedAddress);
}

void expectCachesOpen(const Call& call)
{
    expectOpen(PLC_driver.cacheMutex, "cacheMutex", call);
}

void expectStationsOpen(const Call& call)
{
    expectOpen(PLC_driver.stationMutex, "stationMutex", call);
}

void listsWereLeftLocked(const std::string& address)
{
    leftLockedAddress = address;
    leftLocked.store(true, std::memory_order_release);
}

ListWatch::ListWatch()
{
    look(seen_);
}

// Read by hand: a list that another thread is changing may have no entry where its size says so.
__attribute__((no_sanitize_thread)) void ListWatch::look(quintptr (&words)[kLists][kWords]) const
{
    const QList<RW_VAR>* const lists[kLists] = {&PLC_driver.writeVarList, &PLC_driver.onceReadList,
                                                &PLC_driver.pendingReadList};
    for (int i = 0; i < kLists; ++i) {
        const QListData::Data* const volatile* list =
            reinterpret_cast<const QListData::Data* const volatile*>(lists[i]);
        const volatile QListData::Data* data = *list;
        words[i][0] = reinterpret_cast<quintptr>(data);
        words[i][1] = static_cast<quintptr>(data->begin);
        words[i][2] = static_cast<quintptr>(data->end);
    }
}

void ListWatch::compare(const Call& call) const
{
    static const char* const kNames[kLists] = {"writeVarList", "onceReadList", "pendingReadList"};
    quintptr now[kLists][kWords];
    look(now);
    for (int i = 0; i < kLists; ++i) {
        for (int word = 0; word < kWords; ++word) {
            if (now[i][word] != seen_[i][word]) {
                report(kListWithoutLock, call,
                       text("held listMutex, and %s changed meanwhile.", kNames[i]));
                return;
            }
        }
    }
}

} // namespace checked
} // namespace tavmir
