// What went wrong with elements on the wire: requests for them that were refused or given up, and
// writes of them that were not acknowledged. Whether it still counts, the time of the last good
// reply says. Only elements that had trouble take room. One thread.
#ifndef TAVMIR_FEED_ELEMENT_TROUBLES_H
#define TAVMIR_FEED_ELEMENT_TROUBLES_H

#include "feed_entry.h"

#include <unordered_map>

namespace tavmir::host
{

struct ElementTrouble {
    // The last request for it that was given up.
    Clock::rep failedAt = 0; // 0: none was
    QString failure;
    quint32 inRequestOf = 0; // elements
    bool refused = false;    // by the controller, with an exception
    bool ofLink = false;     // the connection was lost, or there was none
    // The last refusal of a request for it alone.
    Clock::rep refusedAloneAt = 0; // 0: none was
    QString refusalAlone;
    // The last write of it that was not acknowledged.
    Clock::rep writtenAt = 0; // 0: none was, or one that came later was acknowledged
    QString writeProblem;
};

class ElementTroubles
{
public:
    // The last attempt of a read request that was given up.
    //   why  in words
    void readGivenUp(const Exchange& exchange, const QString& why);

    // An attempt to write, good or not.
    void writeTried(const Exchange& exchange, const QString& why);

    // A write ended without being done.
    void writeEnded(const FeedEntry& ended);

    bool empty() const { return troubles_.empty(); }
    // Null: none.
    const ElementTrouble* find(const WireElement& element) const;

private:
    static quint64 keyOf(ElementClass elements, quint8 station, qint32 address);

    std::unordered_map<quint64, ElementTrouble> troubles_;
};

} // namespace tavmir::host

#endif
