// The closing statistics of a run.
#ifndef TAVMIR_HOST_STATISTICS_REPORT_H
#define TAVMIR_HOST_STATISTICS_REPORT_H

#include "session/host_session.h"

#include <QtCore/QJsonObject>
#include <QtCore/QStringList>

namespace tavmir::host
{

// seconds  that the cycle has run
QStringList statisticsLines(HostSession& session, double seconds);
QJsonObject statisticsJson(HostSession& session, double seconds);

} // namespace tavmir::host

#endif
