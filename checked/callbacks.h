// Stands between the driver and the host's callbacks. Private.
#ifndef TAVMIR_CHECKED_CALLBACKS_H
#define TAVMIR_CHECKED_CALLBACKS_H

#include "tavmir_kx_tcp/host_interface.h"

namespace tavmir
{
namespace checked
{

class Call;

// While it lives, the context's callbacks are ours and lead to the host's. Within a callback the
// host finds its own there, and may set others.
class CallbacksLookedAfter
{
public:
    explicit CallbacksLookedAfter(Call& call);
    ~CallbacksLookedAfter();

private:
    CallbacksLookedAfter(const CallbacksLookedAfter&);
    CallbacksLookedAfter& operator=(const CallbacksLookedAfter&);
};

// What the host has handed over; compared with the context when the cycle is called.
void rememberCallbacks(VarDoneCallback varDone, CommFailCallback commFail);
void rememberRecord(const ComInfo* record);
void compareSetUp(const Call& call);

} // namespace checked
} // namespace tavmir

#endif
