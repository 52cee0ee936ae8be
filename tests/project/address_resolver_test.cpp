// Address texts to data type, bit address and bit.
#include "project/address_resolver.h"

#include "test_project.h"

namespace tavmir::project
{

namespace
{

class Resolver : public testing::Test
{
protected:
    Resolution resolve(const char* address) const { return resolveAddress(project_, address); }

    Element good(const char* address) const
    {
        const Resolution resolution = resolve(address);
        EXPECT_TRUE(resolution.ok) << address << ": " << resolution.problem.toStdString();
        EXPECT_EQ(0, resolution.driverCode) << address;
        return resolution.element;
    }

    void expectRefused(const char* address, int driverCode, const char* problem) const
    {
        const Resolution resolution = resolve(address);
        EXPECT_FALSE(resolution.ok) << address;
        EXPECT_EQ(driverCode, resolution.driverCode) << address;
        EXPECT_EQ(problem, resolution.problem.toStdString()) << address;
    }

    const Project project_ = plant();
};

} // namespace

TEST_F(Resolver, PlainVariablesLieAtTheirAddress)
{
    const Element run = good("Main.Run");
    EXPECT_EQ(DataType::bit, run.type);
    EXPECT_EQ(100u, run.address);
    EXPECT_FALSE(run.isArrayElement);
    EXPECT_EQ("Main.Run", run.addressText.toStdString());
    EXPECT_EQ(DataType::real, good("Main.Temp").type);
    EXPECT_EQ(8, good("Main.Title").words);
    EXPECT_EQ(0, good("Main.Temp").words);
}

TEST_F(Resolver, BitSuffixNamesOneBitOfAWord)
{
    const Element bit = good("Main.W.b[5]");
    EXPECT_EQ(DataType::word, bit.type);
    EXPECT_EQ(3000u, bit.address);
    EXPECT_EQ(5, bit.bitNumber.value());
    EXPECT_TRUE(bit.isBit());
    EXPECT_EQ(31, good("Main.D.x[31]").bitNumber.value());
    EXPECT_FALSE(good("Main.W").bitNumber.has_value());
}

TEST_F(Resolver, DimensionSizeIsHighMinusLow)
{
    const Element element = good("Main.M[2,3]");
    EXPECT_EQ(2112u, element.address); // index 1 * 4 + 3
    EXPECT_TRUE(element.isArrayElement);
    EXPECT_EQ(4, element.elementLimit);
    EXPECT_EQ(good("Main.M[1,4]").address, good("Main.M[2,0]").address);
}

TEST_F(Resolver, IndexIsWrittenInTheArraysRadix)
{
    EXPECT_EQ(700u + 0x1F, good("Main.Hex[1F]").address);
    EXPECT_EQ(7000u + 256u, good("Main.Names[0]").address);
    EXPECT_EQ(7000u, good("Main.Names[-1]").address);
}

TEST_F(Resolver, MembersLieBehindTheirStructure)
{
    EXPECT_EQ(1096u, good("Main.Axis[1].Pos").address);
    EXPECT_EQ(1224u, good("Main.Axis[2].Vel").address);
    EXPECT_EQ(1000u + 96 + 64 + 16, good("Main.Axis[1].Limits[1]").address);
    EXPECT_EQ(8000u + 16 + 32, good("Main.Cell.Axis.Vel").address);
    EXPECT_FALSE(good("Main.Axis[1].Pos").isArrayElement);
}

TEST_F(Resolver, IndexOfTheLabelIsIgnored)
{
    EXPECT_EQ(100u, good("Main[7].Run").address);
}

TEST_F(Resolver, RefusalsOfTheDriverHaveItsCode)
{
    expectRefused("", 6, "the address is empty");
    expectRefused("Main", 11, "an address is a label, a dot and a variable");
    expectRefused("Other.Run", 2, "there is no label Other");
    expectRefused("main.Run", 2, "there is no label main");
    expectRefused("Main.Nope", 1, "label Main has no variable Nope");
    expectRefused("Main..Run", 1, "label Main has no variable ");
    expectRefused("Main.Run[1]", 1, "Main.Run is no array and takes no index");
    expectRefused("Main.M[2]", 1, "Main.M takes 2 indices, not 1");
    expectRefused("Main.M", 1, "Main.M is an array and needs an index");
    expectRefused("Main.Axis.Pos", 3, "Main.Axis is an array and needs an index");
    expectRefused("Main.M[0,0]", 3, "index 0 of Main.M is outside 1..3");
    expectRefused("Main.M[x,0]", 3, "index x is no number in base 10");
    expectRefused("Main.Hex[-1]", 3, "index -1 of Main.Hex is outside 0..28");
}

TEST_F(Resolver, RefusesWhatTheDriverWouldAccept)
{
    expectRefused("Main.M[9,9]", 0, "index 9 of Main.M is outside 1..3");
    expectRefused("Main.Axis[4].Pos", 0, "index 4 of Main.Axis is outside 0..3");
    expectRefused("Main.Axis[1].Foo", 0, "structure Axis has no member Foo");
    expectRefused("Main.Axis[1]", 0, "Main.Axis[1] is a whole structure");
    expectRefused("Main.Axis[1].Limits", 0, "Main.Axis[1].Limits is an array and needs an index");
    expectRefused("Main.Axis[1].Pos[2]", 0, "Main.Axis[1].Pos is no array and takes no index");
    expectRefused("Main.W.b[16]", 0, "bit 16 of Main.W is outside 0..15");
    expectRefused("Main.D.b[32]", 0, "bit 32 of Main.D is outside 0..31");
    expectRefused("Main.W.[5]", 0, "a bit of Main.W is written Main.W.b[number]");
    expectRefused("Main.W.b[x]", 0, "a bit of Main.W is written Main.W.b[number]");
    expectRefused("Main.W.b[5].c", 0, "a bit of Main.W is written Main.W.b[number]");
    expectRefused("Main.Plain.b[5]", 0, "Main.Plain has no bits or members");
    expectRefused("Main.Run.more", 0, "Main.Run has no bits or members");
}

TEST_F(Resolver, StrangeBracketsAreNoCrash)
{
    for (const char* text : {"Main.M[", "Main.M]", "Main.M][", "[].[]", "Main.Run][", "Main.[", ".",
                             "...", "Main.W.b]5[", "Main.M[2,3", "Main.M[2,3]]", "Main.W.b[]"}) {
        EXPECT_FALSE(resolve(text).ok) << text;
    }
}

TEST_F(Resolver, SizesOfElements)
{
    EXPECT_EQ(1, wireElementBits(good("Main.Run")));
    EXPECT_EQ(16, wireElementBits(good("Main.Title")));
    EXPECT_EQ(32, wireElementBits(good("Main.Temp")));
    EXPECT_EQ(8, wireElementCount(good("Main.Title")));
    EXPECT_EQ(1, wireElementCount(good("Main.D")));
    EXPECT_EQ(128, memoryBits(good("Main.Title")));
    EXPECT_EQ(1, memoryBits(good("Main.W.b[3]")));
    EXPECT_EQ(1, driverCount(good("Main.Run")));
    EXPECT_EQ(1, driverCount(good("Main.W")));
    EXPECT_EQ(1, driverCount(good("Main.D.b[3]")));
    EXPECT_EQ(2, driverCount(good("Main.D")));
    EXPECT_EQ(2, driverCount(good("Main.Temp")));
    EXPECT_EQ(8, driverCount(good("Main.Title")));
}

TEST(DriverCodes, EachHasWords)
{
    EXPECT_EQ("resolved", driverCodeInWords(0).toStdString());
    EXPECT_EQ("no such label", driverCodeInWords(2).toStdString());
    for (const int code : {1, 3, 6, 7, 10, 11, 12}) {
        EXPECT_FALSE(driverCodeInWords(code).startsWith("result")) << code;
    }
    EXPECT_EQ("result 99", driverCodeInWords(99).toStdString());
}

} // namespace tavmir::project
