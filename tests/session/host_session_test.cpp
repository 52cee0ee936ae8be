// The session: the loaded driver, its cycle thread and a controller on loopback.
#include "session/host_session.h"

#include "driver/message_log.h"
#include "fake_controller.h"
#include "feed/line_figures.h"
#include "plan/host_checks.h"
#include "project/address_expansion.h"
#include "project/project_reader.h"
#include "project/value_format.h"
#include "support/driver_file.h"
#include "support/wait_until.h"

#include <gmock/gmock.h>

namespace tavmir::host
{

namespace
{

using Mood = FakeController::Mood;
using project::Element;

constexpr int kPatientMs = 60000;
constexpr int kSentByThenMs = 5000; // waited through; a request has gone by then

std::string inWords(const Outcome& outcome)
{
    return outcomeInWords(outcome).toStdString();
}

constexpr char kLabels[] = R"(
  "types": [ { "name": "Cell", "size": 128, "members": [
      { "name": "Pos", "type": "dword", "offset": 0 },
      { "name": "Name", "type": "text", "offset": 32, "words": 4 },
      { "name": "Speed", "type": "real", "offset": 96 } ] } ],
  "labels": [ { "name": "M", "variables": [
      { "name": "bit", "type": "bit", "address": 100 },
      { "name": "w", "type": "word", "address": 3200, "bits": true },
      { "name": "d", "type": "dword", "address": 4000, "bits": true },
      { "name": "r", "type": "real", "address": 5024 },
      { "name": "text", "type": "text", "address": 6000, "words": 60 },
      { "name": "names", "type": "text", "address": 8000, "words": 3, "array": { "bounds": [[1, 3]] } },
      { "name": "cells", "type": "Cell", "address": 10000, "array": { "bounds": [[0, 1]] } },
      { "name": "grid", "type": "word", "address": 20000, "array": { "bounds": [[1, 2], [0, 2]] } },
      { "name": "many", "type": "word", "address": 100000, "array": { "bounds": [[0, 2999]] } } ] } ] )";

class Session : public testing::Test
{
protected:
    void TearDown() override
    {
        reader_.reset();
        session_.reset();
    }

    // more: further keys of the connection, and of the project
    HostSession& open(const QByteArray& connection = "", const QByteArray& more = "",
                      bool start = true, int replyTimeoutMs = kPatientMs)
    {
        const QByteArray json =
            "{ \"connection\": { \"port\": " + QByteArray::number(controller_.port()) +
            ", \"replyTimeoutMs\": " + QByteArray::number(replyTimeoutMs) +
            ", \"reconnectMinMs\": 1, \"reconnectMaxMs\": 5" + connection + " }, " + kLabels +
            more + "}";
        project::ReadOutcome outcome = project::readProject(json, "session.json");
        EXPECT_TRUE(outcome.project) << outcome.error.toStdString();
        project_ = *outcome.project;
        QStringList problems;
        std::unique_ptr<Driver> driver = Driver::load(test::driverFile(TAVMIR_DRIVER), problems);
        EXPECT_TRUE(driver) << problems.join('\n').toStdString();
        session_ = std::make_unique<HostSession>(std::move(driver), project_, options_);
        reader_ = session_->feed().subscribe();
        if (start) {
            EXPECT_EQ("", session_->setUp().toStdString());
            session_->start();
        }
        return *session_;
    }

    Element element(const QString& address) const
    {
        const project::Resolution resolution = project::resolveAddress(project_, address);
        EXPECT_TRUE(resolution.ok) << resolution.problem.toStdString();
        return resolution.element;
    }

    Outcome write(const QString& address, const QString& value)
    {
        const Element target = element(address);
        const project::EncodedValue encoded =
            project::encodeValue(target, project::Format::automatic, value);
        EXPECT_TRUE(encoded.ok) << encoded.problem.toStdString();
        return session_->write(target, encoded.bytes, Deadline(kPatientMs));
    }

