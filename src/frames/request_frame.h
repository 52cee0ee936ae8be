// What read and write requests share: the header, and queueing the request. Private.
//
//   offset  0               2             4        6         7          8
//           transaction id  protocol id 0 length   station   function   element count   entries
//           2 bytes         2             2        1         1          1               from 9
//
// All fields are big-endian; `length` counts the bytes behind it.
#ifndef TAVMIR_FRAMES_REQUEST_FRAME_H
#define TAVMIR_FRAMES_REQUEST_FRAME_H

#include "tavmir_kx_tcp/host_interface.h"

namespace tavmir
{

const int kHeaderBytes = 9;
const int kFunctionOffset = 7;

// The frame's length for the present batch, or 0 when the batch is empty or its frame would
// not fit the send buffer.
int batchFrameLength(int entryBytes);

// Writes every header field but the function.
void putHeader(int frameLength);

// Appends the frame in the send buffer to `protocolList`, makes its first good reply end the
// turn, and advances the transaction id.
//   replyLength      bytes expected
//   replyDataOffset  reply bytes before the first element
void queueRequest(int frameLength, int replyLength, int replyDataOffset);

} // namespace tavmir

#endif
