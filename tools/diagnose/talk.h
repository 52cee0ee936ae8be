// One TCP connection as the protocol sees it: which end is the host, and its bytes as frames.
#ifndef TAVMIR_DIAGNOSE_TALK_H
#define TAVMIR_DIAGNOSE_TALK_H

#include "conversation.h"
#include "streams.h"

#include <functional>

namespace tavmir::diagnose
{

class Talk
{
public:
    // The conversation of a host's address and a controller.
    typedef std::function<Conversation&(const std::string& host, const TcpEnd& controller)> Find;

    //   port  of controllers; 0: any
    Talk(const Stream& stream, int port, Find find);

    void take(const StreamEvent& event);

private:
    void decide(bool hostIsFirst);
    void wait(const StreamEvent& event);
    void apply(const StreamEvent& event);
    void applyBytes(const StreamEvent& event, bool byHost);
    void endParts();

    Stream stream_;
    Find find_;
    std::vector<StreamEvent> waiting_; // until it is known who the host is
    std::size_t waitingBytes_ = 0;
    std::size_t bytesInVain_ = 0;          // none of them of a frame
    Conversation* conversation_ = nullptr; // null: not known yet
    bool hostIsFirst_ = true;
    bool isMute_ = false; // something else is spoken here
    FrameCutter fromHost_;
    FrameCutter fromController_;
};

} // namespace tavmir::diagnose

#endif
