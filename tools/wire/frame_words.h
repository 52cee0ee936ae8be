// Frames as readable lines.
#ifndef TAVMIR_WIRE_FRAME_WORDS_H
#define TAVMIR_WIRE_FRAME_WORDS_H

#include "frame_decoder.h"

#include <functional>
#include <string>

namespace tavmir
{
namespace wire
{

// One element as it stands in a frame.
struct ElementInFrame {
    std::uint32_t address;
    int bits;
    std::uint32_t value; // 0 where the frame has none
};

// What elements are called, and what their value means.
struct ElementsInWords {
    std::string name;
    std::string value;
    std::size_t elements = 1; // of which this speaks: those of a text follow each other
};

// Speaks of the first of `count` elements, and of those behind it that are one value with it.
typedef std::function<ElementsInWords(const ElementInFrame* first, std::size_t count)>
    DescribeElements;

// When nothing better is known: the address and the number.
ElementsInWords elementInWords(const ElementInFrame& element);

// "3 (illegal data value)"; the number alone when it is not known.
std::string exceptionInWords(std::uint8_t code);

// What any frame begins with: "#7 station 1 write words", of an exception reply the function that
// was asked for.
std::string titleInWords(const FrameView& frame);

// "#7 station 1 write words: Main.W=4660, 116=1". Any bytes can be shown; what makes no sense is
// counted in bytes.
std::string requestInWords(const unsigned char* bytes, std::size_t size,
                           const DescribeElements& describe);

// The same of a reply: "#7 station 1 read words: Main.W=4660", "#7 station 1 write words: 2 done",
// "#7 station 1 read words: exception 3 (illegal data value)".
std::string replyInWords(const unsigned char* bytes, std::size_t size,
                         const DescribeElements& describe);

} // namespace wire
} // namespace tavmir

#endif
