#include "core/log_time_stamp.h"

#include <cstdio>

namespace tavmir
{

QByteArray logTimeStamp(const QDateTime& when)
{
    const QDate date = when.date();
    const QTime time = when.time();
    char text[64];
    std::snprintf(text, sizeof text, "%04d.%02d.%02d.%02d:%02d:%02d.%d", date.year(), date.month(),
                  date.day(), time.hour(), time.minute(), time.second(), time.msec());
    return text;
}

} // namespace tavmir
