// The faults, and what makes them.
#include "faulty_line.h"

#include "shown_words.h"

#include "support/temporary_folder.h"

#include <atomic>

namespace tavmir::host
{

namespace
{

using Made = LineFault::Made;

constexpr int kPatientMs = 20000;
constexpr int kShortMs = 200;
constexpr int kForeignMs = 1000; // no reply is good, but each must have come when it is over
constexpr int kShortPauseMs = 50;
constexpr int kLongPauseMs = 1000;

const char kProject[] = R"({
  "connection": { "host": "127.0.0.1", "port": 5020, "connectTimeoutMs": %1,
                  "replyTimeoutMs": %2, "reconnectMinMs": %3, "reconnectMaxMs": 5000,
                  "retryLimit": 1 },
  "labels": [ { "name": "Main", "variables": [
    { "name": "Beside", "type": "bit", "address": 100 },
    { "name": "Level", "type": "word", "address": 160 } ] } ],
  "polled": [ { "address": "Main.Level" } ],
  "initial": [ { "address": "Main.Level", "value": 1500 } ]
})";

void answerForeign(TestServer::Client& client, const QByteArray& request)
{
    QByteArray reply = goodReply(request, kLevelIs);
    reply[0] = static_cast<char>(reply[0] ^ 0x40); // another transaction
    client.send(reply);
}

void answerShort(TestServer::Client& client, const QByteArray& request)
{
    QByteArray reply = goodReply(request, kLevelIs);
    reply.chop(1);
    reply[5] = static_cast<char>(reply[5] - 1);
    client.send(reply);
}

void answerCut(TestServer::Client& client, const QByteArray& request)
{
    client.send(goodReply(request, kLevelIs).left(8));
    client.close();
}

QString projectFile(const LineFault& fault)
{
    static const test::TemporaryFolder folder;
    static std::atomic<int> files{0}; // each line reads its own while others are written
    const int connectMs = fault.made == Made::BySilence ? kShortMs : kPatientMs;
    // Each new connection is cut at once: long pauses, so that a run ends in one of them.
    const int pauseMs = fault.answer == answerCut ? kLongPauseMs : kShortPauseMs;
    const QString text = QString(kProject).arg(connectMs).arg(fault.replyTimeoutMs).arg(pauseMs);
    const QString name = QString("%1.json").arg(++files);
    return QString::fromStdString(folder.writeFile(name.toStdString(), text.toStdString()));
}

LineFault made(const char* name, Made by, const QStringList& chancy = {})
{
    return {name, by, {}, nullptr, kPatientMs, {}, chancy};
}

// The simulated controller with options: one that answers, and one that is not waited for.
LineFault answered(const char* name, const QStringList& options, const QStringList& before = {})
{
    return {name, Made::ByController, options, nullptr, kPatientMs, before, {}};
}

LineFault unanswered(const char* name, const QStringList& options)
{
    return {name, Made::ByController, options, nullptr, kShortMs, {}, {}};
}

LineFault spoilt(const char* name, void (*answer)(TestServer::Client&, const QByteArray&),
                 int replyTimeoutMs)
{
    return {name, Made::ByServer, {}, answer, replyTimeoutMs, {}, {}};
}

} // namespace

const std::vector<LineFault>& lineFaults()
{
    // A request may be under way when the controller goes, or not. As counted, and as JSON keys.
    const QStringList inFlight = {"requests lost with a connection",
                                  "requestsLostWithAConnection",
                                  "requests that never left",
                                  "requestsThatNeverLeft",
                                  "retries",
                                  "give-ups",
                                  "giveUps"};
    static const std::vector<LineFault> faults = {
        made("connection refused", Made::ByNobody),
        made("unplugged", Made::BySilence),
        unanswered("silent", {"--fault", "drop=1"}),
        unanswered("late", {"--fault", "late=1", "--late-ms", "1500"}),
        answered("twice", {"--fault", "duplicate=1"}),
        spoilt("foreign", answerForeign, kForeignMs),
        spoilt("short", answerShort, kPatientMs),
        spoilt("cut", answerCut, kPatientMs),
        unanswered("lost", {"--fault", "lose=1"}),
        answered("exception", {"--refuse", "any:0-4294967295=4"}),
        answered("refused address", {"--refuse", "Main.Level=2"}),
        answered("unknown station", {"--stations", "9"}),
        answered("garble", {"--fault", "garble=1"}),
        answered("rate", {"--max-rate", "1"}, {"Main.Beside"}),
        made("restart", Made::ByItsReturn, inFlight),
    };
    return faults;
}

FaultyLine::FaultyLine(const LineFault& fault) : project_(projectFile(fault))
{
    switch (fault.made) {
    case Made::ByNobody:
    case Made::ByItsReturn:
        port_ = closedPort();
        break;
    case Made::BySilence:
        listener_ = std::make_unique<test::LoopbackListener>();
        listener_->goDeaf();
        port_ = listener_->port();
        break;
    case Made::ByServer:
        server_ = std::make_unique<TestServer>(
            [answer = fault.answer](TestServer::Client& client, const QByteArray& request, int) {
                answer(client, request);
            });
        port_ = server_->port();
        break;
    case Made::ByController:
        controller_ = std::make_unique<Controller>(0, project_, fault.options);
        port_ = controller_->port();
        break;
    }
}

void FaultyLine::controllerComes()
{
    controller_ = std::make_unique<Controller>(port_, project_);
}

void FaultyLine::controllerGoes()
{
    controller_.reset();
}

} // namespace tavmir::host
