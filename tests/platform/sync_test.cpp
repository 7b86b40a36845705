// Named mutexes and events, within one process and between processes: opening what nobody
// made, ownership, time-outs, a holder that is killed, events waking another process, and the
// name disappearing with its last handle.
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
using namespace std::chrono_literals;
using platformtest::ChildProcess;
using zoltest::ProductRoot;
using zoltest::ScopedEnv;

// A product root of its own for each test, so parallel tests never share a name.
class NamedObjects : public ::testing::Test {
  protected:
    ProductRoot root{false};
    ScopedEnv zolDir{"ZolDir", root.path().string()};
};

std::string uniqueName(const std::string& base) {
    return base + "-" + std::to_string(getpid());
}

// A killed process keeps its count on the object, so its name stays behind in /dev/shm.
void removeLeftovers(const std::string& name) {
    std::error_code ec;
    for (const auto& entry : fs::directory_iterator("/dev/shm", ec)) {
        const std::string file = entry.path().filename().string();
        if (file.starts_with("zolwin.") && file.ends_with("." + name))
            fs::remove(entry.path(), ec);
    }
}

double msSince(std::chrono::steady_clock::time_point t0) {
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - t0).count();
}

TEST_F(NamedObjects, OpenNeverCreates) {
    const std::string name = uniqueName("EVENTLOG_SEMA");
    SetLastError(0);
    EXPECT_EQ(OpenMutex(SYNCHRONIZE, FALSE, name.c_str()), nullptr);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_FILE_NOT_FOUND));
    EXPECT_EQ(OpenEvent(EVENT_ALL_ACCESS, FALSE, name.c_str()), nullptr);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_FILE_NOT_FOUND));
    // Still nothing there afterwards.
    EXPECT_EQ(OpenMutex(SYNCHRONIZE, FALSE, name.c_str()), nullptr);
    EXPECT_EQ(OpenMutex(SYNCHRONIZE, FALSE, nullptr), nullptr);
}

TEST_F(NamedObjects, MutexOwnershipWithinAProcess) {
    const std::string name = uniqueName("Owned");
    HANDLE first = CreateMutex(nullptr, TRUE, name.c_str());
    ASSERT_NE(first, nullptr);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_SUCCESS));
    HANDLE second = CreateMutex(nullptr, FALSE, name.c_str());
    ASSERT_NE(second, nullptr);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_ALREADY_EXISTS));
    HANDLE third = OpenMutex(SYNCHRONIZE, FALSE, name.c_str());
    ASSERT_NE(third, nullptr);

    // Another thread can neither take it nor release it while this thread owns it.
    DWORD otherWait = 0;
    BOOL otherRelease = TRUE;
    DWORD otherError = 0;
    std::thread([&] {
        otherWait = WaitForSingleObject(third, 0);
        otherRelease = ReleaseMutex(second);
        otherError = GetLastError();
    }).join();
    EXPECT_EQ(otherWait, WAIT_TIMEOUT);
    EXPECT_FALSE(otherRelease);
    EXPECT_EQ(otherError, static_cast<DWORD>(ERROR_NOT_OWNER));

    // The owner may wait again; it releases once per acquisition, whichever handle it uses.
    EXPECT_EQ(WaitForSingleObject(second, 1000), ZOL_WAIT_ACQUIRED);
    EXPECT_TRUE(ReleaseMutex(third));
    EXPECT_TRUE(ReleaseMutex(first));
    EXPECT_FALSE(ReleaseMutex(first));
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_NOT_OWNER));

    std::thread([&] {
        otherWait = WaitForSingleObject(third, 1000);
        otherRelease = ReleaseMutex(third);
    }).join();
    EXPECT_EQ(otherWait, ZOL_WAIT_ACQUIRED);
    EXPECT_TRUE(otherRelease);

    EXPECT_TRUE(CloseHandle(first));
    EXPECT_TRUE(CloseHandle(second));
    EXPECT_TRUE(CloseHandle(third));
}

