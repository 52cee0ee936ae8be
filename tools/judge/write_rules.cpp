// The values of one element, in the order in which they are sent.
#include "write_rules.h"

#include <string>

namespace tavmir::judge
{

namespace
{

// An acknowledgement sent so shortly before the end of a connection may have been lost with it.
constexpr Us kDoubtful = milliseconds(1000);

} // namespace

void WriteRules::take(const Event& event)
{
    if (!scene_.host.counting) {
        return;
    }
    if (event.kind == Event::Kind::request) {
        request(event);
    } else if (event.kind == Event::Kind::sent) {
        sent(event);
    } else if (event.kind == Event::Kind::closedByHost ||
               event.kind == Event::Kind::closedByController) {
        closed(event);
    }
}

void WriteRules::request(const Event& event)
{
    const wire::FunctionCode* function = wire::findFunctionCode(event.bytes[wire::kFunctionOffset]);
    if (function == nullptr || !function->write ||
        function->elements != scene_.host.counting->elements) {
        return;
    }
    const std::size_t entry = function->requestEntryBytes();
    for (std::size_t at = wire::kHeaderBytes; at + entry <= event.bytes.size(); at += entry) {
        const unsigned char* bytes = event.bytes.data() + at;
        if (wire::bigEndian32(bytes) == scene_.host.counting->address) {
            value(wire::littleEndianNumber(bytes + wire::kAddressBytes, function->valueBytes),
                  event);
        }
    }
}

std::int64_t WriteRules::stepTo(std::uint32_t value) const
{
    const std::uint32_t step = value - last_->value;
    return scene_.host.counting->elements == wire::ElementClass::words
               ? static_cast<std::int64_t>(static_cast<std::int16_t>(step))
               : static_cast<std::int64_t>(static_cast<std::int32_t>(step));
}

void WriteRules::value(std::uint32_t value, const Event& event)
{
    if (!last_) {
        next(value, event);
        return;
    }
    const std::int64_t step = stepTo(value);
    const std::string written =
        std::to_string(value) + " was written after " + std::to_string(last_->value);
    if (step > 0) {
        const bool isExcused = !last_->isAcknowledged || last_->isDoubtful;
        if (step == 1 || !isExcused) {
            scene_.check(step == 1, Rule::writeKept, event, written);
        }
        next(value, event);
        return;
    }
    if (event.bytes == last_->request || (step == 0 && last_->isDoubtful)) {
        last_->request = event.bytes;
        last_->client = event.client;
        return; // a repetition: judged as such
    }
    scene_.broken(Rule::writeOnce, event,
                  written + (step == 0 ? " in a request of its own" : " again"));
}

void WriteRules::next(std::uint32_t value, const Event& event)
{
    if (last_ && last_->isAcknowledged) {
        scene_.kept(Rule::writeOnce);
    }
    last_ = Last();
    last_->value = value;
    last_->request = event.bytes;
    last_->client = event.client;
    last_->sentAt = event.at;
}

void WriteRules::sent(const Event& event)
{
    const bool isOfLast = last_ && event.client == last_->client && event.bytes.size() >= 2 &&
                          event.bytes[0] == last_->request[0] &&
                          event.bytes[1] == last_->request[1];
    if (!isOfLast) {
        return;
    }
    if (event.reply == Reply::right) {
        last_->isAcknowledged = true;
        last_->sentAt = event.at;
    } else if (event.reply == Reply::exception) {
        last_->isDoubtful = true;
    }
}

void WriteRules::closed(const Event& event)
{
    if (last_ && event.client == last_->client &&
        (!last_->isAcknowledged || event.at - last_->sentAt < kDoubtful)) {
        last_->isDoubtful = true;
    }
}

} // namespace tavmir::judge
