// This driver, loaded and driven by the reference host's own communication loop.
#include "capture/feed_capture_thread.h"
#include "driver/driver_loader.h"
#include "feed/line_figures.h"
#include "feed/value_fold.h"
#include "host/trace_output.h"
#include "session/cycle_thread.h"
#include "side_by_side/client.h"
#include "side_by_side/page_reader.h"
#include "support/label_records.h"

#include <QtCore/QTemporaryDir>

#include <cstdio>
#include <cstdlib>
#include <thread>

namespace tavmir
{
namespace bench
{

namespace
{

const int kBitsApart[] = {32, 16}; // by Layout
const char* const kLabels[] = {"Scattered", "Contiguous"};

[[noreturn]] void fail(const char* why)
{
    std::fprintf(stderr, "this driver: %s\n", why);
    std::exit(1);
}

Label_Type_Info labelOf(Layout layout)
{
    const auto which = static_cast<size_t>(layout);
    QList<Label_Type_Info> words;
    for (int i = 0; i < kValues; ++i) {
        words << variable(variableName(i), kWord, i * kBitsApart[which]);
    }
    return label(QString::fromLatin1(kLabels[which]), words);
}

// The driver is loaded once, for both clients: it keeps its lists and caches.
struct LoadedDriver {
    LoadedDriver()
    {
        QStringList problems;
        driver = host::Driver::load(TAVMIR_DRIVER_FILE, problems);
        if (!driver) {
            fail(qPrintable(problems.join('\n')));
        }
        const host::DriverApi& api = driver->api();
        api.setComInfo(&connection);
        host::DriverEvents::receiveInto(nullptr);
        QList<Label_Type_Info> labels;
        labels << labelOf(Layout::scattered) << labelOf(Layout::contiguous);
        api.passLabels(&labels);
    }

    static LoadedDriver& instance()
    {
        static LoadedDriver loaded;
        return loaded;
    }

    ComInfo connection = {};
    std::unique_ptr<host::Driver> driver;
};

// A reader of the feed as a run has one: it folds values and figures, fifty times a second.
class FoldingReader
{
public:
    explicit FoldingReader(host::Feed& feed)
        : reader_(feed.subscribe()), thread_([this] { loop(); })
    {
    }
    ~FoldingReader() { end(); }

    // What it missed, in entries.
    quint64 end()
    {
        if (thread_.joinable()) {
            ended_ = true;
            thread_.join();
            look();
        }
        return figures_.missed;
    }

private:
    void loop()
    {
        while (!ended_) {
            std::this_thread::sleep_for(std::chrono::milliseconds(20));
            look();
        }
    }
    void look()
    {
        reader_->read(
            [this](const host::FeedEntry& entry) {
                figures_.take(entry);
                values_.take(entry);
            },
            [this](quint64 count) { figures_.gap(count); });
    }

    std::unique_ptr<host::FeedReader> reader_;
    host::LineFigures figures_;
    host::ValueFold values_;
    std::atomic<bool> ended_{false};
    std::thread thread_;
};

class DriverClient : public Client
{
public:
    explicit DriverClient(FeedUse use)
        : use_(use), loaded_(LoadedDriver::instance()), state_(loaded_.driver->api(), 0),
          polled_(state_, false)
    {
    }

    const char* name() const override
    {
        static const char* const kNames[] = {"this driver", "this driver, its feed read",
                                             "this driver, captured", "this driver, traced",
                                             "this driver, its page open"};
        return kNames[static_cast<size_t>(use_)];
    }

