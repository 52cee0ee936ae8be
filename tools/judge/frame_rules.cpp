// One request at a time.
#include "frame_rules.h"

#include "request_stream.h"

namespace tavmir::judge
{

void FrameRules::take(const Event& event)
{
    if (event.kind == Event::Kind::request) {
        request(event);
    } else if (event.kind == Event::Kind::unframed) {
        unframed(event);
    } else if (event.kind == Event::Kind::halfSent) {
        scene_.broken(Rule::frameWhole, event,
                      "a request stopped after " + std::to_string(event.bytes.size()) + " bytes");
    }
}

void FrameRules::request(const Event& event)
{
    scene_.kept(Rule::frameHeader);
    scene_.kept(Rule::frameWhole);
    const Bytes& bytes = event.bytes;
    if (scene_.host.stations) {
        const unsigned station = bytes[wire::kStationOffset];
        scene_.check(scene_.host.stations->test(station), Rule::stationKnown, event,
                     "station " + std::to_string(station) + " was asked, which is not there");
    }
    const unsigned code = bytes[wire::kFunctionOffset];
    const wire::FunctionCode* function = wire::findFunctionCode(static_cast<std::uint8_t>(code));
    scene_.check(function != nullptr, Rule::frameFunction, event,
                 "function " + std::to_string(code) + " is none");
    if (function == nullptr) {
        return;
    }
    const std::size_t count = bytes.size() > wire::kCountOffset ? bytes[wire::kCountOffset] : 0;
    const bool fits =
        count > 0 && bytes.size() == wire::kHeaderBytes + count * function->requestEntryBytes();
    scene_.check(fits, Rule::frameCount, event,
                 "the count is " + std::to_string(count) + ", the frame has " +
                     std::to_string(bytes.size()) + " bytes");
    const std::size_t reply =
        function->write ? wire::kHeaderBytes : wire::kHeaderBytes + count * function->entryBytes();
    scene_.check(reply <= kMostFrameBytes, Rule::frameLimit, event,
                 "the reply would have " + std::to_string(reply) + " bytes");
}

void FrameRules::unframed(const Event& event)
{
    const unsigned protocol = wire::bigEndian16(event.bytes.data() + wire::kProtocolOffset);
    const unsigned length = wire::bigEndian16(event.bytes.data() + wire::kLengthOffset);
    if (protocol == 0 && length > kMostFrameBytes - wire::kLengthEnd) {
        scene_.broken(Rule::frameLimit, event,
                      "the length field promises " + std::to_string(wire::kLengthEnd + length) +
                          " bytes");
        return;
    }
    scene_.broken(Rule::frameHeader, event,
                  "the protocol is " + std::to_string(protocol) + ", the length field " +
                      std::to_string(length));
}

} // namespace tavmir::judge
