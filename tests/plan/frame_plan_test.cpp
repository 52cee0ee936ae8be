// Requests taken apart, and the plan of a pass in words.
#include "plan/frame_plan.h"

#include "plan_project.h"

namespace tavmir::host
{

namespace
{

std::vector<std::string> linesOf(const QStringList& lines)
{
    std::vector<std::string> texts;
    for (const QString& line : lines) {
        texts.push_back(line.toStdString());
    }
    return texts;
}

PlannedFrame frameOf(unsigned char function, int elements)
{
    PlannedFrame frame;
    frame.function = function;
    frame.elements.resize(static_cast<size_t>(elements));
    return frame;
}

} // namespace

TEST(FramePlan, ARequestIsTakenApart)
{
    Protocol request;
    request.frame = QByteArray("\x00\x07\x00\x00\x00\x0B\x05\x66\x02"
                               "\x00\x00\x0C\x80\xFF\xFF\xFF\xF0",
                               17) +
                    "behind it";
    request.frameLength = 17;
    request.replyLength = 21;
    const PlannedFrame frame = plannedFrame(request);
    EXPECT_EQ(5, frame.station);
    EXPECT_EQ('f', frame.function);
    EXPECT_EQ(17, frame.requestBytes);
    EXPECT_EQ(21, frame.replyBytes);
    EXPECT_EQ(
        (std::vector<WireElement>{{ElementClass::words, 3200, 5}, {ElementClass::words, -16, 5}}),
        frame.elements);
    EXPECT_EQ(BatchEnd::endOfList, frame.end);
}

TEST(FramePlan, ClassesComeFromTheFunction)
{
    for (const auto& [function, elements] :
         std::vector<std::pair<char, ElementClass>>{{'d', ElementClass::bits},
                                                    {'f', ElementClass::words},
                                                    {'l', ElementClass::doubleWords}}) {
        Protocol request;
        request.frame =
            QByteArray("\0\0\0\0\0\x07\x01", 7) + function + QByteArray("\x01\0\0\0\x10", 5);
        const PlannedFrame frame = plannedFrame(request);
        ASSERT_EQ(1u, frame.elements.size());
        EXPECT_EQ(elements, frame.elements[0].elements);
    }
}

TEST(FramePlan, RequestsAreFullAtTheLimitOfTheirClass)
{
    EXPECT_FALSE(frameOf('d', 44).isFull());
    EXPECT_TRUE(frameOf('d', 45).isFull());
    EXPECT_FALSE(frameOf('f', 37).isFull());
    EXPECT_TRUE(frameOf('f', 38).isFull());
    EXPECT_FALSE(frameOf('l', 27).isFull());
    EXPECT_TRUE(frameOf('l', 28).isFull());
}

TEST(FramePlan, InWords)
{
    const project::Project project = planProject(
        R"({ "address": "M.text", "name": "title" }, { "address": "M.inText" },
           { "address": "M.w.b[3]", "name": "flag" }, { "address": "M.bit" })");
    PlannedFrame bits = frameOf('d', 0);
    bits.station = 1;
    bits.requestBytes = 13;
    bits.replyBytes = 14;
    bits.elements = {{ElementClass::bits, 100, 1}};
    bits.end = BatchEnd::typeChange;
    PlannedFrame words = frameOf('f', 0);
    words.station = 1;
    words.requestBytes = 21;
    words.replyBytes = 27;
    words.elements = {{ElementClass::words, 3200, 1},
                      {ElementClass::words, 6400, 1},
                      {ElementClass::words, 6416, 1}};
    words.end = BatchEnd::byteBudget;
    PlannedFrame rest = words;
    rest.elements = {{ElementClass::words, 6432, 1}, {ElementClass::words, 9999, 1}};
    rest.end = BatchEnd::endOfList;
    EXPECT_EQ((std::vector<std::string>{
                  "4 variables, 5 elements on the wire, 3 requests a pass",
                  "request 1: function 'd', 1 bit of station 1, 13 bytes out, 14 back",
                  "  variables: M.bit", "  ends because the next element has another data type",
                  "request 2: function 'f', 3 words of station 1, 21 bytes out, 27 back",
                  "  variables: flag, title (2 of 3 words), M.inText",
                  "  ends because the byte budget of a request is used up",
                  "request 3: function 'f', 2 words of station 1, 21 bytes out, 27 back",
                  "  variables: title (1 of 3 words)", "  ends because the polled list is through",
                  "text title: polled as 3 words, M.text~words"}),
              linesOf(describePlan({bits, words, rest}, polledElements(project))));
}

TEST(FramePlan, ALastRequestThatWrapsAroundIsSaidAsSuch)
{
    PlannedFrame first = frameOf('f', 38);
    first.end = BatchEnd::byteBudget;
    PlannedFrame last = frameOf('f', 38);
    last.wrapped = 26;
    last.end = BatchEnd::byteBudget;
    EXPECT_DOUBLE_EQ(50.0 / 38, requestsPerPass({first, last}));
    EXPECT_DOUBLE_EQ(1, requestsPerPass({first}));
    EXPECT_DOUBLE_EQ(0, requestsPerPass({}));
    const auto lines = linesOf(describePlan({first, last}, {}));
    ASSERT_EQ(7u, lines.size());
    EXPECT_EQ("0 variables, 0 elements on the wire, 1.3 requests a pass on average", lines[0]);
    EXPECT_EQ("  ends because the byte budget of a request is used up", lines[3]);
    EXPECT_EQ("  wraps around: 12 elements to the end of the polled list, then 26 from its head; "
              "the next pass begins behind them",
              lines[6]);
}

TEST(FramePlan, TypesThatAlternateAreHintedAt)
{
    const auto ending = [](unsigned char function, BatchEnd end) {
        PlannedFrame frame = frameOf(function, 1);
        frame.end = end;
        return frame;
    };
    const std::vector<PlannedFrame> alternating = {
        ending('d', BatchEnd::typeChange), ending('l', BatchEnd::typeChange),
        ending('l', BatchEnd::typeChange), ending('l', BatchEnd::endOfList)};
    EXPECT_EQ("hint: 2 of 4 requests end early, because data types alternate that are asked for "
              "alike; with one data type their elements would share requests",
              linesOf(describePlan(alternating, {})).back());
    const std::vector<PlannedFrame> classes = {ending('d', BatchEnd::typeChange),
                                               ending('f', BatchEnd::byteBudget),
                                               ending('f', BatchEnd::endOfList)};
    EXPECT_EQ("  ends because the polled list is through",
              linesOf(describePlan(classes, {})).back());
}

TEST(FramePlan, NothingInWords)
{
    EXPECT_EQ((std::vector<std::string>{"0 variables, 0 elements on the wire, 0 requests a pass"}),
              linesOf(describePlan({}, {})));
}

} // namespace tavmir::host
