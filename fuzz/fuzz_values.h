// Records out of fuzz bytes.
#ifndef TAVMIR_FUZZ_FUZZ_VALUES_H
#define TAVMIR_FUZZ_FUZZ_VALUES_H

#include "model/model_records.h"

#include <fuzzer/FuzzedDataProvider.h>

#include <string>

namespace tavmir::fuzz
{

inline model::Bytes bytesOf(const std::string& text)
{
    return model::Bytes(text.begin(), text.end());
}

// Bytes as printable characters, tabs included: the model's lines know no others.
inline model::Text printableOf(const std::string& bytes)
{
    model::Text text;
    for (const char byte : bytes) {
        const auto c = static_cast<unsigned char>(byte);
        text += c == '\t' || (c >= 0x20 && c < 0x7F) ? static_cast<char16_t>(c) : u'?';
    }
    return text;
}

inline model::Var recordOf(FuzzedDataProvider& bytes)
{
    model::Var var;
    var.dataType = bytes.ConsumeIntegralInRange<int>(-1, 13);
    var.elementAddress = bytes.ConsumeIntegral<std::int32_t>();
    var.station = bytes.ConsumeIntegral<std::int16_t>();
    var.hostKey = bytes.ConsumeIntegral<std::int8_t>();
    var.varKey = bytes.ConsumeIntegralInRange<int>(0, 3);
    var.hostData2 = bytes.ConsumeIntegralInRange<int>(0, 1);
    var.count = bytes.ConsumeIntegralInRange<int>(-1, 6);
    var.value = bytesOf(bytes.ConsumeRandomLengthString(9));
    return var;
}

} // namespace tavmir::fuzz

#endif
