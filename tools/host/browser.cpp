// A process of its own.
#include "browser.h"

#include "project/printable.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <QtCore/QFile>

#include <array>
#include <csignal>
#include <cstring>

namespace tavmir::host
{

namespace
{

// Silent, with no signal blocked, and out of reach of the terminal's Ctrl-C.
class Manners
{
public:
    Manners()
    {
        posix_spawn_file_actions_init(&files_);
        for (const int descriptor : {0, 1, 2}) {
            posix_spawn_file_actions_addopen(&files_, descriptor, "/dev/null", O_RDWR, 0);
        }
        posix_spawnattr_init(&attributes_);
        sigset_t none;
        sigemptyset(&none);
        posix_spawnattr_setsigmask(&attributes_, &none);
        posix_spawnattr_setflags(&attributes_, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSID);
    }
    ~Manners()
    {
        posix_spawn_file_actions_destroy(&files_);
        posix_spawnattr_destroy(&attributes_);
    }
    Manners(const Manners&) = delete;
    Manners& operator=(const Manners&) = delete;

    const posix_spawn_file_actions_t* files() const { return &files_; }
    const posix_spawnattr_t* attributes() const { return &attributes_; }

private:
    posix_spawn_file_actions_t files_ = {};
    posix_spawnattr_t attributes_ = {};
};

} // namespace

QString Browser::open(const QString& url)
{
    const QByteArray wanted = qgetenv("BROWSER").split(':').first();
    QByteArray program = wanted.isEmpty() ? QByteArray("xdg-open") : wanted;
    QByteArray address = url.toUtf8();
    const std::array<char*, 3> arguments = {program.data(), address.data(), nullptr};
    const Manners manners;
    program_ = project::printable(QFile::decodeName(program));
    const int error = posix_spawnp(&process_, program.constData(), manners.files(),
                                   manners.attributes(), arguments.data(), environ);
    if (error == 0) {
        return QString();
    }
    process_ = -1;
    return QString("the browser was not opened: %1: %2").arg(program_, std::strerror(error));
}

QString Browser::takeProblem()
{
    int status = 0;
    if (process_ < 0 || ::waitpid(process_, &status, WNOHANG) != process_) {
        return QString();
    }
    process_ = -1;
    return WIFEXITED(status) && WEXITSTATUS(status) == 0
               ? QString()
               : QString("the browser was not opened: %1 failed").arg(program_);
}

} // namespace tavmir::host
