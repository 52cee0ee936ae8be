#include "checked/small_host.h"

#include <csignal>
#include <sys/mman.h>
#include <unistd.h>

#include <new>

namespace tavmir::checked_tests
{

namespace
{

// Three words are in flight; `change` runs before the right reply is handed over.
void changeInFlight(void (*change)())
{
    setUpPolling(QList<const char*>() << "Main.Row[0]", 3);
    QByteArray reply = replyTo(*ComCommunication());
    change();
    DataCom(&reply, reply.size());
}

void changeNothing() {}

// Six batches of writes and nothing to poll: null stands behind the fifth.
void sleepAfterNull(bool askOnceMore)
{
    setUp();
    for (int i = 0; i < 6; ++i) {
        const bool word = i % 2 == 0;
        RW_VAR var = test::writeOf(word ? 4 : 1, 3000 + 16 * i, word ? hex("01 00") : hex("01"));
        AddListWriteVar(&var);
    }
    while (turn()) {
    }
    if (askOnceMore) {
        turn();
    }
    ::usleep(60000);
    turn();
}

const std::size_t kPage = 4096;
void* page;

// Where the driver marks the pass as done, it has found nothing to send: a write comes then.
void queueWriteMeanwhile(int)
{
    ::mprotect(page, kPage, PROT_READ | PROT_WRITE);
    PLC_driver.listMutex.lock();
    PLC_driver.writeVarList.append(goodWrite());
    PLC_driver.listMutex.unlock();
}

// A write is queued within a call that gives null, behind `nullsBefore` others, and the host
// sleeps.
void sleepAfterAWriteThatComesLate(int nullsBefore)
{
    page = ::mmap(nullptr, kPage, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    setUp();
    SetComInfo(new (page) ComInfo(record()));
    for (int i = 0; i < nullsBefore; ++i) {
        ComCommunication();
    }
    ::signal(SIGSEGV, &queueWriteMeanwhile);
    ::mprotect(page, kPage, PROT_READ);
    ComCommunication();
    ::usleep(60000);
    turn();
}

} // namespace

std::vector<HostPair> turnHosts()
{
    return {
        {"sleep-with-work", [] { sleepAfterNull(false); }, [] { sleepAfterNull(true); }},
        {"sleep-with-work", [] { sleepAfterAWriteThatComesLate(0); },
         [] { sleepAfterAWriteThatComesLate(1); }},
        {"in-flight-moved", [] { changeInFlight([] { PLC_driver.readVarList.move(0, 1); }); },
         [] {
             changeInFlight([] {
                 PLC_driver.listMutex.lock();
                 PLC_driver.writeVarList.clear();
                 PLC_driver.listMutex.unlock();
             });
         }},
        {"list-copy-kept",
         [] {
             static QList<RW_VAR> kept;
             changeInFlight([] { kept = PLC_driver.readVarList; });
         },
         [] {
             changeInFlight([] {
                 const QList<RW_VAR> looked = PLC_driver.readVarList;
                 (void)looked.size();
             });
         }},
        {"batch-count-invalid", [] { changeInFlight([] { PLC_driver.batchCount = 2; }); },
         [] { changeInFlight(&changeNothing); }},
        {"cycle-state-invalid", [] { changeInFlight([] { PLC_driver.cycleState = 1; }); },
         [] { changeInFlight(&changeNothing); }},
        {"protocol-list-invalid",
         [] { changeInFlight([] { PLC_driver.protocolList.append(Protocol()); }); },
         [] { changeInFlight([] { PLC_driver.protocolList.clear(); }); }},
    };
}

} // namespace tavmir::checked_tests
