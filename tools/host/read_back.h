// A look at what stands in the controller after a write.
#ifndef TAVMIR_HOST_READ_BACK_H
#define TAVMIR_HOST_READ_BACK_H

#include "prepared_host.h"
#include "write_report.h"

namespace tavmir::host
{

// Reads it from the controller.
//   format  in which it is shown; automatic: as the project says
ReadBack readBack(PreparedHost& host, const Assignment& assignment, project::Format format);

} // namespace tavmir::host

#endif
