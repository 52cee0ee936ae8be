// Matching replies to requests.
#include "reply_matcher.h"

namespace tavmir::host
{

ReplyKind classifyReply(const FrameView& request, const FrameView& reply)
{
    if (reply.transactionId != request.transactionId || reply.station != request.station) {
        return ReplyKind::foreign;
    }
    if (reply.function == request.function) {
        return ReplyKind::answer;
    }
    return reply.function == (request.function | wire::kExceptionBit) ? ReplyKind::exception
                                                                      : ReplyKind::foreign;
}

} // namespace tavmir::host
