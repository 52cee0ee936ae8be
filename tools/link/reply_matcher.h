// Says whether a frame from the controller answers the request in flight.
//
// A reply is told from a late or duplicate one by its transaction id, and from one that was meant
// for somebody else by everything that it echoes: station, function, count and addresses. An
// exception reply has the length of a write's acknowledgement, so it is told from it by its
// function code alone.
#ifndef TAVMIR_LINK_REPLY_MATCHER_H
#define TAVMIR_LINK_REPLY_MATCHER_H

#include "wire/frame_decoder.h"

namespace tavmir::host
{

using wire::FrameView;

enum class ReplyKind {
    answer,    // belongs to the request; its length is the driver's to judge
    exception, // the controller refuses the request
    foreign    // another transaction, station, function, count or address: not for this request
};

// Both frames have at least kHeaderBytes.
ReplyKind classifyReply(const FrameView& request, const FrameView& reply);

} // namespace tavmir::host

#endif
