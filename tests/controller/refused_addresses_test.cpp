// Addresses that the controller lacks: rules as texts, and which requests touch them.
#include "controller/refused_addresses.h"
#include "frames.h"

#include "project/project_reader.h"

#include <gtest/gtest.h>

using namespace tavmir::controller;
using namespace tavmir::test;

namespace
{

const char kPlant[] = R"({
  "connection": { "host": "127.0.0.1", "port": 5020 },
  "types": [ { "name": "Axis", "size": 64, "members": [
    { "name": "Pos", "type": "dword", "offset": 0 },
    { "name": "Home", "type": "bit", "offset": 40 } ] } ],
  "labels": [ { "name": "Main", "variables": [
    { "name": "W", "type": "word", "address": 3000, "bits": true },
    { "name": "Row", "type": "word", "address": 4000, "array": { "bounds": [[1, 3]] } },
    { "name": "Axis", "type": "Axis", "address": 1000, "array": { "bounds": [[0, 3]] } },
    { "name": "Title", "type": "text", "address": 6000, "words": 4 } ] } ],
  "polled": [ { "address": "Main.W" } ]
})";

tavmir::project::Project plant()
{
    const auto outcome = tavmir::project::readProject(kPlant, "plant");
    EXPECT_TRUE(outcome.project) << outcome.error.toStdString();
    return outcome.project.value_or(tavmir::project::Project());
}

std::string problemOf(const QString& rule)
{
    QString problem;
    EXPECT_FALSE(parseRefuseRule(rule, &problem)) << rule.toStdString();
    return problem.toStdString();
}

std::vector<RefusedRange> rangesOf(const QStringList& texts)
{
    const tavmir::project::Project project = plant();
    std::vector<RefuseRule> rules;
    QString problem;
    for (const QString& text : texts) {
        rules.push_back(parseRefuseRule(text, &problem).value_or(RefuseRule()));
    }
    const auto ranges = refusedRanges(rules, &project, &problem);
    EXPECT_TRUE(ranges) << problem.toStdString();
    return ranges.value_or(std::vector<RefusedRange>());
}

// The code with which a read of one element is refused.
int codeOf(const QStringList& rules, int function, std::uint32_t address)
{
    return refusalOf(rangesOf(rules), parseRequest(readFrame(1, 1, function, {address})));
}

constexpr int kBits = 100;
constexpr int kWords = 102;
constexpr int kDoubleWords = 108;

} // namespace

TEST(RefusedAddresses, ARequestIsRefusedWhenOneOfItsBitsLiesInTheRange)
{
    const QStringList rule = {"any:3000-3099=2"};
    for (const std::uint32_t address : {2985u, 3000u, 3050u, 3099u}) {
        EXPECT_EQ(codeOf(rule, kWords, address), 2) << address;
    }
    for (const std::uint32_t address : {2984u, 3100u, 0u}) {
        EXPECT_EQ(codeOf(rule, kWords, address), 0) << address;
    }
    EXPECT_EQ(codeOf(rule, kDoubleWords, 2969), 2);
    EXPECT_EQ(codeOf(rule, kDoubleWords, 2968), 0);
    EXPECT_EQ(codeOf(rule, kBits, 2999), 0);
    EXPECT_EQ(codeOf(rule, kBits, 3000), 2);
}

TEST(RefusedAddresses, AClassRefusesItsRequestsOnly)
{
    EXPECT_EQ(codeOf({"word:3000=2"}, kWords, 3000), 2);
    EXPECT_EQ(codeOf({"word:3000=2"}, kBits, 3000), 0);
    EXPECT_EQ(codeOf({"bit:3000=3"}, kBits, 3000), 3);
    EXPECT_EQ(codeOf({"bit:3000=3"}, kWords, 3000), 0);
    EXPECT_EQ(codeOf({"dword:3000=4"}, kDoubleWords, 3000), 4);
    EXPECT_EQ(codeOf({"dword:3000=4"}, kWords, 3000), 0);
}

TEST(RefusedAddresses, WritesAndEachElementAreLookedAt)
{
    const std::vector<RefusedRange> ranges = rangesOf({"word:3000=2"});
    const QByteArray write = writeFrame(1, 1, 103, {{16, hex("0100")}, {3000, hex("0100")}});
    EXPECT_EQ(refusalOf(ranges, parseRequest(write)), 2);
    EXPECT_EQ(refusalOf(ranges, parseRequest(readFrame(1, 1, kWords, {16, 32, 3000}))), 2);
    EXPECT_EQ(refusalOf(ranges, parseRequest(readFrame(1, 1, kWords, {16, 32, 3016}))), 0);
}

