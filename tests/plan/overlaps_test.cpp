// Which values share bits.
#include "plan/overlaps.h"

#include "plan_project.h"
#include "project/address_expansion.h"
#include "project/raw_address.h"

namespace tavmir::host
{

namespace
{

std::vector<std::string> inWords(const std::vector<Overlap>& overlaps)
{
    std::vector<std::string> texts;
    for (const Overlap& overlap : overlaps) {
        texts.push_back(QString("%1 %2 %3 %4")
                            .arg(overlap.first.addressText, overlap.second.addressText)
                            .arg(overlap.from)
                            .arg(overlap.to)
                            .toStdString());
    }
    return texts;
}

std::vector<std::string> names(const std::vector<project::Element>& elements)
{
    std::vector<std::string> texts;
    for (const project::Element& element : elements) {
        texts.push_back(element.addressText.toStdString());
    }
    return texts;
}

project::Project withVariables(const QByteArray& variables)
{
    return project::readGood(R"({ "labels": [ { "name": "M", "variables": [)" + variables +
                             "] } ] }");
}

} // namespace

TEST(Overlaps, AreTheBitsThatTwoValuesHold)
{
    const project::Project project = withVariables(
        R"({ "name": "w", "type": "word", "address": 96 }, { "name": "b", "type": "bit", "address": 111 },
           { "name": "next", "type": "bit", "address": 112 },
           { "name": "d", "type": "dword", "address": 200 }, { "name": "half", "type": "word", "address": 224 },
           { "name": "t", "type": "text", "address": 320, "words": 3 },
           { "name": "in", "type": "word", "address": 336 }, { "name": "last", "type": "bit", "address": 367 },
           { "name": "free", "type": "bit", "address": 368 })");
    EXPECT_EQ((std::vector<std::string>{"M.w M.b 111 111", "M.d M.half 224 231", "M.t M.in 336 351",
                                        "M.t M.last 367 367"}),
              inWords(findOverlaps(project::leafElements(project))));
}

TEST(Overlaps, RowsOfAnArrayMeet)
{
    const project::Project project = withVariables(
        R"({ "name": "g", "type": "word", "address": 1600, "array": { "bounds": [[0, 1], [0, 2]] } })");
    EXPECT_EQ((std::vector<std::string>{"M.g[0,2] M.g[1,0] 1632 1647"}),
              inWords(findOverlaps(project::leafElements(project))));
}

TEST(Overlaps, NothingSharesNothing)
{
    EXPECT_TRUE(findOverlaps(std::vector<project::Element>()).empty());
    const project::Project project = withVariables(
        R"({ "name": "a", "type": "word", "address": 4294967264 },
           { "name": "b", "type": "word", "address": 4294967280 })");
    EXPECT_TRUE(findOverlaps(project::leafElements(project)).empty()) << "up to the last bit";
}

TEST(Overlaps, OfOneElement)
{
    const project::Project project = withVariables(
        R"({ "name": "a", "type": "word", "address": 160, "bits": true },
           { "name": "same", "type": "word", "address": 160 },
           { "name": "alone", "type": "word", "address": 320, "bits": true },
           { "name": "g", "type": "word", "address": 1600,
             "array": { "radix": 16, "bounds": [[0, 1], [10, 13]] } },
           { "name": "bit", "type": "bit", "address": 175 })");
    const auto all = project::leafElements(project);
    const auto of = [&](const char* address) {
        return names(sharingBits(elementOf(project, address), all));
    };
    EXPECT_EQ((std::vector<std::string>{"M.bit", "M.same"}), of("M.a"));
    EXPECT_EQ((std::vector<std::string>{"M.g[1,a]"}), of("M.g[0,0D]"));
    EXPECT_EQ((std::vector<std::string>{"M.g[0,d]"}), of("M.g[01,00A]"));
    EXPECT_EQ((std::vector<std::string>{"M.a", "M.same"}), of("M.bit"));
    EXPECT_EQ((std::vector<std::string>{}), of("M.alone"));
    EXPECT_EQ((std::vector<std::string>{}), of("M.alone.b[3]")) << "its own word";
    EXPECT_EQ((std::vector<std::string>{"M.alone"}),
              names(sharingBits(project::rawElement(project::DataType::word, 320), all)));
    EXPECT_EQ((std::vector<std::string>{"M.a", "M.same", "M.bit"}),
              names(sharingBits(project::rawElement(project::DataType::dword, 168), all)));
}

TEST(Overlaps, OfPolledVariablesAreThoseOfEachStationWithoutBitsOfWords)
{
    const project::Project project = withVariables(
        R"({ "name": "t", "type": "text", "address": 320, "words": 3 },
           { "name": "in", "type": "word", "address": 336, "bits": true })");
    const auto polled = [&](const char* address, int station) {
        PolledElement one;
        one.element = elementOf(project, address);
        one.station = station;
        return one;
    };
    EXPECT_EQ((std::vector<std::string>{"M.t M.in 336 351"}),
              inWords(findOverlaps(std::vector<PolledElement>{polled("M.in", 1), polled("M.t", 1),
                                                              polled("M.in.b[3]", 1)})));
    EXPECT_TRUE(
        findOverlaps(std::vector<PolledElement>{polled("M.in", 1), polled("M.t", 2)}).empty());
    EXPECT_TRUE(findOverlaps(std::vector<PolledElement>{polled("M.in", 1), polled("M.in.b[3]", 1)})
                    .empty());
}

} // namespace tavmir::host
