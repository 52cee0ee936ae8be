// Requests and answers over a real connection, one after the other and wrong in every way.
#include "running_page.h"

#include "support/wait_until.h"

#include <poll.h>

#include <vector>

namespace tavmir::page
{

namespace
{

using test::waitUntil;
using Http = RunningPage;

void expectSafe(const Reply& reply)
{
    const auto header = [&](const char* name) {
        const auto found = reply.headers.find(name);
        return found == reply.headers.end() ? "missing" : found->second;
    };
    EXPECT_EQ(header("content-security-policy"),
              "default-src 'none'; script-src 'self'; style-src 'self'; img-src 'self'; "
              "connect-src 'self'; base-uri 'none'; form-action 'none'; frame-ancestors 'none'");
    EXPECT_EQ(header("x-content-type-options"), "nosniff");
    EXPECT_EQ(header("referrer-policy"), "no-referrer");
    EXPECT_EQ(header("cross-origin-resource-policy"), "same-origin");
    EXPECT_EQ(header("cross-origin-opener-policy"), "same-origin");
    EXPECT_EQ(header("cache-control"), "no-store");
    EXPECT_EQ(header("access-control-allow-origin"), "missing");
    EXPECT_EQ(header("set-cookie"), "missing");
}

TEST_F(Http, FilesOfThePage)
{
    TestClient client(start());
    Reply reply = client.get("/");
    EXPECT_EQ(reply.status, 200);
    EXPECT_EQ(reply.headers["content-type"], "text/html; charset=utf-8");
    EXPECT_EQ(reply.body, "<p>page</p>");
    EXPECT_EQ(client.get("/app/main.js").body, "main();");
    EXPECT_EQ(client.get("/app/nothing.js").status, 404);
    EXPECT_EQ(client.get("/../../etc/passwd").status, 404);
}

TEST_F(Http, EveryAnswerHasTheSafeHeaders)
{
    const unsigned short port = start();
    for (const char* target : {"/", "/nothing", "/api/v1/status", "/%zz"}) {
        TestClient client(port);
        expectSafe(client.get(target));
    }
    TestClient client(port);
    expectSafe(client.get("/api/v1/status", kBearer));
    client.send("nonsense\r\n\r\n");
    expectSafe(client.reply());
}

TEST_F(Http, LiveConnectionBeginsWithTheSafeHeaders)
{
    TestClient client(start());
    client.send("GET /api/v1/live HTTP/1.1\r\nHost: " + client.host() +
                "\r\nUpgrade: websocket\r\nConnection: Upgrade\r\nSec-WebSocket-Version: 13\r\n"
                "Sec-WebSocket-Key: dGhlIHNhbXBsZSBub25jZQ==\r\n\r\n");
    const Reply reply = client.reply();
    EXPECT_EQ(reply.status, 101);
    expectSafe(reply);
}

TEST_F(Http, HeadHasEverythingButTheBody)
{
    TestClient client(start());
    client.send("HEAD / HTTP/1.1\r\nHost: " + client.host() + "\r\n\r\n");
    Reply reply = client.reply(true);
    EXPECT_EQ(reply.status, 200);
    EXPECT_EQ(reply.headers["content-length"], "11");
    EXPECT_EQ(client.get("/style.css").body, "p {}"); // nothing of a body came between
}

TEST_F(Http, OptionsAreNotAnswered)
{
    TestClient client(start());
    client.send("OPTIONS /api/v1/write HTTP/1.1\r\nHost: " + client.host() +
                "\r\nOrigin: http://evil.example\r\nAccess-Control-Request-Method: POST\r\n\r\n");
    Reply reply = client.reply();
    EXPECT_EQ(reply.status, 405);
    EXPECT_EQ(reply.headers["allow"], "GET, HEAD, POST");
    expectSafe(reply);
}

TEST_F(Http, QuestionReachesTheContentDecoded)
{
    TestClient client(start());
    EXPECT_EQ(client.get("/api/v1/status", kBearer).body, "{\"fine\":1}");
    EXPECT_EQ(client.get("/api/v1/echo?a=Main.Axis%5B1%5D&b=x+y", kBearer).body,
              "a=Main.Axis[1];b=x y;");
    EXPECT_EQ(client.get("/api/v1/unknown", kBearer).status, 404);
}

TEST_F(Http, FileIsSavedUnderItsName)
{
    TestClient client(start());
    Reply reply = client.get("/api/v1/file", kBearer);
    EXPECT_EQ(reply.headers["content-type"], "application/octet-stream");
    EXPECT_EQ(reply.headers["content-disposition"],
              "attachment; filename=\"last___minute.pcapng\"");
}

TEST_F(Http, WhatTheContentThrowsIsAnAnswer)
{
    TestClient client(start());
    EXPECT_EQ(client.get("/api/v1/broken", kBearer).status, 500);
    EXPECT_EQ(client.post("/api/v1/broken", "{}", kBearerJson).status, 500);
    EXPECT_EQ(client.get("/api/v1/status", kBearer).status, 200);
}

TEST_F(Http, MissingTokenIsRefused)
{
    TestClient client(start());
    Reply reply = client.get("/api/v1/status");
    EXPECT_EQ(reply.status, 401);
    EXPECT_EQ(reply.headers["www-authenticate"], "Bearer");
    EXPECT_EQ(client.get("/api/v1/status", kBearer).status, 200);
}

TEST_F(Http, ReboundHostIsRefused)
{
    const unsigned short port = start();
    TestClient client(port);
    client.send("GET /api/v1/status HTTP/1.1\r\nHost: evil.example:" + std::to_string(port) +
                "\r\n" + kBearer + "\r\n");
    EXPECT_EQ(client.reply().status, 421);
}

TEST_F(Http, WholeAddressOfAnotherHostIsRefused)
{
    const unsigned short port = start();
    TestClient client(port);
    EXPECT_EQ(client.get("http://evil.example/").status, 421);
    TestClient other(port);
    EXPECT_EQ(other.get("http://" + other.host() + "/").status, 200);
}

TEST_F(Http, HostMissingOrTwiceIsRefused)
{
    const unsigned short port = start();
    TestClient none(port);
    none.send("GET / HTTP/1.1\r\n\r\n");
    EXPECT_EQ(none.reply().status, 400);
    TestClient two(port);
    EXPECT_EQ(two.get("/", "Host: evil.example\r\n").status, 400);
}

TEST_F(Http, ForeignOriginGivesNoOrder)
{
    const unsigned short port = start();
    for (const char* origin : {"http://evil.example", "null"}) {
        TestClient client(port);
        EXPECT_EQ(client
                      .post("/api/v1/write", "{}",
                            std::string(kBearerJson) + "Origin: " + origin + "\r\n")
                      .status,
                  403);
    }
    TestClient own(port);
    EXPECT_EQ(own.post("/api/v1/write", "{\"a\":1}",
                       std::string(kBearerJson) + "Origin: http://" + own.host() + "\r\n")
                  .body,
              "{\"a\":1}");
}

TEST_F(Http, OrderThatIsNotJsonIsRefused)
{
    TestClient client(start());
    EXPECT_EQ(
        client.post("/api/v1/write", "{}", std::string(kBearer) + "Content-Type: text/plain\r\n")
            .status,
        415);
}

TEST_F(Http, ConnectionStaysOpenForMore)
{
    TestClient client(start());
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(client.get("/").status, 200);
        EXPECT_EQ(client.get("/nothing").status, 404);
        EXPECT_EQ(client.post("/api/v1/write", "{}", kBearerJson).status, 200);
    }
    EXPECT_EQ(client.get("/", "Connection: close\r\n").status, 200);
    EXPECT_TRUE(client.isEnded());
}

TEST_F(Http, RequestsMayComeAheadOfAnswers)
{
    TestClient client(start());
    const std::string end = " HTTP/1.1\r\nHost: " + client.host() + "\r\n" + kBearer + "\r\n";
    client.send("GET /api/v1/echo?n=1" + end + "GET /style.css" + end + "GET /api/v1/echo?n=3" +
                end);
    EXPECT_EQ(client.reply().body, "n=1;");
    EXPECT_EQ(client.reply().body, "p {}");
    EXPECT_EQ(client.reply().body, "n=3;");
}

TEST_F(Http, RequestMayComeByteByByte)
{
    TestClient client(start());
    const std::string request = "POST /api/v1/write HTTP/1.1\r\nHost: " + client.host() + "\r\n" +
                                kBearerJson + "Content-Length: 7\r\n\r\n{\"a\":1}";
    for (const char byte : request) {
        client.send(std::string(1, byte));
    }
    EXPECT_EQ(client.reply().body, "{\"a\":1}");
}

TEST_F(Http, BodyMayComeInChunks)
{
    TestClient client(start());
    client.send("POST /api/v1/write HTTP/1.1\r\nHost: " + client.host() + "\r\n" + kBearerJson +
                "Transfer-Encoding: chunked\r\n\r\n3\r\n{\"a\r\n4\r\n\":1}\r\n0\r\n\r\n");
    EXPECT_EQ(client.reply().body, "{\"a\":1}");
}

TEST_F(Http, WhoAsksFirstIsToldToGoOn)
{
    TestClient client(start());
    client.send("POST /api/v1/write HTTP/1.1\r\nHost: " + client.host() + "\r\n" + kBearerJson +
                "Content-Length: 2\r\nExpect: 100-continue\r\n\r\n");
    EXPECT_EQ(client.reply().status, 100);
    client.send("{}");
    EXPECT_EQ(client.reply().body, "{}");
}

TEST_F(Http, WhoAsksFirstAndMayNotIsToldAtOnce)
{
    TestClient client(start());
    client.send("POST /api/v1/write HTTP/1.1\r\nHost: " + client.host() + "\r\n" + kBearer +
                "Content-Type: text/plain\r\nContent-Length: 2\r\nExpect: 100-continue\r\n\r\n");
    EXPECT_EQ(client.reply().status, 415);
    EXPECT_TRUE(client.isEnded());
}

TEST_F(Http, NonsenseIsAnsweredAndEnded)
{
    const unsigned short port = start();
    for (const char* nonsense :
         {"\x16\x03\x01\x02\x01\x01\n\r\n\r\n", "GET / HTTP/9.9\r\n\r\n", "GET /\r\n\r\n",
          "GET / HTTP/1.1\r\nHost\r\n\r\n", "PRI * HTTP/2.0\r\n\r\nSM\r\n\r\n",
          "POST / HTTP/1.1\r\nContent-Length: 1\r\nContent-Length: 2\r\n\r\n",
          "POST / HTTP/1.1\r\nContent-Length: -1\r\n\r\n"}) {
        TestClient client(port);
        client.send(nonsense);
        EXPECT_EQ(client.reply().status, 400) << nonsense;
        EXPECT_TRUE(client.isEnded());
    }
}

TEST_F(Http, OrderIsAnsweredFromAnyThread)
{
    TestClient client(start());
    client.send("POST /api/v1/later HTTP/1.1\r\nHost: " + client.host() + "\r\n" + kBearerJson +
                "\r\n");
    PageContent::Done done;
    ASSERT_TRUE(waitUntil([&] { return (done = content.takeWaiting()) != nullptr; }));
    Answer answer;
    answer.body = "late";
    done(answer);
    done(answer); // one answer is enough
    EXPECT_EQ(client.reply().body, "late");
    EXPECT_EQ(client.get("/style.css").body, "p {}");
}

TEST_F(Http, OrderIsAnsweredWhenItsClientHasGone)
{
    const unsigned short port = start();
    PageContent::Done done;
    {
        TestClient client(port);
        client.send("POST /api/v1/later HTTP/1.1\r\nHost: " + client.host() + "\r\n" + kBearerJson +
                    "\r\n");
        ASSERT_TRUE(waitUntil([&] { return (done = content.takeWaiting()) != nullptr; }));
        client.vanish();
    }
    Answer answer;
    answer.body = std::string(1000000, 'x');
    done(answer);
    EXPECT_TRUE(waitUntil([&] { return server->clients() == 0; }));
    TestClient next(port);
    EXPECT_EQ(next.get("/").status, 200);
}

} // namespace

} // namespace tavmir::page
