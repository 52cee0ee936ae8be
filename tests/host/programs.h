// The real programs, run by tests: a controller and hosts on loopback.
#ifndef TAVMIR_TESTS_HOST_PROGRAMS_H
#define TAVMIR_TESTS_HOST_PROGRAMS_H

#include <QtCore/QProcess>
#include <QtCore/QStringList>

#include <functional>

namespace tavmir::host
{

// A program that runs beside the test; killed at the end if it still runs.
class Program
{
public:
    // output, errors  files that the program writes to instead of to this test; empty: none
    Program(const QString& file, const QStringList& arguments, const QString& output = QString(),
            const QString& errors = QString());
    ~Program();

    // Reads until the text so far holds what is wanted, or the program ends; false: it never did.
    bool showsOutput(const std::function<bool(const QString&)>& wanted);
    bool showsError(const QString& text);
    bool showsErrors(const std::function<bool(const QString&)>& wanted);
    // The same of what it says from now on.
    bool showsNewError(const QString& text);

    void type(const QByteArray& line)
    {
        process_.write(line + "\n");
        process_.waitForBytesWritten();
    }

    void signal(int number);
    // The exit status; -1 when it crashed or did not end in time.
    int waitForEnd();
    // True when it has ended, in whatever way, within the time.
    bool endsWithin(int ms) { return process_.waitForFinished(ms) || hasEnded(); }
    bool hasEnded() const { return process_.state() == QProcess::NotRunning; }

    const QString& output() const { return output_; }
    const QString& errors() const { return errors_; }

private:
    bool readUntil(const std::function<bool()>& wanted);

    QProcess process_;
    QString output_;
    QString errors_;
};

// The simulated controller with the example project, on the given port or a free one.
class Controller : public Program
{
public:
    explicit Controller(int port = 0, const QString& project = TAVMIR_EXAMPLE_PROJECT,
                        const QStringList& options = {});
    int port() const { return port_; }
    QString place() const { return QString("127.0.0.1:%1").arg(port_); }

private:
    int port_ = 0;
};

// The example project with time-outs that a busy machine does not reach, and short pauses
// before it connects again.
QString patientProject();

// Arguments of tavmir-host: the command, that project, the controller, then the rest.
QStringList hostArguments(const QString& command, const QString& place,
                          const QStringList& more = {});

} // namespace tavmir::host

#endif
