// tavmir-soak: a whole host against a controller on a bad line, for a time or for a number of
// faults. At the end the books must close, the controller must hold what was reported as
// written, and nothing may have grown.
//
//   tavmir-soak [--seconds N] [--faults N] [--seed N] [--rate X] [--line half-frames]
//               [--timeout MS] [--memory-slack KIB]
//
// It runs until both `--seconds` (60) and `--faults` (0) are reached. `--rate` scales the faults,
// `--timeout` (25) is the host's for a reply. A memory slack of 0 leaves memory unchecked
// (sanitizers keep freed memory). Exit status 0: all held; 1: findings; 2: a thread stood still.
#include "controller_thread.h"
#include "host_under_test.h"
#include "resources.h"
#include "watchdog.h"

#include <QtCore/QCoreApplication>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace
{

using namespace tavmir::soak;

struct Options {
    long seconds = 60;
    unsigned long faults = 0;
    Line line;
    long memorySlackKiB = 4096;
    int replyTimeoutMs = 25;
};

Options optionsFrom(int argc, char** argv)
{
    Options options;
    for (int i = 1; i + 1 < argc; i += 2) {
        const std::string name = argv[i];
        if (name == "--seconds") {
            options.seconds = std::atol(argv[i + 1]);
        } else if (name == "--faults") {
            options.faults = std::strtoul(argv[i + 1], nullptr, 10);
        } else if (name == "--seed") {
            options.line.seed = std::strtoul(argv[i + 1], nullptr, 10);
        } else if (name == "--rate") {
            options.line.rate = std::atof(argv[i + 1]);
        } else if (name == "--line") {
            options.line.frames =
                std::strcmp(argv[i + 1], "half-frames") == 0 ? Frames::half : Frames::whole;
        } else if (name == "--memory-slack") {
            options.memorySlackKiB = std::atol(argv[i + 1]);
        } else if (name == "--timeout") {
            options.replyTimeoutMs = std::atoi(argv[i + 1]);
        }
    }
    return options;
}

// Diagnostic lines of a bad line fill a terminal; nothing is checked in them here.
void dropMessage(QtMsgType, const QMessageLogContext&, const QString&) {}

void storeConstants(tavmir::controller::Simulation& simulation)
{
    for (int i = 0; i < kElements; ++i) {
        simulation.memory().write(kStation, static_cast<std::uint32_t>(addressOf(Constants, i)), 32,
                                  constantOf(i));
    }
}

void sleepSeconds(int seconds)
{
    std::this_thread::sleep_for(std::chrono::seconds(seconds));
}

std::vector<std::string> findingsInMemory(ControllerThread& controller, const HostUnderTest& host)
{
    std::vector<std::string> findings;
    for (int i = 0; i < kAreas; ++i) {
        const auto area = static_cast<Area>(i);
        for (int index = 0; index < kElements && area != Flags; ++index) {
            const auto address = static_cast<std::uint32_t>(addressOf(area, index));
            const std::uint32_t value =
                controller.simulation().memory().read(kStation, address, bitsOf(area));
            const bool right = area == Constants ? value == constantOf(index)
                                                 : host.writes().mayBeLeft(area, index, value);
            if (!right) {
                findings.push_back("the controller holds " + std::to_string(value) +
                                   " in element " + std::to_string(index) + " of area " +
                                   std::to_string(i));
            }
        }
    }
    return findings;
}

void print(const char* name, const Figures& figures)
{
    std::printf("%s: %llu begun, %llu succeeded, %llu failed, %llu dropped with a give-up: %s\n",
                name, static_cast<unsigned long long>(figures.begun),
                static_cast<unsigned long long>(figures.succeeded),
                static_cast<unsigned long long>(figures.failed),
                static_cast<unsigned long long>(figures.dropped),
                figures.close() ? "the sum closes" : "THE SUM DOES NOT CLOSE");
}

void print(const HostUnderTest& host, const ControllerThread& controller)
{
    const auto& figures = host.figures();
    std::printf("%llu faults, %llu requests, %llu retries in time-outs, %llu lost connections, "
                "%llu give-ups, %llu values read, %llu rebuilds\n",
                static_cast<unsigned long long>(controller.faults()),
                static_cast<unsigned long long>(figures.roundTrip.count()),
                static_cast<unsigned long long>(figures.timeouts),
                static_cast<unsigned long long>(figures.lostConnections),
                static_cast<unsigned long long>(host.giveUps()),
                static_cast<unsigned long long>(host.valuesRead()),
                static_cast<unsigned long long>(host.rebuilds()));
    print("writes", host.writes().figures());
    print("one-shot reads", host.reads().figures());
}

// False when a thread stood still.
bool workUntilDone(const Options& options, HostUnderTest& host, ControllerThread& controller,
                   Resources& warm)
{
    Watchdog watchdog(
        [&] {
            std::vector<std::uint64_t> progress;
            for (int worker = 0; worker < kWorkers; ++worker) {
                progress.push_back(host.progressOf(worker));
            }
            return progress;
        },
        30);
    const long warmUp = std::max(2L, options.seconds / 4);
    for (long second = 0; second < options.seconds || controller.faults() < options.faults;
         ++second) {
        sleepSeconds(1);
        if (second == warmUp) {
            warm = Resources::now();
        }
        if (!watchdog.look()) {
            return false;
        }
        if (second % 60 == 59) {
            std::printf("after %ld s: %llu faults; %s\n", second + 1,
                        static_cast<unsigned long long>(controller.faults()),
                        Resources::now().text().c_str());
            std::fflush(stdout);
        }
    }
    return true;
}

// On a quiet line everything that is queued comes to its end.
bool drain(const HostUnderTest& host)
{
    for (int second = 0; second < 60; ++second) {
        if (host.isIdle()) {
            return true;
        }
        sleepSeconds(1);
    }
    return false;
}

int verdict(ControllerThread& controller, const HostUnderTest& host, const std::string& grown)
{
    std::vector<std::string> findings = host.findings();
    for (const std::string& finding : findingsInMemory(controller, host)) {
        findings.push_back(finding);
    }
    if (!grown.empty()) {
        findings.push_back(grown);
    }
    if (!host.writes().figures().close() || !host.reads().figures().close()) {
        findings.push_back("the books do not close");
    }
    for (const std::string& finding : findings) {
        std::printf("finding: %s\n", finding.c_str());
    }
    std::printf("%s\n", findings.empty() ? "all held" : "NOT all held");
    return findings.empty() ? 0 : 1;
}

} // namespace

