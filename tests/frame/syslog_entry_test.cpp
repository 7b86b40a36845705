// Entering the syslog settings from the main menu beside the event-log monitoring service: the
// mutex "EVENTLOG_SEMA" guards the screen and "Eventlog_Mod_Event" tells the monitor to reread.
#include <gtest/gtest.h>
#include <zolwin.h>

#include <chrono>

#include "frame_test_util.h"

namespace keys = zoltest::keys;
using frametest::english;
using frametest::traceCount;
using frametest::traceDump;
using zoltest::ProductRoot;
using namespace std::chrono_literals;

namespace {

constexpr int kSyslogRow = 3;

// A product root whose store lists a destination, so that the event screens can be entered.
struct SyslogRoot {
    ProductRoot root;
    zoltest::ScopedEnv zolDir{"ZolDir", root.path().string()};  // the named objects of this root
    SyslogRoot() {
        frametest::zolreg(root, {"add",
                                 "HKLM\\SOFTWARE\\Tavik\\ZolAlertMan\\Destination\\ID_LIST\\"
                                 "FRAMETEST",
                                 "/v", "Method", "/d", "SNMP", "/f"});
    }
};

void enterSyslog(zoltest::Terminal& t) {
    t.send(keys::Home);
    for (int i = 0; i < kSyslogRow; ++i)
        t.send(keys::Down);
    t.send(keys::Enter);
}

// Opens the syslog screen, which shows the not-built box while it runs, and checks `during`
// while it is open.
void runSyslogScreen(const ProductRoot& root, zoltest::Terminal& t,
                     const std::function<void()>& during = {}) {
    enterSyslog(t);
    const std::string notBuilt = english(root, "SCREEN_NOT_BUILT_ID");
    ASSERT_TRUE(t.waitForText(notBuilt, 20s)) << t.dump() << traceDump(root);
    if (during)
        during();
    t.send(keys::Enter);
    ASSERT_TRUE(t.waitForNoText(notBuilt)) << t.dump();
}

// Another process (the monitor) holding the mutex until released.
std::unique_ptr<zoltest::Terminal> holdMutex(const ProductRoot& root) {
    zoltest::TerminalOptions opts;
    opts.env = frametest::runEnv(root);
    auto holder = std::make_unique<zoltest::Terminal>(
        std::vector<std::string>{HOLD_MUTEX, "EVENTLOG_SEMA"}, opts);
    EXPECT_TRUE(holder->waitForText("held EVENTLOG_SEMA")) << holder->dump();
    return holder;
}

// Waits until the menu's syslog entry has ended `count` times (its exit trace line).
bool waitForEntryEnds(const ProductRoot& root, zoltest::Terminal& t, int count) {
    return t.waitFor(
        [&](const zoltest::Terminal&) {
            int ends = 0;
            for (const auto& e : frametest::readTrace(root)) {
                ends += e.function == "EnterSyslogSetting" && e.text.rfind("<", 0) == 0;
            }
            return ends == count;
        },
        30s);
}

void release(zoltest::Terminal& holder) {
    holder.send(keys::Enter);
    EXPECT_TRUE(holder.waitForText("released ok")) << holder.dump();
    EXPECT_TRUE(holder.waitForExit());
}

}  // namespace

TEST(FrameSyslogEntry, WithoutTheMonitorTheScreenRunsUnguardedAndSignalsTheEvent) {
    SyslogRoot s;
    auto t = frametest::startMenu(s.root);
    // Neither the mutex nor the event exists: the screen simply runs.
    runSyslogScreen(s.root, *t);
    ASSERT_TRUE(waitForEntryEnds(s.root, *t, 1)) << traceDump(s.root);
    HANDLE event = CreateEvent(nullptr, TRUE, FALSE, "Eventlog_Mod_Event");
    ASSERT_NE(event, nullptr);
    runSyslogScreen(s.root, *t, [&] {
        EXPECT_EQ(WaitForSingleObject(event, 0), WAIT_TIMEOUT)
            << "signalled before the screen ended";
    });
    EXPECT_EQ(WaitForSingleObject(event, 5000), ZOL_WAIT_ACQUIRED);
    frametest::closeMenu(*t);
    CloseHandle(event);
}

