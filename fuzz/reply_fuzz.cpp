// Replies against every kind of request: short, long, empty, any length accepted, the count
// telling another length than the bytes have.
#include "driver_pair.h"
#include "fuzz_values.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    using namespace tavmir;
    FuzzedDataProvider bytes(data, size);
    fuzz::DriverPair pair;
    pair.setWord(model::RetryLimit, bytes.ConsumeIntegralInRange<int>(0, 2));
    const bool writes = bytes.ConsumeBool();
    model::Var var = fuzz::recordOf(bytes);
    for (int i = bytes.ConsumeIntegralInRange<int>(1, 60); i > 0; --i) {
        var.elementAddress = model::wrapped(std::int64_t{var.elementAddress} + 16);
        if (writes) {
            pair.addWrite(var);
        } else {
            pair.addRead(var);
        }
    }
    while (bytes.remaining_bytes() > 0) {
        pair.communicate();
        const int length = bytes.ConsumeIntegralInRange<int>(-1, 2);
        if (length < 1) {
            pair.setReplyLength(length);
        }
        const bool exact = bytes.ConsumeBool() && !pair.model.protocolList.empty();
        model::Bytes reply = fuzz::bytesOf(bytes.ConsumeRandomLengthString(300));
        if (exact && pair.model.protocolList[0].replyLength > 0) {
            reply.resize(static_cast<std::size_t>(pair.model.protocolList[0].replyLength));
        }
        const int received = bytes.ConsumeBool() ? static_cast<int>(reply.size())
                                                 : bytes.ConsumeIntegral<std::int16_t>();
        pair.answer(reply, received);
    }
    return 0;
}
