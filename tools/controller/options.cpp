#include "options.h"

#include "wire/endpoint.h"

#include <QtCore/QCommandLineParser>

namespace tavmir::controller
{

namespace
{

constexpr int kMostMs = 3600000;
constexpr int kMostPerSecond = 1000000;
constexpr int kMostMiB = 1024 * 1024;

const char* const kDescription =
    "Simulated controller: a TCP server with bit-addressed memory that a driver can poll and "
    "write.\n"
    "It prints \"listening on HOST:PORT\" when it is ready, and its statistics when SIGINT or\n"
    "SIGTERM ends it.\n"
    "\n"
    "Faults (--fault, may be given several times) happen to replies; but for lose, the request\n"
    "itself has been carried out. Requests are counted from 1 over all clients. When several\n"
    "apply to one request, the first one given counts. The same --seed makes the same choices.\n"
    "  KIND=P      with probability P (0 to 1) at each request\n"
    "  KIND@N      at the N-th request\n"
    "  KIND%N      at every N-th request\n"
    "KIND is one of:";

QString description()
{
    QString text = kDescription;
    for (const FaultRow& row : kFaultTable) {
        if (row.kind != FaultKind::None) {
            text += QString("\n  %1%2").arg(row.name, -12).arg(row.help);
        }
    }
    return text;
}

// Collects the first thing that is wrong.
class Values
{
public:
    Values(const QCommandLineParser& parser, QString& problem) : parser_(parser), problem_(problem)
    {
    }

    int milliseconds(const QString& option)
    {
        bool isNumber = false;
        const int ms = parser_.value(option).toInt(&isNumber);
        if (!isNumber || ms < 0 || ms > kMostMs) {
            note(option, QString("a number of milliseconds from 0 to %1").arg(kMostMs));
        }
        return ms;
    }

    std::uint64_t seed(const QString& option)
    {
        bool isNumber = false;
        const std::uint64_t seed = parser_.value(option).toULongLong(&isNumber);
        if (!isNumber) {
            note(option, "a number from 0 on");
        }
        return seed;
    }

    void endpoint(const QString& option, Options& options)
    {
        if (!parseEndpoint(parser_.value(option), &options.address, &options.port)) {
            note(option, "HOST:PORT with an IP address and a port from 0 to 65535");
        }
    }

    // Of an option that may be given several times.
    template <typename Rule>
    std::vector<Rule> rules(const QString& option,
                            std::optional<Rule> (*parse)(const QString&, QString*))
    {
        std::vector<Rule> rules;
        for (const QString& text : parser_.values(option)) {
            QString why;
            const std::optional<Rule> rule = parse(text, &why);
            if (rule) {
                rules.push_back(*rule);
            } else if (problem_.isEmpty()) {
                problem_ = QString("--%1: %2").arg(option, why);
            }
        }
        return rules;
    }

    std::optional<Stations> stations(const QString& option)
    {
        if (!parser_.isSet(option)) {
            return std::nullopt;
        }
        const std::optional<Stations> stations = parseStations(parser_.value(option));
        if (!stations) {
            note(option, "a list of stations from 0 to 255, like 1,2 or 1-4");
        }
        return stations;
    }

    int perSecond(const QString& option)
    {
        if (!parser_.isSet(option)) {
            return 0;
        }
        bool isNumber = false;
        const int number = parser_.value(option).toInt(&isNumber);
        if (!isNumber || number < 1 || number > kMostPerSecond) {
            note(option, QString("a number of requests from 1 to %1").arg(kMostPerSecond));
        }
        return number;
    }

    capture::CaptureOptions capture()
    {
        capture::CaptureOptions capture;
        capture.file = parser_.value("capture").toLocal8Bit().toStdString();
        for (const char* option : {"capture", "capture-limit", "capture-files"}) {
            if (parser_.isSet(option) && capture.file.empty()) {
                complain(option, "the capture's file is missing");
            }
        }
        if (parser_.isSet("capture-files") && !parser_.isSet("capture-limit")) {
            complain("capture-files", "divides a limit, so --capture-limit is needed");
        }
        if (!parser_.isSet("capture-limit")) {
            return capture;
        }
        const auto mib = static_cast<std::uint64_t>(from1To("capture-limit", kMostMiB));
        capture.limitBytes = mib << 20;
        capture.files = from1To("capture-files", capture::CaptureOptions::kMostFiles);
        const std::string ring = capture::checkRing(capture);
        if (!ring.empty()) {
            complain("capture-files", QString::fromStdString(ring));
        }
        return capture;
    }

    // Of two words: true for the second one.
    bool isSecond(const QString& option, const QString& first, const QString& second)
    {
        const QString word = parser_.value(option);
        if (word != first && word != second) {
            note(option, QString("%1 or %2").arg(first, second));
        }
        return word == second;
    }

private:
    int from1To(const QString& option, int most)
    {
        bool isNumber = false;
        const int number = parser_.value(option).toInt(&isNumber);
        if (!isNumber || number < 1 || number > most) {
            note(option, QString("a whole number from 1 to %1").arg(most));
        }
        return number;
    }

    void note(const QString& option, const QString& wanted)
    {
        complain(option, QString("\"%1\" is not %2").arg(parser_.value(option), wanted));
    }

    void complain(const QString& option, const QString& why)
    {
        if (problem_.isEmpty()) {
            problem_ = QString("--%1: %2").arg(option, why);
        }
    }

