// A host with declarations of its own loads the driver, runs it through a whole cycle and unloads
// it, once with a look at every byte, and a thousand times with a look at what stays behind.
#include "abi/foreign_host.h"
#include "support/driver_file.h"
#include "support/qt_compat.h"

#include <QtCore/QDir>
#include <QtCore/QFile>

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <malloc.h>

#include <cstring>
#include <string>
#include <vector>

using namespace foreign;

namespace
{

const int kDefaultStation = 6;
const int kRetryLimit = 7;
const int kWriteMode = 16;
const int kScanDone = 17;
const int kLinkNumber = 18;
const int kSendWrites = 2;

void swallow(QtMsgType, const QString&) {}

struct Report {
    int link, owner, number, outcome;
};

std::vector<Report> reports;
int givenUpCalls;

int variableDone(int link, int owner, int number, int outcome)
{
    reports.push_back(Report{link, owner, number, outcome});
    return 0;
}

int givenUp(QList<Variable> variables, int, int flag)
{
    givenUpCalls += variables.isEmpty() && flag == 1 ? 1 : 0;
    return 0;
}

Label plainVariable(const char* name, unsigned short flags, int place)
{
    Label label = Label();
    label.name = QString::fromLatin1(name);
    label.flags = flags;
    label.place = place;
    return label;
}

QList<Label> plant()
{
    Label type = Label();
    type.flags = 0x200;
    type.members << plainVariable("Speed", 4, 3000) << plainVariable("Position", 6, 4096);
    type.memberCount = 2;
    Label line = Label();
    line.name = "Line";
    line.type << type;
    return QList<Label>() << line;
}

Polled polled(const char* address, int elements)
{
    Polled variable = Polled();
    variable.address = QString::fromLatin1(address);
    variable.elements = elements;
    return variable;
}

std::string hexOf(const QByteArray& bytes)
{
    return bytes.toHex().constData();
}

QByteArray bytesOf(const char* hex)
{
    return QByteArray::fromHex(hex);
}

class ForeignHost : public ::testing::Test
{
protected:
    ForeignHost()
    {
        tavmir::test::installMessageHook(swallow);
        // The callbacks' store must not look like growth.
        reports.clear();
        reports.reserve(16);
        givenUpCalls = 0;
    }
    ~ForeignHost() override { tavmir::test::installMessageHook(nullptr); }

    void load()
    {
        library = dlopen(tavmir::test::driverFile(TAVMIR_DRIVER_FILE), RTLD_NOW | RTLD_LOCAL);
        ASSERT_NE(library, nullptr) << dlerror();
        driver = Driver();
        ASSERT_EQ(lookUp(library, driver).toStdString(), "");
    }

    void unload()
    {
        ASSERT_EQ(dlclose(library), 0);
        ASSERT_EQ(dlopen(tavmir::test::driverFile(TAVMIR_DRIVER_FILE), RTLD_NOW | RTLD_NOLOAD),
                  nullptr);
    }

    void setUpLink()
    {
        std::memset(&connection, 0, sizeof connection);
        connection.words[kDefaultStation] = 1;
        connection.words[kWriteMode] = kSendWrites;
        connection.words[kLinkNumber] = 5;
        connection.words[10] = connection.words[13] = 99;
        connection.words[23] = 4711;
        driver.setComInfo(&connection);
        ASSERT_EQ(connection.words[10], 0);
        ASSERT_EQ(connection.words[13], 0);
        driver.registerCallbacks(variableDone, givenUp);
        driver.flashLocalRegister(&connection, &driver, &library);
        ASSERT_EQ(*driver.localBits, &connection);
        ASSERT_EQ(*driver.localWords, &driver);
        ASSERT_EQ(*driver.localRegisters, &library);
        QList<Label> labels = plant();
        driver.passLabels(&labels);
    }

    // The next request must be `frame`; it is answered with `reply` (empty: no answer).
    ::testing::AssertionResult exchange(const char* frame, const char* reply, int expectedResult)
    {
        const Request* request = driver.nextRequest();
        if (request == nullptr) {
            return ::testing::AssertionFailure() << "nothing to send";
        }
        if (hexOf(request->frame) != frame || request->frameBytes != request->frame.size()) {
            return ::testing::AssertionFailure()
                   << "frame " << hexOf(request->frame) << " of " << request->frameBytes;
        }
        QByteArray answer = bytesOf(reply);
        if (!answer.isEmpty() && request->answerBytes != answer.size()) {
            return ::testing::AssertionFailure() << "expects " << request->answerBytes << " bytes";
        }
        const Variable* result = driver.answer(&answer, answer.size());
        if (result->result != expectedResult) {
            return ::testing::AssertionFailure() << "result " << result->result;
        }
        return ::testing::AssertionSuccess();
    }

