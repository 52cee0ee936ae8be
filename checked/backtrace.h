// Who called, as far as the process's symbols tell. Private.
#ifndef TAVMIR_CHECKED_BACKTRACE_H
#define TAVMIR_CHECKED_BACKTRACE_H

#include <string>

namespace tavmir
{
namespace checked
{

// One line for each frame of this thread from the one that `caller` returns to, without the checks'
// own. Where a frame has no symbol, its place in its file is given, as addr2line takes it.
std::string backtraceFrom(const void* caller);

} // namespace checked
} // namespace tavmir

#endif
