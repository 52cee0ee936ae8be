// What TAVMIR_CHECK asks for.
#include "checked/settings.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tavmir::checked_tests
{
namespace
{

using namespace checked;

TEST(CheckSettings, WithoutAWordEverythingIsReportedOnStandardError)
{
    for (const char* text : {"", "report", "  ; report ;"}) {
        const Settings settings = readSettings(text);
        EXPECT_TRUE(settings.watched.all());
        EXPECT_FALSE(settings.endsProcess);
        EXPECT_EQ(settings.logFile, "");
        EXPECT_TRUE(settings.problems.empty());
    }
}

TEST(CheckSettings, WordsAddUpWhetherBlanksOrSemicolonsPartThem)
{
    for (const char* text :
         {"abort log:/a/b not:set-up-order", "abort;log:/a/b;not:set-up-order"}) {
        const Settings settings = readSettings(text);
        EXPECT_TRUE(settings.endsProcess);
        EXPECT_EQ(settings.logFile, "/a/b");
        EXPECT_EQ(settings.watched.count(), std::size_t(kDuties - 1));
        EXPECT_FALSE(settings.watched[kSetUpOrder]);
    }
}

TEST(CheckSettings, OnlyNamesWhatIsWatchedAndNotTakesAway)
{
    const Settings settings = readSettings("only:set-up-order,cycle-thread not:cycle-thread");
    EXPECT_EQ(settings.watched.count(), 1u);
    EXPECT_TRUE(settings.watched[kSetUpOrder]);
}

TEST(CheckSettings, OnlyTwiceWatchesBoth)
{
    EXPECT_EQ(readSettings("only:set-up-order only:cycle-thread").watched.count(), 2u);
}

TEST(CheckSettings, WhatIsNotKnownIsNamedAndLeftOut)
{
    const Settings settings = readSettings("only:set-up-ordre loud abort");
    EXPECT_THAT(settings.problems, ::testing::ElementsAre("no duty is called \"set-up-ordre\"",
                                                          "TAVMIR_CHECK does not know \"loud\""));
    EXPECT_TRUE(settings.watched.none()) << "more than was asked for";
    EXPECT_TRUE(settings.endsProcess);
}

} // namespace
} // namespace tavmir::checked_tests
