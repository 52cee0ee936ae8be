// Cuts a byte stream into frames, replies as well as requests. Bytes only: it knows no socket,
// keeps at most two frames of the longest kind, copies none, and takes any bytes.
//
//   append or space + added → next until it needs more → append …, or, when it is broken, give
//   the stream up: behind a bad header nobody can say where the next frame begins.
#ifndef TAVMIR_WIRE_FRAME_DECODER_H
#define TAVMIR_WIRE_FRAME_DECODER_H

#include "frame_layout.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace tavmir
{
namespace wire
{

// Which length fields a stream's frames have; any other breaks it.
struct LengthLimits {
    std::size_t least; // at least 2: station and function code
    std::size_t most;
};

// Of replies: at least station, function, and count or exception code; a good one has at most 231.
constexpr LengthLimits kReplyLengths = {3, 1024};
constexpr std::size_t kMaxFrameBytes = kLengthEnd + kReplyLengths.most;

// The header fields of a frame and where its bytes are.
struct FrameView {
    const unsigned char* bytes = nullptr;
    std::size_t size = 0;
    std::uint16_t transactionId = 0;
    std::uint8_t station = 0;
    std::uint8_t function = 0;
};

// Reads the header of a frame of at least kCountOffset bytes.
FrameView viewFrame(const unsigned char* bytes, std::size_t size);

class FrameDecoder
{
public:
    enum class State {
        frame,    // a whole frame is out; it stays valid until bytes are added or forgotten
        needMore, // the next frame is not complete
        broken    // the bytes are no frame: the stream cannot be trusted any more
    };

    explicit FrameDecoder(const LengthLimits& lengths = kReplyLengths);

    // Where the next bytes go: `room` of them fit, always at least one unless broken.
    unsigned char* space(std::size_t& room);
    // `count` bytes have been put there.
    void added(std::size_t count);

    // Copies what fits of the bytes and says how many that were.
    std::size_t append(const unsigned char* bytes, std::size_t count);

    // A bad field breaks the stream as soon as it is there, so that a peer of another protocol is
    // not waited for.
    State next(FrameView& frame);

    // Of a broken stream: what was wrong, for a log line. Empty while it is whole.
    const std::string& reason() const { return reason_; }

    // True while part of a frame is waiting for its rest.
    bool hasPartialFrame() const { return begin_ != end_; }
    // What waits, of a broken stream all that was not handed out. Valid as long as a frame is.
    const unsigned char* rest() const { return buffer_.data() + begin_; }
    std::size_t restSize() const { return end_ - begin_; }

    // Forgets everything: for a new connection.
    void clear();

private:
    State endWith(const std::string& reason);

    LengthLimits lengths_;
    // Two whole frames, so that a reply and a late one before it come with one receive.
    std::vector<unsigned char> buffer_;
    std::size_t begin_ = 0; // of the bytes not handed out yet
    std::size_t end_ = 0;
    std::string reason_; // not empty: broken
};

} // namespace wire
} // namespace tavmir

#endif
