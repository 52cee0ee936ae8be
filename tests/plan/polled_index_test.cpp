// Stations and formats belong to the element on the wire, however its address is spelt.
#include "plan/polled_index.h"

#include "plan_project.h"
#include "project/raw_address.h"

namespace tavmir::host
{

namespace
{

using project::Format;

class Index : public testing::Test
{
protected:
    void open(const QByteArray& polled, const QByteArray& connection = kOwnStations)
    {
        project_ = planProject(polled, connection);
        index_ = std::make_unique<PolledIndex>(project_);
    }
    int stationOf(const QString& address) const
    {
        return index_->stationOf(elementOf(project_, address));
    }
    Format formatOf(const QString& address) const
    {
        return index_->formatOf(elementOf(project_, address));
    }
    PolledElement entry(const QString& address, int station, Format format)
    {
        PolledElement polled;
        polled.element = elementOf(project_, address);
        polled.station = station;
        polled.format = format;
        return polled;
    }

    project::Project project_;
    std::unique_ptr<PolledIndex> index_;
};

} // namespace

TEST_F(Index, AnElementIsReachedAtTheStationThatPollsIt)
{
    open(
        R"({ "address": "M.w", "station": 2 }, { "address": "M.a[3]", "count": 2, "station": 3 })");
    EXPECT_EQ(2, stationOf("M.w"));
    EXPECT_EQ(2, stationOf("M.w.b[4]")) << "a bit of it";
    EXPECT_EQ(3, stationOf("M.a[3]"));
    EXPECT_EQ(3, stationOf("M.a[03]")) << "spelt otherwise";
    EXPECT_EQ(3, stationOf("M.a[4]"));
    EXPECT_EQ(4, stationOf("M.a[5]")) << "not polled: the project's";
    EXPECT_EQ(4, stationOf("M.a[2]"));
    EXPECT_EQ(4, stationOf("M.d")) << "the same address in another class";
}

TEST_F(Index, ABitThatIsPolledSaysWhereItsWordIs)
{
    open(R"({ "address": "M.w.b[3]", "station": 2 })");
    EXPECT_EQ(2, stationOf("M.w"));
    EXPECT_EQ(2, stationOf("M.w.b[9]"));
}

TEST_F(Index, EveryWordOfATextIsAtItsStation)
{
    open(R"({ "address": "M.text", "station": 2 })");
    EXPECT_EQ(2, stationOf("M.text"));
    EXPECT_EQ(2, stationOf("M.inText"));
}

TEST_F(Index, ATextIsWhereItsFirstWordIs)
{
    open(R"({ "address": "M.inText", "station": 2 })");
    EXPECT_EQ(2, stationOf("M.inText"));
    EXPECT_EQ(4, stationOf("M.text"));
}

TEST_F(Index, OfTwoSpellingsInTheProjectTheLastDecidesAsInTheDriver)
{
    open(R"({ "address": "M.a[3]", "station": 2, "format": "hex" },
            { "address": "M.a[03]", "station": 3, "format": "signed" })");
    EXPECT_EQ(3, stationOf("M.a[3]"));
    EXPECT_EQ(3, stationOf("M.a[03]"));
    EXPECT_EQ(Format::signedNumber, formatOf("M.a[3]"));
}

TEST_F(Index, FurtherEntriesDecide)
{
    open(R"({ "address": "M.w", "station": 2, "format": "hex" })");
    index_->add({entry("M.w", 5, Format::signedNumber), entry("M.a[1]", 6, Format::hex),
                 entry("M.a[1]", 7, Format::signedNumber)});
    EXPECT_EQ(5, stationOf("M.w"));
    EXPECT_EQ(Format::signedNumber, formatOf("M.w"));
    EXPECT_EQ(7, stationOf("M.a[1]"));
    EXPECT_EQ(Format::signedNumber, formatOf("M.a[1]"));
}

TEST_F(Index, WithoutAVariableAnElementIsAtTheProjectsStationAndMeantAsPolled)
{
    open(R"({ "address": "M.w", "station": 2, "format": "hex" })");
    const project::Element word = project::rawElement(project::DataType::word, 3200);
    EXPECT_EQ(4, index_->stationOf(word));
    EXPECT_EQ(Format::hex, index_->formatOf(word));
    EXPECT_EQ(Format::unsignedNumber,
              index_->formatOf(project::rawElement(project::DataType::word, 3216)));
}

TEST_F(Index, WithOneStationForAllEverythingIsThere)
{
    open(R"({ "address": "M.w" })", R"("station": 4)");
    EXPECT_EQ(4, stationOf("M.w"));
    index_->add({entry("M.w", 9, Format::hex)});
    EXPECT_EQ(4, stationOf("M.w"));
}

TEST_F(Index, FormatsAreThoseOfThePolledEntry)
{
    open(R"({ "address": "M.w", "format": "hex" }, { "address": "M.a[3]", "format": "signed" })");
    EXPECT_EQ(Format::hex, formatOf("M.w"));
    EXPECT_EQ(Format::signedNumber, formatOf("M.a[003]"));
    EXPECT_EQ(Format::bit, formatOf("M.w.b[1]")) << "its bits are bits all the same";
    EXPECT_EQ(project::effectiveFormat(elementOf(project_, "M.a[4]"), Format::automatic),
              formatOf("M.a[4]"));
    EXPECT_EQ(project::effectiveFormat(elementOf(project_, "M.d"), Format::automatic),
              formatOf("M.d"))
        << "the same address in another class";
    EXPECT_EQ(Format::text, formatOf("M.text"));
    EXPECT_EQ(Format::floating, formatOf("M.r"));
}

TEST_F(Index, AFormatOfABitIsNotThatOfItsWord)
{
    open(R"({ "address": "M.w.b[3]", "format": "bit" })");
    EXPECT_EQ(project::effectiveFormat(elementOf(project_, "M.w"), Format::automatic),
              formatOf("M.w"));
    EXPECT_EQ(Format::bit, formatOf("M.w.b[3]"));
}

TEST_F(Index, ABitThatIsPolledFirstDoesNotDecideItsWordsFormat)
{
    open(R"({ "address": "M.w.b[3]" }, { "address": "M.w", "format": "hex" })");
    EXPECT_EQ(Format::hex, formatOf("M.w"));
    EXPECT_EQ(Format::bit, formatOf("M.w.b[3]"));
}

TEST_F(Index, FormatsOfArraysStructuresAndCountsAreThoseOfTheirElements)
{
    project_ = project::readGood(R"({
      "types": [ { "name": "S", "size": 96, "members": [
        { "name": "d", "type": "dword", "offset": 0 }, { "name": "w", "type": "word", "offset": 32 },
        { "name": "r", "type": "real", "offset": 64 } ] } ],
      "labels": [ { "name": "M", "variables": [
        { "name": "f", "type": "dword", "address": 3200, "array": { "bounds": [[0, 9]] } },
        { "name": "g", "type": "dword", "address": 6400, "array": { "bounds": [[0, 9]] } },
        { "name": "second", "type": "dword", "address": 3264 },
        { "name": "s", "type": "S", "address": 9600, "array": { "bounds": [[1, 3]] } } ] } ],
      "polled": [ { "address": "M.f", "format": "float" }, { "address": "M.s", "format": "signed" },
                  { "address": "M.g[2]", "count": 3, "format": "float" } ] })");
    index_ = std::make_unique<PolledIndex>(project_);
    EXPECT_EQ(Format::floating, formatOf("M.f[1]"));
    EXPECT_EQ(Format::floating, formatOf("M.f[09]"));
    EXPECT_EQ(Format::floating, formatOf("M.second")) << "another name of M.f[2]";
    EXPECT_EQ(Format::signedNumber, formatOf("M.s[2].d"));
    EXPECT_EQ(Format::signedNumber, formatOf("M.s[2].w"));
    EXPECT_EQ(Format::floating, formatOf("M.s[2].r")) << "a real is a float";
    EXPECT_EQ(Format::unsignedNumber, formatOf("M.g[1]"));
    EXPECT_EQ(Format::floating, formatOf("M.g[2]"));
    EXPECT_EQ(Format::floating, formatOf("M.g[4]"));
    EXPECT_EQ(Format::unsignedNumber, formatOf("M.g[5]"));
}

