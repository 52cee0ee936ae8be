// What this controller takes and gives within the protocol: its frames stay as short as those of
// Modbus TCP, and these are its own reasons to refuse.
#ifndef TAVMIR_CONTROLLER_FRAME_LIMITS_H
#define TAVMIR_CONTROLLER_FRAME_LIMITS_H

#include "wire/frame_decoder.h"

namespace tavmir::controller
{

// The longest frame; requests and replies both stay within it.
constexpr std::size_t kMostFrameBytes = 260;
// Of requests: at least station and function code.
constexpr wire::LengthLimits kRequestLengths = {2, kMostFrameBytes - wire::kLengthEnd};

// The most elements of which both the request and the reply fit into one frame.
constexpr std::size_t mostElements(std::size_t entryBytes)
{
    return (kMostFrameBytes - wire::kHeaderBytes) / entryBytes;
}

constexpr std::uint8_t kUnknownFunction = 1;
constexpr std::uint8_t kBadCount = 3;
constexpr std::uint8_t kDeviceFailure = 4;
constexpr std::uint8_t kDeviceBusy = 6;
constexpr std::uint8_t kStationDoesNotAnswer = 11;

} // namespace tavmir::controller

#endif
