// The books of all writes and one-shot reads: what was accepted must end, once.
//
// An operation is its key. It begins before the driver is called; it ends by a success report,
// a failure report, or by being dropped: the driver drops without a report what is queued
// behind a given-up request, which the ledger is told from inside the failure callback.
#ifndef TAVMIR_TESTS_SOAK_LEDGER_H
#define TAVMIR_TESTS_SOAK_LEDGER_H

#include "layout.h"

#include <cstdint>
#include <map>
#include <mutex>
#include <string>
#include <vector>

namespace tavmir::soak
{

// The elements that one operation covers; for a read no value.
struct Operation {
    Area area = Constants;
    int index = 0;
    int count = 1;
    std::vector<std::uint32_t> values;
};

struct Figures {
    std::uint64_t begun = 0;
    std::uint64_t succeeded = 0;
    std::uint64_t failed = 0;
    std::uint64_t dropped = 0;

    bool close() const { return begun == succeeded + failed + dropped; }
};

class Ledger
{
public:
    // The operation's key, counted from 1.
    int begin(const Operation& operation);

    // A report of the driver. A key that is not open is a finding.
    void end(int key, bool succeeded);

    // The driver empties its list: the keys in it end without a report. A key that was just
    // reported as failed may still have elements there.
    void drop(const std::vector<int>& keys);

    std::size_t open() const;
    Figures figures() const;

    // What went wrong; empty when nothing did.
    std::vector<std::string> findings() const;

    // Whether the element may hold the value when all is quiet: the last one reported as
    // written, or a later one whose write failed half-way.
    bool mayBeLeft(Area area, int index, std::uint32_t value) const;

private:
    struct Slot {
        int lastKey = 0; // of the last write reported as done
        std::uint32_t lastValue = 0;
        std::map<int, std::uint32_t> uncertain; // later writes that failed: they may have arrived
    };
    using Place = std::pair<int, int>;

    void settle(int key, const Operation& operation, bool succeeded);

    mutable std::mutex mutex_;
    int lastKey_ = 0;
    std::map<int, Operation> open_;
    std::map<Place, Slot> slots_;
    Figures figures_;
    std::vector<int> lastFailed_;
    std::vector<std::string> findings_;
};

} // namespace tavmir::soak

#endif
