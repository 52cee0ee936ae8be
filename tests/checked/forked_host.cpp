#include "checked/forked_host.h"

#include "support/temporary_folder.h"
#include "support/wait_until.h"

#include <QtCore/QFile>
#include <QtCore/QString>

#include <csignal>
#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <sstream>

namespace tavmir::checked_tests
{

namespace
{

const char kBegin[] = "tavmir-check: ";

// Of the host that runs in this process; empty in the test.
std::string logOfThisHost;

std::string contentOf(const std::string& file)
{
    QFile opened(QString::fromStdString(file));
    if (!opened.open(QIODevice::ReadOnly)) {
        return std::string();
    }
    const QByteArray content = opened.readAll();
    return std::string(content.constData(), static_cast<std::size_t>(content.size()));
}

[[noreturn]] void beHost(void (*host)(), const char* setting, const std::string& errors,
                         Ending ending)
{
    const int file = ::open(errors.c_str(), O_WRONLY | O_CREAT | O_APPEND, 0644);
    ::dup2(file, STDERR_FILENO);
    if (setting) {
        ::setenv("TAVMIR_CHECK", setting, 1);
    } else {
        ::unsetenv("TAVMIR_CHECK");
    }
    host();
    if (ending == Ending::ByExit) {
        std::exit(0);
    }
    ::_exit(0);
}

HostRun runHostIn(const std::string& folder, void (*host)(), const char* setting, Ending ending)
{
    HostRun run;
    const std::string errors = folder + "/errors";
    std::fflush(nullptr);
    const pid_t process = ::fork();
    if (process == 0) {
        beHost(host, setting, errors, ending);
    }
    run.ended =
        test::waitUntil([&] { return ::waitpid(process, &run.status, WNOHANG) == process; });
    if (!run.ended) {
        ::kill(process, SIGKILL);
        ::waitpid(process, &run.status, 0);
    }
    run.errors = contentOf(errors);
    return run;
}

} // namespace

std::vector<std::string> HostRun::ids() const
{
    std::vector<std::string> found;
    std::istringstream lines(reports);
    for (std::string line; std::getline(lines, line);) {
        if (line.compare(0, sizeof kBegin - 1, kBegin) == 0 && line != "tavmir-check: in all") {
            found.push_back(line.substr(sizeof kBegin - 1));
        }
    }
    return found;
}

HostRun runHost(void (*host)(), const std::string& setting, Ending ending)
{
    const test::TemporaryFolder folder;
    const std::string log = folder.path() + "/reports";
    logOfThisHost = log;
    HostRun run = runHostIn(folder.path(), host, (setting + ";log:" + log).c_str(), ending);
    run.reports = contentOf(log);
    return run;
}

HostRun runHostWith(void (*host)(), const char* setting, Ending ending)
{
    const test::TemporaryFolder folder;
    return runHostIn(folder.path(), host, setting, ending);
}

bool waitForReport(const char* id)
{
    const std::string line = kBegin + std::string(id) + '\n';
    return test::waitUntil(
        [&] { return contentOf(logOfThisHost).find(line) != std::string::npos; });
}

} // namespace tavmir::checked_tests
