#include "support/child_process.h"

#include <QtCore/QProcess>

namespace tavmir
{
namespace test
{

ProcessResult runProcess(const QString& program, const QStringList& arguments, int deadlineMs)
{
    ProcessResult result;
    QProcess process;
    process.start(program, arguments);
    if (!process.waitForStarted(deadlineMs))
        return result;
    if (!process.waitForFinished(deadlineMs)) {
        process.kill();
        process.waitForFinished(deadlineMs);
        return result;
    }
    result.finished = process.exitStatus() == QProcess::NormalExit;
    result.exitStatus = process.exitCode();
    result.output = QString::fromUtf8(process.readAllStandardOutput().constData());
    result.errors = QString::fromUtf8(process.readAllStandardError().constData());
    return result;
}

} // namespace test
} // namespace tavmir
