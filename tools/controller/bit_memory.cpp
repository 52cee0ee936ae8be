#include "bit_memory.h"

#include <set>

namespace tavmir::controller
{

namespace
{
constexpr int kWordBits = 32;
constexpr std::uint32_t kWordIndexMask = 0x07FFFFFF; // 2^32 bits are 2^27 words
constexpr int kPageNumberBits = 20;                  // and 2^20 pages

std::uint32_t pageKey(std::uint8_t station, std::uint32_t wordIndex)
{
    return static_cast<std::uint32_t>(station) << kPageNumberBits |
           wordIndex / BitMemory::kWordsPerPage;
}

// What a value at an address covers: a part of one word, and perhaps the beginning of the next.
struct Span {
    std::uint32_t firstWord;
    std::uint32_t secondWord;
    std::uint64_t mask; // low half: in the first word, high half: in the second
    int shift;
};

Span spanOf(std::uint32_t address, int bits)
{
    Span span;
    span.firstWord = address / kWordBits;
    span.secondWord = (span.firstWord + 1) & kWordIndexMask;
    span.shift = static_cast<int>(address % kWordBits);
    span.mask = ((std::uint64_t{1} << bits) - 1) << span.shift;
    return span;
}

std::uint32_t lowHalf(std::uint64_t value)
{
    return static_cast<std::uint32_t>(value & 0xFFFFFFFF);
}

std::uint32_t highHalf(std::uint64_t value)
{
    return static_cast<std::uint32_t>(value >> kWordBits);
}

} // namespace

BitMemory::BitMemory(std::size_t mostPages) : mostPages_(mostPages) {}

std::uint32_t BitMemory::read(std::uint8_t station, std::uint32_t address, int bits) const
{
    const Span span = spanOf(address, bits);
    std::uint64_t words = wordAt(station, span.firstWord);
    if (highHalf(span.mask) != 0) {
        words |= static_cast<std::uint64_t>(wordAt(station, span.secondWord)) << kWordBits;
    }
    return lowHalf((words & span.mask) >> span.shift);
}

bool BitMemory::write(std::uint8_t station, int bits, const std::vector<BitValue>& values)
{
    if (!hasRoomFor(station, bits, values)) {
        return false;
    }
    for (const BitValue& value : values) {
        const Span span = spanOf(value.address, bits);
        const std::uint64_t words = static_cast<std::uint64_t>(value.value) << span.shift;
        writeInWord(station, span.firstWord, lowHalf(span.mask), lowHalf(words));
        writeInWord(station, span.secondWord, highHalf(span.mask), highHalf(words));
    }
    return true;
}

bool BitMemory::write(std::uint8_t station, std::uint32_t address, int bits, std::uint32_t value)
{
    return write(station, bits, {BitValue{address, value}});
}

std::uint32_t BitMemory::wordAt(std::uint8_t station, std::uint32_t wordIndex) const
{
    const auto page = pages_.find(pageKey(station, wordIndex));
    return page == pages_.end() ? 0 : page->second[wordIndex % kWordsPerPage];
}

void BitMemory::writeInWord(std::uint8_t station, std::uint32_t wordIndex, std::uint32_t mask,
                            std::uint32_t value)
{
    if (mask == 0) {
        return;
    }
    auto page = pages_.find(pageKey(station, wordIndex));
    if (page == pages_.end()) {
        if ((value & mask) == 0) {
            return; // a page that is not there is all 0 already
        }
        page = pages_.emplace(pageKey(station, wordIndex), Page{}).first;
    }
    std::uint32_t& word = page->second[wordIndex % kWordsPerPage];
    word = (word & ~mask) | (value & mask);
}

bool BitMemory::hasRoomFor(std::uint8_t station, int bits,
                           const std::vector<BitValue>& values) const
{
    std::set<std::uint32_t> missing;
    const auto note = [&](std::uint32_t wordIndex, std::uint32_t newBits) {
        const std::uint32_t key = pageKey(station, wordIndex);
        if (newBits != 0 && pages_.count(key) == 0) {
            missing.insert(key);
        }
    };
    for (const BitValue& value : values) {
        const Span span = spanOf(value.address, bits);
        const std::uint64_t words =
            (static_cast<std::uint64_t>(value.value) << span.shift) & span.mask;
        note(span.firstWord, lowHalf(words));
        note(span.secondWord, highHalf(words));
    }
    return pages_.size() + missing.size() <= mostPages_;
}

} // namespace tavmir::controller
