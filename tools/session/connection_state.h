// How the connection stands, for whoever asks or waits for it. Any thread.
#ifndef TAVMIR_SESSION_CONNECTION_STATE_H
#define TAVMIR_SESSION_CONNECTION_STATE_H

#include "wire/deadline.h"

#include <QtCore/QString>

#include <condition_variable>
#include <mutex>

namespace tavmir::host
{

using wire::Clock;
using wire::Deadline;

class ConnectionState
{
public:
    void connected();
    // why  the failed attempt or the loss, in words
    void disconnected(const QString& why);
    // Ends every wait; there is no connection any more.
    void close();

    bool isConnected() const;
    QString problem() const;

    // Waits until an attempt to connect has ended, well or not, or the deadline. True when
    // connected.
    bool awaitAttempt(const Deadline& deadline) const;

private:
    mutable std::mutex mutex_;
    mutable std::condition_variable changed_;
    bool connected_ = false;
    bool failed_ = false;
    bool closed_ = false;
    QString problem_ = "not tried yet";
};

} // namespace tavmir::host

#endif
