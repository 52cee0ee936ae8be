// What explain says of a pass and of values that share bits.
#include "support/child_process.h"
#include "support/temporary_folder.h"

#include <QtCore/QStringList>

#include <gtest/gtest.h>

namespace tavmir::host
{

namespace
{

test::ProcessResult explain(const QStringList& arguments)
{
    return test::runProcess(TAVMIR_HOST_PROGRAM, QStringList("explain") + arguments);
}

class Explained : public testing::Test
{
protected:
    QStringList planOf(const std::string& json)
    {
        const QString project = QString::fromStdString(folder_.writeFile("plan.json", json));
        const auto result = explain({project});
        EXPECT_EQ(0, result.exitStatus) << result.errors.toStdString();
        return result.output.trimmed().split('\n');
    }

    test::TemporaryFolder folder_;
};

} // namespace

TEST_F(Explained, DoubleWordsAndRealsShareRequests)
{
    const auto result = explain({TAVMIR_EXAMPLE_PROJECT});
    EXPECT_TRUE(
        result.output.startsWith("46 variables, 57 elements on the wire, 3 requests a pass\n"))
        << result.output.toStdString();
    EXPECT_TRUE(result.output.contains("request 3: function 'l', 15 double words of station 1"));
    EXPECT_FALSE(result.output.contains("hint: "));
}

TEST_F(Explained, NamesNeedNoDriver)
{
    const auto result = explain({TAVMIR_EXAMPLE_PROJECT, "--names", "--driver", "/nowhere.so"});
    EXPECT_EQ(0, result.exitStatus) << result.errors.toStdString();
    EXPECT_TRUE(result.output.contains("\ndword\t5000\t*\tfloat\tMain.Temp\n"))
        << result.output.toStdString();
}

TEST_F(Explained, WhatCannotBePrintedIsAFailure)
{
    const auto result =
        test::runProcess("/bin/sh", {"-c", R"("$0" explain "$1" --names >/dev/full)",
                                     TAVMIR_HOST_PROGRAM, TAVMIR_EXAMPLE_PROJECT});
    EXPECT_EQ(1, result.exitStatus);
    EXPECT_EQ("tavmir-host: standard output cannot be written: No space left on device\n",
              result.errors.toStdString());
}

TEST_F(Explained, ARequestThatWrapsAroundCountsForTheNextPassToo)
{
    const QStringList lines = planOf(R"({ "labels": [ { "name": "L", "variables": [
        { "name": "w", "type": "word", "address": 1600, "array": { "bounds": [[1, 50]] } } ] } ],
      "polled": [ { "address": "L.w" } ] })");
    EXPECT_EQ("50 variables, 50 elements on the wire, 1.3 requests a pass on average",
              lines.first().toStdString());
    ASSERT_EQ(7, lines.size());
    EXPECT_EQ("  ends because the byte budget of a request is used up", lines[3].toStdString());
    EXPECT_EQ("  wraps around: 12 elements to the end of the polled list, then 26 from its head; "
              "the next pass begins behind them",
              lines[6].toStdString());
}

TEST_F(Explained, AListThatFillsItsLastRequestIsThroughThere)
{
    const QStringList lines = planOf(R"({ "labels": [ { "name": "L", "variables": [
        { "name": "w", "type": "word", "address": 1600, "array": { "bounds": [[1, 76]] } } ] } ],
      "polled": [ { "address": "L.w" } ] })");
    EXPECT_EQ("76 variables, 76 elements on the wire, 2 requests a pass",
              lines.first().toStdString());
    EXPECT_EQ("  ends because the polled list is through", lines.last().toStdString());
}

TEST_F(Explained, VariablesThatShareBitsAreNamed)
{
    const QStringList lines = planOf(R"({ "labels": [ { "name": "L", "variables": [
        { "name": "d", "type": "dword", "address": 1600, "bits": true },
        { "name": "low", "type": "word", "address": 1600 },
        { "name": "t", "type": "text", "address": 3200, "words": 3 },
        { "name": "in", "type": "word", "address": 3216 } ] } ],
      "polled": [ { "address": "L.d.b[3]" }, { "address": "L.in" } ] })");
    EXPECT_EQ("overlap: L.d (polled) and L.low share the bits 1600 to 1615",
              lines[lines.size() - 2].toStdString());
    EXPECT_EQ("overlap: L.t (polled) and L.in (polled) share the bits 3216 to 3231",
              lines.last().toStdString());
}

TEST_F(Explained, AnAddressSaysWhatItIsPolledAsAndWhatSharesItsBits)
{
    const auto result = explain({TAVMIR_EXAMPLE_PROJECT, "Main.Title", "Main.Temp", "@dword:5000",
                                 "@bit:17:2", "Line2.Grid[1,A]"});
    EXPECT_EQ(0, result.exitStatus) << result.errors.toStdString();
    EXPECT_EQ("Main.Title\n"
              "  driver's result 0: resolved\n"
              "  Main.Title: text of 8 words (type 10) at bit address 6000, polled as 8 words, "
              "Main.Title~words, shown as text\n"
              "Main.Temp\n"
              "  driver's result 0: resolved\n"
              "  Main.Temp: real (type 6) at bit address 5000, shown as float\n"
              "@dword:5000\n"
              "  @dword:5000: dword (type 6) at bit address 5000, shown as float\n"
              "    shares bits with Main.Temp\n"
              "@bit:17:2\n"
              "  stands for 2 elements\n"
              "  @bit:17: bit (type 1) at bit address 17, shown as bit\n"
              "  @bit:18: bit (type 1) at bit address 18, shown as bit\n"
              "Line2.Grid[1,A]\n"
              "  driver's result 0: resolved\n"
              "  Line2.Grid[1,A]: word (type 4) at bit address 24048, array element, the driver "
              "cuts counts to 3, shown as unsigned\n"
              "    shares bits with Line2.Grid[0,d]\n",
              result.output.toStdString());
}

} // namespace tavmir::host
