// Values as elements on the wire.
#include "wire_element.h"

namespace tavmir::host
{

using project::DataType;
using project::Element;

ElementClass elementClassOf(const Element& element)
{
    if (element.type == DataType::bit) {
        return ElementClass::bits;
    }
    return element.type == DataType::dword || element.type == DataType::real
               ? ElementClass::doubleWords
               : ElementClass::words;
}

std::vector<WireElement> wireElements(const Element& element, int station)
{
    const ElementClass elements = elementClassOf(element);
    std::vector<WireElement> list;
    quint32 address = element.address;
    for (int i = 0; i < project::wireElementCount(element); ++i) {
        list.push_back({elements, static_cast<qint32>(address), static_cast<quint8>(station)});
        address += static_cast<quint32>(project::wireElementBits(element));
    }
    return list;
}

int valueBytesOf(ElementClass elements)
{
    switch (elements) {
    case ElementClass::bits:
        return 1;
    case ElementClass::words:
        return 2;
    case ElementClass::doubleWords:
        break;
    }
    return 4;
}

QByteArray valueBytes(const Element& element, const QByteArray& elementBytes)
{
    if (!element.bitNumber) {
        return elementBytes;
    }
    const int byte = *element.bitNumber / 8;
    const int bits = byte < elementBytes.size() ? elementBytes.at(byte) : 0;
    return QByteArray(1, static_cast<char>(bits >> (*element.bitNumber % 8) & 1));
}

} // namespace tavmir::host
