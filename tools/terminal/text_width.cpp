// wcwidth, and what to do about what it does not know.
#include "text_width.h"

#include <QtCore/QVector>

#include <algorithm>
#include <cwchar>

namespace tavmir::host
{

namespace
{

constexpr uint kLastAscii = 0x7e;

// -1: cannot be drawn.
int widthOfOne(uint character)
{
    if (character >= ' ' && character <= kLastAscii) {
        return 1;
    }
    return ::wcwidth(static_cast<wchar_t>(character));
}

QString textOf(const QVector<uint>& characters, int from, int count)
{
    return QString::fromUcs4(characters.constData() + from, count);
}

QString either(ushort wanted, char instead)
{
    return widthOfOne(wanted) == 1 ? QString(QChar(wanted)) : QString(QChar(instead));
}

} // namespace

QString drawable(const QString& text)
{
    const auto isPlain = [](QChar one) { return one >= ' ' && one.unicode() <= kLastAscii; };
    if (std::all_of(text.begin(), text.end(), isPlain)) {
        return text;
    }
    QVector<uint> characters = text.toUcs4();
    for (uint& character : characters) {
        character = widthOfOne(character) < 0 ? uint('?') : character;
    }
    return textOf(characters, 0, characters.size());
}

int widthOf(const QString& text)
{
    int width = 0;
    for (const uint character : text.toUcs4()) {
        width += std::max(0, widthOfOne(character));
    }
    return width;
}

QString cutAtEnd(const QString& text, int width)
{
    if (widthOf(text) <= width) {
        return text;
    }
    const QVector<uint> characters = text.toUcs4();
    int room = width - widthOf(ellipsis());
    int count = 0;
    while (count < characters.size() && room >= widthOfOne(characters[count])) {
        room -= widthOfOne(characters[count]);
        ++count;
    }
    return width > 0 ? textOf(characters, 0, count) + ellipsis() : QString();
}

QString cutAtStart(const QString& text, int width)
{
    if (widthOf(text) <= width) {
        return text;
    }
    const QVector<uint> characters = text.toUcs4();
    int room = width - widthOf(ellipsis());
    int first = characters.size();
    while (first > 0 && room >= widthOfOne(characters[first - 1])) {
        --first;
        room -= widthOfOne(characters[first]);
    }
    while (first < characters.size() && widthOfOne(characters[first]) == 0) {
        ++first; // what it combines with is gone
    }
    return width > 0 ? ellipsis() + textOf(characters, first, characters.size() - first)
                     : QString();
}

QString fitted(const QString& text, int width)
{
    const QString cut = cutAtEnd(text, width);
    return cut + QString(std::max(0, width - widthOf(cut)), ' ');
}

QString fittedRight(const QString& text, int width)
{
    const QString cut = cutAtEnd(text, width);
    return QString(std::max(0, width - widthOf(cut)), ' ') + cut;
}

QString ellipsis()
{
    return either(0x2026, '~');
}

QString nothingRead()
{
    return either(0x2013, '-');
}

} // namespace tavmir::host
