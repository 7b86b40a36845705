// Named mutexes and events within one process and between processes: Open never creates,
// ownership, time-outs, a killed holder, events waking another process, and the name going
// away with its last handle.
#include <gtest/gtest.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <filesystem>
#include <string>
#include <thread>

#include "child_process.h"
#include "product_root.h"
#include "zolwin.h"

namespace {

namespace fs = std::filesystem;
using platformtest::ChildProcess;
using zoltest::ProductRoot;

// A product root of its own per test, so that tests running in parallel never share a name.
class NamedObjects : public ::testing::Test {
  protected:
    ProductRoot root{false};
    zoltest::ScopedEnv zolDir{"ZolDir", root.path().string()};
    const std::string name = "EVENTLOG_SEMA-" + std::to_string(getpid());
};

double msSince(std::chrono::steady_clock::time_point t0) {
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - t0).count();
}

constexpr DWORD kNotFound = ERROR_FILE_NOT_FOUND, kExists = ERROR_ALREADY_EXISTS;

TEST_F(NamedObjects, OpenNeverCreates) {
    EXPECT_EQ(OpenMutex(SYNCHRONIZE, FALSE, name.c_str()), nullptr);
    EXPECT_EQ(GetLastError(), kNotFound);
    EXPECT_EQ(OpenEvent(EVENT_ALL_ACCESS, FALSE, name.c_str()), nullptr);
    EXPECT_EQ(GetLastError(), kNotFound);
    EXPECT_EQ(OpenMutex(SYNCHRONIZE, FALSE, name.c_str()), nullptr);
}

TEST_F(NamedObjects, OnlyTheOwningThreadHoldsAndReleases) {
    HANDLE first = CreateMutex(nullptr, TRUE, name.c_str());
    ASSERT_NE(first, nullptr);
    HANDLE second = OpenMutex(SYNCHRONIZE, FALSE, name.c_str());
    ASSERT_NE(second, nullptr);
    DWORD wait = 0, error = 0;
    BOOL released = TRUE;
    std::thread([&] {
        wait = WaitForSingleObject(second, 0);
        released = ReleaseMutex(second);
        error = GetLastError();
    }).join();
    EXPECT_EQ(wait, WAIT_TIMEOUT);
    EXPECT_FALSE(released);
    EXPECT_EQ(error, static_cast<DWORD>(ERROR_NOT_OWNER));
    // The owner may take it again and releases once per acquisition, through either handle.
    EXPECT_EQ(WaitForSingleObject(second, 1000), ZOL_WAIT_ACQUIRED);
    EXPECT_TRUE(ReleaseMutex(second));
    EXPECT_TRUE(ReleaseMutex(first));
    EXPECT_FALSE(ReleaseMutex(first));
    std::thread([&] { wait = WaitForSingleObject(second, 1000) + ReleaseMutex(second); }).join();
    EXPECT_EQ(wait, ZOL_WAIT_ACQUIRED + TRUE);
    EXPECT_TRUE(CloseHandle(first));
    EXPECT_TRUE(CloseHandle(second));
}

TEST_F(NamedObjects, MutexHeldByAnotherProcessTimesOutUntilTheHolderIsKilled) {
    ChildProcess holder({PLATFORM_HELPER, "mutex-hold", name});
    ASSERT_EQ(holder.readLine(), "held 0");
    HANDLE h = CreateMutex(nullptr, TRUE, name.c_str());  // exists: opened, and not owned
    ASSERT_NE(h, nullptr);
    EXPECT_EQ(GetLastError(), kExists);
    const auto t0 = std::chrono::steady_clock::now();
    EXPECT_EQ(WaitForSingleObject(h, 300), WAIT_TIMEOUT);
    EXPECT_GE(msSince(t0), 290.0);
    EXPECT_LT(msSince(t0), 2300.0);
    EXPECT_FALSE(ReleaseMutex(h));

    holder.killNow();
    EXPECT_EQ(holder.wait(), 128 + SIGKILL);
    EXPECT_EQ(WaitForSingleObject(h, 5000), ZOL_WAIT_ACQUIRED);
    EXPECT_TRUE(ReleaseMutex(h));
    EXPECT_EQ(WaitForSingleObject(h, 0), ZOL_WAIT_ACQUIRED);  // and usable as before
    EXPECT_TRUE(ReleaseMutex(h));
    EXPECT_TRUE(CloseHandle(h));
    // The killed holder's count keeps the name alive; clear it from /dev/shm by hand.
    std::error_code ec;
    for (const auto& entry : fs::directory_iterator("/dev/shm", ec)) {
        const std::string file = entry.path().filename().string();
        if (file.starts_with("zolwin.") && file.ends_with("." + name))
            fs::remove(entry, ec);
    }
}

