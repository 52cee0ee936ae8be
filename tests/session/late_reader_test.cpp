// A reader that comes while a request is on its way.
#include "link/test_server.h"
#include "project/project_reader.h"
#include "session/host_session.h"
#include "support/driver_file.h"
#include "support/wait_until.h"
#include "wire/frame_layout.h"

#include <gtest/gtest.h>

namespace tavmir::host
{

namespace
{

constexpr char kOneWord[] = R"("labels": [ { "name": "M", "variables": [
    { "name": "w", "type": "word", "address": 3200 } ] } ], "polled": [ { "address": "M.w" } ])";

} // namespace

TEST(LateReader, IsToldNoExchangeWhoseBytesNobodyKept)
{
    std::atomic<int> held{0}; // the number of the request that waits for the reader
    std::atomic<bool> readerIsThere{false};
    TestServer server([&](TestServer::Client& client, const QByteArray& request, int number) {
        if (number == 5) {
            held = number;
            test::waitUntil([&] { return readerIsThere.load(); });
        }
        client.send(goodReply(request, 0x1234));
    });
    const project::ReadOutcome project =
        project::readProject(R"({ "connection": { "replyTimeoutMs": 60000, "port": )" +
                                 QByteArray::number(server.port()) + " }, " + kOneWord + " }",
                             "late.json");
    ASSERT_TRUE(project.project) << project.error.toStdString();
    QStringList problems;
    std::unique_ptr<Driver> driver = Driver::load(test::driverFile(TAVMIR_DRIVER), problems);
    ASSERT_TRUE(driver) << problems.join('\n').toStdString();
    HostSession session(std::move(driver), *project.project, SessionOptions());
    ASSERT_EQ("", session.setUp().toStdString());
    const WallClock::time_point start = WallClock::now();
    session.start();
    ASSERT_TRUE(test::waitUntil([&] { return held > 0; }));
    const auto reader = session.feed().subscribe();
    readerIsThere = true;
    int exchanges = 0;
    const auto take = [&](const FeedEntry& entry) {
        if (entry.kind != FeedKind::exchange || entry.exchange.end != ExchangeEnd::reply) {
            return;
        }
        ++exchanges;
        const Exchange& exchange = entry.exchange;
        EXPECT_EQ(13u, exchange.requestSize);
        EXPECT_EQ('f', exchange.request[wire::kFunctionOffset]);
        EXPECT_EQ(1, exchange.request[wire::kCountOffset]);
        EXPECT_EQ(wire::bigEndian16(exchange.request), wire::bigEndian16(exchange.reply));
        EXPECT_EQ(0x1234, wire::bigEndian16(exchange.reply + 13));
        EXPECT_GE(exchange.endedWall, start);
        EXPECT_EQ(exchange.endedWall, entry.wall);
    };
    EXPECT_TRUE(test::waitUntil([&] {
        reader->read(take);
        return exchanges >= 3;
    }));
    session.stop();
}

} // namespace tavmir::host
