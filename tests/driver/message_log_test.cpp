// Where messages go: debug lines into the driver's file or nowhere, warnings to standard error.
#include "driver/message_log.h"

#include <QtCore/QtDebug>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace tavmir::host
{

namespace
{

std::vector<std::string> logged;

void logInto(QtMsgType, const char* line) noexcept
{
    logged.push_back(line);
}

std::vector<std::string> before;

void handleBefore(QtMsgType, const QMessageLogContext&, const QString& text)
{
    before.push_back(text.toStdString());
}

// What standard error says of one message of each kind.
std::string sayAll()
{
    testing::internal::CaptureStderr();
    qDebug("a debug line");
    qInfo("an information");
    qWarning("a warning");
    qCritical("an error");
    return testing::internal::GetCapturedStderr();
}

using Lines = std::vector<std::string>;

} // namespace

TEST(MessageLog, WarningsAndWorseGoToStandardError)
{
    const MessageLog log;
    EXPECT_EQ("a warning\nan error\n", sayAll());
}

TEST(MessageLog, AllLinesGoIntoTheDriversFileWhileItIsOpen)
{
    logged.clear();
    DriverApi api;
    api.logMessage = logInto;
    MessageLog log;
    log.openDriverFile(api);
    EXPECT_EQ("a warning\nan error\n", sayAll());
    EXPECT_EQ((Lines{"a debug line", "an information", "a warning", "an error"}), logged);
    log.closeDriverFile();
    sayAll();
    EXPECT_EQ(4u, logged.size());
}

TEST(MessageLog, TheHandlerOfBeforeComesBack)
{
    before.clear();
    const QtMessageHandler original = qInstallMessageHandler(handleBefore);
    {
        const MessageLog log;
        sayAll();
    }
    qWarning("afterwards");
    qInstallMessageHandler(original);
    EXPECT_EQ(Lines{"afterwards"}, before);
}

} // namespace tavmir::host
