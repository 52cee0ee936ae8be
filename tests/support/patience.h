// How long a test waits for what must come.
#ifndef TAVMIR_TESTS_SUPPORT_PATIENCE_H
#define TAVMIR_TESTS_SUPPORT_PATIENCE_H

namespace tavmir
{
namespace test
{

// `usualMs`, generous for a busy machine; less when the environment variable
// TAVMIR_TEST_PATIENCE_MS asks for it, where failures are what is awaited. Milliseconds.
int patienceMs(int usualMs);

} // namespace test
} // namespace tavmir

#endif
