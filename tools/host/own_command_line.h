// The command line of a command that needs neither driver nor controller: options of its own beside
// --help and --version.
#ifndef TAVMIR_HOST_OWN_COMMAND_LINE_H
#define TAVMIR_HOST_OWN_COMMAND_LINE_H

#include <QtCore/QCommandLineParser>

#include <optional>

namespace tavmir::host
{

class OwnCommandLine
{
public:
    // purpose  in one sentence, for --help
    explicit OwnCommandLine(const char* purpose);

    QCommandLineParser& parser() { return parser_; }

    // The program's name, then what follows the command. None: go on. Else everything is done, and
    // said: the exit status.
    std::optional<int> take(const QStringList& arguments);

private:
    QCommandLineParser parser_;
    const QCommandLineOption help_;
    const QCommandLineOption version_;
};

} // namespace tavmir::host

#endif
