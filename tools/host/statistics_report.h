// The closing statistics of a run.
#ifndef TAVMIR_HOST_STATISTICS_REPORT_H
#define TAVMIR_HOST_STATISTICS_REPORT_H

#include "feed/line_figures.h"

#include <QtCore/QJsonObject>
#include <QtCore/QStringList>

namespace tavmir::host
{

// seconds   that the cycle has run
// elements  on the wire that are polled
QStringList statisticsLines(const LineFigures& figures, double seconds, size_t elements);
QJsonObject statisticsJson(const LineFigures& figures, double seconds, size_t elements);

} // namespace tavmir::host

#endif
