// Frames out of a byte stream.
#include "frame_decoder.h"

#include <algorithm>
#include <cstring>

namespace tavmir::host
{

namespace
{

size_t bigEndian16(const unsigned char* bytes)
{
    return static_cast<size_t>(bytes[0]) << 8 | bytes[1];
}

} // namespace

FrameView viewFrame(const unsigned char* bytes, size_t size)
{
    FrameView frame;
    frame.bytes = bytes;
    frame.size = size;
    frame.transactionId = static_cast<uint16_t>(bigEndian16(bytes));
    frame.station = bytes[6];
    frame.function = bytes[7];
    return frame;
}

unsigned char* FrameDecoder::space(size_t& room)
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

void FrameDecoder::added(size_t count)
{
    end_ += count;
}

size_t FrameDecoder::append(const unsigned char* bytes, size_t count)
{
    size_t room = 0;
    unsigned char* target = space(room);
    const size_t taken = std::min(room, count);
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
    const size_t present = end_ - begin_;
    if (present >= 4 && bigEndian16(bytes + 2) != 0) {
        broken_ = true;
        return State::broken;
    }
    if (present < kLengthEnd) {
        return State::needMore;
    }
    const size_t length = bigEndian16(bytes + 4);
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

} // namespace tavmir::host
