#include "run_controller.h"

#include "capture_output.h"
#include "host_check.h"
#include "server.h"
#include "simulation.h"

#include "project/project_reader.h"
#include "wire/stop_signal.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QElapsedTimer>
#include <QtCore/QFile>
#include <QtCore/QSocketNotifier>
#include <QtCore/QTimer>

#include <cstdio>
#include <memory>
#include <optional>
#include <utility>

namespace tavmir::controller
{

namespace
{

constexpr int kSignalTickMs = 20;

void printLine(FILE* stream, const QString& text)
{
    const QByteArray bytes = text.toUtf8();
    std::fprintf(stream, "%s\n", bytes.constData());
    std::fflush(stream);
}

void logLine(const QString& text)
{
    printLine(stderr, "tavmir-controller: " + text);
}

// Nothing when it cannot be read.
std::optional<project::Project> readProject(const QString& fileName)
{
    const project::ReadOutcome outcome = project::readProjectFile(fileName);
    if (!outcome.project) {
        logLine(outcome.error);
    }
    return outcome.project;
}

// project  null: there is none
bool prepare(Simulation& simulation, const Options& options, const project::Project* project)
{
    QString problem;
    if (project && !simulation.load(*project, &problem)) {
        logLine(QString("%1: %2").arg(options.projectFile, problem));
        return false;
    }
    const auto refused = refusedRanges(options.refused, project, &problem);
    if (!refused) {
        logLine("--refuse: " + problem);
        return false;
    }
    AdmissionRules rules = options.admission;
    rules.refused = *refused;
    simulation.admit(std::move(rules));
    return true;
}

bool prepare(Simulation& simulation, const Options& options)
{
    if (options.projectFile.isEmpty()) {
        return prepare(simulation, options, nullptr);
    }
    const std::optional<project::Project> project = readProject(options.projectFile);
    return project && prepare(simulation, options, &*project);
}

// Moves the signals as long as it lives.
class SignalClock : public QObject
{
public:
    explicit SignalClock(Simulation& simulation) : simulation_(simulation)
    {
        if (!simulation.hasSignals()) {
            return;
        }
        sinceStart_.start();
        connect(&tick_, &QTimer::timeout, this, [this] { advance(); });
        tick_.start(kSignalTickMs);
    }

private:
    void advance()
    {
        const bool stored = simulation_.advanceTo(sinceStart_.elapsed());
        if (!stored && !complained_) {
            logLine("the memory is full, not all signals move");
        }
        complained_ = complained_ || !stored;
    }

    Simulation& simulation_;
    QElapsedTimer sinceStart_;
    QTimer tick_;
    bool complained_ = false;
};

ServerSettings settingsOf(const Options& options)
{
    ServerSettings settings;
    settings.delayMs = options.delayMs;
    settings.lateMs = options.lateMs;
    settings.refuseMs = options.refuseMs;
    settings.log = logLine;
    if (options.trace) {
        settings.trace = [](const QString& line) { printLine(stdout, line); };
    }
    return settings;
}

// Null when its files cannot be written.
std::unique_ptr<CaptureOutput> openCapture(const Options& options)
{
    const std::string line =
        "tavmir-controller " + endpointText(options.address, options.port).toStdString();
    auto capture =
        std::make_unique<CaptureOutput>(options.capture, line, [](const std::string& text) {
            logLine(QString::fromLocal8Bit(text.c_str()));
        });
    const std::string problem = capture->open();
    if (!problem.empty()) {
        logLine(QString::fromLocal8Bit(problem.c_str()));
        capture.reset();
    }
    return capture;
}

// Nothing when it cannot be read.
std::optional<judge::Script> readScript(const QString& fileName)
{
    QFile file(fileName);
    if (!file.open(QIODevice::ReadOnly)) {
        logLine(QString("%1: %2").arg(fileName, file.errorString()));
        return std::nullopt;
    }
    const judge::ScriptOutcome outcome = judge::parseScript(file.readAll().toStdString());
    if (!outcome.script) {
        logLine(QString("%1:%2: %3")
                    .arg(fileName)
                    .arg(outcome.line)
                    .arg(QString::fromStdString(outcome.problem)));
    }
    return outcome.script;
}

bool writeReport(const QString& fileName, const std::string& text)
{
    QFile file(fileName);
    const auto size = static_cast<qint64>(text.size());
    const bool isWritten = file.open(QIODevice::WriteOnly | QIODevice::Truncate) &&
                           file.write(text.data(), size) == size && file.flush();
    if (!isWritten) {
        logLine(QString("%1: %2").arg(fileName, file.errorString()));
    }
    return isWritten;
}

// The exit status.
int tellVerdicts(const HostCheck& check, const judge::Script& script, const Options& options,
                 const Simulation& simulation)
{
    const auto describe = [&simulation](const wire::ElementInFrame* first, std::size_t count) {
        return simulation.names().describe(first, count);
    };
    const judge::Played played = check.played();
    printLine(stdout,
              QString::fromStdString(judge::reportText(check.judge(), script, played, describe))
                  .trimmed());
    if (!options.reportFile.isEmpty() &&
        !writeReport(options.reportFile,
                     judge::reportJson(check.judge(), script, played, describe))) {
        return kExitBadInput;
    }
    return judge::exitStatus(check.judge(), played);
}

} // namespace

int runController(const Options& options)
{
    std::optional<judge::Script> script;
    if (!options.checkScript.isEmpty()) {
        script = readScript(options.checkScript);
        if (!script) {
            return kExitBadInput;
        }
    }
    Simulation simulation(FaultPlan(options.faults, options.seed));
    if (!prepare(simulation, options)) {
        return kExitBadInput;
    }
    ServerSettings settings = settingsOf(options);
    std::unique_ptr<CaptureOutput> capture;
    if (!options.capture.file.empty()) {
        capture = openCapture(options);
        if (!capture) {
            return kExitBadInput;
        }
        settings.capture = capture.get();
    }
    if (!options.address.isLoopback()) {
        logLine("warning: the protocol knows no passwords; whoever reaches this "
                "address can read and write everything");
    }
    // Before the line that says "ready": whoever waits for it may stop the program at once.
    wire::StopSignal stop;
    const QSocketNotifier stopNotifier(stop.descriptor(), QSocketNotifier::Read);
    QObject::connect(&stopNotifier, &QSocketNotifier::activated, [&stop] {
        if (stop.take()) {
            QCoreApplication::quit();
        }
    });
    std::unique_ptr<HostCheck> check;
    if (script) {
        check = std::make_unique<HostCheck>(*script, logLine, [] { QCoreApplication::quit(); });
        settings.director = check.get();
    }
    Server server(settings, simulation);
    if (!server.listen(options.address, options.port)) {
        logLine(QString("cannot listen on %1: %2")
                    .arg(endpointText(options.address, options.port), server.errorText()));
        return check ? kExitNotJudged : kExitCannotListen;
    }
    const SignalClock signalClock(simulation);
    printLine(stdout,
              QString("listening on %1").arg(endpointText(server.address(), server.port())));
    if (check) {
        check->begin(server);
    }
    QCoreApplication::exec();
    if (check) {
        check->end();
        return tellVerdicts(*check, *script, options, simulation);
    }
    printLine(stdout, simulation.statistics().text().trimmed());
    return kExitDone;
}

} // namespace tavmir::controller
