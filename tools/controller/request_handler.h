// Carries requests out on the memory and builds the replies.
#ifndef TAVMIR_CONTROLLER_REQUEST_HANDLER_H
#define TAVMIR_CONTROLLER_REQUEST_HANDLER_H

#include "bit_memory.h"
#include "request.h"

#include <QtCore/QByteArray>

#include <cstdint>

namespace tavmir::controller
{

struct Answer {
    QByteArray reply;               // a whole frame, at most 260 bytes
    std::uint8_t exceptionCode = 0; // 0: the request was carried out
};

// A read is answered with the request's header, its length made true, and per element its address
// and value, both most significant byte first; a write with the header alone. A request that
// cannot be carried out changes nothing and gets an exception reply of 9 bytes, function code
// with bit 0x80 set and the exception code in the place of the count: 1 and 3 as parseRequest
// found them, 4 when the memory is full.
Answer carryOut(const Request& request, BitMemory& memory);

// The exception reply of a request that is not carried out for another reason.
Answer refuse(const Request& request, std::uint8_t exceptionCode);

} // namespace tavmir::controller

#endif
