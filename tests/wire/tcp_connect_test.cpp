// Connecting in bounded time: addresses, names whose look-up is slow or fails, and several
// addresses of which some do not answer.
#include "wire/tcp_connect.h"

#include "loopback_listener.h"
#include "support/wait_until.h"

#include <fcntl.h>
#include <netinet/tcp.h>
#include <sys/eventfd.h>

#include <gtest/gtest.h>

#include <atomic>
#include <condition_variable>
#include <thread>

namespace tavmir::wire
{

using test::LoopbackListener;

namespace
{

constexpr int kPatientMs = 60000;
constexpr int kShortMs = 50;
constexpr int kForEverMs = 3600000;
// Where an address that does not answer has its share of it, and others need theirs behind it.
constexpr int kSharedMs = 5000;

// A resolver of the test's own. Counts its calls, and answers when the test lets it.
class TestResolver
{
public:
    explicit TestResolver(HostAddresses answer) : inside_(std::make_shared<Inside>())
    {
        inside_->answer = std::move(answer);
    }

    NameLookUps::LookUp lookUp() const
    {
        return [inside = inside_](const std::string& host) { return inside->look(host); };
    }

    // Look-ups wait from now on until they are let go.
    void hold() { set(true); }
    void letGo() { set(false); }

    int calls() const { return inside_->calls; }
    int ended() const { return inside_->ended; }
    // Who still keeps it, this object not counted.
    long users() const { return inside_.use_count() - 1; }

private:
    struct Inside {
        std::mutex mutex;
        std::condition_variable changed;
        bool held = false;
        HostAddresses answer;
        std::atomic<int> calls{0};
        std::atomic<int> ended{0};

        HostAddresses look(const std::string&)
        {
            ++calls;
            std::unique_lock<std::mutex> lock(mutex);
            // A test that forgets it shall fail, not hang.
            changed.wait_for(lock, std::chrono::milliseconds(kPatientMs), [this] { return !held; });
            ++ended;
            return answer;
        }
    };

    void set(bool held)
    {
        const std::lock_guard<std::mutex> guard(inside_->mutex);
        inside_->held = held;
        inside_->changed.notify_all();
    }

    std::shared_ptr<Inside> inside_;
};

HostAddresses listOf(const std::vector<std::string>& texts)
{
    HostAddresses all;
    for (const std::string& text : texts) {
        all.found.push_back(numericAddresses(text).found.at(0));
    }
    return all;
}

HostAddresses nothing(const std::string& why)
{
    HostAddresses none;
    none.problem = why;
    return none;
}

int closedPort()
{
    return LoopbackListener().port();
}

std::string place(const char* address, int port)
{
    return std::string(address) + ":" + std::to_string(port);
}

// Closes what was opened.
struct Attempt {
    explicit Attempt(const ConnectOutcome& itsOutcome) : outcome(itsOutcome) {}
    ~Attempt()
    {
        if (outcome.descriptor >= 0) {
            ::close(outcome.descriptor);
        }
    }
    Attempt(const Attempt&) = delete;
    Attempt& operator=(const Attempt&) = delete;

    bool connected() const { return outcome.descriptor >= 0; }

