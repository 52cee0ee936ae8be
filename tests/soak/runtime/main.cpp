// tavmir-runtime-soak: the runtime against a controller on a bad line, for a time or for a number
// of faults. At the end every operation must have ended once, the controller must hold what is
// done and nothing that was refused or not sent, and nothing may have grown.
//
//   tavmir-runtime-soak [--seconds N] [--faults N] [--seed N] [--rate X] [--timeout MS]
//                       [--memory-slack KIB]
//
// It runs until both `--seconds` (60) and `--faults` (0) are reached. `--rate` scales the faults,
// `--timeout` (25) is the host's for a reply. A memory slack of 0 leaves memory unchecked
// (sanitizers keep freed memory). Exit status 0: all held; 1: findings; 2: a thread stood still.
#include "controller_thread.h"
#include "resources.h"
#include "runtime_under_test.h"
#include "support/driver_file.h"
#include "watchdog.h"

#include <QtCore/QCoreApplication>

#include <cstdio>
#include <cstdlib>

namespace
{

using namespace tavmir::soak;

constexpr int kStandstillSeconds = 30;
constexpr int kDrainSeconds = 60;
constexpr std::chrono::milliseconds kWorkBeforeTheStop{300};
// What the session keeps of an operation that nobody awaited, and of how many at most.
constexpr std::uint64_t kBytesNotAwaited = 512;
constexpr std::uint64_t kMostNotAwaited = tavmir::host::OperationTracker::kMostUnclaimed;

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
    options.line.frames = Frames::both;
    for (int i = 1; i + 1 < argc; i += 2) {
        const std::string name = argv[i];
        const char* value = argv[i + 1];
        if (name == "--seconds") {
            options.seconds = std::atol(value);
        } else if (name == "--faults") {
            options.faults = std::strtoul(value, nullptr, 10);
        } else if (name == "--seed") {
            options.line.seed = std::strtoul(value, nullptr, 10);
        } else if (name == "--rate") {
            options.line.rate = std::atof(value);
        } else if (name == "--timeout") {
            options.replyTimeoutMs = std::atoi(value);
        } else if (name == "--memory-slack") {
            options.memorySlackKiB = std::atol(value);
        }
    }
    return options;
}

// Diagnostic lines of a bad line fill a terminal; nothing is checked in them here.
void dropMessage(QtMsgType, const QMessageLogContext&, const QString&) {}

std::unique_ptr<tavmir::host::Driver> loadDriver()
{
    QStringList problems;
    std::unique_ptr<tavmir::host::Driver> driver =
        tavmir::host::Driver::load(tavmir::test::driverFile(TAVMIR_DRIVER), problems);
    if (!driver) {
        std::fprintf(stderr, "%s\n", qPrintable(problems.join('\n')));
        std::exit(1);
    }
    return driver;
}

void print(const char* when, const ControllerThread& controller)
{
    std::printf("%s: %llu faults; %s\n", when, static_cast<unsigned long long>(controller.faults()),
                Resources::now().text().c_str());
    std::fflush(stdout);
}

// False when a thread stood still.
bool workUntilDone(const Options& options, const RuntimeUnderTest& runtime,
                   const ControllerThread& controller, Resources& warm)
{
    Watchdog watchdog([&] { return runtime.progress(); }, kStandstillSeconds);
    const long warmUp = std::max(2L, std::min(30L, options.seconds / 4));
    for (long second = 0; second < options.seconds || controller.faults() < options.faults;
         ++second) {
        std::this_thread::sleep_for(std::chrono::seconds(1));
        if (second == warmUp) {
            warm = Resources::now();
        }
        if (!watchdog.look()) {
            return false;
        }
        if (second % 60 == 59) {
            print("so far", controller);
        }
    }
    return true;
}

// On a quiet line everything that is under way comes to its end.
bool drain(const Books& books)
{
    for (int i = 0; i < 10 * kDrainSeconds && books.open() > 0; ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
    }
    return books.open() == 0;
}

long slackFor(const Options& options, const Books& books)
{
    if (options.memorySlackKiB == 0) {
        return 0;
    }
    const std::uint64_t notAwaited = books.answers(OperationKind::write).notAwaited +
                                     books.answers(OperationKind::read).notAwaited;
    const std::uint64_t kept = std::min(notAwaited, kMostNotAwaited) * kBytesNotAwaited / 1024;
    return options.memorySlackKiB + static_cast<long>(kept);
}

int verdict(const Books& books)
{
    const std::vector<std::string> findings = books.findings();
    for (const std::string& finding : findings) {
        std::printf("finding: %s\n", finding.c_str());
    }
    std::printf("%s\n", findings.empty() ? "all held" : "NOT all held");
    return findings.empty() ? 0 : 1;
}

void printFigures(const tavmir::host::LineFigures& figures)
{
    const auto number = [](quint64 count) { return static_cast<unsigned long long>(count); };
    std::printf("%llu requests, %llu retries, %llu time-outs, %llu give-ups, %llu exceptions, "
                "%llu connections, %llu lost, %llu broken streams, %llu frames discarded\n",
                number(figures.requests), number(figures.retries), number(figures.timeouts),
                number(figures.giveUps), number(figures.exceptions), number(figures.connects),
                number(figures.lostConnections), number(figures.brokenStreams),
                number(figures.discarded));
}

} // namespace

int main(int argc, char** argv)
{
    const Options options = optionsFrom(argc, argv);
    const QCoreApplication application(argc, argv);
    qInstallMessageHandler(dropMessage);

    Plant plant(options.replyTimeoutMs);
    Books books(plant);
    tavmir::controller::ServerSettings settings;
    settings.delayMs = options.replyTimeoutMs * 2;
    settings.lateMs = options.replyTimeoutMs * 3;
    settings.refuseMs = 60;
    const auto prepare = [&](tavmir::controller::Simulation& simulation) {
        plant.makeRoom(simulation.memory());
        simulation.watch([&books](const auto& outcome) { books.seen(outcome); });
    };
    ControllerThread controller(options.line, settings, prepare, plant.pages());
    if (controller.port() < 1) {
        std::fprintf(stderr, "tavmir-runtime-soak: cannot listen\n");
        return 1;
    }
    plant.setPort(controller.port());
    RuntimeUnderTest runtime(plant, books, loadDriver(), options.line.seed);
    runtime.start();
    Resources warm = Resources::now();
    if (!workUntilDone(options, runtime, controller, warm)) {
        std::fflush(stdout);
        std::_Exit(2); // the threads that stand still cannot be joined
    }
    const Resources end = Resources::now();
    controller.calmDown();
    runtime.stopWork();
    if (!drain(books)) {
        books.found("operations never ended on a quiet line");
    }
    // And once more, to be stopped in the middle of it.
    runtime.workAgain();
    std::this_thread::sleep_for(kWorkBeforeTheStop);
    runtime.stopSession();
    std::this_thread::sleep_for(kWorkBeforeTheStop);
    runtime.stopWork();
    runtime.stopReading();
    controller.stop();
    const std::string grown = growth(warm, end, slackFor(options, books));
    if (!grown.empty()) {
        books.found(grown);
    }
    books.close(runtime.figures(), controller.simulation().memory());
    std::printf("%llu faults, %llu changes of what is polled\n",
                static_cast<unsigned long long>(controller.faults()),
                static_cast<unsigned long long>(runtime.polls()));
    printFigures(runtime.figures());
    std::printf("%swarmed up: %s\nat the end: %s\n", books.text().c_str(), warm.text().c_str(),
                end.text().c_str());
    return verdict(books);
}
