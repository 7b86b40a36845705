// Library loading: binding and calling a real module, missing functions and files, files that
// are not libraries, and handles that are stale or made up.
#include <gtest/gtest.h>

#include <string>
#include <thread>

#include "product_root.h"
#include "zolwin.h"

namespace {

using AnswerFn = int (*)(int);

TEST(Loader, BindsAndCallsAModuleAndReleasesIt) {
    HMODULE mod = LoadLibrary(PLATFORM_TEST_MODULE);
    ASSERT_NE(mod, nullptr) << ZolLastLoadError();
    EXPECT_STREQ(ZolLastLoadError(), "");

    auto answer = reinterpret_cast<AnswerFn>(GetProcAddress(mod, "zol_test_answer"));
    ASSERT_NE(answer, nullptr);
    EXPECT_EQ(answer(5), 52);

    SetLastError(0);
    EXPECT_EQ(GetProcAddress(mod, "zol_no_such_function"), nullptr);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_PROC_NOT_FOUND));
    EXPECT_NE(std::string(ZolLastLoadError()).find("zol_no_such_function"), std::string::npos)
        << ZolLastLoadError();
    EXPECT_EQ(GetProcAddress(mod, nullptr), nullptr);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INVALID_PARAMETER));

    // Loading twice counts twice, as on Win32: each load is matched by one free.
    HMODULE again = LoadLibrary(PLATFORM_TEST_MODULE);
    EXPECT_EQ(again, mod);
    EXPECT_TRUE(FreeLibrary(again));
    EXPECT_NE(GetProcAddress(mod, "zol_test_answer"), nullptr);
    EXPECT_TRUE(FreeLibrary(mod));

    // The handle is dead now: using it fails instead of crashing.
    EXPECT_FALSE(FreeLibrary(mod));
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INVALID_HANDLE));
    EXPECT_EQ(GetProcAddress(mod, "zol_test_answer"), nullptr);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INVALID_HANDLE));
}

TEST(Loader, MissingAndBrokenFilesAndBadHandles) {
    zoltest::ProductRoot root(false);
    const std::string missing = (root.path() / "lib" / "nosuch.dll").string();
    SetLastError(0);
    EXPECT_EQ(LoadLibrary(missing.c_str()), nullptr);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_MOD_NOT_FOUND));
    EXPECT_NE(std::string(ZolLastLoadError()).find("nosuch.dll"), std::string::npos)
        << ZolLastLoadError();

    const auto garbage = root.path() / "lib" / "garbage.dll";
    zoltest::writeFile(garbage, "this is not a shared object\n");
    EXPECT_EQ(LoadLibrary(garbage.c_str()), nullptr);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_BAD_EXE_FORMAT));
    EXPECT_STRNE(ZolLastLoadError(), "");

    EXPECT_EQ(LoadLibrary(nullptr), nullptr);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INVALID_PARAMETER));
    EXPECT_EQ(LoadLibrary(""), nullptr);

    int notAModule = 0;
    EXPECT_EQ(GetProcAddress(&notAModule, "zol_test_answer"), nullptr);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INVALID_HANDLE));
    EXPECT_EQ(GetProcAddress(nullptr, "zol_test_answer"), nullptr);
    EXPECT_FALSE(FreeLibrary(&notAModule));
    EXPECT_FALSE(FreeLibrary(nullptr));
}

TEST(LastError, IsPerThread) {
    SetLastError(1234);
    DWORD seenByOther = 99;
    std::thread other([&] {
        seenByOther = GetLastError();
        SetLastError(5);
    });
    other.join();
    EXPECT_EQ(seenByOther, 0u);
    EXPECT_EQ(GetLastError(), 1234u);
}

}  // namespace
