// A controller for tests of the session: one number per class and address, behind TestServer.
#ifndef TAVMIR_TESTS_SESSION_FAKE_CONTROLLER_H
#define TAVMIR_TESTS_SESSION_FAKE_CONTROLLER_H

#include "link/test_server.h"

#include <map>
#include <memory>
#include <mutex>

namespace tavmir::host
{

class FakeController
{
public:
    enum class Mood { answers, silent, refuses, tooLong };

    FakeController() { start(0); }

    // The number that the class of the read function 'd', 'f' or 'l' has at the address.
    void set(char readFunction, quint32 address, quint32 number);
    quint32 get(char readFunction, quint32 address);

    // How requests with one of these function codes are answered from now on.
    void treat(const QByteArray& functions, Mood mood);

    // Requests with one of these function codes, oldest first.
    std::vector<QByteArray> requests(const QByteArray& functions);

    // Off: connections are closed and the port is refused; on again: the same port.
    void unplug() { server_.reset(); }
    void plug() { start(port_); }

    int port() const { return port_; }
    int connections() const { return server_->connections(); }

private:
    void start(int port);
    void answer(TestServer::Client& client, const QByteArray& request);
    QByteArray entriesOfRead(const QByteArray& request);
    void store(const QByteArray& request);

    std::mutex mutex_;
    std::map<std::pair<char, quint32>, quint32> numbers_;
    std::map<char, Mood> moods_;
    std::vector<QByteArray> requests_;
    int port_ = 0;
    std::unique_ptr<TestServer> server_;
};

} // namespace tavmir::host

#endif
