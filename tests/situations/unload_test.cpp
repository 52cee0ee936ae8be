// The driver is unloaded while a request is in flight: the host's cycle is stopped, the request
// stays unanswered, the library goes, and can be loaded again.
#include "driver/driver_loader.h"
#include "scripted_controller.h"
#include "session/cycle_thread.h"
#include "session/searched_list.h"
#include "support/driver_file.h"
#include "support/wait_until.h"

#include <gtest/gtest.h>

namespace tavmir::situations
{
namespace
{

TEST(Unload, WhileARequestIsInFlight)
{
    std::atomic<int> requests{0};
    ScriptedController controller;
    controller.start([&](Peer& peer) {
        while (!peer.request().isEmpty()) {
            ++requests;
        }
    });
    host::LinkOptions options;
    options.host = "127.0.0.1";
    options.port = controller.port();
    options.replyTimeoutMs = 60000;

    for (int loading = 1; loading <= 3; ++loading) {
        QStringList problems;
        const std::unique_ptr<host::Driver> driver =
            host::Driver::load(QString::fromLatin1(test::driverFile(TAVMIR_DRIVER_FILE)), problems);
        ASSERT_TRUE(driver) << problems.join('\n').toStdString();
        ComInfo words = {};
        words.defaultStation = 1;
        driver->api().setComInfo(&words);
        driver->api().registerCallbacks(nullptr, nullptr);
        RW_VAR polled;
        polled.dataType = 4;
        polled.elementAddress = 16;
        polled.station = 1;
        polled.count = 1;
        ASSERT_EQ(1, driver->api().addPolled(&polled)) << "a driver that nobody used before";

        host::SessionState state(driver->api(), 0);
        state.passes.restart(1, host::Clock::now());
        host::SearchedList list(state, false);
        host::CycleThread cycle(state, list, options);
        cycle.start();
        ASSERT_TRUE(test::waitUntil([&] { return requests >= loading; }));
        cycle.stop();
    }
}

} // namespace
} // namespace tavmir::situations
