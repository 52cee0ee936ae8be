// Fault rules: how they are written, when they apply, and that a seed fixes them.
#include "controller/fault_plan.h"

#include <QtCore/QStringList>

#include <gtest/gtest.h>

#include <algorithm>

using namespace tavmir::controller;

namespace
{

FaultRule rule(const char* text)
{
    QString problem;
    const std::optional<FaultRule> parsed = parseFaultRule(text, &problem);
    EXPECT_TRUE(parsed) << text << ": " << problem.toStdString();
    return parsed.value_or(FaultRule());
}

std::vector<FaultKind> decisions(std::vector<FaultRule> rules, std::uint64_t seed, int requests)
{
    FaultPlan plan(std::move(rules), seed);
    std::vector<FaultKind> kinds;
    for (int i = 0; i < requests; ++i) {
        kinds.push_back(plan.next());
    }
    return kinds;
}

std::vector<int> numbersOf(FaultKind kind, const std::vector<FaultKind>& kinds)
{
    std::vector<int> numbers;
    for (std::size_t i = 0; i < kinds.size(); ++i) {
        if (kinds[i] == kind) {
            numbers.push_back(static_cast<int>(i) + 1);
        }
    }
    return numbers;
}

} // namespace

TEST(FaultRule, ReadsAllThreeFormsOfEveryKind)
{
    for (std::size_t i = 1; i < kFaultKinds; ++i) {
        const FaultRow& row = kFaultTable[i];
        const std::string name = row.name;
        EXPECT_EQ(rule((name + "=0.25").c_str()).kind, row.kind);
        EXPECT_EQ(rule((name + "@7").c_str()).kind, row.kind);
        EXPECT_EQ(rule((name + "%3").c_str()).kind, row.kind);
    }
    EXPECT_EQ(rule("drop=0.25").when, FaultRule::When::Probability);
    EXPECT_EQ(rule("drop=0.25").probability, 0.25);
    EXPECT_EQ(rule("drop@7").when, FaultRule::When::Once);
    EXPECT_EQ(rule("drop@7").number, 7u);
    EXPECT_EQ(rule("drop%3").when, FaultRule::When::Every);
    EXPECT_EQ(rule("drop%3").number, 3u);
}

TEST(FaultRule, ListsTheKindsThereAre)
{
    QString problem;
    EXPECT_FALSE(parseFaultRule("boom@1", &problem));
    QStringList names;
    for (std::size_t i = 1; i < kFaultKinds; ++i) {
        names.append(kFaultTable[i].name);
    }
    EXPECT_EQ(problem.toStdString(),
              ("unknown fault \"boom\"; there are " + names.join(", ")).toStdString());
}

TEST(FaultRule, RefusesWhatIsNoneAndSaysWhy)
{
    const std::pair<const char*, const char*> bad[] = {
        {"", "none of KIND=P"},   {"drop", "none of KIND=P"},      {"none@1", "unknown fault"},
        {"explode@1", "explode"}, {"=1", "unknown fault"},         {"drop=", "no probability"},
        {"drop=1.5", "1.5"},      {"drop=-0.1", "no probability"}, {"drop=nan", "no probability"},
        {"drop@0", "no number"},  {"drop@-1", "no number"},        {"drop@x", "no number"},
        {"drop%0", "no number"},  {"drop%1.5", "no number"},       {"Drop@1", "unknown fault"},
    };
    for (const auto& [text, why] : bad) {
        QString problem;
        EXPECT_FALSE(parseFaultRule(text, &problem)) << text;
        EXPECT_TRUE(problem.contains(why)) << text << ": " << problem.toStdString();
    }
}

TEST(FaultPlan, WithoutRulesNothingHappens)
{
    EXPECT_EQ(decisions({}, 1, 100), std::vector<FaultKind>(100, FaultKind::None));
}

