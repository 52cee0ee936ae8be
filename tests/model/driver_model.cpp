// Set-up, stations, and what every file of the model uses.
#include "model/driver_model.h"

namespace tavmir::model
{

void DriverModel::emit(const LineText& text)
{
    Event event;
    event.line = text.finished();
    events.push_back(event);
}

void DriverModel::report(Event::Kind kind, std::array<std::int32_t, 4> numbers)
{
    Event event;
    event.kind = kind;
    event.numbers = numbers;
    events.push_back(event);
    if (callbackReadAddress.empty()) {
        return;
    }
    Event read;
    read.kind = Event::CallbackRead;
    std::vector<Event> before;
    before.swap(events);
    read.numbers[0] = getRegisterData(callbackReadAddress, read.bytes, 2);
    before.insert(before.end(), events.begin(), events.end());
    events.swap(before);
    events.push_back(read);
}

void DriverModel::setComInfo()
{
    com[HostWord10] = 0;
    com[HostWord13] = 0;
}

void DriverModel::passVarNames(const std::vector<Label>& labels)
{
    for (const Label& label : labels) {
        labelTable[label.name] = label;
    }
}

int DriverModel::resolve(const Text& address, Resolved& resolved)
{
    AddressModel parser(labelTable, stream_);
    const int result = parser.resolve(address);
    resolved = parser.resolved;
    for (const Text& text : parser.lines) {
        Event event;
        event.line = text;
        events.push_back(event);
    }
    return result;
}

void DriverModel::enableStation(int station, int enable)
{
    if (station < 0) {
        disabledStations.clear();
    } else if (enable == 0) {
        disabledStations.insert(station);
    } else if (enable == 1) {
        disabledStations.erase(station);
    }
}

int DriverModel::sizeOfType(int dataType)
{
    switch (dataType) {
    case 1:
        return 5;
    case 6:
    case 7:
        return 8;
    default:
        return 6;
    }
}

int DriverModel::effectiveStation(int own) const
{
    return com[StationMode] == 0 ? com[DefaultStation] : own;
}

} // namespace tavmir::model
