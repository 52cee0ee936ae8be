// The process's Qt message handler.
#include "message_log.h"

#include <QtCore/QMessageLogContext>

#include <atomic>
#include <cstdio>

namespace tavmir::host
{

namespace
{

std::atomic<decltype(&::customMessageHandler)> driverHandler{nullptr};

void handleMessage(QtMsgType type, const QMessageLogContext&, const QString& message)
{
    const auto handler = driverHandler.load();
    const QByteArray line = message.toLocal8Bit();
    if (handler != nullptr) {
        handler(type, line.constData());
    }
    if (type != QtDebugMsg && type != QtInfoMsg) {
        std::fprintf(stderr, "%s\n", line.constData());
    }
}

} // namespace

MessageLog::MessageLog() : previous_(qInstallMessageHandler(handleMessage)) {}

MessageLog::~MessageLog()
{
    closeDriverFile();
    qInstallMessageHandler(previous_);
}

void MessageLog::openDriverFile(const DriverApi& api)
{
    driverHandler = api.logMessage;
}

void MessageLog::closeDriverFile()
{
    driverHandler = nullptr;
}

} // namespace tavmir::host
