// What a host must never hand to the driver: calls that it would not return from, or that
// would make it send or store something else than was meant. Each function says in words what
// is wrong; an empty text means that the call may be made.
#ifndef TAVMIR_PLAN_HOST_CHECKS_H
#define TAVMIR_PLAN_HOST_CHECKS_H

#include "polled_plan.h"
#include "project/project_model.h"

namespace tavmir::host
{

// For ReCreatReadVarList, which keeps its lock for ever when a variable's type is not 1, 4, 6,
// 7 or 10. With `stationMode` "own" each class of values must be polled from one station: a
// request carries one station only.
QString refusalOfPolling(const project::Project& project, const std::vector<PolledElement>& polled);

// For AddListOnceReadVar, GetRegisterData and SetRegisterData.
QString refusalOfExchange(const project::Project& project, const project::Element& element);

// For AddListWriteVar: null, a type without a write encoding, a value that is too short, or
// `hostData2` 0, with which the driver would decode the acknowledgement as values.
QString refusalOfWriteRecord(const RW_VAR* record);

} // namespace tavmir::host

#endif
