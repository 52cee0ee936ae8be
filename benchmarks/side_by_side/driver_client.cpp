// This driver, loaded and driven by the reference host's own communication loop.
#include "driver/driver_loader.h"
#include "session/cycle_thread.h"
#include "side_by_side/client.h"
#include "support/plant.h"

#include <cstdio>
#include <cstdlib>

namespace tavmir
{
namespace bench
{

namespace
{

const int kBitsApart[] = {32, 16}; // by Layout
const char* const kLabels[] = {"Scattered", "Contiguous"};

Label_Type_Info labelOf(Layout layout)
{
    const auto which = static_cast<size_t>(layout);
    QList<Label_Type_Info> words;
    for (int i = 0; i < kValues; ++i)
        words << variable(variableName(i), kWord, i * kBitsApart[which]);
    return label(QString::fromLatin1(kLabels[which]), words);
}

class DriverClient : public Client
{
public:
    DriverClient()
    {
        QStringList problems;
        driver_ = host::Driver::load(QStringLiteral(TAVMIR_DRIVER_FILE), problems);
        if (!driver_)
            fail(qPrintable(problems.join(QLatin1Char('\n'))));
        const host::DriverApi& api = driver_->api();
        api.setComInfo(&connection_);
        host::DriverEvents::receiveInto(nullptr);
        QList<Label_Type_Info> labels;
        labels << labelOf(Layout::scattered) << labelOf(Layout::contiguous);
        api.passLabels(&labels);
    }

    const char* name() const override { return "this driver"; }

    void connectTo(int port, Layout layout) override
    {
        rebuild(layout);
        host::LinkOptions link;
        link.host = QStringLiteral("127.0.0.1");
        link.port = port;
        cycle_ = std::make_unique<host::CycleThread>(driver_->api(), shared_, link, 0,
                                                     [](bool, const QString&) {});
    }

    Done readFor(std::chrono::milliseconds duration) override
    {
        const host::LinkStatistics& statistics = shared_.statistics;
        const Done before = {static_cast<long>(statistics.polledElements.value()),
                             static_cast<long>(statistics.replies.value())};
        const auto end = std::chrono::steady_clock::now() + duration;
        while (std::chrono::steady_clock::now() < end) {
            if (!cycle_->turn())
                fail("nothing to send");
        }
        if (statistics.retries.value() + statistics.giveUps.value() != 0)
            fail("a request failed");
        return {static_cast<long>(statistics.polledElements.value()) - before.values,
                static_cast<long>(statistics.replies.value()) - before.requests};
    }

    void disconnect() override { cycle_.reset(); }

private:
    void rebuild(Layout layout)
    {
        const auto which = static_cast<size_t>(layout);
        QList<HOSTVAR> vars;
        std::vector<host::WireElement> order;
        for (int i = 0; i < kValues; ++i) {
            HOSTVAR var;
            var.addressText =
                QString::fromLatin1(kLabels[which]) + QLatin1Char('.') + variableName(i);
            var.count = 1;
            vars << var;
            order.push_back({host::ValueClass::words, i * kBitsApart[which]});
        }
        if (driver_->api().rebuildPolled(&vars) != kValues)
            fail("the polled list is not complete");
        shared_.ages = host::AgeTable(std::move(order));
    }

    [[noreturn]] static void fail(const char* why)
    {
        std::fprintf(stderr, "this driver: %s\n", why);
        std::exit(1);
    }

    ComInfo connection_ = {};
    std::unique_ptr<host::Driver> driver_;
    host::CycleShared shared_;
    std::unique_ptr<host::CycleThread> cycle_;
};

} // namespace

std::unique_ptr<Client> makeDriverClient()
{
    return std::make_unique<DriverClient>();
}

} // namespace bench
} // namespace tavmir
