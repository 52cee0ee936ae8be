// The records of the model: plain values in standard containers, so that nothing of the driver
// or of Qt takes part in saying what is right.
#ifndef TAVMIR_TESTS_MODEL_MODEL_RECORDS_H
#define TAVMIR_TESTS_MODEL_MODEL_RECORDS_H

#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace tavmir::model
{

using Text = std::u16string;
using Bytes = std::vector<unsigned char>;

// One variable or one element, member by member as host and driver exchange it.
struct Var {
    std::int32_t hostKey = 0;
    std::int32_t varKey = 0;
    std::int32_t hostData2 = 0;
    std::int32_t hostData3 = 0;
    std::int32_t hostData4 = 0;
    std::int32_t status = 0;
    Text addressText;
    Text auxText;
    std::int32_t dataType = 0;
    std::int32_t elementAddress = 0;
    std::int32_t station = 0;
    std::int32_t count = 0;
    std::int32_t hostData12 = 0;
    std::int32_t hostData13 = 0;
    Bytes value;
};

// One request in flight.
struct Request {
    Bytes frame;
    std::int32_t frameLength = 0;
    std::int32_t replyLength = 0;
    std::int32_t replyDataOffset = 0;
    std::int32_t replyState = 0;
    Var var;
};

// One node of the label tree: the members that address parsing looks at, and one text that is
// only carried.
struct Label {
    Text name;
    std::uint16_t typeFlags = 0;
    std::int32_t offset = 0;
    std::int32_t dimensionCount = 0;
    std::uint32_t memberCount = 0;
    std::vector<std::int32_t> arrayBounds;
    std::vector<Label> members;
    std::vector<Label> elementType;
    Text extraText;
    std::vector<std::int32_t> elementSizes;
};

// What an address text resolves to.
struct Resolved {
    std::uint8_t dataType = 0;
    std::int32_t elementAddress = 0;
    std::int32_t elementWidth = 0;
    std::int32_t bitAccess = 0;
    std::int32_t bitIndex = 0;
    std::int32_t isArrayElement = 0;
    std::int32_t arrayBase = 0;
    std::int32_t arrayIndex = 0;
    std::int32_t elementLimit = 0;
};

// The host's record of one polled variable.
struct PolledVariable {
    std::uint8_t station = 0;
    Text auxText;
    Text addressText;
    std::int32_t count = 0;
};

// What a call does besides its result, in the order in which it happens.
struct Event {
    enum Kind { Line, VarDone, CommFail, CallbackRead };

    Kind kind = Line;
    Text line;                             // Line: the whole text
    std::array<std::int32_t, 4> numbers{}; // VarDone: its arguments; CommFail: entries of the
                                           // list, hostKey, flag; CallbackRead: the result
    Bytes bytes;                           // CallbackRead: the values

    bool operator==(const Event& other) const
    {
        return kind == other.kind && line == other.line && numbers == other.numbers &&
               bytes == other.bytes;
    }
};

// Words of the connection record by their position.
enum ComWord {
    DefaultStation = 6,
    RetryLimit = 7,
    RetryCount = 8,
    StationMode = 9,
    HostWord10 = 10,
    ReplyQuota = 11,
    ReplyCount = 12,
    HostWord13 = 13,
    HostWord14 = 14,
    HostWord15 = 15,
    WriteMode = 16,
    ScanDone = 17,
    ComStation = 18,
    ComWords = 19
};

// 32-bit arithmetic that wraps.
inline std::int32_t wrapped(std::int64_t number)
{
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(number));
}

} // namespace tavmir::model

#endif
