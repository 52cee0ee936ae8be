// A Modbus TCP server of Qt's SerialBus module, taught the controller's private function codes.
// Framing, transaction ids, units and exception replies are the module's own.
#ifndef TAVMIR_TESTS_INTEROP_MODBUS_PEER_H
#define TAVMIR_TESTS_INTEROP_MODBUS_PEER_H

#include <QtCore/QMap>
#include <QtCore/QPair>
#include <QtSerialBus/QModbusTcpServer>

#include <vector>

namespace tavmir
{
namespace test
{

// What one request asked for.
struct SeenRequest {
    int functionCode;
    int elements;
};

class ModbusPeer : public QModbusTcpServer
{
public:
    explicit ModbusPeer(int unit);

    // Listens on a free port of the loopback; false when it cannot.
    bool listen();
    quint16 port() const;
    bool hasClients() const;

    // A value that a read of this function code ('d', 'f' or 'l') finds at the address.
    void setValue(char readFunction, quint32 address, quint32 value);
    bool hasValue(char readFunction, quint32 address) const;
    quint32 value(char readFunction, quint32 address) const;

    // In order of arrival.
    std::vector<SeenRequest> requests;

protected:
    QModbusResponse processPrivateRequest(const QModbusPdu& request) override;

private:
    QModbusResponse answerRead(const QModbusPdu& request, char readFunction) const;
    QModbusResponse answerWrite(const QModbusPdu& request, char readFunction);

    QMap<QPair<char, quint32>, quint32> values;
};

} // namespace test
} // namespace tavmir

#endif
