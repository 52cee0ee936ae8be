// Where broken duties are told. Private.
//
// A report is one block:
//
//   tavmir-check: IDENTIFIER
//     what:      what happened, in which call, on which thread
//     detail:    address text, bytes, names … (as many lines as there are)
//     duty:      what the host owes
//     otherwise: what the driver does without the check
//     called from:
//       #0  function+0x1c (file+0x2a1c)
//
// and goes out in one piece, whatever other threads report. Each place, an identifier and the
// address the call came from, is told once and counted from then on; the counts are told when the
// library goes.
#ifndef TAVMIR_CHECKED_REPORT_H
#define TAVMIR_CHECKED_REPORT_H

#include "checked/duties.h"

#include <string>

namespace tavmir
{
namespace checked
{

class Call;

// Reads the setting when that has not happened yet. Any thread.
void readyToReport();

// False when the setting passes over the duty, or the library is about to go.
bool isWatched(Duty duty);

// Tells that `duty` was broken in `call`. `what` follows on "FUNCTION on thread N ".
void report(Duty duty, const Call& call, const std::string& what,
            const std::string& detail = std::string());

// True, and counted, when that place was told of already, or nobody wants to know: spares composing
// the texts again. False changes nothing.
bool wasTold(Duty duty, const Call& call);

// The same for what is found outside of a call.
void reportAt(Duty duty, const void* place, const std::string& what);

// The id of this thread, as the system gives it.
int threadId();

} // namespace checked
} // namespace tavmir

#endif
