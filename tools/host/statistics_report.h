// The closing statistics of a run. Each figure has one label: the lines show it as it is, the JSON
// object has it as its key, in camelCase.
#ifndef TAVMIR_HOST_STATISTICS_REPORT_H
#define TAVMIR_HOST_STATISTICS_REPORT_H

#include "feed/line_figures.h"

#include <QtCore/QJsonObject>
#include <QtCore/QStringList>

namespace tavmir::host
{

// The key of a label: "requests lost with a connection" is "requestsLostWithAConnection".
QString statisticsKey(const QString& label);

// seconds   that the cycle has run
// elements  on the wire that are polled
QStringList statisticsLines(const LineFigures& figures, double seconds, size_t elements);
QJsonObject statisticsJson(const LineFigures& figures, double seconds, size_t elements);

} // namespace tavmir::host

#endif
