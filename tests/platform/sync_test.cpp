// Named mutexes and events within one process and between processes: Open never creates,
// ownership, time-outs, a killed holder, events waking another process, and the name going
// away with its last handle.
#include <gtest/gtest.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <functional>
#include <string>
#include <thread>

#include "child_process.h"
#include "product_root.h"
#include "zolwin.h"

namespace {

namespace fs = std::filesystem;
using platformtest::ChildProcess;

// A product root of its own per test, so that tests running in parallel never share a name.
class NamedObjects : public ::testing::Test {
  protected:
    zoltest::ProductRoot root{false};
    zoltest::ScopedEnv zolDir{"ZolDir", root.path().string()};
    const std::string name = "EVENTLOG_SEMA-" + std::to_string(getpid());
};

// Holds the named mutex until the test closes its input (or kills it).
int holdMutex(const std::string& name) {
    HANDLE h = CreateMutex(nullptr, TRUE, name.c_str());
    std::printf("held %lu\n", static_cast<unsigned long>(h ? GetLastError() : 999));
    std::fflush(stdout);
    for (char c; read(0, &c, 1) > 0;) {
    }
    std::printf("release %d\n", ReleaseMutex(h));
    std::fflush(stdout);
    return CloseHandle(h) ? 0 : 1;
}

// Checks that `wait` (a wait with a time-out of ms) times out, and neither early nor very late.
void expectTimeout(const std::function<DWORD()>& wait, double ms) {
    const auto t0 = std::chrono::steady_clock::now();
    EXPECT_EQ(wait(), WAIT_TIMEOUT);
    const double took =
        std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - t0).count();
    EXPECT_GE(took, ms - 10);
    EXPECT_LT(took, ms + 2000);
}

TEST_F(NamedObjects, OnlyTheOwningThreadHoldsAndReleases) {
    EXPECT_EQ(OpenMutex(SYNCHRONIZE, FALSE, name.c_str()), nullptr);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_FILE_NOT_FOUND));
    EXPECT_EQ(OpenMutex(SYNCHRONIZE, FALSE, name.c_str()), nullptr) << "the failed open made it";
    HANDLE first = CreateMutex(nullptr, TRUE, name.c_str());
    HANDLE second = OpenMutex(SYNCHRONIZE, FALSE, name.c_str());
    ASSERT_TRUE(first != nullptr && second != nullptr);
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
    EXPECT_TRUE(CloseHandle(first) && CloseHandle(second));
}

TEST_F(NamedObjects, MutexHeldByAnotherProcessTimesOutUntilTheHolderIsKilled) {
    ChildProcess holder([&] { return holdMutex(name); });
    ASSERT_EQ(holder.readLine(), "held 0");
    HANDLE h = CreateMutex(nullptr, TRUE, name.c_str());  // exists: opened, and not owned
    ASSERT_NE(h, nullptr);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_ALREADY_EXISTS));
    expectTimeout([&] { return WaitForSingleObject(h, 300); }, 300);
    EXPECT_FALSE(ReleaseMutex(h));
    holder.killNow();
    EXPECT_EQ(holder.wait(), 128 + SIGKILL);
    EXPECT_EQ(WaitForSingleObject(h, 5000), ZOL_WAIT_ACQUIRED);
    EXPECT_TRUE(ReleaseMutex(h));
    EXPECT_EQ(WaitForSingleObject(h, 0), ZOL_WAIT_ACQUIRED);  // and usable as before
    EXPECT_TRUE(ReleaseMutex(h) && CloseHandle(h));
    // The killed holder's count keeps the name alive; clear it from /dev/shm by hand.
    std::error_code ec;
    for (const auto& entry : fs::directory_iterator("/dev/shm", ec)) {
        const std::string file = entry.path().filename().string();
        if (file.starts_with("zolwin.") && file.ends_with("." + name))
            fs::remove(entry, ec);
    }
}

TEST_F(NamedObjects, HolderThatReleasesHandsOverAndTheLastCloseRemovesTheName) {
    ChildProcess holder([&] { return holdMutex(name); });
    ASSERT_EQ(holder.readLine(), "held 0");
    HANDLE h = OpenMutex(SYNCHRONIZE, FALSE, name.c_str());
    ASSERT_NE(h, nullptr);
    holder.closeInput();
    EXPECT_EQ(WaitForSingleObject(h, 20000), ZOL_WAIT_ACQUIRED);
    EXPECT_EQ(holder.readLine(), "release 1");
    EXPECT_EQ(holder.wait(), 0);
    EXPECT_TRUE(ReleaseMutex(h) && CloseHandle(h));
    EXPECT_EQ(OpenMutex(SYNCHRONIZE, FALSE, name.c_str()), nullptr);
}

