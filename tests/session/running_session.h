// For tests of the session: one on a fake controller, operations by address text and value, and
// their ends in words.
#ifndef TAVMIR_TESTS_SESSION_RUNNING_SESSION_H
#define TAVMIR_TESTS_SESSION_RUNNING_SESSION_H

#include "driver/message_log.h"
#include "fake_controller.h"
#include "feed/line_figures.h"
#include "session/host_session.h"

#include <gtest/gtest.h>

#include <string>

namespace tavmir::host
{

constexpr int kPatientMs = 60000;   // never reached when a test passes
constexpr int kSoonMs = 400;        // waited through where nothing can be sent, or nobody replies
constexpr int kSentByThenMs = 5000; // waited through; a request has gone by then

// How an operation ended.
struct Ended {
    std::string state; // "done", "refused", "not sent", "unknown", "partial"
    std::string reason;
    int acknowledged = -1;
    int elements = -1;
    std::string value{}; // of a read that is done
};

// A write or read under way.
struct Asked {
    OperationId id;
    project::Element element;
};

class RunningSession : public testing::Test
{
protected:
    // Keys of the project's connection beside host and port, and its polled entries.
    struct Setting {
        QByteArray connection = "";
        QByteArray polled = "";
        int replyTimeoutMs = kPatientMs;
        int reconnectMs = 1;
    };

    void TearDown() override { reset(); }

    // Set up, but nothing runs yet.
    void prepare(const Setting& setting);
    // Set up and started.
    void open(const Setting& setting);
    void open() { open(Setting()); }
    void start() { session_->start(); }
    // Ends the session, so that another can be opened.
    void reset();

    project::Element element(const QString& address) const;
    QByteArray encoded(const project::Element& target, const QString& value) const;

    Asked queueWrite(const QString& address, const QString& value, int deadlineMs = kPatientMs);
    Asked queueRead(const QString& address, int deadlineMs = kPatientMs);
    // Waits until the operation has ended or its time is over.
    Ended await(const Asked& asked);

    Ended write(const QString& address, const QString& value, int deadlineMs = kPatientMs);
    Ended read(const QString& address, int deadlineMs = kPatientMs);

    // Replaces the polled elements; empty, or what is wrong.
    std::string poll(const std::vector<QString>& addresses, int station = 1);

    // What the feed says so far.
    const LineFigures& figures();
    // Failed attempts to connect so far.
    quint64 connectFailures() { return figures().connectFailures; }

    // Waits until the controller has had `count` requests with one of the functions.
    bool reaches(const QByteArray& functions, size_t count);

    MessageLog log_; // the driver's diagnostic lines are not looked at here
    FakeController controller_;
    SessionOptions options_;
    project::Project project_;
    std::unique_ptr<HostSession> session_;
    std::unique_ptr<FeedReader> reader_;
    LineFigures figures_;
};

// Where the variables of the tests' project lie.
constexpr quint32 kBitAt = 100;     // M.bit
constexpr quint32 kWordAt = 3200;   // M.w and M.alias
constexpr quint32 kArrayAt = 3360;  // M.a[0..9], words
constexpr quint32 kHexedAt = 3600;  // M.hexed[A..D], words, indices in base 16
constexpr quint32 kDwordAt = 4000;  // M.d
constexpr quint32 kRealAt = 5024;   // M.r
constexpr quint32 kTextAt = 6000;   // M.text, 60 words
constexpr quint32 kNamesAt = 8000;  // M.names[1..3], 3 words each, 256 bits apart
constexpr quint32 kPairAt = 15008;  // M.pair[0..9], double words
constexpr quint32 kManyAt = 100000; // M.many[0..29999], words
constexpr int kTextWords = 60;
constexpr int kWordsOfARequest = 38; // the most that the driver puts into one

} // namespace tavmir::host

#endif
