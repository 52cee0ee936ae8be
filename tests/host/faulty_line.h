// A controller, or what is in its place, with one fault that lasts; for programs to meet.
#ifndef TAVMIR_TESTS_HOST_FAULTY_LINE_H
#define TAVMIR_TESTS_HOST_FAULTY_LINE_H

#include "programs.h"

#include "link/test_server.h"
#include "wire/loopback_listener.h"

#include <QtCore/QStringList>

#include <memory>
#include <vector>

namespace tavmir::host
{

// One fault: how it is made, and how long the host waits for a reply: short where none comes, long
// where a busy machine must not make it a time-out.
struct LineFault {
    const char* name; // in the tables
    enum class Made {
        ByNobody,     // the port is closed
        BySilence,    // connections are not answered
        ByServer,     // a server that spoils its replies
        ByController, // the simulated controller with these options
        ByItsReturn   // the controller comes, or goes and comes back
    } made;
    QStringList options;
    void (*answer)(TestServer::Client& client, const QByteArray& request);
    int replyTimeoutMs;
    QStringList before; // addresses that are asked for before the variable's
    QStringList chancy; // counters of a run that chance decides
};

const std::vector<LineFault>& lineFaults();

class FaultyLine
{
public:
    explicit FaultyLine(const LineFault& fault);

    QString place() const { return QString("127.0.0.1:%1").arg(port_); }
    // The project whose only polled variable is Main.Level, as a file.
    const QString& project() const { return project_; }
    // The controller comes, for the first time or again.
    void controllerComes();
    void controllerGoes();

private:
    QString project_;
    std::unique_ptr<test::LoopbackListener> listener_;
    std::unique_ptr<TestServer> server_;
    std::unique_ptr<Controller> controller_;
    int port_ = 0;
};

} // namespace tavmir::host

#endif
