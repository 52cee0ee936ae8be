#include "checked/small_host.h"

namespace tavmir::checked_tests
{

namespace
{

// Polls three words and hands over the reply that `change` makes of the right one.
void answer(void (*change)(QByteArray&))
{
    setUpPolling(QList<const char*>() << "Main.Row[0]", 3);
    const Protocol* const request = ComCommunication();
    QByteArray reply = replyTo(*request);
    change(reply);
    DataCom(&reply, reply.size());
}

// The same with the byte at `place` replaced by another one.
template <int place, int flipped> void answerWithByte()
{
    answer([](QByteArray& reply) { reply[place] = static_cast<char>(reply.at(place) ^ flipped); });
}

void right()
{
    answer([](QByteArray&) {});
}

// As the host must hand over what it found to be a refusal.
void handOverNothing()
{
    setUpPolling(QList<const char*>() << "Main.Row[0]", 3);
    ComCommunication();
    DataCom(nullptr, 0);
}

// `spare` bytes lie behind the reply, as in a buffer that is larger than what came.
void answerOutOfABuffer(int spare)
{
    setUpPolling(QList<const char*>() << "Main.Row[0]", 3);
    const QByteArray reply = replyTo(*ComCommunication());
    QByteArray buffer = reply + QByteArray(spare, '\0');
    DataCom(&buffer, reply.size());
}

void answerWithSize(int difference)
{
    setUpPolling(QList<const char*>() << "Main.Row[0]", 3);
    QByteArray reply = replyTo(*ComCommunication());
    DataCom(&reply, reply.size() + difference);
}

} // namespace

std::vector<HostPair> replyHosts()
{
    return {
        {"reply-null",
         [] {
             setUpPolling(QList<const char*>() << "Main.Row[0]", 3);
             const int expected = ComCommunication()->replyLength;
             DataCom(nullptr, expected);
         },
         &handOverNothing},
        {"received-size", [] { answerWithSize(1); }, [] { answerWithSize(0); }},
        {"received-size", [] { answerOutOfABuffer(7); }, [] { answerOutOfABuffer(0); }},
        {"received-size", [] { answerWithSize(-1000); }, &handOverNothing},
        {"reply-short", [] { answer([](QByteArray& reply) { reply.truncate(7); }); },
         [] {
             answer([](QByteArray& reply) {
                 reply.truncate(8);
                 reply[4] = 0;
                 reply[5] = 2;
             });
         }},
        {"reply-transaction", &answerWithByte<1, 1>, &right},
        {"reply-protocol", &answerWithByte<3, 1>, &right},
        {"reply-station", &answerWithByte<6, 2>, &right},
        {"reply-refusal", &answerWithByte<7, 0x80>, &handOverNothing},
        {"reply-function", &answerWithByte<7, 1>, &right},
        {"reply-length", [] { answer([](QByteArray& reply) { reply.chop(1); }); }, &right},
        {"reply-element-count", &answerWithByte<8, 1>, &right},
        {"reply-addresses", &answerWithByte<12, 1>, &right},
    };
}

} // namespace tavmir::checked_tests
