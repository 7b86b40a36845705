// Entering the syslog settings from the main menu beside the event-log monitoring service: the
// mutex "EVENTLOG_SEMA" guards the screen and "Eventlog_Mod_Event" tells the monitor to reread.
#include <gtest/gtest.h>
#include <zolwin.h>

#include <chrono>

#include "frame_test_util.h"
#include "regpaths.h"

namespace keys = zoltest::keys;
using frametest::english;
using frametest::traceCount;
using frametest::traceDump;
using zoltest::ProductRoot;
using namespace std::chrono_literals;

namespace {

constexpr int kSyslogRow = 3;

// The syslog screen's window title, as its frame shows it.
std::string syslogTitle(const ProductRoot& root) {
    return frametest::frameTitle(root, "MAIN_SYSLOG_ID");
}

// Opens the syslog screen (the fourth row), checks `during` while it is open, and closes it with
// Ctrl-O.
void runSyslogScreen(const ProductRoot& root, zoltest::Terminal& t,
                     const std::function<void()>& during = {}) {
    t.send(keys::Home);
    std::string down;
    for (int row = 0; row < kSyslogRow; ++row)
        down += keys::Down;
    t.send(down);
    t.send(keys::Enter);
    if (!during)
        return;  // an entry that is expected to end without the screen
    const std::string screen = syslogTitle(root);
    ASSERT_TRUE(t.waitForText(screen, 20s)) << t.dump() << traceDump(root);
    during();
    t.send(keys::CtrlO);
    ASSERT_TRUE(t.waitForNoText(screen)) << t.dump();
}

// Another process (the monitor) holding the mutex until it reads a line.
std::unique_ptr<zoltest::Terminal> holdMutex(const ProductRoot& root) {
    zoltest::TerminalOptions opts;
    opts.env = frametest::runEnv(root);
    auto holder = std::make_unique<zoltest::Terminal>(
        std::vector<std::string>{HOLD_MUTEX, "EVENTLOG_SEMA"}, opts);
    EXPECT_TRUE(holder->waitForText("held EVENTLOG_SEMA")) << holder->dump();
    return holder;
}

void release(zoltest::Terminal& holder) {
    holder.send(keys::Enter);
    EXPECT_TRUE(holder.waitForText("released ok")) << holder.dump();
}

}  // namespace

// One menu beside a monitor that comes and goes. Without mutex and event the screen simply runs;
// with the event it is signalled after the screen. Then, with the mutex held elsewhere at the
// first guarded entry, the warning follows three attempts; free, the mutex is held during the
// screen and released; held elsewhere again after that one acquisition, the entry returns
// silently.
TEST(FrameSyslogEntry, WithoutMonitorThenHeldElsewhereFreeAndHeldAgain) {
    ProductRoot root;
    zoltest::ScopedEnv zolDir{"ZolDir", root.path().string()};  // the named objects of this root
    // A destination, so that the event screens can be entered.
    frametest::zolreg(
        root, {"add", "HKLM\\" ZOL_KEY_ID_LIST "\\FRAMETEST", "/v", "Method", "/d", "SNMP", "/f"});
    auto t = frametest::startMenu(root);
    runSyslogScreen(root, *t, [] {});
    // The entry ends (its last trace line) before the event exists.
    ASSERT_TRUE(t->waitFor([&](const zoltest::Terminal&) {
        for (const auto& e : frametest::readTrace(root))
            if (e.function == "EnterSyslogSetting" && e.text.rfind("<", 0) == 0)
                return true;
        return false;
    })) << traceDump(root);
    HANDLE event = CreateEvent(nullptr, TRUE, FALSE, "Eventlog_Mod_Event");
    ASSERT_NE(event, nullptr);
    runSyslogScreen(root, *t, [&] {
        EXPECT_EQ(WaitForSingleObject(event, 0), WAIT_TIMEOUT) << "signalled before the end";
    });
    EXPECT_EQ(WaitForSingleObject(event, 5000), ZOL_WAIT_ACQUIRED);
    ASSERT_TRUE(ResetEvent(event));

    HANDLE mutex = CreateMutex(nullptr, FALSE, "EVENTLOG_SEMA");
    ASSERT_NE(mutex, nullptr);
    auto holder = holdMutex(root);
    const std::string title = english(root, "TITTLE_WARNING_ID");
    const std::string warning = english(root, "ACCESS_REGISTRY_ERR");
    const auto started = std::chrono::steady_clock::now();
    runSyslogScreen(root, *t);
    ASSERT_TRUE(t->waitForText(warning.substr(0, warning.find('\n')), 30s)) << t->dump();
    // Three waits of a second, each followed by a second's pause.
    EXPECT_GE(std::chrono::steady_clock::now() - started, 5s);
    EXPECT_TRUE(t->contains(title)) << t->dump();
    t->send(keys::Enter);
    ASSERT_TRUE(t->waitForNoText(title)) << t->dump();
    // Traced once the box is closed.
    EXPECT_TRUE(t->waitFor([&](const zoltest::Terminal&) {
        return traceCount(root, 1, warning + ".") == 1;
    })) << traceDump(root);
    release(*holder);

    runSyslogScreen(root, *t, [&] {
        EXPECT_EQ(WaitForSingleObject(mutex, 0), WAIT_TIMEOUT) << "screen runs unguarded";
        EXPECT_EQ(WaitForSingleObject(event, 0), WAIT_TIMEOUT);
    });
    EXPECT_EQ(WaitForSingleObject(event, 5000), ZOL_WAIT_ACQUIRED);
    ASSERT_EQ(WaitForSingleObject(mutex, 5000), ZOL_WAIT_ACQUIRED) << "mutex not released";
    EXPECT_TRUE(ReleaseMutex(mutex));

    holder = holdMutex(root);
    runSyslogScreen(root, *t);
    // The entry ends with its trace line once its three attempts have failed.
    ASSERT_TRUE(t->waitFor(
        [&](const zoltest::Terminal&) {
            return traceCount(root, 0, "<return (EVENTLOG_SEMA busy).", "EnterSyslogSetting") == 1;
        },
        30s))
        << traceDump(root);
    t->update();
    EXPECT_FALSE(t->contains(title)) << t->dump();
    EXPECT_FALSE(t->contains(syslogTitle(root))) << t->dump();
    EXPECT_EQ(traceCount(root, 1, warning + "."), 1);
    release(*holder);
    frametest::closeMenu(*t);
    CloseHandle(event);
    CloseHandle(mutex);
}
