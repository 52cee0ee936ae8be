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

// What to call the element of `bits` bits at an address; the address itself when nothing better
// is known.
typedef std::function<std::string(std::uint32_t address, int bits)> ElementName;

// "3 (illegal data value)"; the number alone when it is not known.
std::string exceptionInWords(std::uint8_t code);

// What any frame begins with: "#7 station 1 write words", of an exception reply the function that
// was asked for.
std::string titleInWords(const FrameView& frame);

// "#7 station 1 write words: Main.W=4660, 116=1". Any bytes can be shown; what makes no sense is
// counted in bytes.
std::string requestInWords(const unsigned char* bytes, std::size_t size, const ElementName& name);

// The same of a reply: "#7 station 1 read words: Main.W=4660", "#7 station 1 write words: 2 done",
// "#7 station 1 read words: exception 3 (illegal data value)".
std::string replyInWords(const unsigned char* bytes, std::size_t size, const ElementName& name);

} // namespace wire
} // namespace tavmir

#endif