    Outcome read(const QString& address)
    {
        return session_->read(element(address), Deadline(kPatientMs));
    }

    std::string cached(const QString& address)
    {
        const Element target = element(address);
        return project::decodeValue(target, project::Format::automatic,
                                    session_->cachedValue(target))
            .toStdString();
    }

    // What the feed says so far.
    const LineFigures& figures()
    {
        reader_->read([this](const FeedEntry& entry) { figures_.take(entry); });
        return figures_;
    }

    std::string noConnection() const
    {
        return "no connection to the controller: 127.0.0.1:" + std::to_string(controller_.port()) +
               ": Connection refused";
    }

    bool becomes(const QString& address, const std::string& value)
    {
        return test::waitUntil([&] { return cached(address) == value; });
    }

    void setText(quint32 address, const QByteArray& text)
    {
        for (int i = 0; i + 1 < text.size(); i += 2) {
            const quint32 word = static_cast<quint32>(static_cast<unsigned char>(text.at(i))) |
                                 static_cast<quint32>(static_cast<unsigned char>(text.at(i + 1)))
                                     << 8;
            controller_.set('f', address + static_cast<quint32>(8 * i), word);
        }
    }

    MessageLog log_; // the driver's diagnostic lines are not looked at here
    FakeController controller_;
    SessionOptions options_;
    project::Project project_;
    std::unique_ptr<HostSession> session_;
    std::unique_ptr<FeedReader> reader_;
    LineFigures figures_;
};

} // namespace

TEST_F(Session, PollsValuesOfEveryType)
{
    controller_.set('d', 100, 1);
    controller_.set('f', 3200, 0x8021);
    controller_.set('l', 4000, 4000000000u);
    controller_.set('l', 5024, 0x3FC00000);
    controller_.set('f', 20000 + 16 * 3, 77); // grid[2,1]: 1 * 2 + 1
    controller_.set('l', 10128, 5);
    open("",
         R"(, "polled": [ { "address": "M.bit" }, { "address": "M.w" }, { "address": "M.w.b[5]" },
        { "address": "M.d" }, { "address": "M.r" }, { "address": "M.grid" }, { "address": "M.cells" } ])");
    EXPECT_TRUE(becomes("M.bit", "1"));
    EXPECT_TRUE(becomes("M.w", "32801"));
    EXPECT_TRUE(becomes("M.w.b[5]", "1"));
    EXPECT_TRUE(becomes("M.w.b[4]", "0"));
    EXPECT_TRUE(becomes("M.d", "4000000000"));
    EXPECT_TRUE(becomes("M.r", "1.5"));
    EXPECT_TRUE(becomes("M.grid[2,1]", "77"));
    EXPECT_TRUE(becomes("M.cells[1].Pos", "5"));
    controller_.set('f', 3200, 1);
    EXPECT_TRUE(becomes("M.w", "1"));
}

TEST_F(Session, WholeTextsArePolled)
{
    const QByteArray longText =
        QByteArray("The quick brown fox jumps over the lazy dog; ").repeated(3).left(120);
    setText(6000, longText);
    setText(8000, "firsT1");
    setText(8000 + 256, "secon2");
    setText(8000 + 512, "third3");
    setText(10032, "cellname");
    setText(10160, "othernam");
    open(
        "",
        R"(, "polled": [ { "address": "M.text" }, { "address": "M.names" }, { "address": "M.cells" } ])");
    EXPECT_TRUE(becomes("M.text", longText.toStdString()));
    EXPECT_TRUE(becomes("M.names[1]", "firsT1"));
    EXPECT_TRUE(becomes("M.names[2]", "secon2"));
    EXPECT_TRUE(becomes("M.names[3]", "third3"));
    EXPECT_TRUE(becomes("M.cells[0].Name", "cellname"));
    EXPECT_TRUE(becomes("M.cells[1].Name", "othernam"));
}

