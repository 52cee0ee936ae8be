#include "checked/read_words.h"

#include "address/Func_Check.h"
#include "core/data_types.h"

#include <atomic>
#include <mutex>
#include <set>
#include <utility>

namespace tavmir
{
namespace checked
{

namespace
{

typedef std::pair<int, qint32> Element; // class and address

// Zeros that bit reads have entered.
struct Zeros {
    std::mutex mutex;
    std::set<Element> elements;
    std::atomic<int> count;

    Zeros() : count(0) {}
};

Zeros zeros;

Element elementOf(int dataType, qint32 address)
{
    return Element(dataType == kDoubleWordType || dataType == kDoubleWordType7 ? kDoubleWords
                                                                               : kWords,
                   address);
}

// True also while the caches are locked: a bit write does not wait for them.
bool isCached(const ControlInformationM& info)
{
    if (!PLC_driver.cacheMutex.tryLock()) {
        return true;
    }
    const bool cached = info.dataType == kWordType
                            ? PLC_driver.wordCache.contains(info.elementAddress)
                            : PLC_driver.dwordCache.contains(info.elementAddress);
    PLC_driver.cacheMutex.unlock();
    return cached;
}

} // namespace

void noteBitRead(const ControlInformationM& info)
{
    if (info.bitAccess != 1 || isCached(info)) {
        return;
    }
    const std::lock_guard<std::mutex> lock(zeros.mutex);
    zeros.elements.insert(elementOf(info.dataType, info.elementAddress));
    zeros.count = static_cast<int>(zeros.elements.size());
}

void noteStored(int dataType, qint32 elementAddress)
{
    if (zeros.count.load(std::memory_order_relaxed) == 0) {
        return;
    }
    const std::lock_guard<std::mutex> lock(zeros.mutex);
    zeros.elements.erase(elementOf(dataType, elementAddress));
    zeros.count = static_cast<int>(zeros.elements.size());
}

bool wasRead(const ControlInformationM& info)
{
    if (!isCached(info)) {
        return false;
    }
    const std::lock_guard<std::mutex> lock(zeros.mutex);
    return zeros.elements.count(elementOf(info.dataType, info.elementAddress)) == 0;
}

} // namespace checked
} // namespace tavmir
