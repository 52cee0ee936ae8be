// Requests looked through from the newest on.
#include "exchange_search.h"

#include "wire/frame_layout.h"

#include <algorithm>

namespace tavmir::host
{

namespace
{

constexpr quint64 kMostLookedAt = 20000;

const wire::FunctionCode* readFunctionOf(const Exchange& exchange)
{
    const auto* function = wire::findFunctionCode(exchange.request[wire::kFunctionOffset]);
    const bool reads =
        function != nullptr && !function->write && exchange.requestKept() >= wire::kHeaderBytes;
    return reads ? function : nullptr;
}

// The first of the elements that the request names.
std::optional<WireElement> askedFor(const Exchange& exchange,
                                    const std::vector<WireElement>& elements)
{
    const wire::FunctionCode* function = readFunctionOf(exchange);
    if (function == nullptr || function->elements != elements.front().elements ||
        exchange.request[wire::kStationOffset] != elements.front().station) {
        return std::nullopt;
    }
    for (size_t at = wire::kHeaderBytes; at + wire::kAddressBytes <= exchange.requestKept();
         at += wire::kAddressBytes) {
        const auto address = static_cast<qint32>(wire::bigEndian32(exchange.request + at));
        for (const WireElement& element : elements) {
            if (element.address == address) {
                return element;
            }
        }
    }
    return std::nullopt;
}

} // namespace

FoundExchanges exchangesOf(const KeptEntries& kept, const std::vector<WireElement>& elements)
{
    FoundExchanges found;
    const quint64 count = std::min(kept.end() - kept.begin(), kMostLookedAt);
    found.isAll = count == kept.end() - KeptEntries::kFirst;
    for (quint64 i = 1; i <= count; ++i) {
        std::optional<FeedEntry> entry = kept.at(kept.end() - i);
        found.isAll = found.isAll && entry.has_value();
        if (!entry || entry->kind != FeedKind::exchange) {
            continue;
        }
        ++found.lookedThrough;
        const std::optional<WireElement> element = askedFor(entry->exchange, elements);
        if (!element) {
            continue;
        }
        if (!found.last) {
            found.last = entry;
        }
        if (entry->exchange.isGood()) {
            found.lastGood = std::move(entry);
            found.element = element;
            break;
        }
    }
    return found;
}

std::optional<size_t> offsetInReply(const Exchange& exchange, const WireElement& element)
{
    const wire::FunctionCode* function = readFunctionOf(exchange);
    if (function == nullptr) {
        return std::nullopt;
    }
    const size_t size = function->entryBytes();
    for (size_t at = wire::kHeaderBytes; at + size <= exchange.replyKept(); at += size) {
        if (static_cast<qint32>(wire::bigEndian32(exchange.reply + at)) == element.address) {
            return at;
        }
    }
    return std::nullopt;
}

} // namespace tavmir::host
