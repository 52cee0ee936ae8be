// Numbers that the cycle keeps in the context. Private.
#ifndef TAVMIR_CORE_CYCLE_STATE_H
#define TAVMIR_CORE_CYCLE_STATE_H

namespace tavmir
{

// `cycleState`: the kind of the request in flight.
enum CycleState {
    kReadInFlight = 0,
    kWriteInFlight = 1,
    kOnceReadInFlight = 2,
    kNothingYet = 100 // since construction; the end of such a turn touches no list
};

// `status` of the polled list's head while its batch is in flight.
const int kHeadInFlight = -1;

// Slots of `batchElements`.
const int kBatchSlots = 255;

} // namespace tavmir

#endif
