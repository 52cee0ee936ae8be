// The commands. Each takes a parsed command line and returns the program's exit status.
#ifndef TAVMIR_HOST_COMMANDS_H
#define TAVMIR_HOST_COMMANDS_H

#include "command_line.h"
#include "exit_status.h"

namespace tavmir::host
{

int runCommand(const CommandLine& line);
int readCommand(const CommandLine& line);
int writeCommand(const CommandLine& line);
int checkCommand(const CommandLine& line);
int explainCommand(const CommandLine& line);

} // namespace tavmir::host

#endif
