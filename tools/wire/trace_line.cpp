// Lines of a trace, put together.
#include "trace_line.h"

#include "time_words.h"

#include <cstdio>

namespace tavmir
{
namespace wire
{

namespace
{

// " [late, wrong length]"
std::string remarksInWords(const std::vector<std::string>& remarks)
{
    std::string words;
    for (const std::string& remark : remarks) {
        words += (words.empty() ? " [" : ", ") + remark;
    }
    return words.empty() ? words : words + "]";
}

// " (+0.412 ms)"
std::string delayInWords(std::chrono::nanoseconds delay)
{
    char words[40];
    std::snprintf(words, sizeof words, " (+%.3f ms)", static_cast<double>(delay.count()) / 1e6);
    return words;
}

// " | 00 07 00"
std::string bytesInWords(const unsigned char* bytes, std::size_t size)
{
    static const char kDigits[] = "0123456789abcdef";
    std::string words = " |";
    words.reserve(words.size() + 3 * size);
    for (std::size_t i = 0; i < size; ++i) {
        words += ' ';
        words += kDigits[bytes[i] >> 4];
        words += kDigits[bytes[i] & 0xF];
    }
    return words;
}

} // namespace

std::string wordsAndRemarks(const TraceLine& line)
{
    return line.words + remarksInWords(line.remarks);
}

std::string traceLine(const TraceLine& line)
{
    std::string text = utcInWords(line.at) + ' ' + line.who + ' ' + static_cast<char>(line.way) +
                       ' ' + wordsAndRemarks(line);
    if (line.hasRequest) {
        text += delayInWords(line.sinceRequest);
    }
    if (line.bytes != nullptr) {
        text += bytesInWords(line.bytes, line.size);
    }
    return text;
}

} // namespace wire
} // namespace tavmir
