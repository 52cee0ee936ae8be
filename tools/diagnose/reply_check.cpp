// Comparing, in the order in which a host does.
#include "reply_check.h"

#include "wire/frame_layout.h"
#include "wire/frame_words.h"

#include <algorithm>
#include <cstring>

namespace tavmir::diagnose
{

namespace
{

using wire::FrameView;
using wire::FunctionCode;

const char* elements(std::size_t count)
{
    return count == 1 ? "element" : "elements";
}

std::string insteadOf(std::size_t came, std::size_t wanted, const char* what)
{
    return std::to_string(came) + " " + what + " instead of " + std::to_string(wanted);
}

CheckedReply wrong(Trouble trouble, const std::string& words)
{
    return {CheckedReply::Is::wrong, trouble, words};
}

std::size_t countOf(const FrameView& frame)
{
    return frame.size > wire::kCountOffset ? frame.bytes[wire::kCountOffset] : 0;
}

std::size_t requestSize(const FunctionCode& function, std::size_t count)
{
    return wire::kHeaderBytes + count * function.requestEntryBytes();
}

std::size_t replySize(const FunctionCode& function, std::size_t count)
{
    return wire::kHeaderBytes + (function.write ? 0 : count * function.entryBytes());
}

bool hasHeader(const unsigned char* bytes, std::size_t size)
{
    return size >= wire::kHeaderBytes && wire::bigEndian16(bytes + wire::kProtocolOffset) == 0 &&
           wire::bigEndian16(bytes + wire::kLengthOffset) + wire::kLengthEnd == size;
}

CheckedReply checkEntries(const FunctionCode& function, const FrameView& request,
                          const FrameView& reply)
{
    const std::size_t count = countOf(request);
    if (reply.size != replySize(function, count)) {
        return wrong(Trouble::wrongLength,
                     insteadOf(reply.size, replySize(function, count), "bytes"));
    }
    for (std::size_t i = 0; !function.write && i < count; ++i) {
        const unsigned char* asked = request.bytes + wire::kHeaderBytes + i * wire::kAddressBytes;
        const unsigned char* came = reply.bytes + wire::kHeaderBytes + i * function.entryBytes();
        if (std::memcmp(asked, came, wire::kAddressBytes) != 0) {
            return wrong(Trouble::wrongAddresses,
                         "address " + std::to_string(wire::bigEndian32(came)) + " instead of " +
                             std::to_string(wire::bigEndian32(asked)));
        }
    }
    return CheckedReply();
}

} // namespace

bool isWholeRequest(const unsigned char* bytes, std::size_t size)
{
    return hasHeader(bytes, size) && requestProblem(wire::viewFrame(bytes, size)).empty();
}

bool isWholeReply(const unsigned char* bytes, std::size_t size)
{
    if (!hasHeader(bytes, size)) {
        return false;
    }
    const FrameView frame = wire::viewFrame(bytes, size);
    const bool isException = (frame.function & wire::kExceptionBit) != 0;
    const FunctionCode* function =
        wire::findFunctionCode(static_cast<std::uint8_t>(frame.function & ~wire::kExceptionBit));
    return function != nullptr &&
           size == (isException ? wire::kHeaderBytes : replySize(*function, countOf(frame)));
}

std::string requestProblem(const FrameView& request)
{
    const FunctionCode* function = wire::findFunctionCode(request.function);
    if (function == nullptr) {
        return "function " + std::to_string(request.function) + " is not known";
    }
    const std::size_t count = countOf(request);
    if (count == 0 || request.size != requestSize(*function, count)) {
        return insteadOf(request.size, requestSize(*function, count), "bytes") + " for " +
               std::to_string(count) + " " + elements(count);
    }
    return std::string();
}

CheckedReply checkReply(const FrameView& request, const FrameView& reply)
{
    if (reply.station != request.station) {
        return wrong(Trouble::wrongStation,
                     insteadOf(reply.station, request.station, "as station"));
    }
    if (reply.function == (request.function | wire::kExceptionBit)) {
        return reply.size == wire::kHeaderBytes
                   ? CheckedReply{CheckedReply::Is::exception, Trouble::exception, std::string()}
                   : wrong(Trouble::wrongFunction,
                           "the function's top bit says exception, but it "
                           "has " +
                               insteadOf(reply.size, wire::kHeaderBytes, "bytes"));
    }
    if (reply.function != request.function) {
        return wrong(Trouble::wrongFunction,
                     insteadOf(reply.function, request.function, "as function"));
    }
    if (reply.size > wire::kCountOffset && countOf(reply) != countOf(request)) {
        const std::size_t count = countOf(reply);
        return wrong(Trouble::wrongCount, insteadOf(count, countOf(request), elements(count)));
    }
    const FunctionCode* function = wire::findFunctionCode(request.function);
    // Nobody knows what a reply of another function looks like.
    return function != nullptr && requestProblem(request).empty()
               ? checkEntries(*function, request, reply)
               : CheckedReply();
}

} // namespace tavmir::diagnose
