// Which values stood somewhere, and when: for who read one and asks whether it could.
#ifndef TAVMIR_TESTS_SOAK_RUNTIME_STANDING_H
#define TAVMIR_TESTS_SOAK_RUNTIME_STANDING_H

#include <chrono>
#include <cstddef>
#include <deque>
#include <utility>

namespace tavmir::soak
{

using Time = std::chrono::steady_clock::time_point;

template <typename Value> class Standing
{
public:
    // Takes all its room at once, so that it does not grow later.
    explicit Standing(std::size_t most, const Value& first = Value())
        : kept_(most, Kept{first, Time()})
    {
    }

    const Value& now() const { return kept_.back().value; }

    void changed(Value value, Time at)
    {
        kept_.pop_front();
        kept_.push_back({std::move(value), at});
    }

    // False: what stood at `from` is forgotten.
    bool reachesTo(Time from) const { return kept_.front().since <= from; }

    // Whether the value stood at some time between the two.
    bool stood(const Value& value, Time from, Time to) const
    {
        for (std::size_t i = 0; i < kept_.size(); ++i) {
            const bool begun = kept_[i].since <= to;
            const bool over = i + 1 < kept_.size() && kept_[i + 1].since < from;
            if (begun && !over && kept_[i].value == value) {
                return true;
            }
        }
        return false;
    }

private:
    struct Kept {
        Value value;
        Time since;
    };

    std::deque<Kept> kept_; // never empty; at first all of them are the first
};

} // namespace tavmir::soak

#endif