TEST_F(Session, OneShotReadsOfEveryType)
{
    const QByteArray text = QByteArray("0123456789").repeated(12);
    setText(6000, text);
    setText(8512, "third3");
    controller_.set('d', 100, 1);
    controller_.set('l', 5024, 0x3FC00000);
    controller_.set('f', 3200, 0x20);
    open();
    for (const char* address : {"M.text", "M.names[3]", "M.bit", "M.r", "M.w.b[5]"}) {
        EXPECT_TRUE(read(address).ok()) << address;
    }
    EXPECT_EQ(text.toStdString(), cached("M.text"));
    EXPECT_EQ("third3", cached("M.names[3]"));
    EXPECT_EQ("1", cached("M.bit"));
    EXPECT_EQ("1.5", cached("M.r"));
    EXPECT_EQ("1", cached("M.w.b[5]"));
}

TEST_F(Session, TheCycleDoesNotSleepWhileWorkIsQueued)
{
    options_.idleMs = 100 * kPatientMs;
    open("", "", false);
    ASSERT_EQ("", session_->setUp().toStdString());
    std::vector<OperationId> reads;
    for (int i = 0; i < 1000; ++i) {
        reads.push_back(
            session_->queueRead(element(QString("M.many[%1]").arg(i)), Deadline(kPatientMs)));
    }
    session_->start(); // all is queued: nothing wakes the cycle from now on
    for (const OperationId id : reads) {
        ASSERT_TRUE(session_->await(id).ok());
    }
    EXPECT_GT(controller_.requests("f").size(), 20u) << "the empty calls come after five requests";
}

TEST_F(Session, WritesReachTheControllerAsTheSameNumber)
{
    open();
    EXPECT_TRUE(write("M.w", "0x1234").ok());
    EXPECT_EQ(0x1234u, controller_.get('f', 3200));
    EXPECT_TRUE(write("M.d", "-2").ok());
    EXPECT_EQ(0xFFFFFFFEu, controller_.get('l', 4000));
    EXPECT_TRUE(write("M.r", "1.5").ok());
    EXPECT_EQ(0x3FC00000u, controller_.get('l', 5024));
    EXPECT_TRUE(write("M.bit", "1").ok());
    EXPECT_EQ(1u, controller_.get('d', 100));
    EXPECT_TRUE(write("M.names[2]", "abc").ok());
    EXPECT_EQ(0x6261u, controller_.get('f', 8256));
    EXPECT_EQ(0x0063u, controller_.get('f', 8272));
    EXPECT_EQ(0u, controller_.get('f', 8288));
}

TEST_F(Session, WriteOverTwoRequestsEndsOnce)
{
    open();
    EXPECT_TRUE(write("M.text", QString(120, 'z')).ok());
    EXPECT_EQ(2u, controller_.requests("g").size());
    EXPECT_EQ(0x7A7Au, controller_.get('f', 6000 + 16 * 59));
    EXPECT_EQ(1u, figures().ended(OperationKind::write));
    EXPECT_EQ(1u, figures().ended(OperationKind::write, OutcomeState::done));
}

TEST_F(Session, BitWritesKeepTheOtherBits)
{
    controller_.set('f', 3200, 0x0F0F);
    controller_.set('l', 4000, 0x80000001u);
    open();
    EXPECT_TRUE(write("M.w.b[4]", "1").ok());
    EXPECT_TRUE(write("M.w.b[5]", "1").ok());
    EXPECT_TRUE(write("M.w.b[0]", "0").ok());
    EXPECT_EQ(0x0F3Eu, controller_.get('f', 3200));
    EXPECT_TRUE(write("M.d.b[30]", "1").ok());
    EXPECT_EQ(0xC0000001u, controller_.get('l', 4000));
}

