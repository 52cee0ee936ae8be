#include "probe/scripted_controller.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstring>
#include <stdexcept>

namespace tavmir
{
namespace test
{

namespace
{

// Takes exactly `count` bytes; false when the client has gone.
bool take(int client, QByteArray& bytes, int count)
{
    while (count > 0) {
        char part[256];
        const std::size_t room = std::min(sizeof part, static_cast<std::size_t>(count));
        const ssize_t now = recv(client, part, room, 0);
        if (now <= 0) {
            return false;
        }
        bytes.append(part, static_cast<int>(now));
        count -= static_cast<int>(now);
    }
    return true;
}

int byteAt(const QByteArray& bytes, int offset)
{
    return static_cast<unsigned char>(bytes.at(offset));
}

} // namespace

ScriptedController::ScriptedController(Answer answer)
    : script(answer), listener(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)), portNumber(0)
{
    struct sockaddr_in address;
    std::memset(&address, 0, sizeof address);
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    if (listener < 0 ||
        bind(listener, reinterpret_cast<struct sockaddr*>(&address), sizeof address) != 0 ||
        listen(listener, 1) != 0 ||
        getsockname(listener, reinterpret_cast<struct sockaddr*>(&address), &size) != 0) {
        throw std::runtime_error("no loopback port");
    }
    portNumber = ntohs(address.sin_port);
    server = std::thread(&ScriptedController::serve, this);
}

ScriptedController::~ScriptedController()
{
    shutdown(listener, SHUT_RDWR); // wakes an accept that no client came to
    server.join();
    close(listener);
}

std::vector<QByteArray> ScriptedController::requests() const
{
    const std::lock_guard<std::mutex> guard(mutex);
    return received;
}

void ScriptedController::serve()
{
    const int client = accept(listener, nullptr, nullptr);
    if (client < 0) {
        return;
    }
    for (;;) {
        QByteArray request;
        if (!take(client, request, 6) ||
            !take(client, request, byteAt(request, 4) * 256 + byteAt(request, 5))) {
            break;
        }
        {
            const std::lock_guard<std::mutex> guard(mutex);
            received.push_back(request);
        }
        const QByteArray answer = script(request);
        if (send(client, answer.constData(), static_cast<std::size_t>(answer.size()),
                 MSG_NOSIGNAL) != answer.size()) {
            break;
        }
    }
    close(client);
}

QByteArray addressPlusFive(const QByteArray& request)
{
    const int function = byteAt(request, 7);
    const int width = function == 'd' ? 1 : function == 'f' ? 2 : 4;
    QByteArray answer = request.left(9);
    for (int i = 0; i < byteAt(request, 8); ++i) {
        const QByteArray address = request.mid(9 + 4 * i, 4);
        unsigned int value = 5;
        for (int byte = 0; byte < 4; ++byte) {
            value += static_cast<unsigned int>(byteAt(address, byte)) << (24 - 8 * byte);
        }
        answer += address;
        for (int byte = width - 1; byte >= 0; --byte) {
            answer += static_cast<char>(value >> (8 * byte));
        }
    }
    const int following = answer.size() - 6;
    answer[4] = static_cast<char>(following / 256);
    answer[5] = static_cast<char>(following % 256);
    return answer;
}

} // namespace test
} // namespace tavmir