TEST_F(NamedObjects, WaitTimesOutOnAMutexHeldByAnotherProcessThenTakesItWhenHolderIsKilled) {
    const std::string name = uniqueName("Killed");
    ChildProcess holder({PLATFORM_HELPER, "mutex-hold", name});
    ASSERT_EQ(holder.readLine(10s), "held 0");

    HANDLE h = OpenMutex(SYNCHRONIZE, FALSE, name.c_str());
    ASSERT_NE(h, nullptr) << GetLastError();
    const auto t0 = std::chrono::steady_clock::now();
    EXPECT_EQ(WaitForSingleObject(h, 300), WAIT_TIMEOUT);
    const double elapsed = msSince(t0);
    EXPECT_GE(elapsed, 290.0);
    EXPECT_LT(elapsed, 2300.0);
    EXPECT_EQ(WaitForSingleObject(h, 0), WAIT_TIMEOUT);
    EXPECT_FALSE(ReleaseMutex(h));

    holder.killHard();
    EXPECT_EQ(holder.wait(), 128 + SIGKILL);
    EXPECT_EQ(WaitForSingleObject(h, 5000), ZOL_WAIT_ACQUIRED);
    EXPECT_TRUE(ReleaseMutex(h));
    // And it works normally afterwards.
    EXPECT_EQ(WaitForSingleObject(h, 0), ZOL_WAIT_ACQUIRED);
    EXPECT_TRUE(ReleaseMutex(h));
    EXPECT_TRUE(CloseHandle(h));
    removeLeftovers(name);
}

TEST_F(NamedObjects, WaiterInAnotherProcessGetsTheMutexWhenReleased) {
    const std::string name = uniqueName("Handover");
    HANDLE h = CreateMutex(nullptr, TRUE, name.c_str());
    ASSERT_NE(h, nullptr);
    {
        ChildProcess waiter({PLATFORM_HELPER, "mutex-wait", name, "200"});
        EXPECT_EQ(waiter.readLine(10s), "waiting 0");
        EXPECT_EQ(waiter.readLine(10s), "wait " + std::to_string(WAIT_TIMEOUT));
        EXPECT_EQ(waiter.wait(), 0);
    }
    ChildProcess waiter({PLATFORM_HELPER, "mutex-wait", name, "20000"});
    EXPECT_EQ(waiter.readLine(10s), "waiting 0");
    EXPECT_TRUE(ReleaseMutex(h));
    EXPECT_EQ(waiter.readLine(20s), "wait " + std::to_string(ZOL_WAIT_ACQUIRED));
    EXPECT_EQ(waiter.wait(), 0);
    EXPECT_TRUE(CloseHandle(h));
}

TEST_F(NamedObjects, HolderThatLetsGoHandsOverToTheWaiter) {
    const std::string name = uniqueName("LetGo");
    ChildProcess holder({PLATFORM_HELPER, "mutex-hold", name});
    ASSERT_EQ(holder.readLine(10s), "held 0");
    HANDLE h = CreateMutex(nullptr, TRUE, name.c_str());  // exists: opened, not owned
    ASSERT_NE(h, nullptr);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_ALREADY_EXISTS));
    EXPECT_EQ(WaitForSingleObject(h, 0), WAIT_TIMEOUT);
    holder.closeInput();
    EXPECT_EQ(WaitForSingleObject(h, 20000), ZOL_WAIT_ACQUIRED);
    EXPECT_EQ(holder.readLine(10s), "release 1");
    EXPECT_EQ(holder.wait(), 0);
    EXPECT_TRUE(ReleaseMutex(h));
    EXPECT_TRUE(CloseHandle(h));
    // The holder closed its handle and so did we: the name is gone.
    EXPECT_EQ(OpenMutex(SYNCHRONIZE, FALSE, name.c_str()), nullptr);
}

