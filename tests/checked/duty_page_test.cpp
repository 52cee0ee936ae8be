// docs/host-duties.md says what the code's table says.
#include "checked/duty_page.h"

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

namespace tavmir::checked_tests
{
namespace
{

// With the new table to copy when this fails.
TEST(DutyPage, HoldsTheTableOfTheCode)
{
    std::ifstream file(TAVMIR_DUTY_PAGE);
    std::stringstream page;
    page << file.rdbuf();
    EXPECT_NE(page.str().find("\n\n" + dutyTable() + "\n"), std::string::npos) << dutyTable();
}

} // namespace
} // namespace tavmir::checked_tests
