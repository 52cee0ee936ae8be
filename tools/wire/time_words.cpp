// gmtime_r, and the milliseconds behind it.
#include "time_words.h"

#include <cstdio>
#include <ctime>

namespace tavmir
{
namespace wire
{

std::string utcInWords(std::chrono::system_clock::time_point time)
{
    const long long ms =
        std::chrono::duration_cast<std::chrono::milliseconds>(time.time_since_epoch()).count();
    const std::time_t seconds = static_cast<std::time_t>(ms / 1000);
    std::tm parts = std::tm();
    gmtime_r(&seconds, &parts);
    char text[sizeof "2026-11-22T02:00:27" + 8];
    const std::size_t size = std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%S", &parts);
    char behind[8];
    std::snprintf(behind, sizeof behind, ".%03dZ", static_cast<int>(ms % 1000));
    return std::string(text, size) + behind;
}

} // namespace wire
} // namespace tavmir
