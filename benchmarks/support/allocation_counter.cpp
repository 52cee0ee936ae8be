#include "support/allocation_counter.h"

#include <atomic>
#include <cerrno>
#include <cstddef>
#include <malloc.h>

// The C library's own allocator, under the names by which it keeps it reachable.
extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* block, std::size_t size);
void* __libc_memalign(std::size_t alignment, std::size_t size);
void __libc_free(void* block);
}

namespace
{

// Each block has one word of the allocator in front of it.
const long kBookkeepingBytes = static_cast<long>(sizeof(std::size_t));

thread_local unsigned long allocations = 0;
std::atomic<long> bytesInUse(0);

void* counted(void* block)
{
    if (!block) {
        return block;
    }
    ++allocations;
    bytesInUse.fetch_add(static_cast<long>(malloc_usable_size(block)) + kBookkeepingBytes,
                         std::memory_order_relaxed);
    return block;
}

void forget(void* block)
{
    if (block) {
        bytesInUse.fetch_sub(static_cast<long>(malloc_usable_size(block)) + kBookkeepingBytes,
                             std::memory_order_relaxed);
    }
}

} // namespace

extern "C" {

void* malloc(std::size_t size)
{
    return counted(__libc_malloc(size));
}

void* calloc(std::size_t count, std::size_t size)
{
    return counted(__libc_calloc(count, size));
}

void* realloc(void* block, std::size_t size)
{
    forget(block);
    return counted(__libc_realloc(block, size));
}

void* memalign(std::size_t alignment, std::size_t size)
{
    return counted(__libc_memalign(alignment, size));
}

void* aligned_alloc(std::size_t alignment, std::size_t size)
{
    return memalign(alignment, size);
}

int posix_memalign(void** block, std::size_t alignment, std::size_t size)
{
    *block = memalign(alignment, size);
    return *block ? 0 : ENOMEM;
}

void free(void* block)
{
    forget(block);
    __libc_free(block);
}

} // extern "C"

namespace tavmir
{
namespace bench
{

unsigned long allocationCount()
{
    return allocations;
}

long heapBytesInUse()
{
    return bytesInUse.load(std::memory_order_relaxed);
}

} // namespace bench
} // namespace tavmir
