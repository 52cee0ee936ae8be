// How writes are told, and what reading them back makes of them.
#include "host/write_report.h"

#include <gtest/gtest.h>

namespace tavmir::host
{

namespace
{

Assignment assignment()
{
    Assignment assignment;
    assignment.address = "M.w";
    assignment.value = "5";
    assignment.shown = "M.w = 5";
    return assignment;
}

Outcome outcome(OutcomeState state, const QString& reason = "why")
{
    Outcome outcome;
    outcome.state = state;
    outcome.reason = state == OutcomeState::done ? QString() : reason;
    outcome.elements = 3;
    outcome.acknowledged = 2;
    return outcome;
}

ReadBack readBack(const QString& value, bool asAsked)
{
    ReadBack back;
    back.row = {"M.w", "M.w", value, project::Format::unsignedNumber, std::nullopt, Quality::good};
    if (value.isNull()) {
        back.row.quality = Quality::bad;
        back.row.reason = "late, too";
    }
    back.asAsked = asAsked;
    return back;
}

} // namespace

TEST(WriteReports, WhatWasInDoubtIsDoneWhenItStandsThere)
{
    for (const OutcomeState doubtful : {OutcomeState::unknown, OutcomeState::partial}) {
        const Outcome done = settled(outcome(doubtful), readBack("5", true));
        EXPECT_EQ(OutcomeState::done, done.state);
        EXPECT_EQ("written, as reading it back shows: why", done.reason.toStdString());
        EXPECT_EQ(doubtful, settled(outcome(doubtful), readBack("7", false)).state);
        EXPECT_EQ("why", settled(outcome(doubtful), readBack("7", false)).reason.toStdString());
    }
    for (const OutcomeState sure :
         {OutcomeState::done, OutcomeState::refused, OutcomeState::notSent}) {
        EXPECT_EQ(sure, settled(outcome(sure), readBack("5", true)).state);
    }
}

TEST(WriteReports, OnlyWhatIsDoneAndReadBackIsDone)
{
    EXPECT_TRUE(isDone({outcome(OutcomeState::done), std::nullopt}));
    EXPECT_TRUE(isDone({outcome(OutcomeState::done), readBack("7", false)}))
        << "a controller may reset it at once";
    EXPECT_FALSE(isDone({outcome(OutcomeState::done), readBack(QString(), false)}));
    for (const OutcomeState state : {OutcomeState::refused, OutcomeState::notSent,
                                     OutcomeState::unknown, OutcomeState::partial}) {
        EXPECT_FALSE(isDone({outcome(state), std::nullopt})) << outcomeWord(state);
    }
}

TEST(WriteReports, AsLines)
{
    const auto line = [](const WriteReport& report) {
        return writeLine(assignment(), report).toStdString();
    };
    EXPECT_EQ("M.w = 5: written", line({outcome(OutcomeState::done), std::nullopt}));
    EXPECT_EQ("M.w = 5: written; 7 stands there",
              line({outcome(OutcomeState::done), readBack("7", false)}));
    EXPECT_EQ("M.w = 5: unknown: why; not read back: late, too",
              line({outcome(OutcomeState::unknown), readBack(QString(), false)}));
    EXPECT_EQ("M.w = 5: not sent: why", line({outcome(OutcomeState::notSent), std::nullopt}));
}

TEST(WriteReports, AsJson)
{
    EXPECT_EQ(R"({"acknowledged":2,"address":"M.w","asked":"5","elements":3,)"
              R"("outcome":"partial","reason":"why"})",
              jsonLine(writeJson(assignment(), {outcome(OutcomeState::partial), std::nullopt}))
                  .toStdString());
    EXPECT_EQ(R"({"acknowledged":2,"address":"M.w","asked":"5","elements":3,"outcome":"done",)"
              R"("readBack":{"address":"M.w","ageMs":null,"name":"M.w","quality":"good",)"
              R"("reason":null,"value":5},"reason":null})",
              jsonLine(writeJson(assignment(), {outcome(OutcomeState::done), readBack("5", true)}))
                  .toStdString());
}

TEST(WriteReports, AsCsv)
{
    EXPECT_EQ(9, writeCsvHeading().count(','));
    EXPECT_EQ("T,M.w,5,unknown,\"a, b\",3,2,,,",
              writeCsv(assignment(), {outcome(OutcomeState::unknown, "a, b"), std::nullopt}, "T")
                  .toStdString());
    EXPECT_EQ("T,M.w,5,done,,3,2,7,good,",
              writeCsv(assignment(), {outcome(OutcomeState::done), readBack("7", false)}, "T")
                  .toStdString());
    EXPECT_EQ("T,M.w,5,done,,3,2,,bad,\"late, too\"",
              writeCsv(assignment(), {outcome(OutcomeState::done), readBack(QString(), false)}, "T")
                  .toStdString());
}

} // namespace tavmir::host
