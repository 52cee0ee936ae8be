// What a screen shows: lines of texts, each in one style.
#ifndef TAVMIR_TERMINAL_PICTURE_H
#define TAVMIR_TERMINAL_PICTURE_H

#include "feed/quality.h"

#include <QtCore/QString>

#include <optional>
#include <vector>

namespace tavmir::host
{

enum class Style { plain, strong, heading, hint, stale, bad, unconfirmed, never };

struct Span {
    QString text;
    Style style = Style::plain;
};

using PictureLine = std::vector<Span>;

struct ScreenSize {
    int lines = 24;
    int columns = 80;

    bool operator==(const ScreenSize& other) const
    {
        return lines == other.lines && columns == other.columns;
    }
};

struct Picture {
    std::vector<PictureLine> lines; // not more than the screen has, none wider
    std::optional<int> cursor;      // its column in the last line; none: hidden
};

// How a value of that quality is drawn, and the mark in front of it, which needs no colour.
Style styleOf(Quality quality);
char markOf(Quality quality);

} // namespace tavmir::host

#endif
