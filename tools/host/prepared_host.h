// What every command needs before its work: the project, the driver and a session.
#ifndef TAVMIR_HOST_PREPARED_HOST_H
#define TAVMIR_HOST_PREPARED_HOST_H

#include "command_line.h"
#include "driver/driver_loader.h"
#include "driver/message_log.h"
#include "session/host_session.h"

#include <memory>

namespace tavmir::host
{

class PreparedHost
{
public:
    explicit PreparedHost(const CommandLine& line) : line_(line) {}
    ~PreparedHost();
    PreparedHost(const PreparedHost&) = delete;
    PreparedHost& operator=(const PreparedHost&) = delete;

    // Each step: true, or false with its one line per problem on standard error.
    bool readProject();
    bool openSession(SessionOptions options);

    const CommandLine& line() const { return line_; }
    const project::Project& project() const { return project_; }
    // What polls each address, for the formats of values. Needs the project only.
    const PolledIndex& polled() const { return *polled_; }
    HostSession& session() { return *session_; }

    // How long one read or write may take: --timeout, or until the driver must have given up; 0
    // when there was no connection to wait for.
    int operationMs() const;

    // Without --timeout, which says how long each read or write waits for the connection: waits for
    // the end of one attempt to make it.
    void awaitConnection();

    // "127.0.0.1:502"
    QString controller() const;

private:
    const CommandLine& line_;
    bool isUnreachable_ = false;
    project::Project project_;
    MessageLog log_;
    std::unique_ptr<PolledIndex> polled_;
    std::unique_ptr<HostSession> session_;
};

} // namespace tavmir::host

#endif
