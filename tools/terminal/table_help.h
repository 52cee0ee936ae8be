// The keys of the table, in words.
#ifndef TAVMIR_TERMINAL_TABLE_HELP_H
#define TAVMIR_TERMINAL_TABLE_HELP_H

#include <QtCore/QStringList>

namespace tavmir::host
{

// takesCommands  ":" is among them
QStringList helpLines(bool takesCommands, int width);

} // namespace tavmir::host

#endif
