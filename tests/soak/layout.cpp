#include "layout.h"

namespace tavmir::soak
{

namespace
{

const char* const kNames[kAreas] = {"D0", "D1", "W0", "W1", "C", "F"};
const int kCodes[kAreas] = {6, 6, 4, 4, 7, 4 + 0x400};
const std::int32_t kAreaBits = 8192; // arrays lie apart: nothing reads over an end unnoticed

} // namespace

int bitsOf(Area area)
{
    return area == DoubleWords0 || area == DoubleWords1 || area == Constants ? 32 : 16;
}

std::int32_t addressOf(Area area, int index)
{
    return 65536 + kAreaBits * area + bitsOf(area) * index;
}

QString addressText(Area area, int index)
{
    return QString("Soak.%1[%2]").arg(QLatin1String(kNames[area])).arg(index);
}

std::uint32_t valueOf(Area area, int index, std::uint32_t number)
{
    const auto place = static_cast<std::uint32_t>(index);
    if (bitsOf(area) == 32) {
        return (place << 24) | (number & 0xFFFFFF);
    }
    return (place << 10) | (number & 0x3FF);
}

std::uint32_t constantOf(int index)
{
    return 0xC0DE0000U + static_cast<std::uint32_t>(index);
}

bool mayHold(Area area, int index, std::uint32_t value, std::uint32_t written)
{
    if (value == 0) {
        return true;
    }
    if (area == Constants) {
        return value == constantOf(index);
    }
    if (area == Flags) {
        return value <= 0xFFFF;
    }
    const auto place = static_cast<std::uint32_t>(index);
    if (bitsOf(area) == 16) {
        return value >> 10 == place;
    }
    return value >> 24 == place && (value & 0xFFFFFF) <= written;
}

Label_Type_Info soakLabel()
{
    Label_Type_Info type;
    type.name = "SoakType";
    type.typeFlags = 0x200;
    type.memberCount = kAreas;
    for (int i = 0; i < kAreas; ++i) {
        const auto area = static_cast<Area>(i);
        Label_Type_Info variable;
        variable.name = QLatin1String(kNames[area]);
        variable.typeFlags = static_cast<quint16>(kCodes[area] + 0x100);
        variable.offset = addressOf(area, 0);
        variable.dimensionCount = 1;
        variable.arrayBounds << 10 << 0 << kElements;
        type.members.append(variable);
    }
    Label_Type_Info label;
    label.name = "Soak";
    label.elementType.append(type);
    return label;
}

} // namespace tavmir::soak
