// How the program ends.
#ifndef TAVMIR_HOST_EXIT_STATUS_H
#define TAVMIR_HOST_EXIT_STATUS_H

namespace tavmir::host
{

enum ExitStatus {
    kExitOk = 0,
    kExitFailed = 1,  // the controller did not do what was asked, or not in time
    kExitBadInput = 2 // nothing was sent
};

} // namespace tavmir::host

#endif
