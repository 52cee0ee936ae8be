// Ages in the driver's polling order.
#include "age_table.h"

namespace tavmir::host
{

namespace
{

qint32 bigEndian32(const unsigned char* bytes)
{
    const quint32 number = static_cast<quint32>(bytes[0]) << 24 |
                           static_cast<quint32>(bytes[1]) << 16 |
                           static_cast<quint32>(bytes[2]) << 8 | bytes[3];
    return static_cast<qint32>(number);
}

} // namespace

AgeTable::AgeTable(std::vector<WireElement> order) : order_(std::move(order)), read_(order_.size())
{
}

size_t AgeTable::find(const WireElement& element) const
{
    const auto found = std::lower_bound(order_.begin(), order_.end(), element);
    return found != order_.end() && *found == element ? static_cast<size_t>(found - order_.begin())
                                                      : order_.size();
}

void AgeTable::readNow(ValueClass valueClass, const unsigned char* addresses, size_t count,
                       Clock::time_point now)
{
    size_t place = order_.size();
    for (size_t i = 0; i < count; ++i) {
        const WireElement element{valueClass, bigEndian32(addresses + 4 * i)};
        ++place;
        if (place >= order_.size() || !(order_[place] == element)) {
            place = find(element);
        }
        if (place < order_.size()) {
            read_[place] = now;
        }
    }
}

std::optional<Clock::time_point> AgeTable::lastRead(const project::Element& element) const
{
    std::optional<Clock::time_point> oldest;
    for (const WireElement& part : wireElements(element)) {
        const size_t place = find(part);
        if (place == order_.size() || read_[place] == Clock::time_point()) {
            return std::nullopt;
        }
        oldest = oldest ? std::min(*oldest, read_[place]) : read_[place];
    }
    return oldest;
}

} // namespace tavmir::host
