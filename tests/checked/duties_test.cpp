// Each duty has hosts that break it and twins that do not: the one is told exactly that, the
// other nothing.
#include "checked/duties.h"

#include "checked/forked_host.h"
#include "checked/small_host.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tavmir::checked_tests
{
namespace
{

using checked::Duty;
using checked::DutyText;
using checked::kDuties;
using checked::textOf;

class Hosts : public ::testing::TestWithParam<HostPair>
{
protected:
    static Ending ending() { return GetParam().byExit ? Ending::ByExit : Ending::AtOnce; }
};

TEST_P(Hosts, BrokenOneIsToldExactlyThat)
{
    const HostRun run = runHost(GetParam().broken, GetParam().setting, ending());
    EXPECT_TRUE(run.ended) << "it hangs";
    const std::vector<std::string> ids = run.ids();
    const std::set<std::string> distinct(ids.begin(), ids.end());
    EXPECT_THAT(distinct, ::testing::ElementsAre(GetParam().id)) << run.reports << run.errors;
}

TEST_P(Hosts, RightTwinIsToldNothing)
{
    const HostRun run = runHost(GetParam().right, "report", ending());
    EXPECT_TRUE(run.endedWell()) << run.status << '\n' << run.errors;
    EXPECT_EQ(run.reports, "");
}

std::string nameOfHost(const ::testing::TestParamInfo<HostPair>& info)
{
    std::string name;
    bool upper = true;
    for (const char* c = info.param.id; *c; ++c) {
        if (*c == '-') {
            upper = true;
            continue;
        }
        name += upper ? static_cast<char>(std::toupper(*c)) : *c;
        upper = false;
    }
    return name + "_" + std::to_string(info.index);
}

INSTANTIATE_TEST_SUITE_P(Each, Hosts, ::testing::ValuesIn(allHosts()), nameOfHost);

TEST(DutyTable, HasABrokenHostForEachIdentifierAndNoOther)
{
    std::set<std::string> hosts;
    for (const HostPair& pair : allHosts()) {
        hosts.insert(pair.id);
    }
    std::set<std::string> duties;
    for (int i = 0; i < kDuties; ++i) {
        duties.insert(textOf(static_cast<Duty>(i)).id);
    }
    EXPECT_EQ(hosts, duties);
    EXPECT_EQ(duties.size(), static_cast<std::size_t>(kDuties)) << "an identifier stands twice";
}

TEST(DutyTable, RowsStandInTheOrderOfTheirNumbers)
{
    for (int i = 0; i < kDuties; ++i) {
        const DutyText& row = textOf(static_cast<Duty>(i));
        EXPECT_EQ(row.duty, i);
        EXPECT_EQ(checked::dutyOf(row.id), i);
        EXPECT_THAT(row.id, ::testing::MatchesRegex("[a-z][a-z0-9-]+[a-z0-9]"));
        EXPECT_EQ(std::string(row.sentence).back(), '.') << row.id;
        EXPECT_EQ(std::string(row.otherwise).back(), '.') << row.id;
    }
    EXPECT_EQ(checked::dutyOf("no-such-duty"), kDuties);
}

} // namespace
} // namespace tavmir::checked_tests
