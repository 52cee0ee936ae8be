// The memory of the simulated controller: for each of 256 stations, 2^32 single bits, all 0 at
// first. A value of several bits lies in the bits from its address on, its bit i at address + i,
// so that variables that overlap share their bits. Addresses wrap from 2^32 - 1 to 0.
//
// Sparse: only pages that ever held a bit that is not 0 take room, and there is a limit to them.
// One thread only.
#ifndef TAVMIR_CONTROLLER_BIT_MEMORY_H
#define TAVMIR_CONTROLLER_BIT_MEMORY_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <unordered_map>
#include <vector>

namespace tavmir::controller
{

struct BitValue {
    std::uint32_t address = 0;
    std::uint32_t value = 0; // least significant bit at `address`; higher bits than asked ignored
};

class BitMemory
{
public:
    static constexpr int kWordsPerPage = 128; // of 32 bits: a page is 512 bytes, 4096 bits
    static constexpr std::size_t kDefaultMostPages = 65536; // 32 MiB

    explicit BitMemory(std::size_t mostPages = kDefaultMostPages);

    // `bits`: 1 to 32.
    std::uint32_t read(std::uint8_t station, std::uint32_t address, int bits) const;

    // Writes all of the values, in order, or, when the pages for them would go beyond the limit,
    // none; false then. Each value is `bits` wide, 1 to 32.
    bool write(std::uint8_t station, int bits, const std::vector<BitValue>& values);
    bool write(std::uint8_t station, std::uint32_t address, int bits, std::uint32_t value);

    std::size_t pageCount() const { return pages_.size(); }

private:
    using Page = std::array<std::uint32_t, kWordsPerPage>;

    std::uint32_t wordAt(std::uint8_t station, std::uint32_t wordIndex) const;
    void writeInWord(std::uint8_t station, std::uint32_t wordIndex, std::uint32_t mask,
                     std::uint32_t value);
    bool hasRoomFor(std::uint8_t station, int bits, const std::vector<BitValue>& values) const;

    std::size_t mostPages_;
    std::unordered_map<std::uint32_t, Page> pages_; // by station and page number
};

} // namespace tavmir::controller

#endif
