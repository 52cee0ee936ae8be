// What is polled: the project's polled entries as single elements, in the order in which they
// are shown, and as the records that the driver takes.
#ifndef TAVMIR_PLAN_POLLED_PLAN_H
#define TAVMIR_PLAN_POLLED_PLAN_H

#include "wire_element.h"

#include "tavmir_kx_tcp/host_interface.h"

#include <vector>

namespace tavmir::host
{

struct PolledElement {
    project::Element element;
    project::Format format = project::Format::automatic; // fits the element
    bool formatIsGiven = false;                          // by the polled entry
    QString name;
    int station = 0; // at which the driver asks for it
};

// All polled elements of a checked project.
std::vector<PolledElement> polledElements(const project::Project& project);

// The records for ReCreatReadVarList.
QList<HOSTVAR> hostRecords(const std::vector<PolledElement>& polled);

// The driver's polled list, ascending and without duplicates; of two entries for one place the
// later one counts, as in the driver.
std::vector<WireElement> wireOrder(const std::vector<PolledElement>& polled);

} // namespace tavmir::host

#endif