TEST_F(NamedObjects, EventsWakeWaitersInOtherProcessesAndKeepTheirKind) {
    EXPECT_EQ(OpenEvent(EVENT_ALL_ACCESS, FALSE, name.c_str()), nullptr);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_FILE_NOT_FOUND));
    HANDLE ev = CreateEvent(nullptr, FALSE, FALSE, name.c_str());
    ASSERT_NE(ev, nullptr);
    // The other process waits for the word, then opens the event and sets it.
    auto setter = [&] {
        for (char c; read(0, &c, 1) > 0;) {
        }
        HANDLE h = OpenEvent(EVENT_ALL_ACCESS, FALSE, name.c_str());
        return h != nullptr && SetEvent(h) && CloseHandle(h) ? 0 : 3;
    };
    ChildProcess other(setter);
    std::atomic<DWORD> result{0};
    std::thread waiter([&] { result = WaitForSingleObject(ev, 20000); });
    other.closeInput();
    EXPECT_EQ(other.wait(), 0);
    waiter.join();
    EXPECT_EQ(result.load(), ZOL_WAIT_ACQUIRED);
    EXPECT_EQ(WaitForSingleObject(ev, 0), WAIT_TIMEOUT);  // the waiter used up the signal
    EXPECT_TRUE(SetEvent(ev) && SetEvent(ev));            // signals do not add up
    EXPECT_EQ(WaitForSingleObject(ev, 0), ZOL_WAIT_ACQUIRED);
    EXPECT_EQ(WaitForSingleObject(ev, 0), WAIT_TIMEOUT);
    // Once this process closes its handle the name is gone for everyone.
    EXPECT_TRUE(CloseHandle(ev));
    ChildProcess late(setter);
    late.closeInput();
    EXPECT_EQ(late.wait(), 3);

    // A manual-reset event stays signalled and one SetEvent releases every waiter.
    HANDLE manual = CreateEvent(nullptr, TRUE, TRUE, name.c_str());
    EXPECT_EQ(WaitForSingleObject(manual, 0) + WaitForSingleObject(manual, 0),
              2 * ZOL_WAIT_ACQUIRED);
    EXPECT_TRUE(ResetEvent(manual));
    expectTimeout([&] { return WaitForSingleObject(manual, 250); }, 250);
    std::atomic<int> woken{0};
    std::thread a([&] { woken += WaitForSingleObject(manual, 20000) == ZOL_WAIT_ACQUIRED; });
    std::thread b([&] { woken += WaitForSingleObject(manual, 20000) == ZOL_WAIT_ACQUIRED; });
    EXPECT_TRUE(SetEvent(manual));
    a.join();
    b.join();
    EXPECT_EQ(woken.load(), 2);
    // An existing event keeps its state and kind; it is not a mutex.
    HANDLE again = CreateEvent(nullptr, FALSE, FALSE, name.c_str());
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_ALREADY_EXISTS));
    EXPECT_EQ(WaitForSingleObject(again, 0), ZOL_WAIT_ACQUIRED);
    EXPECT_EQ(OpenMutex(SYNCHRONIZE, FALSE, name.c_str()), nullptr);
    EXPECT_FALSE(ReleaseMutex(again));
    EXPECT_TRUE(CloseHandle(manual) && CloseHandle(again));
}

TEST_F(NamedObjects, NamesAreKeptApartByRootAndSpellingAndBadHandlesFail) {
    const char* odd = "Global\\odd/name with spaces";
    HANDLE h = CreateMutex(nullptr, FALSE, odd);
    ASSERT_NE(h, nullptr);
    HANDLE same = OpenMutex(SYNCHRONIZE, FALSE, odd);
    EXPECT_TRUE(same != nullptr && CloseHandle(same));
    EXPECT_EQ(OpenMutex(SYNCHRONIZE, FALSE, "Global%5Codd%2Fname%20with%20spaces"), nullptr);
    EXPECT_EQ(OpenMutex(SYNCHRONIZE, FALSE, "global\\odd/name with spaces"), nullptr);
    {
        zoltest::ProductRoot other(false);
        zoltest::ScopedEnv otherRoot("ZolDir", other.path().string());
        EXPECT_EQ(OpenMutex(SYNCHRONIZE, FALSE, odd), nullptr);
    }
    EXPECT_TRUE(CloseHandle(h));
    EXPECT_FALSE(CloseHandle(h));
    int notAHandle = 0;
    EXPECT_EQ(WaitForSingleObject(&notAHandle, 0), WAIT_FAILED);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INVALID_HANDLE));
    EXPECT_EQ(WaitForSingleObject(nullptr, 0), WAIT_FAILED);
    EXPECT_FALSE(CloseHandle(&notAHandle) || SetEvent(&notAHandle) || ReleaseMutex(nullptr));
}

}  // namespace
