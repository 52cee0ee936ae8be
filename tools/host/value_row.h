// One value as it is shown: beside what it is called, how old it is.
#ifndef TAVMIR_HOST_VALUE_ROW_H
#define TAVMIR_HOST_VALUE_ROW_H

#include "feed/quality.h"
#include "feed/value_fold.h"
#include "project/printable.h"

#include <QtCore/QString>

#include <optional>
#include <vector>

namespace tavmir::host
{

struct ValueRow {
    QString name;
    QString address;
    QString value; // null: never read
    project::Format format = project::Format::automatic;
    std::optional<qint64> ageMs; // none: never read
    Quality quality = Quality::never;
    QString reason = QString(); // why not good; empty of what is good
};

// A good value.
//   bytes  as the driver's calls give them
ValueRow rowOf(const PolledElement& variable, const QByteArray& bytes, qint64 ageMs);

// Of a variable without any value.
ValueRow rowWithout(const PolledElement& variable, const ValueQuality& quality);

// A variable of the fold as it stands at the time.
ValueRow rowOf(const ValueFold& values, size_t place, Clock::time_point now);

// Every variable of the fold as it stands now, in its order.
std::vector<ValueRow> rowsOf(const ValueFold& values, Clock::time_point now);

using project::printable;

// "2026-03-01T12:00:00.123Z"
QString utcText(WallClock::time_point time);

} // namespace tavmir::host

#endif
