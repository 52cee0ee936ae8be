// Moments as readable text.
#ifndef TAVMIR_WIRE_TIME_WORDS_H
#define TAVMIR_WIRE_TIME_WORDS_H

#include <chrono>
#include <string>

namespace tavmir
{
namespace wire
{

// "2026-11-22T02:00:27.123Z": UTC with milliseconds, cut off, not rounded. For the years 1970 to
// 9999.
std::string utcInWords(std::chrono::system_clock::time_point time);

} // namespace wire
} // namespace tavmir

#endif
