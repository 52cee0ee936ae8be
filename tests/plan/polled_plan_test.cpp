// Polled entries as elements, as driver records and as the driver's own list.
#include "plan/polled_plan.h"

#include "plan_project.h"

namespace tavmir::host
{

namespace
{

using project::Format;

std::vector<std::string> namesOf(const std::vector<PolledElement>& polled)
{
    std::vector<std::string> names;
    for (const PolledElement& entry : polled) {
        names.push_back(entry.name.toStdString());
    }
    return names;
}

std::vector<int> stationsOf(const std::vector<PolledElement>& polled)
{
    std::vector<int> stations;
    for (const PolledElement& entry : polled) {
        stations.push_back(entry.station);
    }
    return stations;
}

constexpr char kThreeStations[] = R"({ "address": "M.bit", "station": 9 },
    { "address": "M.w" }, { "address": "M.a[0]", "count": 2, "station": 7 })";

PolledElement at(const project::Project& project, const QString& address, int station)
{
    PolledElement entry;
    entry.element = elementOf(project, address);
    entry.name = address;
    entry.station = station;
    return entry;
}

} // namespace

TEST(PolledPlan, WithStationsOfTheirOwnEntriesKeepThem)
{
    const project::Project project = planProject(kThreeStations, kOwnStations);
    EXPECT_EQ((std::vector<int>{9, 4, 7, 7}), stationsOf(polledElements(project)));
}

TEST(PolledPlan, OtherwiseAllArePolledAtTheProjectsStation)
{
    project::Project project = planProject(kThreeStations, kOwnStations);
    project.connection.ownStations = false;
    EXPECT_EQ((std::vector<int>{4, 4, 4, 4}), stationsOf(polledElements(project)));
}

TEST(PolledPlan, EntriesAreNamedByAddressOrNumbered)
{
    const project::Project project =
        planProject(R"({ "address": "M.w" }, { "address": "M.d", "name": "level" },
                       { "address": "M.a[3]", "count": 2 },
                       { "address": "M.a[5]", "count": 2, "name": "row" },
                       { "address": "M.names", "name": "who" })");
    EXPECT_EQ((std::vector<std::string>{"M.w", "level", "M.a[3]", "M.a[4]", "row (1)", "row (2)",
                                        "who (1)", "who (2)"}),
              namesOf(polledElements(project)));
}

TEST(PolledPlan, FormatsAreThoseThatFit)
{
    const project::Project project =
        planProject(R"({ "address": "M.w", "format": "hex" }, { "address": "M.a[0]" },
                       { "address": "M.bit" }, { "address": "M.r" }, { "address": "M.text" },
                       { "address": "M.d", "format": "signed" })");
    std::vector<Format> formats;
    for (const PolledElement& entry : polledElements(project)) {
        formats.push_back(entry.format);
        EXPECT_NE(Format::automatic, entry.format);
    }
    EXPECT_EQ(Format::hex, formats[0]);
    EXPECT_EQ(project::effectiveFormat(elementOf(project, "M.a[0]"), Format::automatic),
              formats[1]);
    EXPECT_EQ(Format::bit, formats[2]);
    EXPECT_EQ(Format::floating, formats[3]);
    EXPECT_EQ(Format::text, formats[4]);
    EXPECT_EQ(Format::signedNumber, formats[5]);
}

TEST(PolledPlan, RecordsForTheDriver)
{
    const project::Project project = planProject(
        R"({ "address": "M.bit", "station": 9 }, { "address": "M.d", "name": "wide" },
           { "address": "M.text" }, { "address": "M.names[2]" }, { "address": "M.w.b[3]" })",
        kOwnStations);
    const QList<HOSTVAR> records = hostRecords(polledElements(project));
    ASSERT_EQ(5, records.size());
    EXPECT_EQ("M.bit", records[0].addressText.toStdString());
    EXPECT_EQ(9, records[0].station);
    EXPECT_EQ(1, records[0].count);
    EXPECT_EQ("wide", records[1].auxText.toStdString());
    EXPECT_EQ("M.d", records[1].addressText.toStdString());
    EXPECT_EQ(4, records[1].station);
    EXPECT_EQ(2, records[1].count);
    EXPECT_EQ("M.text~words", records[2].addressText.toStdString());
    EXPECT_EQ(3, records[2].count);
    EXPECT_EQ("M.names~words[2].w", records[3].addressText.toStdString());
    EXPECT_EQ(2, records[3].count);
    EXPECT_EQ("M.w.b[3]", records[4].addressText.toStdString());
    EXPECT_EQ(1, records[4].count);
}

TEST(PolledPlan, WireOrderAscendsByClassAndAddress)
{
    const project::Project project = planProject("");
    const auto order =
        wireOrder({at(project, "M.r", 1), at(project, "M.text", 1), at(project, "M.d", 1),
                   at(project, "M.w", 1), at(project, "M.bit", 1)});
    EXPECT_EQ((std::vector<WireElement>{{ElementClass::bits, 100, 1},
                                        {ElementClass::words, 3200, 1},
                                        {ElementClass::words, 6400, 1},
                                        {ElementClass::words, 6416, 1},
                                        {ElementClass::words, 6432, 1},
                                        {ElementClass::doubleWords, 3200, 1},
                                        {ElementClass::doubleWords, 5024, 1}}),
              order);
}

TEST(PolledPlan, OfTwoEntriesForOnePlaceTheLaterDecides)
{
    const project::Project project = planProject("");
    EXPECT_EQ(
        (std::vector<WireElement>{{ElementClass::words, 3200, 2}}),
        wireOrder({at(project, "M.w", 3), at(project, "M.w.b[4]", 1), at(project, "M.w", 2)}));
    EXPECT_EQ((std::vector<WireElement>{{ElementClass::words, 6400, 1},
                                        {ElementClass::words, 6416, 5},
                                        {ElementClass::words, 6432, 1}}),
              wireOrder({at(project, "M.text", 1), at(project, "M.inText", 5)}));
    EXPECT_EQ((std::vector<WireElement>{{ElementClass::words, 6400, 1},
                                        {ElementClass::words, 6416, 1},
                                        {ElementClass::words, 6432, 1}}),
              wireOrder({at(project, "M.inText", 5), at(project, "M.text", 1)}));
}

TEST(PolledPlan, OfManyEntriesForOnePlaceTheLastDecides)
{
    const project::Project project = planProject("");
    std::vector<PolledElement> polled;
    for (int station = 0; station < 200; ++station) {
        polled.push_back(at(project, station % 2 == 0 ? "M.w" : "M.bit", station));
    }
    EXPECT_EQ((std::vector<WireElement>{{ElementClass::bits, 100, 199},
                                        {ElementClass::words, 3200, 198}}),
              wireOrder(polled));
}

TEST(PolledPlan, NegativeAddressesComeFirst)
{
    PolledElement low;
    low.element.address = 0xFFFFFFF0;
    PolledElement high;
    high.element.address = 16;
    const auto order = wireOrder({high, low});
    ASSERT_EQ(2u, order.size());
    EXPECT_EQ(-16, order[0].address);
}

TEST(PolledPlan, NothingPolledIsNothing)
{
    const project::Project project = planProject("");
    EXPECT_TRUE(polledElements(project).empty());
    EXPECT_TRUE(hostRecords({}).isEmpty());
    EXPECT_TRUE(wireOrder({}).empty());
}

} // namespace tavmir::host
