// Elements as objects.
#include "variable_words.h"

#include "json_writer.h"
#include "project/raw_address.h"
#include "project/type_words.h"
#include "project/value_format.h"

namespace tavmir::host
{

namespace
{

// Of the format in which the variable is shown.
std::optional<project::NumberRange> rangeOf(const PolledElement& variable)
{
    const project::Element& element = variable.element;
    const int bits = element.isBit() ? 1 : project::memoryBits(element);
    const double all = static_cast<double>(1ULL << (bits > 32 ? 32 : bits));
    switch (variable.format) {
    case project::Format::bit:
        return project::NumberRange{0, 1};
    case project::Format::signedNumber:
        return project::NumberRange{-all / 2, all / 2 - 1};
    case project::Format::unsignedNumber:
    case project::Format::hex:
        return project::NumberRange{0, all - 1};
    default:
        return std::nullopt;
    }
}

} // namespace

std::string variablesJson(const std::vector<PolledElement>& polled,
                          const std::function<bool(const project::Element&)>& writable)
{
    std::string out;
    JsonWriter json(out);
    json.beginArray();
    for (size_t i = 0; i < polled.size(); ++i) {
        const PolledElement& variable = polled[i];
        const std::optional<project::NumberRange> range = rangeOf(variable);
        json.beginObject();
        json.key("index").whole(static_cast<qint64>(i));
        json.key("name").text(variable.name);
        json.key("address").text(project::shownAddress(variable.element));
        json.key("station").whole(variable.station);
        json.key("type").text(project::typeWord(variable.element));
        json.key("format").text(project::formatName(variable.format));
        json.key("elements").whole(project::wireElementCount(variable.element));
        json.key("writable").boolean(writable(variable.element));
        json.key("isBit").boolean(variable.element.isBit());
        json.key("low").number(range ? std::optional<double>(range->low) : std::nullopt);
        json.key("high").number(range ? std::optional<double>(range->high) : std::nullopt);
        json.endObject();
    }
    json.endArray();
    return out;
}

} // namespace tavmir::host
