#include "refused_addresses.h"

#include "project/address_expansion.h"

#include <QtCore/QRegularExpression>

namespace tavmir::controller
{

namespace
{

constexpr std::uint64_t kMemoryBits = std::uint64_t{1} << 32;

struct ClassName {
    const char* name;
    std::optional<wire::ElementClass> elements;
};
const ClassName kClassNames[] = {
    {"bit", wire::ElementClass::bits},
    {"word", wire::ElementClass::words},
    {"dword", wire::ElementClass::doubleWords},
    {"any", std::nullopt},
};

const ClassName* classOf(const QString& text)
{
    for (const ClassName& named : kClassNames) {
        if (text.startsWith(QString(named.name) + ":")) {
            return &named;
        }
    }
    return nullptr;
}

// "3000" or "3000-3099".
bool parseSpan(const QString& text, RefusedRange& range)
{
    static const QRegularExpression kSpan("^([0-9]{1,10})(?:-([0-9]{1,10}))?$");
    const QRegularExpressionMatch match = kSpan.match(text);
    const QString last = match.captured(2).isEmpty() ? match.captured(1) : match.captured(2);
    bool fromFits = false;
    bool toFits = false;
    range.from = match.captured(1).toUInt(&fromFits);
    range.to = last.toUInt(&toFits);
    return fromFits && toFits && range.from <= range.to;
}

std::uint8_t parseCode(const QString& text)
{
    bool isNumber = false;
    const unsigned code = text.toUInt(&isNumber);
    return isNumber && code <= 255 ? static_cast<std::uint8_t>(code) : std::uint8_t{0};
}

bool touches(const RefusedRange& range, std::uint32_t address, int bits)
{
    const std::uint64_t end = std::uint64_t{address} + static_cast<std::uint64_t>(bits);
    const bool wraps = end > kMemoryBits && range.from < end - kMemoryBits;
    return (address <= range.to && range.from < end) || wraps;
}

bool touches(const RefusedRange& range, const Request& request)
{
    const wire::FunctionCode& functionCode = *request.functionCode;
    if (range.elements && *range.elements != functionCode.elements) {
        return false;
    }
    for (const BitValue& element : request.elements) {
        if (touches(range, element.address, functionCode.valueBits)) {
            return true;
        }
    }
    return false;
}

RefusedRange rangeOf(const project::Element& element, std::uint8_t code)
{
    RefusedRange range;
    range.from = element.address + static_cast<std::uint32_t>(element.bitNumber.value_or(0));
    range.to = range.from + static_cast<std::uint32_t>(project::memoryBits(element) - 1);
    range.code = code;
    return range;
}

// Neighbours become one range: a request is held against as few as can be.
void addRange(std::vector<RefusedRange>& ranges, const RefusedRange& range, bool mayJoin)
{
    if (mayJoin && std::uint64_t{ranges.back().to} + 1 == range.from) {
        ranges.back().to = range.to;
        return;
    }
    ranges.push_back(range);
}

} // namespace

std::optional<RefuseRule> parseRefuseRule(const QString& text, QString* problem)
{
    const int mark = text.lastIndexOf('=');
    RefuseRule rule;
    rule.range.code = parseCode(text.mid(mark + 1));
    if (mark < 1 || rule.range.code == 0) {
        *problem =
            QString("\"%1\" does not end in =CODE, an exception code from 1 to 255").arg(text);
        return std::nullopt;
    }
    const QString place = text.left(mark);
    const ClassName* named = classOf(place);
    if (!named) {
        rule.variable = place;
        return rule;
    }
    rule.range.elements = named->elements;
    if (!parseSpan(place.section(':', 1), rule.range)) {
        *problem = QString("\"%1\" is not CLASS:FROM-TO with bit addresses from 0 to 4294967295")
                       .arg(place);
        return std::nullopt;
    }
    return rule;
}

std::optional<std::vector<RefusedRange>> refusedRanges(const std::vector<RefuseRule>& rules,
                                                       const project::Project* project,
                                                       QString* problem)
{
    std::vector<RefusedRange> ranges;
    for (const RefuseRule& rule : rules) {
        if (rule.variable.isEmpty()) {
            ranges.push_back(rule.range);
            continue;
        }
        if (!project) {
            *problem = QString("\"%1\" is an address of a project, and there is none; a range is "
                               "CLASS:FROM-TO, CLASS one of bit, word, dword, any")
                           .arg(rule.variable);
            return std::nullopt;
        }
        const project::Expansion expansion = project::expandAddress(*project, rule.variable);
        if (!expansion.ok) {
            *problem = QString("%1: %2").arg(rule.variable, expansion.problem);
            return std::nullopt;
        }
        bool mayJoin = false;
        for (const project::Element& element : expansion.elements) {
            addRange(ranges, rangeOf(element, rule.range.code), mayJoin);
            mayJoin = true;
        }
    }
    return ranges;
}

std::uint8_t refusalOf(const std::vector<RefusedRange>& ranges, const Request& request)
{
    for (const RefusedRange& range : ranges) {
        if (touches(range, request)) {
            return range.code;
        }
    }
    return 0;
}

} // namespace tavmir::controller
