// The time stamp of the debug log file. Private.
#ifndef TAVMIR_CORE_LOG_TIME_STAMP_H
#define TAVMIR_CORE_LOG_TIME_STAMP_H

#include <QtCore/QByteArray>
#include <QtCore/QDateTime>

namespace tavmir
{

// "2026.11.16.07:05:09.45": date, time and the plain number of milliseconds. Not by Qt's date
// formats: they write milliseconds differently from one major version to the next, and digits
// as the locale has them.
QByteArray logTimeStamp(const QDateTime& when);

} // namespace tavmir

#endif
