// A host that was built without the page says so, where the page is asked for, and does nothing
// else.
#include "host/program.h"
#include "support/qt_printers.h"

#include <QtCore/QStringList>

#include <gtest/gtest.h>

#include <string>
#include <utility>

namespace tavmir::host
{

namespace
{

// What the program ended with, and said on standard error.
std::pair<int, std::string> ended(const QStringList& arguments)
{
    testing::internal::CaptureStderr();
    const int status = runProgram(QStringList("tavmir-host") + arguments);
    return {status, testing::internal::GetCapturedStderr()};
}

const std::pair<int, std::string> kRefused = {2, "tavmir-host: --page: this build has no page\n"};

} // namespace

TEST(HostWithoutPage, RefusesToRunWithOne)
{
    EXPECT_EQ(kRefused, ended({"run", TAVMIR_EXAMPLE, "--connect", "127.0.0.1:1", "--page"}));
}

TEST(HostWithoutPage, RefusesToReplay)
{
    EXPECT_EQ(kRefused, ended({"replay", ".", "--page"}));
}

} // namespace tavmir::host
