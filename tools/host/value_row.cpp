// Values as text.
#include "value_row.h"

#include "project/raw_address.h"
#include "project/value_format.h"

#include <QtCore/QDateTime>

#include <algorithm>

namespace tavmir::host
{

ValueRow rowOf(const PolledElement& variable, const QByteArray& bytes, qint64 ageMs)
{
    ValueRow row;
    row.name = variable.name;
    row.address = project::shownAddress(variable.element);
    row.format = variable.format;
    row.value = project::decodeValue(variable.element, variable.format, bytes);
    row.ageMs = ageMs;
    row.quality = Quality::good;
    return row;
}

ValueRow rowWithout(const PolledElement& variable, const ValueQuality& quality)
{
    ValueRow row;
    row.name = variable.name;
    row.address = project::shownAddress(variable.element);
    row.format = variable.format;
    row.quality = quality.quality;
    row.reason = quality.reason;
    return row;
}

ValueRow rowOf(const ValueFold& values, size_t place, Clock::time_point now)
{
    const PolledElement& variable = values.variables()[place];
    const FoldedValue value = values.value(place);
    const ValueQuality quality = values.quality(place, now);
    if (!value.readAt) {
        return rowWithout(variable, quality);
    }
    const auto age = std::chrono::duration_cast<std::chrono::milliseconds>(now - *value.readAt);
    ValueRow row = rowOf(variable, value.bytes, std::max<qint64>(0, age.count()));
    row.quality = quality.quality;
    row.reason = quality.reason;
    return row;
}

std::vector<ValueRow> rowsOf(const ValueFold& values, Clock::time_point now)
{
    std::vector<ValueRow> rows;
    rows.reserve(values.variables().size());
    for (size_t i = 0; i < values.variables().size(); ++i) {
        rows.push_back(rowOf(values, i, now));
    }
    return rows;
}

QString utcText(WallClock::time_point time)
{
    const auto ms =
        std::chrono::duration_cast<std::chrono::milliseconds>(time.time_since_epoch()).count();
    return QDateTime::fromMSecsSinceEpoch(ms, Qt::UTC).toString(Qt::ISODateWithMs);
}

} // namespace tavmir::host
