// How the bits of a value are a number.
#ifndef TAVMIR_PAGE_NUMBER_SHAPE_H
#define TAVMIR_PAGE_NUMBER_SHAPE_H

#include "project/value_format.h"

#include <cmath>
#include <cstring>
#include <limits>

namespace tavmir::host
{

enum class NumberShape : quint8 { unsignedNumber, signed16, signed32, floating };

// As the element is shown, which is no text.
inline NumberShape shapeOf(const project::Element& element, project::Format format)
{
    switch (project::effectiveFormat(element, format)) {
    case project::Format::signedNumber:
        return element.type == project::DataType::word ? NumberShape::signed16
                                                       : NumberShape::signed32;
    case project::Format::floating:
        return NumberShape::floating;
    default:
        return NumberShape::unsignedNumber;
    }
}

// NaN: the bits are no number.
inline double numberOf(NumberShape shape, quint32 bits)
{
    switch (shape) {
    case NumberShape::signed16:
        return static_cast<qint16>(bits);
    case NumberShape::signed32:
        return static_cast<qint32>(bits);
    case NumberShape::floating: {
        float value = 0;
        std::memcpy(&value, &bits, sizeof value);
        return std::isfinite(value) ? static_cast<double>(value)
                                    : std::numeric_limits<double>::quiet_NaN();
    }
    case NumberShape::unsignedNumber:
        break;
    }
    return bits;
}

} // namespace tavmir::host

#endif
