// `tavmir-host check`, and `run` beside a controller that lacks an address, as a user meets them.
#include "programs.h"

#include "link/test_server.h"
#include "session/fake_controller.h"
#include "support/child_process.h"
#include "support/wait_until.h"

#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>

#include <gtest/gtest.h>

#include <csignal>

namespace tavmir::host
{

namespace
{

const QString kHost = TAVMIR_HOST_PROGRAM;
constexpr quint32 kSetpointAt = 3016; // Main.Setpoint of the example

QString placeOf(const FakeController& controller)
{
    return QString("127.0.0.1:%1").arg(controller.port());
}

} // namespace

TEST(CheckProgram, AllThatIsPolledAnswers)
{
    const Controller controller;
    const auto result = test::runProcess(kHost, hostArguments("check", controller.place()));
    EXPECT_EQ(0, result.exitStatus) << result.output.toStdString();
    EXPECT_TRUE(result.output.contains("Filling line 1")) << result.output.toStdString();
    EXPECT_TRUE(result.output.contains(", 0 refused, 0 no answer, 0 not asked"));
}

TEST(CheckProgram, OneThatIsRefusedIsNamedAndTheStatusSaysSo)
{
    FakeController controller;
    controller.lack('f', kSetpointAt);
    const auto result =
        test::runProcess(kHost, hostArguments("check", placeOf(controller), {"--format", "json"}));
    EXPECT_EQ(1, result.exitStatus);
    QStringList refused;
    QJsonObject check;
    for (const QString& line : result.output.trimmed().split('\n')) {
        const QJsonObject object = QJsonDocument::fromJson(line.toUtf8()).object();
        if (object["alone"].toObject()["end"].toString() == "refused") {
            refused << object["name"].toString();
        }
        check = object["check"].toObject();
    }
    EXPECT_EQ(QStringList("Main.Setpoint"), refused) << result.output.toStdString();
    EXPECT_EQ(1, check["alone"].toObject()["refused"].toInt());
    EXPECT_GT(check["together"].toObject()["refused"].toInt(), 1);
}

TEST(CheckProgram, WithoutAControllerItSaysWhy)
{
    const QString place = QString("127.0.0.1:%1").arg(closedPort());
    const auto result = test::runProcess(kHost, hostArguments("check", place));
    EXPECT_EQ(1, result.exitStatus);
    EXPECT_TRUE(result.errors.contains("no connection to " + place)) << result.errors.toStdString();
}

TEST(CheckProgram, ASignalEndsItWithWhatIsKnown)
{
    FakeController controller;
    controller.judge("dfl", [](const QByteArray& request, int) {
        return countOf(request) == 1 && addressesOf(request).front() == kSetpointAt
                   ? FakeController::Mood::silent
                   : FakeController::Mood::answers;
    });
    Program host(kHost, hostArguments("check", placeOf(controller)));
    EXPECT_TRUE(
        test::waitUntil([&] { return controller.requestsOf("f", kSetpointAt).size() > 1; }));
    host.signal(SIGINT);
    EXPECT_EQ(1, host.waitForEnd());
    EXPECT_TRUE(host.output().contains("in their requests: ")) << host.output().toStdString();
}

TEST(RunProgram, NamesTheVariableThatIsRefused)
{
    FakeController controller;
    controller.lack('f', kSetpointAt);
    Program host(kHost, hostArguments("run", placeOf(controller), {"--format", "json"}));
    EXPECT_TRUE(host.showsError("Main.Setpoint: refused, code 2 (illegal data address)"));
    host.signal(SIGINT);
    host.waitForEnd();
    EXPECT_TRUE(host.output().contains("\"refusedVariables\":[{\"name\":\"Main.Setpoint\""))
        << host.output().toStdString();
}

} // namespace tavmir::host
