// A word and its bits are shown each in its own format.
#include "plan/polled_index.h"

#include "plan_project.h"

namespace tavmir::host
{

TEST(BitFormats, ABitThatIsPolledSaysNothingOfItsWordsFormat)
{
    const project::Project project =
        planProject(R"({ "address": "M.w.b[0]" }, { "address": "M.w", "format": "hex" })");
    const PolledIndex index(project);
    EXPECT_EQ(project::Format::hex, index.formatOf(elementOf(project, "M.w")));
    EXPECT_EQ(project::Format::bit, index.formatOf(elementOf(project, "M.w.b[0]")));
}

TEST(BitFormats, ABitsGivenFormatIsNotItsWords)
{
    const project::Project project = planProject(
        R"({ "address": "M.w", "format": "hex" }, { "address": "M.w.b[0]", "format": "bit" })");
    const PolledIndex index(project);
    EXPECT_EQ(project::Format::hex, index.formatOf(elementOf(project, "M.w")));
    EXPECT_EQ(project::Format::bit, index.formatOf(elementOf(project, "M.w.b[0]")));
}

} // namespace tavmir::host
