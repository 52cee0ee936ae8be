// What a client may send the simulated controller: any bytes, in any pieces. Every reply is a
// frame by the protocol's own rules, and what is kept of an unfinished frame is bounded.
#include "controller/frame_decoder.h"
#include "controller/frame_layout.h"
#include "controller/request_handler.h"

#include <fuzzer/FuzzedDataProvider.h>

#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    using namespace tavmir::controller;
    FuzzedDataProvider bytes(data, size);
    FrameDecoder decoder;
    BitMemory memory(16);
    while (bytes.remaining_bytes() > 0 && !decoder.isBroken()) {
        const std::string piece = bytes.ConsumeRandomLengthString(400);
        decoder.append(piece.data(), static_cast<int>(piece.size()));
        while (const auto frame = decoder.takeFrame()) {
            const Request request = parseRequest(*frame);
            const Answer answer = carryOut(request, memory);
            const bool isFrame =
                answer.reply.size() >= kHeaderBytes && answer.reply.size() <= kMostFrameBytes &&
                bigEndian16(answer.reply, kLengthOffset) ==
                    answer.reply.size() - kBytesBeforeLengthCounts &&
                bigEndian16(answer.reply, kTransactionOffset) == request.transactionId;
            if (!isFrame || memory.pageCount() > 16)
                std::abort();
        }
        if (decoder.keptBytes() > kMostFrameBytes)
            std::abort();
    }
    return 0;
}
