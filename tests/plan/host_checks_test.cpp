// What must never be handed to the driver, and what may.
#include "plan/host_checks.h"

#include "plan_project.h"
#include "project/raw_address.h"

namespace tavmir::host
{

namespace
{

std::string ofWrite(int dataType, int bytes, int hostData2 = 1)
{
    RW_VAR record;
    record.dataType = dataType;
    record.value = QByteArray(bytes, 'x');
    record.hostData2 = hostData2;
    return refusalOfWriteRecord(&record).toStdString();
}

std::string ofPolling(const QByteArray& polled, const QByteArray& connection)
{
    const project::Project project = planProject(polled, connection);
    return refusalOfPolling(project, polledElements(project)).toStdString();
}

} // namespace

TEST(HostChecks, WritesOfEachTypeNeedTheirBytes)
{
    for (const auto& [type, bytes] :
         std::vector<std::pair<int, int>>{{1, 1}, {4, 2}, {10, 2}, {6, 4}, {7, 4}}) {
        EXPECT_EQ("", ofWrite(type, bytes)) << type;
        EXPECT_EQ("", ofWrite(type, bytes + 1)) << type;
        EXPECT_EQ("a value of " + std::to_string(bytes - 1) + " bytes is too short for type " +
                      std::to_string(type),
                  ofWrite(type, bytes - 1));
    }
}

TEST(HostChecks, OtherTypesCannotBeWritten)
{
    for (const int type : {-1, 0, 2, 3, 5, 8, 9, 11, 12, 13}) {
        EXPECT_EQ("type " + std::to_string(type) + " cannot be written", ofWrite(type, 8));
    }
}

TEST(HostChecks, AWriteMustNotAskForValues)
{
    EXPECT_EQ("hostData2 is 0: the acknowledgement would be decoded", ofWrite(4, 2, 0));
    EXPECT_EQ("", ofWrite(4, 2, -1));
    EXPECT_EQ("there is no record", refusalOfWriteRecord(nullptr).toStdString());
}

TEST(HostChecks, ElementsAreThoseOfTheProject)
{
    const project::Project project = planProject("");
    for (const char* address : {"M.bit", "M.w", "M.w.b[3]", "M.text", "M.a[9]"}) {
        EXPECT_EQ("", refusalOfExchange(project, elementOf(project, address)).toStdString());
    }
    project::Element element = elementOf(project, "M.text");
    element.words = 4;
    EXPECT_EQ("M.text is not what the project says",
              refusalOfExchange(project, element).toStdString());
    element = elementOf(project, "M.w");
    element.address += 16;
    EXPECT_EQ("M.w is not what the project says",
              refusalOfExchange(project, element).toStdString());
    element = elementOf(project, "M.w");
    element.type = project::DataType::dword;
    EXPECT_EQ("M.w is not what the project says",
              refusalOfExchange(project, element).toStdString());
    element.addressText = "M.nothing";
    EXPECT_EQ("label M has no variable nothing", refusalOfExchange(project, element).toStdString());
}

TEST(HostChecks, ElementsWithoutAVariableAreWhatTheirTextSays)
{
    const project::Project project = planProject("");
    project::Element element = project::rawElement(project::DataType::dword, 4000);
    EXPECT_EQ("", refusalOfExchange(project, element).toStdString());
    element.address = 4008;
    EXPECT_EQ("~.dword0[4000].v is not what it stands for",
              refusalOfExchange(project, element).toStdString());
    element = project::rawElement(project::DataType::word, 16);
    element.type = project::DataType::bit;
    EXPECT_NE("", refusalOfExchange(project, element).toStdString());
}

TEST(HostChecks, PollingAnElementThatIsNoneIsRefused)
{
    const project::Project project = planProject(R"({ "address": "M.w" }, { "address": "M.d" })");
    std::vector<PolledElement> polled = polledElements(project);
    EXPECT_EQ("", refusalOfPolling(project, polled).toStdString());
    polled[1].element.address = 1;
    EXPECT_EQ("M.d is not what the project says", refusalOfPolling(project, polled).toStdString());
    EXPECT_EQ("", refusalOfPolling(project, {}).toStdString());
}

TEST(HostChecks, EachClassIsPolledFromOneStation)
{
    EXPECT_EQ("", ofPolling(R"({ "address": "M.bit", "station": 1 },
                               { "address": "M.w", "station": 2 }, { "address": "M.a[0]", "station": 2 },
                               { "address": "M.d", "station": 3 }, { "address": "M.r", "station": 3 })",
                            kOwnStations));
    EXPECT_EQ("M.w of station 2 and M.text of station 3 would share a request, which carries one "
              "station only",
              ofPolling(R"({ "address": "M.bit", "station": 1 }, { "address": "M.w", "station": 2 },
                           { "address": "M.text", "station": 3 })",
                        kOwnStations));
    EXPECT_EQ(
        "M.d of station 4 and M.r of station 3 would share a request, which carries one "
        "station only",
        ofPolling(R"({ "address": "M.d" }, { "address": "M.r", "station": 3 })", kOwnStations));
}

TEST(HostChecks, WithOneStationForAllTheirsDoNotMatter)
{
    const project::Project project =
        planProject(R"({ "address": "M.w" }, { "address": "M.a[0]" })");
    std::vector<PolledElement> polled = polledElements(project);
    polled[0].station = 9;
    EXPECT_EQ("", refusalOfPolling(project, polled).toStdString());
}

} // namespace tavmir::host
