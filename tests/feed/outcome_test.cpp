// Ends of operations in words.
#include "feed/outcome.h"

#include <gtest/gtest.h>

namespace tavmir::host
{

TEST(Outcome, EachStateHasItsWord)
{
    EXPECT_STREQ("done", outcomeWord(OutcomeState::done));
    EXPECT_STREQ("refused", outcomeWord(OutcomeState::refused));
    EXPECT_STREQ("not sent", outcomeWord(OutcomeState::notSent));
    EXPECT_STREQ("unknown", outcomeWord(OutcomeState::unknown));
    EXPECT_STREQ("partial", outcomeWord(OutcomeState::partial));
    EXPECT_EQ(5, kOutcomeStates);
}

TEST(Outcome, TheReasonStandsBehindTheWord)
{
    Outcome outcome;
    outcome.state = OutcomeState::refused;
    outcome.reason = "exception 2";
    EXPECT_EQ("refused: exception 2", outcomeInWords(outcome).toStdString());
    outcome.reason.clear();
    EXPECT_EQ("refused", outcomeInWords(outcome).toStdString());
    outcome.state = OutcomeState::done;
    EXPECT_EQ("done", outcomeInWords(outcome).toStdString());
    outcome.state = OutcomeState::partial;
    outcome.reason = "1 of 2 elements done, the rest %1 unknown: why";
    EXPECT_EQ("partial: 1 of 2 elements done, the rest %1 unknown: why",
              outcomeInWords(outcome).toStdString());
}

TEST(Outcome, OnlyDoneIsOk)
{
    for (int state = 0; state < kOutcomeStates; ++state) {
        Outcome outcome;
        outcome.state = static_cast<OutcomeState>(state);
        EXPECT_EQ(outcome.state == OutcomeState::done, outcome.ok());
    }
    EXPECT_FALSE(Outcome().ok());
}

} // namespace tavmir::host
