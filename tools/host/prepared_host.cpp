// Steps that all commands share.
#include "prepared_host.h"

#include "project/project_reader.h"

#include <cstdio>
#include <random>

namespace tavmir::host
{

namespace
{

// For threads that are late and a machine that is busy.
constexpr int kSlackMs = 2000;

} // namespace

void complain(const QString& problem)
{
    std::fprintf(stderr, "tavmir-host: %s\n", problem.toLocal8Bit().constData());
}

PreparedHost::~PreparedHost()
{
    session_.reset();
    log_.closeDriverFile();
}

bool PreparedHost::readProject()
{
    project::ReadOutcome outcome = project::readProjectFile(line_.projectFile);
    if (!outcome.project) {
        complain(outcome.error);
        return false;
    }
    project_ = std::move(*outcome.project);
    project::Connection& connection = project_.connection;
    if (line_.port != 0) {
        connection.host = line_.host;
        connection.port = line_.port;
    }
    connection.station = line_.station.value_or(connection.station);
    return true;
}

bool PreparedHost::openSession(SessionOptions options, TcpLink::Observer observer)
{
    QStringList problems;
    driver_ = Driver::load(line_.driverFile, problems);
    for (const QString& problem : problems) {
        complain(problem);
    }
    if (!driver_) {
        return false;
    }
    if (line_.driverLog) {
        log_.openDriverFile(driver_->api());
    }
    options.jitterSeed = std::random_device()();
    session_ =
        std::make_unique<HostSession>(driver_->api(), project_, options, std::move(observer));
    const QString problem = session_->setUp();
    if (!problem.isEmpty()) {
        complain(line_.projectFile + ": " + problem);
    }
    return problem.isEmpty();
}

int PreparedHost::operationMs() const
{
    if (line_.timeoutMs > 0) {
        return line_.timeoutMs;
    }
    const project::Connection& connection = project_.connection;
    const qint64 attempt = connection.connectTimeoutMs + 2 * connection.replyTimeoutMs;
    // A bit is read and written.
    const qint64 all = 2 * (connection.retryLimit + 1) * attempt + kSlackMs;
    return static_cast<int>(std::min<qint64>(all, std::numeric_limits<int>::max()));
}

} // namespace tavmir::host
