// Which polled variables lie on each other.
#include "plan/overlaps.h"

#include "plan_project.h"

namespace tavmir::host
{

namespace
{

using Pairs = std::vector<std::pair<std::string, std::string>>;

Pairs overlapsIn(const QByteArray& polledEntries, const QByteArray& connection = "")
{
    const std::vector<PolledElement> polled =
        polledElements(planProject(polledEntries, connection));
    Pairs pairs;
    for (const Overlap& one : overlapsOf(polled)) {
        pairs.emplace_back(polled[one.first].name.toStdString(),
                           polled[one.second].name.toStdString());
    }
    return pairs;
}

} // namespace

TEST(Overlaps, NeighboursDoNot)
{
    EXPECT_EQ(Pairs(), overlapsIn(R"({ "address": "M.a" }, { "address": "M.bit" },
                                     { "address": "M.names" })"));
}

TEST(Overlaps, AWordInsideATextDoes)
{
    EXPECT_EQ((Pairs{{"M.text", "M.inText"}}),
              overlapsIn(R"({ "address": "M.inText" }, { "address": "M.text" })"));
}

TEST(Overlaps, BitsOfAWordDoWithThemselvesOnly)
{
    EXPECT_EQ(Pairs(), overlapsIn(R"({ "address": "M.w.b[1]" }, { "address": "M.w.b[2]" })"));
    EXPECT_EQ(Pairs(), overlapsIn(R"({ "address": "M.w.b[1]" }, { "address": "M.w.b[2]" },
                            { "address": "M.w" })"));
    EXPECT_EQ(
        (Pairs{{"M.w.b[1]", "twice"}}),
        overlapsIn(R"({ "address": "M.w.b[1]" }, { "address": "M.w.b[1]", "name": "twice" })"));
}

TEST(Overlaps, ClassesAndStationsAreWorldsOfTheirOwn)
{
    EXPECT_EQ(Pairs(), overlapsIn(R"({ "address": "M.w" }, { "address": "M.d" })"));
    EXPECT_EQ(Pairs(), overlapsIn(R"({ "address": "M.text", "station": 1 },
                                     { "address": "M.inText", "station": 2 })",
                                  kOwnStations));
}

} // namespace tavmir::host
