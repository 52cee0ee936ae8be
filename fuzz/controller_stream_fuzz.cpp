// What a client may send the simulated controller: any bytes, in any pieces. Every reply is a
// frame by the protocol's own rules, and the decoder always has room for more.
#include "controller/frame_bytes.h"
#include "controller/frame_limits.h"
#include "controller/request_handler.h"
#include "wire/frame_decoder.h"

#include <fuzzer/FuzzedDataProvider.h>

#include <cstdlib>

namespace
{

using namespace tavmir;
using State = wire::FrameDecoder::State;

void answerFrame(const wire::FrameView& frame, controller::BitMemory& memory)
{
    const QByteArray bytes(reinterpret_cast<const char*>(frame.bytes),
                           static_cast<int>(frame.size));
    const controller::Request request = controller::parseRequest(bytes);
    const QByteArray reply = controller::carryOut(request, memory).reply;
    const unsigned char* header = controller::bytesOf(reply);
    const std::size_t size = controller::sizeOf(reply);
    const bool isFrame =
        size >= wire::kHeaderBytes && size <= controller::kMostFrameBytes &&
        wire::bigEndian16(header + wire::kLengthOffset) == size - wire::kLengthEnd &&
        wire::bigEndian16(header + wire::kTransactionOffset) == request.transactionId;
    if (!isFrame || memory.pageCount() > 16) {
        std::abort();
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    FuzzedDataProvider bytes(data, size);
    wire::FrameDecoder decoder(controller::kRequestLengths);
    controller::BitMemory memory(16);
    State state = State::needMore;
    while (bytes.remaining_bytes() > 0 && state != State::broken) {
        const std::string piece = bytes.ConsumeRandomLengthString(400);
        std::size_t taken = 0;
        do {
            const std::size_t more = decoder.append(
                reinterpret_cast<const unsigned char*>(piece.data()) + taken, piece.size() - taken);
            if (more == 0 && taken < piece.size()) {
                std::abort(); // whatever was taken, a whole stream goes on
            }
            taken += more;
            wire::FrameView frame;
            while ((state = decoder.next(frame)) == State::frame) {
                answerFrame(frame, memory);
            }
        } while (state != State::broken && taken < piece.size());
    }
    return 0;
}
