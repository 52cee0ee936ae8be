// The words.
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

} // namespace tavmir::host
