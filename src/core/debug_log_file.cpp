// The message handler that a host may install to get the driver's lines in a file.
#include "core/log_time_stamp.h"
#include "tavmir_kx_tcp/host_interface.h"

#include <QtCore/QFile>

void customMessageHandler(QtMsgType type, const char* msg) TAVMIR_KX_TCP_NOTHROW
{
    Q_UNUSED(type);
    QFile file(QString::fromLatin1("/tmp/debug.log"));
    // A device that is not open would warn about the write, and so call this handler again.
    if (!file.open(QIODevice::WriteOnly | QIODevice::Append)) {
        return;
    }
    // The message is in the locale's encoding already and goes to the file byte for byte, in
    // one write, so that lines of several threads stay whole.
    QByteArray line = tavmir::logTimeStamp(QDateTime::currentDateTime());
    line += ':';
    line += msg;
    line += '\n';
    file.write(line);
}