TEST_F(Session, BitsWrittenFromManyThreadsAllArrive)
{
    open("", R"(, "polled": [ { "address": "M.w" } ])");
    std::vector<std::thread> writers;
    for (int bit = 0; bit < 8; ++bit) {
        writers.emplace_back(
            [this, bit] { EXPECT_TRUE(write(QString("M.w.b[%1]").arg(bit), "1").ok()); });
    }
    for (std::thread& writer : writers) {
        writer.join();
    }
    EXPECT_EQ(0xFFu, controller_.get('f', 3200));
}

TEST_F(Session, BitIsNotWrittenWhenItsWordCannotBeRead)
{
    controller_.treat("f", Mood::refuses);
    open(", \"retryLimit\": 0");
    const Outcome outcome = write("M.w.b[4]", "1");
    EXPECT_EQ(OutcomeState::notSent, outcome.state);
    EXPECT_EQ(
        "its word could not be read: refused: the controller refused the request: exception 3 "
        "(illegal data value)",
        outcome.reason.toStdString());
    EXPECT_TRUE(controller_.requests("g").empty());
}

TEST_F(Session, EveryWriteOfAFailedBatchAndBehindItEndsOnce)
{
    controller_.treat("g", Mood::refuses);
    open(", \"retryLimit\": 1");
    std::vector<OperationId> ids;
    for (int i = 0; i < 100; ++i) {
        ids.push_back(session_->queueWrite(element(QString("M.many[%1]").arg(i)),
                                           QByteArray(2, 'x'), Deadline(kPatientMs)));
    }
    int refused = 0;
    int dropped = 0;
    for (const OperationId& id : ids) {
        const Outcome outcome = session_->await(id);
        refused += outcome.state == OutcomeState::refused ? 1 : 0;
        dropped += outcome.state == OutcomeState::notSent ? 1 : 0;
        EXPECT_THAT(outcome.reason.toStdString(),
                    testing::HasSubstr("the controller refused the request: exception 3"));
    }
    EXPECT_GT(refused, 0);
    EXPECT_EQ(100, refused + dropped);
    EXPECT_EQ(100u, figures().ended(OperationKind::write));
    EXPECT_EQ(0u, controller_.get('f', 100000));
    controller_.treat("g", Mood::answers);
    EXPECT_TRUE(write("M.many[5]", "9").ok());
}

TEST_F(Session, GivenUpPollingLeavesWritesAlone)
{
    controller_.treat("d", Mood::refuses);
    open(", \"retryLimit\": 0", R"(, "polled": [ { "address": "M.bit" } ])");
    EXPECT_TRUE(test::waitUntil([&] { return figures().giveUps > 2; }));
    for (int i = 0; i < 20; ++i) {
        EXPECT_TRUE(write("M.w", QString::number(i)).ok());
    }
    EXPECT_EQ(20u, figures().ended(OperationKind::write, OutcomeState::done));
}

TEST_F(Session, FailureReasonsAreToldApart)
{
    open(", \"retryLimit\": 0, \"connectTimeoutMs\": 5000", "", true, 2000);
    controller_.treat("g", Mood::silent);
    EXPECT_EQ("unknown: the controller did not answer within 2000 ms", inWords(write("M.w", "1")));
    controller_.treat("g", Mood::refuses);
    EXPECT_EQ("refused: the controller refused the request: exception 3 (illegal data value)",
              inWords(write("M.w", "1")));
    controller_.treat("g", Mood::tooLong);
    EXPECT_EQ("unknown: the controller's reply has 309 bytes instead of 9",
              inWords(write("M.w", "1")));
    EXPECT_GE(figures().refusedReplies, 1u);
    controller_.unplug();
    ASSERT_TRUE(test::waitUntil([&] { return !session_->connection().isConnected(); }));
    const Outcome outcome = session_->write(element("M.w"), QByteArray(2, '\1'), Deadline(300));
    EXPECT_EQ("not sent: " + noConnection(), inWords(outcome));
}

