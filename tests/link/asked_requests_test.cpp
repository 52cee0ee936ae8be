// What a frame that came unasked is, by the requests before it.
#include "link/asked_requests.h"

#include "test_server.h"

#include <gtest/gtest.h>

namespace tavmir::host
{

namespace
{

Clock::time_point at(int ms)
{
    return Clock::time_point(std::chrono::milliseconds(ms));
}

class Asked : public testing::Test
{
protected:
    void begin(const QByteArray& request, int ms) { asked_.begin(viewOf(request), at(ms)); }

    void ask(const QByteArray& request, int ms, bool answered)
    {
        begin(request, ms);
        asked_.end(answered);
    }

    AskedRequests::Verdict judge(const QByteArray& frame) { return asked_.judge(viewOf(frame)); }
    Stray kindOf(const QByteArray& frame) { return judge(frame).stray; }

    AskedRequests asked_;

private:
    static FrameView viewOf(const QByteArray& frame)
    {
        return wire::viewFrame(reinterpret_cast<const unsigned char*>(frame.constData()),
                               static_cast<size_t>(frame.size()));
    }
};

} // namespace

TEST_F(Asked, WhatAnswersARequestWaitedForInVainIsLate)
{
    ask(wordRequest(7), 100, false);
    ask(wordRequest(8), 200, true);
    const AskedRequests::Verdict verdict = judge(goodReply(wordRequest(7)));
    EXPECT_EQ(Stray::late, verdict.stray);
    EXPECT_EQ(at(100), verdict.askedAt);
}

TEST_F(Asked, AnExceptionCanBeLateToo)
{
    ask(wordRequest(7), 100, false);
    EXPECT_EQ(Stray::late, kindOf(exceptionTo(wordRequest(7), 2)));
}

TEST_F(Asked, WhatAnswersAnAnsweredRequestIsADuplicate)
{
    ask(wordRequest(7), 100, true);
    const AskedRequests::Verdict verdict = judge(goodReply(wordRequest(7)));
    EXPECT_EQ(Stray::duplicate, verdict.stray);
    EXPECT_EQ(at(100), verdict.askedAt);
}

TEST_F(Asked, ASecondLateReplyToOneRequestIsADuplicate)
{
    ask(wordRequest(7), 100, false);
    EXPECT_EQ(Stray::late, kindOf(goodReply(wordRequest(7))));
    EXPECT_EQ(Stray::duplicate, kindOf(goodReply(wordRequest(7))));
}

TEST_F(Asked, EachAttemptMayBeAnsweredLate)
{
    ask(wordRequest(7), 100, false);
    ask(wordRequest(7), 200, false);
    EXPECT_EQ(at(100), judge(goodReply(wordRequest(7))).askedAt);
    const AskedRequests::Verdict second = judge(goodReply(wordRequest(7)));
    EXPECT_EQ(Stray::late, second.stray);
    EXPECT_EQ(at(200), second.askedAt);
    EXPECT_EQ(Stray::duplicate, kindOf(goodReply(wordRequest(7))));
}

TEST_F(Asked, AnotherStationFunctionOrTransactionIsForeign)
{
    ask(wordRequest(7), 100, false);
    for (const int place : {0, 1, 6, 7}) {
        QByteArray frame = goodReply(wordRequest(7));
        frame[place] = static_cast<char>(frame.at(place) + 1);
        EXPECT_EQ(Stray::foreign, kindOf(frame)) << place;
    }
}

TEST_F(Asked, WhatBearsTheNumberOfTheRequestInFlightAndIsNoAnswerIsForeign)
{
    begin(wordRequest(7), 100);
    EXPECT_EQ(Stray::foreign, kindOf(goodReply(wordRequest(7, 2))));
    asked_.end(false);
    EXPECT_EQ(Stray::late, kindOf(goodReply(wordRequest(7))));
}

TEST_F(Asked, RequestsOfAnotherConnectionAreForgotten)
{
    ask(wordRequest(7), 100, false);
    asked_.clear();
    EXPECT_EQ(Stray::foreign, kindOf(goodReply(wordRequest(7))));
    asked_.end(true); // of none
}

TEST_F(Asked, TheLatestAreKept)
{
    const int kKept = static_cast<int>(AskedRequests::kKept);
    for (int id = 0; id <= kKept; ++id) {
        ask(wordRequest(id), id, false);
    }
    EXPECT_EQ(Stray::foreign, kindOf(goodReply(wordRequest(0)))) << "one too many";
    EXPECT_EQ(Stray::late, kindOf(goodReply(wordRequest(1))));
    EXPECT_EQ(Stray::late, kindOf(goodReply(wordRequest(kKept))));
}

} // namespace tavmir::host
