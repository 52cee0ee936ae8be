// The communication thread of the random host: requests, every kind of answer, and what a host
// may do to a request in flight.
#include "core/reply_check.h"
#include "core/return_codes.h"
#include "model/session.h"

namespace tavmir::model
{

namespace
{

// Half the bytes of most replies are zero or small, as a plant's are.
Bytes noise(SeededRandom& random, std::int64_t count)
{
    Bytes bytes(count < 0 ? 0 : static_cast<std::size_t>(count));
    for (unsigned char& byte : bytes) {
        byte = static_cast<unsigned char>(random.next());
    }
    return bytes;
}

} // namespace

void Session::communicate(SeededRandom&)
{
    note("ComCommunication");
    const Protocol* request = ComCommunication();
    const Request* expected = model_.comCommunication();
    if ((request == nullptr) != (expected == nullptr)) {
        return differ(expected == nullptr ? "a request, where there is nothing to send"
                                          : "no request, where one is to be sent");
    }
    if (request == nullptr) {
        return;
    }
    if (request != &PLC_driver.protocolList.at(0)) {
        differ("the request is not the head of protocolList");
    }
    const std::string difference = differenceOfRequests(*expected, *request);
    if (!difference.empty()) {
        differ("request." + difference);
    }
}

Bytes Session::randomReply(SeededRandom& random, int& received)
{
    const int expected = model_.protocolList.empty() ? 9 : model_.protocolList[0].replyLength;
    const int length = expected < 0 ? random.between(0, 240) : expected;
    const int kind = random.between(0, 99);
    received = length;
    if (kind < 74) {
        return noise(random, length);
    }
    if (kind < 84) {
        received = 0;
        return noise(random, random.percent(80) ? 0 : 5);
    }
    if (kind < 92) {
        const Bytes reply = noise(random, length + random.between(-9, 9));
        received = static_cast<int>(reply.size());
        return reply;
    }
    if (kind < 98) { // the count says one thing, the array holds another
        return noise(random, random.between(0, 2 * length));
    }
    received = random.pick<int>({-1, INT32_MAX, INT32_MIN});
    return noise(random, length);
}

void Session::answer(SeededRandom& random)
{
    int received = 0;
    const Bytes reply = randomReply(random, received);
    note("DataCom received " + std::to_string(received) + " " + shown(reply));
    QByteArray bytes = qtBytes(reply);
    const bool nothing = received == 0 && reply.empty() && random.percent(50);
    const RW_VAR* result = DataCom(nothing ? nullptr : &bytes, received);
    model_.dataCom(reply, received);
    if (result != &PLC_driver.retVar) {
        return differ("DataCom did not return retVar");
    }
    compareResults(model_.retVar.status, result->status);
}

void Session::wholeTurn(SeededRandom& random)
{
    communicate(random);
    if (random.percent(4) && !model_.protocolList.empty()) {
        const std::int32_t quota = random.between(0, 3);
        note("replyQuota " + std::to_string(quota));
        setWord(ReplyQuota, quota);
    }
    answer(random);
}

void Session::checkRemote(SeededRandom& random)
{
    if (model_.protocolList.empty()) {
        return;
    }
    int received = 0;
    const Bytes reply = randomReply(random, received);
    if (random.percent(50)) {
        setWord(ReplyCount, random.between(0, 2));
    }
    note("DealDataOfRemoteArea received " + std::to_string(received) + " " + shown(reply));
    QByteArray bytes = qtBytes(reply);
    const int result = DealDataOfRemoteArea(&bytes, received);
    compareResults(model_.checkRemote(reply, received), result);
    const int kind = random.between(-1, 9);
    compareResults(model_.driverReturnValue(kind), GetDriverReturnValue(kind));
}

void Session::tamperWithRequest(SeededRandom& random)
{
    if (model_.protocolList.empty()) {
        return;
    }
    const std::int32_t length = random.pick<std::int32_t>({0, -1, -1, 9});
    note("replyLength of the request: " + std::to_string(length));
    model_.protocolList[0].replyLength = length;
    PLC_driver.protocolList[0].replyLength = length;
}

} // namespace tavmir::model
