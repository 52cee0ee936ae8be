// Values as replies bring them: one that differs in a single reply from all before and behind it,
// and one that is read otherwise than it was written. Nothing in the protocol can tell a value that
// was garbled from one that was so: these are for a human to judge.
#ifndef TAVMIR_DIAGNOSE_VALUE_WATCH_H
#define TAVMIR_DIAGNOSE_VALUE_WATCH_H

#include "request_words.h"

#include <map>

namespace tavmir::diagnose
{

struct Sighting {
    PlaceAndValue place;     // with the value that came
    std::uint32_t other = 0; // the value that was expected
    Nanoseconds at = 0;
    std::uint64_t ordinal = 0;
    std::uint16_t transaction = 0;
    std::size_t requestNumber = 0;
};

class ValueWatch
{
public:
    // A read that was answered well.
    void read(const Exchange& exchange, const Attempt& attempt, const Came& reply);
    // A write that was acknowledged, or may have been carried out.
    void written(const Exchange& exchange, bool acknowledged, Nanoseconds at);

    std::vector<Sighting> thatStandOut() const;
    const std::vector<Sighting>& readOtherwise() const { return otherwise_; }

private:
    struct History {
        std::uint64_t readings = 0;
        std::uint64_t changes = 0;
        std::uint32_t last = 0;
        std::uint32_t before = 0;     // the reading before the last
        Sighting latest;              // the last reading, when it was a change
        std::vector<Sighting> single; // that differed from both neighbours, which agreed
    };
    struct Written {
        std::uint32_t value;
        int bits;
        Nanoseconds at;
    };
    void forgetOverlapping(const PlaceAndValue& written);

    std::map<Place, History> histories_;
    std::map<Place, Written> written_; // acknowledged, not read since
    std::vector<Sighting> otherwise_;
};

} // namespace tavmir::diagnose

#endif
