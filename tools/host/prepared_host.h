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
    bool openSession(SessionOptions options, TcpLink::Observer observer);

    const CommandLine& line() const { return line_; }
    const project::Project& project() const { return project_; }
    const DriverApi& api() const { return driver_->api(); }
    HostSession& session() { return *session_; }

    // How long one read or write may take until the driver must have given up.
    int operationMs() const;

private:
    const CommandLine& line_;
    project::Project project_;
    MessageLog log_;
    std::unique_ptr<Driver> driver_;
    std::unique_ptr<HostSession> session_;
};

// One line on standard error, with the program's name in front.
void complain(const QString& problem);

} // namespace tavmir::host

#endif