    ConnectOutcome outcome;
};

// A descriptor that becomes readable.
class Wake
{
public:
    Wake() : descriptor_(::eventfd(0, EFD_CLOEXEC)) {}
    ~Wake() { ::close(descriptor_); }
    Wake(const Wake&) = delete;
    Wake& operator=(const Wake&) = delete;
    int descriptor() const { return descriptor_; }
    void wake() const { ASSERT_EQ(0, ::eventfd_write(descriptor_, 1)); }

private:
    int descriptor_;
};

// How long a call took is asserted only as "not as long as the look-up": less than half of it.
bool tookLessThanHalfOfPatience(Clock::time_point start)
{
    return Clock::now() - start < std::chrono::milliseconds(kPatientMs / 2);
}

} // namespace

TEST(TcpConnect, AddressesNeedNoLookUp)
{
    TestResolver resolver(nothing("asked"));
    NameLookUps lookUps(resolver.lookUp());
    const LoopbackListener listener;
    const Attempt attempt(connectTo("127.0.0.1", listener.port(), kPatientMs, -1, lookUps));
    EXPECT_TRUE(attempt.connected()) << attempt.outcome.problem;
    EXPECT_EQ("", attempt.outcome.problem);
    const int port = closedPort();
    EXPECT_EQ(0u, connectTo("::1", port, kPatientMs, -1, lookUps)
                      .problem.find("[::1]:" + std::to_string(port) + ": "));
    EXPECT_EQ(0, resolver.calls());
}

TEST(TcpConnect, TheSocketBlocksHoldsNothingBackAndStaysInThisProgram)
{
    const LoopbackListener listener;
    const Attempt attempt(connectTo("127.0.0.1", listener.port(), kPatientMs, -1));
    ASSERT_TRUE(attempt.connected()) << attempt.outcome.problem;
    const int socket = attempt.outcome.descriptor;
    EXPECT_EQ(0, ::fcntl(socket, F_GETFL) & O_NONBLOCK);
    EXPECT_EQ(FD_CLOEXEC, ::fcntl(socket, F_GETFD) & FD_CLOEXEC);
    int noDelay = 0;
    socklen_t size = sizeof noDelay;
    ASSERT_EQ(0, ::getsockopt(socket, IPPROTO_TCP, TCP_NODELAY, &noDelay, &size));
    EXPECT_NE(0, noDelay);
}

TEST(TcpConnect, ARefusalNamesTheAddress)
{
    const int port = closedPort();
    const ConnectOutcome outcome = connectTo("127.0.0.1", port, kPatientMs, -1);
    EXPECT_EQ(-1, outcome.descriptor);
    EXPECT_FALSE(outcome.woken);
    EXPECT_EQ(place("127.0.0.1", port) + ": Connection refused", outcome.problem);
}

TEST(TcpConnect, EndsAtItsTimeoutWhenNobodyAnswers)
{
    LoopbackListener listener;
    listener.goDeaf();
    const Clock::time_point start = Clock::now();
    const ConnectOutcome outcome = connectTo("127.0.0.1", listener.port(), kShortMs, -1);
    EXPECT_GE(Clock::now() - start, std::chrono::milliseconds(kShortMs));
    EXPECT_EQ(place("127.0.0.1", listener.port()) + ": Connection timed out", outcome.problem);
}

TEST(TcpConnect, IsWokenWhileItConnects)
{
    LoopbackListener listener;
    listener.goDeaf();
    const Wake wake;
    wake.wake();
    const Clock::time_point start = Clock::now();
    const ConnectOutcome outcome =
        connectTo("127.0.0.1", listener.port(), kForEverMs, wake.descriptor());
    EXPECT_TRUE(tookLessThanHalfOfPatience(start));
    EXPECT_TRUE(outcome.woken);
    EXPECT_EQ(-1, outcome.descriptor);
}

TEST(TcpConnect, ANameThatTheSystemKnowsIsLookedUp)
{
    const LoopbackListener listener;
    const Attempt attempt(connectTo("localhost", listener.port(), kPatientMs, -1));
    EXPECT_TRUE(attempt.connected()) << attempt.outcome.problem;
}

TEST(TcpConnect, ANameThatNobodyKnowsIsNamedWithTheReason)
{
    const ConnectOutcome outcome = connectTo("no such host.invalid", 1, kPatientMs, -1);
    EXPECT_EQ(-1, outcome.descriptor);
    const std::string start = "no such host.invalid: ";
    EXPECT_EQ(0u, outcome.problem.find(start)) << outcome.problem;
    EXPECT_GT(outcome.problem.size(), start.size());
}

TEST(TcpConnect, AFailedLookUpIsNamedWithTheReasonAndAskedAgain)
{
    TestResolver resolver(nothing("Name or service not known"));
    NameLookUps lookUps(resolver.lookUp());
    for (int i = 1; i <= 3; ++i) {
        const ConnectOutcome outcome = connectTo("plc.example", 1, kPatientMs, -1, lookUps);
        EXPECT_EQ("plc.example: Name or service not known", outcome.problem);
        EXPECT_EQ(i, resolver.calls());
    }
    TestResolver empty((HostAddresses()));
    NameLookUps others(empty.lookUp());
    EXPECT_EQ("plc.example: no address",
              connectTo("plc.example", 1, kPatientMs, -1, others).problem);
}

TEST(TcpConnect, ASlowLookUpHoldsItUpNoLongerThanTheTimeout)
{
    TestResolver resolver(listOf({"127.0.0.1"}));
    NameLookUps lookUps(resolver.lookUp());
    resolver.hold();
    const Clock::time_point start = Clock::now();
    const ConnectOutcome outcome = connectTo("plc.example", 1, kShortMs, -1, lookUps);
    EXPECT_GE(Clock::now() - start, std::chrono::milliseconds(kShortMs));
    EXPECT_TRUE(tookLessThanHalfOfPatience(start));
    EXPECT_EQ(-1, outcome.descriptor);
    EXPECT_FALSE(outcome.woken);
    EXPECT_EQ("plc.example: the name was not looked up within 50 ms", outcome.problem);
    resolver.letGo();
}

TEST(TcpConnect, IsWokenWhileANameIsLookedUp)
{
    TestResolver resolver(listOf({"127.0.0.1"}));
    NameLookUps lookUps(resolver.lookUp());
    resolver.hold();
    const Wake wake;
    const Clock::time_point start = Clock::now();
    std::thread other([&] {
        test::waitUntil([&] { return resolver.calls() == 1; });
        wake.wake();
    });
    const ConnectOutcome outcome =
        connectTo("plc.example", 1, kForEverMs, wake.descriptor(), lookUps);
    EXPECT_TRUE(tookLessThanHalfOfPatience(start));
    EXPECT_TRUE(outcome.woken);
    EXPECT_EQ(-1, outcome.descriptor);
    other.join();
    resolver.letGo();
}

TEST(TcpConnect, ASecondAttemptJoinsTheLookUpUnderWayAndTakesItsAnswer)
{
    const LoopbackListener listener;
    TestResolver resolver(listOf({"127.0.0.1"}));
    NameLookUps lookUps(resolver.lookUp());
    resolver.hold();
    for (int i = 0; i < 5; ++i) {
        EXPECT_FALSE(
            Attempt(connectTo("plc.example", listener.port(), kShortMs, -1, lookUps)).connected());
    }
    EXPECT_EQ(1, resolver.calls());
    std::thread other([&] {
        const Attempt joined(connectTo("plc.example", listener.port(), kForEverMs, -1, lookUps));
        EXPECT_TRUE(joined.connected()) << joined.outcome.problem;
    });
    resolver.letGo();
    other.join();
    EXPECT_EQ(1, resolver.calls());
}

TEST(TcpConnect, AnAnswerThatCameBetweenTwoAttemptsIsForTheNextAndForNoOther)
{
    const LoopbackListener listener;
    TestResolver resolver(listOf({"127.0.0.1"}));
    NameLookUps lookUps(resolver.lookUp());
    resolver.hold();
    connectTo("plc.example", listener.port(), kShortMs, -1, lookUps);
    resolver.letGo();
    // Only the look-ups themselves keep the resolver when its thread has ended.
    ASSERT_TRUE(test::waitUntil([&] { return resolver.users() == 1; }));
    for (int calls = 1; calls <= 3; ++calls) {
        const Attempt next(connectTo("plc.example", listener.port(), kPatientMs, -1, lookUps));
        EXPECT_TRUE(next.connected()) << next.outcome.problem;
        EXPECT_EQ(calls, resolver.calls());
    }
}

TEST(TcpConnect, OtherNamesDoNotWaitForASlowOne)
{
    const LoopbackListener listener;
    TestResolver slow(listOf({"127.0.0.1"}));
    slow.hold();
    const auto slowLookUp = slow.lookUp();
    NameLookUps lookUps([slowLookUp](const std::string& host) {
        return host == "slow.example" ? slowLookUp(host) : listOf({"127.0.0.1"});
    });
    const Clock::time_point start = Clock::now();
    connectTo("slow.example", listener.port(), kShortMs, -1, lookUps);
    const Attempt quick(connectTo("quick.example", listener.port(), kPatientMs, -1, lookUps));
    EXPECT_TRUE(quick.connected()) << quick.outcome.problem;
    EXPECT_TRUE(tookLessThanHalfOfPatience(start));
    slow.letGo();
}

TEST(TcpConnect, ALateLookUpEndsByItselfAfterWhoeverAskedIsGone)
{
    TestResolver resolver(listOf({"127.0.0.1"}));
    const Clock::time_point start = Clock::now();
    {
        NameLookUps lookUps(resolver.lookUp());
        resolver.hold();
        connectTo("plc.example", 1, kShortMs, -1, lookUps);
    }
    EXPECT_TRUE(tookLessThanHalfOfPatience(start));
    EXPECT_EQ(0, resolver.ended());
    EXPECT_EQ(1, resolver.users()); // its thread
    resolver.letGo();
    EXPECT_TRUE(test::waitUntil([&] { return resolver.users() == 0; }));
    EXPECT_EQ(1, resolver.ended());
}

TEST(TcpConnect, AnAddressThatDoesNotAnswerLeavesTimeForTheNext)
{
    LoopbackListener deaf;
    deaf.goDeaf();
    const LoopbackListener good("127.0.0.2", deaf.port());
    TestResolver resolver(listOf({"127.0.0.1", "127.0.0.2"}));
    NameLookUps lookUps(resolver.lookUp());
    const Attempt attempt(connectTo("plc.example", deaf.port(), kSharedMs, -1, lookUps));
    EXPECT_TRUE(attempt.connected()) << attempt.outcome.problem;
    EXPECT_EQ("", attempt.outcome.problem);
}

TEST(TcpConnect, EachAttemptIsToldWithBothEndsAndHowItEnded)
{
    LoopbackListener deaf;
    deaf.goDeaf();
    const LoopbackListener good("127.0.0.3", deaf.port());
    TestResolver resolver(listOf({"127.0.0.2", "127.0.0.1", "127.0.0.3"}));
    NameLookUps lookUps(resolver.lookUp());
    const Attempt attempt(connectTo("plc.example", deaf.port(), kSharedMs, -1, lookUps));
    ASSERT_TRUE(attempt.connected()) << attempt.outcome.problem;
    const std::vector<ConnectAttempt>& attempts = attempt.outcome.attempts;
    ASSERT_EQ(3u, attempts.size());
    const std::vector<int> errors = {ECONNREFUSED, ETIMEDOUT, 0};
    for (std::size_t i = 0; i < attempts.size(); ++i) {
        EXPECT_EQ(errors[i], attempts[i].error) << i;
        EXPECT_EQ(deaf.port(), attempts[i].peer.port) << i;
        EXPECT_LE(attempts[i].began, attempts[i].ended) << i;
    }
    EXPECT_EQ("127.0.0.2", attempts[0].peer.host);
    EXPECT_EQ("127.0.0.3", attempts[2].peer.host);
    sockaddr_in local = {};
    socklen_t size = sizeof local;
    ::getsockname(attempt.outcome.descriptor, reinterpret_cast<sockaddr*>(&local), &size);
    EXPECT_EQ(ntohs(local.sin_port), attempts[2].local.port);
    EXPECT_EQ("127.0.0.1", attempts[2].local.host);
}

TEST(TcpConnect, AllAddressesThatWereTriedAreNamed)
{
    LoopbackListener deaf;
    deaf.goDeaf();
    TestResolver resolver(listOf({"127.0.0.2", "127.0.0.1", "127.0.0.3"}));
    NameLookUps lookUps(resolver.lookUp());
    const int port = deaf.port();
    EXPECT_EQ(place("127.0.0.2", port) + ": Connection refused; " + place("127.0.0.1", port) +
                  ": Connection timed out; " + place("127.0.0.3", port) + ": Connection refused",
              connectTo("plc.example", port, kSharedMs, -1, lookUps).problem);
}

TEST(TcpConnect, ManyAtOnceShareOneLookUp)
{
    const LoopbackListener listener;
    TestResolver resolver(nothing("not today"));
    NameLookUps lookUps(resolver.lookUp());
    resolver.hold();
    std::vector<std::thread> threads;
    std::atomic<int> told{0};
    for (int i = 0; i < 8; ++i) {
        threads.emplace_back([&] {
            const auto outcome = connectTo("plc.example", 1, kForEverMs, -1, lookUps);
            told += outcome.problem == "plc.example: not today" ? 1 : 0;
        });
    }
    EXPECT_TRUE(test::waitUntil([&] { return resolver.calls() == 1; }));
    std::this_thread::sleep_for(std::chrono::milliseconds(kShortMs)); // the others may come
    resolver.letGo();
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(8, told);
}

} // namespace tavmir::wire
