// Checks before calls.
#include "host_checks.h"

#include "project/raw_address.h"

namespace tavmir::host
{

using project::Element;

namespace
{

// Bytes of one element on the wire; 0 for types that the driver neither polls nor writes.
int valueBytes(int dataType)
{
    switch (dataType) {
    case 1:
        return 1;
    case 4:
    case 10:
        return 2;
    case 6:
    case 7:
        return 4;
    default:
        return 0;
    }
}

} // namespace

QString refusalOfExchange(const project::Project& project, const Element& element)
{
    if (element.isRaw) {
        const Element known = project::rawElement(element.type, element.address);
        return known.addressText == element.addressText
                   ? QString()
                   : QString("%1 is not what it stands for").arg(element.addressText);
    }
    const project::Resolution resolution = project::resolveAddress(project, element.addressText);
    if (!resolution.ok) {
        return resolution.problem;
    }
    if (resolution.element.type != element.type || resolution.element.address != element.address ||
        resolution.element.words != element.words) {
        return QString("%1 is not what the project says").arg(element.addressText);
    }
    return QString();
}

QString refusalOfPolling(const project::Project& project, const std::vector<PolledElement>& polled)
{
    const PolledElement* firstOfClass[3] = {nullptr, nullptr, nullptr};
    for (const PolledElement& entry : polled) {
        const QString refusal = refusalOfExchange(project, entry.element);
        if (!refusal.isEmpty()) {
            return refusal;
        }
        const PolledElement*& first = firstOfClass[static_cast<int>(elementClassOf(entry.element))];
        if (first == nullptr) {
            first = &entry;
        }
        if (project.connection.ownStations && entry.station != first->station) {
            return QString("%1 of station %2 and %3 of station %4 would share a request, which "
                           "carries one station only")
                .arg(first->element.addressText)
                .arg(first->station)
                .arg(entry.element.addressText)
                .arg(entry.station);
        }
    }
    return QString();
}

QString refusalOfWriteRecord(const RW_VAR* record)
{
    if (record == nullptr) {
        return "there is no record";
    }
    const int bytes = valueBytes(record->dataType);
    if (bytes == 0) {
        return QString("type %1 cannot be written").arg(record->dataType);
    }
    if (record->value.size() < bytes) {
        return QString("a value of %1 bytes is too short for type %2")
            .arg(record->value.size())
            .arg(record->dataType);
    }
    return record->hostData2 == 0 ? "hostData2 is 0: the acknowledgement would be decoded"
                                  : QString();
}

} // namespace tavmir::host
