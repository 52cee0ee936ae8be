// Frames as requests and replies: whether a frame is a whole one, and what is wrong with a reply
// to a known request.
#ifndef TAVMIR_DIAGNOSE_REPLY_CHECK_H
#define TAVMIR_DIAGNOSE_REPLY_CHECK_H

#include "trouble.h"

#include "wire/frame_decoder.h"

#include <string>

namespace tavmir::diagnose
{

// Of any bytes: one frame of a known function, with the entries that its count says.
bool isWholeRequest(const unsigned char* bytes, std::size_t size);
bool isWholeReply(const unsigned char* bytes, std::size_t size);

// Why a frame from a host is no request; empty: it is one.
std::string requestProblem(const wire::FrameView& request);

struct CheckedReply {
    // An answer, an exception, or what is wrong.
    enum class Is { answer, exception, wrong };
    Is is = Is::answer;
    Trouble trouble = Trouble::wrongLength; // wrong: which
    std::string words;                      // wrong: "14 bytes instead of 15"
};

// Compares everything but the transactions. Both have at least kCountOffset bytes.
CheckedReply checkReply(const wire::FrameView& request, const wire::FrameView& reply);

} // namespace tavmir::diagnose

#endif
