// The function table and the meanings of exception codes.
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

const char* elementName(ElementClass elements)
{
    switch (elements) {
    case ElementClass::bits:
        return "bit";
    case ElementClass::words:
        return "word";
    case ElementClass::doubleWords:
        break;
    }
    return "double word";
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

} // namespace wire
} // namespace tavmir
