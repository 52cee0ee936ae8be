// Loading the driver, refusing what is none, and unloading it.
#include "driver/driver_loader.h"

#include "support/temporary_folder.h"

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QFileInfo>
#include <gtest/gtest.h>

#include <dlfcn.h>

namespace tavmir::host
{

namespace
{

std::unique_ptr<Driver> loaded(const QString& file)
{
    QStringList problems;
    std::unique_ptr<Driver> driver = Driver::load(file, problems);
    EXPECT_EQ("", problems.join('\n').toStdString());
    return driver;
}

bool isInProcess(const char* file)
{
    void* library = dlopen(file, RTLD_NOW | RTLD_NOLOAD);
    if (library != nullptr) {
        dlclose(library);
    }
    return library != nullptr;
}

} // namespace

TEST(DriverLoader, ADriverIsUnloadedWhenDestroyed)
{
    EXPECT_TRUE(loaded(TAVMIR_DRIVER));
    EXPECT_FALSE(isInProcess(TAVMIR_DRIVER));
}

TEST(DriverLoader, ARefusedSecondLoadLeavesNothingLoaded)
{
    std::unique_ptr<Driver> first = loaded(TAVMIR_DRIVER);
    QStringList problems;
    EXPECT_FALSE(Driver::load(TAVMIR_DRIVER, problems));
    EXPECT_EQ("driver " TAVMIR_DRIVER " is in use in this process already",
              problems.join('\n').toStdString());
    first.reset();
    EXPECT_FALSE(isInProcess(TAVMIR_DRIVER));
}

TEST(DriverLoader, ANameWithoutASlashIsAFileOfThisFolder)
{
    const test::TemporaryFolder folder;
    const QString file = QString::fromStdString(folder.pathOf("copied-driver"));
    ASSERT_TRUE(QFile::copy(TAVMIR_DRIVER, file));
    const QString before = QDir::currentPath();
    ASSERT_TRUE(QDir::setCurrent(QString::fromStdString(folder.path())));
    const std::unique_ptr<Driver> driver = loaded("copied-driver");
    QDir::setCurrent(before);
    ASSERT_TRUE(driver);
    EXPECT_EQ(QFileInfo(file).canonicalFilePath(),
              QFileInfo(driver->fileName()).canonicalFilePath());
}

TEST(DriverLoader, EachNameThatIsMissingIsToldAndTheLibraryNotUsed)
{
    QStringList problems;
    EXPECT_FALSE(Driver::load(TAVMIR_ONE_NAME_LIBRARY, problems));
    EXPECT_EQ(18, problems.size()) << "all but one of nineteen";
    EXPECT_FALSE(problems.join('\n').contains("SetComInfo"));
    EXPECT_TRUE(problems.join('\n').contains("has no entry point DataCom"));
    EXPECT_TRUE(problems.join('\n').contains("has no global PLC_driver"));
    EXPECT_FALSE(isInProcess(TAVMIR_ONE_NAME_LIBRARY));
}

} // namespace tavmir::host
