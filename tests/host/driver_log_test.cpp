// The driver's log file, as a user asks for it with --log. It is one for the whole machine: this
// test runs beside no other that moves or fills it.
#include "programs.h"

#include "support/child_process.h"

#include <QtCore/QFile>

#include <gtest/gtest.h>

#include <random>

namespace tavmir::host
{

TEST(HostLog, GoesIntoTheDriversFile)
{
    const Controller controller;
    const quint32 number = std::random_device()() | 1;
    const QString value = "0x" + QString::number(number, 16);
    QFile file("/tmp/debug.log");
    const qint64 before = file.size();
    const QStringList write = {"Main.Recipe[3]=" + value, "--log"};
    EXPECT_EQ(
        0, test::runProcess(TAVMIR_HOST_PROGRAM, hostArguments("write", controller.place(), write))
               .exitStatus);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    file.seek(file.size() < before ? 0 : before);
    QByteArray bytes(4, '\0');
    for (int i = 0; i < 4; ++i) {
        bytes[i] = static_cast<char>(number >> (8 * i) & 0xFF);
    }
    const QByteArray entry = "00001060" + bytes.toHex().toUpper() + "\""; // Recipe[3] lies at 4192
    bool found = false;
    while (!file.atEnd() && !found) {
        const QByteArray line = file.readLine();
        found = line.contains("WriteAnalog") && line.contains(entry);
    }
    EXPECT_TRUE(found);
}

} // namespace tavmir::host
