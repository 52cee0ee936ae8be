// `run`: polls, shows the values live, and takes reads and writes from standard input.
#include "commands.h"

#include "complain.h"
#include "operator_input.h"
#include "page_output.h"
#include "prepared_host.h"
#include "recording_report.h"
#include "refused_report.h"
#include "run_monitor.h"
#include "statistics_report.h"

#include <unistd.h>

#include <mutex>

namespace tavmir::host
{

namespace
{

constexpr int kLookMs = 20; // the feed keeps what happens meanwhile
constexpr auto kQualitiesEach = std::chrono::milliseconds(200);

// What operator and driver's reports say, for the thread that shows it.
class Messages
{
public:
    void add(const QString& text)
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        waiting_ << text;
    }

    void tell(RunView& view)
    {
        QStringList texts;
        {
            const std::lock_guard<std::mutex> lock(mutex_);
            texts.swap(waiting_);
        }
        for (const QString& text : texts) {
            view.message(text);
        }
    }

private:
    std::mutex mutex_;
    QStringList waiting_;
};

int msUntil(Clock::time_point time)
{
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(time - Clock::now()).count();
    return static_cast<int>(
        std::min<decltype(left + 0)>(std::max<decltype(left + 0)>(0, left), kLookMs));
}

class Run
{
public:
    Run(const CommandLine& line, PreparedHost& host, wire::StopSignal& stop, Console& console,
        PageOutput& page)
        : line_(line), host_(host), stop_(stop), console_(console), page_(page),
          view_(makeRunView(line.output, line.everyChange || isTraceOnTerminal(line.trace),
                            line.commandsFromInput, console)),
          monitor_(host.session().feed(), {line.staleAfterMs, host.controller()}, *view_,
                   line.everyChange)
    {
    }

    // False when a write was not done, there never was a connection, or standard output could not
    // be written.
    bool run()
    {
        HostSession& session = host_.session();
        const Clock::time_point start = Clock::now();
        host_.startCapture([this](const QString& text) { messages_.add(text); });
        host_.startRecording([this](const QString& text) {
            messages_.add(text);
            page_.tellStorage(text);
        });
        session.start();
        tellPage();
        bool allWritten = true;
        {
            std::unique_ptr<OperatorInput> commands;
            if (line_.commandsFromInput) {
                const int typed = view_->commands();
                commands = std::make_unique<OperatorInput>(
                    typed < 0 ? STDIN_FILENO : typed, host_,
                    [this](const QString& text) { messages_.add(text); });
            }
            showUntilTheEnd(start);
            view_->leave(); // before anything that takes time, or a second signal
            if (commands) {
                commands->stop();
            }
            host_.closeSession(); // ends what operator and page still wait for
            page_.close();
            allWritten = !commands || commands->finish();
        }
        host_.stopCapture();
        host_.stopRecording();
        look();
        const double seconds = std::chrono::duration<double>(Clock::now() - start).count();
        const size_t elements = session.polledElementsOnWire();
        QJsonObject json = statisticsJson(monitor_.figures(), seconds, elements);
        json.insert("refusedVariables", refusedJson(monitor_.refused()));
        json.insert("recording", recordingJson(host_.recording()));
        view_->close(statisticsLines(monitor_.figures(), seconds, elements) +
                         refusedLines(monitor_.refused()) + recordingLines(host_.recording()),
                     json);
        return console_.finishSoon() && allWritten && monitor_.wasConnected();
    }

private:
    void addIfAny(const QString& problem)
    {
        if (!problem.isEmpty()) {
            messages_.add(problem);
        }
    }

    // Where the page is, once and alone on a line: among the messages of a table that stays in its
    // place; beside a format that programs read.
    void tellPage()
    {
        const QString url = page_.url();
        if (url.isNull()) {
            return;
        }
        if (view_->staysInPlace()) {
            messages_.add(url);
        } else if (line_.output == OutputFormat::table) {
            console_.print(url);
        } else {
            console_.say(url);
        }
        addIfAny(page_.openBrowser());
    }

    // False: the run is to end.
    bool look()
    {
        monitor_.look();
        addIfAny(host_.takeTraceProblem());
        addIfAny(page_.takeProblem());
        messages_.tell(*view_);
        return view_->look();
    }

    void showUntilTheEnd(Clock::time_point start)
    {
        const bool endless = line_.durationMs < 0;
        const Deadline end(start, std::max(0, line_.durationMs));
        const auto interval = std::chrono::milliseconds(line_.intervalMs);
        Clock::time_point next = start + interval;
        Clock::time_point nextQualities = start + kQualitiesEach;
        bool shown = line_.everyChange;
        for (;;) {
            const Clock::time_point wake = endless ? next : std::min(next, end.end());
            const bool stopped = stop_.waitMs(msUntil(wake)) || console_.isBroken();
            const bool goesOn = look() && !stopped;
            const Clock::time_point now = Clock::now();
            if (line_.everyChange && now >= nextQualities) {
                monitor_.tellQualities(now);
                nextQualities = now + kQualitiesEach;
            }
            if (!line_.everyChange && now >= next) {
                monitor_.show(recordingInStrip(host_.recording()));
                shown = true;
                next = now + interval;
            }
            if (!goesOn || (!endless && now >= end.end())) {
                break;
            }
        }
        if (!shown) {
            monitor_.show(recordingInStrip(host_.recording())); // a run shorter than the interval
        }
    }

    const CommandLine& line_;
    PreparedHost& host_;
    wire::StopSignal& stop_;
    Console& console_;
    PageOutput& page_;
    std::unique_ptr<RunView> view_;
    RunMonitor monitor_;
    Messages messages_;
};

} // namespace

int runCommand(const CommandLine& line)
{
    if (line.page.isOn && !PageOutput::refusal().isEmpty()) {
        complain(PageOutput::refusal());
        return kExitBadInput;
    }
    PreparedHost host(line);
    if (!host.readProject()) {
        return kExitBadInput;
    }
    wire::StopSignal stop;
    SessionOptions options;
    options.passMs = line.passMs.value_or(host.project().connection.passMs);
    if (!host.openSession(options)) {
        return kExitBadInput;
    }
    PageOutput page(host);
    const QString noPage = page.open();
    if (!noPage.isEmpty()) {
        complain(noPage);
        return kExitBadInput;
    }
    Console console;
    Run run(line, host, stop, console, page);
    return run.run() ? kExitOk : kExitFailed;
}

} // namespace tavmir::host
