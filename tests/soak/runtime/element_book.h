// The books of one element: the writes that were asked for, in their order, and the values that
// the controller stored, in theirs. Both must tell one story:
//
//   every stored value is that of a write that may have been carried out, each once, in order;
//   every write that is done was stored; the last of them stands, or a later one that may.
#ifndef TAVMIR_TESTS_SOAK_RUNTIME_ELEMENT_BOOK_H
#define TAVMIR_TESTS_SOAK_RUNTIME_ELEMENT_BOOK_H

#include <cstdint>
#include <deque>
#include <string>
#include <vector>

namespace tavmir::soak
{

enum class Fate {
    pending,
    done,
    maybe, // unknown, or one of a partial one's unknown elements
    never  // refused or not sent
};

class ElementBook
{
public:
    // The next write, before it is handed to the session.
    void asked(std::uint64_t operation, std::uint32_t value);

    // The controller stored a value. The operations that it may be of: with values that are
    // unique one, the latest; none when nobody asked for it.
    std::vector<std::uint64_t> stored(std::uint32_t value);
    // Those again when a request is repeated or answered wrongly.
    std::vector<std::uint64_t> operationsOf(std::uint32_t value) const;

    // A write's end is known. What is wrong with the story so far; empty when nothing is.
    std::string settle(std::uint64_t operation, Fate fate);

    // Compares what there is, while nothing is pending.
    std::string judge();

private:
    struct Write {
        std::uint64_t operation = 0;
        std::uint32_t value = 0;
        Fate fate = Fate::pending;
    };

    // Places in the writes are counted from the first that was ever asked for, as 1; 0 is before.
    using Position = std::uint64_t;

    const Write& at(Position position) const { return writes_[position - first_]; }
    Position last() const { return first_ + writes_.size() - 1; }
    std::string story(std::uint32_t value) const;
    std::string follow(std::uint32_t value);
    std::string standing();
    void startAgain();
    void forget();

    std::deque<Write> writes_;
    Position first_ = 1;                 // of writes_.front()
    std::vector<Position> stands_ = {0}; // writes that may be what stands
    std::vector<std::uint32_t> stores_;  // not compared yet
    int pending_ = 0;
};

} // namespace tavmir::soak

#endif
