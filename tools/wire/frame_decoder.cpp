// Frames out of a byte stream.
#include "frame_decoder.h"

#include <algorithm>
#include <cstring>

namespace tavmir
{
namespace wire
{

FrameView viewFrame(const unsigned char* bytes, std::size_t size)
{
    FrameView frame;
    frame.bytes = bytes;
    frame.size = size;
    frame.transactionId = bigEndian16(bytes + kTransactionOffset);
    frame.station = bytes[kStationOffset];
    frame.function = bytes[kFunctionOffset];
    return frame;
}

FrameDecoder::FrameDecoder(const LengthLimits& lengths)
    : lengths_(lengths), buffer_(2 * (kLengthEnd + lengths.most))
{
}

unsigned char* FrameDecoder::space(std::size_t& room)
{
    // Frames handed out are over now; what is left moves to the front.
    if (begin_ == end_) {
        begin_ = end_ = 0;
    } else if (begin_ > 0) {
        std::memmove(buffer_.data(), buffer_.data() + begin_, end_ - begin_);
        end_ -= begin_;
        begin_ = 0;
    }
    room = buffer_.size() - end_;
    return buffer_.data() + end_;
}

void FrameDecoder::added(std::size_t count)
{
    end_ += count;
}

std::size_t FrameDecoder::append(const unsigned char* bytes, std::size_t count)
{
    std::size_t room = 0;
    unsigned char* target = space(room);
    const std::size_t taken = std::min(room, count);
    std::copy(bytes, bytes + taken, target);
    added(taken);
    return taken;
}

FrameDecoder::State FrameDecoder::next(FrameView& frame)
{
    if (!reason_.empty()) {
        return State::broken;
    }
    const unsigned char* bytes = buffer_.data() + begin_;
    const std::size_t present = end_ - begin_;
    if (present < kLengthOffset) {
        return State::needMore;
    }
    const unsigned protocolId = bigEndian16(bytes + kProtocolOffset);
    if (protocolId != 0) {
        return endWith("protocol id " + std::to_string(protocolId) + " instead of 0");
    }
    if (present < kLengthEnd) {
        return State::needMore;
    }
    const std::size_t length = bigEndian16(bytes + kLengthOffset);
    if (length < lengths_.least || length > lengths_.most) {
        return endWith("length " + std::to_string(length) + " is not from " +
                       std::to_string(lengths_.least) + " to " + std::to_string(lengths_.most));
    }
    if (present < kLengthEnd + length) {
        return State::needMore;
    }
    frame = viewFrame(bytes, kLengthEnd + length);
    begin_ += frame.size;
    return State::frame;
}

FrameDecoder::State FrameDecoder::endWith(const std::string& reason)
{
    reason_ = reason;
    return State::broken;
}

void FrameDecoder::clear()
{
    begin_ = end_ = 0;
    reason_.clear();
}

} // namespace wire
} // namespace tavmir
