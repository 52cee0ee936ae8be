// `export`: a recording as CSV. It has a command line of its own: a folder instead of a project,
// and neither driver nor controller.
#ifndef TAVMIR_HOST_COMMAND_EXPORT_H
#define TAVMIR_HOST_COMMAND_EXPORT_H

#include <QtCore/QStringList>

namespace tavmir::host
{

// Behind `export`, for the overview.
inline constexpr char kExportArguments[] = "FOLDER [ADDRESS...]";
inline constexpr char kExportPurpose[] = "Writes a recording as CSV.";

// arguments  the program's name, then what follows the command. Returns the exit status.
int exportCommand(const QStringList& arguments);

} // namespace tavmir::host

#endif
