#include "support/diagnostic_capture.h"

#include "support/qt_compat.h"

namespace tavmir
{
namespace test
{

namespace
{
DiagnosticCapture* active = nullptr;
}

DiagnosticCapture::DiagnosticCapture()
{
    active = this;
    installMessageHook(&DiagnosticCapture::receive);
}

DiagnosticCapture::~DiagnosticCapture()
{
    installMessageHook(nullptr);
    active = nullptr;
}

QStringList DiagnosticCapture::lines() const
{
    const std::lock_guard<std::mutex> guard(mutex);
    return texts;
}

std::vector<QtMsgType> DiagnosticCapture::types() const
{
    const std::lock_guard<std::mutex> guard(mutex);
    return messageTypes;
}

void DiagnosticCapture::clear()
{
    const std::lock_guard<std::mutex> guard(mutex);
    texts.clear();
    messageTypes.clear();
}

void DiagnosticCapture::onLine(const std::function<void(const QString&)>& watch)
{
    const std::lock_guard<std::mutex> guard(mutex);
    watcher = watch;
}

void DiagnosticCapture::receive(QtMsgType type, const QString& text)
{
    if (active == nullptr) {
        return;
    }
    std::function<void(const QString&)> watch;
    {
        const std::lock_guard<std::mutex> guard(active->mutex);
        watch = active->watcher;
    }
    if (watch) {
        watch(text);
    }
    const std::lock_guard<std::mutex> guard(active->mutex);
    active->texts << text;
    active->messageTypes.push_back(type);
}

} // namespace test
} // namespace tavmir
