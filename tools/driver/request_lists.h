// The driver's lists of writes and one-shot reads, looked at and shortened from outside, as its
// header allows: on the communication thread or beside it, under the lock that each list has.
#ifndef TAVMIR_DRIVER_REQUEST_LISTS_H
#define TAVMIR_DRIVER_REQUEST_LISTS_H

#include "tavmir_kx_tcp/host_interface.h"

#include <functional>
#include <vector>

namespace tavmir::host
{

// One entry of the request in flight.
struct BatchEntry {
    int hostKey = 0;
    int varKey = 0;
};

// What the request that the driver has just built carries. Communication thread, between
// nextRequest and takeReply.
std::vector<BatchEntry> currentBatch(const Communication_Protocol& driver);

enum class RequestList { writes, onceReads };

// Takes the entries whose keys are to go out of the list, but for its first `inFlight`, which the
// request in flight points at. Takes the driver's list lock; not from a callback.
//   goes  asked with hostKey and varKey of each entry, under that lock
// Returns how many were taken out.
int withdraw(Communication_Protocol& driver, RequestList which,
             const std::function<bool(int hostKey, int varKey)>& goes, int inFlight);

// Lets the driver's next choice be one of the queued writes and one-shot reads, and not a poll, by
// forgetting turns that it has counted. While both wait, five writes still make room for a read.
// Communication thread, before nextRequest, with something queued.
void keepPollingOut(Communication_Protocol& driver, bool writesWait, bool readsWait);

// Lets the driver give up the request in flight with its next failure instead of repeating it.
// Communication thread, before takeReply.
void giveUpAtNextFailure(Communication_Protocol& driver);

} // namespace tavmir::host

#endif
