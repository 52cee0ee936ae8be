// One direction of a connection cut into frames with their times, and what is none. It never gives
// up: behind bytes that are no frame, or that the capture lacks, it goes on where a packet begins
// with a frame.
#ifndef TAVMIR_DIAGNOSE_FRAME_CUTTER_H
#define TAVMIR_DIAGNOSE_FRAME_CUTTER_H

#include "moment.h"

#include "wire/frame_decoder.h"

#include <vector>

namespace tavmir::diagnose
{

struct Piece {
    enum class Kind {
        frame,
        part, // of a frame whose rest never came
        noFrame
    };
    Kind kind = Kind::frame;
    std::vector<unsigned char> bytes;
    Nanoseconds at = 0;     // its last byte
    std::string words = {}; // part, noFrame: "14 of 15 bytes", "length 1 is …"
};

class FrameCutter
{
public:
    //   fromBeginning  the capture has the first byte
    explicit FrameCutter(bool fromBeginning);

    std::vector<Piece> take(const std::vector<unsigned char>& bytes, Nanoseconds at);

    // Bytes are not in the capture: what has begun cannot be judged.
    void lack();

    // What comes next belongs to a new frame, as far as the other side knows: when it is a whole
    // one, what has begun was cut.
    void expectNew() { expectsNew_ = true; }

    // Nothing more comes. True: a frame has begun, and is put into `part`.
    bool end(Piece& part);

    // Bytes that could not be judged.
    std::uint64_t unread() const { return unread_; }

private:
    Piece partial();
    void forget();

    wire::FrameDecoder decoder_;
    std::vector<unsigned char> begun_; // of the frame that is not whole yet
    Nanoseconds begunAt_ = 0;          // its last byte so far
    bool isLost_;                      // where a frame begins is not known
    bool expectsNew_ = false;
    std::uint64_t unread_ = 0;
};

} // namespace tavmir::diagnose

#endif
