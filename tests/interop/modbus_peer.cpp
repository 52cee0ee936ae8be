#include "interop/modbus_peer.h"

#include <QtCore/QtEndian>
#include <QtNetwork/QTcpServer>
#include <QtNetwork/QTcpSocket>

namespace tavmir
{
namespace test
{

namespace
{

// Value bytes of an element read by this function code; 0 for any other code.
int valueBytes(char readFunction)
{
    switch (readFunction) {
    case 'd':
        return 1;
    case 'f':
        return 2;
    case 'l':
        return 4;
    default:
        return 0;
    }
}

QModbusResponse refusal(const QModbusPdu& request, QModbusPdu::ExceptionCode code)
{
    // All that an exception consists of is in its base. NOLINTNEXTLINE(cppcoreguidelines-slicing)
    return QModbusExceptionResponse(request.functionCode(), code);
}

// The module asks how long a request of a code it does not know is: a count, and its entries.
int sizeOfReadRequest(const QModbusRequest& request)
{
    const QByteArray data = request.data();
    return data.isEmpty() ? 1 : 1 + 4 * static_cast<unsigned char>(data.at(0));
}

int sizeOfWriteRequest(const QModbusRequest& request)
{
    const QByteArray data = request.data();
    const int entry = 4 + valueBytes(static_cast<char>(request.functionCode() - 1));
    return data.isEmpty() ? 1 : 1 + entry * static_cast<unsigned char>(data.at(0));
}

void teachRequestSizes()
{
    for (const char readFunction : {'d', 'f', 'l'}) {
        QModbusRequest::registerDataSizeCalculator(QModbusPdu::FunctionCode(readFunction),
                                                   sizeOfReadRequest);
        QModbusRequest::registerDataSizeCalculator(QModbusPdu::FunctionCode(readFunction + 1),
                                                   sizeOfWriteRequest);
    }
}

quint32 addressAt(const QByteArray& data, int offset)
{
    return qFromBigEndian<quint32>(data.constData() + offset);
}

} // namespace

ModbusPeer::ModbusPeer(int unit)
{
    teachRequestSizes();
    setServerAddress(unit);
    setConnectionParameter(QModbusDevice::NetworkAddressParameter, "127.0.0.1");
    setConnectionParameter(QModbusDevice::NetworkPortParameter, 0);
}

bool ModbusPeer::listen()
{
    return connectDevice();
}

quint16 ModbusPeer::port() const
{
    const QTcpServer* server = findChild<QTcpServer*>();
    return server == nullptr ? quint16(0) : server->serverPort();
}

bool ModbusPeer::hasClients() const
{
    return findChild<QTcpSocket*>() != nullptr;
}

void ModbusPeer::setValue(char readFunction, quint32 address, quint32 value)
{
    values.insert(qMakePair(readFunction, address), value);
}

bool ModbusPeer::hasValue(char readFunction, quint32 address) const
{
    return values.contains(qMakePair(readFunction, address));
}

quint32 ModbusPeer::value(char readFunction, quint32 address) const
{
    return values.value(qMakePair(readFunction, address));
}

QModbusResponse ModbusPeer::processPrivateRequest(const QModbusPdu& request)
{
    const int code = request.functionCode();
    const QByteArray data = request.data();
    if (data.isEmpty()) {
        return refusal(request, QModbusPdu::IllegalDataValue);
    }
    requests.push_back(SeenRequest{code, static_cast<unsigned char>(data.at(0))});
    if (valueBytes(static_cast<char>(code)) != 0) {
        return answerRead(request, static_cast<char>(code));
    }
    // Each write code is the read code of its type plus one.
    if (valueBytes(static_cast<char>(code - 1)) != 0) {
        return answerWrite(request, static_cast<char>(code - 1));
    }
    return refusal(request, QModbusPdu::IllegalFunction);
}

// Request: count, then an address each. Reply: count, then address and value each, both most
// significant byte first.
QModbusResponse ModbusPeer::answerRead(const QModbusPdu& request, char readFunction) const
{
    const QByteArray data = request.data();
    const int elements = static_cast<unsigned char>(data.at(0));
    if (data.size() != 1 + 4 * elements) {
        return refusal(request, QModbusPdu::IllegalDataValue);
    }
    QByteArray reply = data.left(1);
    for (int i = 0; i < elements; ++i) {
        const quint32 address = addressAt(data, 1 + 4 * i);
        if (!hasValue(readFunction, address)) {
            return refusal(request, QModbusPdu::IllegalDataAddress);
        }
        char valueText[4];
        qToBigEndian<quint32>(value(readFunction, address), valueText);
        const int size = valueBytes(readFunction);
        reply += data.mid(1 + 4 * i, 4) + QByteArray(valueText + 4 - size, size);
    }
    return QModbusResponse(request.functionCode(), reply);
}

// Request: count, then an address and a value each, the value least significant byte first.
// Reply: the count alone.
QModbusResponse ModbusPeer::answerWrite(const QModbusPdu& request, char readFunction)
{
    const QByteArray data = request.data();
    const int elements = static_cast<unsigned char>(data.at(0));
    const int size = valueBytes(readFunction);
    if (data.size() != 1 + (4 + size) * elements) {
        return refusal(request, QModbusPdu::IllegalDataValue);
    }
    for (int i = 0; i < elements; ++i) {
        const int entry = 1 + (4 + size) * i;
        quint32 written = 0;
        for (int byte = size - 1; byte >= 0; --byte) {
            written = (written << 8) | static_cast<unsigned char>(data.at(entry + 4 + byte));
        }
        setValue(readFunction, addressAt(data, entry), written);
    }
    return QModbusResponse(request.functionCode(), data.left(1));
}

} // namespace test
} // namespace tavmir
