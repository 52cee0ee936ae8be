#include "support/quiet_messages.h"

#include <QtCore/QtGlobal>

#include <atomic>

namespace tavmir
{
namespace bench
{

namespace
{

std::atomic<unsigned long> messages(0);

void drop(QtMsgType, const QMessageLogContext&, const QString&)
{
    messages.fetch_add(1, std::memory_order_relaxed);
}

} // namespace

void discardMessages()
{
    qInstallMessageHandler(drop);
}

unsigned long messageCount()
{
    return messages.load(std::memory_order_relaxed);
}

} // namespace bench
} // namespace tavmir
