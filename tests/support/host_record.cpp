#include "support/host_record.h"

#include <cstddef>
#include <cstring>

namespace tavmir
{
namespace test
{

HostRecord::HostRecord()
{
    for (int index = 0; index < kAllWords; ++index) {
        const qint32 value = sentinel(index);
        std::memcpy(reinterpret_cast<char*>(this) + 4 * index, &value, sizeof value);
    }
}

void HostRecord::setUpForOperation()
{
    info.defaultStation = 7;
    info.retryLimit = 0;
    info.retryCount = 0;
    info.stationMode = 0;
    info.hostWord14 = 14014;
    info.hostWord15 = 15015;
    info.writeMode = 2;
    info.scanDone = 0;
    info.comStation = 70;
}

qint32 HostRecord::word(int index) const
{
    qint32 value = 0;
    std::memcpy(&value, reinterpret_cast<const char*>(this) + 4 * index, sizeof value);
    return value;
}

std::map<int, qint32> HostRecord::changedWords() const
{
    std::map<int, qint32> changed;
    for (int index = 0; index < kAllWords; ++index) {
        if (word(index) != sentinel(index)) {
            changed[index] = word(index);
        }
    }
    return changed;
}

} // namespace test
} // namespace tavmir
