// Walks JSON bytes once, keeping the open objects' keys on a stack.
#include "json_scan.h"

#include <QtCore/QSet>

#include <algorithm>
#include <vector>

namespace tavmir::project
{

namespace
{

struct Level {
    bool isObject = false;
    bool keyNext = false;
    QSet<QByteArray> keys;
};

// Offset behind the closing quote of the string that opens at `start`, or the end of the text.
int stringEnd(const QByteArray& text, int start)
{
    for (int i = start + 1; i < text.size(); ++i) {
        if (text.at(i) == '\\') {
            ++i;
        } else if (text.at(i) == '"') {
            return i + 1;
        }
    }
    return text.size();
}

} // namespace

TextPlace placeOf(const QByteArray& text, int offset)
{
    TextPlace place;
    const int end = std::min(offset, static_cast<int>(text.size()));
    for (int i = 0; i < end; ++i) {
        ++place.column;
        if (text.at(i) == '\n') {
            ++place.line;
            place.column = 1;
        }
    }
    return place;
}

JsonScan scanJson(const QByteArray& text, int maxNesting)
{
    std::vector<Level> levels;
    for (int i = 0; i < text.size(); ++i) {
        const char character = text.at(i);
        switch (character) {
        case '{':
        case '[':
            if (static_cast<int>(levels.size()) == maxNesting) {
                return {i, QString("nested deeper than %1 levels").arg(maxNesting)};
            }
            levels.push_back({character == '{', character == '{', {}});
            break;
        case '}':
        case ']':
            if (!levels.empty()) {
                levels.pop_back();
            }
            break;
        case ',':
            if (!levels.empty()) {
                levels.back().keyNext = levels.back().isObject;
            }
            break;
        case '"': {
            const int end = stringEnd(text, i);
            if (!levels.empty() && levels.back().keyNext) {
                const QByteArray key = text.mid(i + 1, std::max(0, end - i - 2));
                if (levels.back().keys.contains(key)) {
                    return {i, QString("key \"%1\" is given twice").arg(QString::fromUtf8(key))};
                }
                levels.back().keys.insert(key);
                levels.back().keyNext = false;
            }
            i = end - 1;
            break;
        }
        default:
            break;
        }
    }
    return {};
}

} // namespace tavmir::project
