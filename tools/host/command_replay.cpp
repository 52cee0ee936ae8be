// Options of `replay`.
#include "command_replay.h"

#include "complain.h"
#include "exit_status.h"

#include <QtCore/QCommandLineParser>

#include <cstdio>

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
    QCommandLineParser parser;
    parser.setApplicationDescription(kReplayPurpose);
    const QCommandLineOption help = parser.addHelpOption();
    const QCommandLineOption version = parser.addVersionOption();
    parser.addOption({"page",
                      "Where the page is served: on this machine only, at any free port, unless "
                      "HOST:PORT says otherwise. Prints the page's address.",
                      "HOST:PORT"});
    parser.addOption({"open", "Open the page in the browser."});
    parser.addPositionalArgument("FOLDER", "A folder that was recorded into.", "replay FOLDER");
    if (!parser.parse(withEmptyPage(arguments))) {
        complain(parser.errorText());
        return kExitBadInput;
    }
    if (parser.isSet(help) || parser.isSet(version)) {
        const QString text =
            parser.isSet(help) ? parser.helpText() : QString("tavmir-host " TAVMIR_VERSION "\n");
        std::fputs(text.toLocal8Bit().constData(), stdout);
        return kExitOk;
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
