#include "checked/host_memory.h"

#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>

namespace tavmir
{
namespace checked
{

namespace
{

const quintptr kPage = 4096; // the smallest there is
const int kNoSuchChange = -1;
const int kSetBytes = 8; // of the system's signal set

// The system reads a signal set before it finds that it does not know what to do with it: the
// cheapest question that says whether an address can be read.
bool canRead(const void* address)
{
    return ::syscall(SYS_rt_sigprocmask, kNoSuchChange, address, nullptr, kSetBytes) == 0 ||
           errno != EFAULT;
}

} // namespace

bool isReadable(const ComInfo* record)
{
    const int before = errno;
    const char* const first = reinterpret_cast<const char*>(record);
    const char* const last = first + sizeof(ComInfo) - kSetBytes;
    const bool onOnePage = reinterpret_cast<quintptr>(first) / kPage ==
                           (reinterpret_cast<quintptr>(last) + kSetBytes - 1) / kPage;
    const bool readable = canRead(first) && (onOnePage || canRead(last));
    errno = before;
    return readable;
}

} // namespace checked
} // namespace tavmir
