#include "support/wait_until.h"

#include "support/patience.h"

#include <chrono>
#include <thread>

namespace tavmir
{
namespace test
{

bool waitUntil(const std::function<bool()>& condition, int deadlineMs)
{
    const auto deadline =
        std::chrono::steady_clock::now() + std::chrono::milliseconds(patienceMs(deadlineMs));
    while (!condition()) {
        if (std::chrono::steady_clock::now() >= deadline) {
            return condition();
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    return true;
}

} // namespace test
} // namespace tavmir
