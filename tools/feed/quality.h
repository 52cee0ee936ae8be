// How far a shown value can be trusted.
#ifndef TAVMIR_FEED_QUALITY_H
#define TAVMIR_FEED_QUALITY_H

#include <QtCore/QString>

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

// What stands beside a value in a table: "~" stale, "!" bad, "?" unconfirmed; nothing beside one
// that is good or was never read.
const char* qualityMark(Quality quality);

struct ValueQuality {
    Quality quality = Quality::never;
    QString reason; // why not good; empty of what is good
};

// When a value counts as stale, and what its reasons name.
struct QualityRules {
    int staleAfterMs = 2000; // or three passes, whichever is longer
    QString controller;      // "127.0.0.1:502"
};

} // namespace tavmir::host

#endif
