// The time stamp of the log file: the same bytes under every Qt.
#include "core/log_time_stamp.h"

#include "support/qt_printers.h"

#include <gtest/gtest.h>

namespace
{

QByteArray stampOf(int milliseconds)
{
    return tavmir::logTimeStamp(QDateTime(QDate(2026, 11, 16), QTime(7, 5, 9, milliseconds)));
}

TEST(LogTimeStamp, MillisecondsHaveNoLeadingZeros)
{
    EXPECT_EQ(stampOf(45), QByteArray("2026.11.16.07:05:09.45"));
    EXPECT_EQ(stampOf(5), QByteArray("2026.11.16.07:05:09.5"));
    EXPECT_EQ(stampOf(123), QByteArray("2026.11.16.07:05:09.123"));
}

TEST(LogTimeStamp, MillisecondsKeepTheirTrailingZeros)
{
    EXPECT_EQ(stampOf(0), QByteArray("2026.11.16.07:05:09.0"));
    EXPECT_EQ(stampOf(50), QByteArray("2026.11.16.07:05:09.50"));
    EXPECT_EQ(stampOf(100), QByteArray("2026.11.16.07:05:09.100"));
    EXPECT_EQ(stampOf(120), QByteArray("2026.11.16.07:05:09.120"));
    EXPECT_EQ(stampOf(999), QByteArray("2026.11.16.07:05:09.999"));
}

TEST(LogTimeStamp, DateAndTimeFillTheirPlaces)
{
    const QDateTime when(QDate(2001, 2, 3), QTime(23, 0, 59, 7));
    EXPECT_EQ(tavmir::logTimeStamp(when), QByteArray("2001.02.03.23:00:59.7"));
}

} // namespace
