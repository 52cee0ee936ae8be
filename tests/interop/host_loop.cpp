#include "interop/host_loop.h"

#include "tavmir_kx_tcp/host_interface.h"

#include <QtNetwork/QHostAddress>
#include <QtNetwork/QTcpSocket>

namespace tavmir
{
namespace test
{

namespace
{

const int kDeadlineMs = 20000;
const int kLengthFieldEnd = 6;

bool readAtLeast(QTcpSocket& socket, QByteArray& bytes, int size)
{
    while (bytes.size() < size) {
        if (socket.bytesAvailable() == 0 && !socket.waitForReadyRead(kDeadlineMs)) {
            return false;
        }
        bytes += socket.read(size - bytes.size());
    }
    return true;
}

// One reply as its length field says.
bool readReply(QTcpSocket& socket, QByteArray& reply)
{
    reply.clear();
    if (!readAtLeast(socket, reply, kLengthFieldEnd)) {
        return false;
    }
    const int rest =
        256 * static_cast<unsigned char>(reply.at(4)) + static_cast<unsigned char>(reply.at(5));
    return readAtLeast(socket, reply, kLengthFieldEnd + rest);
}

bool exchange(QTcpSocket& socket, const QByteArray& frame, QByteArray& reply, std::string& error)
{
    socket.write(frame);
    while (socket.bytesToWrite() > 0) {
        if (!socket.waitForBytesWritten(kDeadlineMs)) {
            error = "cannot send";
            return false;
        }
    }
    if (!readReply(socket, reply)) {
        error = "no reply";
        return false;
    }
    if (reply.left(2) != frame.left(2)) {
        error = "the reply bears another transaction id";
        return false;
    }
    return true;
}

} // namespace

LoopResult runHostLoop(quint16 port, const std::function<bool()>& done)
{
    LoopResult result;
    QTcpSocket socket;
    socket.connectToHost(QHostAddress(QHostAddress::LocalHost), port);
    if (!socket.waitForConnected(kDeadlineMs)) {
        result.error = "cannot connect";
        return result;
    }
    while (!done()) {
        const Protocol* request = ComCommunication();
        if (request == nullptr) {
            continue;
        }
        QByteArray reply;
        if (!exchange(socket, request->frame, reply, result.error)) {
            return result;
        }
        result.statuses.push_back(DataCom(&reply, reply.size())->status);
    }
    return result;
}

} // namespace test
} // namespace tavmir
