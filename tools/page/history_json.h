// The past of one value, as a trend draws it.
#ifndef TAVMIR_PAGE_HISTORY_JSON_H
#define TAVMIR_PAGE_HISTORY_JSON_H

#include "history_source.h"

#include <string>

namespace tavmir::host
{

// An older piece followed by a newer one, which knows everything from `border` on.
HistoryPiece joined(HistoryPiece older, const HistoryPiece& newer, qint64 border);

struct HistoryFacts {
    QString address;
    qint64 from = 0; // milliseconds since 1970
    qint64 to = 0;
    const char* source = "memory"; // "recording", "both"
    bool isBit = false;
    std::string events = "[]"; // JSON
};

// {"address","from","to","oldest","source","isBit","t","min","max","last","gaps","events"}
std::string historyJson(const HistoryFacts& facts, const HistoryPiece& piece);

} // namespace tavmir::host

#endif
