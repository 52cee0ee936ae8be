// One element on the wire: what one entry of a frame names. Values, ages, stations and formats
// belong to it, however the address text that leads there is spelt.
#ifndef TAVMIR_PLAN_WIRE_ELEMENT_H
#define TAVMIR_PLAN_WIRE_ELEMENT_H

#include "project/address_resolver.h"
#include "wire/frame_layout.h"

#include <vector>

namespace tavmir::host
{

using wire::ElementClass;

struct WireElement {
    ElementClass elements = ElementClass::bits;
    qint32 address = 0; // in bits; signed, as the driver orders it
    quint8 station = 0;

    // The driver's order of polling; it looks at no station.
    bool operator<(const WireElement& other) const
    {
        if (elements != other.elements) {
            return elements < other.elements;
        }
        return address != other.address ? address < other.address : station < other.station;
    }
    bool operator==(const WireElement& other) const
    {
        return samePlace(other) && station == other.station;
    }

    // The same element of the driver's lists and caches, which know one station only.
    bool samePlace(const WireElement& other) const
    {
        return elements == other.elements && address == other.address;
    }
};

// The class of the element; that of its word for one of a word's bits.
ElementClass elementClassOf(const project::Element& element);

// The elements on the wire that one value takes, ascending.
std::vector<WireElement> wireElements(const project::Element& element, int station);

// Bytes of one element of the class in the driver's calls: 1, 2 or 4.
int valueBytesOf(ElementClass elements);

// The value's bytes as the driver's calls give them.
//   elementBytes  those of its elements on the wire, each least significant byte first: they are
//                 the value itself, but for one bit of a word, which is one byte, 0 or 1
QByteArray valueBytes(const project::Element& element, const QByteArray& elementBytes);

} // namespace tavmir::host

#endif
