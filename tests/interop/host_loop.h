// The smallest host there can be: one blocking connection, one request after the other.
#ifndef TAVMIR_TESTS_INTEROP_HOST_LOOP_H
#define TAVMIR_TESTS_INTEROP_HOST_LOOP_H

#include <QtCore/QtGlobal>

#include <functional>
#include <string>
#include <vector>

namespace tavmir
{
namespace test
{

struct LoopResult {
    std::string error;         // what went wrong with the connection; empty when nothing did
    std::vector<int> statuses; // what `DataCom` reported, in order
};

// Connects to the port of this machine and drives the driver's cycle until `done` is true, which
// is asked before each request. Blocks; call it on a thread of its own.
LoopResult runHostLoop(quint16 port, const std::function<bool()>& done);

} // namespace test
} // namespace tavmir

#endif
