// Judging replies, storing their values, and the result codes.
#include "model/driver_model.h"

namespace tavmir::model
{

int DriverModel::errorReturn(int base) const
{
    const std::int32_t key = protocolList.front().var.hostKey;
    return base + 1 + (key >= 0 && key <= 11 ? key : 0);
}

int DriverModel::driverReturnValue(int kind) const
{
    switch (kind) {
    case 0:
        return 1;
    case 1:
        return errorReturn(10);
    case 2:
        return errorReturn(40);
    case 3:
        return errorReturn(70);
    case 4:
        return 100;
    case 5:
        return errorReturn(110);
    case 6:
        return errorReturn(140);
    case 7:
        return errorReturn(170);
    default:
        return 200;
    }
}

int DriverModel::checkLocal(const Bytes& reply, int received)
{
    const std::int32_t expected = protocolList.front().replyLength;
    if (received == 0) {
        return driverReturnValue(expected != 0 ? 2 : 0);
    }
    if (expected == 0) {
        return driverReturnValue(0);
    }
    if (received != expected && expected != -1) {
        return driverReturnValue(3);
    }
    if (protocolList.front().var.hostData2 == 0) {
        storeReply(reply);
    }
    return driverReturnValue(0);
}

int DriverModel::checkRemote(const Bytes& reply, int received)
{
    const std::int32_t expected = protocolList.front().replyLength;
    if (received == 0 && expected != 0) {
        return driverReturnValue(6);
    }
    if (received != 0 && expected == 0) {
        return driverReturnValue(0);
    }
    if (received != expected && expected != -1) {
        return driverReturnValue(7);
    }
    if (protocolList.front().var.hostData12 != -1) {
        return driverReturnValue(4);
    }
    storeReply(reply);
    return driverReturnValue(com[ReplyCount] == 1 ? 4 : 0);
}

// By position; an element whose value bytes are not all there is not stored.
void DriverModel::storeReply(const Bytes& reply)
{
    const int type = batch.empty() ? 0 : batch[0].dataType;
    const bool known = type == 1 || type == 4 || type == 10 || type == 6 || type == 7;
    if (!known) {
        emit(line("Func_DealData", "SaveToLocalDataErea", 65, "ERROR ").number(type));
        return;
    }
    const auto size = static_cast<std::size_t>(sizeOfType(type));
    std::size_t at = static_cast<std::size_t>(protocolList.front().replyDataOffset);
    for (std::size_t i = 0; i < batch.size(); ++i, at += size) {
        if (at + size > reply.size()) {
            return;
        }
        std::uint32_t value = 0;
        for (std::size_t byte = 4; byte < size; ++byte) {
            value = value * 256 + reply[at + byte];
        }
        const std::int32_t key = batch[i].elementAddress;
        if (size == 5) {
            byteCache[key] = static_cast<std::uint8_t>(value);
        } else if (size == 6) {
            wordCache[key] = static_cast<std::uint16_t>(value);
        } else {
            dwordCache[key] = value;
        }
    }
}

} // namespace tavmir::model
