// One read of a controller through the loaded driver: set-up, requests, answers, values.
#ifndef TAVMIR_PROBE_REAL_READ_H
#define TAVMIR_PROBE_REAL_READ_H

#include "driver_library.h"
#include "options.h"
#include "probe_capture.h"

#include <string>
#include <vector>

namespace tavmir
{
namespace probe
{

// Reads what `options` name, over a connection of its own.
//   capture  of what is exchanged
//   values   receives one number per element
//   result   empty, or what went wrong
// The driver must be freshly loaded. Takes at most the time-out for the connection and for each
// sending and each answer. The calling thread is the driver's communication thread meanwhile.
std::string readValues(const DriverCalls& driver, const Options& options, ProbeCapture& capture,
                       std::vector<unsigned int>& values);

} // namespace probe
} // namespace tavmir

#endif