    void runCycle()
    {
        QList<Polled> screen;
        screen << polled("Line.Speed", 1) << polled("Line.Position", 2);
        ASSERT_EQ(driver.rebuild(&screen), 2);

        QByteArray speed = bytesOf("3412");
        ASSERT_EQ(driver.set("Line.Speed", 0, QString(), 1, &speed, 1, 31, 32), 1);
        ASSERT_TRUE(exchange("000000000009016701"
                             "00000bb83412",
                             "000000000003016701", 1));

        Variable once = Variable();
        once.owner = 41;
        once.number = 42;
        once.address = "Line.Position";
        once.elements = 2;
        ASSERT_EQ(driver.addOnceRead(&once), 1);
        ASSERT_EQ(once.type, 6);
        ASSERT_TRUE(exchange("000100000007016c01"
                             "00001000",
                             "00010000000b016c01"
                             "00001000000186a0",
                             1));

        Variable plain = Variable();
        plain.owner = 51;
        plain.number = 52;
        plain.noValues = 1;
        plain.type = 1;
        plain.position = 16;
        plain.station = 3; // differs from the count of elements, as every neighbour should
        plain.elements = 1;
        plain.bytes = bytesOf("01");
        ASSERT_EQ(driver.addWrite(&plain), 1);
        ASSERT_TRUE(exchange("000200000008036501"
                             "0000001001",
                             "000200000003036501", 1));

        ASSERT_TRUE(exchange("000300000007016601"
                             "00000bb8",
                             "000300000009016601"
                             "00000bb8beef",
                             1));
        ASSERT_TRUE(exchange("000400000007016c01"
                             "00001000",
                             "00040000000b016c01"
                             "0000100012345678",
                             1));

        connection.words[kRetryLimit] = 0;
        ASSERT_TRUE(exchange("000500000007016601"
                             "00000bb8",
                             "", 41));

        QByteArray values;
        ASSERT_EQ(driver.get("Line.Speed", 0, 0, 0, &values, 1), 1);
        ASSERT_EQ(hexOf(values), "efbe");
        ASSERT_EQ(driver.get("Line.Position", 0, 0, 0, &values, 2), 1);
        ASSERT_EQ(hexOf(values), "78563412");
    }

    void checkReports()
    {
        ASSERT_EQ(reports.size(), 3u);
        for (std::size_t i = 0; i < reports.size(); ++i) {
            const int owner = 31 + 10 * static_cast<int>(i);
            ASSERT_EQ(reports[i].link, 5);
            ASSERT_EQ(reports[i].owner, owner);
            ASSERT_EQ(reports[i].number, owner + 1);
            ASSERT_EQ(reports[i].outcome, 1);
        }
        ASSERT_EQ(givenUpCalls, 1);
        ASSERT_EQ(connection.words[23], 4711);
    }

    void oneLife()
    {
        reports.clear();
        givenUpCalls = 0;
        load();
        if (HasFatalFailure()) {
            return;
        }
        setUpLink();
        if (!HasFatalFailure()) {
            runCycle();
        }
        if (!HasFatalFailure()) {
            checkReports();
        }
        unload();
    }

    void* library = nullptr;
    Driver driver;
    Connection connection;
};

struct Footprint {
    std::size_t heapBytes;
    int openFiles;
    int mappings;
};

Footprint footprint()
{
    Footprint now;
    now.heapBytes = mallinfo2().uordblks;
    now.openFiles = QDir("/proc/self/fd")
                        .entryList(QDir::NoDotAndDotDot | QDir::AllEntries | QDir::System)
                        .size();
    QFile maps("/proc/self/maps");
    now.mappings = maps.open(QIODevice::ReadOnly) ? maps.readAll().count("tavmir_kx_tcp.so") : -1;
    return now;
}

TEST_F(ForeignHost, DrivesAWholeCycleThroughPlainNames)
{
    oneLife();
}

TEST_F(ForeignHost, CallsWhatNeedsNoLink)
{
    load();
    if (HasFatalFailure()) {
        return;
    }
    EXPECT_EQ(driver.moveAddresses(), -1);
    EXPECT_EQ(driver.finished(), 1);
    driver.enableStation(3, 0);
    driver.enableEthernet(3, 1);
    const Variable variable = Variable();
    EXPECT_EQ(driver.addRead(&variable), 1);
    EXPECT_EQ(driver.addRead(&variable), 2);
    unload();
}

TEST_F(ForeignHost, LoadsAndUnloadsAThousandTimesWithoutGrowth)
{
    // Qt and the loader fill tables of their own during the first lives.
    for (int life = 0; life < TAVMIR_LIVES / 10 && !HasFatalFailure(); ++life) {
        oneLife();
    }
    const Footprint before = footprint();
    for (int life = 0; life < TAVMIR_LIVES && !HasFatalFailure(); ++life) {
        oneLife();
    }
    const Footprint after = footprint();
    // The allocator's own bookkeeping moves by some kilobytes. One block left behind by each life,
    // 16 bytes at least, would make 16,000 in a thousand lives.
    EXPECT_LE(after.heapBytes, before.heapBytes + 12000);
    EXPECT_EQ(after.openFiles, before.openFiles);
    EXPECT_GT(before.openFiles, 0);
    EXPECT_EQ(after.mappings, 0);
}

} // namespace
