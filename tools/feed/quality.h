// How far a shown value can be trusted.
#ifndef TAVMIR_FEED_QUALITY_H
#define TAVMIR_FEED_QUALITY_H

namespace tavmir::host
{

enum class Quality {
    never,      // no reply has brought it yet
    good,       // read, and young enough
    stale,      // older than it should be, or the link is down
    bad,        // its request was refused or given up
    unconfirmed // a write of it was handed in, neither acknowledged nor read since
};

// "never", "good", "stale", "bad", "unconfirmed".
const char* qualityWord(Quality quality);

} // namespace tavmir::host

#endif
