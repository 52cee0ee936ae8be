// `diagnose`: what is wrong in a capture. It has a command line of its own: a capture instead of a
// project, and neither driver nor controller.
#ifndef TAVMIR_HOST_COMMAND_DIAGNOSE_H
#define TAVMIR_HOST_COMMAND_DIAGNOSE_H

#include <QtCore/QStringList>

namespace tavmir::host
{

// Behind `diagnose`, for the overview.
inline constexpr char kDiagnoseArguments[] = "FILE [PROJECT]";
inline constexpr char kDiagnosePurpose[] = "Reads a capture and says what is wrong and since when.";

// arguments  the program's name, then what follows the command. Returns the exit status.
int diagnoseCommand(const QStringList& arguments);

} // namespace tavmir::host

#endif
