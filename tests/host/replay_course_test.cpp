// Orders and time of a recording that is played.
#include "host/replay_course.h"

#include <gtest/gtest.h>

namespace tavmir::host
{

namespace
{

using std::chrono::seconds;

class Course : public testing::Test
{
protected:
    std::string refusal(const char* json)
    {
        bool jumped = false;
        return course.order(json, jumped).toStdString();
    }
    bool jumps(const char* json)
    {
        bool jumped = false;
        EXPECT_EQ("", course.order(json, jumped).toStdString());
        return jumped;
    }

    ReplayCourse course{1000, 61000};
};

} // namespace

TEST_F(Course, StandsAtTheEndUntilItIsTold)
{
    EXPECT_EQ(61000, course.at());
    course.goOn(seconds(5));
    EXPECT_EQ(61000, course.at());
    EXPECT_TRUE(jumps(R"({"at":2000})"));
    course.goOn(seconds(5));
    EXPECT_EQ(2000, course.at());
}

TEST_F(Course, GoesOnAtItsSpeedAndStopsAtTheEnd)
{
    EXPECT_TRUE(jumps(R"({"at":2000,"playing":true,"speed":10})"));
    course.goOn(seconds(2));
    EXPECT_EQ(22000, course.at());
    EXPECT_TRUE(course.isPlaying());
    course.goOn(seconds(20));
    EXPECT_EQ(61000, course.at());
    EXPECT_FALSE(course.isPlaying());
    EXPECT_EQ(R"({"from":1000,"to":61000,"at":5,"playing":false,"speed":10})", course.json(5));
}

TEST_F(Course, PlayedAtItsEndItBeginsAnew)
{
    EXPECT_TRUE(jumps(R"({"playing":true})"));
    EXPECT_EQ(1000, course.at());
    EXPECT_TRUE(course.isPlaying());
    EXPECT_FALSE(jumps(R"({"playing":false})"));
    EXPECT_EQ(1000, course.at());
}

TEST_F(Course, StaysWithinWhatIsCovered)
{
    jumps(R"({"at":1})");
    EXPECT_EQ(1000, course.at());
    jumps(R"({"at":1e15})");
    EXPECT_EQ(61000, course.at());
    course.cover(1000, 90000);
    EXPECT_EQ(61000, course.at());
    course.cover(70000, 90000);
    EXPECT_EQ(70000, course.at());
}

TEST_F(Course, WrongOrdersChangeNothing)
{
    EXPECT_EQ("the body must be an object with \"at\", or with \"playing\" and \"speed\"",
              refusal("nonsense"));
    EXPECT_EQ("the body must be an object with \"at\", or with \"playing\" and \"speed\"",
              refusal("[1]"));
    EXPECT_EQ("the body knows \"at\", \"playing\" and \"speed\" only",
              refusal(R"({"at":2000,"to":3})"));
    EXPECT_EQ("\"at\" must be a number: milliseconds since 1970", refusal(R"({"at":"2000"})"));
    EXPECT_EQ("\"playing\" must be true or false", refusal(R"({"playing":1})"));
    EXPECT_EQ("\"speed\" must be a number from 0.01 to 10000", refusal(R"({"at":2000,"speed":0})"));
    EXPECT_EQ(61000, course.at());
    EXPECT_FALSE(course.isPlaying());
}

} // namespace tavmir::host
