// SIGINT and SIGTERM, in child processes: the first is the program's, the second ends it.
#include "wire/stop_signal.h"

#include "support/wait_until.h"

#include <gtest/gtest.h>

#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <functional>
#include <thread>

namespace tavmir::wire
{

namespace
{

constexpr int kPatientMs = 60000;

// A process that runs `work` and can tell its parent how far it is.
class Child
{
public:
    using Say = std::function<void(char)>;

    explicit Child(const std::function<int(const Say&)>& work)
    {
        int ends[2];
        if (::pipe(ends) != 0) {
            throw std::runtime_error("no pipe");
        }
        said_ = ends[0];
        process_ = ::fork();
        if (process_ == 0) {
            const int mouth = ends[1];
            ::_exit(work([mouth](char what) {
                if (::write(mouth, &what, 1) != 1) {
                    ::_exit(99);
                }
            }));
        }
        ::close(ends[1]);
    }

    ~Child()
    {
        if (process_ > 0) {
            ::kill(process_, SIGKILL);
            ::waitpid(process_, nullptr, 0);
        }
        ::close(said_);
    }

    Child(const Child&) = delete;
    Child& operator=(const Child&) = delete;

    // What it says next; 0: nothing, or it has ended.
    char next() const
    {
        pollfd wait = {said_, POLLIN, 0};
        char what = 0;
        return ::poll(&wait, 1, kPatientMs) == 1 && ::read(said_, &what, 1) == 1 ? what : '\0';
    }

    void signal(int number) const { ::kill(process_, number); }

    // How it ended, as waitpid says it.
    int end()
    {
        int status = 0;
        const bool ended =
            test::waitUntil([&] { return ::waitpid(process_, &status, WNOHANG) == process_; });
        EXPECT_TRUE(ended);
        if (ended) {
            process_ = -1;
        }
        return status;
    }

private:
    int said_ = -1;
    pid_t process_ = -1;
};

void sleepLong()
{
    std::this_thread::sleep_for(std::chrono::milliseconds(kPatientMs));
}

// Takes the first signal and goes on as if nothing had been.
int ignoresTheRequestToEnd(const Child::Say& say)
{
    StopSignal stop;
    std::thread other(sleepLong);
    say('r');
    say(stop.waitMs(kPatientMs) ? 't' : 'f');
    other.join();
    return 0;
}

} // namespace

TEST(StopSignal, TheFirstIsTheProgramsAndTheSecondEndsIt)
{
    for (const int first : {SIGINT, SIGTERM}) {
        for (const int second : {SIGINT, SIGTERM}) {
            Child child(ignoresTheRequestToEnd);
            ASSERT_EQ('r', child.next());
            child.signal(first);
            ASSERT_EQ('t', child.next());
            child.signal(second);
            const int status = child.end();
            ASSERT_TRUE(WIFSIGNALED(status)) << status;
            EXPECT_EQ(second, WTERMSIG(status));
        }
    }
}

TEST(StopSignal, TheSecondEndsAProgramThatWasStartedWithThemIgnored)
{
    Child child([](const Child::Say& say) {
        std::signal(SIGINT, SIG_IGN);
        return ignoresTheRequestToEnd(say);
    });
    ASSERT_EQ('r', child.next());
    child.signal(SIGINT);
    ASSERT_EQ('t', child.next());
    child.signal(SIGINT);
    const int status = child.end();
    ASSERT_TRUE(WIFSIGNALED(status)) << status;
    EXPECT_EQ(SIGINT, WTERMSIG(status));
}

TEST(StopSignal, WhatCameStaysTrue)
{
    Child child([](const Child::Say& say) {
        StopSignal stop;
        if (stop.take() || stop.waitMs(0)) {
            return 1;
        }
        ::raise(SIGTERM);
        pollfd wait = {stop.descriptor(), POLLIN, 0};
        if (::poll(&wait, 1, 0) != 1) {
            return 2;
        }
        if (!stop.take() || !stop.take() || !stop.waitMs(0)) {
            return 3;
        }
        say('d');
        return 0;
    });
    EXPECT_EQ('d', child.next());
    EXPECT_EQ(0, child.end());
}

TEST(StopSignal, AWaitEndsWithoutASignal)
{
    StopSignal stop;
    EXPECT_FALSE(stop.waitMs(20));
    EXPECT_FALSE(stop.take());
}

TEST(StopSignal, AThreadThatIsWokenByTheSignalIsTheOneThatWaits)
{
    Child child([](const Child::Say& say) {
        StopSignal stop;
        std::thread other([&say] {
            ::kill(::getpid(), SIGINT);
            say('s');
        });
        const bool came = stop.waitMs(kPatientMs);
        other.join();
        return came ? 0 : 1;
    });
    EXPECT_EQ('s', child.next());
    EXPECT_EQ(0, child.end());
}

} // namespace tavmir::wire
