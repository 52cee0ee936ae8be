// The host and each of its commands say which version they are.
#include "support/child_process.h"

#include <gtest/gtest.h>

namespace tavmir::host
{

TEST(HostVersion, IsSaidByTheProgramAndByEachCommand)
{
    const QString program = TAVMIR_HOST_PROGRAM;
    for (const QStringList& arguments :
         {QStringList{"--version"}, QStringList{"-v"}, QStringList{"run", "--version"},
          QStringList{"read", "--version"}, QStringList{"write", "--version"},
          QStringList{"explain", "--version"}, QStringList{"diagnose", "--version"}}) {
        const auto result = test::runProcess(program, arguments);
        EXPECT_EQ(0, result.exitStatus) << arguments.join(' ').toStdString();
        EXPECT_EQ("tavmir-host " TAVMIR_VERSION "\n", result.output.toStdString());
        EXPECT_EQ("", result.errors.toStdString());
    }
}

} // namespace tavmir::host
