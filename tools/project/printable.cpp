// Characters looked at one by one.
#include "printable.h"

#include <algorithm>

namespace tavmir::project
{

QString printable(const QString& text)
{
    const auto isPrint = [](QChar character) {
        const ushort code = character.unicode();
        return (code >= 0x20 && code < 0x7F) || character.isPrint();
    };
    if (std::all_of(text.begin(), text.end(), isPrint)) {
        return text;
    }
    QString shown;
    for (const QChar character : text) {
        shown += character.isPrint() ? QString(character)
                                     : QString("\\x%1").arg(character.unicode(), 2, 16, QChar('0'));
    }
    return shown;
}

} // namespace tavmir::project
