#include "checked/backtrace.h"

#include "checked/text.h"

#include <cxxabi.h>
#include <dlfcn.h>
#include <execinfo.h>

#include <cstddef>
#include <cstdlib>

namespace tavmir
{
namespace checked
{

namespace
{

const int kMostFrames = 32;

// The lowest bit of a return address is no place: on 32-bit ARM it says how the caller is encoded,
// and frames come without it.
bool samePlace(const void* a, const void* b)
{
    return (reinterpret_cast<std::size_t>(a) | 1) == (reinterpret_cast<std::size_t>(b) | 1);
}

std::string readable(const char* symbol)
{
    int status = 0;
    char* demangled = abi::__cxa_demangle(symbol, nullptr, nullptr, &status);
    const std::string name = status == 0 && demangled ? demangled : symbol;
    std::free(demangled);
    return name;
}

std::string frameLine(int number, const void* address)
{
    const char* const at = static_cast<const char*>(address);
    std::string line = text("    #%-2d ", number);
    Dl_info info = Dl_info();
    if (!dladdr(address, &info) || !info.dli_fname) {
        return line + text("%p\n", address);
    }
    if (info.dli_sname) {
        line += readable(info.dli_sname) +
                text("+0x%lx",
                     static_cast<unsigned long>(at - static_cast<const char*>(info.dli_saddr)));
    } else {
        line += "?";
    }
    const long place = static_cast<long>(at - static_cast<const char*>(info.dli_fbase));
    return line + text(" (%s+0x%lx)\n", info.dli_fname, static_cast<unsigned long>(place));
}

} // namespace

std::string backtraceFrom(const void* caller)
{
    void* frames[kMostFrames];
    const int count = backtrace(frames, kMostFrames);
    int first = 0;
    while (first < count && !samePlace(frames[first], caller)) {
        ++first;
    }
    if (first == count) {
        return frameLine(0, caller);
    }
    std::string lines;
    for (int i = first; i < count; ++i) {
        lines += frameLine(i - first, frames[i]);
    }
    return lines;
}

} // namespace checked
} // namespace tavmir
