// Options, the project's names, and the report.
#include "command_diagnose.h"

#include "complain.h"
#include "console.h"
#include "diagnose_report.h"
#include "exit_status.h"
#include "own_command_line.h"
#include "project/element_names.h"
#include "project/project_reader.h"
#include "value_row.h"
#include "wire/endpoint.h"

#include <QtCore/QFile>
#include <QtCore/QJsonDocument>

namespace tavmir::host
{

namespace
{

struct Options {
    QString captureFile;
    QString projectFile; // empty: none
    int port = 0;
    bool asJson = false;
    QString problem; // not empty: refused
};

void addOptions(QCommandLineParser& parser)
{
    parser.addOption({"port",
                      "Judge what is said with controllers at this port, whatever it is; otherwise "
                      "every connection that speaks the protocol.",
                      "N"});
    parser.addOption({"json", "Print the same as one JSON object."});
    parser.addPositionalArgument("FILE", "A capture, pcap or pcapng; - is standard input.",
                                 "diagnose FILE");
    parser.addPositionalArgument("PROJECT", "The project file, for names and formats.",
                                 "[PROJECT]");
}

Options optionsOf(const QCommandLineParser& parser)
{
    Options options;
    const QStringList given = parser.positionalArguments();
    if (given.isEmpty() || given.size() > 2) {
        options.problem = QString("usage: tavmir-host diagnose %1").arg(kDiagnoseArguments);
        return options;
    }
    options.captureFile = given.first();
    options.projectFile = given.value(1);
    options.asJson = parser.isSet("json");
    if (parser.isSet("port")) {
        bool isNumber = false;
        options.port = parser.value("port").toInt(&isNumber);
        if (!isNumber || options.port < 1 || options.port > wire::kMostPort) {
            options.problem = QString("--port %1: must be a whole number from 1 to %2")
                                  .arg(printable(parser.value("port")))
                                  .arg(wire::kMostPort);
        }
    }
    return options;
}

std::unique_ptr<diagnose::CaptureReader> openCapture(const QString& file)
{
    std::string problem;
    auto reader =
        file == "-" ? diagnose::CaptureReader::of(stdin, problem)
                    : diagnose::CaptureReader::open(QFile::encodeName(file).toStdString(), problem);
    if (!reader) {
        complain(file + ": " + QString::fromStdString(problem));
    }
    return reader;
}

// True when there is none to be read, or it was read.
bool readNames(const QString& file, project::ElementNames& names, int& port)
{
    if (file.isEmpty()) {
        return true;
    }
    const project::ReadOutcome outcome = project::readProjectFile(file);
    if (!outcome.project) {
        complain(outcome.error);
        return false;
    }
    names = project::ElementNames(*outcome.project);
    port = outcome.project->connection.port;
    return true;
}

} // namespace

int diagnoseCommand(const QStringList& arguments)
{
    OwnCommandLine line(kDiagnosePurpose);
    addOptions(line.parser());
    if (const std::optional<int> ended = line.take(arguments)) {
        return *ended;
    }
    const Options options = optionsOf(line.parser());
    if (!options.problem.isEmpty()) {
        complain(options.problem);
        return kExitBadInput;
    }
    diagnose::DiagnosisSettings settings;
    settings.port = options.port;
    project::ElementNames names;
    if (!readNames(options.projectFile, names, settings.expectedPort)) {
        return kExitBadInput;
    }
    const auto reader = openCapture(options.captureFile);
    if (!reader) {
        return kExitBadInput;
    }
    const diagnose::Diagnosis diagnosis = diagnose::diagnose(
        *reader, settings, [&names](const wire::ElementInFrame* first, std::size_t count) {
            return names.describe(first, count);
        });
    wire::StopSignal stop;
    Console console;
    if (options.asJson) {
        const QJsonDocument document(diagnosisJson(diagnosis, options.captureFile));
        console.print(QString::fromUtf8(document.toJson(QJsonDocument::Compact)));
    } else {
        for (const QString& text : diagnosisLines(diagnosis, options.captureFile)) {
            console.print(text);
        }
    }
    return console.finish(stop) && !diagnosis.isWrong() ? kExitOk : kExitFailed;
}

} // namespace tavmir::host
