// Styles and marks.
#include "picture.h"

namespace tavmir::host
{

Style styleOf(Quality quality)
{
    switch (quality) {
    case Quality::never:
        return Style::never;
    case Quality::good:
        return Style::plain;
    case Quality::stale:
        return Style::stale;
    case Quality::bad:
        return Style::bad;
    case Quality::unconfirmed:
        return Style::unconfirmed;
    }
    return Style::plain;
}

char markOf(Quality quality)
{
    const char mark = *qualityMark(quality);
    return mark == '\0' ? ' ' : mark;
}

} // namespace tavmir::host
