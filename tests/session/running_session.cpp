// The tests' project, and the session on it.
#include "running_session.h"

#include "project/project_reader.h"
#include "project/value_format.h"
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

std::string stateOf(const OperationOutcome& outcome)
{
    switch (outcome.state) {
    case OperationState::done:
        return "done";
    case OperationState::failed:
        return "failed";
    case OperationState::unknown:
        break;
    }
    return "unknown";
}

} // namespace

void RunningSession::loadDriver()
{
    QStringList problems;
    driver_ = Driver::load(TAVMIR_DRIVER, problems);
    ASSERT_TRUE(driver_) << problems.join('\n').toStdString();
}

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
    session_ = std::make_unique<HostSession>(driver_->api(), project_, options_,
                                             [](bool, const QString&) {});
    ASSERT_EQ("", session_->setUp().toStdString());
}

void RunningSession::open(const Setting& setting)
{
    prepare(setting);
    start();
}

void RunningSession::reset()
{
    session_.reset();
    driver_.reset();
    loadDriver();
}

project::Element RunningSession::element(const QString& address) const
{
    const project::Resolution resolution = project::resolveAddress(project_, address);
    EXPECT_TRUE(resolution.ok) << resolution.problem.toStdString();
    return resolution.element;
}

Asked RunningSession::queueWrite(const QString& address, const QString& value, int deadlineMs)
{
    Asked asked;
    asked.element = element(address);
    asked.deadline = Deadline(deadlineMs);
    const project::EncodedValue encoded =
        project::encodeValue(asked.element, project::Format::automatic, value);
    EXPECT_TRUE(encoded.ok) << encoded.problem.toStdString();
    asked.id = session_->queueWrite(asked.element, encoded.bytes, asked.deadline);
    return asked;
}

Asked RunningSession::queueRead(const QString& address, int deadlineMs)
{
    Asked asked;
    asked.element = element(address);
    asked.deadline = Deadline(deadlineMs);
    asked.isRead = true;
    asked.id = session_->readOnce(asked.element, asked.deadline);
    return asked;
}

Ended RunningSession::await(const Asked& asked)
{
    if (!asked.id) {
        return {"failed", "it was not queued"};
    }
    const OperationOutcome outcome = session_->await(*asked.id, asked.deadline);
    Ended ended{stateOf(outcome), outcome.reason.toStdString()};
    if (asked.isRead && outcome.ok()) {
        ended.value = project::decodeValue(asked.element, project::Format::automatic,
                                           session_->cachedValue(asked.element))
                          .toStdString();
    }
    return ended;
}

Ended RunningSession::write(const QString& address, const QString& value, int deadlineMs)
{
    const project::Element target = element(address);
    const project::EncodedValue encoded =
        project::encodeValue(target, project::Format::automatic, value);
    EXPECT_TRUE(encoded.ok) << encoded.problem.toStdString();
    const OperationOutcome outcome = session_->write(target, encoded.bytes, Deadline(deadlineMs));
    return {stateOf(outcome), outcome.reason.toStdString()};
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

uint64_t RunningSession::connectFailures() const
{
    return session_->statistics().connectFailures.value();
}

bool RunningSession::reaches(const QByteArray& functions, size_t count)
{
    return test::waitUntil([&] { return controller_.count(functions) >= count; });
}

} // namespace tavmir::host
