// Tells of calls that are running when the library goes. Linked last, so that its object goes
// before the driver's context does.
#include "checked/calls.h"
#include "checked/report.h"
#include "checked/text.h"

namespace tavmir
{
namespace checked
{

namespace
{

struct LastLook {
    ~LastLook()
    {
        const std::string calls = runningCalls();
        if (!calls.empty()) {
            reportAt(kUnloadDuringCall, __builtin_return_address(0),
                     text("thread %d unloads the library or ends the process while these run: ",
                          threadId()) +
                         calls + '.');
        }
    }
};

LastLook lastLook;

} // namespace

} // namespace checked
} // namespace tavmir
