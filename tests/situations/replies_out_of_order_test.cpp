// Replies in pieces, in pairs, late, twice, for somebody else, and refusals.
#include "situation_test.h"

namespace tavmir::situations
{
namespace
{

using host::ExchangeEnd;
using test::VarDone;

class Replies : public SituationTest
{
};

int transactionOf(const QByteArray& frame)
{
    return static_cast<unsigned char>(frame.at(0)) * 256 + static_cast<unsigned char>(frame.at(1));
}

TEST_F(Replies, OneByteAtATimeMakeAWholeReply)
{
    controller.start([](Peer& peer) {
        for (QByteArray request = peer.request(); !request.isEmpty(); request = peer.request()) {
            peer.sendByteByByte(rightReply(request, 0x0102));
        }
    });
    replyTimeoutMs = 20000;
    connectLink();
    pollLevels(30);
    EXPECT_EQ(1, turn().status);
    EXPECT_EQ(0x0102, level(29));
}

TEST_F(Replies, TwoInOneSegmentAreToldApart)
{
    controller.start([](Peer& peer) {
        for (QByteArray request = peer.request(); !request.isEmpty(); request = peer.request()) {
            const QByteArray foreign =
                withTransaction(rightReply(request, 0xBAD), transactionOf(request) ^ 0x4000);
            peer.send(foreign + rightReply(request, 0x600D));
        }
    });
    replyTimeoutMs = 20000;
    connectLink();
    pollLevels(2);
    for (int i = 0; i < 5; ++i) {
        EXPECT_EQ(1, turn().status);
    }
    EXPECT_EQ(0x600D, level(1));
    EXPECT_EQ(5U, link->figures.discarded);
}

// Every reply carries its request's transaction id as the value, so that one taken for another
// shows. On a busy machine the right reply may be late too, and the next request then gets its own.
TEST_F(Replies, ALateReplyIsNotTakenForTheNextRequests)
{
    controller.start([](Peer& peer) {
        QByteArray late = peer.request(); // given up before the next one comes
        for (QByteArray request = peer.request(); !request.isEmpty(); request = peer.request()) {
            peer.send(rightReply(late, static_cast<quint32>(transactionOf(late))));
            peer.send(rightReply(request, static_cast<quint32>(transactionOf(request))));
            late = request;
        }
    });
    replyTimeoutMs = 500;
    connectLink();
    pollLevels(1);
    ASSERT_EQ(41, turn().status) << "nothing comes before the second request";
    Turn answered = turn();
    for (int tries = 0; tries < 100 && answered.status != 1; ++tries) {
        answered = turn();
    }
    ASSERT_EQ(1, answered.status);
    EXPECT_EQ(transactionOf(answered.frame), level());
    EXPECT_GE(link->figures.discarded, 1U);
}

TEST_F(Replies, DuplicatesAreDropped)
{
    controller.start([](Peer& peer) {
        int value = 0;
        for (QByteArray request = peer.request(); !request.isEmpty(); request = peer.request()) {
            const QByteArray reply = rightReply(request, static_cast<quint32>(++value));
            peer.send(reply + reply);
        }
    });
    replyTimeoutMs = 20000;
    connectLink();
    pollLevels(1);
    for (int value = 1; value <= 20; ++value) {
        ASSERT_EQ(1, turn().status);
        ASSERT_EQ(value, level());
    }
}

TEST_F(Replies, AReplyToAnotherTransactionIsNoAnswer)
{
    controller.start([](Peer& peer) {
        for (QByteArray request = peer.request(); !request.isEmpty(); request = peer.request()) {
            peer.send(withTransaction(rightReply(request, 5), transactionOf(request) + 1));
        }
    });
    replyTimeoutMs = 100;
    connectLink();
    pollLevels(1);
    EXPECT_EQ(41, turn().status);
    EXPECT_EQ(0, level());
}

TEST_F(Replies, AnExceptionReplyFailsAReadAndAWrite)
{
    controller.start([](Peer& peer) {
        for (QByteArray request = peer.request(); !request.isEmpty(); request = peer.request()) {
            peer.send(exceptionReply(request, 1));
        }
    });
    replyTimeoutMs = 20000;
    connectLink();
    ASSERT_GT(writeLevel(5, 77, 20, 3), 0);
    const Turn write = turn();
    EXPECT_EQ(ExchangeEnd::exception, write.result)
        << "as long as an acknowledgement, yet never handed over as one";
    EXPECT_EQ(41, write.status);
    EXPECT_EQ((std::vector<VarDone>{{70, 20, 3, 2}}), callbacks.done);

    pollLevels(1);
    const Turn read = turn();
    EXPECT_EQ(ExchangeEnd::exception, read.result);
    EXPECT_EQ(41, read.status);
    EXPECT_EQ(0, level());
}

} // namespace
} // namespace tavmir::situations
