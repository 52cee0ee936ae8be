// What is said to a host in each situation.
#include "judge/stage.h"
#include "judge/wrong_replies.h"
#include "wire_play.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace tavmir::test
{

namespace
{

using judge::Act;
using judge::Situation;
using judge::Stage;

Situation situationOf(Play play, int times = 1, int every = 1)
{
    Situation situation;
    situation.play = play;
    situation.times = times;
    situation.every = every;
    situation.by = judge::milliseconds(250);
    situation.hold = judge::milliseconds(200);
    situation.code = 4;
    return situation;
}

// What is said, one letter each: R right, E exception, L late, D duplicate, F foreign, s short,
// l long, c cut, - nothing, X the end; with a number in front of it when it waits so many ms.
std::string said(Stage& stage, const Bytes& request, int client = 1)
{
    const Act act = stage.asked(client, request, answerTo(request));
    std::string text = act.close ? "X" : "";
    for (const judge::Say& say : act.says) {
        const std::string letters = "RELDFslc";
        text += say.after > 0 ? std::to_string(say.after / 1000) : "";
        text += letters[static_cast<std::size_t>(say.reply)];
    }
    return text.empty() ? "-" : text;
}

const Bytes kA = readWord(1, 16);
const Bytes kB = readWord(2, 16);
const Bytes kC = readWord(3, 16);

std::size_t lengthOf(const Bytes& frame)
{
    return 6u + wire::bigEndian16(frame.data() + 4);
}

} // namespace

TEST(Stage, IsRightBeforeAndBehindASituation)
{
    Stage stage;
    EXPECT_EQ(said(stage, kA), "R");
    stage.begin(situationOf(Play::silent));
    EXPECT_EQ(said(stage, kA), "-");
    stage.end();
    EXPECT_EQ(said(stage, kA), "R");
}

TEST(Stage, PlaysWhatHappensToOneRequest)
{
    const std::pair<Play, const char*> plays[] = {
        {Play::calm, "R"},      {Play::slow, "250R"}, {Play::foreign, "F200R"},
        {Play::tooShort, "s"},  {Play::tooLong, "l"}, {Play::cut, "c"},
        {Play::exception, "E"}, {Play::drop, "-"},    {Play::disconnect, "X"},
        {Play::refuseAll, "E"}, {Play::silent, "-"},
    };
    for (const auto& [play, expected] : plays) {
        Stage stage;
        stage.begin(situationOf(play));
        EXPECT_EQ(said(stage, kA), expected) << judge::rowOf(play).name;
    }
}

TEST(Stage, ARepetitionIsAnsweredUnlessItWasRefused)
{
    for (const Play play : {Play::drop, Play::tooShort, Play::tooLong, Play::exception}) {
        Stage stage;
        stage.begin(situationOf(play));
        said(stage, kA);
        EXPECT_EQ(said(stage, kA), play == Play::exception ? "E" : "R");
        EXPECT_EQ(said(stage, kB), "R");
        EXPECT_EQ(stage.happened(), 1);
    }
}

TEST(Stage, HappensToEveryNthNewRequestSoManyTimes)
{
    Stage stage;
    stage.begin(situationOf(Play::drop, 2, 3));
    std::string all;
    for (unsigned number = 1; number < 12; ++number) {
        all += said(stage, readWord(number, 16));
    }
    EXPECT_EQ(all, "RR-RR-RRRRR");
}

TEST(Stage, HappensToReadsOrWritesOnly)
{
    Situation situation = situationOf(Play::drop);
    situation.of = judge::Whom::writes;
    Stage stage;
    stage.begin(situation);
    EXPECT_EQ(said(stage, kA), "R");
    EXPECT_EQ(said(stage, writeWord(2, 16, 5)), "-");
    situation.of = judge::Whom::reads;
    stage.begin(situation);
    EXPECT_EQ(said(stage, writeWord(3, 16, 5)), "R");
    EXPECT_EQ(said(stage, kC), "-");
}

TEST(Stage, ALateReplyComesInFrontOfTheNextOnes)
{
    Stage stage;
    stage.begin(situationOf(Play::late));
    EXPECT_EQ(said(stage, kA), "-");
    EXPECT_EQ(said(stage, kA), "R");
    EXPECT_EQ(stage.happened(), 0);
    const Act act = stage.asked(1, kB, answerTo(kB));
    ASSERT_EQ(act.says.size(), 2u);
    EXPECT_EQ(act.says[0].bytes, answerTo(kA));
    EXPECT_EQ(act.says[0].reply, Reply::late);
    EXPECT_EQ(act.says[1].after, judge::milliseconds(200));
    EXPECT_EQ(stage.happened(), 1);
}

TEST(Stage, ALateReplyComesToAHostThatGivesUpAtOnceToo)
{
    Stage stage;
    stage.begin(situationOf(Play::late));
    EXPECT_EQ(said(stage, kA), "-");
    EXPECT_EQ(said(stage, kB), "L200R");
}

TEST(Stage, WhatIsLateDoesNotOutliveItsConnection)
{
    Stage stage;
    stage.begin(situationOf(Play::late, 3, 2));
    EXPECT_EQ(said(stage, kA), "R");
    EXPECT_EQ(said(stage, kB), "-");
    EXPECT_EQ(said(stage, kC, 2), "R");
    stage.closed(2);
    EXPECT_EQ(stage.happened(), 0);
}

TEST(Stage, TheSecondCopyIsFollowedByAReplyThatWaits)
{
    Stage stage;
    stage.begin(situationOf(Play::duplicate));
    EXPECT_EQ(said(stage, kA), "RD");
    EXPECT_EQ(said(stage, kB), "200R");
    EXPECT_EQ(said(stage, kC), "R");
}

TEST(Stage, WhatIsRefusedAnywayIsNotPlayedWith)
{
    Stage stage;
    stage.begin(situationOf(Play::tooLong));
    const Act act = stage.asked(1, kA, judge::refusalOf(kA, 2));
    ASSERT_EQ(act.says.size(), 1u);
    EXPECT_EQ(act.says[0].reply, Reply::exception);
    EXPECT_TRUE(stage.asked(1, kB, Bytes()).says.empty());
    EXPECT_EQ(stage.happened(), 0);
}

TEST(WrongReplies, ForeignOnesAreWholeAndOfSomebodyElse)
{
    for (const Bytes& request : {kA, writeWord(1, 16, 5)}) {
        const Bytes right = answerTo(request);
        std::set<Bytes> variants;
        for (int variant = 0; variant < 12; ++variant) {
            const Bytes foreign = judge::foreignReply(request, right, variant);
            EXPECT_EQ(lengthOf(foreign), foreign.size());
            EXPECT_NE(foreign, right);
            variants.insert(foreign);
        }
        EXPECT_EQ(variants.size(), request == kA ? 6u : 5u);
    }
}

TEST(WrongReplies, ShortAndLongOnesSayTheirOwnLength)
{
    for (const Bytes& request : {kA, writeWord(1, 16, 5)}) {
        const Bytes right = answerTo(request);
        for (int variant = 0; variant < 6; ++variant) {
            const Bytes less = judge::shortReply(right, variant);
            const Bytes more = judge::longReply(right, variant);
            EXPECT_LT(less.size(), right.size());
            EXPECT_GT(more.size(), right.size());
            EXPECT_EQ(lengthOf(less), less.size());
            EXPECT_EQ(lengthOf(more), more.size());
        }
    }
}

TEST(WrongReplies, HalfAReplyPromisesTheWhole)
{
    const Bytes half = judge::halfReply(answerTo(kA));
    EXPECT_EQ(half.size(), 7u);
    EXPECT_EQ(lengthOf(half), answerTo(kA).size());
}

TEST(WrongReplies, ARefusalHasTheRequestsNumberStationAndFunction)
{
    EXPECT_EQ(judge::refusalOf(kA, 4), header(1, 102 | 0x80, 4, 0));
}

} // namespace tavmir::test