TEST_F(NamedObjects, HolderThatReleasesHandsOverAndTheLastCloseRemovesTheName) {
    ChildProcess holder({PLATFORM_HELPER, "mutex-hold", name});
    ASSERT_EQ(holder.readLine(), "held 0");
    HANDLE h = OpenMutex(SYNCHRONIZE, FALSE, name.c_str());
    ASSERT_NE(h, nullptr);
    holder.closeInput();
    EXPECT_EQ(WaitForSingleObject(h, 20000), ZOL_WAIT_ACQUIRED);
    EXPECT_EQ(holder.readLine(), "release 1");
    EXPECT_EQ(holder.wait(), 0);
    EXPECT_TRUE(ReleaseMutex(h));
    EXPECT_TRUE(CloseHandle(h));
    EXPECT_EQ(OpenMutex(SYNCHRONIZE, FALSE, name.c_str()), nullptr);
    EXPECT_EQ(GetLastError(), kNotFound);
}

TEST_F(NamedObjects, EventsWakeWaitersInOtherProcesses) {
    HANDLE ev = CreateEvent(nullptr, FALSE, FALSE, name.c_str());
    ASSERT_NE(ev, nullptr);
    std::atomic<DWORD> result{0};
    std::thread waiter([&] { result = WaitForSingleObject(ev, 20000); });
    auto set = zoltest::run({PLATFORM_HELPER, "event-set", name});
    waiter.join();
    EXPECT_EQ(set.out, "set 1\n");
    EXPECT_EQ(result.load(), ZOL_WAIT_ACQUIRED);
    EXPECT_EQ(WaitForSingleObject(ev, 0), WAIT_TIMEOUT);  // the waiter used up the signal

    // Once this process closes its handle the name is gone for everyone.
    EXPECT_TRUE(CloseHandle(ev));
    EXPECT_EQ(zoltest::run({PLATFORM_HELPER, "event-set", name}).out, "open-failed 2\n");
    EXPECT_EQ(OpenEvent(EVENT_ALL_ACCESS, FALSE, name.c_str()), nullptr);
    EXPECT_EQ(GetLastError(), kNotFound);
}