TEST_F(NamedObjects, EventsWakeWaitersInOtherProcesses) {
    const std::string name = uniqueName("Eventlog_Mod_Event");
    HANDLE ev = CreateEvent(nullptr, FALSE, FALSE, name.c_str());
    ASSERT_NE(ev, nullptr);

    // This process signals, another waits.
    ChildProcess waiter({PLATFORM_HELPER, "event-wait", name, "20000"});
    EXPECT_EQ(waiter.readLine(10s), "waiting 0");
    EXPECT_TRUE(SetEvent(ev));
    EXPECT_EQ(waiter.readLine(20s), "wait " + std::to_string(ZOL_WAIT_ACQUIRED));
    EXPECT_EQ(waiter.wait(), 0);
    // The waiter consumed the signal of the auto-reset event.
    EXPECT_EQ(WaitForSingleObject(ev, 0), WAIT_TIMEOUT);

    // Another process signals while this one waits.
    std::atomic<DWORD> result{0};
    std::thread wait([&] { result = WaitForSingleObject(ev, 20000); });
    ChildProcess setter({PLATFORM_HELPER, "event-set", name});
    EXPECT_EQ(setter.readLine(10s), "set 1");
    wait.join();
    EXPECT_EQ(result.load(), ZOL_WAIT_ACQUIRED);
    EXPECT_EQ(setter.wait(), 0);

    const auto t0 = std::chrono::steady_clock::now();
    EXPECT_EQ(WaitForSingleObject(ev, 250), WAIT_TIMEOUT);
    EXPECT_GE(msSince(t0), 240.0);
    EXPECT_LT(msSince(t0), 2250.0);
    EXPECT_TRUE(CloseHandle(ev));
}

TEST_F(NamedObjects, ManualAndAutoResetEvents) {
    HANDLE manual = CreateEvent(nullptr, TRUE, TRUE, uniqueName("Manual").c_str());
    ASSERT_NE(manual, nullptr);
    EXPECT_EQ(WaitForSingleObject(manual, 0), ZOL_WAIT_ACQUIRED);
    EXPECT_EQ(WaitForSingleObject(manual, 0), ZOL_WAIT_ACQUIRED);  // stays signalled
    EXPECT_TRUE(ResetEvent(manual));
    EXPECT_EQ(WaitForSingleObject(manual, 0), WAIT_TIMEOUT);

    // Every waiter of a manual-reset event is released by one SetEvent.
    std::atomic<int> woken{0};
    std::thread a([&] { woken += WaitForSingleObject(manual, 20000) == ZOL_WAIT_ACQUIRED; });
    std::thread b([&] { woken += WaitForSingleObject(manual, 20000) == ZOL_WAIT_ACQUIRED; });
    EXPECT_TRUE(SetEvent(manual));
    a.join();
    b.join();
    EXPECT_EQ(woken.load(), 2);

    HANDLE autoReset = CreateEvent(nullptr, FALSE, TRUE, nullptr);  // unnamed
    ASSERT_NE(autoReset, nullptr);
    EXPECT_EQ(WaitForSingleObject(autoReset, 0), ZOL_WAIT_ACQUIRED);
    EXPECT_EQ(WaitForSingleObject(autoReset, 0), WAIT_TIMEOUT);
    EXPECT_TRUE(SetEvent(autoReset));
    EXPECT_TRUE(SetEvent(autoReset));  // signals do not add up
    EXPECT_EQ(WaitForSingleObject(autoReset, 0), ZOL_WAIT_ACQUIRED);
    EXPECT_EQ(WaitForSingleObject(autoReset, 10), WAIT_TIMEOUT);

    // An existing event keeps its state: a second CreateEvent's initial state is ignored.
    HANDLE again = CreateEvent(nullptr, TRUE, FALSE, uniqueName("Manual").c_str());
    ASSERT_NE(again, nullptr);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_ALREADY_EXISTS));
    EXPECT_EQ(WaitForSingleObject(again, 0), ZOL_WAIT_ACQUIRED);

    EXPECT_TRUE(CloseHandle(manual));
    EXPECT_TRUE(CloseHandle(again));
    EXPECT_TRUE(CloseHandle(autoReset));
}

TEST_F(NamedObjects, LastCloseRemovesTheName) {
    const std::string name = uniqueName("Lifetime");
    HANDLE a = CreateEvent(nullptr, TRUE, FALSE, name.c_str());
    ASSERT_NE(a, nullptr);
    HANDLE b = OpenEvent(EVENT_ALL_ACCESS, FALSE, name.c_str());
    ASSERT_NE(b, nullptr);
    EXPECT_TRUE(CloseHandle(a));
    {
        ChildProcess setter({PLATFORM_HELPER, "event-set", name});
        EXPECT_EQ(setter.readLine(10s), "set 1");  // still there for other processes
        EXPECT_EQ(setter.wait(), 0);
    }
    EXPECT_EQ(WaitForSingleObject(b, 0), ZOL_WAIT_ACQUIRED);
    EXPECT_TRUE(CloseHandle(b));

    EXPECT_EQ(OpenEvent(EVENT_ALL_ACCESS, FALSE, name.c_str()), nullptr);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_FILE_NOT_FOUND));
    ChildProcess late({PLATFORM_HELPER, "event-set", name});
    EXPECT_EQ(late.readLine(10s), "open-failed 2");
    EXPECT_EQ(late.wait(), 3);

    // A new object of the same name starts afresh.
    HANDLE c = CreateEvent(nullptr, TRUE, FALSE, name.c_str());
    ASSERT_NE(c, nullptr);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_SUCCESS));
    EXPECT_EQ(WaitForSingleObject(c, 0), WAIT_TIMEOUT);
    EXPECT_TRUE(CloseHandle(c));
}

