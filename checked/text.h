// Small makers of the texts in reports. Private.
#ifndef TAVMIR_CHECKED_TEXT_H
#define TAVMIR_CHECKED_TEXT_H

#include <QtCore/QByteArray>
#include <QtCore/QString>

#include <string>

namespace tavmir
{
namespace checked
{

// As printf; cut at 1000 characters.
std::string text(const char* format, ...) __attribute__((format(printf, 1, 2)));

// In double quotes, as UTF-8; control characters become '?', so that a block keeps its lines.
std::string quoted(const QString& words);

// "00 01 00 00"; no more than the first `most` bytes, and then how many there are.
std::string hexBytes(const QByteArray& bytes, int most = 64);

} // namespace checked
} // namespace tavmir

#endif
