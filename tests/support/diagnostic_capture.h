// Catches every Qt message while it lives, on any thread. One at a time.
#ifndef TAVMIR_TESTS_SUPPORT_DIAGNOSTIC_CAPTURE_H
#define TAVMIR_TESTS_SUPPORT_DIAGNOSTIC_CAPTURE_H

#include <QtCore/QString>
#include <QtCore/QStringList>

#include <functional>
#include <mutex>
#include <vector>

namespace tavmir
{
namespace test
{

class DiagnosticCapture
{
public:
    DiagnosticCapture();
    ~DiagnosticCapture();

    DiagnosticCapture(const DiagnosticCapture&) = delete;
    DiagnosticCapture& operator=(const DiagnosticCapture&) = delete;

    // The texts in order of arrival.
    QStringList lines() const;

    // The types in order of arrival.
    std::vector<QtMsgType> types() const;

    void clear();

    // Runs `watch` inside the handler, on the thread that wrote the line, before it is stored.
    void onLine(const std::function<void(const QString& line)>& watch);

private:
    static void receive(QtMsgType type, const QString& text);

    mutable std::mutex mutex;
    QStringList texts;
    std::vector<QtMsgType> messageTypes;
    std::function<void(const QString&)> watcher;
};

} // namespace test
} // namespace tavmir

#endif
