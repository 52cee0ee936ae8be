// A sweep over the memory.
#include "overlaps.h"

#include <algorithm>
#include <iterator>
#include <map>

namespace tavmir::host
{

using project::Element;

namespace
{

// One of a word's bits lies with its word: which of the word's bits it is, the controller says.
quint64 endOf(const Element& element)
{
    const int bits = project::wireElementBits(element) * project::wireElementCount(element);
    return quint64{element.address} + static_cast<quint64>(bits);
}

// The text with its indices as the project's lists write them: "g[0A,-01]" as "g[a,-1]".
QString canonical(const QString& text)
{
    QString plain;
    bool inIndex = false;
    for (int i = 0; i < text.size(); ++i) {
        const QChar character = text.at(i);
        inIndex = character == '[' || (inIndex && character != ']');
        const bool isLeading = character == '0' && QString("[,-").contains(plain.right(1)) &&
                               i + 1 < text.size() && text.at(i + 1).isLetterOrNumber();
        if (!inIndex || !isLeading) {
            plain += inIndex ? character.toLower() : character;
        }
    }
    return plain;
}

} // namespace

std::vector<Overlap> findOverlaps(const std::vector<Element>& elements)
{
    std::vector<const Element*> order;
    order.reserve(elements.size());
    for (const Element& element : elements) {
        order.push_back(&element);
    }
    std::stable_sort(order.begin(), order.end(), [](const Element* left, const Element* right) {
        return left->address < right->address;
    });
    std::vector<Overlap> overlaps;
    const Element* furthest = nullptr;
    for (const Element* element : order) {
        if (furthest != nullptr && element->address < endOf(*furthest)) {
            const quint64 end = std::min(endOf(*furthest), endOf(*element));
            overlaps.push_back(
                {*furthest, *element, element->address, static_cast<quint32>(end - 1)});
        }
        if (furthest == nullptr || endOf(*element) > endOf(*furthest)) {
            furthest = element;
        }
    }
    return overlaps;
}

std::vector<Overlap> findOverlaps(const std::vector<PolledElement>& polled)
{
    std::map<int, std::vector<Element>> stations;
    for (const PolledElement& one : polled) {
        if (!one.element.bitNumber) {
            stations[one.station].push_back(one.element);
        }
    }
    std::vector<Overlap> overlaps;
    for (const auto& [station, elements] : stations) {
        const std::vector<Overlap> ofStation = findOverlaps(elements);
        overlaps.insert(overlaps.end(), ofStation.begin(), ofStation.end());
    }
    return overlaps;
}

std::vector<Element> sharingBits(const Element& element, const std::vector<Element>& elements)
{
    std::vector<Element> sharing;
    std::vector<Element> same;
    for (const Element& other : elements) {
        if (other.address >= endOf(element) || element.address >= endOf(other)) {
            continue;
        }
        const bool isSame = !element.isRaw && other.type == element.type &&
                            other.address == element.address && other.words == element.words;
        (isSame ? same : sharing).push_back(other);
    }
    // A single one is the element itself, however it is spelt.
    if (same.size() > 1) {
        const QString itself = canonical(element.addressText);
        std::copy_if(same.begin(), same.end(), std::back_inserter(sharing),
                     [&](const Element& other) { return other.addressText != itself; });
    }
    return sharing;
}

} // namespace tavmir::host
