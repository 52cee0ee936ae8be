// How the Modbus clients cut the values into requests.
#ifndef TAVMIR_BENCHMARKS_SIDE_BY_SIDE_MODBUS_PLAN_H
#define TAVMIR_BENCHMARKS_SIDE_BY_SIDE_MODBUS_PLAN_H

#include "side_by_side/client.h"

namespace tavmir
{
namespace bench
{

// Function 3 reads a run of registers, so values with gaps between them need a request each.
class ModbusPlan
{
public:
    explicit ModbusPlan(Layout layout) : scattered_(layout == Layout::scattered) {}

    int address() const { return scattered_ ? 2 * next_ : next_; }
    int registers() const { return scattered_ ? 1 : kMostRegisters; }
    void advance() { next_ = (next_ + registers()) % kValues; }

private:
    static const int kMostRegisters = 125; // of one request; divides kValues

    bool scattered_;
    int next_ = 0;
};

} // namespace bench
} // namespace tavmir

#endif
