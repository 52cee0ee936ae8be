// `replay`: a recording in the browser. It has a command line of its own: a folder instead of a
// project, and neither driver nor controller.
#ifndef TAVMIR_HOST_COMMAND_REPLAY_H
#define TAVMIR_HOST_COMMAND_REPLAY_H

#include "page_options.h"

#include <QtCore/QStringList>

namespace tavmir::host
{

// Behind `replay`, for the overview.
inline constexpr char kReplayArguments[] = "FOLDER --page";
inline constexpr char kReplayPurpose[] = "Shows a recording in the browser.";

// arguments  the program's name, then what follows the command. Returns the exit status.
int replayCommand(const QStringList& arguments);

// Serves the page of a recording until a signal comes; where it is stands on standard output, once
// and alone on a line. Returns the exit status.
int serveReplay(const QString& folder, const PageOptions& page);

} // namespace tavmir::host

#endif
