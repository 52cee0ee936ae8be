// The rows of a recording, as they wait to be written and as they are read back.
#ifndef TAVMIR_RECORDER_RECORDED_ROWS_H
#define TAVMIR_RECORDER_RECORDED_ROWS_H

#include "feed/quality.h"
#include "recorded_value.h"

#include <optional>
#include <vector>

namespace tavmir::recorder
{

using VariableId = quint32;

// A value that a variable had from then on.
struct SampleRow {
    VariableId variable = 0;
    Micros at = 0;
    RecordedValue value;
};

// How far its value could be trusted from then on.
struct QualityRow {
    VariableId variable = 0;
    Micros at = 0;
    host::ValueQuality quality;
};

// What kinds of events there are; the word stands in the file.
namespace event_kind
{
constexpr char kBegan[] = "recording began";
constexpr char kEnded[] = "recording ended";
constexpr char kGap[] = "gap";                // from `at` until `until` nothing is recorded
constexpr char kMissed[] = "missed";          // the recorder was behind: changes are missing
constexpr char kStorage[] = "storage failed"; // text: why
constexpr char kClock[] = "clock set";
constexpr char kConnected[] = "connected";
constexpr char kConnectFailed[] = "connect failed"; // once for each new reason
constexpr char kLost[] = "connection lost";
constexpr char kClosed[] = "connection closed"; // by the host
constexpr char kSilent[] = "no reply";          // a request was given up, none is answered
constexpr char kAnswers[] = "answers again";
constexpr char kWrite[] = "write";           // ended; text: its outcome
constexpr char kRead[] = "read";             // a one-shot read ended
constexpr char kSetAside[] = "refused";      // a variable; text: why
constexpr char kBack[] = "back";             // it answers again
constexpr char kPlan[] = "variables polled"; // another list from then on
} // namespace event_kind

struct EventRow {
    Micros at = 0;
    Micros until = 0; // 0: of a moment
    QString kind;
    QString subject; // a variable, or the controller; may be empty
    QString text;
    // Read back: of the variable that it is about; empty: about none, or one that the file does
    // not know.
    QString address{};
};

// What happened on the line within a minute, or the part of it that was recorded.
struct MinuteRow {
    Micros at = 0;
    Micros until = 0;
    quint64 requests = 0;
    quint64 replies = 0;
    quint64 retries = 0;
    quint64 giveUps = 0;
    quint64 timeouts = 0;
    quint64 exceptions = 0;
    quint64 lateFrames = 0;
    quint64 connects = 0;
    quint64 connectFailures = 0;
    quint64 lostConnections = 0;
    quint64 bytesSent = 0;
    quint64 bytesReceived = 0;
    quint64 missed = 0;
    // Round trips in microseconds; none: nothing was answered.
    std::optional<double> roundTripMin;
    std::optional<double> roundTripMedian;
    std::optional<double> roundTripP99;
    std::optional<double> roundTripMax;
};

struct NewVariable {
    VariableId id = 0;
    RecordedVariable variable;
};

// What is polled from then on, a row for each place in the list.
struct PolledRow {
    Micros at = 0;
    quint32 place = 0;
    VariableId variable = 0;
};

// How a variable stands where a file begins.
struct OpeningRow {
    VariableId variable = 0;
    RecordedValue value;
    Micros readAt = 0; // of the value
    host::ValueQuality quality;
};

// What is written together.
struct Batch {
    std::vector<NewVariable> variables;
    std::vector<PolledRow> polled;
    std::vector<OpeningRow> opening;
    std::vector<SampleRow> samples;
    std::vector<QualityRow> qualities;
    std::vector<EventRow> events;
    std::vector<MinuteRow> minutes;
};

} // namespace tavmir::recorder

#endif
