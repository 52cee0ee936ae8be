// The tests' project, and the session on it.
#include "running_session.h"

#include "project/project_reader.h"
#include "project/value_format.h"
#include "support/driver_file.h"
#include "support/wait_until.h"

namespace tavmir::host
{

namespace
{

constexpr char kLabels[] = R"(
  "labels": [ { "name": "M", "variables": [
      { "name": "bit", "type": "bit", "address": 100 },
      { "name": "w", "type": "word", "address": 3200, "bits": true },
      { "name": "alias", "type": "word", "address": 3200, "bits": true },
      { "name": "a", "type": "word", "address": 3360, "array": { "bounds": [[0, 9]] } },
      { "name": "hexed", "type": "word", "address": 3600, "array": { "radix": 16, "bounds": [[10, 13]] } },
      { "name": "d", "type": "dword", "address": 4000, "bits": true },
      { "name": "r", "type": "real", "address": 5024 },
      { "name": "text", "type": "text", "address": 6000, "words": 60 },
      { "name": "names", "type": "text", "address": 8000, "words": 3, "array": { "bounds": [[1, 3]] } },
      { "name": "pair", "type": "dword", "address": 15008, "array": { "bounds": [[0, 9]] } },
      { "name": "many", "type": "word", "address": 100000, "array": { "bounds": [[0, 29999]] } } ] } ])";

Ended endedAs(const Outcome& outcome)
{
    Ended ended{outcomeWord(outcome.state), outcome.reason.toStdString()};
    ended.acknowledged = outcome.acknowledged;
    ended.elements = outcome.elements;
    return ended;
}

} // namespace

void RunningSession::prepare(const Setting& setting)
{
    QByteArray json = "{ \"connection\": { \"port\": " + QByteArray::number(controller_.port());
    json += ", \"connectTimeoutMs\": " + QByteArray::number(kPatientMs);
    json += ", \"replyTimeoutMs\": " + QByteArray::number(setting.replyTimeoutMs);
    json += ", \"reconnectMinMs\": " + QByteArray::number(setting.reconnectMs);
    json += ", \"reconnectMaxMs\": " + QByteArray::number(setting.reconnectMs);
    json += setting.connection + " }, \"polled\": [ " + setting.polled + " ], " + kLabels + " }";
    project::ReadOutcome outcome = project::readProject(json, "session.json");
    ASSERT_TRUE(outcome.project) << outcome.error.toStdString();
    project_ = *outcome.project;
    QStringList problems;
    std::unique_ptr<Driver> driver = Driver::load(test::driverFile(TAVMIR_DRIVER), problems);
    ASSERT_TRUE(driver) << problems.join('\n').toStdString();
    session_ = std::make_unique<HostSession>(std::move(driver), project_, options_);
    reader_ = session_->feed().subscribe();
    ASSERT_EQ("", session_->setUp().toStdString());
}

void RunningSession::open(const Setting& setting)
{
    prepare(setting);
    start();
}

void RunningSession::reset()
{
    reader_.reset();
    session_.reset();
    figures_ = LineFigures();
}

QByteArray RunningSession::encoded(const project::Element& target, const QString& value) const
{
    const project::EncodedValue bytes =
        project::encodeValue(target, project::Format::automatic, value);
    EXPECT_TRUE(bytes.ok) << bytes.problem.toStdString();
    return bytes.bytes;
}

project::Element RunningSession::element(const QString& address) const
{
    const project::Resolution resolution = project::resolveAddress(project_, address);
    EXPECT_TRUE(resolution.ok) << resolution.problem.toStdString();
    return resolution.element;
}

Asked RunningSession::queueWrite(const QString& address, const QString& value, int deadlineMs)
{
    const project::Element target = element(address);
    return {session_->queueWrite(target, encoded(target, value), Deadline(deadlineMs)), target};
}

Asked RunningSession::queueRead(const QString& address, int deadlineMs)
{
    const project::Element target = element(address);
    return {session_->queueRead(target, Deadline(deadlineMs)), target};
}

Ended RunningSession::await(const Asked& asked)
{
    const Outcome outcome = session_->await(asked.id);
    Ended ended = endedAs(outcome);
    if (asked.id.kind == OperationKind::read && outcome.ok()) {
        ended.value = project::decodeValue(asked.element, project::Format::automatic,
                                           valueBytes(asked.element, outcome.bytes))
                          .toStdString();
    }
    return ended;
}

Ended RunningSession::write(const QString& address, const QString& value, int deadlineMs)
{
    const project::Element target = element(address);
    return endedAs(session_->write(target, encoded(target, value), Deadline(deadlineMs)));
}

Ended RunningSession::read(const QString& address, int deadlineMs)
{
    return await(queueRead(address, deadlineMs));
}

std::string RunningSession::poll(const std::vector<QString>& addresses, int station)
{
    std::vector<PolledElement> polled;
    for (const QString& address : addresses) {
        PolledElement entry;
        entry.element = element(address);
        entry.name = address;
        entry.station = station;
        polled.push_back(entry);
    }
    return session_->poll(polled).toStdString();
}

const LineFigures& RunningSession::figures()
{
    reader_->read([this](const FeedEntry& entry) { figures_.take(entry); },
                  [this](quint64 count) { figures_.gap(count); });
    return figures_;
}

bool RunningSession::reaches(const QByteArray& functions, size_t count)
{
    return test::waitUntil([&] { return controller_.count(functions) >= count; });
}

} // namespace tavmir::host
