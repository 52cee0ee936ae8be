// QCommandLineParser, and the checks of what it leaves as text.
#include "command_line.h"

#include "project/value_format.h"
#include "wire/endpoint.h"

#include <QtCore/QCommandLineParser>
#include <QtCore/QFile>
#include <QtCore/QFileInfo>

#include <limits>

namespace tavmir::host
{

namespace
{

using Parser = QCommandLineParser;

void addOptions(Parser& parser, unsigned options)
{
    parser.addOption({"driver", "Load the driver from FILE.", "FILE"});
    parser.addOption(
        {"log", "Append the driver's diagnostic lines to its log file, /tmp/debug.log."});
    parser.addOption({"connect", "Use this controller instead of the project's.", "HOST:PORT"});
    parser.addOption({"station", "Use this default station instead of the project's.", "N"});
    if (options & kOutputOption) {
        parser.addOption({"format", "Show the results as table, json or csv.", "FORMAT", "table"});
    }
    if (options & kFormatOption) {
        parser.addOption(
            {"as", QString("Take values as %1.").arg(project::formatNames()), "FORMAT"});
    }
    if (options & kTimeoutOption) {
        parser.addOption({"timeout",
                          "How long one read or write may take, the wait for the connection "
                          "included. What has not been sent by then is not sent later.",
                          "MS"});
    }
    if (options & kRunOptions) {
        parser.addOption({"duration", "End after this many seconds.", "S"});
        parser.addOption({"interval",
                          "Draw the table this often; in CSV and JSON the least time between two "
                          "rows of one variable.",
                          "MS", "500"});
        parser.addOption({"changes", "Print every change, with the time of its reply, instead of "
                                     "all values again and again."});
        parser.addOption({"pass",
                          "Begin a pass over the polled variables this often, instead of what the "
                          "project says; 0: as fast as the line allows.",
                          "MS"});
        parser.addOption({"stale-after",
                          "A value is stale when it was not read for so long, or for three passes "
                          "if they take longer.",
                          "MS", QString::number(QualityRules().staleAfterMs)});
        parser.addOption({"stdin", "Take lines from standard input: ADDRESS=VALUE writes, "
                                   "ADDRESS reads from the controller."});
    }
    if (options & kWriteOptions) {
        parser.addOption({"read-back", "After each write read what stands there, and say it."});
    }
    if (options & kCaptureOptions) {
        parser.addOption({"capture",
                          "Write every byte that is exchanged into FILE, as a pcapng capture.",
                          "FILE"});
        parser.addOption({"capture-limit",
                          "Keep so many MiB of it at most, in a ring of files FILE_00001 ...: the "
                          "oldest go.",
                          "MIB"});
        parser.addOption({"capture-files", "Divide the limit into so many files.", "N",
                          QString::number(capture::CaptureOptions::kUsualFiles)});
    }
    if (options & kRecordOptions) {
        parser.addOption({"record",
                          "Record values, qualities, events and statistics into FOLDER, in a ring "
                          "of SQLite files.",
                          "FOLDER"});
        parser.addOption({"record-limit", "Keep so many MiB of it at most: the oldest file goes.",
                          "MIB", QString::number(recorder::RecorderOptions::kUsualLimitMiB)});
        parser.addOption({"record-every",
                          "The least time between two samples of one variable; 0: every change.",
                          "MS", "0"});
    }
    if (options & kNamesOption) {
        parser.addOption({"names",
                          "Print a line for each element of a frame that a variable takes: "
                          "the names file of the Wireshark dissector."});
    }
    if (options & kTraceOption) {
        parser.addOption({"trace",
                          "Write each request and what came of it, in words, with its time: to "
                          "standard error (--trace) or into FILE (--trace=FILE); with all bytes "
                          "too (--trace=hex, --trace=hex:FILE).",
                          "FILE"});
    }
    if (options & kPageOptions) {
        addPageOptions(parser);
    }
}

// The parser knows no option that may have a value or none: without one its value is empty.
QStringList withEmptyValues(QStringList arguments, unsigned options)
{
    const int end = arguments.indexOf("--");
    for (int i = 0; i < (end < 0 ? arguments.size() : end); ++i) {
        const bool isTrace = (options & kTraceOption) && arguments[i] == "--trace";
        const bool isPage = (options & kPageOptions) && mayStandAlone(arguments[i]);
        if (isTrace || isPage) {
            arguments[i] += '=';
        }
    }
    return arguments;
}

// A whole number of an option, or a problem.
int number(const Parser& parser, const char* option, int low, int high, QString& problem)
{
    bool isNumber = false;
    const QString text = parser.value(option);
    const int value = text.toInt(&isNumber);
    if ((!isNumber || value < low || value > high) && problem.isEmpty()) {
        problem = QString("--%1 %2: must be a whole number from %3 to %4")
                      .arg(option, printable(text))
                      .arg(low)
                      .arg(high);
    }
    return value;
}

void takeConnection(const Parser& parser, CommandLine& line, QString& problem)
{
    line.driverFile = parser.value("driver");
    line.driverLog = parser.isSet("log");
    if (parser.isSet("station")) {
        line.station = number(parser, "station", 0, 255, problem);
    }
    if (!parser.isSet("connect")) {
        return;
    }
    const QString place = parser.value("connect");
    wire::Endpoint controller;
    if (!wire::parseEndpoint(place.toStdString(), 1, controller)) {
        problem = QString("--connect %1: must be HOST:PORT").arg(printable(place));
    }
    line.host = QString::fromStdString(controller.host);
    line.port = controller.port;
}

void takeFormats(const Parser& parser, unsigned options, CommandLine& line, QString& problem)
{
    if (options & kOutputOption) {
        const auto output = outputFormatFromName(parser.value("format"));
        if (!output) {
            problem = QString("--format %1: must be table, json or csv")
                          .arg(printable(parser.value("format")));
        }
        line.output = output.value_or(OutputFormat::table);
    }
    if ((options & kTimeoutOption) && parser.isSet("timeout")) {
        line.timeoutMs = number(parser, "timeout", 1, std::numeric_limits<int>::max(), problem);
    }
    if ((options & kFormatOption) && parser.isSet("as")) {
        const auto format = project::formatFromName(parser.value("as"));
        if (!format) {
            problem = QString("--as %1: unknown format").arg(printable(parser.value("as")));
        }
        line.valueFormat = format.value_or(project::Format::automatic);
    }
}

void takeCapture(const Parser& parser, CommandLine& line, QString& problem)
{
    constexpr int kMostMiB = 1024 * 1024;
    line.capture.file = parser.value("capture").toLocal8Bit().toStdString();
    const bool isRing = parser.isSet("capture-limit");
    for (const char* option : {"capture", "capture-limit", "capture-files"}) {
        if (parser.isSet(option) && line.capture.file.empty() && problem.isEmpty()) {
            problem = QString("--%1: the capture's file is missing").arg(option);
        }
    }
    if (parser.isSet("capture-files") && !isRing && problem.isEmpty()) {
        problem = "--capture-files: divides a limit, so --capture-limit is needed";
    }
    if (!isRing || !problem.isEmpty()) {
        return;
    }
    const int mib = number(parser, "capture-limit", 1, kMostMiB, problem);
    line.capture.limitBytes = static_cast<std::uint64_t>(mib) << 20;
    line.capture.files =
        number(parser, "capture-files", 2, capture::CaptureOptions::kMostFiles, problem);
    const std::string ring = problem.isEmpty() ? capture::checkRing(line.capture) : std::string();
    if (!ring.empty()) {
        problem = "--capture-files: " + QString::fromStdString(ring);
    }
}

void takeRecord(const Parser& parser, CommandLine& line, QString& problem)
{
    constexpr int kMostMiB = 16 * 1024 * 1024;
    constexpr int kLongestMs = 24 * 3600 * 1000;
    line.record.folder = parser.value("record");
    for (const char* option : {"record", "record-limit", "record-every"}) {
        if (parser.isSet(option) && line.record.folder.isEmpty() && problem.isEmpty()) {
            problem = QString("--%1: the recording's folder is missing").arg(option);
        }
    }
    const int mib = number(parser, "record-limit", recorder::RecorderOptions::kLeastLimitMiB,
                           kMostMiB, problem);
    line.record.limitBytes = static_cast<quint64>(mib) << 20;
    line.record.everyMs = number(parser, "record-every", 0, kLongestMs, problem);
}

void takeTrace(const Parser& parser, CommandLine& line, QString& problem)
{
    if (!parser.isSet("trace")) {
        return;
    }
    const QString hex = "hex";
    const QString value = parser.value("trace");
    line.trace.isOn = true;
    line.trace.withBytes = value == hex || value.startsWith(hex + ":");
    line.trace.file = line.trace.withBytes ? value.mid(hex.size() + 1) : value;
    if (value == hex + ":") {
        problem = "--trace=hex:: a file name is missing";
    } else if (parser.values("trace").size() > 1) {
        problem = "--trace: given twice; --trace=hex:FILE writes bytes into a file";
    }
}

void takeRun(const Parser& parser, CommandLine& line, QString& problem)
{
    constexpr int kLongestMs = 24 * 3600 * 1000;
    line.intervalMs = number(parser, "interval", 1, kLongestMs, problem);
    if (parser.isSet("pass")) {
        line.passMs = number(parser, "pass", 0, kLongestMs, problem);
    }
    line.staleAfterMs = number(parser, "stale-after", 1, kLongestMs, problem);
    line.commandsFromInput = parser.isSet("stdin");
    line.everyChange = parser.isSet("changes");
    if (line.everyChange && parser.isSet("interval") && problem.isEmpty()) {
        problem = "--changes: prints every change, so it takes no --interval";
    }
    if (!parser.isSet("duration")) {
        return;
    }
    bool isNumber = false;
    const double seconds = parser.value("duration").toDouble(&isNumber);
    if (!isNumber || !(seconds >= 0) || seconds > 2000000) {
        problem = QString("--duration %1: must be a number of seconds")
                      .arg(printable(parser.value("duration")));
        return;
    }
    line.durationMs = static_cast<int>(seconds * 1000);
}

// A trace begins its file anew: neither the project nor the capture may be it.
void refuseSameFile(const CommandLine& line, QString& problem)
{
    const auto placeOf = [](const QString& file) { return QFileInfo(file).absoluteFilePath(); };
    const QString& trace = line.trace.file;
    const QString capture = QFile::decodeName(line.capture.file.c_str());
    if (trace.isEmpty() || !problem.isEmpty()) {
        return;
    }
    if (placeOf(trace) == placeOf(line.projectFile)) {
        problem = QString("--trace=%1: this is the project file").arg(printable(trace));
    } else if (!capture.isEmpty() && placeOf(trace) == placeOf(capture)) {
        problem = QString("--trace=%1: this is the capture's file").arg(printable(trace));
    }
}

} // namespace

ParsedCommandLine parseCommandLine(const CommandDescription& command, const QStringList& arguments)
{
    ParsedCommandLine parsed;
    Parser parser;
    parser.setApplicationDescription(command.purpose);
    const QCommandLineOption help = parser.addHelpOption();
    const QCommandLineOption version = parser.addVersionOption();
    addOptions(parser, command.options);
    parser.addPositionalArgument("PROJECT", "The project file.",
                                 QString("%1 PROJECT").arg(command.name));
    if (command.maxArguments > 0) {
        parser.addPositionalArgument(
            command.arguments,
            "Addresses of the project, or @bit:, @word: or @dword: and a bit address.");
    }
    if (!parser.parse(withEmptyValues(arguments, command.options))) {
        parsed.problem =
            parser.unknownOptionNames().contains("pause")
                ? QString("unknown option --pause: --pass says how often a pass begins")
                : parser.errorText();
        return parsed;
    }
    if (parser.isSet(help)) {
        parsed.help = parser.helpText()
                          .replace("--trace <FILE>", "--trace[=FILE]")
                          .replace("--page <HOST:PORT>", "--page[=HOST:PORT]")
                          .replace("--allow-writes <ADDRESSES>", "--allow-writes[=ADDRESSES]");
        return parsed;
    }
    if (parser.isSet(version)) {
        parsed.help = "tavmir-host " TAVMIR_VERSION "\n";
        return parsed;
    }
    const QStringList given = parser.positionalArguments();
    if (given.size() - 1 < command.minArguments || given.size() - 1 > command.maxArguments) {
        parsed.problem = QString("usage: tavmir-host %1 PROJECT %2")
                             .arg(command.name, command.arguments)
                             .trimmed();
        return parsed;
    }
    parsed.line.projectFile = given.first();
    parsed.line.arguments = given.mid(1);
    takeConnection(parser, parsed.line, parsed.problem);
    takeFormats(parser, command.options, parsed.line, parsed.problem);
    if (command.options & kRunOptions) {
        takeRun(parser, parsed.line, parsed.problem);
    }
    if (command.options & kCaptureOptions) {
        takeCapture(parser, parsed.line, parsed.problem);
    }
    if (command.options & kRecordOptions) {
        takeRecord(parser, parsed.line, parsed.problem);
    }
    if (command.options & kTraceOption) {
        takeTrace(parser, parsed.line, parsed.problem);
        refuseSameFile(parsed.line, parsed.problem);
    }
    if (command.options & kPageOptions) {
        takePage(parser, parsed.line.page, parsed.problem);
    }
    parsed.line.readBack = (command.options & kWriteOptions) && parser.isSet("read-back");
    parsed.line.names = (command.options & kNamesOption) && parser.isSet("names");
    if (parsed.line.names && !parsed.line.arguments.isEmpty() && parsed.problem.isEmpty()) {
        parsed.problem = "--names: names all variables of the project, so it takes no address";
    }
    return parsed;
}

} // namespace tavmir::host
