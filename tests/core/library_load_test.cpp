// Loading and unloading the library as a host does. This program is not linked against it.
#include "support/diagnostic_capture.h"
#include "support/diagnostic_line.h"
#include "support/driver_file.h"
#include "support/qt_printers.h"

#include <dlfcn.h>
#include <gtest/gtest.h>

using namespace tavmir::test;

namespace
{

class LibraryLoad : public ::testing::Test
{
protected:
    void* load()
    {
        void* library = dlopen(tavmir::test::driverFile(TAVMIR_DRIVER_FILE), RTLD_NOW | RTLD_LOCAL);
        if (library == nullptr) {
            ADD_FAILURE() << dlerror();
        }
        return library;
    }

    DiagnosticCapture diagnostics;
    const QString constructed =
        expectedLine({"Communication_Protocol", " ", quoted("Communication_Protocol"), " ", 46,
                      "TRACE ", "----"});
};

TEST_F(LibraryLoad, LoadingWritesTheOneLineOfTheContextAndUnloadingNone)
{
    void* library = load();
    ASSERT_NE(library, nullptr);
    EXPECT_EQ(diagnostics.lines(), QStringList() << constructed);
    EXPECT_EQ(diagnostics.types(), std::vector<QtMsgType>{QtDebugMsg});
    diagnostics.clear();
    EXPECT_EQ(dlclose(library), 0);
    EXPECT_EQ(diagnostics.lines(), QStringList());
}

TEST_F(LibraryLoad, UnloadingReallyRemovesItAndLoadingAgainStartsAfresh)
{
    for (int round = 0; round < 3; ++round) {
        diagnostics.clear();
        void* library = load();
        ASSERT_NE(library, nullptr);
        EXPECT_EQ(diagnostics.lines(), QStringList() << constructed) << round;
        typedef void (*FlashLocalRegister)(void*, void*, void*);
        const auto flash =
            reinterpret_cast<FlashLocalRegister>(dlsym(library, "FlashLocalRegister"));
        void** lb = static_cast<void**>(dlsym(library, "LB"));
        ASSERT_NE(flash, nullptr);
        ASSERT_NE(lb, nullptr);
        EXPECT_EQ(*lb, nullptr);
        flash(&round, nullptr, nullptr);
        EXPECT_EQ(*lb, &round);
        EXPECT_EQ(dlclose(library), 0);
        EXPECT_EQ(dlopen(tavmir::test::driverFile(TAVMIR_DRIVER_FILE), RTLD_NOW | RTLD_NOLOAD),
                  nullptr);
    }
}

TEST_F(LibraryLoad, AFirstReplyIsToldThatNothingWasInFlight)
{
    void* library = load();
    ASSERT_NE(library, nullptr);
    typedef void* (*DataCom)(void*, int);
    const auto dataCom = reinterpret_cast<DataCom>(dlsym(library, "DataCom"));
    ASSERT_NE(dataCom, nullptr);
    const void* result = dataCom(nullptr, 0);
    ASSERT_NE(result, nullptr);
    EXPECT_EQ(static_cast<const int*>(result)[5], 1) << "word 5 is the status";
    EXPECT_EQ(dlclose(library), 0);
}

TEST_F(LibraryLoad, TheStubsAnswerWithoutAnySetUp)
{
    void* library = load();
    ASSERT_NE(library, nullptr);
    typedef int (*Stub)();
    const auto change = reinterpret_cast<Stub>(dlsym(library, "PLCAddressChangeIntef"));
    const auto finish = reinterpret_cast<Stub>(dlsym(library, "QueryFinishFlag"));
    ASSERT_NE(change, nullptr);
    ASSERT_NE(finish, nullptr);
    EXPECT_EQ(change(), -1);
    EXPECT_EQ(finish(), 1);
    EXPECT_EQ(dlclose(library), 0);
}

} // namespace
