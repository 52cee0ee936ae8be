// The controller as a program: from its options to its exit status.
#ifndef TAVMIR_CONTROLLER_RUN_CONTROLLER_H
#define TAVMIR_CONTROLLER_RUN_CONTROLLER_H

#include "options.h"

namespace tavmir::controller
{

constexpr int kExitDone = 0; // ended by SIGINT or SIGTERM
constexpr int kExitCannotListen = 1;
constexpr int kExitBadInput = 2;  // command line, project file or script
constexpr int kExitNotJudged = 3; // no host came, or not everything was played

// Judging a host ends by itself, and its exit status is the judge's: 0, 1 for a broken rule, or 3,
// also when it cannot listen.
//
// Loads the project, listens, and runs the application's event loop until SIGINT or SIGTERM.
// Frames, the line that it listens, and statistics go to standard output, everything else to
// standard error. Needs the application object.
int runController(const Options& options);

} // namespace tavmir::controller

#endif