TEST_F(Index, WhatIsPolledDecidesBeforeWhatIsDeclared)
{
    project_ = project::readGood(R"({ "labels": [ { "name": "M", "variables": [
        { "name": "plain", "type": "word", "address": 160 },
        { "name": "same", "type": "word", "address": 160, "format": "hex" },
        { "name": "given", "type": "word", "address": 320, "format": "hex" },
        { "name": "real", "type": "real", "address": 640 },
        { "name": "asDword", "type": "dword", "address": 640 },
        { "name": "asSigned", "type": "dword", "address": 640, "format": "signed" },
        { "name": "twice", "type": "word", "address": 800 },
        { "name": "alone", "type": "word", "address": 960, "format": "signed" } ] } ],
      "polled": [ { "address": "M.plain" }, { "address": "M.given", "format": "unsigned" },
                  { "address": "M.real" }, { "address": "M.twice", "format": "signed" },
                  { "address": "M.twice", "name": "again" } ] })");
    index_ = std::make_unique<PolledIndex>(project_);
    EXPECT_EQ(Format::unsignedNumber, formatOf("M.plain"));
    EXPECT_EQ(Format::hex, formatOf("M.same")) << "polled, but not with a format";
    EXPECT_EQ(Format::unsignedNumber, formatOf("M.given"));
    EXPECT_EQ(Format::floating, formatOf("M.asDword")) << "where a real is polled";
    EXPECT_EQ(Format::signedNumber, formatOf("M.asSigned"));
    EXPECT_EQ(Format::floating, formatOf("M.real"));
    EXPECT_EQ(Format::signedNumber, formatOf("M.twice")) << "the one that says a format";
    EXPECT_EQ(Format::signedNumber, formatOf("M.alone")) << "not polled";
}

TEST_F(Index, ARealStaysOneWhereADoubleWordIsPolled)
{
    project_ = project::readGood(R"({ "labels": [ { "name": "M", "variables": [
        { "name": "real", "type": "real", "address": 640 },
        { "name": "dword", "type": "dword", "address": 640 } ] } ],
      "polled": [ { "address": "M.real" }, { "address": "M.dword", "format": "hex" } ] })");
    index_ = std::make_unique<PolledIndex>(project_);
    EXPECT_EQ(Format::floating, formatOf("M.real"));
    EXPECT_EQ(Format::hex, formatOf("M.dword"));
}

TEST_F(Index, AFormatThatDoesNotFitIsPassedOver)
{
    open("");
    index_->add({entry("M.text", 1, Format::hex)});
    EXPECT_EQ(Format::text, formatOf("M.text"));
}

} // namespace tavmir::host
