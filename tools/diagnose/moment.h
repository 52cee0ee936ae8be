// Moments of a capture, and how they are written.
#ifndef TAVMIR_DIAGNOSE_MOMENT_H
#define TAVMIR_DIAGNOSE_MOMENT_H

#include "wire/time_words.h"

#include <chrono>
#include <cstdint>
#include <string>

namespace tavmir::diagnose
{

typedef std::int64_t Nanoseconds; // since 1970; or from one moment to another

constexpr Nanoseconds kMillisecond = 1000000;
constexpr Nanoseconds kSecond = 1000 * kMillisecond;

inline double millisecondsOf(Nanoseconds time)
{
    return static_cast<double>(time) / static_cast<double>(kMillisecond);
}

inline double secondsOf(Nanoseconds time)
{
    return static_cast<double>(time) / static_cast<double>(kSecond);
}

// "2026-11-22T02:00:27.123Z"
inline std::string utcOf(Nanoseconds time)
{
    using namespace std::chrono;
    return wire::utcInWords(
        system_clock::time_point(duration_cast<system_clock::duration>(nanoseconds(time))));
}

} // namespace tavmir::diagnose

#endif
