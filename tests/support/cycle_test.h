// The fixture of tests that drive the cycle as a host does.
#ifndef TAVMIR_TESTS_SUPPORT_CYCLE_TEST_H
#define TAVMIR_TESTS_SUPPORT_CYCLE_TEST_H

#include "support/driver_test.h"
#include "support/records.h"

#include <string>
#include <vector>

namespace tavmir
{
namespace test
{

class CycleTest : public DriverTest
{
protected:
    // Queue entries as registration would leave them.
    void queueWrite(int dataType, int address, int hostKey = 0, int varKey = 0);
    void queueOnce(int dataType, int address, int hostKey = 0, int varKey = 0);
    void poll(int dataType, int address, int hostKey = 0, int varKey = 0);

    // As many of one kind; addresses follow each other.
    void queueWrites(int number, int dataType);
    void queueOnces(int number, int dataType);
    void pollMany(int number, int dataType);

    // The request in flight is answered by zeros of the expected length, or not at all; the
    // results are the status that `DataCom` reported.
    int answer();
    int answerNothing();

    // Asks for the next request and answers it; the letter of the turn: 'w'rite, 'o'nce,
    // 'p'oll, '-' when there was nothing to send.
    char turn();
    std::string turns(int number);
};

} // namespace test
} // namespace tavmir

#endif