TEST_F(Session, ReadsBeyondTheDriversListAllEnd)
{
    for (quint32 i = 0; i < 3000; ++i) {
        controller_.set('f', 100000 + 16 * i, i);
    }
    open();
    const project::Expansion many = project::expandAddress(project_, "M.many");
    std::vector<OperationId> ids;
    for (const Element& target : many.elements) {
        ids.push_back(session_->queueRead(target, Deadline(kPatientMs)));
    }
    for (const OperationId& id : ids) {
        EXPECT_TRUE(session_->await(id).ok());
    }
    EXPECT_EQ("2999", cached("M.many[2999]"));
    EXPECT_EQ(3000u, figures().ended(OperationKind::read, OutcomeState::done));
}

TEST_F(Session, LocalWritesStayInTheCaches)
{
    open(", \"writeMode\": \"local\"");
    EXPECT_TRUE(write("M.w", "5").ok());
    EXPECT_TRUE(write("M.w.b[1]", "1").ok());
    EXPECT_EQ("7", cached("M.w"));
    EXPECT_TRUE(controller_.requests("efglm").empty());
}

TEST_F(Session, WritesToTwoStationsNeverShareARequest)
{
    open(", \"stationMode\": \"own\", \"station\": 1",
         R"(, "polled": [ { "address": "M.d", "station": 2 } ])");
    std::vector<OperationId> ids;
    for (int i = 0; i < 20; ++i) {
        for (const char* address : {"M.d", "M.cells[0].Pos"}) {
            ids.push_back(
                session_->queueWrite(element(address), QByteArray(4, '\1'), Deadline(kPatientMs)));
        }
    }
    for (const OperationId& id : ids) {
        EXPECT_TRUE(session_->await(id).ok());
    }
    for (const QByteArray& request : controller_.requests("m")) {
        const QByteArray address = request.mid(9, 4).toHex();
        for (int i = 0; i < request.at(8); ++i) {
            EXPECT_EQ(address, request.mid(9 + 8 * i, 4).toHex());
        }
        EXPECT_EQ(address == "00000fa0" ? 2 : 1, request.at(6));
    }
}

TEST_F(Session, StationsThatWouldShareARequestAreRefusedBeforeTheDriverIsCalled)
{
    open(", \"stationMode\": \"own\"", R"(, "polled": [ { "address": "M.w", "station": 1 },
         { "address": "M.grid[1,1]", "station": 2 }, { "address": "M.bit", "station": 3 } ])",
         false);
    EXPECT_EQ("M.w of station 1 and M.grid[1,1] of station 2 would share a request, which carries "
              "one station only",
              session_->setUp().toStdString());
}

TEST_F(Session, ElementsThatAreNotTheProjectsNeverReachTheDriver)
{
    open();
    Element stranger = element("M.w");
    stranger.addressText = "M.cells[0]"; // resolves to no type: the rebuild would keep its lock
    std::vector<PolledElement> polled(1);
    polled[0].element = stranger;
    EXPECT_EQ("M.cells[0] is a whole structure", session_->poll(polled).toStdString());
    EXPECT_EQ("not sent: M.cells[0] is a whole structure",
              inWords(session_->read(stranger, Deadline(kPatientMs))));
    EXPECT_EQ("not sent: M.cells[0] is a whole structure",
              inWords(session_->write(stranger, QByteArray(2, 'x'), Deadline(kPatientMs))));
    const OperationId bit =
        session_->queueWrite(element("M.w.b[1]"), QByteArray(1, '\1'), Deadline(kPatientMs));
    EXPECT_EQ("not sent: one bit of a word is not queued", inWords(session_->await(bit)));
    stranger = element("M.w");
    stranger.type = project::DataType::dword;
    polled[0].element = stranger;
    EXPECT_EQ("M.w is not what the project says", session_->poll(polled).toStdString());
    EXPECT_TRUE(write("M.w", "1").ok());
    EXPECT_EQ(1u, controller_.requests("efglm").size() - controller_.requests("fl").size());
}

