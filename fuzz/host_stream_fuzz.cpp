// What a controller may send the host: any bytes, in any pieces. Frames come out whole, and what
// is taken for an answer has the request's transaction, station and function.
#include "link/reply_matcher.h"
#include "wire/frame_decoder.h"

#include <fuzzer/FuzzedDataProvider.h>

#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    using namespace tavmir::host;
    using namespace tavmir::wire;
    FuzzedDataProvider bytes(data, size);
    unsigned char requestBytes[kHeaderBytes] = {0, 0, 0, 0, 0, 3, 1, 100, 1};
    for (const std::size_t at : {0U, 1U, 6U, 7U}) {
        requestBytes[at] = bytes.ConsumeIntegral<std::uint8_t>();
    }
    const FrameView request = viewFrame(requestBytes, sizeof requestBytes);
    FrameDecoder decoder;
    while (bytes.remaining_bytes() > 0) {
        const std::string piece = bytes.ConsumeRandomLengthString(3000);
        std::size_t taken = 0;
        FrameDecoder::State state = FrameDecoder::State::needMore;
        do {
            taken += decoder.append(reinterpret_cast<const unsigned char*>(piece.data()) + taken,
                                    piece.size() - taken);
            FrameView frame;
            while ((state = decoder.next(frame)) == FrameDecoder::State::frame) {
                if (frame.size < kHeaderBytes || frame.size > kMaxFrameBytes) {
                    std::abort();
                }
                const bool isAnswer = classifyReply(request, frame) == ReplyKind::answer;
                const bool belongs = frame.transactionId == request.transactionId &&
                                     frame.function == request.function &&
                                     frame.station == request.station;
                if (isAnswer && !belongs) {
                    std::abort();
                }
            }
        } while (state != FrameDecoder::State::broken && taken < piece.size());
        if (state == FrameDecoder::State::broken) {
            decoder.clear();
        }
    }
    return 0;
}
