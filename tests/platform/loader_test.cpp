// Library loading: binding and calling a real module, missing functions and files, files that
// are not libraries, and handles that are stale or made up; and the per-thread last error.
#include <gtest/gtest.h>

#include <string>
#include <thread>

#include "product_root.h"
#include "zolwin.h"

namespace {

TEST(Loader, BindsCallsAndReleasesAModuleAndRefusesWhatIsNotOne) {
    HMODULE mod = LoadLibrary(PLATFORM_TEST_MODULE);
    ASSERT_NE(mod, nullptr) << ZolLastLoadError();
    auto answer = reinterpret_cast<int (*)(int)>(GetProcAddress(mod, "zol_test_answer"));
    ASSERT_NE(answer, nullptr);
    EXPECT_EQ(answer(5), 52);
    EXPECT_EQ(GetProcAddress(mod, "zol_no_such_function"), nullptr);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_PROC_NOT_FOUND));
    EXPECT_NE(std::string(ZolLastLoadError()).find("zol_no_such_function"), std::string::npos);
    // Each load is matched by one free, as on Win32; after the last the handle is dead.
    EXPECT_EQ(LoadLibrary(PLATFORM_TEST_MODULE), mod);
    EXPECT_TRUE(FreeLibrary(mod));
    EXPECT_NE(GetProcAddress(mod, "zol_test_answer"), nullptr);
    EXPECT_TRUE(FreeLibrary(mod));
    EXPECT_FALSE(FreeLibrary(mod));
    EXPECT_EQ(GetProcAddress(mod, "zol_test_answer"), nullptr);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INVALID_HANDLE));

    zoltest::ProductRoot root(false);
    const auto missing = root.path() / "lib" / "nosuch.dll",
               garbage = root.path() / "lib" / "x.dll";
    EXPECT_EQ(LoadLibrary(missing.c_str()), nullptr);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_MOD_NOT_FOUND));
    EXPECT_NE(std::string(ZolLastLoadError()).find("nosuch.dll"), std::string::npos);
    zoltest::writeFile(garbage, "this is not a shared object\n");
    EXPECT_EQ(LoadLibrary(garbage.c_str()), nullptr);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_BAD_EXE_FORMAT));
    int notAModule = 0;
    EXPECT_EQ(LoadLibrary(nullptr), nullptr);
    EXPECT_FALSE(FreeLibrary(&notAModule) || FreeLibrary(nullptr));
}

TEST(LastError, IsPerThread) {
    SetLastError(1234);
    DWORD seenByOther = 99;
    std::thread([&] {
        seenByOther = GetLastError();
        SetLastError(5);
    }).join();
    EXPECT_EQ(seenByOther, 0u);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(1234));
}

}  // namespace
