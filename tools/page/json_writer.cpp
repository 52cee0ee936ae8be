// Characters into bytes.
#include "json_writer.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdlib>

namespace tavmir::host
{

namespace
{

constexpr char kDigits[] = "0123456789abcdef";
constexpr uint kReplacement = 0xFFFD;
constexpr double kShortWhole = 1e5;
constexpr uint kLineSeparator = 0x2028;
constexpr uint kParagraphSeparator = 0x2029;

// Stands as it is, in one byte.
bool isPlain(uint character)
{
    return character >= 0x20 && character < 0x7F && character != '"' && character != '\\';
}

// As many of them as can be, by and by in pieces; returns how many.
int appendPlain(std::string& out, const QChar* characters, int size)
{
    char piece[64];
    int done = 0;
    while (done < size && isPlain(characters[done].unicode())) {
        const int most = std::min(size, done + static_cast<int>(sizeof piece));
        size_t length = 0;
        for (; done < most && isPlain(characters[done].unicode()); ++done) {
            piece[length++] = static_cast<char>(characters[done].unicode());
        }
        out.append(piece, length);
    }
    return done;
}

void appendEscape(std::string& out, uint character)
{
    out += "\\u";
    for (int shift = 12; shift >= 0; shift -= 4) {
        out += kDigits[character >> shift & 0xF];
    }
}

void appendUtf8(std::string& out, uint character)
{
    if (character < 0x80) {
        out += static_cast<char>(character);
        return;
    }
    const int more = character < 0x800 ? 1 : character < 0x10000 ? 2 : 3;
    constexpr unsigned kFirst[] = {0, 0xC0, 0xE0, 0xF0};
    out += static_cast<char>(kFirst[more] | character >> (6 * more));
    for (int i = more - 1; i >= 0; --i) {
        out += static_cast<char>(0x80 | (character >> (6 * i) & 0x3F));
    }
}

void appendCharacter(std::string& out, uint character)
{
    const bool ends = character == kLineSeparator || character == kParagraphSeparator;
    if (character < 0x20 || character == 0x7F || ends) {
        appendEscape(out, character);
    } else if (character == '"' || character == '\\') {
        out += '\\';
        out += static_cast<char>(character);
    } else {
        appendUtf8(out, character);
    }
}

template <typename Number> void appendNumber(std::string& out, Number number)
{
    char text[32];
    const std::to_chars_result end = std::to_chars(text, text + sizeof text, number);
    out.append(text, static_cast<size_t>(end.ptr - text));
}

} // namespace

void appendJsonText(std::string& out, const QString& text)
{
    out += '"';
    const int size = text.size();
    const QChar* characters = text.constData();
    for (int i = appendPlain(out, characters, size); i < size; ++i) {
        const QChar character = characters[i];
        if (isPlain(character.unicode())) {
            out += static_cast<char>(character.unicode());
            continue;
        }
        if (!character.isSurrogate()) {
            appendCharacter(out, character.unicode());
        } else if (character.isHighSurrogate() && i + 1 < size &&
                   characters[i + 1].isLowSurrogate()) {
            appendUtf8(out, QChar::surrogateToUcs4(character, characters[i + 1]));
            ++i;
        } else {
            appendUtf8(out, kReplacement);
        }
    }
    out += '"';
}

JsonWriter& JsonWriter::open(char bracket)
{
    separate();
    out_ += bracket;
    isFirst_ = true;
    return *this;
}

JsonWriter& JsonWriter::close(char bracket)
{
    out_ += bracket;
    isFirst_ = false;
    return *this;
}

JsonWriter& JsonWriter::key(const char* name)
{
    separate();
    out_ += '"';
    out_ += name;
    out_ += "\":";
    isFirst_ = true;
    return *this;
}

JsonWriter& JsonWriter::text(const QString& text)
{
    separate();
    appendJsonText(out_, text);
    return *this;
}

JsonWriter& JsonWriter::word(const char* word)
{
    separate();
    out_ += '"';
    out_ += word;
    out_ += '"';
    return *this;
}

JsonWriter& JsonWriter::number(double number)
{
    if (!std::isfinite(number)) {
        return null();
    }
    separate();
    // So short a whole number has no shorter text than its digits, which are found faster so.
    const int whole = std::abs(number) < kShortWhole ? static_cast<int>(number) : 0;
    if (whole != 0 && static_cast<double>(whole) == number) {
        appendNumber(out_, whole);
    } else {
        appendNumber(out_, number);
    }
    return *this;
}

JsonWriter& JsonWriter::number(const std::optional<double>& number)
{
    return number ? this->number(*number) : null();
}

JsonWriter& JsonWriter::whole(qint64 number)
{
    separate();
    appendNumber(out_, number);
    return *this;
}

JsonWriter& JsonWriter::boolean(bool truth)
{
    return raw(truth ? "true" : "false");
}

JsonWriter& JsonWriter::raw(const std::string& json)
{
    separate();
    out_ += json;
    return *this;
}

} // namespace tavmir::host
