// The least first, then what is left.
#include "column_layout.h"

#include <algorithm>

namespace tavmir::host
{

namespace
{

constexpr ColumnWidths kLeast = {12, 14, 8, 8, 10};
constexpr int kUsualValue = 24; // before the others get all they need

ColumnWidths leastOf(const ColumnWidths& needs)
{
    return {std::min(needs.name, kLeast.name), std::min(needs.address, kLeast.address),
            std::min(needs.value, kLeast.value), std::min(needs.age, kLeast.age), 0};
}

int taken(const ColumnWidths& widths)
{
    int sum = kMarkWidth - kColumnGap;
    for (const int width : {widths.name, widths.address, widths.value, widths.age}) {
        sum += width > 0 ? width + kColumnGap : 0;
    }
    return sum;
}

void grow(int& width, int wanted, int& left)
{
    const int more = std::max(0, std::min(wanted - width, left));
    width += more;
    left -= more;
}

} // namespace

ColumnWidths shareWidth(const ColumnWidths& needs, int width)
{
    ColumnWidths widths = leastOf(needs);
    if (taken(widths) > width) {
        widths.name = 0;
    }
    if (taken(widths) > width) {
        widths.age = 0;
    }
    int left = width - taken(widths);
    if (left < 0) {
        const int address = widths.address + left;
        widths.address = std::max(0, address);
        widths.value = address > 0 ? widths.value : std::max(1, width - kMarkWidth);
        return widths;
    }
    if (widths.age > 0) {
        grow(widths.age, needs.age, left);
    }
    grow(widths.value, std::min(needs.value, kUsualValue), left);
    grow(widths.address, needs.address, left);
    if (widths.name > 0) {
        grow(widths.name, needs.name, left);
    }
    int forValue = left - std::min(needs.quality, kUsualValue) - kColumnGap;
    const int before = widths.value;
    grow(widths.value, needs.value, forValue);
    left -= widths.value - before + kColumnGap;
    widths.quality = left >= std::min(needs.quality, kLeast.quality) ? std::max(0, left) : 0;
    widths.quality = needs.quality > 0 ? widths.quality : 0;
    return widths;
}

} // namespace tavmir::host
