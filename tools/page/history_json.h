// The past of one value, as a trend draws it.
#ifndef TAVMIR_PAGE_HISTORY_JSON_H
#define TAVMIR_PAGE_HISTORY_JSON_H

#include "history_source.h"
#include "page_content.h"

#include <string>

namespace tavmir::host
{

// What is asked of the past.
struct HistoryQuestion {
    QString problem; // not empty: it cannot be answered
    QString address;
    qint64 from = 0;
    qint64 to = 0;
    size_t points = 0;

    // The part of the points that a part of the time gets.
    size_t share(qint64 ms) const;
};

// "address", "from", "to", "points"; a minute until now where they are left out.
HistoryQuestion historyQuestion(const page::Query& query, qint64 now);

// An older piece followed by a newer one, which knows everything from `border` on.
HistoryPiece joined(HistoryPiece older, const HistoryPiece& newer, qint64 border);

struct HistoryFacts {
    QString address;
    qint64 from = 0; // milliseconds since 1970
    qint64 to = 0;
    const char* source = "memory"; // "recording", "both"
    bool isBit = false;
};

// {"address","from","to","oldest","source","isBit","t","min","max","last","gaps","events"}
std::string historyJson(const HistoryFacts& facts, const HistoryPiece& piece);

} // namespace tavmir::host

#endif
