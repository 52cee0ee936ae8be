// How things stand, as the page's strip shows it.
#ifndef TAVMIR_PAGE_STATUS_JSON_H
#define TAVMIR_PAGE_STATUS_JSON_H

#include "feed/line_figures.h"
#include "feed/recent_figures.h"

#include <QtCore/QStringList>

#include <string>

namespace tavmir::host
{

struct StatusFacts {
    double now = 0; // milliseconds since 1970, as all times here
    QString version;
    QString project; // file name
    std::string epoch;
    double startedAt = 0;
    QString controller;
    const char* linkState = "never"; // as LiveState says it
    QString linkText;
    double linkSince = 0;
    RecentLine recent = RecentLine();
    quint64 planGeneration = 0; // counts plans: another one, other requests of a pass
    size_t passElements = 0;
    double passRequests = 0;
    const LineFigures* total = nullptr;
    bool writesAllowed = false;
    QStringList writesOnly; // empty: no limit
    QString writesText;
    std::string recording = "null"; // JSON
    std::string replay = "null";    // the same
    quint64 missed = 0;
    qint64 historyFrom = 0;
    size_t historyBytes = 0;
    size_t historyMostBytes = 0;
};

std::string statusJson(const StatusFacts& facts);

} // namespace tavmir::host

#endif
