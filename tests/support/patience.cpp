#include "support/patience.h"

#include <algorithm>
#include <cstdlib>

namespace tavmir
{
namespace test
{

int patienceMs(int usualMs)
{
    const char* asked = std::getenv("TAVMIR_TEST_PATIENCE_MS");
    const int mostMs = asked != nullptr ? std::atoi(asked) : 0;
    return mostMs > 0 ? std::min(usualMs, mostMs) : usualMs;
}

} // namespace test
} // namespace tavmir
