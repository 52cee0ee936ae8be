// The fixture of every test that calls the driver in its own process.
#ifndef TAVMIR_TESTS_SUPPORT_DRIVER_TEST_H
#define TAVMIR_TESTS_SUPPORT_DRIVER_TEST_H

#include "support/callback_recorder.h"
#include "support/diagnostic_capture.h"
#include "support/diagnostic_line.h"
#include "support/host_record.h"
#include "support/qt_printers.h"
#include "tavmir_kx_tcp/host_interface.h"

#include <gtest/gtest.h>

namespace tavmir
{
namespace test
{

// Puts every member of `PLC_driver` and the local areas back to what they are right after the
// library was loaded. Mutexes must be free.
void resetDriver();

// True when nobody holds the mutex. (From the thread that holds it: false.)
bool isFree(QMutex& mutex);

// Before each test the driver is as freshly loaded, with the record and the callbacks of the
// test handed over; Qt messages are caught. After it no mutex may be left locked.
class DriverTest : public ::testing::Test
{
protected:
    DriverTest();
    ~DriverTest() override;

    HostRecord host;
    DiagnosticCapture diagnostics;
    CallbackRecorder callbacks;
};

} // namespace test
} // namespace tavmir

#endif
