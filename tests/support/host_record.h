// A host's connection record with a number of its own in every word, and words of the host
// behind those that the driver knows: a test sees each word that changed.
#ifndef TAVMIR_TESTS_SUPPORT_HOST_RECORD_H
#define TAVMIR_TESTS_SUPPORT_HOST_RECORD_H

#include "tavmir_kx_tcp/host_interface.h"

#include <map>

namespace tavmir
{
namespace test
{

const int kKnownWords = 19;
const int kAllWords = 27;

struct HostRecord {
    ComInfo info;
    qint32 wordsBehind[kAllWords - kKnownWords];

    // Every word gets its sentinel.
    HostRecord();

    // A quiet connection: no retries, station of the record (7), writes to the controller,
    // callbacks for station 70; host words 14 and 15 are 14014 and 15015.
    void setUpForOperation();

    static qint32 sentinel(int word) { return 0x5A000000 + word; }

    qint32 word(int index) const;

    // The words that differ from their sentinel, with what they hold.
    std::map<int, qint32> changedWords() const;
};

} // namespace test
} // namespace tavmir

#endif
