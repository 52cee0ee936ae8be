// Arrays and structures as their elements.
#include "project/address_expansion.h"

#include "test_project.h"

#include <gmock/gmock.h>

namespace tavmir::project
{

namespace
{

using testing::ElementsAre;

std::vector<std::string> texts(const Expansion& expansion)
{
    std::vector<std::string> list;
    for (const Element& element : expansion.elements) {
        list.push_back(element.addressText.toStdString());
    }
    return list;
}

class Expander : public testing::Test
{
protected:
    std::vector<std::string> expand(const char* address, int count = 1) const
    {
        const Expansion expansion = expandAddress(project_, address, count);
        EXPECT_TRUE(expansion.ok) << address << ": " << expansion.problem.toStdString();
        return texts(expansion);
    }

    std::string refused(const char* address, int count = 1) const
    {
        const Expansion expansion = expandAddress(project_, address, count);
        EXPECT_FALSE(expansion.ok) << address;
        return expansion.problem.toStdString();
    }

    const Project project_ = plant();
};

} // namespace

TEST_F(Expander, SingleElementKeepsItsText)
{
    EXPECT_THAT(expand("Main.Run"), ElementsAre("Main.Run"));
    EXPECT_THAT(expand("Main.W.b[5]"), ElementsAre("Main.W.b[5]"));
    EXPECT_THAT(expand("Main.Hex[1F]"), ElementsAre("Main.Hex[1F]"));
}

TEST_F(Expander, OpenArrayStandsForItsElements)
{
    EXPECT_THAT(expand("Main.Names"),
                ElementsAre("Main.Names[-1]", "Main.Names[0]", "Main.Names[1]"));
    EXPECT_THAT(expand("Main.M"), testing::SizeIs(15));
    EXPECT_EQ("Main.M[1,0]", expand("Main.M").front());
    EXPECT_EQ("Main.M[3,4]", expand("Main.M").back());
    EXPECT_EQ("Main.Hex[28]", expand("Main.Hex").back()); // 40 in base 16
}

TEST_F(Expander, StructureStandsForItsMembers)
{
    EXPECT_THAT(expand("Main.Axis[2]"),
                ElementsAre("Main.Axis[2].Pos", "Main.Axis[2].Vel", "Main.Axis[2].Limits[0]",
                            "Main.Axis[2].Limits[1]"));
    EXPECT_THAT(expand("Main.Axis"), testing::SizeIs(16));
    EXPECT_THAT(expand("Main.Cell"), testing::SizeIs(5));
}

TEST_F(Expander, EveryListedElementResolvesToItself)
{
    for (const Element& element : leafElements(project_)) {
        const Resolution again = resolveAddress(project_, element.addressText);
        ASSERT_TRUE(again.ok) << element.addressText.toStdString();
        EXPECT_EQ(element.address, again.element.address) << element.addressText.toStdString();
        EXPECT_EQ(element.type, again.element.type);
        EXPECT_EQ(element.words, again.element.words);
        EXPECT_EQ(element.elementLimit, again.element.elementLimit);
    }
}

TEST_F(Expander, AllLeavesAreListed)
{
    // 4 plain, M 15, Hex 41, Axis 16, Cell 5, Temp, Title, Names 3
    EXPECT_EQ(4u + 15 + 41 + 16 + 5 + 1 + 1 + 3, leafElements(project_).size());
}

TEST_F(Expander, CountTakesNeighboursAlongTheLastDimension)
{
    EXPECT_THAT(expand("Main.M[2,1]", 3), ElementsAre("Main.M[2,1]", "Main.M[2,2]", "Main.M[2,3]"));
    EXPECT_THAT(expand("Main.Axis[2]", 2), testing::SizeIs(8));
    EXPECT_EQ("5 elements from Main.M[2,1] on pass the high bound 4", refused("Main.M[2,1]", 5));
}

TEST_F(Expander, CountNeedsAnIndexedElement)
{
    const std::string problem = "a count belongs to an indexed element of an array";
    EXPECT_EQ(problem, refused("Main.Run", 2));
    EXPECT_EQ(problem, refused("Main.M", 2));
    EXPECT_EQ(problem, refused("Main.W.b[1]", 2));
    EXPECT_EQ(problem, refused("Main.Run", 0));
    EXPECT_EQ("label Main has no variable X", refused("Main.X", 2));
}

TEST_F(Expander, BadAddressesAreRefused)
{
    EXPECT_EQ("there is no label Foo", refused("Foo.Bar"));
    EXPECT_EQ("Main.Axis is an array and needs an index", refused("Main.Axis.Pos"));
}

} // namespace tavmir::project