TEST(FaultPlan, OnceAppliesToOneRequestOnly)
{
    const std::vector<FaultKind> kinds = decisions({rule("drop@3"), rule("cut@5")}, 1, 20);
    EXPECT_EQ(numbersOf(FaultKind::Drop, kinds), std::vector<int>{3});
    EXPECT_EQ(numbersOf(FaultKind::Cut, kinds), std::vector<int>{5});
    EXPECT_EQ(numbersOf(FaultKind::None, kinds).size(), 18u);
}

TEST(FaultPlan, EveryAppliesAgainAndAgain)
{
    EXPECT_EQ(numbersOf(FaultKind::Late, decisions({rule("late%4")}, 1, 13)),
              (std::vector<int>{4, 8, 12}));
}

TEST(FaultPlan, ProbabilitiesOfZeroAndOneAreNeverAndAlways)
{
    EXPECT_EQ(decisions({rule("drop=0")}, 3, 1000), std::vector<FaultKind>(1000, FaultKind::None));
    EXPECT_EQ(decisions({rule("drop=1")}, 3, 1000), std::vector<FaultKind>(1000, FaultKind::Drop));
}

TEST(FaultPlan, AProbabilityComesTrueOverManyRequests)
{
    const auto dropped = numbersOf(FaultKind::Drop, decisions({rule("drop=0.2")}, 42, 10000));
    EXPECT_GT(dropped.size(), 1800u);
    EXPECT_LT(dropped.size(), 2200u);
}

TEST(FaultPlan, TheFirstRuleThatAppliesCounts)
{
    const auto kinds = decisions({rule("drop%2"), rule("delay=1"), rule("cut@2")}, 1, 4);
    EXPECT_EQ(kinds, (std::vector<FaultKind>{FaultKind::Delay, FaultKind::Drop, FaultKind::Delay,
                                             FaultKind::Drop}));
}

TEST(FaultPlan, TheSameSeedGivesTheSameFaultsAndAnotherSeedOthers)
{
    const std::vector<FaultRule> rules = {rule("drop=0.1"), rule("corrupt=0.1"), rule("late=0.1")};
    EXPECT_EQ(decisions(rules, 7, 1000), decisions(rules, 7, 1000));
    EXPECT_NE(decisions(rules, 7, 1000), decisions(rules, 8, 1000));
}

TEST(FaultPlan, ARuleBehindOthersDoesNotMoveTheirs)
{
    const auto alone = decisions({rule("drop=0.1")}, 7, 1000);
    const auto together = decisions({rule("drop=0.1"), rule("cut=0.5")}, 7, 1000);
    EXPECT_EQ(numbersOf(FaultKind::Drop, alone), numbersOf(FaultKind::Drop, together));
}

TEST(FaultPlan, ARuleBeforeOthersOnlyHidesTheirsWhereItApplies)
{
    const auto hidden = decisions({rule("drop=0.5"), rule("cut=0.3")}, 7, 1000);
    const auto shown = decisions({rule("drop=0"), rule("cut=0.3")}, 7, 1000);
    for (std::size_t i = 0; i < hidden.size(); ++i) {
        if (hidden[i] != FaultKind::Drop) {
            ASSERT_EQ(hidden[i], shown[i]) << i;
        }
    }
}

TEST(FaultPlan, RulesOfTheSameProbabilityDrawForThemselves)
{
    const auto kinds = decisions({rule("drop=0.5"), rule("cut=0.5")}, 7, 1000);
    EXPECT_GT(numbersOf(FaultKind::Cut, kinds).size(), 150u);
    EXPECT_GT(numbersOf(FaultKind::None, kinds).size(), 150u);
}

TEST(FaultPlan, TheFirstFaultsOfASeedAreTheSameOnEveryMachine)
{
    const auto dropped = numbersOf(FaultKind::Drop, decisions({rule("drop=0.2")}, 1, 40));
    EXPECT_EQ(dropped, (std::vector<int>{6, 7, 9, 15, 24, 30, 35, 36}));
}
