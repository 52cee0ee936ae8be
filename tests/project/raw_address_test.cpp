// Addresses without a variable: what they are, and what is wrong with those that are none.
#include "project/raw_address.h"

#include "test_project.h"

namespace tavmir::project
{

namespace
{

std::string refused(const QString& text)
{
    const Expansion expansion = rawElements(text);
    EXPECT_FALSE(expansion.ok) << text.toStdString();
    EXPECT_TRUE(expansion.elements.empty());
    return expansion.problem.toStdString();
}

Element one(const QString& text)
{
    const Expansion expansion = rawElements(text);
    EXPECT_TRUE(expansion.ok) << expansion.problem.toStdString();
    EXPECT_EQ(1u, expansion.elements.size());
    return expansion.ok ? expansion.elements.front() : Element();
}

} // namespace

TEST(RawAddress, IsAClassAndABitAddress)
{
    EXPECT_EQ(DataType::bit, one("@bit:17").type);
    EXPECT_EQ(17u, one("@bit:17").address);
    EXPECT_EQ(DataType::word, one("@word:3016").type);
    EXPECT_EQ(3016u, one("@word:3016").address);
    EXPECT_EQ(DataType::dword, one("@dword:4000").type);
    EXPECT_TRUE(one("@dword:4000").isRaw);
    EXPECT_EQ("@dword:4000", shownAddress(one("@dword:4000")).toStdString());
    EXPECT_EQ("@word:16", shownAddress(one("@word:0016")).toStdString());
}

TEST(RawAddress, HasATextOfTheDriversGrammar)
{
    EXPECT_EQ("~.word0[3016].v", one("@word:3016").addressText.toStdString());
    EXPECT_EQ("~.bit0[2147483647].v", one("@bit:2147483647").addressText.toStdString());
    EXPECT_EQ("~.bit1[0].v", one("@bit:2147483648").addressText.toStdString());
    EXPECT_EQ("~.dword1[2147483616].v", one("@dword:4294967264").addressText.toStdString());
    const std::vector<RawVariable> variables = rawVariables();
    ASSERT_EQ(6u, variables.size());
    EXPECT_EQ("word1", variables[3].name.toStdString());
    EXPECT_EQ(DataType::word, variables[3].type);
    EXPECT_EQ(2147483648u, variables[3].offset);
    EXPECT_EQ(0u, variables[2].offset);
}

TEST(RawAddress, MayCountItsNeighbours)
{
    const Expansion words = rawElements("@word:3016:3");
    ASSERT_EQ(3u, words.elements.size());
    EXPECT_EQ(3016u, words.elements[0].address);
    EXPECT_EQ(3048u, words.elements[2].address);
    EXPECT_EQ(32u, rawElements("@dword:0:2").elements[1].address);
    EXPECT_EQ(1u, rawElements("@bit:0:4096").elements[1].address);
    EXPECT_EQ("\"0\" is no count: 1 to 4096", refused("@word:0:0"));
    EXPECT_EQ("\"4097\" is no count: 1 to 4096", refused("@word:0:4097"));
    EXPECT_EQ("\"\" is no count: 1 to 4096", refused("@word:0:"));
    EXPECT_EQ("2 of them end beyond the last address 4294967295", refused("@word:4294967280:2"));
    EXPECT_TRUE(rawElements("@word:4294967264:2").ok);
}

TEST(RawAddress, SaysWhatIsAllowed)
{
    EXPECT_EQ("no class \"real\": bit, word or dword", refused("@real:16"));
    EXPECT_EQ("no class \"\": bit, word or dword", refused("@:16"));
    for (const char* text : {"@", "@word", "@word:1:2:3", "@word.16"}) {
        EXPECT_EQ("without a variable an address is @bit:, @word: or @dword:, the bit address, "
                  "and where there are more : and how many, as in @word:3016:4",
                  refused(text));
    }
    EXPECT_EQ("\"\" is no bit address of a word: 0 to 4294967280", refused("@word:"));
    EXPECT_EQ("\"-16\" is no bit address of a word: 0 to 4294967280", refused("@word:-16"));
    EXPECT_EQ("\"0x10\" is no bit address of a word: 0 to 4294967280", refused("@word:0x10"));
    EXPECT_EQ("\" 16\" is no bit address of a word: 0 to 4294967280", refused("@word: 16"));
    EXPECT_EQ("\"4294967296\" is no bit address of a bit: 0 to 4294967295",
              refused("@bit:4294967296"));
    EXPECT_EQ("\"4294967288\" is no bit address of a dword: 0 to 4294967264",
              refused("@dword:4294967288"));
    EXPECT_EQ("\"99999999999999999999\" is no bit address of a bit: 0 to 4294967295",
              refused("@bit:99999999999999999999"));
    EXPECT_EQ("a word begins at a multiple of 8, such as 3016, not at 3017", refused("@word:3017"));
    EXPECT_EQ("a dword begins at a multiple of 8, such as 4000, not at 4007",
              refused("@dword:4007"));
    EXPECT_TRUE(rawElements("@word:4294967280").ok);
    EXPECT_TRUE(rawElements("@bit:4294967295").ok);
}

TEST(RawAddress, StandsBesideTheProjectsAddresses)
{
    const Project project = plant();
    EXPECT_TRUE(isRawAddress("@word:16"));
    EXPECT_FALSE(isRawAddress("Main.W"));
    EXPECT_EQ(1u, expandNamed(project, "@word:16").elements.size());
    EXPECT_EQ("Main.W", shownAddress(expandNamed(project, "Main.W").elements.at(0)).toStdString());
    EXPECT_EQ(4u, expandNamed(project, "Main.Axis[0]").elements.size());
    EXPECT_EQ("@bit:3", shownAddress(resolveNamed(project, "@bit:3").element).toStdString());
    EXPECT_EQ("stands for 2 elements", resolveNamed(project, "@bit:3:2").problem.toStdString());
    EXPECT_FALSE(resolveNamed(project, "@bit:x").problem.isEmpty());
    EXPECT_TRUE(resolveNamed(project, "Main.W").ok);
    EXPECT_FALSE(resolveAddress(project, "@word:16").ok) << "the project file names variables";
    EXPECT_FALSE(resolveAddress(project, "~.word0[16].v").ok);
}

} // namespace tavmir::project