    void connectTo(int port, Layout layout) override
    {
        rebuild(layout);
        host::LinkOptions link;
        link.host = "127.0.0.1";
        link.port = port;
        cycle_ = std::make_unique<host::CycleThread>(state_, polled_, link);
        if (use_ != FeedUse::none) {
            reader_ = std::make_unique<FoldingReader>(state_.feed);
        }
        if (use_ == FeedUse::captured) {
            capture_ = std::make_unique<capture::FeedCaptureThread>(state_.feed, captureFiles());
        }
        if (use_ == FeedUse::traced) {
            trace_ = std::make_unique<host::TraceOutput>(traceOptions(), project::ElementNames());
            const QString problem = trace_->open();
            if (!problem.isEmpty()) {
                fail(qPrintable(problem));
            }
            trace_->start(state_.feed);
        }
        if (use_ == FeedUse::paged) {
            page_ = std::make_unique<PageReader>(state_.feed);
        }
    }

    Done readFor(std::chrono::milliseconds duration) override
    {
        const auto before = static_cast<long>(state_.passes.elementsAsked());
        long requests = 0;
        const auto end = std::chrono::steady_clock::now() + duration;
        for (; std::chrono::steady_clock::now() < end; ++requests) {
            if (!cycle_->turn()) {
                fail("nothing to send");
            }
        }
        if (loaded_.connection.retryCount != 0 || loaded_.driver->api().context->commFailed) {
            fail("a request failed");
        }
        return {static_cast<long>(state_.passes.elementsAsked()) - before, requests};
    }

    void disconnect() override
    {
        missed_ = (page_ ? page_->end() : 0) + (reader_ ? reader_->end() : 0);
        page_.reset();
        capture_.reset();
        trace_.reset();
        reader_.reset();
        cycle_.reset();
    }

    long missed() const override { return static_cast<long>(missed_); }

private:
    void rebuild(Layout layout)
    {
        const auto which = static_cast<size_t>(layout);
        QList<HOSTVAR> vars;
        auto plan = std::make_shared<host::PolledGeneration>();
        for (int i = 0; i < kValues; ++i) {
            HOSTVAR var;
            var.addressText = QString::fromLatin1(kLabels[which]) + '.' + variableName(i);
            var.count = 1;
            vars << var;
            host::PolledElement polled;
            polled.element.addressText = var.addressText;
            polled.element.address = static_cast<quint32>(i * kBitsApart[which]);
            plan->polled.push_back(polled);
        }
        if (loaded_.driver->api().rebuildPolled(&vars) != kValues) {
            fail("the polled list is not complete");
        }
        state_.passes.restart(kValues, host::Clock::now());
        host::FeedEntry entry = host::entryNow(host::FeedKind::planChanged);
        entry.plan = plan;
        state_.feed.publish(entry);
    }

    // A ring in the folder for temporary files, as a host has one that runs for months.
    std::unique_ptr<capture::CaptureFiles> captureFiles()
    {
        if (!folder_.isValid()) {
            fail("no temporary folder");
        }
        capture::CaptureOptions options;
        options.file = folder_.filePath("bench.pcapng").toStdString();
        options.limitBytes = 64 << 20;
        auto files = std::make_unique<capture::CaptureFiles>(
            options, capture::originHere("bench", "side by side"),
            [](const std::string& problem) { fail(problem.c_str()); });
        const std::string problem = files->open();
        if (!problem.empty()) {
            fail(problem.c_str());
        }
        return files;
    }

    host::TraceOptions traceOptions() const
    {
        if (!folder_.isValid()) {
            fail("no temporary folder");
        }
        host::TraceOptions options;
        options.isOn = true;
        options.file = folder_.filePath("trace.txt");
        return options;
    }

    const FeedUse use_;
    QTemporaryDir folder_;
    LoadedDriver& loaded_;
    host::SessionState state_;
    host::SearchedList polled_; // nothing is refused here
    std::unique_ptr<host::CycleThread> cycle_;
    std::unique_ptr<FoldingReader> reader_;
    std::unique_ptr<capture::FeedCaptureThread> capture_;
    std::unique_ptr<host::TraceOutput> trace_;
    std::unique_ptr<PageReader> page_;
    quint64 missed_ = 0; // when it was disconnected last
};

} // namespace

std::unique_ptr<Client> makeDriverClient(FeedUse use)
{
    return std::make_unique<DriverClient>(use);
}

} // namespace bench
} // namespace tavmir