TEST_F(Session, WriteRecordsAreCheckedBeforeTheDriverGetsThem)
{
    open();
    RW_VAR record;
    const auto said = [&] {
        return inWords(session_->await(session_->queueRecord(record, Deadline(kPatientMs))));
    };
    record.dataType = 12;
    record.elementAddress = 3200;
    record.station = 1;
    record.count = 1;
    EXPECT_EQ("not sent: type 12 cannot be written", said());
    record.dataType = 4;
    record.value = QByteArray(1, '\5');
    EXPECT_EQ("not sent: a value of 1 bytes is too short for type 4", said());
    record.value = QByteArray("\5\6");
    EXPECT_EQ("not sent: hostData2 is 0: the acknowledgement would be decoded", said());
    record.hostData2 = 1;
    EXPECT_EQ("done", said());
    EXPECT_EQ(0x0605u, controller_.get('f', 3200));
    EXPECT_EQ("there is no record", refusalOfWriteRecord(nullptr).toStdString());
}

TEST_F(Session, StationSwitchedOffGetsNoRequests)
{
    open(", \"retryLimit\": 0", R"(, "polled": [ { "address": "M.w" } ])");
    EXPECT_TRUE(test::waitUntil([&] { return figures().replies > 0; }));
    session_->enableStation(1, false);
    EXPECT_TRUE(test::waitUntil([&] { return figures().suppressed > 1; }));
    const size_t sent = controller_.requests("f").size();
    const uint64_t suppressed = figures().suppressed;
    EXPECT_TRUE(test::waitUntil([&] { return figures().suppressed > suppressed + 2; }));
    EXPECT_EQ(sent, controller_.requests("f").size());
    EXPECT_EQ(OutcomeState::notSent, write("M.w", "5").state);
    session_->enableStation(1, true);
    EXPECT_TRUE(test::waitUntil([&] { return controller_.requests("f").size() > sent; }));
    EXPECT_TRUE(write("M.w", "5").ok());
}

TEST_F(Session, PollingResumesWhenTheControllerComesBack)
{
    controller_.set('f', 3200, 1);
    open(", \"retryLimit\": 1", R"(, "polled": [ { "address": "M.w" } ])");
    EXPECT_TRUE(becomes("M.w", "1"));
    controller_.unplug();
    ASSERT_TRUE(test::waitUntil([&] { return !session_->connection().isConnected(); }));
    const Outcome failed = session_->write(element("M.w"), QByteArray(2, '\5'), Deadline(50));
    EXPECT_EQ("not sent: " + noConnection(), inWords(failed));
    controller_.set('f', 3200, 2);
    controller_.plug();
    EXPECT_TRUE(becomes("M.w", "2"));
    EXPECT_TRUE(write("M.w", "7").ok());
    EXPECT_EQ(7u, controller_.get('f', 3200));
    EXPECT_EQ(1u, figures().ended(OperationKind::write, OutcomeState::notSent));
    EXPECT_EQ(1u, figures().ended(OperationKind::write, OutcomeState::done));
}

TEST_F(Session, StopEndsWhatIsPending)
{
    controller_.treat("gf", Mood::silent);
    open("", R"(, "polled": [ { "address": "M.bit" } ])");
    Outcome outcome;
    std::thread writer([&] { outcome = write("M.w", "5"); });
    EXPECT_TRUE(test::waitUntil([&] { return !controller_.requests("g").empty(); }));
    session_->stop();
    writer.join();
    EXPECT_EQ("unknown: the host stopped before an answer came", inWords(outcome));
}

TEST_F(Session, ATextKeptBackByABitNamesAllItsElements)
{
    controller_.treat("f", Mood::silent);
    open();
    std::thread bit([&] { write("M.w.b[4]", "1"); });
    EXPECT_TRUE(test::waitUntil([&] { return !controller_.requests("f").empty(); }));
    const Outcome outcome = session_->write(element("M.text"), QByteArray(120, 'x'), Deadline(20));
    EXPECT_EQ("not sent: earlier writes did not end in time", inWords(outcome));
    EXPECT_EQ(60, outcome.elements);
    session_->stop();
    bit.join();
}

