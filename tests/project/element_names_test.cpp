// Names and values of what frames carry.
#include "project/element_names.h"

#include "test_project.h"

namespace tavmir::project
{

namespace
{

Element elementAt(quint32 address, DataType type, const char* name, int words = 0)
{
    Element element;
    element.addressText = name;
    element.address = address;
    element.type = type;
    element.words = words;
    return element;
}

ElementNames someNames()
{
    ElementNames names;
    names.add(elementAt(6000, DataType::text, "Main.Title", 8), Format::automatic);
    names.add(elementAt(100, DataType::bit, "Main.Run"), Format::automatic);
    names.add(elementAt(3000, DataType::word, "Main.W"), Format::automatic);
    names.add(elementAt(3000, DataType::dword, "Main.Wide"), Format::automatic);
    names.add(elementAt(3008, DataType::bit, "Main.Inside"), Format::automatic);
    names.sort();
    return names;
}

std::string nameOf(const ElementNames& names, std::uint32_t address, int bits)
{
    return names.nameOf(address, bits).toStdString();
}

// "name=value" of the first element, and how many it speaks of.
std::string described(const ElementNames& names, const std::vector<wire::ElementInFrame>& elements)
{
    const wire::ElementsInWords words = names.describe(elements.data(), elements.size());
    return words.name + "=" + words.value + " (" + std::to_string(words.elements) + ")";
}

std::string described(const ElementNames& names, const wire::ElementInFrame& element)
{
    return described(names, std::vector<wire::ElementInFrame>{element});
}

const char kFormats[] = R"({
  "types": [ { "name": "Axis", "size": 64, "members": [
    { "name": "Pos", "type": "dword", "offset": 0 }, { "name": "Home", "type": "bit", "offset": 40 } ] } ],
  "labels": [ { "name": "Main", "variables": [
    { "name": "Below", "type": "word", "address": 3000 },
    { "name": "Flags", "type": "word", "address": 3016 },
    { "name": "Plain", "type": "word", "address": 3032 },
    { "name": "Row", "type": "dword", "address": 4000, "array": { "bounds": [[0, 3]] } },
    { "name": "Axis", "type": "Axis", "address": 1000, "array": { "bounds": [[0, 3]] } },
    { "name": "Temp", "type": "real", "address": 5000 },
    { "name": "Title", "type": "text", "address": 6000, "words": 3 },
    { "name": "Short", "type": "text", "address": 6500, "words": 2 } ] } ],
  "polled": [ { "address": "Main.Below", "format": "signed" },
              { "address": "Main.Flags", "format": "hex" },
              { "address": "Main.Row[1]", "count": 2, "format": "float" },
              { "address": "Main.Axis", "format": "signed" } ] })";

} // namespace

TEST(ElementNames, FindsByAddressAndWidth)
{
    const ElementNames names = someNames();
    EXPECT_EQ("Main.Run", nameOf(names, 100, 1));
    EXPECT_EQ("Main.W", nameOf(names, 3000, 16));
    EXPECT_EQ("Main.Wide", nameOf(names, 3000, 32));
}

TEST(ElementNames, GivesTheDistanceIntoAVariableThatReachesOver)
{
    const ElementNames names = someNames();
    EXPECT_EQ("Main.Title+0", nameOf(names, 6000, 16));
    EXPECT_EQ("Main.Title+16", nameOf(names, 6016, 16));
    EXPECT_EQ("Main.Title+112", nameOf(names, 6112, 16));
    EXPECT_EQ("Main.W+5", nameOf(names, 3005, 1));
    EXPECT_EQ("Main.Wide+16", nameOf(names, 3016, 16));
}

TEST(ElementNames, GivesTheAddressWhenNothingIsThere)
{
    const ElementNames names = someNames();
    EXPECT_EQ("5", nameOf(names, 5, 16));
    EXPECT_EQ("100", nameOf(names, 100, 16));
    EXPECT_EQ("6128", nameOf(names, 6128, 16));
    EXPECT_EQ("4294967295", nameOf(names, 4294967295u, 32));
    EXPECT_EQ("7", nameOf(ElementNames(), 7, 1));
}

TEST(ElementNames, ShowValuesAsTheProjectDoes)
{
    const ElementNames names(readGood(kFormats));
    EXPECT_EQ("Main.Below=-2 (1)", described(names, {3000, 16, 0xFFFE}));
    EXPECT_EQ("Main.Flags=0x00FF (1)", described(names, {3016, 16, 255}));
    EXPECT_EQ("Main.Plain=65534 (1)", described(names, {3032, 16, 0xFFFE}));
    EXPECT_EQ("Main.Temp=2.5 (1)", described(names, {5000, 32, 0x40200000}));
    EXPECT_EQ("Main.Row[0]=1075838976 (1)", described(names, {4000, 32, 0x40200000}));
    EXPECT_EQ("Main.Row[1]=2.5 (1)", described(names, {4032, 32, 0x40200000}));
    EXPECT_EQ("Main.Row[2]=2.5 (1)", described(names, {4064, 32, 0x40200000}));
    EXPECT_EQ("Main.Axis[1].Pos=-1 (1)", described(names, {1064, 32, 0xFFFFFFFF}));
    EXPECT_EQ("Main.Axis[1].Home=1 (1)", described(names, {1104, 1, 1}))
        << "the format is for those that it fits";
    EXPECT_EQ("77=5 (1)", described(names, {77, 16, 5}));
}

TEST(ElementNames, PartsOfVariablesAreNumbers)
{
    const ElementNames names(readGood(kFormats));
    EXPECT_EQ("Main.Temp+16=16416 (1)", described(names, {5016, 16, 0x4020}));
    EXPECT_EQ("Main.Short+0=25185 (1)", described(names, {6500, 1, 25185}));
    EXPECT_EQ("Main.Short=1684234849 (1)", described(names, {6500, 32, 0x64636261}))
        << "only words make a text";
}

TEST(ElementNames, TheWordsOfATextAreOne)
{
    const ElementNames names(readGood(kFormats));
    EXPECT_EQ("Main.Title=\"Hello\" (3)",
              described(names, {{6000, 16, 0x6548}, {6016, 16, 0x6C6C}, {6032, 16, 0x006F}}));
    EXPECT_EQ("Main.Title+0=\"Hell\" (2)",
              described(names, {{6000, 16, 0x6548}, {6016, 16, 0x6C6C}, {77, 16, 1}}));
    EXPECT_EQ("Main.Title+16=\"llo\" (2)",
              described(names, {{6016, 16, 0x6C6C}, {6032, 16, 0x006F}, {6048, 16, 0x4141}}))
        << "and no word behind it";
    EXPECT_EQ("Main.Title+0=\"He\" (1)", described(names, {{6000, 16, 0x6548}, {6032, 16, 0x006F}}))
        << "nor one that does not follow";
}

TEST(ElementNames, TextsCannotBreakALine)
{
    const ElementNames names(readGood(kFormats));
    EXPECT_EQ("Main.Short=\"\\x0a\\\"\\\\\\x1b\" (2)",
              described(names, {{6500, 16, 0x220A}, {6516, 16, 0x1B5C}}));
}

} // namespace tavmir::project
