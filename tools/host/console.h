// Standard output and standard error of a command, neither of which ever holds anything up; and how
// they end.
#ifndef TAVMIR_HOST_CONSOLE_H
#define TAVMIR_HOST_CONSOLE_H

#include "output.h"
#include "wire/stop_signal.h"

#include <QtCore/QStringList>

namespace tavmir::host
{

class Console
{
public:
    Console();

    Output& out() { return out_; }

    // For a command whose output is its result: whoever prints or says something waits for room
    // from now on, until hurry(), which may come from any thread.
    void waitForRoom();
    void hurry();
    // Lines of text on standard output or standard error.
    void print(const QString& line);
    void say(const QString& line);
    // The same as say, with the program's name in front.
    void complain(const QString& problem);

    // True when nobody reads standard output any more, or it cannot be written.
    bool isBroken() const { return out_.error() != 0; }

    // Waits for whoever reads, until a signal comes: for a command whose output is its result.
    // False: something was not written, which standard error says unless nobody reads any more.
    bool finish(wire::StopSignal& stop);
    // The same, but goes on when nothing is read for a short while.
    bool finishSoon();

private:
    bool report();

    Output out_;
    Output err_;
};

} // namespace tavmir::host

#endif
