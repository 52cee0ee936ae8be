// Keeps the driver's diagnostic lines off the terminal and counts them.
#ifndef TAVMIR_BENCHMARKS_SUPPORT_QUIET_MESSAGES_H
#define TAVMIR_BENCHMARKS_SUPPORT_QUIET_MESSAGES_H

namespace tavmir
{
namespace bench
{

// From now on every Qt message of the process is dropped and counted.
void discardMessages();

// Messages dropped so far.
unsigned long messageCount();

} // namespace bench
} // namespace tavmir

#endif
