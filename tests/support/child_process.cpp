// With fork and pipes rather than QProcess: what QProcess asks of the kernel is more than an
// emulator of another processor offers.
#include "support/child_process.h"

#include <QtCore/QByteArray>

#include <csignal>
#include <fcntl.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <vector>

namespace tavmir
{
namespace test
{

namespace
{

typedef std::chrono::steady_clock Clock;

const int kNotStarted = 127; // what a shell uses too

// A pipe whose ends close themselves.
struct Pipe {
    int ends[2];

    Pipe()
    {
        if (pipe2(ends, O_CLOEXEC) != 0) {
            ends[0] = ends[1] = -1;
        }
    }
    ~Pipe()
    {
        shut(0);
        shut(1);
    }
    Pipe(const Pipe&) = delete;
    Pipe& operator=(const Pipe&) = delete;

    void shut(int end)
    {
        if (ends[end] >= 0) {
            close(ends[end]);
        }
        ends[end] = -1;
    }
};

// Takes what is there; at the end of the stream the pipe is closed.
void drain(Pipe& stream, short events, QByteArray& bytes)
{
    if (events == 0) {
        return;
    }
    char part[4096];
    const ssize_t now = read(stream.ends[0], part, sizeof part);
    if (now > 0) {
        bytes.append(part, static_cast<int>(now));
    } else if (now == 0 || errno != EINTR) {
        stream.shut(0);
    }
}

// Reads both streams to their ends; false at the deadline.
bool readAll(Pipe& output, Pipe& errors, QByteArray& outputBytes, QByteArray& errorBytes,
             Clock::time_point deadline)
{
    while (output.ends[0] >= 0 || errors.ends[0] >= 0) {
        const auto left =
            std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now()).count();
        if (left <= 0) {
            return false;
        }
        struct pollfd streams[] = {{output.ends[0], POLLIN, 0}, {errors.ends[0], POLLIN, 0}};
        if (poll(streams, 2, static_cast<int>(left)) <= 0) {
            continue;
        }
        drain(output, streams[0].revents, outputBytes);
        drain(errors, streams[1].revents, errorBytes);
    }
    return true;
}

// The child's number, or -1.
pid_t start(const QString& program, const QStringList& arguments, const Pipe& output,
            const Pipe& errors)
{
    std::vector<QByteArray> words(1, program.toLocal8Bit());
    for (const QString& argument : arguments) {
        words.push_back(argument.toLocal8Bit());
    }
    std::vector<char*> argv;
    for (QByteArray& word : words) {
        argv.push_back(word.data());
    }
    argv.push_back(nullptr);
    const pid_t child = fork();
    if (child != 0) {
        return child;
    }
    dup2(output.ends[1], STDOUT_FILENO);
    dup2(errors.ends[1], STDERR_FILENO);
    execvp(argv[0], argv.data());
    _exit(kNotStarted);
}

} // namespace

ProcessResult runProcess(const QString& program, const QStringList& arguments, int deadlineMs)
{
    const Clock::time_point deadline = Clock::now() + std::chrono::milliseconds(deadlineMs);
    ProcessResult result;
    Pipe output;
    Pipe errors;
    const pid_t child = start(program, arguments, output, errors);
    if (child <= 0) {
        return result;
    }
    output.shut(1);
    errors.shut(1);
    QByteArray outputBytes;
    QByteArray errorBytes;
    const bool ended = readAll(output, errors, outputBytes, errorBytes, deadline);
    if (!ended) {
        kill(child, SIGKILL);
    }
    int status = 0;
    while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    result.finished = ended && WIFEXITED(status) && WEXITSTATUS(status) != kNotStarted;
    result.exitStatus = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    result.output = QString::fromUtf8(outputBytes.constData());
    result.errors = QString::fromUtf8(errorBytes.constData());
    return result;
}

} // namespace test
} // namespace tavmir
