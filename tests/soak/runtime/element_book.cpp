// Stores followed through the writes. Bits have two values only: more than one write may be the
// one that was stored, so all that may are kept.
#include "element_book.h"

#include <algorithm>
#include <set>

namespace tavmir::soak
{

namespace
{

constexpr std::size_t kMostLeft = 64; // writes that were never carried out, for the words

const char* inWords(Fate fate)
{
    switch (fate) {
    case Fate::pending:
        return "pending";
    case Fate::done:
        return "done";
    case Fate::maybe:
        return "unknown";
    case Fate::never:
        break;
    }
    return "refused or not sent";
}

} // namespace

void ElementBook::asked(std::uint64_t operation, std::uint32_t value)
{
    writes_.push_back({operation, value, Fate::pending});
    ++pending_;
}

std::vector<std::uint64_t> ElementBook::operationsOf(std::uint32_t value) const
{
    std::vector<std::uint64_t> operations;
    for (auto write = writes_.rbegin(); write != writes_.rend(); ++write) {
        if (write->value == value) {
            operations.push_back(write->operation);
        }
    }
    return operations;
}

std::vector<std::uint64_t> ElementBook::stored(std::uint32_t value)
{
    stores_.push_back(value);
    return operationsOf(value);
}

std::string ElementBook::settle(std::uint64_t operation, Fate fate)
{
    const auto found = std::find_if(writes_.rbegin(), writes_.rend(), [&](const Write& write) {
        return write.operation == operation;
    });
    if (found == writes_.rend() || found->fate != Fate::pending) {
        return "a write ended that was not pending";
    }
    found->fate = fate;
    --pending_;
    return judge();
}

std::string ElementBook::judge()
{
    if (pending_ > 0) {
        return std::string();
    }
    std::string finding;
    for (const std::uint32_t value : stores_) {
        const std::string more = follow(value);
        finding = finding.empty() ? more : finding;
    }
    stores_.clear();
    const std::string more = standing();
    forget();
    return finding.empty() ? more : finding;
}

std::string ElementBook::follow(std::uint32_t value)
{
    std::set<Position> next;
    for (const Position from : stands_) {
        for (Position position = std::max(from + 1, first_); position <= last(); ++position) {
            const Fate fate = at(position).fate;
            if (at(position).value == value && fate != Fate::never) {
                next.insert(position);
            }
            if (fate == Fate::done) {
                break; // it was stored before any later one
            }
        }
    }
    if (next.empty()) {
        const std::string finding = "stored " + std::to_string(value) + ": " + story(value);
        startAgain();
        return finding;
    }
    stands_.assign(next.begin(), next.end());
    return std::string();
}

// What stands is no older than the last write that is done.
std::string ElementBook::standing()
{
    Position done = 0;
    for (Position position = first_; position <= last(); ++position) {
        done = at(position).fate == Fate::done ? position : done;
    }
    const auto older = [&](Position position) { return position < done; };
    stands_.erase(std::remove_if(stands_.begin(), stands_.end(), older), stands_.end());
    if (!stands_.empty()) {
        return std::string();
    }
    const std::string finding =
        "a write of " + std::to_string(at(done).value) + " is done and was never stored";
    startAgain();
    return finding;
}

// After a finding the last write counts as what stands, so that one fault is one finding.
void ElementBook::startAgain()
{
    stands_ = {last()};
}

void ElementBook::forget()
{
    while (!writes_.empty() && first_ <= stands_.front()) {
        writes_.pop_front();
        ++first_;
    }
    while (writes_.size() > kMostLeft && writes_.front().fate == Fate::never) {
        writes_.pop_front();
        ++first_;
    }
}

std::string ElementBook::story(std::uint32_t value) const
{
    for (auto write = writes_.rbegin(); write != writes_.rend(); ++write) {
        if (write->value == value) {
            return std::string("its write is ") + inWords(write->fate) + ", or out of order";
        }
    }
    return "nobody asked for it lately";
}

} // namespace tavmir::soak