TEST_F(NamedObjects, NamesAreKeptApartByRootKindAndSpelling) {
    HANDLE odd = CreateMutex(nullptr, FALSE, "Global\\odd/name with spaces");
    ASSERT_NE(odd, nullptr);
    HANDLE same = OpenMutex(SYNCHRONIZE, FALSE, "Global\\odd/name with spaces");
    EXPECT_NE(same, nullptr);
    EXPECT_TRUE(CloseHandle(same));
    // Encoded names must not meet: "/" is not "%2F", and case matters as on Win32.
    EXPECT_EQ(OpenMutex(SYNCHRONIZE, FALSE, "Global%5Codd%2Fname%20with%20spaces"), nullptr);
    EXPECT_EQ(OpenMutex(SYNCHRONIZE, FALSE, "global\\odd/name with spaces"), nullptr);
    EXPECT_EQ(OpenEvent(EVENT_ALL_ACCESS, FALSE, "Global\\odd/name with spaces"), nullptr);

    const std::string longName(1000, 'n');
    HANDLE longOne = CreateEvent(nullptr, FALSE, FALSE, longName.c_str());
    ASSERT_NE(longOne, nullptr);
    EXPECT_EQ(OpenEvent(EVENT_ALL_ACCESS, FALSE, (longName + "m").c_str()), nullptr);
    HANDLE longTwo = OpenEvent(EVENT_ALL_ACCESS, FALSE, longName.c_str());
    EXPECT_NE(longTwo, nullptr);
    EXPECT_TRUE(CloseHandle(longTwo));
    EXPECT_TRUE(CloseHandle(longOne));

    // Another product root has its own names.
    ProductRoot other(false);
    {
        ScopedEnv otherRoot("ZolDir", other.path().string());
        EXPECT_EQ(OpenMutex(SYNCHRONIZE, FALSE, "Global\\odd/name with spaces"), nullptr);
        HANDLE mine = CreateMutex(nullptr, TRUE, "Global\\odd/name with spaces");
        ASSERT_NE(mine, nullptr);
        EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_SUCCESS));
        EXPECT_TRUE(ReleaseMutex(mine));
        EXPECT_TRUE(CloseHandle(mine));
    }
    EXPECT_TRUE(CloseHandle(odd));
}

TEST_F(NamedObjects, BadHandlesFailWithoutHarm) {
    int notAHandle = 0;
    EXPECT_EQ(WaitForSingleObject(&notAHandle, 0), WAIT_FAILED);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INVALID_HANDLE));
    EXPECT_EQ(WaitForSingleObject(nullptr, 0), WAIT_FAILED);
    EXPECT_FALSE(CloseHandle(&notAHandle));
    EXPECT_FALSE(CloseHandle(nullptr));
    EXPECT_FALSE(SetEvent(&notAHandle));
    EXPECT_FALSE(ReleaseMutex(&notAHandle));

    HANDLE m = CreateMutex(nullptr, FALSE, nullptr);
    HANDLE e = CreateEvent(nullptr, FALSE, FALSE, nullptr);
    ASSERT_NE(m, nullptr);
    ASSERT_NE(e, nullptr);
    EXPECT_FALSE(SetEvent(m));
    EXPECT_FALSE(ResetEvent(m));
    EXPECT_FALSE(ReleaseMutex(e));
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INVALID_HANDLE));
    EXPECT_TRUE(CloseHandle(m));
    EXPECT_TRUE(CloseHandle(e));
    // Closed handles are dead.
    EXPECT_FALSE(CloseHandle(m));
    EXPECT_EQ(WaitForSingleObject(e, 0), WAIT_FAILED);
}

}  // namespace
