// The driver's frames without the driver: one send and one receive for each request, and nothing
// done with what comes. What is left is the system's price of a round trip of 38 words, below which
// no client of this protocol can get.
#include "side_by_side/client.h"

#include <arpa/inet.h>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <unistd.h>

namespace tavmir
{
namespace bench
{

namespace
{

const int kWords = 38; // of a full request
const int kHeaderBytes = 9;
const int kRequestBytes = kHeaderBytes + 4 * kWords;
const int kReplyBytes = kHeaderBytes + 6 * kWords;
const int kBytesBeforeCounting = 6;
const unsigned char kReadWords = 'f';

class BareClient : public Client
{
public:
    BareClient()
    {
        request_[5] = kRequestBytes - kBytesBeforeCounting;
        request_[6] = 1; // station
        request_[7] = kReadWords;
        request_[8] = kWords;
    }
    ~BareClient() override { disconnect(); }

    const char* name() const override { return "its frames alone"; }

    void connectTo(int port, Layout) override
    {
        sockaddr_in address = {};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        address.sin_port = htons(static_cast<uint16_t>(port));
        socket_ = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
        const int on = 1;
        if (socket_ < 0 ||
            connect(socket_, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0 ||
            setsockopt(socket_, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on) != 0) {
            fail("connect");
        }
    }

    Done readFor(std::chrono::milliseconds duration) override
    {
        Done done;
        const auto end = std::chrono::steady_clock::now() + duration;
        while (std::chrono::steady_clock::now() < end) {
            exchange();
            done.values += kWords;
            ++done.requests;
        }
        return done;
    }

    void disconnect() override
    {
        if (socket_ >= 0) {
            close(socket_);
        }
        socket_ = -1;
    }

private:
    void exchange()
    {
        if (send(socket_, request_, kRequestBytes, MSG_NOSIGNAL) != kRequestBytes) {
            fail("send");
        }
        for (int have = 0; have < kReplyBytes;) {
            const ssize_t got =
                recv(socket_, reply_ + have, sizeof reply_ - static_cast<size_t>(have), 0);
            if (got <= 0) {
                fail("receive");
            }
            have += static_cast<int>(got);
        }
    }

    [[noreturn]] static void fail(const char* what)
    {
        std::perror(what);
        std::exit(1);
    }

    int socket_ = -1;
    unsigned char request_[kRequestBytes] = {};
    unsigned char reply_[2 * kReplyBytes];
};

} // namespace

std::unique_ptr<Client> makeBareClient()
{
    return std::make_unique<BareClient>();
}

} // namespace bench
} // namespace tavmir
