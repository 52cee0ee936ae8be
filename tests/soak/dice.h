// Small seeded numbers, one sequence for each thread.
#ifndef TAVMIR_TESTS_SOAK_DICE_H
#define TAVMIR_TESTS_SOAK_DICE_H

#include <cstdint>

namespace tavmir::soak
{

class Dice
{
public:
    explicit Dice(std::uint64_t seed) : state_(seed * 2862933555777941757ULL + 3037000493ULL) {}

    int below(int limit)
    {
        state_ = state_ * 6364136223846793005ULL + 1442695040888963407ULL;
        return static_cast<int>((state_ >> 33) % static_cast<std::uint64_t>(limit));
    }

private:
    std::uint64_t state_;
};

} // namespace tavmir::soak

#endif
