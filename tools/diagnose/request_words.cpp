// Requests and elements in words.
#include "request_words.h"

namespace tavmir::diagnose
{

namespace
{

constexpr std::size_t kMostNames = 4;

wire::ElementInFrame inFrame(const PlaceAndValue& place)
{
    return {place.place.address, place.bits, place.value};
}

PlaceAndValue placeOf(const wire::FunctionCode& function, const unsigned char* entry,
                      std::uint8_t station)
{
    return {{station, function.elements, wire::bigEndian32(entry)}, function.valueBits, 0};
}

} // namespace

std::vector<PlaceAndValue> elementsOfRequest(const Bytes& request)
{
    std::vector<PlaceAndValue> elements;
    if (!isWholeRequest(request.data(), request.size())) {
        return elements;
    }
    const wire::FunctionCode& function = *wire::findFunctionCode(request[wire::kFunctionOffset]);
    for (std::size_t at = wire::kHeaderBytes; at < request.size();
         at += function.requestEntryBytes()) {
        PlaceAndValue one = placeOf(function, &request[at], request[wire::kStationOffset]);
        if (function.write) {
            one.value =
                wire::littleEndianNumber(&request[at + wire::kAddressBytes], function.valueBytes);
            if (function.elements == wire::ElementClass::bits) {
                one.value = one.value != 0 ? 1 : 0; // any byte but 0 sets it
            }
        }
        elements.push_back(one);
    }
    return elements;
}

std::vector<PlaceAndValue> elementsOfReply(const Bytes& reply)
{
    std::vector<PlaceAndValue> elements;
    if (!isWholeReply(reply.data(), reply.size())) {
        return elements;
    }
    const wire::FunctionCode* function = wire::findFunctionCode(reply[wire::kFunctionOffset]);
    if (function == nullptr || function->write) {
        return elements;
    }
    for (std::size_t at = wire::kHeaderBytes; at < reply.size(); at += function->entryBytes()) {
        PlaceAndValue one = placeOf(*function, &reply[at], reply[wire::kStationOffset]);
        one.value = wire::bigEndianNumber(&reply[at + wire::kAddressBytes], function->valueBytes);
        elements.push_back(one);
    }
    return elements;
}

std::size_t RequestTable::numberOf(const Bytes& request)
{
    Bytes key(request.begin() + wire::kProtocolOffset, request.end());
    key.insert(key.begin(), wire::kProtocolOffset, 0);
    const auto entry = numbers_.emplace(std::move(key), requests_.size());
    if (entry.second) {
        requests_.push_back(&entry.first->first);
    }
    return entry.first->second;
}

std::string requestName(const Bytes& request, const wire::DescribeElements& describe)
{
    const wire::FunctionCode* function = wire::findFunctionCode(request[wire::kFunctionOffset]);
    const bool writes = function != nullptr && function->write;
    std::size_t names = 0;
    const std::string words = wire::requestInWords(
        request.data(), request.size(), [&](const wire::ElementInFrame* first, std::size_t count) {
            // Of a write each value counts, and there are seldom many.
            if (names++ < kMostNames || count == 1 || writes) {
                return describe(first, count);
            }
            return wire::ElementsInWords{"and " + std::to_string(count) + " more", std::string(),
                                         count};
        });
    const std::size_t behind = words[0] == '#' ? words.find(' ') : std::string::npos;
    return behind == std::string::npos ? words : words.substr(behind + 1);
}

std::string placeName(const PlaceAndValue& place, const wire::DescribeElements& describe)
{
    const wire::ElementInFrame element = inFrame(place);
    const std::string where = std::string(wire::elementName(place.place.elements)) + " at " +
                              std::to_string(place.place.address) + " of station " +
                              std::to_string(place.place.station);
    const std::string name = describe(&element, 1).name;
    return name == std::to_string(place.place.address) ? where : name + " (" + where + ")";
}

std::string valueName(const PlaceAndValue& place, const wire::DescribeElements& describe)
{
    const wire::ElementInFrame element = inFrame(place);
    return describe(&element, 1).value;
}

} // namespace tavmir::diagnose
