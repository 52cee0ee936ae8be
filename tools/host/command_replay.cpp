// Options of `replay`.
#include "command_replay.h"

#include "complain.h"
#include "exit_status.h"
#include "own_command_line.h"

namespace tavmir::host
{

namespace
{

QStringList withEmptyPage(QStringList arguments)
{
    for (QString& argument : arguments) {
        argument += argument == "--page" ? "=" : "";
    }
    return arguments;
}

} // namespace

int replayCommand(const QStringList& arguments)
{
    OwnCommandLine line(kReplayPurpose);
    QCommandLineParser& parser = line.parser();
    parser.addOption({"page",
                      "Where the page is served: on this machine only, at any free port, unless "
                      "HOST:PORT says otherwise. Prints the page's address.",
                      "HOST:PORT"});
    parser.addOption({"open", "Open the page in the browser."});
    parser.addPositionalArgument("FOLDER", "A folder that was recorded into.", "replay FOLDER");
    if (const std::optional<int> ended = line.take(withEmptyPage(arguments))) {
        return *ended;
    }
    QString problem;
    PageOptions page;
    const QStringList given = parser.positionalArguments();
    if (given.size() != 1) {
        problem = QString("usage: tavmir-host replay %1").arg(kReplayArguments);
    } else if (!parser.isSet("page")) {
        problem = "a recording is shown in the browser only: add --page";
    } else {
        takePlace(parser, page, problem);
    }
    if (!problem.isEmpty()) {
        complain(problem);
        return kExitBadInput;
    }
    return serveReplay(given.first(), page);
}

} // namespace tavmir::host
