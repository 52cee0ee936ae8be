// Counts what the process allocates from the heap: calls and bytes that are in use.
//
// A program that links allocation_counter.cpp has its malloc, calloc, realloc and free go
// through it, those of the libraries it loads included.
#ifndef TAVMIR_BENCHMARKS_SUPPORT_ALLOCATION_COUNTER_H
#define TAVMIR_BENCHMARKS_SUPPORT_ALLOCATION_COUNTER_H

namespace tavmir
{
namespace bench
{

// Heap blocks that the calling thread has asked for since it started; growing a block counts.
unsigned long allocationCount();

// Bytes of heap in use by the whole process, the allocator's own bookkeeping included.
long heapBytesInUse();

} // namespace bench
} // namespace tavmir

#endif
