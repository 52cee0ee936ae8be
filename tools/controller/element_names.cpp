#include "element_names.h"

#include <algorithm>

namespace tavmir::controller
{

namespace
{
// How many variables that begin before an address are looked at for one that reaches over it.
constexpr int kMostLookedAt = 16;
} // namespace

void ElementNames::add(std::uint32_t address, int bits, const QString& name)
{
    named_.push_back({address, bits, name});
}

void ElementNames::sort()
{
    std::stable_sort(named_.begin(), named_.end(), [](const Named& a, const Named& b) {
        return a.address != b.address ? a.address < b.address : a.bits > b.bits;
    });
}

QString ElementNames::nameOf(std::uint32_t address, int bits) const
{
    auto after = std::upper_bound(
        named_.begin(), named_.end(), address,
        [](std::uint32_t wanted, const Named& named) { return wanted < named.address; });
    const Named* covering = nullptr;
    for (int looked = 0; after != named_.begin() && looked < kMostLookedAt; ++looked) {
        const Named& named = *--after;
        if (named.address == address && named.bits == bits) {
            return named.name;
        }
        const std::uint64_t end = std::uint64_t{address} + static_cast<std::uint64_t>(bits);
        if (!covering &&
            end <= std::uint64_t{named.address} + static_cast<std::uint64_t>(named.bits)) {
            covering = &named;
        }
    }
    if (!covering) {
        return QString::number(address);
    }
    return QString("%1+%2").arg(covering->name).arg(address - covering->address);
}

} // namespace tavmir::controller