TEST(RefusedAddresses, TheFirstRuleCounts)
{
    EXPECT_EQ(codeOf({"word:16=2", "any:0-100=7"}, kWords, 16), 2);
    EXPECT_EQ(codeOf({"any:0-100=7", "word:16=2"}, kWords, 16), 7);
    EXPECT_EQ(codeOf({}, kWords, 16), 0);
}

TEST(RefusedAddresses, ElementsThatWrapAroundTouchTheFirstBits)
{
    EXPECT_EQ(codeOf({"any:0-3=2"}, kWords, 4294967290u), 2);
    EXPECT_EQ(codeOf({"any:10=2"}, kWords, 4294967290u), 0);
    EXPECT_EQ(codeOf({"any:4294967295=2"}, kBits, 4294967295u), 2);
}

TEST(RefusedAddresses, AVariableIsRefusedAsAWhole)
{
    EXPECT_EQ(codeOf({"Main.W=2"}, kWords, 3000), 2);
    EXPECT_EQ(codeOf({"Main.W=2"}, kBits, 3015), 2);
    EXPECT_EQ(codeOf({"Main.W=2"}, kWords, 3016), 0);
    EXPECT_EQ(codeOf({"Main.W.b[3]=2"}, kBits, 3003), 2);
    EXPECT_EQ(codeOf({"Main.W.b[3]=2"}, kBits, 3002), 0);
    EXPECT_EQ(codeOf({"Main.Title=2"}, kWords, 6048), 2);
    EXPECT_EQ(codeOf({"Main.Title=2"}, kWords, 6064), 0);
    EXPECT_EQ(codeOf({"Main.Axis[2].Home=2"}, kBits, 1168), 2);
    EXPECT_EQ(codeOf({"Main.Axis[2].Home=2"}, kDoubleWords, 1128), 0);
}

TEST(RefusedAddresses, AnArrayOrStructureRefusesEachOfItsElementsAndNoGap)
{
    EXPECT_EQ(rangesOf({"Main.Row=2"}).size(), 1u) << "neighbours are one range";
    EXPECT_EQ(codeOf({"Main.Row=2"}, kWords, 4032), 2);
    EXPECT_EQ(codeOf({"Main.Row=2"}, kWords, 4048), 0);
    EXPECT_EQ(codeOf({"Main.Axis[1]=2"}, kDoubleWords, 1064), 2);
    EXPECT_EQ(codeOf({"Main.Axis[1]=2"}, kBits, 1104), 2);
    EXPECT_EQ(codeOf({"Main.Axis[1]=2"}, kBits, 1103), 0);
    EXPECT_EQ(codeOf({"Main.Axis[1]=2"}, kDoubleWords, 1128), 0);
}

TEST(RefusedAddresses, VariablesThatFollowEachOtherKeepTheirOwnCodes)
{
    const QStringList rules = {"Main.Row[1]=2", "Main.Row[2]=3"};
    EXPECT_EQ(codeOf(rules, kWords, 4000), 2);
    EXPECT_EQ(codeOf(rules, kWords, 4016), 3);
}

TEST(RefusedAddresses, ARuleThatIsNoneSaysWhy)
{
    for (const char* text : {"", "=2", "word:3000", "word:3000=", "word:3000=0", "word:3000=256",
                             "word:3000=x", "word:3000=-1"}) {
        EXPECT_NE(problemOf(text).find("does not end in =CODE"), std::string::npos) << text;
    }
    for (const char* text : {"word:=2", "word:x=2", "word:3-2=2", "word:3-=2", "word:-3=2",
                             "bit:4294967296=2", "any:1-2-3=2", "dword: 3=2"}) {
        EXPECT_NE(problemOf(text).find("is not CLASS:FROM-TO"), std::string::npos) << text;
    }
}

TEST(RefusedAddresses, AnAddressNeedsAProjectThatHasIt)
{
    QString problem;
    const std::vector<RefuseRule> rules = {*parseRefuseRule("Main.Nothing=2", &problem)};
    const tavmir::project::Project project = plant();
    EXPECT_FALSE(refusedRanges(rules, &project, &problem));
    EXPECT_TRUE(problem.startsWith("Main.Nothing: ")) << problem.toStdString();
    EXPECT_FALSE(refusedRanges(rules, nullptr, &problem));
    EXPECT_TRUE(problem.contains("is an address of a project, and there is none"));
}
