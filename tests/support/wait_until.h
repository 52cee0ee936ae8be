// Waiting for a condition instead of for a time.
#ifndef TAVMIR_TESTS_SUPPORT_WAIT_UNTIL_H
#define TAVMIR_TESTS_SUPPORT_WAIT_UNTIL_H

#include <functional>

namespace tavmir
{
namespace test
{

// Asks `condition` again and again until it is true or `deadlineMs` milliseconds have passed;
// returns what it said last. The deadline is generous: a test that reaches it has failed.
bool waitUntil(const std::function<bool()>& condition, int deadlineMs = 30000);

} // namespace test
} // namespace tavmir

#endif
