// The message handler that appends to the log file of the machine. Others may write there too:
// each test looks for a line of its own and removes nothing.
#include "support/qt_printers.h"
#include "support/wait_until.h"
#include "tavmir_kx_tcp/host_interface.h"

#include <QtCore/QDateTime>
#include <QtCore/QFile>

#include <gtest/gtest.h>

#include <cstdio>
#include <string>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>
#include <vector>

using tavmir::test::waitUntil;

namespace
{

const char* const kLogFile = "/tmp/debug.log";
const char* const kStampPattern = "yyyy.MM.dd.hh:mm:ss";

QByteArray logContent()
{
    QFile file(QString::fromLatin1(kLogFile));
    if (!file.open(QIODevice::ReadOnly)) {
        return QByteArray();
    }
    return file.readAll();
}

QByteArray uniqueText()
{
    static int number = 0;
    return "tavmir-log-test-" + QByteArray::number(static_cast<int>(getpid())) + "-" +
           QByteArray::number(++number);
}

// Lines that end in ':' and the message.
QList<QByteArray> linesOf(const QByteArray& message)
{
    QList<QByteArray> found;
    for (const QByteArray& line : logContent().split('\n')) {
        if (line.endsWith(":" + message)) {
            found << line;
        }
    }
    return found;
}

TEST(DebugLogFile, AMessageIsAppendedAsStampColonMessage)
{
    const QByteArray before = logContent();
    const QByteArray message = uniqueText();
    // Early in a second, where leading zeros of the milliseconds would show.
    ASSERT_TRUE(waitUntil([] { return QTime::currentTime().msec() < 50; }));
    const QDateTime earliest = QDateTime::currentDateTime();
    customMessageHandler(QtDebugMsg, message.constData());
    const QDateTime latest = QDateTime::currentDateTime();

    const QByteArray after = logContent();
    EXPECT_TRUE(after.startsWith(before)) << "what was there stays";
    EXPECT_TRUE(after.endsWith('\n'));
    const QList<QByteArray> lines = linesOf(message);
    ASSERT_EQ(lines.size(), 1);
    const QByteArray stamp = lines.first().left(lines.first().size() - message.size() - 1);
    const int dot = stamp.lastIndexOf('.');
    const QDateTime seconds = QDateTime::fromString(
        QString::fromLatin1(stamp.left(dot).constData()), QString::fromLatin1(kStampPattern));
    ASSERT_TRUE(seconds.isValid()) << stamp.constData();
    const QByteArray digits = stamp.mid(dot + 1);
    const int milliseconds = digits.toInt();
    EXPECT_EQ(QByteArray::number(milliseconds), digits);
    EXPECT_GE(seconds.addMSecs(milliseconds), earliest);
    EXPECT_LE(seconds.addMSecs(milliseconds), latest);
}

TEST(DebugLogFile, TheTypeDoesNotChangeTheLineAndNothingAborts)
{
    const QByteArray message = uniqueText();
    for (const QtMsgType type : {QtDebugMsg, QtWarningMsg, QtCriticalMsg, QtFatalMsg}) {
        customMessageHandler(type, message.constData());
    }
    EXPECT_EQ(linesOf(message).size(), 4);
}

TEST(DebugLogFile, TheFileIsMadeWhenMissing)
{
    const std::string aside = std::string(kLogFile) + ".aside-" + std::to_string(getpid());
    const bool existed = std::rename(kLogFile, aside.c_str()) == 0;
    const QByteArray message = uniqueText();
    customMessageHandler(QtDebugMsg, message.constData());
    customMessageHandler(QtDebugMsg, message.constData());
    EXPECT_EQ(linesOf(message).size(), 2);

    if (existed) {
        // What was written meanwhile goes behind what was there, so that no line is lost.
        const QByteArray written = logContent();
        ASSERT_EQ(std::rename(aside.c_str(), kLogFile), 0);
        QFile file(QString::fromLatin1(kLogFile));
        ASSERT_TRUE(file.open(QIODevice::Append));
        file.write(written);
    }
}

TEST(DebugLogFile, WhenTheFileCannotBeOpenedTheLineIsLostSilently)
{
    const std::string aside = std::string(kLogFile) + ".aside-" + std::to_string(getpid());
    const bool existed = std::rename(kLogFile, aside.c_str()) == 0;
    ASSERT_EQ(mkdir(kLogFile, 0700), 0);
    const QByteArray message = uniqueText();
    customMessageHandler(QtCriticalMsg, message.constData());
    EXPECT_EQ(rmdir(kLogFile), 0) << "nothing was put into the folder";
    if (existed) {
        ASSERT_EQ(std::rename(aside.c_str(), kLogFile), 0);
    }
    EXPECT_TRUE(linesOf(message).isEmpty());
}

TEST(DebugLogFile, NoHandleStaysOpen)
{
    customMessageHandler(QtDebugMsg, uniqueText().constData());
    const int probe = dup(0);
    ASSERT_GE(probe, 0);
    close(probe);
    for (int i = 0; i < 50; ++i) {
        customMessageHandler(QtDebugMsg, uniqueText().constData());
    }
    const int again = dup(0);
    EXPECT_EQ(again, probe);
    close(again);
}

TEST(DebugLogFile, AMissingTextWritesAnEmptyMessage)
{
    const int before = logContent().count('\n');
    customMessageHandler(QtDebugMsg, nullptr);
    customMessageHandler(QtDebugMsg, "");
    const QByteArray after = logContent();
    EXPECT_GE(after.count('\n'), before + 2);
}

TEST(DebugLogFile, AMessageMayHoldSeveralLinesAndPercentSigns)
{
    const QByteArray first = uniqueText();
    const QByteArray last = uniqueText();
    const QByteArray message = first + "\n100%s %d %1 \"quoted\" \\ " + last;
    customMessageHandler(QtDebugMsg, message.constData());
    EXPECT_TRUE(logContent().contains(":" + message + "\n"));
}

TEST(DebugLogFile, EveryByteArrivesAsItIs)
{
    const QByteArray message = uniqueText() + " \xC3\xA4\xFF\x01\t end";
    customMessageHandler(QtDebugMsg, message.constData());
    EXPECT_EQ(linesOf(message).size(), 1);
}

TEST(DebugLogFile, LinesOfSeveralThreadsAllArrive)
{
    const QByteArray message = uniqueText();
    std::vector<std::thread> threads;
    for (int thread = 0; thread < 4; ++thread) {
        threads.emplace_back([&message] {
            for (int i = 0; i < 50; ++i) {
                customMessageHandler(QtDebugMsg, message.constData());
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(logContent().count(":" + message), 200);
}

} // namespace
