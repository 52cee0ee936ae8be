#include "frame_decoder.h"

#include "frame_bytes.h"
#include "frame_limits.h"

namespace tavmir::controller
{

void FrameDecoder::append(const char* bytes, int size)
{
    if (isBroken() || size <= 0)
        return;
    bytes_.append(bytes, size);
}

std::optional<QByteArray> FrameDecoder::takeFrame()
{
    if (isBroken())
        return std::nullopt;
    // A bad field ends the stream as soon as it is there, so that a peer of another protocol is
    // not waited for.
    const int kept = keptBytes();
    if (kept >= int(wire::kLengthOffset)) {
        const std::uint16_t protocolId =
            wire::bigEndian16(bytesOf(bytes_) + begin_ + wire::kProtocolOffset);
        if (protocolId != 0)
            return endWith(QStringLiteral("protocol id %1 instead of 0").arg(protocolId));
    }
    int frameBytes = kMostFrameBytes + 1; // not known yet
    if (kept >= int(wire::kLengthEnd)) {
        const int length = wire::bigEndian16(bytesOf(bytes_) + begin_ + wire::kLengthOffset);
        if (length < int(kLeastLength) || length > int(kMostLength)) {
            return endWith(QStringLiteral("length %1 is not from %2 to %3")
                               .arg(length)
                               .arg(kLeastLength)
                               .arg(kMostLength));
        }
        frameBytes = int(wire::kLengthEnd) + length;
    }
    if (kept < frameBytes) {
        bytes_.remove(0, begin_);
        begin_ = 0;
        return std::nullopt;
    }
    const QByteArray frame = bytes_.mid(begin_, frameBytes);
    begin_ += frameBytes;
    return frame;
}

std::optional<QByteArray> FrameDecoder::endWith(const QString& reason)
{
    reason_ = reason;
    bytes_.clear();
    begin_ = 0;
    return std::nullopt;
}

} // namespace tavmir::controller
