#include "checked/text.h"

#include <cstdarg>
#include <cstdio>

namespace tavmir
{
namespace checked
{

std::string text(const char* format, ...)
{
    char line[1001];
    va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(line, sizeof line, format, arguments);
    va_end(arguments);
    return line;
}

std::string quoted(const QString& words)
{
    const QByteArray bytes = words.toUtf8();
    std::string result = "\"";
    for (int i = 0; i < bytes.size(); ++i) {
        const unsigned char byte = static_cast<unsigned char>(bytes.at(i));
        result += byte < 0x20 || byte == 0x7F ? '?' : bytes.at(i);
    }
    return result + '"';
}

std::string hexBytes(const QByteArray& bytes, int most)
{
    std::string result;
    const int shown = qMin(bytes.size(), most);
    for (int i = 0; i < shown; ++i) {
        result += text(i == 0 ? "%02X" : " %02X", static_cast<unsigned char>(bytes.at(i)));
    }
    if (shown < bytes.size()) {
        result += text(" … (%d bytes)", bytes.size());
    }
    return shown == 0 ? "none" : result;
}

} // namespace checked
} // namespace tavmir
