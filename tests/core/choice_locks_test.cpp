// The two steps of choosing a turn, taking over a rebuilt list and forming the batch, each hold the
// list mutex for themselves. Between them the replaced list is destroyed, and nothing else can be
// seen from outside: so these tests watch for the release of its first entry's memory.
#include "support/cycle_test.h"
#include "support/wait_until.h"

#include <atomic>
#include <cstdlib>
#include <new>
#include <thread>

using namespace tavmir::test;

namespace
{

std::atomic<const void*> watched(nullptr);
std::atomic<bool> released(false); // the watched memory is being given back
std::atomic<bool> mayGoOn(false);  // until then its release takes

void release(void* memory) noexcept
{
    if (memory != nullptr && memory == watched.load()) {
        watched = nullptr;
        released = true;
        while (!mayGoOn) {
            std::this_thread::yield();
        }
    }
    std::free(memory);
}

} // namespace

void* operator new(std::size_t size)
{
    void* memory = std::malloc(size);
    if (memory == nullptr) {
        throw std::bad_alloc();
    }
    return memory;
}

void operator delete(void* memory) noexcept
{
    release(memory);
}

void operator delete(void* memory, std::size_t) noexcept
{
    release(memory);
}

namespace
{

class ChoiceLocks : public CycleTest
{
protected:
    ChoiceLocks()
    {
        poll(4, 0);
        PLC_driver.pendingReadList.append(element(4, 16));
        queueWrite(4, 32);
        released = false;
        mayGoOn = false;
        watched = &PLC_driver.readVarList.first();
    }

    // Asks for a request on a thread of its own.
    std::thread choosing()
    {
        return std::thread([this] {
            started = true;
            ComCommunication();
            chosen = true;
        });
    }

    std::atomic<bool> started{false};
    std::atomic<bool> chosen{false};
};

TEST_F(ChoiceLocks, ARebuiltListIsTakenOverUnderTheListMutex)
{
    mayGoOn = true;
    PLC_driver.listMutex.lock();
    std::thread thread = choosing();
    EXPECT_TRUE(waitUntil([this] { return started.load(); }));
    EXPECT_FALSE(waitUntil([] { return released.load(); }, 60));
    PLC_driver.listMutex.unlock();
    thread.join();
    EXPECT_TRUE(released);
    EXPECT_TRUE(PLC_driver.pendingReadList.isEmpty());
}

TEST_F(ChoiceLocks, TheBatchIsFormedUnderTheListMutex)
{
    std::thread thread = choosing();
    EXPECT_TRUE(waitUntil([] { return released.load(); }));
    PLC_driver.listMutex.lock(); // free: the list is taken over already
    mayGoOn = true;
    EXPECT_FALSE(waitUntil([this] { return chosen.load(); }, 60));
    PLC_driver.listMutex.unlock();
    thread.join();
    EXPECT_EQ(PLC_driver.batchCount, 1);
}

} // namespace
