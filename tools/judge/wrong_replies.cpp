// Always the same ones: a host that fails is to fail again.
#include "wrong_replies.h"

#include <algorithm>

namespace tavmir::judge
{

namespace
{

constexpr std::size_t kMostAdded = 16;
constexpr unsigned kAnotherAddress = 16;

Bytes withTrueLength(Bytes frame)
{
    const std::size_t length = frame.size() - wire::kLengthEnd;
    frame[wire::kLengthOffset] = static_cast<unsigned char>(length >> 8);
    frame[wire::kLengthOffset + 1] = static_cast<unsigned char>(length & 0xFF);
    return frame;
}

// Of one that reads; 0 of any other.
std::size_t entryBytesOf(const Bytes& right)
{
    const wire::FunctionCode* function = wire::findFunctionCode(right[wire::kFunctionOffset]);
    const bool hasEntries =
        function != nullptr && !function->write && right.size() > wire::kHeaderBytes;
    return hasEntries ? function->entryBytes() : 0;
}

Bytes changed(Bytes frame, std::size_t offset, unsigned mask)
{
    frame[offset] = static_cast<unsigned char>(frame[offset] ^ mask);
    return frame;
}

} // namespace

Bytes refusalOf(const Bytes& request, std::uint8_t code)
{
    Bytes reply(request.begin(), request.begin() + wire::kCountOffset);
    reply[wire::kFunctionOffset] =
        static_cast<unsigned char>(reply[wire::kFunctionOffset] | wire::kExceptionBit);
    reply.push_back(code);
    return withTrueLength(reply);
}

Bytes foreignReply(const Bytes& request, const Bytes& right, int variant)
{
    constexpr int kOfAny = 5;
    const int kinds = entryBytesOf(right) > 0 ? kOfAny + 1 : kOfAny;
    switch (variant % kinds) {
    case 0:
        return changed(right, wire::kTransactionOffset + 1, 0x10);
    case 1:
        return changed(right, wire::kStationOffset, 0x01);
    case 2:
        // 100 to 103 become each other, and 108 becomes 110, which nobody asked for either.
        return changed(right, wire::kFunctionOffset, 0x02);
    case 3:
        return changed(right, wire::kCountOffset, 0x40);
    case 4:
        return changed(refusalOf(request, 2), wire::kTransactionOffset + 1, 0x10);
    default:
        return changed(right, wire::kHeaderBytes + wire::kAddressBytes - 1, kAnotherAddress);
    }
}

Bytes shortReply(const Bytes& right, int variant)
{
    const std::size_t entry = entryBytesOf(right);
    std::size_t missing = 1;
    if (entry > 0 && variant % 3 == 1) {
        missing = entry;
    } else if (entry > 0 && variant % 3 == 2) {
        missing = right.size() - wire::kHeaderBytes;
    }
    return withTrueLength(Bytes(right.begin(), right.end() - static_cast<std::ptrdiff_t>(missing)));
}

Bytes longReply(const Bytes& right, int variant)
{
    const std::size_t entry = entryBytesOf(right);
    const std::size_t added = variant % 3 == 0   ? 1
                              : variant % 3 == 1 ? std::max<std::size_t>(entry, 4)
                                                 : kMostAdded;
    Bytes reply = right;
    for (std::size_t i = 0; i < added; ++i) {
        reply.push_back(entry > 0 && added == entry ? right[wire::kHeaderBytes + i] : 0);
    }
    return withTrueLength(reply);
}

Bytes halfReply(const Bytes& right)
{
    return Bytes(right.begin(), right.begin() + static_cast<std::ptrdiff_t>(right.size() / 2));
}

} // namespace tavmir::judge
