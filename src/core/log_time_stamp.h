// The time stamp of the debug log file. Private.
#ifndef TAVMIR_CORE_LOG_TIME_STAMP_H
#define TAVMIR_CORE_LOG_TIME_STAMP_H

#include <QtCore/QDateTime>
#include <QtCore/QString>

namespace tavmir {

// "2026.11.16.07:05:09.45": date, time and the plain number of milliseconds, which Qt's own
// date formats write differently from one major version to the next.
QString logTimeStamp(const QDateTime& when);

} // namespace tavmir

#endif
