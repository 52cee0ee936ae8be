// A listening socket on a loopback address.
#ifndef TAVMIR_TESTS_WIRE_LOOPBACK_LISTENER_H
#define TAVMIR_TESTS_WIRE_LOOPBACK_LISTENER_H

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <stdexcept>
#include <vector>

namespace tavmir::test
{

// Connections to it succeed; nobody accepts them but through accept().
class LoopbackListener
{
public:
    // port  0: any free one
    explicit LoopbackListener(const char* address = "127.0.0.1", int port = 0)
        : socket_(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0))
    {
        const int on = 1;
        ::setsockopt(socket_, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
        place_.sin_family = AF_INET;
        place_.sin_port = htons(static_cast<std::uint16_t>(port));
        ::inet_pton(AF_INET, address, &place_.sin_addr);
        socklen_t size = sizeof place_;
        if (::bind(socket_, plain(), sizeof place_) != 0 || ::listen(socket_, 16) != 0 ||
            ::getsockname(socket_, plain(), &size) != 0) {
            throw std::runtime_error("no loopback port");
        }
    }

    ~LoopbackListener()
    {
        for (const int filler : fillers_) {
            ::close(filler);
        }
        ::close(socket_);
    }

    LoopbackListener(const LoopbackListener&) = delete;
    LoopbackListener& operator=(const LoopbackListener&) = delete;

    int port() const { return ntohs(place_.sin_port); }

    // The descriptor of the next connection; the caller closes it.
    int accept() { return ::accept(socket_, nullptr, nullptr); }

    // Fills its queue: further connections stay unanswered.
    void goDeaf()
    {
        ::listen(socket_, 0);
        for (int i = 0; i < 4; ++i) {
            fillers_.push_back(::socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
            ::connect(fillers_.back(), plain(), sizeof place_);
        }
    }

private:
    sockaddr* plain() { return reinterpret_cast<sockaddr*>(&place_); }

    int socket_;
    sockaddr_in place_ = {};
    std::vector<int> fillers_;
};

} // namespace tavmir::test

#endif
