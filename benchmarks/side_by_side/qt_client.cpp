// QModbusTcpClient of QtSerialBus: each finished reply starts the next request.
#include "side_by_side/client.h"
#include "side_by_side/modbus_plan.h"

#include <QtCore/QEventLoop>
#include <QtCore/QVariant>
#include <QtSerialBus/QModbusDataUnit>
#include <QtSerialBus/QModbusReply>
#include <QtSerialBus/QModbusTcpClient>

#include <cstdio>
#include <cstdlib>
#include <vector>

namespace tavmir
{
namespace bench
{

namespace
{

const int kUnit = 1;

class QtClient : public Client
{
public:
    const char* name() const override { return "QModbusTcpClient"; }

    void connectTo(int port, Layout layout) override
    {
        plan_ = ModbusPlan(layout);
        values_.assign(2 * kValues, 0);
        client_ = std::make_unique<QModbusTcpClient>();
        client_->setConnectionParameter(QModbusDevice::NetworkAddressParameter, "127.0.0.1");
        client_->setConnectionParameter(QModbusDevice::NetworkPortParameter, port);
        QEventLoop loop;
        QObject::connect(client_.get(), &QModbusClient::stateChanged, &loop,
                         [&](QModbusDevice::State state) {
                             if (state != QModbusDevice::ConnectingState) {
                                 loop.quit();
                             }
                         });
        if (!client_->connectDevice()) {
            fail(client_->errorString());
        }
        if (client_->state() == QModbusDevice::ConnectingState) {
            loop.exec();
        }
        if (client_->state() != QModbusDevice::ConnectedState) {
            fail(client_->errorString());
        }
    }

    Done readFor(std::chrono::milliseconds duration) override
    {
        done_ = Done();
        end_ = std::chrono::steady_clock::now() + duration;
        QEventLoop loop;
        loop_ = &loop;
        sendNext();
        loop.exec();
        return done_;
    }

    void disconnect() override
    {
        client_->disconnectDevice();
        client_.reset();
    }

private:
    void sendNext()
    {
        const QModbusDataUnit wanted(QModbusDataUnit::HoldingRegisters, plan_.address(),
                                     static_cast<quint16>(plan_.registers()));
        QModbusReply* reply = client_->sendReadRequest(wanted, kUnit);
        if (!reply) {
            fail(client_->errorString());
        }
        QObject::connect(reply, &QModbusReply::finished, client_.get(), [this, reply] {
            // Closing the connection finishes the last reply once more.
            QObject::disconnect(reply, nullptr, client_.get(), nullptr);
            take(*reply);
            reply->deleteLater();
            if (std::chrono::steady_clock::now() < end_) {
                sendNext();
            } else {
                loop_->quit();
            }
        });
    }

    void take(const QModbusReply& reply)
    {
        if (reply.error() != QModbusDevice::NoError) {
            fail(reply.errorString());
        }
        const QModbusDataUnit result = reply.result();
        for (uint i = 0; i < result.valueCount(); ++i) {
            values_[static_cast<size_t>(result.startAddress()) + i] =
                result.value(static_cast<int>(i));
        }
        done_.values += static_cast<long>(result.valueCount());
        ++done_.requests;
        plan_.advance();
    }

    [[noreturn]] static void fail(const QString& why)
    {
        std::fprintf(stderr, "QModbusTcpClient: %s\n", qPrintable(why));
        std::exit(1);
    }

    std::unique_ptr<QModbusTcpClient> client_;
    ModbusPlan plan_{Layout::scattered};
    std::vector<quint16> values_;
    Done done_;
    std::chrono::steady_clock::time_point end_;
    QEventLoop* loop_ = nullptr;
};

} // namespace

std::unique_ptr<Client> makeQtClient()
{
    return std::make_unique<QtClient>();
}

} // namespace bench
} // namespace tavmir
