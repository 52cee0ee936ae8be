// One request with its repetitions and all that came for it.
#ifndef TAVMIR_DIAGNOSE_EXCHANGE_H
#define TAVMIR_DIAGNOSE_EXCHANGE_H

#include "moment.h"
#include "reply_check.h"

#include "wire/frame_decoder.h"

#include <string>
#include <vector>

namespace tavmir::diagnose
{

typedef std::vector<unsigned char> Bytes;

// How the host's waiting for one attempt ended, as far as bytes of a reply do not say it.
enum class AttemptEnd {
    open,       // the capture ends
    wentOn,     // the host sent something else, or the same again
    cut,        // part of a reply
    noFrame,    // bytes that are no frame
    lost,       // the controller closed the connection
    hostClosed, // the host did
    unjudged    // bytes are missing in the capture
};

struct Attempt {
    Nanoseconds at = 0;
    std::uint64_t ordinal = 0; // among all attempts of the conversation, from 1
    std::size_t connection = 0;
    AttemptEnd end = AttemptEnd::open;
    Nanoseconds endedAt = 0;
    std::string words = {}; // cut, noFrame, lost: how
};

struct Came {
    Nanoseconds at = 0;
    Bytes bytes;
    CheckedReply checked;
    std::uint64_t behind = 0; // ordinal of the host's latest attempt by then
};

struct Exchange {
    Bytes request;
    std::size_t requestNumber = 0; // in the table of requests
    std::vector<Attempt> attempts; // at least one
    std::vector<Came> came;
    bool isAnswered = false; // well

    wire::FrameView view() const { return wire::viewFrame(request.data(), request.size()); }
};

} // namespace tavmir::diagnose

#endif
