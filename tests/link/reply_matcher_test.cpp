// Which frames answer a request.
#include "link/reply_matcher.h"

#include "test_server.h"

#include <gtest/gtest.h>

namespace tavmir::host
{

namespace
{

FrameView view(const QByteArray& bytes)
{
    return wire::viewFrame(reinterpret_cast<const unsigned char*>(bytes.constData()),
                           static_cast<size_t>(bytes.size()));
}

} // namespace

TEST(Matcher, AnswerHasSameTransactionStationAndFunction)
{
    const QByteArray request = wordRequest(300, 2);
    EXPECT_EQ(ReplyKind::answer, classifyReply(view(request), view(goodReply(request))));
    EXPECT_EQ(ReplyKind::answer, classifyReply(view(request), view(replyTo(request, "x"))));
    EXPECT_EQ(ReplyKind::foreign, classifyReply(view(request), view(goodReply(wordRequest(301)))));
    EXPECT_EQ(ReplyKind::foreign,
              classifyReply(view(request), view(goodReply(wordRequest(300 + 256)))));
    QByteArray other = goodReply(request);
    other[6] = 2;
    EXPECT_EQ(ReplyKind::foreign, classifyReply(view(request), view(other)));
    other = goodReply(request);
    other[7] = 'g';
    EXPECT_EQ(ReplyKind::foreign, classifyReply(view(request), view(other)));
}

TEST(Matcher, ExceptionNeedsTheRequestsFunction)
{
    const QByteArray request = wordRequest(1);
    EXPECT_EQ(ReplyKind::exception, classifyReply(view(request), view(exceptionTo(request, 1))));
    QByteArray other = exceptionTo(request, 1);
    other[7] = static_cast<char>('g' | 0x80);
    EXPECT_EQ(ReplyKind::foreign, classifyReply(view(request), view(other)));
    EXPECT_EQ(ReplyKind::foreign,
              classifyReply(view(request), view(exceptionTo(wordRequest(2), 1))));
}

} // namespace tavmir::host
