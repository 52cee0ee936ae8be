// The stations behind the controller, from a text: "1,2" or "1-4,9".
#ifndef TAVMIR_CONTROLLER_STATION_LIST_H
#define TAVMIR_CONTROLLER_STATION_LIST_H

#include <QtCore/QString>

#include <bitset>
#include <optional>

namespace tavmir::controller
{

using Stations = std::bitset<256>;

// Numbers from 0 to 255 and ranges of them. Nothing when the text is anything else.
std::optional<Stations> parseStations(const QString& text);

} // namespace tavmir::controller

#endif
