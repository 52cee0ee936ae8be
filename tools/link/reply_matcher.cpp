// Matching replies to requests.
#include "reply_matcher.h"

#include "wire/frame_layout.h"

#include <algorithm>
#include <cstring>

namespace tavmir::host
{

namespace
{

// True when the whole entries that are there name the addresses that were asked for, in their
// order.
bool echoesAddresses(const wire::FunctionCode& function, const FrameView& request,
                     const FrameView& reply)
{
    const size_t asked = (request.size - wire::kHeaderBytes) / wire::kAddressBytes;
    const size_t came = (reply.size - wire::kHeaderBytes) / function.entryBytes();
    for (size_t i = 0; i < std::min(asked, came); ++i) {
        const unsigned char* address = request.bytes + wire::kHeaderBytes + i * wire::kAddressBytes;
        const unsigned char* entry = reply.bytes + wire::kHeaderBytes + i * function.entryBytes();
        if (std::memcmp(address, entry, wire::kAddressBytes) != 0) {
            return false;
        }
    }
    return true;
}

} // namespace

ReplyKind classifyReply(const FrameView& request, const FrameView& reply)
{
    if (reply.transactionId != request.transactionId || reply.station != request.station) {
        return ReplyKind::foreign;
    }
    if (reply.function == (request.function | wire::kExceptionBit)) {
        return reply.size == wire::kHeaderBytes ? ReplyKind::exception : ReplyKind::foreign;
    }
    if (reply.function != request.function ||
        reply.bytes[wire::kCountOffset] != request.bytes[wire::kCountOffset]) {
        return ReplyKind::foreign;
    }
    const wire::FunctionCode* function = wire::findFunctionCode(request.function);
    const bool reads = function != nullptr && !function->write;
    return !reads || echoesAddresses(*function, request, reply) ? ReplyKind::answer
                                                                : ReplyKind::foreign;
}

} // namespace tavmir::host
