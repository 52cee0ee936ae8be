// The function table and numbers out of bytes.
#include "frame_layout.h"

namespace tavmir
{
namespace wire
{

namespace
{

const FunctionCode kFunctionCodes[] = {
    {100, false, ElementClass::bits, 1, 1, "read bits"},
    {101, true, ElementClass::bits, 1, 1, "write bits"},
    {102, false, ElementClass::words, 16, 2, "read words"},
    {103, true, ElementClass::words, 16, 2, "write words"},
    {108, false, ElementClass::doubleWords, 32, 4, "read double words"},
    {109, true, ElementClass::doubleWords, 32, 4, "write double words"},
};

// The meanings that controllers of this family of protocols share.
struct ExceptionCode {
    std::uint8_t code;
    const char* words;
};
const ExceptionCode kExceptionCodes[] = {
    {1, "illegal function"},
    {2, "illegal data address"},
    {3, "illegal data value"},
    {4, "device failure"},
    {5, "acknowledged, still working"},
    {6, "device busy"},
    {8, "memory parity error"},
    {10, "gateway path unavailable"},
    {11, "station does not answer the gateway"},
};

} // namespace

const FunctionCode* findFunctionCode(std::uint8_t code)
{
    for (const FunctionCode& function : kFunctionCodes) {
        if (function.code == code) {
            return &function;
        }
    }
    return nullptr;
}

const char* elementsName(ElementClass elements)
{
    switch (elements) {
    case ElementClass::bits:
        return "bits";
    case ElementClass::words:
        return "words";
    case ElementClass::doubleWords:
        break;
    }
    return "double words";
}

const char* exceptionWords(std::uint8_t code)
{
    for (const ExceptionCode& exception : kExceptionCodes) {
        if (exception.code == code) {
            return exception.words;
        }
    }
    return nullptr;
}

std::uint16_t bigEndian16(const unsigned char* bytes)
{
    return static_cast<std::uint16_t>(bytes[0] << 8 | bytes[1]);
}

std::uint32_t bigEndian32(const unsigned char* bytes)
{
    return bigEndianNumber(bytes, 4);
}

std::uint32_t bigEndianNumber(const unsigned char* bytes, std::size_t count)
{
    std::uint32_t number = 0;
    for (std::size_t i = 0; i < count; ++i) {
        number = number << 8 | bytes[i];
    }
    return number;
}

std::uint32_t littleEndianNumber(const unsigned char* bytes, std::size_t count)
{
    std::uint32_t number = 0;
    for (std::size_t i = count; i > 0; --i) {
        number = number << 8 | bytes[i - 1];
    }
    return number;
}

} // namespace wire
} // namespace tavmir
