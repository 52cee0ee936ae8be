// The requests that are foretold are those that the driver builds.
#include "driver/message_log.h"
#include "driver/plan_frames.h"
#include "plan/expected_frames.h"

#include "project/project_reader.h"
#include "session/host_session.h"

#include <gtest/gtest.h>

namespace tavmir::host
{

namespace
{

QByteArray projectOf(int bits, int words, int doubleWords, int texts)
{
    QByteArray polled;
    const auto poll = [&polled](const char* name, int count) {
        for (int i = 0; i < count; ++i) {
            polled += QByteArray(polled.isEmpty() ? "" : ",") + R"({ "address": "M.)" + name + "[" +
                      QByteArray::number(i) + R"(]" })";
        }
    };
    poll("bit", bits);
    poll("word", words);
    poll("dword", doubleWords);
    poll("text", texts);
    return R"({ "connection": { "host": "127.0.0.1", "port": 1, "station": 3 },
  "labels": [ { "name": "M", "variables": [
      { "name": "bit", "type": "bit", "address": 0, "array": { "bounds": [[0, 200]] } },
      { "name": "word", "type": "word", "address": 8000, "array": { "bounds": [[0, 200]] } },
      { "name": "dword", "type": "real", "address": 16000, "array": { "bounds": [[0, 200]] } },
      { "name": "text", "type": "text", "address": 64000, "words": 5,
        "array": { "bounds": [[0, 20]] } } ] } ],
  "polled": [)" +
           polled + "] }";
}

struct Counts {
    int bits;
    int words;
    int doubleWords;
    int texts;
};

class ExpectedFrames : public testing::TestWithParam<Counts>
{
};

} // namespace

TEST_P(ExpectedFrames, AreThoseOfTheDriver)
{
    const Counts& counts = GetParam();
    const project::ReadOutcome read = project::readProject(
        projectOf(counts.bits, counts.words, counts.doubleWords, counts.texts), "made");
    ASSERT_TRUE(read.project) << read.error.toStdString();
    const MessageLog log; // takes what the driver says
    QStringList problems;
    HostSession session(Driver::load(TAVMIR_DRIVER, problems), *read.project, SessionOptions());
    ASSERT_EQ("", session.setUp().toStdString());
    const auto real = planFrames(session.api(), session.polledElementsOnWire());
    const auto expected = expectedFrames(session.polled());
    ASSERT_EQ(real.size(), expected.size());
    for (size_t i = 0; i < real.size(); ++i) {
        EXPECT_EQ(real[i].station, expected[i].station);
        EXPECT_EQ(real[i].function, expected[i].function);
        EXPECT_EQ(real[i].requestBytes, expected[i].requestBytes);
        EXPECT_EQ(real[i].replyBytes, expected[i].replyBytes);
        EXPECT_EQ(real[i].elements, expected[i].elements);
        EXPECT_EQ(real[i].wrapped, expected[i].wrapped);
        EXPECT_EQ(real[i].end, expected[i].end);
    }
}

INSTANTIATE_TEST_SUITE_P(Lists, ExpectedFrames,
                         testing::Values(Counts{1, 0, 0, 0}, Counts{0, 100, 0, 0},
                                         Counts{90, 38, 28, 0}, Counts{46, 39, 29, 0},
                                         Counts{200, 3, 1, 0}, Counts{0, 38, 0, 0},
                                         Counts{3, 20, 0, 7}, Counts{0, 0, 57, 20}));

TEST(ExpectedFramesOfNothing, AreNone)
{
    EXPECT_TRUE(expectedFrames({}).empty());
}

} // namespace tavmir::host
