// Small seeded random numbers: the same on every machine, cheap enough for each call.
#ifndef TAVMIR_TESTS_MODEL_SEEDED_RANDOM_H
#define TAVMIR_TESTS_MODEL_SEEDED_RANDOM_H

#include <cstddef>
#include <cstdint>
#include <vector>

namespace tavmir::model
{

class SeededRandom
{
public:
    explicit SeededRandom(std::uint64_t seed) : state_(seed) {}

    std::uint64_t next()
    {
        state_ += 0x9E3779B97F4A7C15ULL;
        std::uint64_t z = state_;
        z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ULL;
        z = (z ^ (z >> 27)) * 0x94D049BB133111EBULL;
        return z ^ (z >> 31);
    }

    // 0 to limit - 1.
    std::size_t below(std::size_t limit) { return static_cast<std::size_t>(next() % limit); }

    std::int32_t between(std::int32_t low, std::int32_t high)
    {
        const auto span = static_cast<std::uint64_t>(std::int64_t{high} - low + 1);
        return static_cast<std::int32_t>(low + static_cast<std::int64_t>(next() % span));
    }

    bool percent(unsigned chance) { return next() % 100 < chance; }

    template <typename Item> const Item& pick(const std::vector<Item>& items)
    {
        return items[below(items.size())];
    }

private:
    std::uint64_t state_;
};

} // namespace tavmir::model

#endif
