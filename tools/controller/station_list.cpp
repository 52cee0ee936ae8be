#include "station_list.h"

#include <QtCore/QStringList>

namespace tavmir::controller
{

namespace
{

// -1: not one.
int stationNumber(const QString& text)
{
    bool isNumber = false;
    const int number = text.toInt(&isNumber);
    return isNumber && number >= 0 && number <= 255 ? number : -1;
}

} // namespace

std::optional<Stations> parseStations(const QString& text)
{
    Stations stations;
    for (const QString& part : text.split(',')) {
        const int first = stationNumber(part.section('-', 0, 0));
        const int last = part.contains('-') ? stationNumber(part.section('-', 1)) : first;
        if (first < 0 || last < first) {
            return std::nullopt;
        }
        for (int station = first; station <= last; ++station) {
            stations.set(static_cast<std::size_t>(station));
        }
    }
    return stations;
}

} // namespace tavmir::controller
