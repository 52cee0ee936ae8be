// The words and marks.
#include "quality.h"

namespace tavmir::host
{

const char* qualityWord(Quality quality)
{
    switch (quality) {
    case Quality::never:
        return "never";
    case Quality::good:
        return "good";
    case Quality::stale:
        return "stale";
    case Quality::bad:
        return "bad";
    case Quality::unconfirmed:
        return "unconfirmed";
    }
    return "";
}

const char* qualityMark(Quality quality)
{
    switch (quality) {
    case Quality::never:
    case Quality::good:
        break;
    case Quality::stale:
        return "~";
    case Quality::bad:
        return "!";
    case Quality::unconfirmed:
        return "?";
    }
    return "";
}

} // namespace tavmir::host
