#include "element_names.h"

#include "address_expansion.h"
#include "value_bytes.h"
#include "value_format.h"

#include <algorithm>
#include <map>
#include <tuple>
#include <utility>

namespace tavmir::project
{

namespace
{

// How many variables that begin before an address are looked at for one that reaches over it.
constexpr int kMostLookedAt = 16;
constexpr int kWordBits = 16;

using Place = std::tuple<quint32, int, DataType>;

Place placeOf(const Element& element)
{
    return {element.address, element.bitNumber.value_or(-1), element.type};
}

// The formats that polled entries give, and that fit.
std::map<Place, Format> polledFormats(const Project& project)
{
    std::map<Place, Format> formats;
    for (const Polled& polled : project.polled) {
        if (polled.format == Format::automatic) {
            continue;
        }
        for (const Element& element :
             expandAddress(project, polled.address, polled.count).elements) {
            if (formatFits(element, polled.format)) {
                formats[placeOf(element)] = polled.format;
            }
        }
    }
    return formats;
}

QString quotedText(const QString& text)
{
    QString quoted = "\"";
    for (const QChar character : text) {
        if (character == '"' || character == '\\') {
            quoted += '\\';
        }
        quoted += character.isPrint()
                      ? QString(character)
                      : QString("\\x%1").arg(character.unicode(), 2, 16, QChar('0'));
    }
    return quoted + "\"";
}

} // namespace

ElementNames::ElementNames(const Project& project)
{
    const std::map<Place, Format> formats = polledFormats(project);
    for (const Element& element : leafElements(project)) {
        const auto found = formats.find(placeOf(element));
        add(element, found == formats.end() ? Format::automatic : found->second);
    }
    sort();
}

void ElementNames::add(const Element& element, Format format)
{
    named_.push_back({element, memoryBits(element), format, element.addressText.toStdString()});
}

void ElementNames::sort()
{
    std::stable_sort(named_.begin(), named_.end(), [](const Named& a, const Named& b) {
        return a.element.address != b.element.address ? a.element.address < b.element.address
                                                      : a.bits > b.bits;
    });
}

const ElementNames::Named* ElementNames::find(std::uint32_t address, int bits) const
{
    auto after = std::upper_bound(
        named_.begin(), named_.end(), address,
        [](std::uint32_t wanted, const Named& named) { return wanted < named.element.address; });
    const Named* covering = nullptr;
    for (int looked = 0; after != named_.begin() && looked < kMostLookedAt; ++looked) {
        const Named& named = *--after;
        if (named.element.address == address && named.bits == bits) {
            return &named;
        }
        const std::uint64_t end = std::uint64_t{address} + static_cast<std::uint64_t>(bits);
        if (!covering &&
            end <= std::uint64_t{named.element.address} + static_cast<std::uint64_t>(named.bits)) {
            covering = &named;
        }
    }
    return covering;
}

QString ElementNames::nameOf(const Named* named, std::uint32_t address, int bits)
{
    if (!named) {
        return QString::number(address);
    }
    const Element& element = named->element;
    if (element.address == address && named->bits == bits) {
        return element.addressText;
    }
    return QString("%1+%2").arg(element.addressText).arg(address - element.address);
}

QString ElementNames::nameOf(std::uint32_t address, int bits) const
{
    return nameOf(find(address, bits), address, bits);
}

wire::ElementsInWords ElementNames::describe(const wire::ElementInFrame* first,
                                             std::size_t count) const
{
    const Named* named = find(first->address, first->bits);
    if (named && named->element.type == DataType::text && first->bits == kWordBits &&
        (first->address - named->element.address) % kWordBits == 0) {
        return describeText(*named, first, count);
    }
    const bool isWhole =
        named && named->element.address == first->address && named->bits == first->bits;
    if (!isWhole || named->element.type == DataType::text) {
        wire::ElementsInWords words = wire::elementInWords(*first);
        words.name = nameOf(named, first->address, first->bits).toStdString();
        return words;
    }
    wire::ElementsInWords words;
    words.name = named->name;
    const QByteArray bytes = bytesOf(first->value, valueBytes(named->element));
    words.value = decodeValue(named->element, named->format, bytes).toStdString();
    return words;
}

wire::ElementsInWords
ElementNames::describeText(const Named& text, const wire::ElementInFrame* first, std::size_t count)
{
    const std::uint64_t end =
        std::uint64_t{text.element.address} + static_cast<std::uint64_t>(text.bits);
    QByteArray bytes;
    wire::ElementsInWords words;
    for (words.elements = 0; words.elements < count; ++words.elements) {
        const wire::ElementInFrame& element = first[words.elements];
        const std::uint64_t expected = first->address + std::uint64_t{kWordBits} * words.elements;
        if (element.address != expected || expected + kWordBits > end) {
            break;
        }
        bytes += bytesOf(element.value, 2);
    }
    const int bits = kWordBits * static_cast<int>(words.elements);
    words.name = nameOf(&text, first->address, bits).toStdString();
    words.value = quotedText(decodeValue(text.element, Format::text, bytes)).toStdString();
    return words;
}

} // namespace tavmir::project
