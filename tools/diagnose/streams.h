// TCP connections out of segments: how each begins and ends, and its bytes in both directions as
// they came.
#ifndef TAVMIR_DIAGNOSE_STREAMS_H
#define TAVMIR_DIAGNOSE_STREAMS_H

#include "moment.h"
#include "segment.h"
#include "stream_bytes.h"

#include <functional>
#include <list>
#include <map>
#include <utility>

namespace tavmir::diagnose
{

struct StreamEvent {
    enum class Kind {
        asked,     // a connection, by the first end
        connected, // the second end agreed
        bytes,
        missing,  // bytes of that end are not in the capture
        finished, // that end closes: FIN
        reset,    // that end closes, or refuses: RST
        over      // nothing more of this connection is in the capture
    };
    Kind kind;
    bool fromFirst = true;
    Nanoseconds at = 0;
    std::vector<std::uint8_t> bytes = {};
    std::uint64_t lacks = 0; // bytes
};

// One connection.
struct Stream {
    std::size_t number = 0;
    TcpEnd first; // that connects; or, when that is not in the capture, was seen first
    TcpEnd second;
    bool sawBeginning = false; // its first packet is in the capture
};

class Streams
{
public:
    typedef std::function<void(const Stream&, const StreamEvent&)> Tell;
    explicit Streams(Tell tell) : tell_(std::move(tell)) {}

    void take(Segment segment, Nanoseconds at);
    // At the end of the capture.
    void finish(Nanoseconds at);

    std::uint64_t connections() const { return made_; }

private:
    struct Half {
        StreamBytes bytes;
        bool knowsAcknowledged = false;
        std::uint32_t acknowledged = 0; // by the other end
    };
    struct Open {
        Stream stream;
        std::uint32_t beginsAt = 0; // number of the SYN
        bool isConnected = false;
        bool isReset = false;
        bool isFinished[2] = {false, false};
        Half halves[2]; // [0]: from the first end
    };
    typedef std::pair<TcpEnd, TcpEnd> Key; // the smaller one first

    Open& openOf(const Segment& segment, Nanoseconds at);
    bool isAnother(const Open& open, const Segment& segment) const;
    void tell(const Open& open, StreamEvent event) const { tell_(open.stream, event); }
    void takeBytes(Open& open, bool fromFirst, Segment& segment, Nanoseconds at);
    void deliver(Open& open, bool fromFirst, Nanoseconds at);
    void skipAcknowledged(Open& open, bool fromFirst, Nanoseconds at);
    void end(Open& open, Nanoseconds at);

    Tell tell_;
    std::uint64_t made_ = 0;
    std::map<Key, Open> open_;
};

} // namespace tavmir::diagnose

#endif
