// Starting, listening and ending.
#include "running_page.h"

#include "support/wait_until.h"

#include <sys/resource.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <thread>
#include <vector>

namespace tavmir::page
{

namespace
{

using test::waitUntil;
using PageServerTest = RunningPage;

TEST_F(PageServerTest, UrlHasAddressPortAndToken)
{
    const unsigned short port = start();
    EXPECT_NE(port, 0);
    EXPECT_EQ(server->url(), "http://127.0.0.1:" + std::to_string(port) + "/#token=" + kToken);
}

TEST_F(PageServerTest, MakesATokenWhenNoneIsGiven)
{
    options.token = "";
    start();
    EXPECT_EQ(server->token().size(), 32U);
    TestClient client(server->port());
    EXPECT_EQ(client.get("/api/v1/status").status, 401);
    EXPECT_EQ(
        client.get("/api/v1/status", "Authorization: Bearer " + server->token() + "\r\n").status,
        200);
}

TEST_F(PageServerTest, TakenPortIsAProblemInOneLine)
{
    options.port = start();
    PageServer second(content, options);
    std::string problem;
    EXPECT_FALSE(second.start(problem));
    EXPECT_EQ(problem, "127.0.0.1:" + std::to_string(options.port) +
                           " cannot be listened on: Address already in use");
}

TEST_F(PageServerTest, AddressThatIsNotThisMachinesIsAProblem)
{
    options.address = "192.0.2.1";
    PageServer other(content, options);
    std::string problem;
    EXPECT_FALSE(other.start(problem));
    EXPECT_EQ(problem, "192.0.2.1:0 cannot be listened on: Cannot assign requested address");
}

TEST_F(PageServerTest, NothingListensBeyondThisMachineThatIsWritable)
{
    options.isWritable = true;
    options.port = start();
    for (const char* address : {"0.0.0.0", "::", "192.0.2.1"}) {
        options.address = address;
        PageServer other(content, options);
        std::string problem;
        EXPECT_FALSE(other.start(problem)) << address;
        EXPECT_NE(std::string::npos, problem.find("is beyond this machine"))
            << problem << ": whether the port is free must not have been looked at";
    }
}

TEST_F(PageServerTest, TheContentKeepsUpWhenNobodyListens)
{
    limits().lookUnheard = std::chrono::hours(1);
    start();
    EXPECT_TRUE(waitUntil([&] { return content.keptUp() >= 5; }));
    EXPECT_LE(content.looks(), 1);
}

TEST_F(PageServerTest, ThePollingGoesFirst)
{
    limits().lookUnheard = limits().lookEvery;
    const int own = getpriority(PRIO_PROCESS, 0);
    start();
    ASSERT_TRUE(waitUntil([&] { return content.looks() >= 1; }));
    EXPECT_EQ(std::min(own + 5, 19), content.niceness());
    EXPECT_EQ(own, getpriority(PRIO_PROCESS, 0)) << "the thread that started it stays as it is";
}

TEST_F(PageServerTest, ThePortIsFreeAgainAfterwards)
{
    options.port = start();
    TestClient client(options.port);
    EXPECT_EQ(client.get("/").status, 200);
    server->stop();
    PageServer second(content, options);
    std::string problem;
    EXPECT_TRUE(second.start(problem)) << problem;
}

TEST_F(PageServerTest, WithoutWritesItListensEverywhere)
{
    options.address = "0.0.0.0";
    start();
    TestClient client(server->port());
    EXPECT_EQ(client.get("/").status, 200);
}

TEST_F(PageServerTest, ListensOnTheOtherLoopbackToo)
{
    options.address = "::1";
    server = std::make_unique<PageServer>(content, options);
    std::string problem;
    if (!server->start(problem)) {
        GTEST_SKIP() << problem;
    }
    EXPECT_EQ(server->url().rfind("http://[::1]:", 0), 0U);
}

TEST_F(PageServerTest, EndTellsLiveClients)
{
    TestClient client(start());
    ASSERT_EQ(client.goLive(), 101);
    client.sendFrame(1, kGreeting);
    ASSERT_EQ(client.message(), "snapshot 1");
    std::thread stopper([this] { server->stop(); });
    Frame last;
    while ((last = client.frame()).kind == 1) {
    }
    EXPECT_EQ(last.closeCode(), 1001);
    client.sendFrame(8, last.payload);
    EXPECT_TRUE(client.isEnded());
    client.vanish(); // as a browser does then: the end waits for nobody else
    stopper.join();
}

// Clients of every kind, none of which helps: the end comes by itself.
TEST_F(PageServerTest, EndDoesNotWaitForClients)
{
    limits().closeTime = kSoon;
    content.setPadding(3000000);
    const unsigned short port = start();
    TestClient silent(port);
    TestClient halfway(port);
    halfway.send("POST /api/v1/write HTTP/1.1\r\nHost: ");
    TestClient waiting(port);
    waiting.send("POST /api/v1/later HTTP/1.1\r\nHost: " + waiting.host() + "\r\n" + kBearerJson +
                 "Content-Length: 2\r\n\r\n{}");
    TestClient idle(port);
    EXPECT_EQ(idle.get("/").status, 200);
    TestClient deaf(port, 4096);
    ASSERT_EQ(deaf.goLive(), 101);
    deaf.sendFrame(1, kGreeting);
    TestClient slow(port, 4096);
    slow.send("GET /api/v1/long?bytes=9000000 HTTP/1.1\r\nHost: " + slow.host() + "\r\n" + kBearer +
              "\r\n");
    PageContent::Done done;
    ASSERT_TRUE(waitUntil([&] { return (done = content.takeWaiting()) != nullptr; }));
    ASSERT_TRUE(waitUntil([&] { return server->clients() == 6 && content.snapshots() == 1; }));
    std::atomic<bool> hasEnded{false};
    std::thread stopper([&] {
        server->stop();
        hasEnded = true;
    });
    EXPECT_TRUE(waitUntil([&] { return hasEnded.load(); }));
    if (!hasEnded) {
        deaf.vanish(); // or this test would have no end either
        slow.vanish();
    }
    stopper.join();
    EXPECT_EQ(server->clients(), 0);
    for (TestClient* client : {&silent, &halfway, &waiting, &idle, &deaf, &slow}) {
        EXPECT_TRUE(client->isEnded());
    }
    const int looks = content.looks();
    done(Answer()); // nobody is there any more
    server->stop();
    EXPECT_EQ(content.looks(), looks);
}

TEST_F(PageServerTest, AnswerMayComeWhenTheServerIsGone)
{
    PageContent::Done done;
    {
        TestClient client(start());
        client.send("POST /api/v1/later HTTP/1.1\r\nHost: " + client.host() + "\r\n" + kBearerJson +
                    "\r\n");
        ASSERT_TRUE(waitUntil([&] { return (done = content.takeWaiting()) != nullptr; }));
        server.reset();
    }
    done(Answer());
    SUCCEED();
}

TEST_F(PageServerTest, ContentIsCalledByOneThread)
{
    const unsigned short port = start();
    for (int i = 0; i < 4; ++i) {
        TestClient client(port);
        EXPECT_EQ(client.get("/api/v1/status", kBearer).status, 200);
        EXPECT_EQ(client.post("/api/v1/write", "{}", kBearerJson).status, 200);
    }
    EXPECT_TRUE(content.wasCalledByOneThread());
}

TEST_F(PageServerTest, ContentLooksRarelyWhileNobodyListens)
{
    limits().lookUnheard = std::chrono::hours(1);
    TestClient client(start());
    EXPECT_EQ(client.get("/api/v1/status", kBearer).status, 200);
    ASSERT_EQ(client.goLive(), 101);
    const int before = content.looks();
    EXPECT_LE(before, 1);
    client.sendFrame(1, kGreeting);
    EXPECT_TRUE(waitUntil([&] { return content.looks() > before + 10; }));
}

// All descriptors of this process that are left, but a few.
class Hoard
{
public:
    Hoard()
    {
        ::getrlimit(RLIMIT_NOFILE, &before_);
        rlimit low = before_;
        low.rlim_cur = 256;
        ::setrlimit(RLIMIT_NOFILE, &low);
        int taken = 0;
        while ((taken = ::dup(0)) >= 0) {
            taken_.push_back(taken);
        }
    }
    ~Hoard() { release(); }
    Hoard(const Hoard&) = delete;
    Hoard& operator=(const Hoard&) = delete;

