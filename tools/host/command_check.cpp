// `check`: asks once for everything that the project polls, alone and as polling will.
#include "commands.h"

#include "check_report.h"
#include "complain.h"
#include "prepared_host.h"
#include "project/counted.h"
#include "until_signal.h"

namespace tavmir::host
{

namespace
{

constexpr auto kTellEvery = std::chrono::seconds(1);

// How far it is, now and then.
class ProgressLines
{
public:
    explicit ProgressLines(Console& console) : console_(console) {}

    void tell(int requests, size_t asked, size_t all)
    {
        const Clock::time_point now = Clock::now();
        if (now < last_ + kTellEvery) {
            return;
        }
        last_ = now;
        console_.say(asked == 0
                         ? "asked with " + project::counted(static_cast<quint64>(requests),
                                                            "request", "requests")
                         : QString("asked for %1 of %2 variables alone").arg(asked).arg(all));
    }

private:
    Console& console_;
    Clock::time_point last_ = Clock::now();
};

} // namespace

int checkCommand(const CommandLine& line)
{
    PreparedHost host(line);
    if (!host.readProject()) {
        return kExitBadInput;
    }
    wire::StopSignal stop;
    if (!host.openSession(ProjectCheck::sessionOptions())) {
        return kExitBadInput;
    }
    HostSession& session = host.session();
    if (session.polled().empty()) {
        complain(line.projectFile + ": nothing is polled, so there is nothing to check");
        return kExitBadInput;
    }
    Console console;
    ProgressLines progress(console);
    bool isGood = false;
    workUntilSignal(stop, session, console, [&] {
        ProjectCheck check(
            session, host.project().connection,
            [&](int requests, size_t asked, size_t all) { progress.tell(requests, asked, all); });
        session.start();
        host.awaitConnection();
        if (!session.connection().isConnected()) {
            console.complain("no connection to " + host.controller() + ": " +
                             session.connection().problem());
            return;
        }
        const std::vector<PolledElement> polled = session.polled();
        const CheckResult result = check.run();
        const CheckReport report{polled, result, findOverlaps(polled)};
        for (const QString& one : checkLines(report, line.output)) {
            console.print(one);
        }
        for (const QString& one : checkSummary(report, line.output)) {
            line.output == OutputFormat::csv ? console.say(one) : console.print(one);
        }
        isGood = isAllGood(report);
    });
    return console.finish(stop) && isGood ? kExitOk : kExitFailed;
}

} // namespace tavmir::host
