// The probe's read, end to end: the built driver, a real socket, a scripted controller.
#include "probe/scripted_controller.h"
#include "real_read.h"
#include "support/diagnostic_capture.h"
#include "support/driver_file.h"
#include "support/temporary_folder.h"

#include <gtest/gtest.h>

using namespace tavmir::probe;
using namespace tavmir::test;

namespace
{

class RealRead : public ::testing::Test
{
protected:
    RealRead()
    {
        options.controller.host = "127.0.0.1";
        options.station = 3;
        options.dataType = 4;
        options.elementAddress = 3000;
        options.timeoutMs = 20000;
    }

    // Reads through a freshly loaded driver.
    std::string read(Answer answer)
    {
        DriverLibrary library;
        const std::string error = library.load(tavmir::test::driverFile(TAVMIR_DRIVER_FILE));
        if (!error.empty()) {
            return error;
        }
        ScriptedController controller(answer);
        options.controller.port = controller.port();
        const std::string outcome = readValues(library.calls(), options, capture, values);
        requests = controller.requests();
        return outcome;
    }

    Options options;
    ProbeCapture capture;
    std::vector<unsigned int> values;
    std::vector<QByteArray> requests;
    DiagnosticCapture quiet;
};

QByteArray changed(const QByteArray& bytes, int offset, int value)
{
    QByteArray copy = bytes;
    copy[offset] = static_cast<char>(value);
    return copy;
}

TEST_F(RealRead, ReadsOneWord)
{
    EXPECT_EQ(read(addressPlusFive), "");
    EXPECT_EQ(values, std::vector<unsigned int>{3005});
    ASSERT_EQ(requests.size(), 1u);
    EXPECT_EQ(requests[0].toHex(), QByteArray("00000000000703660100000bb8"));
}

TEST_F(RealRead, ReadsEveryTypeInItsOwnSteps)
{
    const struct {
        int dataType, step;
        unsigned int mask;
    } types[] = {{1, 1, 0xFF},
                 {4, 16, 0xFFFF},
                 {6, 32, 0xFFFFFFFFu},
                 {7, 32, 0xFFFFFFFFu},
                 {10, 16, 0xFFFF}};
    for (const auto& type : types) {
        SCOPED_TRACE(type.dataType);
        options.dataType = type.dataType;
        options.elementAddress = 70000;
        options.count = 3;
        values.clear();
        EXPECT_EQ(read(addressPlusFive), "");
        std::vector<unsigned int> expected;
        for (int i = 0; i < 3; ++i) {
            expected.push_back(static_cast<unsigned int>(70005 + i * type.step) & type.mask);
        }
        EXPECT_EQ(values, expected);
    }
}

TEST_F(RealRead, AsksAgainUntilAllElementsAreThere)
{
    options.dataType = 6;
    options.elementAddress = 0;
    options.count = 100; // a request holds 28
    EXPECT_EQ(read(addressPlusFive), "");
    EXPECT_EQ(requests.size(), 4u);
    ASSERT_EQ(values.size(), 100u);
    EXPECT_EQ(values[0], 5u);
    EXPECT_EQ(values[99], 99u * 32 + 5);
}

TEST_F(RealRead, SaysWhatIsWrongWithAnAnswer)
{
    EXPECT_EQ(
        read([](const QByteArray& request) { return changed(addressPlusFive(request), 1, 9); }),
        "the answer belongs to another request");
    EXPECT_EQ(
        read([](const QByteArray& request) { return changed(addressPlusFive(request), 7, 'l'); }),
        "the answer has another function code");
    EXPECT_EQ(read([](const QByteArray& request) {
                  return changed(changed(changed(request.left(9), 5, 3), 7, 'f' | 0x80), 8, 2);
              }),
              "the controller refused the request, code 2");
    EXPECT_EQ(read([](const QByteArray& request) { return changed(request.left(9), 5, 3); }),
              "the driver refused the answer of 9 bytes, code 71");
    EXPECT_EQ(read([](const QByteArray& request) { return changed(request.left(9), 4, 8); }),
              "the answer's length field makes no sense: 2055");
    EXPECT_TRUE(values.empty());
}

TEST_F(RealRead, TakesAnswersFromTheShortestToTheLongest)
{
    const auto ofLength = [](int length) {
        return [length](const QByteArray& request) {
            return changed(request.left(9).leftJustified(6 + length, '\0', true), 5, length);
        };
    };
    EXPECT_EQ(read(ofLength(1)), "the answer's length field makes no sense: 1");
    EXPECT_EQ(read(ofLength(2)), "the driver refused the answer of 8 bytes, code 71");
    EXPECT_EQ(read(ofLength(254)), "the driver refused the answer of 260 bytes, code 71");
    EXPECT_EQ(read(ofLength(255)), "the answer's length field makes no sense: 255");
}

TEST_F(RealRead, GivesUpWhenNothingComes)
{
    options.timeoutMs = 50;
    EXPECT_EQ(read([](const QByteArray&) { return QByteArray(); }), "receive: timed out");
}

TEST_F(RealRead, SaysThatNobodyListens)
{
    DriverLibrary library;
    ASSERT_EQ(library.load(tavmir::test::driverFile(TAVMIR_DRIVER_FILE)), "");
    {
        ScriptedController gone(addressPlusFive);
        options.controller.port = gone.port();
    }
    EXPECT_EQ(readValues(library.calls(), options, capture, values),
              "connect: 127.0.0.1:" + std::to_string(options.controller.port) +
                  ": Connection refused");
}

TEST(DriverLibraryNames, AllAreThere)
{
    const DiagnosticCapture quiet;
    DriverLibrary library;
    ASSERT_EQ(library.load(TAVMIR_DRIVER_FILE), "");
    EXPECT_EQ(library.missingNames(), std::vector<std::string>());
    EXPECT_EQ(library.version(), TAVMIR_VERSION);
}

TEST(DriverLibraryNames, ALibraryForTheOtherQtIsNotLoaded)
{
    const TemporaryFolder folder;
    const std::string file = folder.writeFile(
        "other.so", (QT_VERSION < 0x050000 ? "libQt5Core.so.5" : "libQtCore.so.4"));
    DriverLibrary library;
    EXPECT_EQ(library.load(file),
              file + ": made for another Qt than this program's " QT_VERSION_STR);
    EXPECT_EQ(library.path(), "");
}

TEST(DriverLibraryNames, AMissingFileIsExplained)
{
    DriverLibrary library;
    EXPECT_NE(library.load("/nowhere/libtavmir_kx_tcp.so.1").find("/nowhere/"), std::string::npos);
    EXPECT_EQ(library.missingNames().size(), DriverLibrary::expectedNames().size());
}

} // namespace
