// Values are shown and taken in the format in which the project polls their element, and written
// to its station, however the address is spelt.
#include "programs.h"

#include "support/child_process.h"
#include "support/temporary_folder.h"

#include <gtest/gtest.h>

namespace tavmir::host
{

namespace
{

class SpelledAddresses : public testing::Test
{
protected:
    SpelledAddresses()
        : project_(QString::fromStdString(folder_.writeFile("spelled.json", R"({
            "connection": { "replyTimeoutMs": 20000, "connectTimeoutMs": 20000,
                            "station": 1, "stationMode": "own" },
            "labels": [ { "name": "L", "variables": [
              { "name": "a", "type": "word", "address": 1600, "array": { "bounds": [[0, 9]] } },
              { "name": "w", "type": "word", "address": 3200, "bits": true },
              { "name": "same", "type": "word", "address": 3200 },
              { "name": "x", "type": "dword", "address": 4000, "array": { "bounds": [[0, 9]] } } ] } ],
            "polled": [ { "address": "L.a", "format": "hex", "station": 2 },
                        { "address": "L.w", "format": "signed", "station": 2 },
                        { "address": "L.x[2]", "format": "float", "station": 3 } ] })"))),
          controller_(0, project_)
    {
    }

    test::ProcessResult host(const QString& command, const QStringList& more)
    {
        return test::runProcess(TAVMIR_HOST_PROGRAM,
                                QStringList{command, project_, "--connect", controller_.place()} +
                                    more);
    }

    test::TemporaryFolder folder_;
    QString project_;
    Controller controller_;
};

} // namespace

TEST_F(SpelledAddresses, AreShownAsTheirElementIs)
{
    EXPECT_EQ(0, host("write", {"L.a[2]=26", "L.w=-3"}).exitStatus);
    const auto read = host("read", {"L.a[2]", "L.a[02]", "L.w", "L.same"});
    EXPECT_EQ(0, read.exitStatus) << read.errors.toStdString();
    EXPECT_EQ("L.a[2] = 0x001A\nL.a[02] = 0x001A\nL.w = -3\nL.same = -3\n",
              read.output.toStdString());
}

TEST_F(SpelledAddresses, AreTakenAsTheirElementIs)
{
    const auto written = host("write", {"L.x[02]=1.5"});
    EXPECT_EQ(0, written.exitStatus) << written.errors.toStdString();
    EXPECT_EQ("L.x[2] = 1.5\n", host("read", {"L.x[2]"}).output.toStdString());
    EXPECT_EQ(2, host("write", {"L.x[3]=1.5"}).exitStatus); // a plain number, of another element
}

} // namespace tavmir::host
