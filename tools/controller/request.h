// A request frame taken apart: who asks for what, or why it cannot be asked.
#ifndef TAVMIR_CONTROLLER_REQUEST_H
#define TAVMIR_CONTROLLER_REQUEST_H

#include "bit_memory.h"

#include "wire/frame_layout.h"

#include <QtCore/QByteArray>

#include <cstdint>
#include <vector>

namespace tavmir::controller
{

struct Request {
    std::uint16_t transactionId = 0;
    std::uint8_t station = 0;
    std::uint8_t function = 0;
    std::uint8_t count = 0;                           // as sent; 0 when the frame ends before it
    const wire::FunctionCode* functionCode = nullptr; // null: not one of the six
    std::uint8_t exceptionCode = 0;                   // 0: well formed
    std::vector<BitValue> elements; // of a well-formed request; reads carry value 0
};

// Takes a frame of FrameDecoder apart. Never fails: a function code that is not known gives
// exception code 1; a count of 0, one that does not fit the length, or more elements than a frame
// can carry gives 3. Values to write are least significant byte first; of a bit, any byte but 0
// means 1.
Request parseRequest(const QByteArray& frame);

} // namespace tavmir::controller

#endif
