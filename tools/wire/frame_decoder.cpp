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

unsigned char* FrameDecoder::space(std::size_t& room)
{
    // Frames handed out are over now; what is left moves to the front.
    if (begin_ == end_) {
        begin_ = end_ = 0;
    } else if (begin_ > 0) {
        std::memmove(buffer_, buffer_ + begin_, end_ - begin_);
        end_ -= begin_;
        begin_ = 0;
    }
    room = kCapacity - end_;
    return buffer_ + end_;
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
    if (broken_) {
        return State::broken;
    }
    const unsigned char* bytes = buffer_ + begin_;
    const std::size_t present = end_ - begin_;
    if (present >= kLengthOffset && bigEndian16(bytes + kProtocolOffset) != 0) {
        broken_ = true;
        return State::broken;
    }
    if (present < kLengthEnd) {
        return State::needMore;
    }
    const std::size_t length = bigEndian16(bytes + kLengthOffset);
    if (length < kMinLengthField || length > kMaxLengthField) {
        broken_ = true;
        return State::broken;
    }
    if (present < kLengthEnd + length) {
        return State::needMore;
    }
    frame = viewFrame(bytes, kLengthEnd + length);
    begin_ += frame.size;
    return State::frame;
}

void FrameDecoder::clear()
{
    begin_ = end_ = 0;
    broken_ = false;
}

} // namespace wire
} // namespace tavmir
