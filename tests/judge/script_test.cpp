// Scripts: what they may say, and what is wrong with the others, by line.
#include "judge/script.h"

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>
#include <utility>
#include <vector>

namespace tavmir::judge
{

namespace
{

// "3: why"; empty when it is a script.
std::string problemOf(const std::string& text)
{
    const ScriptOutcome outcome = parseScript(text);
    return outcome.script ? "" : std::to_string(outcome.line) + ": " + outcome.problem;
}

std::string standardScript()
{
    std::ifstream file(TAVMIR_STANDARD_SCRIPT);
    std::stringstream text;
    text << file.rdbuf();
    return text.str();
}

} // namespace

TEST(Script, TakesWhatIsKnownOfAHostAndSituationsInTheirOrder)
{
    const ScriptOutcome outcome = parseScript("# a host\n"
                                              "reply-timeout 250ms\n"
                                              "attempts 5 # and no more\n"
                                              "reconnect-within 3s\n"
                                              "reconnect-pause 20ms\n"
                                              "reconnect-rest 1s\n"
                                              "poll-within 4s\n"
                                              "refused-rate 7\n"
                                              "slack 10\n"
                                              "stations 1,4-6\n"
                                              "writes counting dword 4096\n"
                                              "wait-for-host 9s\n"
                                              "\n"
                                              "slow by=100ms of=writes every=2\n"
                                              "exception code=6 for=4s\n"
                                              "silent\n");
    ASSERT_TRUE(outcome.script) << outcome.problem;
    const HostTraits& host = outcome.script->host;
    EXPECT_EQ(host.replyTimeout, milliseconds(250));
    EXPECT_EQ(host.attempts, 5);
    EXPECT_EQ(host.reconnectWithin, milliseconds(3000));
    EXPECT_EQ(host.reconnectPause, milliseconds(20));
    EXPECT_EQ(host.reconnectRest, milliseconds(1000));
    EXPECT_EQ(host.pollWithin, milliseconds(4000));
    EXPECT_EQ(host.refusedRate, 7);
    EXPECT_EQ(host.slackPercent, 10);
    EXPECT_EQ(host.stations->count(), 4u);
    EXPECT_TRUE(host.stations->test(5));
    EXPECT_EQ(host.counting->address, 4096u);
    EXPECT_EQ(host.counting->elements, wire::ElementClass::doubleWords);
    EXPECT_EQ(outcome.script->waitForHost, milliseconds(9000));
    ASSERT_EQ(outcome.script->situations.size(), 3u);
    const Situation& slow = outcome.script->situations[0];
    EXPECT_EQ(slow.play, Play::slow);
    EXPECT_EQ(slow.line, 14);
    EXPECT_EQ(slow.by, milliseconds(100));
    EXPECT_EQ(slow.of, Whom::writes);
    EXPECT_EQ(slow.every, 2);
    EXPECT_EQ(slow.times, 10);
    EXPECT_EQ(slow.text, "slow by=100ms of=writes every=2");
    const Situation& exception = outcome.script->situations[1];
    EXPECT_EQ(exception.code, 6);
    EXPECT_EQ(exception.lasts, milliseconds(4000));
    EXPECT_EQ(exception.times, 0) << "it lasts, unless its line says how often";
    EXPECT_EQ(outcome.script->situations[2].lasts, milliseconds(3000));
}

TEST(Script, TimeOutAndAttemptsMayBeLearned)
{
    const ScriptOutcome outcome = parseScript("reply-timeout learn\nattempts learn\nsilent\n");
    ASSERT_TRUE(outcome.script);
    EXPECT_EQ(outcome.script->host.replyTimeout, 0);
    EXPECT_EQ(outcome.script->host.attempts, 0);
}

TEST(Script, SaysWhatIsWrongAndWhere)
{
    const std::vector<std::pair<const char*, const char*>> bad = {
        {"", "1: there is no situation to play"},
        {"calm\nboom\n", "2: \"boom\" is no situation; what is known of the host stands first"},
        {"boom\n", "1: \"boom\" is neither a situation nor anything known of a host"},
        {"calm\nattempts 3\n",
         "2: \"attempts\" is no situation; what is known of the host stands first"},
        {"calm every=3\n", "1: \"every=3\" is nothing that \"calm\" takes: for=3s"},
        {"\ncalm for=3\n", "2: \"for=3\": the value is none of \"for\""},
        {"calm for=2h\n", "1: \"for=2h\": the value is none of \"for\""},
        {"calm for=4000s\n", "1: \"for=4000s\": the value is none of \"for\""},
        {"drop times=0\n", "1: \"times=0\": the value is none of \"times\""},
        {"drop of=some\n", "1: \"of=some\": the value is none of \"of\""},
        {"exception code=256\n", "1: \"code=256\": the value is none of \"code\""},
        {"calm for\n", "1: \"for\" is nothing that \"calm\" takes: for=3s"},
        {"reply-timeout soon\n", "1: \"soon\" is no time up to an hour, like 500ms or 2s"},
        {"reply-timeout\n", "1: \"\" is no time up to an hour, like 500ms or 2s"},
        {"attempts 0\n", "1: \"0\" is no number from 1 to 1000"},
        {"slack 91\n", "1: \"91\" is no number from 0 to 90"},
        {"stations 1,,2\n", "1: \"stations\" is followed by a list like 1,2 or 1-4"},
        {"stations 256\n", "1: \"stations\" is followed by a list like 1,2 or 1-4"},
        {"stations 4-1\n", "1: \"stations\" is followed by a list like 1,2 or 1-4"},
        {"writes counting bit 5\n", "1: \"writes\" is followed by: counting word|dword ADDRESS"},
        {"writes counting word 4294967296\n", "1: \"4294967296\" is no address"},
        {"reply-timeout 300ms\ncalm\nslow by=250ms\n",
         "3: \"slow by=250ms\": what is held back so long does not come within the reply time-out"},
    };
    for (const auto& [text, problem] : bad) {
        EXPECT_EQ(problemOf(text), problem);
    }
}

TEST(Script, TheStandardOnePlaysEverything)
{
    const ScriptOutcome outcome = parseScript(standardScript());
    ASSERT_TRUE(outcome.script) << outcome.line << ": " << outcome.problem;
    for (int play = 0; play < kPlays; ++play) {
        bool isPlayed = false;
        for (const Situation& situation : outcome.script->situations) {
            isPlayed = isPlayed || situation.play == static_cast<Play>(play);
        }
        EXPECT_TRUE(isPlayed) << rowOf(static_cast<Play>(play)).name;
        EXPECT_EQ(rowOf(static_cast<Play>(play)).play, static_cast<Play>(play));
    }
}

TEST(Script, TheStandardOneSaysTheDefaultsOfAHost)
{
    const HostTraits said = parseScript(standardScript()).script->host;
    const HostTraits standard;
    EXPECT_EQ(said.replyTimeout, standard.replyTimeout);
    EXPECT_EQ(said.attempts, standard.attempts);
    EXPECT_EQ(said.reconnectWithin, standard.reconnectWithin);
    EXPECT_EQ(said.reconnectPause, standard.reconnectPause);
    EXPECT_EQ(said.reconnectRest, standard.reconnectRest);
    EXPECT_EQ(said.pollWithin, standard.pollWithin);
    EXPECT_EQ(said.refusedRate, standard.refusedRate);
    EXPECT_EQ(said.slackPercent, standard.slackPercent);
}

} // namespace tavmir::judge
