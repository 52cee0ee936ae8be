// The small parts of the server: decoding, greeting, token, headers, shared messages.
#include "page/greeting.h"
#include "page/http_answers.h"
#include "page/live_messages.h"
#include "page/query.h"
#include "page/token.h"

#include "made_content.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>

namespace tavmir::page
{

namespace
{

std::string decoded(std::string_view text, bool plusIsBlank = false)
{
    std::string result;
    return decodePercent(text, plusIsBlank, result) ? result : "refused";
}

TEST(Query, EscapesBecomeBytes)
{
    EXPECT_EQ(decoded("a%5B1%5d%20%C3%A9"), "a[1] \xc3\xa9");
    EXPECT_EQ(decoded("%F0%9F%98%80"), "\xf0\x9f\x98\x80");
}

TEST(Query, PlusIsABlankInAQueryOnly)
{
    EXPECT_EQ(decoded("a+b", true), "a b");
    EXPECT_EQ(decoded("a%2Bb", true), "a+b");
    EXPECT_EQ(decoded("a+b", false), "a+b");
}

TEST(Query, EscapeThatEndsTooEarlyIsRefused)
{
    for (const char* text : {"%", "%4", "a%", "%%41", "%-1", "%0x41"}) {
        EXPECT_EQ(decoded(text), "refused") << text;
    }
}

TEST(Query, WhatIsNoTextIsRefused)
{
    for (const char* text : {"%00", "%1f", "%80", "%c3", "%c3%28", "%e0%80%80", "%ed%bf%bf",
                             "%f4%90%80%80", "%f0%80%80%80", "%fe"}) {
        EXPECT_EQ(decoded(text), "refused") << text;
    }
}

TEST(Query, ItemsKeepTheirOrderAndTheFirstIsFound)
{
    Target target;
    ASSERT_TRUE(readTarget("/p?a=1&&b&a=2&=3", target));
    EXPECT_EQ(target.path, "/p");
    ASSERT_EQ(target.query.items.size(), 4U);
    EXPECT_EQ(*target.query.find("a"), "1");
    EXPECT_EQ(target.query.items[2].second, "2");
    EXPECT_EQ(*target.query.find(""), "3");
}

TEST(Greeting, TellsTokenEpochAndSequence)
{
    Greeting greeting;
    ASSERT_TRUE(readGreeting(" {\"token\" : \"t\", \"epoch\":\"e\",\"sequence\":12 } ", greeting));
    EXPECT_EQ(greeting.token, "t");
    EXPECT_EQ(greeting.epoch, "e");
    EXPECT_EQ(greeting.sequence, 12U);
}

TEST(Greeting, FirstOneKnowsNoEpoch)
{
    Greeting greeting;
    ASSERT_TRUE(readGreeting("{\"epoch\":null,\"sequence\":0,\"token\":\"t\"}", greeting));
    EXPECT_EQ(greeting.epoch, "");
    ASSERT_TRUE(readGreeting("{\"token\":\"t\"}", greeting));
    EXPECT_EQ(greeting.sequence, 0U);
}

TEST(Greeting, NamesThatAreNotKnownArePassedOver)
{
    Greeting greeting;
    EXPECT_TRUE(readGreeting("{\"token\":\"t\",\"more\":1,\"other\":\"x\"}", greeting));
}

TEST(Greeting, SomethingElseIsRefused)
{
    Greeting greeting;
    for (const char* text : {"",
                             "{",
                             "{}",
                             "[]",
                             "null",
                             "hello",
                             "{\"token\":\"\"}",
                             "{\"token\":null}",
                             "{\"token\":\"t\"",
                             "{\"token\":\"t\"}x",
                             "{\"token\":\"t\",}",
                             "{\"token\":\"t}",
                             "{\"token\":\"\\u0074\"}",
                             "{\"token\":7}",
                             "{\"token\":\"t\",\"sequence\":\"1\"}",
                             "{\"token\":\"t\",\"sequence\":-1}",
                             "{\"token\":\"t\",\"sequence\":1.5}",
                             "{\"token\":\"t\",\"sequence\":01}",
                             "{\"token\":\"t\",\"sequence\":12345678901234567890}",
                             "{\"token\":\"t\",\"epoch\":5}",
                             "{\"token\":\"t\",\"x\":{}}",
                             "{\"token\":\"a\nb\"}",
                             "{token:\"t\"}"}) {
        EXPECT_FALSE(readGreeting(text, greeting)) << text;
    }
}

TEST(Token, HasThirtyTwoDigitsAndIsAnotherEachTime)
{
    std::set<std::string> tokens;
    for (int i = 0; i < 100; ++i) {
        const std::string token = makeToken();
        EXPECT_EQ(token.size(), 32U);
        EXPECT_EQ(token.find_first_not_of("0123456789abcdef"), token.npos) << token;
        tokens.insert(token);
    }
    EXPECT_EQ(tokens.size(), 100U);
}

TEST(Token, OnlyTheWholeSecretIsTheSame)
{
    EXPECT_TRUE(isSameSecret("abcd", "abcd"));
    for (const char* guess : {"", "abc", "abcde", "abce", "bbcd", "ABCD"}) {
        EXPECT_FALSE(isSameSecret(guess, "abcd")) << guess;
    }
    EXPECT_FALSE(isSameSecret("", ""));
}

TEST(HttpAnswers, NameOfAFileCannotEndItsHeader)
{
    Answer answer;
    answer.fileName = "a\"\r\nSet-Cookie: x;/../b.pcapng";
    const std::string bytes = answerBytes(answer, {});
    EXPECT_NE(bytes.find("filename=\"a___Set-Cookie__x__.._b.pcapng\"\r\n"), bytes.npos) << bytes;
    EXPECT_EQ(bytes.find("\r\nSet-Cookie"), bytes.npos);
}

TEST(HttpAnswers, SayWhatTimeTheyCoverOnlyWhereItIsLess)
{
    Answer answer;
    EXPECT_EQ(answerBytes(answer, {}).find("Covered-Ms"), std::string::npos);
    answer.coveredMs = 5012;
    EXPECT_NE(answerBytes(answer, {}).find("\r\nCovered-Ms: 5012\r\n"), std::string::npos);
}

TEST(HttpAnswers, ErrorIsOneLineOfJson)
{
    EXPECT_EQ(errorAnswer(404, "no \"such\" \\ thing\nhere").body,
              "{\"error\":\"no \\\"such\\\" \\\\ thing here\"}");
}

TEST(LiveMessages, AreMadeOncePerLook)
{
    MadeContent content;
    LiveMessages messages(content);
    content.setSequence(3);
    messages.look();
    const LiveMessage one = messages.changes(1);
    EXPECT_EQ(*one.text, "changes 1-3");
    EXPECT_EQ(one.sequence, 3U);
    EXPECT_EQ(messages.changes(1).text, one.text);
    EXPECT_EQ(content.changesMade(), 1);
    EXPECT_EQ(*messages.changes(2).text, "changes 2-3");
    EXPECT_EQ(messages.first({}).text, messages.first({}).text);
    EXPECT_EQ(content.snapshots(), 1);
    content.setSequence(4);
    messages.look();
    EXPECT_EQ(*messages.changes(1).text, "changes 1-4");
    EXPECT_EQ(*messages.first({}).text, "snapshot 4");
}

TEST(LiveMessages, WhoHasSeenEverythingIsToldNothing)
{
    MadeContent content;
    LiveMessages messages(content);
    EXPECT_EQ(messages.first({"t", "e1", 1}).text, nullptr);
}

} // namespace

} // namespace tavmir::page
