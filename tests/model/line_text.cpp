#include "model/line_text.h"

namespace tavmir::model
{

Text textOf(const std::string& ascii)
{
    return Text(ascii.begin(), ascii.end());
}

LineText::LineText(Stream stream, const char* file, const char* function, int line,
                   const char* level)
    : stream_(stream)
{
    plain(file).plain(" ").quoted(textOf(function)).plain(" ").number(line).plain(level);
}

LineText& LineText::plain(const char* ascii)
{
    text_ += textOf(ascii) + u" ";
    return *this;
}

LineText& LineText::number(std::int32_t value)
{
    text_ += textOf(std::to_string(value)) + u" ";
    return *this;
}

LineText& LineText::quoted(const Text& text)
{
    text_ += inQuotes(text) + u" ";
    return *this;
}

LineText& LineText::quotedList(const std::vector<Text>& texts)
{
    text_ += u"(";
    for (std::size_t i = 0; i < texts.size(); ++i) {
        text_ += (i == 0 ? u"" : u", ") + inQuotes(texts[i]);
    }
    text_ += u") ";
    return *this;
}

LineText& LineText::quotedHex(const Bytes& bytes)
{
    const char16_t digits[] = u"0123456789ABCDEF";
    text_ += u'"';
    for (const unsigned char byte : bytes) {
        text_ += digits[byte >> 4];
        text_ += digits[byte & 15];
    }
    text_ += u"\" ";
    return *this;
}

Text LineText::finished() const
{
    return stream_ == Stream::Qt4 ? text_ : text_.substr(0, text_.size() - 1);
}

// The texts of the model hold printable characters, quotes, backslashes and tabs.
Text LineText::inQuotes(const Text& text) const
{
    Text printed = u"\"";
    for (const char16_t c : text) {
        if (stream_ == Stream::Qt5 && c == u'\t') {
            printed += u"\\t";
            continue;
        }
        if (stream_ == Stream::Qt5 && (c == u'"' || c == u'\\')) {
            printed += u'\\';
        }
        printed += c;
    }
    return printed + u'"';
}

} // namespace tavmir::model
