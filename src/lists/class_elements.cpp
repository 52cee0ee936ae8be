#include "lists/class_elements.h"

#include "core/wrapping.h"

#include <algorithm>

namespace tavmir
{

namespace
{

typedef ClassElements::Element Element;

// A type, not a function, so that sorting has it inline.
struct Before {
    bool operator()(const Element& a, const Element& b) const
    {
        return a.address != b.address ? a.address < b.address : a.record < b.record;
    }
};

bool sameAddress(const Element& a, const Element& b)
{
    return a.address == b.address;
}

// How many steps it takes until addresses of 32 bits come round to the first one.
qint64 distinctAddresses(qint32 step)
{
    if (step == 0) {
        return 1;
    }
    const quint32 bits = static_cast<quint32>(step);
    const quint32 lowestBit = bits & (~bits + 1);
    return (Q_INT64_C(1) << 32) / lowestBit;
}

// Below this many, duplicates are left until the end.
const std::size_t kCompactFrom = 65536;

} // namespace

void ClassElements::add(qint32 record, qint32 address, qint32 step, qint32 count)
{
    const qint64 distinct = qMin(static_cast<qint64>(count), distinctAddresses(step));
    for (qint64 i = 0; i < distinct; ++i) {
        const Element element = {address, record};
        elements_.push_back(element);
        address = wrapAdd(address, step);
    }
    // Variables that cover each other over and over must not fill the memory.
    if (elements_.size() >= std::max(compactAt_, kCompactFrom)) {
        compact();
        compactAt_ = 2 * elements_.size();
    }
}

const std::vector<ClassElements::Element>& ClassElements::inOrder()
{
    compact();
    return elements_;
}

void ClassElements::compact()
{
    if (!std::is_sorted(elements_.begin(), elements_.end(), Before())) {
        std::sort(elements_.begin(), elements_.end(), Before());
    }
    // From the back, so that the last of equal addresses stays.
    const std::vector<Element>::reverse_iterator kept =
        std::unique(elements_.rbegin(), elements_.rend(), sameAddress);
    elements_.erase(elements_.begin(), kept.base());
}

} // namespace tavmir
