// QProcess, read step by step.
#include "programs.h"

#include "support/temporary_folder.h"

#include <QtCore/QDeadlineTimer>
#include <QtCore/QFile>

#include <csignal>
#include <sys/types.h>

namespace tavmir::host
{

namespace
{

constexpr int kPatientMs = 60000;
constexpr int kStepMs = 20;

} // namespace

Program::Program(const QString& file, const QStringList& arguments, const QString& output,
                 const QString& errors)
{
    if (!output.isEmpty()) {
        process_.setStandardOutputFile(output);
    }
    if (!errors.isEmpty()) {
        process_.setStandardErrorFile(errors);
    }
    process_.start(file, arguments);
    process_.waitForStarted(kPatientMs);
}

Program::~Program()
{
    if (process_.state() != QProcess::NotRunning) {
        process_.kill();
        process_.waitForFinished(kPatientMs);
    }
}

bool Program::readUntil(const std::function<bool()>& wanted)
{
    const QDeadlineTimer deadline(kPatientMs);
    for (;;) {
        const bool ended = process_.state() == QProcess::NotRunning;
        output_ += QString::fromUtf8(process_.readAllStandardOutput());
        errors_ += QString::fromUtf8(process_.readAllStandardError());
        if (wanted()) {
            return true;
        }
        if (ended || deadline.hasExpired()) {
            return false;
        }
        process_.waitForReadyRead(kStepMs);
    }
}

bool Program::showsOutput(const std::function<bool(const QString&)>& wanted)
{
    return readUntil([&] { return wanted(output_); });
}

bool Program::showsError(const QString& text)
{
    return readUntil([&] { return errors_.contains(text); });
}

bool Program::showsErrors(const std::function<bool(const QString&)>& wanted)
{
    return readUntil([&] { return wanted(errors_); });
}

bool Program::showsNewError(const QString& text)
{
    const int known = errors_.size();
    return readUntil([&] { return errors_.indexOf(text, known) >= 0; });
}

void Program::signal(int number)
{
    // One that has ended has the number 0, which stands for the test and all around it.
    if (const qint64 process = process_.processId()) {
        ::kill(static_cast<pid_t>(process), number);
    }
}

int Program::waitForEnd()
{
    readUntil([&] { return process_.state() == QProcess::NotRunning; });
    output_ += QString::fromUtf8(process_.readAllStandardOutput());
    errors_ += QString::fromUtf8(process_.readAllStandardError());
    const bool ended =
        process_.state() == QProcess::NotRunning && process_.exitStatus() == QProcess::NormalExit;
    return ended ? process_.exitCode() : -1;
}

Controller::Controller(int port, const QString& project, const QStringList& options)
    : Program(TAVMIR_CONTROLLER_PROGRAM,
              QStringList{"--listen", QString("127.0.0.1:%1").arg(port), "--project", project} +
                  options)
{
    const QString start = "listening on 127.0.0.1:";
    if (showsOutput(
            [&](const QString& text) { return text.startsWith(start) && text.contains('\n'); })) {
        port_ = output().mid(start.size()).section('\n', 0, 0).toInt();
    }
}

QString patientProject()
{
    static const test::TemporaryFolder folder;
    QFile example(TAVMIR_EXAMPLE_PROJECT);
    example.open(QIODevice::ReadOnly);
    QByteArray text = example.readAll();
    text.replace("\"connectTimeoutMs\": 1000", "\"connectTimeoutMs\": 20000");
    text.replace("\"replyTimeoutMs\": 500", "\"replyTimeoutMs\": 20000");
    text.replace("\"reconnectMaxMs\": 5000", "\"reconnectMaxMs\": 400");
    return QString::fromStdString(folder.writeFile("plant.json", text.toStdString()));
}

QStringList hostArguments(const QString& command, const QString& place, const QStringList& more)
{
    return QStringList{command, patientProject(), "--connect", place} + more;
}

} // namespace tavmir::host