TEST_F(NamedObjects, ManualAndAutoResetEvents) {
    HANDLE manual = CreateEvent(nullptr, TRUE, TRUE, name.c_str());
    ASSERT_NE(manual, nullptr);
    EXPECT_EQ(WaitForSingleObject(manual, 0), ZOL_WAIT_ACQUIRED);
    EXPECT_EQ(WaitForSingleObject(manual, 0), ZOL_WAIT_ACQUIRED);  // stays signalled
    EXPECT_TRUE(ResetEvent(manual));
    const auto t0 = std::chrono::steady_clock::now();
    EXPECT_EQ(WaitForSingleObject(manual, 250), WAIT_TIMEOUT);
    EXPECT_GE(msSince(t0), 240.0);
    EXPECT_LT(msSince(t0), 2250.0);
    // One SetEvent releases every waiter of a manual-reset event.
    std::atomic<int> woken{0};
    std::thread a([&] { woken += WaitForSingleObject(manual, 20000) == ZOL_WAIT_ACQUIRED; });
    std::thread b([&] { woken += WaitForSingleObject(manual, 20000) == ZOL_WAIT_ACQUIRED; });
    EXPECT_TRUE(SetEvent(manual));
    a.join();
    b.join();
    EXPECT_EQ(woken.load(), 2);
    // An existing event keeps its state: a later CreateEvent's arguments do not apply.
    HANDLE again = CreateEvent(nullptr, FALSE, FALSE, name.c_str());
    EXPECT_EQ(GetLastError(), kExists);
    EXPECT_EQ(WaitForSingleObject(again, 0), ZOL_WAIT_ACQUIRED);

    HANDLE autoReset = CreateEvent(nullptr, FALSE, TRUE, nullptr);  // unnamed
    EXPECT_EQ(WaitForSingleObject(autoReset, 0), ZOL_WAIT_ACQUIRED);
    EXPECT_EQ(WaitForSingleObject(autoReset, 0), WAIT_TIMEOUT);
    EXPECT_TRUE(SetEvent(autoReset) && SetEvent(autoReset));  // signals do not add up
    EXPECT_EQ(WaitForSingleObject(autoReset, 0), ZOL_WAIT_ACQUIRED);
    EXPECT_EQ(WaitForSingleObject(autoReset, 0), WAIT_TIMEOUT);
    EXPECT_TRUE(CloseHandle(manual) && CloseHandle(again) && CloseHandle(autoReset));
}

TEST_F(NamedObjects, NamesAreKeptApartByRootKindAndSpelling) {
    const char* odd = "Global\\odd/name with spaces";
    HANDLE h = CreateMutex(nullptr, FALSE, odd);
    ASSERT_NE(h, nullptr);
    HANDLE same = OpenMutex(SYNCHRONIZE, FALSE, odd);
    EXPECT_TRUE(same != nullptr && CloseHandle(same));
    // Escaped spellings, other case and the other kind are other names.
    EXPECT_EQ(OpenMutex(SYNCHRONIZE, FALSE, "Global%5Codd%2Fname%20with%20spaces"), nullptr);
    EXPECT_EQ(OpenMutex(SYNCHRONIZE, FALSE, "global\\odd/name with spaces"), nullptr);
    EXPECT_EQ(OpenEvent(EVENT_ALL_ACCESS, FALSE, odd), nullptr);
    const std::string longName(1000, 'n');
    HANDLE longOne = CreateEvent(nullptr, FALSE, FALSE, longName.c_str());
    ASSERT_NE(longOne, nullptr);
    EXPECT_EQ(OpenEvent(EVENT_ALL_ACCESS, FALSE, (longName + "m").c_str()), nullptr);
    EXPECT_TRUE(CloseHandle(longOne));

    ProductRoot other(false);
    {
        zoltest::ScopedEnv otherRoot("ZolDir", other.path().string());
        EXPECT_EQ(OpenMutex(SYNCHRONIZE, FALSE, odd), nullptr);
        HANDLE mine = CreateMutex(nullptr, FALSE, odd);
        EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_SUCCESS));
        EXPECT_TRUE(CloseHandle(mine));
    }
    EXPECT_TRUE(CloseHandle(h));
}

TEST_F(NamedObjects, BadHandlesFailWithoutHarm) {
    int notAHandle = 0;
    EXPECT_EQ(WaitForSingleObject(&notAHandle, 0), WAIT_FAILED);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INVALID_HANDLE));
    EXPECT_EQ(WaitForSingleObject(nullptr, 0), WAIT_FAILED);
    EXPECT_FALSE(CloseHandle(&notAHandle) || SetEvent(&notAHandle) || ReleaseMutex(nullptr));
    HANDLE m = CreateMutex(nullptr, FALSE, nullptr);
    HANDLE e = CreateEvent(nullptr, FALSE, FALSE, nullptr);
    ASSERT_TRUE(m != nullptr && e != nullptr);
    EXPECT_FALSE(SetEvent(m) || ResetEvent(m) || ReleaseMutex(e));
    EXPECT_TRUE(CloseHandle(m) && CloseHandle(e));
    EXPECT_FALSE(CloseHandle(m));
    EXPECT_EQ(WaitForSingleObject(e, 0), WAIT_FAILED);
}

}  // namespace
