// Random numbers that are the same on every machine for the same seed (the standard library's
// distributions are not). One thread only.
#ifndef TAVMIR_CONTROLLER_SEEDED_RANDOM_H
#define TAVMIR_CONTROLLER_SEEDED_RANDOM_H

#include <cstdint>
#include <random>

namespace tavmir::controller
{

class SeededRandom
{
public:
    explicit SeededRandom(std::uint64_t seed) : engine_(seed) {}

    // From 0, never reaching 1.
    double fraction() { return static_cast<double>(engine_() >> 11) * 0x1.0p-53; }

    // From `low` to `high`, both included; `low` when `high` is not above it.
    int between(int low, int high)
    {
        if (high <= low) {
            return low;
        }
        const auto choices = static_cast<std::uint64_t>(std::int64_t{high} - low + 1);
        return static_cast<int>(low + static_cast<std::int64_t>(engine_() % choices));
    }

private:
    std::mt19937_64 engine_;
};

} // namespace tavmir::controller

#endif
