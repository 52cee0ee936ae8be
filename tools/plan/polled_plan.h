// What is polled: the project's polled entries as single elements, in the order in which they
// are shown, and as the records that the driver takes.
#ifndef TAVMIR_PLAN_POLLED_PLAN_H
#define TAVMIR_PLAN_POLLED_PLAN_H

#include "project/address_resolver.h"
#include "tavmir_kx_tcp/host_interface.h"

#include <vector>

namespace tavmir::host
{

struct PolledElement {
    project::Element element;
    project::Format format = project::Format::automatic; // fits the element
    QString name;
    int station = 0;
};

// The driver's three classes of values, in the order in which it polls them.
enum class ValueClass { bits, words, doubleWords };

ValueClass valueClassOf(const project::Element& element);

// One element on the wire, as the driver files it: its class and bit address.
struct WireElement {
    ValueClass valueClass = ValueClass::bits;
    qint32 address = 0; // as the driver orders it, signed

    bool operator<(const WireElement& other) const
    {
        return valueClass != other.valueClass ? valueClass < other.valueClass
                                              : address < other.address;
    }
    bool operator==(const WireElement& other) const
    {
        return valueClass == other.valueClass && address == other.address;
    }
};

// The elements on the wire that one value takes, ascending.
std::vector<WireElement> wireElements(const project::Element& element);

// All polled elements of a checked project.
std::vector<PolledElement> polledElements(const project::Project& project);

// The records for ReCreatReadVarList.
QList<HOSTVAR> hostRecords(const std::vector<PolledElement>& polled);

// The driver's polled list, ascending and without duplicates.
std::vector<WireElement> wireOrder(const std::vector<PolledElement>& polled);

} // namespace tavmir::host

#endif
