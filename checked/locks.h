// The driver's mutexes, before a call of the host waits for them. Private.
#ifndef TAVMIR_CHECKED_LOCKS_H
#define TAVMIR_CHECKED_LOCKS_H

#include <QtCore/QMutex>

#include <string>

namespace tavmir
{
namespace checked
{

class Call;

// Each waits until the mutex has been open for a moment, and tells when that does not happen; it
// is left as it was found.
void expectListsOpen(const Call& call);
void expectCachesOpen(const Call& call);
void expectStationsOpen(const Call& call);

// A rebuild with this address has left listMutex locked.
void listsWereLeftLocked(const std::string& address);

// What can be seen of the three lists that change under listMutex, without looking at an entry.
class ListWatch
{
public:
    // Both with listMutex held by this thread.
    ListWatch();
    void compare(const Call& call) const;

private:
    enum { kLists = 3, kWords = 3 };

    void look(quintptr (&words)[kLists][kWords]) const;

    quintptr seen_[kLists][kWords];
};

} // namespace checked
} // namespace tavmir

#endif
