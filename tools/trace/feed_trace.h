// The feed as lines of text: each request, what came of it, what came unasked, and what became of
// the connection, in the order in which it happened, each with its own time.
//
//   connection 1 > #7 station 1 read words: Main.W
//   connection 1 < #7 station 1 read words: Main.W=4660 (+0.412 ms)
//   connection 1 > #8 station 1 read words: Main.W
//   connection 1 - #8 station 1 read words: the controller did not answer within 500 ms (+500.1 ms)
//   connection 1 < #8 station 1 read words: Main.W=4660 [late] (+812.345 ms)
#ifndef TAVMIR_TRACE_FEED_TRACE_H
#define TAVMIR_TRACE_FEED_TRACE_H

#include "feed/feed_lines.h"

namespace tavmir::host
{

class FeedTrace
{
public:
    using Show = std::function<void(const std::string& line)>;

    // names      outlive it
    // withBytes  lines end with the bytes that they speak of
    FeedTrace(const project::ElementNames& names, bool withBytes, const Show& show);

    void take(const FeedEntry& entry) { lines_.take(entry); }
    // So many entries are missing here.
    void gap(quint64 missed) { lines_.gap(missed); }
    // The feed has told nothing for a moment: what a lost connection held back is shown.
    void quiet() { lines_.quiet(); }
    // Nothing comes any more.
    void end() { lines_.end(); }

private:
    FeedLines lines_;
};

} // namespace tavmir::host

#endif
