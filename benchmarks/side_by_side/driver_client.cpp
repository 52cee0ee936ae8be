// This driver, loaded and driven by the reference host's own communication loop.
#include "driver/driver_loader.h"
#include "feed/line_figures.h"
#include "feed/value_fold.h"
#include "session/cycle_thread.h"
#include "side_by_side/client.h"
#include "support/label_records.h"

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
    ~FoldingReader()
    {
        ended_ = true;
        thread_.join();
        if (figures_.missed > 0) {
            fail("the folding reader missed something");
        }
    }

private:
    void loop()
    {
        while (!ended_) {
            std::this_thread::sleep_for(std::chrono::milliseconds(20));
            reader_->read(
                [this](const host::FeedEntry& entry) {
                    figures_.take(entry);
                    values_.take(entry);
                },
                [this](quint64 count) { figures_.gap(count); });
        }
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
    explicit DriverClient(bool feedIsRead)
        : feedIsRead_(feedIsRead), loaded_(LoadedDriver::instance()),
          state_(loaded_.driver->api(), 0), polled_(state_, false)
    {
    }

    const char* name() const override
    {
        return feedIsRead_ ? "this driver, its feed read" : "this driver";
    }

    void connectTo(int port, Layout layout) override
    {
        rebuild(layout);
        host::LinkOptions link;
        link.host = "127.0.0.1";
        link.port = port;
        cycle_ = std::make_unique<host::CycleThread>(state_, polled_, link);
        if (feedIsRead_) {
            reader_ = std::make_unique<FoldingReader>(state_.feed);
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
        reader_.reset();
        cycle_.reset();
    }

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

    const bool feedIsRead_;
    LoadedDriver& loaded_;
    host::SessionState state_;
    host::SearchedList polled_; // nothing is refused here
    std::unique_ptr<host::CycleThread> cycle_;
    std::unique_ptr<FoldingReader> reader_;
};

} // namespace

std::unique_ptr<Client> makeDriverClient(bool feedIsRead)
{
    return std::make_unique<DriverClient>(feedIsRead);
}

} // namespace bench
} // namespace tavmir
