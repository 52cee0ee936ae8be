// The table of commands.
#include "program.h"

#include "command_diagnose.h"
#include "command_export.h"
#include "command_replay.h"
#include "commands.h"
#include "complain.h"
#include "value_row.h"

#include <cstdio>
#include <limits>

namespace tavmir::host
{

namespace
{

constexpr int kAnyNumber = std::numeric_limits<int>::max();

struct Command {
    CommandDescription description;
    int (*run)(const CommandLine&);
};

const Command kCommands[] = {
    {{"run", "", "Polls the project's variables and shows them live.",
      kOutputOption | kTimeoutOption | kRunOptions | kTraceOption | kCaptureOptions |
          kRecordOptions | kPageOptions,
      0, 0},
     runCommand},
    {{"read", "ADDRESS...", "Reads values from the controller once.",
      kOutputOption | kFormatOption | kTimeoutOption | kTraceOption | kCaptureOptions, 1,
      kAnyNumber},
     readCommand},
    {{"write", "ADDRESS=VALUE...", "Writes values to the controller.",
      kOutputOption | kFormatOption | kTimeoutOption | kWriteOptions | kTraceOption |
          kCaptureOptions,
      1, kAnyNumber},
     writeCommand},
    {{"check", "",
      "Asks once for every polled variable, alone and in its request, and says who answers.",
      kOutputOption, 0, 0},
     checkCommand},
    {{"explain", "[ADDRESS...]",
      "Says what addresses mean; without addresses, how polling is cut into requests.",
      kNamesOption, 0, kAnyNumber},
     explainCommand},
};

constexpr char kDiagnose[] = "diagnose";
constexpr char kExport[] = "export";
constexpr char kReplay[] = "replay";

QString overview()
{
    QString text = "Usage: tavmir-host COMMAND PROJECT [OPTIONS]\n"
                   "A host runtime for the controller driver.\n\nCommands:\n";
    for (const Command& command : kCommands) {
        const QString usage =
            QString("%1 PROJECT %2").arg(command.description.name, command.description.arguments);
        text += QString("  %1 %2\n").arg(usage.leftJustified(32), command.description.purpose);
    }
    text += QString("  %1 %2\n")
                .arg(QString("%1 %2").arg(kDiagnose, kDiagnoseArguments).leftJustified(32),
                     kDiagnosePurpose);
    text +=
        QString("  %1 %2\n")
            .arg(QString("%1 %2").arg(kExport, kExportArguments).leftJustified(32), kExportPurpose);
    text +=
        QString("  %1 %2\n")
            .arg(QString("%1 %2").arg(kReplay, kReplayArguments).leftJustified(32), kReplayPurpose);
    return text + "\n\"tavmir-host COMMAND --help\" lists the options of a command.\n"
                  "Exit status: 0 done, 1 the controller did not do it, 2 bad input.\n";
}

int show(const QString& text)
{
    std::fputs(text.toLocal8Bit().constData(), stdout);
    return kExitOk;
}

int runOne(const Command& command, const QStringList& arguments)
{
    const ParsedCommandLine parsed = parseCommandLine(command.description, arguments);
    if (!parsed.help.isEmpty()) {
        return show(parsed.help);
    }
    if (!parsed.problem.isEmpty()) {
        complain(parsed.problem);
        return kExitBadInput;
    }
    return command.run(parsed.line);
}

} // namespace

int runProgram(const QStringList& arguments)
{
    const QString name = arguments.value(1);
    if (name == "--help" || name == "-h") {
        return show(overview());
    }
    if (name == "--version" || name == "-v") {
        return show("tavmir-host " TAVMIR_VERSION "\n");
    }
    if (name == kDiagnose) {
        return diagnoseCommand(QStringList(arguments.first()) + arguments.mid(2));
    }
    if (name == kExport) {
        return exportCommand(QStringList(arguments.first()) + arguments.mid(2));
    }
    if (name == kReplay) {
        return replayCommand(QStringList(arguments.first()) + arguments.mid(2));
    }
    for (const Command& command : kCommands) {
        if (name == command.description.name) {
            return runOne(command, QStringList(arguments.first()) + arguments.mid(2));
        }
    }
    complain(name.isEmpty() ? QString("a command is missing: run, read, write, check, explain, "
                                      "diagnose, export or replay")
                            : QString("unknown command %1: run, read, write, check, explain, "
                                      "diagnose, export or replay")
                                  .arg(printable(name)));
    return kExitBadInput;
}

} // namespace tavmir::host
