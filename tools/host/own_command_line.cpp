// Options that every command has.
#include "own_command_line.h"

#include "complain.h"
#include "exit_status.h"

#include <cstdio>

namespace tavmir::host
{

OwnCommandLine::OwnCommandLine(const char* purpose)
    : help_(parser_.addHelpOption()), version_(parser_.addVersionOption())
{
    parser_.setApplicationDescription(purpose);
}

std::optional<int> OwnCommandLine::take(const QStringList& arguments)
{
    if (!parser_.parse(arguments)) {
        complain(parser_.errorText());
        return kExitBadInput;
    }
    const bool isHelp = parser_.isSet(help_);
    if (!isHelp && !parser_.isSet(version_)) {
        return std::nullopt;
    }
    const QString text = isHelp ? parser_.helpText() : QString("tavmir-host " TAVMIR_VERSION "\n");
    std::fputs(text.toLocal8Bit().constData(), stdout);
    return kExitOk;
}

} // namespace tavmir::host
