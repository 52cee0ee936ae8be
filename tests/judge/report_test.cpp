// What is said of the verdicts, and with which status it ends.
#include "judge/report.h"
#include "wire_play.h"

#include <gtest/gtest.h>

namespace tavmir::test
{

namespace
{

judge::Script scriptOf(const std::string& text)
{
    return *judge::parseScript(text).script;
}

judge::Played allPlayed()
{
    judge::Played played;
    played.begun = played.situations = 1;
    played.hostCame = played.isComplete = true;
    return played;
}

wire::ElementsInWords plainly(const wire::ElementInFrame* first, std::size_t)
{
    return wire::elementInWords(*first);
}

bool contains(const std::string& text, const std::string& part)
{
    return text.find(part) != std::string::npos;
}

WirePlay& withABreach(WirePlay& play)
{
    play.begins(Play::calm);
    play.exchanges(readWord(1, 16));
    play.asks(100, readWord(2, 16));
    play.asks(100, writeWord(3, 32, 7));
    return play;
}

} // namespace

TEST(Report, SaysWhenWhatAndWithWhichBytesARuleWasBroken)
{
    WirePlay play;
    const std::string text =
        judge::reportText(withABreach(play).judge(), scriptOf("calm"), allPlayed(), plainly);
    EXPECT_TRUE(contains(text, "one-in-flight         broken      2 times, broken 1 time\n"))
        << text;
    EXPECT_TRUE(contains(text, "\none-in-flight: no other request is sent while one waits"));
    EXPECT_TRUE(contains(text, "  at 0.301 s, in or behind \"calm\", connection 1: it was sent "
                               "after 100 ms, while #2 waited\n"
                               "    #3 station 1 write words: 32=7\n"
                               "    00 03 00 00 00 09 01 67 01 00 00 00 20 07 00\n"))
        << text;
    EXPECT_TRUE(contains(text, "result: broken ("));
}

TEST(Report, SaysWhyNobodyCanTell)
{
    const judge::Script script = scriptOf("calm\nslow\n");
    judge::Played played = allPlayed();
    const auto why = [&](Rule rule) { return judge::whyNotJudged(rule, script, played); };
    EXPECT_EQ(why(Rule::stationKnown), "the script does not say which stations are there");
    EXPECT_EQ(why(Rule::writeKept), "the script does not say which writes count");
    EXPECT_EQ(why(Rule::cutCloses), "the script does not play it");
    EXPECT_EQ(why(Rule::slowPatience), "it was not played: the run ended before");
    EXPECT_EQ(why(Rule::pollBesideWrites), "did not happen: a write between two reads");
    played.begun = 2;
    EXPECT_EQ(why(Rule::slowPatience), "did not happen: a reply of the situation slow");
    played.hostCame = false;
    EXPECT_EQ(why(Rule::slowPatience), "no host came");
}

TEST(Report, HasTheSameAsJson)
{
    WirePlay play;
    const std::string text =
        judge::reportJson(withABreach(play).judge(), scriptOf("calm"), allPlayed(), plainly);
    EXPECT_TRUE(contains(text, "\"result\": \"broken\""));
    EXPECT_TRUE(contains(text, "{\"rule\": \"one-in-flight\", "));
    EXPECT_TRUE(contains(text, "\"at\": 0.301, \"situation\": \"calm\", \"connection\": 1, "
                               "\"what\": \"it was sent after 100 ms, while #2 waited\", "
                               "\"request\": \"#3 station 1 write words: 32=7\", \"bytes\": "
                               "\"00 03 00 00 00 09 01 67 01 00 00 00 20 07 00\"}"))
        << text;
    EXPECT_TRUE(contains(text, "\"verdict\": \"not judged\", \"judged\": 0, \"broken\": 0, "
                               "\"why\": \"the script does not play it\""));
}

TEST(Report, NamesDoNotLeaveTheirQuotes)
{
    WirePlay play;
    const auto hostile = [](const wire::ElementInFrame*, std::size_t) {
        wire::ElementsInWords words;
        words.name = "\"\\\n";
        return words;
    };
    const std::string text =
        judge::reportJson(withABreach(play).judge(), scriptOf("calm"), allPlayed(), hostile);
    EXPECT_TRUE(contains(text, "write words: \\\"\\\\\\u000a=")) << text;
}

TEST(Report, TheStatusSaysKeptBrokenOrNotJudged)
{
    WirePlay kept;
    kept.exchanges(readWord(1, 16));
    WirePlay broken;
    const WirePlay nothing;
    judge::Played played = allPlayed();
    EXPECT_EQ(judge::exitStatus(kept.judge(), played), 0);
    EXPECT_EQ(judge::exitStatus(withABreach(broken).judge(), played), 1);
    EXPECT_EQ(judge::exitStatus(nothing.judge(), played), 3);
    played.isComplete = false;
    EXPECT_EQ(judge::exitStatus(kept.judge(), played), 3);
    EXPECT_EQ(judge::exitStatus(broken.judge(), played), 1);
}

} // namespace tavmir::test
