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

bool loadProject(const QString& fileName, Simulation& simulation)
{
    const project::ReadOutcome outcome = project::readProjectFile(fileName);
    QString problem = outcome.error;
    if (outcome.project && simulation.load(*outcome.project, &problem)) {
        return true;
    }
    logLine(outcome.project ? QString("%1: %2").arg(fileName, problem) : problem);
    return false;
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
    if (!options.projectFile.isEmpty() && !loadProject(options.projectFile, simulation)) {
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
