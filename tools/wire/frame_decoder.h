// Cuts a byte stream from a controller into reply frames. Bytes only: it knows no socket, keeps
// at most kMaxFrameBytes of an unfinished frame, and takes any bytes.
//
//   0        2        4        6        7         8         9
//   +--------+--------+--------+--------+---------+---------+------ - -
//   | trans- | proto- | length | station| function| element | entries
//   | action | col 0  | behind |        |         | count   |
//   +--------+--------+--------+--------+---------+---------+------ - -
#ifndef TAVMIR_WIRE_FRAME_DECODER_H
#define TAVMIR_WIRE_FRAME_DECODER_H

#include "frame_layout.h"

#include <cstddef>
#include <cstdint>

namespace tavmir
{
namespace wire
{

constexpr std::size_t kMinLengthField = 3;    // station, function, count or exception code
constexpr std::size_t kMaxLengthField = 1024; // a good reply has at most 231
constexpr std::size_t kMaxFrameBytes = kLengthEnd + kMaxLengthField;

// The header fields of a frame and where its bytes are.
struct FrameView {
    const unsigned char* bytes = nullptr;
    std::size_t size = 0;
    std::uint16_t transactionId = 0;
    std::uint8_t station = 0;
    std::uint8_t function = 0;
};

// Reads the header of a whole frame of at least kHeaderBytes.
FrameView viewFrame(const unsigned char* bytes, std::size_t size);

class FrameDecoder
{
public:
    enum class State {
        frame,    // a whole frame is out; it stays valid until the next call
        needMore, // the next frame is not complete
        broken    // the bytes are no frame: the stream cannot be trusted any more
    };

    // Where the next bytes go: `room` of them fit, always at least one unless broken.
    unsigned char* space(std::size_t& room);
    // `count` bytes have been put there.
    void added(std::size_t count);

    // Copies what fits of the bytes and says how many that were.
    std::size_t append(const unsigned char* bytes, std::size_t count);

    State next(FrameView& frame);

    // True while part of a frame is waiting for its rest.
    bool hasPartialFrame() const { return begin_ != end_; }

    // Forgets everything: for a new connection.
    void clear();

private:
    // Two whole frames, so that a reply and a late one before it come with one receive.
    static constexpr std::size_t kCapacity = 2 * kMaxFrameBytes;

    unsigned char buffer_[kCapacity] = {};
    std::size_t begin_ = 0; // of the bytes not handed out yet
    std::size_t end_ = 0;
    bool broken_ = false;
};

} // namespace wire
} // namespace tavmir

#endif
