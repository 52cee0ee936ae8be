// Steps that all commands share.
#include "prepared_host.h"

#include "complain.h"
#include "project/project_reader.h"
#include "wire/endpoint.h"

#include <QtCore/QFile>
#include <QtCore/QFileInfo>

#include <limits>
#include <random>

namespace tavmir::host
{

namespace
{

// For threads that are late and a machine that is busy.
constexpr int kSlackMs = 2000;

// Until the end of an attempt to connect is known.
constexpr int kSettleMs = 200;

} // namespace

PreparedHost::~PreparedHost()
{
    if (session_) {
        session_->stop();
    }
    stopCapture();
    stopRecording();
    log_.closeDriverFile(); // before the driver is unloaded
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
    polled_ = std::make_unique<PolledIndex>(project_);
    return true;
}

bool PreparedHost::openCapture()
{
    if (line_.capture.file.empty()) {
        return true;
    }
    const auto tell = [this](const std::string& text) {
        tellOfCapture_(QString::fromLocal8Bit(text.c_str()));
    };
    const capture::Origin origin = capture::originHere("tavmir-host " TAVMIR_VERSION,
                                                       "tavmir-host " + controller().toStdString());
    captureFiles_ = std::make_unique<capture::CaptureFiles>(line_.capture, origin, tell);
    const std::string problem = captureFiles_->open();
    if (!problem.empty()) {
        complain(QString::fromLocal8Bit(problem.c_str()));
    }
    return problem.empty();
}

void PreparedHost::startCapture(const std::function<void(const QString& text)>& tell)
{
    if (captureFiles_) {
        tellOfCapture_ = tell;
        capture_ = std::make_unique<capture::FeedCaptureThread>(session_->feed(),
                                                                std::move(captureFiles_));
    }
}

bool PreparedHost::openRecording()
{
    if (line_.record.folder.isEmpty()) {
        return true;
    }
    QFile file(line_.projectFile);
    recorder::FileFacts facts;
    facts.program = "tavmir-host " TAVMIR_VERSION;
    facts.controller = controller();
    facts.projectName = QFileInfo(line_.projectFile).fileName();
    facts.project = file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    recorder_ = std::make_unique<recorder::Recorder>(
        line_.record, facts, QualityRules{line_.staleAfterMs, controller()},
        [this](const QString& text) { tellOfRecording_(text); });
    const QString problem = recorder_->open();
    if (!problem.isEmpty()) {
        complain(problem);
        recorder_.reset();
    }
    return problem.isEmpty();
}

void PreparedHost::startRecording(const std::function<void(const QString& text)>& tell)
{
    if (recorder_) {
        tellOfRecording_ = tell;
        recorder_->start(session_->feed());
    }
}

void PreparedHost::stopRecording()
{
    if (recorder_) {
        recorder_->stop();
    }
}

std::optional<recorder::RecordingState> PreparedHost::recording() const
{
    return recorder_ ? std::optional<recorder::RecordingState>(recorder_->state()) : std::nullopt;
}

bool PreparedHost::openTrace()
{
    if (!line_.trace.isOn) {
        return true;
    }
    trace_ = std::make_unique<TraceOutput>(line_.trace, project::ElementNames(project_));
    const QString problem = trace_->open();
    if (!problem.isEmpty()) {
        complain(problem);
    }
    return problem.isEmpty();
}

bool PreparedHost::openSession(SessionOptions options)
{
    if (!openTrace() || !openCapture() || !openRecording()) {
        return false;
    }
    QStringList problems;
    std::unique_ptr<Driver> driver = Driver::load(line_.driverFile, problems);
    for (const QString& problem : problems) {
        complain(problem);
    }
    if (!driver) {
        return false;
    }
    if (line_.driverLog) {
        log_.openDriverFile(driver->api());
    }
    options.jitterSeed = std::random_device()();
    session_ = std::make_unique<HostSession>(std::move(driver), project_, options);
    const QString problem = session_->setUp();
    if (!problem.isEmpty()) {
        complain(line_.projectFile + ": " + problem);
    } else if (trace_) {
        trace_->start(session_->feed());
    }
    return problem.isEmpty();
}

void PreparedHost::closeSession()
{
    session_->stop();
    if (trace_) {
        trace_->finish();
    }
}

void PreparedHost::closeSession(Console& console)
{
    closeSession();
    const QString problem = takeTraceProblem();
    if (!problem.isEmpty()) {
        console.complain(problem);
    }
}

QString PreparedHost::takeTraceProblem()
{
    return trace_ ? trace_->takeProblem() : QString();
}

int PreparedHost::operationMs() const
{
    if (line_.timeoutMs > 0 || isUnreachable_) {
        return line_.timeoutMs;
    }
    const project::Connection& connection = project_.connection;
    const qint64 attempt = connection.connectTimeoutMs + 2 * connection.replyTimeoutMs;
    // A bit is read and written.
    const qint64 all = 2 * (connection.retryLimit + 1) * attempt + kSlackMs;
    return static_cast<int>(std::min<qint64>(all, std::numeric_limits<int>::max()));
}

void PreparedHost::awaitConnection()
{
    const Deadline deadline(project_.connection.connectTimeoutMs + kSettleMs);
    isUnreachable_ = line_.timeoutMs == 0 && !session_->connection().awaitAttempt(deadline);
}

QString PreparedHost::controller() const
{
    const project::Connection& connection = project_.connection;
    return QString::fromStdString(
        wire::endpointText(connection.host.toStdString(), connection.port));
}

} // namespace tavmir::host
