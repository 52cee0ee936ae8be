// The program behind main(): finds the command and runs it.
#ifndef TAVMIR_HOST_PROGRAM_H
#define TAVMIR_HOST_PROGRAM_H

#include <QtCore/QStringList>

namespace tavmir::host
{

// arguments  as main() got them. Returns the exit status. Needs an application object.
int runProgram(const QStringList& arguments);

} // namespace tavmir::host

#endif
