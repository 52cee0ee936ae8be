// The names of elements for other programs: one line each, whatever variables share the element.
#include "plan/wire_names.h"

#include "plan_project.h"

namespace tavmir::host
{

namespace
{

QStringList namesOf(const project::Project& project)
{
    return wireNames(project, PolledIndex(project));
}

QStringList namesOf(const QByteArray& variables)
{
    return namesOf(project::readGood(R"({ "labels": [ { "name": "M", "variables": [)" + variables +
                                     "] } ], \"polled\": [] }"));
}

} // namespace

TEST(WireNames, EachElementHasItsClassAddressFormatAndName)
{
    EXPECT_EQ((QStringList{"bit\t7\t*\tbit\tM.b", "word\t3200\t*\thex\tM.w",
                           "dword\t64\t*\tsigned\tM.d", "dword\t96\t*\tfloat\tM.r"}),
              namesOf(R"(
        { "name": "w", "type": "word", "address": 3200, "format": "hex" },
        { "name": "r", "type": "real", "address": 96 },
        { "name": "d", "type": "dword", "address": 64, "format": "signed" },
        { "name": "b", "type": "bit", "address": 7 })"));
}

TEST(WireNames, EachElementOfAnArrayIsNamed)
{
    EXPECT_EQ((QStringList{"word\t160\t*\tunsigned\tM.a[1]", "word\t176\t*\tunsigned\tM.a[2]"}),
              namesOf(R"({ "name": "a", "type": "word", "address": 160,
                           "array": { "bounds": [[1, 2]] } })"));
}

TEST(WireNames, TheWordsOfATextHaveTheirDistance)
{
    EXPECT_EQ((QStringList{"word\t160\t*\tunsigned\tM.t", "word\t176\t*\tunsigned\tM.t+16"}),
              namesOf(R"({ "name": "t", "type": "text", "address": 160, "words": 2 })"));
}

TEST(WireNames, AVariableInATextNamesItsWordAndTheLastOfTwoWins)
{
    EXPECT_EQ((QStringList{"word\t160\t*\tunsigned\tM.t", "word\t176\t*\tunsigned\tM.second"}),
              namesOf(R"(
        { "name": "first", "type": "word", "address": 176 },
        { "name": "second", "type": "word", "address": 176 },
        { "name": "t", "type": "text", "address": 160, "words": 2 })"));
}

TEST(WireNames, AnAddressAboveTheSignedRangeIsWrittenAsItStandsInFrames)
{
    EXPECT_EQ((QStringList{"bit\t4294967295\t*\tbit\tM.b"}),
              namesOf(R"({ "name": "b", "type": "bit", "address": 4294967295 })"));
}

TEST(WireNames, ThePolledEntryThatCoversTheElementDecidesTheFormat)
{
    const QStringList names = namesOf(planProject(R"({ "address": "M.a", "format": "hex" })"));
    EXPECT_TRUE(names.contains("word\t16000\t*\thex\tM.a[0]")) << names.join('\n').toStdString();
}

} // namespace tavmir::host
