// One situation after the other, and the host goes on in between or does not.
#include "judge/course.h"
#include "wire_play.h"

#include <gtest/gtest.h>

namespace tavmir::test
{

namespace
{

using judge::Course;
using Kind = Event::Kind;

class CourseOf
{
public:
    explicit CourseOf(const std::string& text)
        : script_(*judge::parseScript(text).script), course(script_)
    {
    }

    // What the course makes of it, as words.
    std::string take(int ms, Kind kind, Reply reply = Reply::right)
    {
        now_ += judge::milliseconds(ms);
        Event event;
        event.kind = kind;
        event.at = now_;
        event.client = 1;
        event.reply = reply;
        std::string words;
        for (const Event& made : course.take(event)) {
            words += words.empty() ? "" : " ";
            words += made.kind == Kind::begins         ? "begins:" + made.situation.text
                     : made.kind == Kind::ends         ? "ends"
                     : made.kind == Kind::recovered    ? "recovered"
                     : made.kind == Kind::notRecovered ? "lost"
                                                       : "over";
        }
        return words;
    }
    // The host sends a request behind one that was answered.
    std::string goesOn()
    {
        take(1, Kind::received);
        take(1, Kind::sent);
        return take(10, Kind::received);
    }

private:
    judge::Script script_;
    judge::Us now_ = 0;

public:
    Course course;
};

} // namespace

TEST(Course, GoesThroughAllSituationsAndEnds)
{
    CourseOf host("calm for=1s\nsilent for=2s\n");
    EXPECT_EQ(host.goesOn(), "begins:calm for=1s");
    EXPECT_EQ(host.take(900, Kind::tick), "");
    EXPECT_EQ(host.take(100, Kind::tick), "ends");
    EXPECT_EQ(host.goesOn(), "recovered begins:silent for=2s");
    EXPECT_EQ(host.take(2000, Kind::tick), "ends");
    EXPECT_FALSE(host.course.isComplete());
    EXPECT_EQ(host.goesOn(), "recovered over");
    EXPECT_TRUE(host.course.isComplete());
    EXPECT_TRUE(host.course.hostCame());
    EXPECT_EQ(host.goesOn(), "");
}

TEST(Course, OnlyARequestBehindARightReplyIsGoingOn)
{
    CourseOf host("calm\n");
    host.take(1, Kind::received);
    EXPECT_EQ(host.take(1, Kind::received), "");
    host.take(1, Kind::sent, Reply::exception);
    EXPECT_EQ(host.take(1, Kind::received), "");
    host.take(1, Kind::sent);
    host.take(1, Kind::closedByHost);
    EXPECT_EQ(host.take(1, Kind::received), "");
    EXPECT_FALSE(host.course.hostCame());
}

TEST(Course, NobodyCame)
{
    CourseOf host("wait-for-host 5s\ncalm\n");
    EXPECT_EQ(host.take(4999, Kind::tick), "");
    EXPECT_EQ(host.take(1, Kind::tick), "over");
    EXPECT_FALSE(host.course.hostCame());
    EXPECT_EQ(host.course.begun(), 0u);
}

TEST(Course, AHostThatDoesNotGoOnEndsIt)
{
    CourseOf host("reconnect-within 3s\ncalm for=1s\ncalm\n");
    host.goesOn();
    host.take(1000, Kind::tick);
    EXPECT_EQ(host.take(2999, Kind::tick), "");
    EXPECT_EQ(host.take(1, Kind::tick), "lost over");
    EXPECT_FALSE(host.course.isComplete());
    EXPECT_EQ(host.course.begun(), 1u);
}

TEST(Course, ASituationIsOverWhenItHasHappenedOftenEnough)
{
    CourseOf host("drop times=2 every=1\n");
    host.goesOn();
    for (unsigned number = 1; number < 3; ++number) {
        EXPECT_EQ(host.take(10, Kind::tick), "");
        const Bytes request = readWord(number, 16);
        host.course.stage().asked(1, request, answerTo(request));
    }
    EXPECT_EQ(host.take(10, Kind::tick), "ends");
}

TEST(Course, TheDoorIsShutOrTurnsAwayAsLongAsThatIsPlayed)
{
    CourseOf host("restart for=1s\nrejected for=1s\n");
    EXPECT_EQ(host.course.door(), Course::Door::open);
    host.goesOn();
    EXPECT_EQ(host.course.door(), Course::Door::shut);
    host.take(1000, Kind::tick);
    EXPECT_EQ(host.course.door(), Course::Door::open);
    host.goesOn();
    EXPECT_EQ(host.course.door(), Course::Door::turnsAway);
}

} // namespace tavmir::test
