// Frames in words.
#include "frame_words.h"

#include <algorithm>
#include <vector>

namespace tavmir
{
namespace wire
{

namespace
{

std::string bytesInWords(std::size_t count)
{
    return std::to_string(count) + " bytes";
}

std::string functionInWords(std::uint8_t code)
{
    const FunctionCode* function = findFunctionCode(code);
    return function != nullptr ? function->words : "function " + std::to_string(code);
}

std::uint32_t writtenValue(const FunctionCode& function, const unsigned char* value)
{
    if (function.elements == ElementClass::bits) {
        return value[0] != 0 ? 1 : 0; // any byte but 0 sets it
    }
    return littleEndianNumber(value, function.valueBytes);
}

// The entries behind a header: how long each is, and what its value is.
struct Entries {
    std::size_t entryBytes;
    std::function<std::uint32_t(const unsigned char* value)> valueOf; // empty: they have none
};

std::vector<ElementInFrame> elementsOf(const FrameView& frame, int bits, const Entries& entries)
{
    std::vector<ElementInFrame> elements;
    for (std::size_t offset = kHeaderBytes; offset + entries.entryBytes <= frame.size;
         offset += entries.entryBytes) {
        const unsigned char* entry = frame.bytes + offset;
        ElementInFrame element = {bigEndian32(entry), bits, 0};
        if (entries.valueOf) {
            element.value = entries.valueOf(entry + kAddressBytes);
        }
        elements.push_back(element);
    }
    return elements;
}

// Whole entries one after the other, then the bytes left over.
std::string entriesInWords(const FrameView& frame, int bits, const Entries& entries,
                           const DescribeElements& describe)
{
    std::string list;
    const auto add = [&list](const std::string& words) {
        list += (list.empty() ? "" : ", ") + words;
    };
    const std::vector<ElementInFrame> elements = elementsOf(frame, bits, entries);
    for (std::size_t i = 0; i < elements.size();) {
        const ElementsInWords words = describe(&elements[i], elements.size() - i);
        add(entries.valueOf ? words.name + "=" + words.value : words.name);
        i += std::max<std::size_t>(1, words.elements);
    }
    const std::size_t left = frame.size - kHeaderBytes - elements.size() * entries.entryBytes;
    if (left > 0) {
        add("and " + bytesInWords(left));
    }
    return list;
}

std::string unknownInWords(const FrameView& frame)
{
    return titleInWords(frame) + ", " + bytesInWords(frame.size);
}

} // namespace

ElementsInWords elementInWords(const ElementInFrame& element)
{
    ElementsInWords words;
    words.name = std::to_string(element.address);
    words.value = std::to_string(element.value);
    return words;
}

std::string exceptionInWords(std::uint8_t code)
{
    const char* words = exceptionWords(code);
    const std::string number = std::to_string(code);
    return words != nullptr ? number + " (" + words + ")" : number;
}

std::string titleInWords(const FrameView& frame)
{
    return "#" + std::to_string(frame.transactionId) + " station " + std::to_string(frame.station) +
           " " + functionInWords(static_cast<std::uint8_t>(frame.function & ~kExceptionBit));
}

std::string requestInWords(const unsigned char* bytes, std::size_t size,
                           const DescribeElements& describe)
{
    if (size < kHeaderBytes) {
        return bytesInWords(size);
    }
    const FrameView frame = viewFrame(bytes, size);
    const FunctionCode* function = findFunctionCode(frame.function);
    if (function == nullptr) {
        return unknownInWords(frame);
    }
    Entries entries = {function->requestEntryBytes(), nullptr};
    if (function->write) {
        entries.valueOf = [function](const unsigned char* value) {
            return writtenValue(*function, value);
        };
    }
    return titleInWords(frame) + ": " +
           entriesInWords(frame, function->valueBits, entries, describe);
}

std::string replyInWords(const unsigned char* bytes, std::size_t size,
                         const DescribeElements& describe)
{
    if (size < kHeaderBytes) {
        return bytesInWords(size);
    }
    const FrameView frame = viewFrame(bytes, size);
    const std::uint8_t count = bytes[kCountOffset];
    if ((frame.function & kExceptionBit) != 0) {
        return titleInWords(frame) + ": exception " + exceptionInWords(count);
    }
    const FunctionCode* function = findFunctionCode(frame.function);
    if (function == nullptr) {
        return unknownInWords(frame);
    }
    if (function->write) {
        return titleInWords(frame) + ": " + std::to_string(count) + " done";
    }
    const Entries entries = {function->entryBytes(), [function](const unsigned char* value) {
                                 return bigEndianNumber(value, function->valueBytes);
                             }};
    return titleInWords(frame) + ": " +
           entriesInWords(frame, function->valueBits, entries, describe);
}

} // namespace wire
} // namespace tavmir