int main(int argc, char** argv)
{
    const Options options = optionsFrom(argc, argv);
    const QCoreApplication application(argc, argv);
    qInstallMessageHandler(dropMessage);

    tavmir::controller::ServerSettings settings;
    settings.delayMs = options.replyTimeoutMs * 2;
    settings.lateMs = options.replyTimeoutMs * 3;
    settings.refuseMs = 60;
    ControllerThread controller(options.line, settings, storeConstants);
    if (controller.port() < 1) {
        std::fprintf(stderr, "tavmir-soak: cannot listen\n");
        return 1;
    }
    HostUnderTest host(controller.port(), options.replyTimeoutMs, options.line.seed);
    host.start();
    Resources warm = Resources::now();
    if (!workUntilDone(options, host, controller, warm)) {
        std::fflush(stdout);
        std::_Exit(2); // the threads that stand still cannot be joined
    }
    const Resources end = Resources::now();
    controller.calmDown();
    host.stopWork();
    const bool drained = drain(host);
    host.stopCycle();
    controller.stop();
    print(host, controller);
    std::printf("warmed up: %s\nat the end: %s\n", warm.text().c_str(), end.text().c_str());
    if (!drained) {
        std::printf("finding: operations never ended on a quiet line\n");
    }
    const int result = verdict(controller, host, growth(warm, end, options.memorySlackKiB));
    return drained ? result : 1;
}
