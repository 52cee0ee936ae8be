// The text of a diagnostic line, put together by the debug stream's documented rule: every item
// is followed by one blank; strings and byte arrays stand in double quotes, numbers in decimal,
// plain texts as they are.
#ifndef TAVMIR_TESTS_MODEL_LINE_TEXT_H
#define TAVMIR_TESTS_MODEL_LINE_TEXT_H

#include "model/model_records.h"

#include <string>

namespace tavmir::model
{

// Which major version's stream: 4 keeps the blank after the last item and prints strings raw;
// 5 takes that blank back and escapes.
enum class Stream { Qt4, Qt5 };

class LineText
{
public:
    // Begins with the items that every line has.
    LineText(Stream stream, const char* file, const char* function, int line, const char* level);

    LineText& plain(const char* ascii);
    LineText& number(std::int32_t value);
    LineText& quoted(const Text& text);
    LineText& quotedList(const std::vector<Text>& texts);
    LineText& quotedHex(const Bytes& bytes);

    Text finished() const;

private:
    Text inQuotes(const Text& text) const;

    Stream stream_;
    Text text_;
};

// ASCII to Text.
Text textOf(const std::string& ascii);

} // namespace tavmir::model

#endif
