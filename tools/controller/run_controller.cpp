#include "run_controller.h"

#include "server.h"
#include "simulation.h"

#include "project/project_reader.h"
#include "wire/stop_signal.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QElapsedTimer>
#include <QtCore/QSocketNotifier>
#include <QtCore/QTimer>

#include <cstdio>
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

} // namespace

int runController(const Options& options)
{
    Simulation simulation(FaultPlan(options.faults, options.seed));
    if (!prepare(simulation, options)) {
        return kExitBadInput;
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
    Server server(settingsOf(options), simulation);
    if (!server.listen(options.address, options.port)) {
        logLine(QString("cannot listen on %1: %2")
                    .arg(endpointText(options.address, options.port), server.errorText()));
        return kExitCannotListen;
    }
    const SignalClock signalClock(simulation);
    printLine(stdout,
              QString("listening on %1").arg(endpointText(server.address(), server.port())));
    QCoreApplication::exec();
    printLine(stdout, simulation.statistics().text().trimmed());
    return kExitDone;
}

} // namespace tavmir::controller
