// The probe's connection when the other side goes.
#include "plain_socket.h"
#include "wire/loopback_listener.h"

#include <gtest/gtest.h>

using namespace tavmir::probe;

namespace
{

TEST(PlainSocket, AConnectionThatIsClosedIsNotWaitedFor)
{
    PlainSocket socket;
    {
        tavmir::test::LoopbackListener listener;
        tavmir::wire::Endpoint place;
        place.host = "127.0.0.1";
        place.port = listener.port();
        std::vector<tavmir::wire::ConnectAttempt> attempts;
        ASSERT_EQ("", socket.connectTo(place, 20000, attempts));
        const int accepted = listener.accept();
        ASSERT_EQ(3, ::send(accepted, "abc", 3, MSG_NOSIGNAL));
        ::close(accepted);
    }
    QByteArray bytes;
    EXPECT_EQ("receive: the controller closed the connection", socket.receive(bytes, 6, 20000));
    EXPECT_STREQ("abc", bytes.constData());
}

} // namespace
