// Address texts, as the model resolves them.
#ifndef TAVMIR_TESTS_MODEL_ADDRESS_MODEL_H
#define TAVMIR_TESTS_MODEL_ADDRESS_MODEL_H

#include "model/line_text.h"
#include "model/model_records.h"

#include <map>
#include <optional>

namespace tavmir::model
{

// Text to integer, as Qt converts it: blanks around it are ignored, one sign may lead, radix 16
// allows "0x", radix 0 goes by the prefix. Nothing when it is no 32-bit number, or the radix is
// neither 0 nor 2 to 36.
std::optional<std::int32_t> numberOf(const Text& text, std::int32_t radix);

std::vector<Text> splitText(const Text& text, char16_t separator);

// The linear index of an index text.
struct ArrayIndex {
    int result = 0; // 0, 1 or 3
    std::uint32_t index = 0;
    std::uint32_t end = 0;
};
ArrayIndex arrayIndexOf(const Text& indexText, std::int32_t dimensionCount,
                        const std::vector<std::int32_t>& bounds);

class AddressModel
{
public:
    AddressModel(const std::map<Text, Label>& labels, Stream stream)
        : labels_(labels), stream_(stream)
    {
    }

    // The result code; `resolved` is filled as far as the path went, `lines` in order.
    int resolve(const Text& address);

    Resolved resolved;
    std::vector<Text> lines;

private:
    int walk(const Label& entry, std::size_t position);
    int enterStructure(const Label& entry, std::size_t position, const ArrayIndex& index);
    void readBit(const Label& entry, std::size_t position);
    int refuse(int result, const char* function, int number);

    const std::map<Text, Label>& labels_;
    Stream stream_;
    std::vector<Text> parts_;
};

} // namespace tavmir::model

#endif