    const QCommandLineParser& parser_;
    QString& problem_;
};

void addOptions(QCommandLineParser& parser)
{
    const auto add = [&parser](const char* name, const char* text, const char* value,
                               const QString& standard) {
        QString help = text;
        if (!standard.isEmpty()) {
            help += QString(" Default: %1.").arg(standard);
        }
        parser.addOption(QCommandLineOption(name, help, value, standard));
    };
    const Options standard;
    add("listen", "Where to listen; port 0 takes any free one.", "HOST:PORT",
        endpointText(standard.address, standard.port));
    add("project", "Project file with names, initial values and signals.", "FILE", {});
    add("fault", "A fault, see above.", "RULE", {});
    add("seed", "Seed of the faults.", "N", QString::number(standard.seed));
    add("delay-ms", "How long a delayed reply waits.", "MS", QString::number(standard.delayMs));
    add("late-ms", "How long a late reply waits.", "MS", QString::number(standard.lateMs));
    add("refuse-ms", "How long connections are refused.", "MS", QString::number(standard.refuseMs));
    add("refuse",
        "An address that the controller lacks: requests that touch it are answered with exception "
        "CODE. CLASS:FROM-TO=CODE with bit addresses, CLASS one of bit, word, dword, any; or an "
        "address of the project, ADDRESS=CODE. May be given several times.",
        "RULE", {});
    add("stations", "The stations that are there, like 1,2 or 1-4; all when left out.", "LIST", {});
    add("unknown-stations",
        "How requests to others are answered: refuse, with exception 11, or silent.", "HOW",
        "refuse");
    add("max-rate", "How many requests are served in a second, of all clients together.", "N", {});
    add("over-rate",
        "What becomes of those above it: refuse, with exception 6, or delay, until there is room.",
        "HOW", "refuse");
    add("capture", "Write every byte that comes and goes into FILE, as a pcapng capture.", "FILE",
        {});
    add("capture-limit",
        "Keep so many MiB of it at most, in a ring of files FILE_00001 ...: the oldest go.", "MIB",
        {});
    add("capture-files", "Divide the limit into so many files.", "N",
        QString::number(capture::CaptureOptions::kUsualFiles));
    add("check-host",
        "Judge the host that connects: play the situations of the file one after the other, say "
        "which rules it kept and which not, and end. Faults are the file's then.",
        "SCRIPT", {});
    add("json", "With --check-host: the verdicts as JSON, too.", "FILE", {});
    parser.addOption(QCommandLineOption("trace", "Print each frame, decoded, with its time."));
}

void takeCheck(const QCommandLineParser& parser, CommandLine& line)
{
    line.options.checkScript = parser.value("check-host");
    line.options.reportFile = parser.value("json");
    if (!line.problem.isEmpty()) {
        return;
    }
    for (const char* file : {"check-host", "json"}) {
        if (parser.isSet(file) && parser.value(file).isEmpty()) {
            line.problem = QString("--%1: a file name is missing").arg(file);
            return;
        }
    }
    if (parser.isSet("json") && !parser.isSet("check-host")) {
        line.problem = "--json: only the verdicts of --check-host are printed so";
    }
    for (const char* other : {"fault", "max-rate"}) {
        if (parser.isSet("check-host") && parser.isSet(other)) {
            line.problem = QString("--%1: what is played to a host that is judged, its script says")
                               .arg(other);
        }
    }
}

} // namespace

CommandLine parseCommandLine(const QStringList& arguments)
{
    CommandLine line;
    QCommandLineParser parser;
    parser.setApplicationDescription(description());
    const QCommandLineOption help({"h", "help"}, "Print this and end.");
    parser.addOption(help);
    const QCommandLineOption version({"v", "version"}, "Print the version and end.");
    parser.addOption(version);
    addOptions(parser);
    if (!parser.parse(arguments)) {
        line.problem = parser.errorText();
        return line;
    }
    if (parser.isSet(help)) {
        line.printOnly = parser.helpText();
        return line;
    }
    if (parser.isSet(version)) {
        line.printOnly = "tavmir-controller " TAVMIR_VERSION "\n";
        return line;
    }
    if (!parser.positionalArguments().isEmpty()) {
        line.problem =
            QString("unexpected argument \"%1\"").arg(parser.positionalArguments().first());
        return line;
    }
    Values values(parser, line.problem);
    values.endpoint("listen", line.options);
    line.options.projectFile = parser.value("project");
    if (parser.isSet("project") && line.options.projectFile.isEmpty()) {
        line.problem = "--project: a file name is missing";
    }
    line.options.capture = values.capture();
    line.options.trace = parser.isSet("trace");
    takeCheck(parser, line);
    line.options.faults = values.rules("fault", parseFaultRule);
    line.options.seed = values.seed("seed");
    line.options.delayMs = values.milliseconds("delay-ms");
    line.options.lateMs = values.milliseconds("late-ms");
    line.options.refuseMs = values.milliseconds("refuse-ms");
    line.options.refused = values.rules("refuse", parseRefuseRule);
    line.options.admission.stations = values.stations("stations");
    line.options.admission.silentForOthers =
        values.isSecond("unknown-stations", "refuse", "silent");
    line.options.admission.mostRequestsPerSecond = values.perSecond("max-rate");
    line.options.admission.delaysAboveRate = values.isSecond("over-rate", "refuse", "delay");
    return line;
}

bool parseEndpoint(const QString& text, QHostAddress* address, quint16* port)
{
    wire::Endpoint endpoint;
    if (!wire::parseEndpoint(text.toStdString(), 0, endpoint)) {
        return false;
    }
    const QHostAddress parsed = endpoint.host == "localhost"
                                    ? QHostAddress(QHostAddress::LocalHost)
                                    : QHostAddress(QString::fromStdString(endpoint.host));
    if (parsed.isNull()) {
        return false;
    }
    *address = parsed;
    *port = static_cast<quint16>(endpoint.port);
    return true;
}

QString endpointText(const QHostAddress& address, quint16 port)
{
    return QString::fromStdString(wire::endpointText(address.toString().toStdString(), port));
}

} // namespace tavmir::controller
