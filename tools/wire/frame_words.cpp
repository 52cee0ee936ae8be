// Frames in words.
#include "frame_words.h"

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

// The entries behind a header: how long each is, and what to say of it.
struct Entries {
    std::size_t entryBytes;
    std::function<std::string(const unsigned char* entry)> words;
};

// Whole entries one after the other, then the bytes left over.
std::string entriesInWords(const FrameView& frame, const Entries& entries)
{
    std::string list;
    const auto add = [&list](const std::string& words) {
        list += (list.empty() ? "" : ", ") + words;
    };
    std::size_t offset = kHeaderBytes;
    for (; offset + entries.entryBytes <= frame.size; offset += entries.entryBytes) {
        add(entries.words(frame.bytes + offset));
    }
    if (offset < frame.size) {
        add("and " + bytesInWords(frame.size - offset));
    }
    return list;
}

std::string pairInWords(const FunctionCode& function, const ElementName& name,
                        const unsigned char* entry, std::uint32_t value)
{
    return name(bigEndian32(entry), function.valueBits) + "=" + std::to_string(value);
}

std::uint32_t writtenValue(const FunctionCode& function, const unsigned char* value)
{
    if (function.elements == ElementClass::bits) {
        return value[0] != 0 ? 1 : 0; // any byte but 0 sets it
    }
    return littleEndianNumber(value, function.valueBytes);
}

std::string unknownInWords(const FrameView& frame)
{
    return titleInWords(frame) + ", " + bytesInWords(frame.size);
}

} // namespace

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

std::string requestInWords(const unsigned char* bytes, std::size_t size, const ElementName& name)
{
    if (size < kHeaderBytes) {
        return bytesInWords(size);
    }
    const FrameView frame = viewFrame(bytes, size);
    const FunctionCode* function = findFunctionCode(frame.function);
    if (function == nullptr) {
        return unknownInWords(frame);
    }
    const auto words = [&](const unsigned char* entry) {
        return function->write ? pairInWords(*function, name, entry,
                                             writtenValue(*function, entry + kAddressBytes))
                               : name(bigEndian32(entry), function->valueBits);
    };
    return titleInWords(frame) + ": " +
           entriesInWords(frame, Entries{function->requestEntryBytes(), words});
}

std::string replyInWords(const unsigned char* bytes, std::size_t size, const ElementName& name)
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
    const auto words = [&](const unsigned char* entry) {
        return pairInWords(*function, name, entry,
                           bigEndianNumber(entry + kAddressBytes, function->valueBytes));
    };
    return titleInWords(frame) + ": " +
           entriesInWords(frame, Entries{function->entryBytes(), words});
}

} // namespace wire
} // namespace tavmir