    void leave(int count)
    {
        for (; count > 0; --count) {
            ::close(taken_.back());
            taken_.pop_back();
        }
    }
    void release()
    {
        leave(static_cast<int>(taken_.size()));
        ::setrlimit(RLIMIT_NOFILE, &before_);
    }

private:
    rlimit before_{};
    std::vector<int> taken_;
};

TEST_F(PageServerTest, WithoutDescriptorsAcceptingPausesAndGoesOn)
{
    if (TAVMIR_LOOKS_THROUGH_PIPES) {
        GTEST_SKIP() << "the sanitizer needs descriptors of its own";
    }
    limits().acceptPause = std::chrono::milliseconds(500);
    limits().lookUnheard = limits().lookEvery;
    const unsigned short port = start();
    Hoard hoard;
    hoard.leave(1);
    TestClient client(port); // the system connects it; the server has no descriptor for it
    const auto connected = std::chrono::steady_clock::now();
    const int looks = content.looks();
    ASSERT_TRUE(waitUntil([&] { return content.looks() > looks + 5; })); // it has tried by now
    hoard.release();
    EXPECT_EQ(client.get("/").status, 200);
    EXPECT_GE(std::chrono::steady_clock::now() - connected, std::chrono::milliseconds(450));
}

} // namespace

} // namespace tavmir::page
