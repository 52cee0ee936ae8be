// What happens when a turn ends: lists are trimmed or rotated, callbacks report. Private.
#ifndef TAVMIR_CORE_TURN_END_H
#define TAVMIR_CORE_TURN_END_H

namespace tavmir
{

// Ends the turn that `cycleState` names and sets `retVar.status` to `code`.
// Communication thread. Takes `listMutex` and holds it while the callbacks run.
void endTurn(int code);

} // namespace tavmir

#endif
