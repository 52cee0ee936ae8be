#include "model/address_model.h"

#include <algorithm>

namespace tavmir::model
{

namespace
{

constexpr std::uint16_t kArray = 0x100;
constexpr std::uint16_t kStructure = 0x200;
constexpr std::uint16_t kBitSuffix = 0x400;

struct Suffix {
    bool present = false;
    Text name;
    Text index;
};

// "Axis[1,2]" is Axis and 1,2; the last character is taken for the closing bracket, unseen.
Suffix splitSuffix(const Text& part)
{
    const bool hasBoth = part.find(u'[') != Text::npos && part.find(u']') != Text::npos;
    if (!hasBoth) {
        return Suffix{false, part, Text()};
    }
    const std::size_t open = part.rfind(u'[');
    const std::size_t behind = open + 1;
    Text index;
    if (part.size() > behind) {
        index = part.substr(behind, part.size() - behind - 1);
    }
    return Suffix{true, part.substr(0, open), index};
}

// Nothing when no counted member has the name; the record counts no more than it has.
const Label* memberNamed(const Label& type, const Text& name)
{
    for (std::uint32_t i = 0; i < type.memberCount; ++i) {
        if (type.members[i].name == name) {
            return &type.members[i];
        }
    }
    return nullptr;
}

bool countsTooMany(const Label& type)
{
    return type.memberCount > type.members.size();
}

struct Plain {
    int code;
    std::int32_t width; // 0: first entry of elementSizes
    std::int32_t stride;
    bool bits;
};

const Plain kPlainTypes[] = {{1, 1, 1, false},
                             {4, 16, 16, true},
                             {6, 32, 32, true},
                             {7, 32, 32, false},
                             {10, 0, 256, false}};

} // namespace

std::vector<Text> splitText(const Text& text, char16_t separator)
{
    std::vector<Text> items(1);
    for (const char16_t c : text) {
        if (c == separator) {
            items.emplace_back();
        } else {
            items.back() += c;
        }
    }
    return items;
}

ArrayIndex arrayIndexOf(const Text& indexText, std::int32_t dimensionCount,
                        const std::vector<std::int32_t>& bounds)
{
    const std::vector<Text> items = splitText(indexText, u',');
    const auto dimensions = static_cast<std::int64_t>(items.size());
    if (dimensionCount <= 0 || dimensions != dimensionCount) {
        return ArrayIndex{1, 0, 0};
    }
    if (static_cast<std::int64_t>(bounds.size()) < 1 + 2 * dimensions) {
        return ArrayIndex{1, 0, 0};
    }

    std::vector<std::int32_t> offsets;
    std::vector<std::int32_t> sizes;
    for (std::size_t d = 0; d < items.size(); ++d) {
        const std::int64_t low = bounds[1 + 2 * d];
        const std::optional<std::int32_t> number = numberOf(items[d], bounds[0]);
        if (!number || wrapped(*number - low) < 0) {
            return ArrayIndex{3, 0, 0};
        }
        offsets.push_back(wrapped(*number - low));
        sizes.push_back(wrapped(bounds[2 + 2 * d] - low));
    }
    std::uint32_t index = 0;
    for (std::size_t d = 0; d < offsets.size(); ++d) {
        auto term = static_cast<std::uint32_t>(offsets[d]);
        for (std::size_t later = d + 1; later < sizes.size(); ++later) {
            term *= static_cast<std::uint32_t>(sizes[later]);
        }
        index += term;
    }
    return ArrayIndex{0, index, index + static_cast<std::uint32_t>(sizes.back())};
}

int AddressModel::refuse(int result, const char* function, int number)
{
    lines.push_back(
        LineText(stream_, "Func_Check", function, number, "ERROR ").plain("").finished());
    return result;
}

int AddressModel::resolve(const Text& address)
{
    const char* const function = "get_label_address_info";
    const auto line = [&](int number) {
        return LineText(stream_, "Func_Check", function, number, "ERROR ");
    };
    if (address.empty()) {
        lines.push_back(line(511).quoted(address).finished());
        return 6;
    }
    parts_ = splitText(address, u'.');
    if (parts_.size() < 2) {
        lines.push_back(line(523).quotedList(parts_).finished());
        return 11;
    }
    const Text labelName = splitSuffix(parts_[0]).name;
    const auto found = labels_.find(labelName);
    if (found == labels_.end()) {
        lines.push_back(line(539).quoted(labelName).finished());
        return 2;
    }
    if (found->second.elementType.empty()) {
        lines.push_back(line(547).quoted(labelName).finished());
        return 10;
    }
    const Label& type = found->second.elementType.front();
    if (countsTooMany(type)) {
        return 1;
    }
    const Label* variable = memberNamed(type, splitSuffix(parts_[1]).name);
    if (variable == nullptr) {
        return 1;
    }
    resolved.elementAddress = variable->offset;
    return walk(*variable, 1);
}

int AddressModel::walk(const Label& entry, std::size_t position)
{
    if (position >= parts_.size()) {
        return 1;
    }
    const Suffix suffix = splitSuffix(parts_[position]);
    const bool isArray = (entry.typeFlags & kArray) != 0;
    ArrayIndex index;
    int pending = !isArray && suffix.present ? 1 : 0;
    if (isArray) {
        index = arrayIndexOf(suffix.index, entry.dimensionCount, entry.arrayBounds);
        if (index.result != 0) {
            return refuse(index.result, "get_label_address_1", 347);
        }
    }
    if ((entry.typeFlags & kStructure) != 0) {
        if (countsTooMany(entry)) {
            return 1;
        }
        const Label* member = memberNamed(entry, suffix.name);
        if (member == nullptr) {
            return refuse(7, "get_label_address_1", 376);
        }
        resolved.elementAddress = wrapped(std::int64_t{resolved.elementAddress} + member->offset);
        return walk(*member, position);
    }
    const int code = entry.typeFlags & 0xFF;
    if (code == 12) {
        const int refused = enterStructure(entry, position, index);
        return refused != 0 ? refused : pending;
    }
    const auto* plain = std::find_if(std::begin(kPlainTypes), std::end(kPlainTypes),
                                     [&](const Plain& type) { return type.code == code; });
    if (plain == std::end(kPlainTypes)) {
        return pending;
    }
    resolved.dataType = static_cast<std::uint8_t>(code);
    resolved.elementWidth = plain->width;
    if (code == 10 && !entry.elementSizes.empty()) {
        resolved.elementWidth = entry.elementSizes.front();
    }
    if (plain->bits) {
        readBit(entry, position);
    }
    if (isArray) {
        const std::uint32_t distance = static_cast<std::uint32_t>(plain->stride) * index.index;
        resolved.elementAddress = wrapped(std::int64_t{resolved.elementAddress} + distance);
        resolved.arrayIndex = wrapped(index.index);
        resolved.isArrayElement = 1;
        resolved.arrayBase = 0;
        resolved.elementLimit = wrapped(std::int64_t{index.end} - index.index);
    }
    return pending;
}

// What the parts behind a structure resolve to is kept, whether they resolve or not is dropped.
int AddressModel::enterStructure(const Label& entry, std::size_t position, const ArrayIndex& index)
{
    if (index.index != 0) {
        if (entry.elementSizes.empty()) {
            return refuse(12, "get_label_address_1", 440);
        }
        const std::uint32_t distance =
            static_cast<std::uint32_t>(entry.elementSizes.front()) * index.index;
        resolved.elementAddress = wrapped(std::int64_t{resolved.elementAddress} + distance);
    }
    if (entry.elementType.empty()) {
        return 1;
    }
    walk(entry.elementType.front(), position + 1);
    return 0;
}

void AddressModel::readBit(const Label& entry, std::size_t position)
{
    if ((entry.typeFlags & kBitSuffix) == 0 || position + 2 != parts_.size()) {
        return;
    }
    const Text& last = parts_.back();
    const std::size_t open = last.rfind(u'[');
    const std::size_t close = last.rfind(u']');
    if (open == Text::npos || close == Text::npos || open < 1 || open >= close) {
        return;
    }
    resolved.bitAccess = 1;
    resolved.bitIndex = numberOf(last.substr(open + 1, close - open - 1), 10).value_or(0);
}

} // namespace tavmir::model
