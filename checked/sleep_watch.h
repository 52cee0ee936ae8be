// Whether the communication thread slept after one null while work was queued. Private.
#ifndef TAVMIR_CHECKED_SLEEP_WATCH_H
#define TAVMIR_CHECKED_SLEEP_WATCH_H

namespace tavmir
{
namespace checked
{

class Call;

// When ComCommunication has given null, or a request, on its thread. Of two nulls in a row the
// second ends the asking: what is queued by then may have come after the driver looked.
void noteNull();
void noteRequest();

// At the beginning of the next call of the cycle.
void checkSleep(const Call& call);

} // namespace checked
} // namespace tavmir

#endif
