// Which driver a test loads: the built one, or the one that the run names.
#ifndef TAVMIR_TESTS_SUPPORT_DRIVER_FILE_H
#define TAVMIR_TESTS_SUPPORT_DRIVER_FILE_H

#include <cstdlib>

namespace tavmir
{
namespace test
{

inline const char* driverFile(const char* built)
{
    const char* const other = std::getenv("TAVMIR_TEST_DRIVER");
    return other ? other : built;
}

} // namespace test
} // namespace tavmir

#endif
