// What every command needs before its work: the project, the driver and a session.
#ifndef TAVMIR_HOST_PREPARED_HOST_H
#define TAVMIR_HOST_PREPARED_HOST_H

#include "capture/feed_capture_thread.h"
#include "command_line.h"
#include "console.h"
#include "driver/driver_loader.h"
#include "driver/message_log.h"
#include "recorder/recorder.h"
#include "session/host_session.h"
#include "trace_output.h"

#include <functional>
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
    bool openSession(SessionOptions options);
    // Before the session starts, where a capture is wanted.
    //   tell  told what is wrong with its files, and that it is right again; any thread
    void startCapture(const std::function<void(const QString& text)>& tell);
    // What has happened until now is in the files then. Nothing is told any more.
    void stopCapture() { capture_.reset(); }

    // The same with a recording, where one is wanted.
    void startRecording(const std::function<void(const QString& text)>& tell);
    void stopRecording();
    // None: nothing is recorded.
    std::optional<recorder::RecordingState> recording() const;

    // Stops the session; what has happened is traced then.
    void closeSession();
    // The same, and says on standard error what is wrong with the trace.
    void closeSession(Console& console);
    // Why part of the trace is missing, once; empty: nothing to tell.
    QString takeTraceProblem();

    const CommandLine& line() const { return line_; }
    const project::Project& project() const { return project_; }
    // What polls each address, for the formats of values. Needs the project only.
    const PolledIndex& polled() const { return *polled_; }
    HostSession& session() { return *session_; }

    // How long one read or write may take: --timeout, or until the driver must have given up; 0
    // when there was no connection to wait for.
    int operationMs() const;

    // Without --timeout, which says how long each read or write waits for the connection: waits for
    // the end of one attempt to make it.
    void awaitConnection();

    // "127.0.0.1:502"
    QString controller() const;

private:
    bool openCapture();
    bool openTrace();
    bool openRecording();

    const CommandLine& line_;
    bool isUnreachable_ = false;
    project::Project project_;
    MessageLog log_;
    std::unique_ptr<PolledIndex> polled_;
    std::unique_ptr<TraceOutput> trace_;
    std::unique_ptr<HostSession> session_;
    std::function<void(const QString& text)> tellOfCapture_;
    std::unique_ptr<capture::CaptureFiles> captureFiles_; // until it is started
    std::unique_ptr<capture::FeedCaptureThread> capture_;
    std::function<void(const QString& text)> tellOfRecording_;
    std::unique_ptr<recorder::Recorder> recorder_;
};

} // namespace tavmir::host

#endif
