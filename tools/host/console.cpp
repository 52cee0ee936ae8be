// Two outputs.
#include "console.h"

#include "complain.h"
#include "project/counted.h"

#include <cerrno>
#include <csignal>
#include <cstring>
#include <unistd.h>

namespace tavmir::host
{

namespace
{

constexpr int kPatienceMs = 500; // with a reader that takes nothing
constexpr int kFinishLookMs = 50;

} // namespace

Console::Console() : out_(STDOUT_FILENO), err_(STDERR_FILENO)
{
    // A reader that went away is an error of the write, which is told apart from others.
    ::signal(SIGPIPE, SIG_IGN);
}

void Console::waitForRoom()
{
    out_.waitForRoom();
    err_.waitForRoom();
}

void Console::hurry()
{
    out_.hurry();
    err_.hurry();
}

void Console::print(const QString& line)
{
    out_.write(line.toUtf8() + '\n');
}

void Console::say(const QString& line)
{
    err_.write(line.toLocal8Bit() + '\n');
}

void Console::complain(const QString& problem)
{
    err_.write(complaint(problem));
}

bool Console::finish(wire::StopSignal& stop)
{
    while (!out_.finish(kFinishLookMs) && out_.error() == 0) {
        if (stop.waitMs(0)) {
            return finishSoon();
        }
    }
    while (!err_.finish(kFinishLookMs) && err_.error() == 0) {
        if (stop.waitMs(0)) {
            return finishSoon();
        }
    }
    return report();
}

bool Console::finishSoon()
{
    out_.finish(kPatienceMs);
    return report();
}

bool Console::report()
{
    const int error = out_.error();
    if (error != 0 && error != EPIPE) {
        complain(QString("standard output cannot be written: %1")
                     .arg(QString::fromLocal8Bit(std::strerror(error))));
    } else if (error == 0 && (out_.dropped() > 0 || out_.isBehind())) {
        complain("standard output was not read in time: parts of it are missing");
    }
    const bool whole = error == EPIPE || (error == 0 && out_.dropped() == 0 && !out_.isBehind());
    if (err_.dropped() > 0) {
        complain(project::counted(err_.dropped(), "line", "lines") +
                 " of standard error missing: it was not read in time");
        err_.finish(kPatienceMs);
        return false;
    }
    return err_.finish(kPatienceMs) && whole;
}

} // namespace tavmir::host