TEST_F(Session, PolledListMayChangeWhileTheCycleRuns)
{
    controller_.set('f', 3200, 1);
    controller_.set('l', 4000, 2);
    open("", R"(, "polled": [ { "address": "M.w" } ])");
    EXPECT_TRUE(becomes("M.w", "1"));
    std::vector<PolledElement> other(1);
    other[0].element = element("M.d");
    other[0].station = 1;
    for (int i = 0; i < 20; ++i) {
        EXPECT_EQ("", session_->poll(other).toStdString());
    }
    EXPECT_TRUE(becomes("M.d", "2"));
    EXPECT_EQ(1u, session_->polledElementsOnWire());
}

TEST_F(Session, NoAnswerInTimeIsSaidSo)
{
    controller_.treat("g", Mood::silent);
    open(", \"retryLimit\": 3");
    const Outcome outcome =
        session_->write(element("M.w"), QByteArray(2, '\1'), Deadline(kSentByThenMs));
    EXPECT_EQ("unknown: no answer in its time, and it is still under way", inWords(outcome));
}

// What the driver makes of each address is what the tools make of it.
TEST_F(Session, DriverAndToolsResolveAllElementsAlike)
{
    open("", "", false);
    ASSERT_EQ("", session_->setUp().toStdString());
    for (const Element& target : project::leafElements(project_)) {
        RW_VAR variable;
        variable.addressText = target.addressText;
        variable.count = 1;
        ASSERT_NE(0, session_->api().addOnceRead(&variable)) << target.addressText.toStdString();
        EXPECT_EQ(target.typeCode(), variable.dataType) << target.addressText.toStdString();
        EXPECT_EQ(static_cast<qint32>(target.address),
                  variable.elementAddress - project::wireElementBits(target))
            << target.addressText.toStdString();
    }
}

TEST_F(Session, DriverAndToolsRefuseAlike)
{
    open("", "", false);
    ASSERT_EQ("", session_->setUp().toStdString());
    for (const char* text : {"",
                             "M",
                             "X.y",
                             "M.nope",
                             "M.w[1]",
                             "M.grid",
                             "M.grid[1]",
                             "M.grid[0,0]",
                             "M.grid[x,1]",
                             "M.grid[9,9]",
                             "M.cells",
                             "M.cells.Pos",
                             "M.cells[0]",
                             "M.cells[0].x",
                             "M.cells[9].Pos",
                             "M.w.b[99]",
                             "M.w.b[1].c",
                             "M.w.[5]",
                             "M[3].w",
                             "M.bit.b[1]",
                             "M..w",
                             "M.cells[0].Pos[1]",
                             "M.w.b[x]",
                             "M.names[0]",
                             "M.names"}) {
        QByteArray data;
        const bool accepted = session_->api().readCached(text, 0, 0, 0, &data, 1) != 0;
        EXPECT_EQ(accepted, project::resolveAddress(project_, text).driverCode == 0) << text;
    }
}

TEST(Driver, LibraryThatIsNoneIsRefused)
{
    QStringList problems;
    EXPECT_EQ(nullptr, Driver::load("/nonexistent.so", problems));
    ASSERT_EQ(1, problems.size());
    EXPECT_TRUE(problems[0].startsWith("cannot load the driver: "));
}

TEST(Driver, EachMissingEntryPointIsNamed)
{
    QStringList problems;
    EXPECT_EQ(nullptr, Driver::load("libm.so.6", problems));
    problems.clear();
    EXPECT_EQ(nullptr, Driver::load(TAVMIR_EMPTY_LIBRARY, problems));
    EXPECT_EQ(19, problems.size());
    EXPECT_TRUE(problems.first().endsWith("has no entry point SetComInfo"));
    EXPECT_TRUE(problems.last().endsWith(
        "has no entry point customMessageHandler(QtMsgType, const char*)"));
}

} // namespace tavmir::host
