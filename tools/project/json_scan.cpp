// Walks JSON bytes once, keeping the open objects' keys on a stack.
#include "json_scan.h"

#include "json_object.h"

#include <QtCore/QSet>

#include <algorithm>
#include <optional>
#include <vector>

namespace tavmir::project
{

namespace
{

struct Level {
    bool isObject = false;
    bool keyNext = false;
    int offset = 0; // where it begins
    QSet<QByteArray> keys;
};

bool isBlank(char character)
{
    return character == ' ' || character == '\t' || character == '\n' || character == '\r';
}

// A digit or letter, or what else belongs to numbers and words.
bool isInWord(char character)
{
    return !isBlank(character) && QByteArray("{}[],:\"").indexOf(character) < 0;
}

// Offset behind the closing quote of the string that opens at `start`; none: it is not closed.
std::optional<int> stringEnd(const QByteArray& text, int start)
{
    for (int i = start + 1; i < text.size(); ++i) {
        if (text.at(i) == '\\') {
            ++i;
        } else if (text.at(i) == '"') {
            return i + 1;
        }
    }
    return std::nullopt;
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

int endOfText(const QByteArray& text)
{
    int end = text.size();
    while (end > 0 && isBlank(text.at(end - 1))) {
        --end;
    }
    return end;
}

JsonScan scanJson(const QByteArray& text, int maxNesting)
{
    JsonScan scan;
    std::vector<Level> levels;
    bool isPaired = true; // no bracket has met one of another kind so far
    for (int i = 0; i < text.size(); ++i) {
        const char character = text.at(i);
        const bool goesOn = isInWord(character) && i > 0 && isInWord(text.at(i - 1));
        if (!isBlank(character) && !goesOn) {
            scan.lastToken = i;
        }
        switch (character) {
        case '{':
        case '[':
            if (static_cast<int>(levels.size()) == maxNesting) {
                scan.offset = i;
                scan.problem = QString("nested deeper than %1 levels").arg(maxNesting);
                return scan;
            }
            levels.push_back({character == '{', character == '{', i, {}});
            break;
        case '}':
        case ']':
            isPaired = isPaired && !levels.empty() && levels.back().isObject == (character == '}');
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
            const std::optional<int> end = stringEnd(text, i);
            if (!end) {
                scan.openOffset = isPaired ? i : -1;
                scan.openKind = "a text";
                return scan;
            }
            if (!levels.empty() && levels.back().keyNext) {
                const QByteArray key = text.mid(i + 1, *end - i - 2);
                if (levels.back().keys.contains(key)) {
                    scan.offset = i;
                    scan.problem =
                        QString("key %1 is given twice").arg(quoted(QString::fromUtf8(key)));
                    return scan;
                }
                levels.back().keys.insert(key);
                levels.back().keyNext = false;
            }
            i = *end - 1;
            break;
        }
        default:
            break;
        }
    }
    if (isPaired && !levels.empty()) {
        scan.openOffset = levels.back().offset;
        scan.openKind = levels.back().isObject ? "an object" : "a list";
    }
    return scan;
}

} // namespace tavmir::project
