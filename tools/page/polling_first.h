// On a panel with one processor the polling goes first and the page takes what is left.
#ifndef TAVMIR_PAGE_POLLING_FIRST_H
#define TAVMIR_PAGE_POLLING_FIRST_H

#include <sys/resource.h>

namespace tavmir::page
{

// By so much is the page's thread nicer than who started it. It still gets a quarter of a processor
// that somebody else could use all of.
constexpr int kNicer = 5;

// Of the calling thread only. Where the system does not allow it, it stays as it is.
inline void letPollingGoFirst()
{
    setpriority(PRIO_PROCESS, 0, getpriority(PRIO_PROCESS, 0) + kNicer);
}

} // namespace tavmir::page

#endif
