// Running another program from a test and looking at what it said.
#ifndef TAVMIR_TESTS_SUPPORT_CHILD_PROCESS_H
#define TAVMIR_TESTS_SUPPORT_CHILD_PROCESS_H

#include <QtCore/QString>
#include <QtCore/QStringList>

namespace tavmir
{
namespace test
{

struct ProcessResult {
    bool finished = false; // false: not started, crashed, or killed at the deadline
    int exitStatus = -1;
    QString output; // standard output
    QString errors; // standard error
};

// Runs `program` to its end, at most `deadlineMs` milliseconds.
ProcessResult runProcess(const QString& program, const QStringList& arguments,
                         int deadlineMs = 60000);

} // namespace test
} // namespace tavmir

#endif
