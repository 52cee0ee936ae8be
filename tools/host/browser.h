// Opens an address in the user's browser: the program that BROWSER names, else xdg-open. No shell
// sees the address, and nobody waits for the program.
#ifndef TAVMIR_HOST_BROWSER_H
#define TAVMIR_HOST_BROWSER_H

#include <QtCore/QString>

#include <sys/types.h>

namespace tavmir::host
{

class Browser
{
public:
    // Empty, or why it cannot be started.
    QString open(const QString& url);

    // Why what was started did not open it, once; empty: it did, or is at it still.
    QString takeProblem();

private:
    QString program_;
    pid_t process_ = -1; // -1: none, or one that has ended
};

} // namespace tavmir::host

#endif