TEST(FrameSyslogEntry, FreeMutexIsHeldDuringTheScreenThenReleased) {
    SyslogRoot s;
    HANDLE mutex = CreateMutex(nullptr, FALSE, "EVENTLOG_SEMA");
    HANDLE event = CreateEvent(nullptr, TRUE, FALSE, "Eventlog_Mod_Event");
    ASSERT_NE(mutex, nullptr);
    ASSERT_NE(event, nullptr);
    auto t = frametest::startMenu(s.root);
    runSyslogScreen(s.root, *t, [&] {
        EXPECT_EQ(WaitForSingleObject(mutex, 0), WAIT_TIMEOUT) << "screen runs unguarded";
        EXPECT_EQ(WaitForSingleObject(event, 0), WAIT_TIMEOUT);
    });
    EXPECT_EQ(WaitForSingleObject(event, 5000), ZOL_WAIT_ACQUIRED);
    ASSERT_EQ(WaitForSingleObject(mutex, 5000), ZOL_WAIT_ACQUIRED) << "mutex not released";
    EXPECT_TRUE(ReleaseMutex(mutex));
    frametest::closeMenu(*t);
    CloseHandle(event);
    CloseHandle(mutex);
}

TEST(FrameSyslogEntry, MutexHeldElsewhereGivesTheWarningAfterThreeAttempts) {
    SyslogRoot s;
    auto holder = holdMutex(s.root);
    auto t = frametest::startMenu(s.root);
    const auto started = std::chrono::steady_clock::now();
    enterSyslog(*t);
    const std::string warning = english(s.root, "ACCESS_REGISTRY_ERR");
    ASSERT_TRUE(t->waitForText(warning.substr(0, warning.find('\n')), 30s)) << t->dump();
    // Three waits of a second, each followed by a second's pause.
    EXPECT_GE(std::chrono::steady_clock::now() - started, 5s);
    EXPECT_TRUE(t->contains(english(s.root, "TITTLE_WARNING_ID"))) << t->dump();
    EXPECT_FALSE(t->contains(english(s.root, "SCREEN_NOT_BUILT_ID"))) << t->dump();
    t->send(keys::Enter);
    ASSERT_TRUE(t->waitForNoText(english(s.root, "TITTLE_WARNING_ID"))) << t->dump();
    // Traced once the box is closed.
    EXPECT_TRUE(t->waitFor([&](const zoltest::Terminal&) {
        return traceCount(s.root, 1, warning + ".") == 1;
    })) << traceDump(s.root);
    release(*holder);
    frametest::closeMenu(*t);
}

TEST(FrameSyslogEntry, AfterOneAcquisitionABusyMutexReturnsSilently) {
    SyslogRoot s;
    HANDLE mutex = CreateMutex(nullptr, FALSE, "EVENTLOG_SEMA");
    ASSERT_NE(mutex, nullptr);
    auto t = frametest::startMenu(s.root);
    runSyslogScreen(s.root, *t);
    auto holder = holdMutex(s.root);
    enterSyslog(*t);
    // The entry ends with its trace line once its three attempts have failed.
    ASSERT_TRUE(waitForEntryEnds(s.root, *t, 2)) << traceDump(s.root);
    t->update();
    EXPECT_FALSE(t->contains(english(s.root, "TITTLE_WARNING_ID"))) << t->dump();
    EXPECT_FALSE(t->contains(english(s.root, "SCREEN_NOT_BUILT_ID"))) << t->dump();
    EXPECT_EQ(traceCount(s.root, 1, english(s.root, "ACCESS_REGISTRY_ERR") + "."), 0);
    release(*holder);
    frametest::closeMenu(*t);
    CloseHandle(mutex);
}
