#include "side_by_side/responder.h"

#include <arpa/inet.h>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

namespace tavmir
{
namespace bench
{

namespace
{

const int kLengthEnd = 6; // the length field counts what follows it
const int kFunctionAt = 7;
const unsigned char kReadRegisters = 3;
const unsigned char kReadWords = 'f';
const int kBufferBytes = 2048;

[[noreturn]] void fail(const char* what)
{
    std::perror(what);
    std::exit(1);
}

int bigEndian16(const unsigned char* at)
{
    return at[0] << 8 | at[1];
}

// Bytes of the reply to one whole request, or 0 when it is not understood.
//   Modbus:  header(6) unit function  byte count  values
//   driver:  header(6) station function  count  (address value) …
int buildReply(const unsigned char* request, unsigned char* reply)
{
    static unsigned short value = 0;
    ++value;
    std::memcpy(reply, request, kFunctionAt + 1);
    int size = kFunctionAt + 2;
    if (request[kFunctionAt] == kReadRegisters) {
        const int registers = bigEndian16(request + kFunctionAt + 3);
        reply[kFunctionAt + 1] = static_cast<unsigned char>(2 * registers);
        for (int i = 0; i < registers; ++i, size += 2) {
            reply[size] = static_cast<unsigned char>(value >> 8);
            reply[size + 1] = static_cast<unsigned char>(value & 0xFF);
        }
    } else if (request[kFunctionAt] == kReadWords) {
        const int elements = request[kFunctionAt + 1];
        reply[kFunctionAt + 1] = request[kFunctionAt + 1];
        const unsigned char* address = request + kFunctionAt + 2;
        for (int i = 0; i < elements; ++i, size += 6, address += 4) {
            std::memcpy(reply + size, address, 4);
            reply[size + 4] = static_cast<unsigned char>(value >> 8);
            reply[size + 5] = static_cast<unsigned char>(value & 0xFF);
        }
    } else {
        return 0;
    }
    reply[4] = static_cast<unsigned char>((size - kLengthEnd) >> 8);
    reply[5] = static_cast<unsigned char>((size - kLengthEnd) & 0xFF);
    return size;
}

void wait(int ms)
{
    timespec pause = {ms / 1000, (ms % 1000) * 1000000L};
    nanosleep(&pause, nullptr);
}

void serve(int connection, int delayMs)
{
    unsigned char buffer[kBufferBytes];
    unsigned char reply[kBufferBytes];
    int have = 0;
    for (;;) {
        const ssize_t received =
            recv(connection, buffer + have, sizeof buffer - static_cast<size_t>(have), 0);
        if (received <= 0) {
            return;
        }
        have += static_cast<int>(received);
        while (have >= kLengthEnd && have >= kLengthEnd + bigEndian16(buffer + 4)) {
            const int requestSize = kLengthEnd + bigEndian16(buffer + 4);
            const int replySize = buildReply(buffer, reply);
            if (replySize == 0) {
                return;
            }
            if (delayMs > 0) {
                wait(delayMs);
            }
            if (send(connection, reply, static_cast<size_t>(replySize), MSG_NOSIGNAL) !=
                replySize) {
                return;
            }
            have -= requestSize;
            std::memmove(buffer, buffer + requestSize, static_cast<size_t>(have));
        }
    }
}

[[noreturn]] void serveForever(int listener, int delayMs)
{
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    for (;;) {
        const int connection = accept(listener, nullptr, nullptr);
        if (connection < 0) {
            fail("accept");
        }
        const int on = 1;
        setsockopt(connection, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
        serve(connection, delayMs);
        close(connection);
    }
}

} // namespace

Responder::Responder(int delayMs)
{
    const int listener = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    if (listener < 0 || bind(listener, reinterpret_cast<sockaddr*>(&address), size) != 0 ||
        listen(listener, 4) != 0 ||
        getsockname(listener, reinterpret_cast<sockaddr*>(&address), &size) != 0) {
        fail("responder");
    }
    port_ = ntohs(address.sin_port);
    process_ = fork();
    if (process_ < 0) {
        fail("fork");
    }
    if (process_ == 0) {
        serveForever(listener, delayMs);
    }
    close(listener);
}

Responder::~Responder()
{
    kill(process_, SIGTERM);
    waitpid(process_, nullptr, 0);
}

} // namespace bench
} // namespace tavmir
