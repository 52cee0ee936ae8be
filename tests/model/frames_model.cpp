// Request frames.
#include "model/driver_model.h"

#include <optional>

namespace tavmir::model
{

namespace
{

constexpr std::size_t kHeader = 9;

struct Code {
    char read;
    char write;
    int valueBytes;
};

std::optional<Code> codeOf(int dataType)
{
    switch (dataType) {
    case 1:
        return Code{'d', 'e', 1};
    case 4:
    case 10:
        return Code{'f', 'g', 2};
    case 6:
    case 7:
        return Code{'l', 'm', 4};
    default:
        return std::nullopt;
    }
}

} // namespace

void DriverModel::putBig(std::size_t offset, std::uint32_t value, int bytes)
{
    for (int i = 0; i < bytes; ++i) {
        sendBuffer[offset + static_cast<std::size_t>(i)] =
            static_cast<unsigned char>(value >> (8 * (bytes - 1 - i)));
    }
}

void DriverModel::putHeader(std::size_t frameLength)
{
    putBig(0, transactionCounter, 2);
    putBig(2, 0, 2);
    putBig(4, static_cast<std::uint32_t>(frameLength - 6), 2);
    putBig(6, static_cast<std::uint32_t>(batch[0].station), 1);
    putBig(8, static_cast<std::uint32_t>(batch.size()), 1);
}

void DriverModel::queueRequest(std::size_t frameLength, int replyLength, int replyDataOffset)
{
    Request request;
    request.frame.assign(sendBuffer.begin(),
                         sendBuffer.begin() + static_cast<std::ptrdiff_t>(frameLength));
    request.frameLength = static_cast<std::int32_t>(frameLength);
    request.replyLength = replyLength;
    request.replyDataOffset = replyDataOffset;
    request.var = batch[0];
    protocolList.push_back(request);
    com[ReplyQuota] = 1;
    com[ReplyCount] = 0;
    ++transactionCounter;
}

void DriverModel::readRegister()
{
    const std::size_t frameLength = kHeader + 4 * batch.size();
    putHeader(frameLength);
    const std::optional<Code> code = codeOf(batch[0].dataType);
    if (code) {
        putBig(7, static_cast<unsigned char>(code->read), 1);
    }
    for (std::size_t i = 0; i < batch.size(); ++i) {
        putBig(kHeader + 4 * i, static_cast<std::uint32_t>(batch[i].elementAddress), 4);
    }
    const int reply = static_cast<int>(batch.size()) * sizeOfType(batch[0].dataType) + 9;
    queueRequest(frameLength, reply, 9);
}

// False when the batch's type has no write encoding: nothing is queued then.
bool DriverModel::writeRegister()
{
    const std::optional<Code> code = codeOf(batch[0].dataType);
    if (!code) {
        emit(line("Func_Write", "WriteAnalog", 67, "ERROR ").number(batch[0].dataType));
        return false;
    }
    const std::size_t entry = 4 + static_cast<std::size_t>(code->valueBytes);
    const std::size_t frameLength = kHeader + entry * batch.size();
    putHeader(frameLength);
    putBig(7, static_cast<unsigned char>(code->write), 1);
    for (std::size_t i = 0; i < batch.size(); ++i) {
        const std::size_t at = kHeader + entry * i;
        const Bytes& value = batch[i].value;
        putBig(at, static_cast<std::uint32_t>(batch[i].elementAddress), 4);
        for (std::size_t byte = 0; byte < entry - 4; ++byte) {
            sendBuffer[at + 4 + byte] = byte < value.size() ? value[byte] : 0;
        }
    }
    queueRequest(frameLength, 9, 0);
    emit(line("Func_Write", "WriteAnalog", 109, "TRACE ").quotedHex(protocolList.back().frame));
    if (!commFailed) {
        for (const Var& var : batch) {
            writeDataToLocal(var);
        }
    }
    return true;
}

} // namespace tavmir::model
