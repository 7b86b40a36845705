// Tests of the terminal harness: a small newt form driven by keys (focus, editing, listbox,
// checkbox, buttons, Japanese text) and plain shell programs for exit, time-out and rendering.
#include "terminal.h"

#include <signal.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>
#include <thread>

#include "product_root.h"

namespace zoltest {
namespace {

using Clock = std::chrono::steady_clock;

TerminalOptions withEnv(std::map<std::string, std::optional<std::string>> env) {
    TerminalOptions o;
    o.env = std::move(env);
    return o;
}

bool reverseIs(Terminal& t, const std::string& text) {
    return t.waitFor([&](const Terminal& s) { return s.reverseText() == text; });
}

TEST(TerminalNewtForm, KeysEditMoveFocusAndTheResultIsPrintedAfterNewtFinished) {
    Terminal t({NEWT_FORM_DEMO}, withEnv({{"LANG", "C.UTF-8"}, {"LC_ALL", std::nullopt}}));
    ASSERT_TRUE(t.waitForText("Harness demo")) << t.dump();
    // The entry has the focus (the cursor stands in it); under NEWT_MONO=1 only the listbox's
    // current item is reverse.
    const int nameRow = t.findRow("Name:");
    EXPECT_EQ(t.cursor().first, nameRow) << t.dump();
    EXPECT_EQ(t.reverseText(), "Apple") << t.dump();

    t.type("helxlo");
    for (int i = 0; i < 3; ++i) {
        t.send(keys::Left);
    }
    t.send(keys::Delete);
    t.type("!");
    t.send(keys::Backspace);
    EXPECT_TRUE(t.waitFor([&](const Terminal& s) {
        return s.row(nameRow).find("hello_") != std::string::npos;
    })) << t.dump();

    // Listbox: Down moves the reverse item. Checkbox: Space sets it, its mark cell is reverse.
    t.send(keys::Tab);
    t.send(keys::Down);
    EXPECT_TRUE(reverseIs(t, "Banana")) << t.dump();
    t.send(keys::Tab);
    t.send(keys::Space);
    EXPECT_TRUE(t.waitForText("[*] Enabled")) << t.dump();
    EXPECT_EQ(t.reverseText(), "Banana\n*");
    // Then the buttons take the focus, and Tab goes round.
    t.send(keys::Tab);
    t.send(keys::Tab);
    EXPECT_TRUE(reverseIs(t, "Banana\nCancel")) << t.dump();
    for (int i = 0; i < 4; ++i) {
        t.send(keys::Tab);
    }
    EXPECT_TRUE(reverseIs(t, "Banana\nOK")) << t.dump();

    t.send(keys::Enter);
    ASSERT_TRUE(t.waitForExit()) << t.dump();
    EXPECT_EQ(t.exitStatus(), 0);
    // newt's screen is gone: the normal screen shows what the program printed.
    EXPECT_EQ(t.row(0), "entry=hello list=1 check=* button=OK") << t.dump();
}

TEST(TerminalNewtForm, JapaneseTextUsesDoubleWidthCellsAndAHotKeyEndsTheForm) {
    Terminal t({NEWT_FORM_DEMO, "--item", "日本語の項目"},
               withEnv({{"LANG", "ja_JP.UTF-8"}, {"LC_ALL", std::nullopt}}));
    ASSERT_TRUE(t.waitForText("日本語の項目")) << t.dump();
    // Six double-width characters fill twelve cells: the listbox's right border stays aligned.
    std::string expected = t.row(t.findRow("Apple"));
    expected.replace(expected.find("Apple"), 12, "日本語の項目");
    EXPECT_EQ(t.row(t.findRow("日本語の項目")), expected) << t.dump();
    EXPECT_EQ(t.position("の項目").second, t.position("Apple").second + 6);

    t.type("日本x");
    EXPECT_TRUE(t.waitForText("日本x__")) << t.dump();
    EXPECT_EQ(t.cursor().second, t.position("日本x").second + 5);
    t.send(keys::Tab);
    for (int i = 0; i < 3; ++i) {
        t.send(keys::Down);
    }
    EXPECT_TRUE(reverseIs(t, "日本語の項目")) << t.dump();
    t.send(keys::F12);
    ASSERT_TRUE(t.waitForExit()) << t.dump();
    EXPECT_EQ(t.exitStatus(), 4);
    EXPECT_EQ(t.row(0).rfind("entry=日本x list=3 check=  button=key", 0), 0u) << t.dump();
}

TEST(TerminalProgram, ExitStatusOptionsAndRendering) {
    {
        Terminal t({"/bin/sh", "-c", "printf 'bye\\n'; kill -TERM $$"});
        ASSERT_TRUE(t.waitForExit()) << t.dump();
        EXPECT_EQ(t.exitStatus(), 128 + SIGTERM);
        EXPECT_EQ(t.row(0), "bye");
        // Nothing can change any more: the wait gives up long before its time-out.
        const auto start = Clock::now();
        EXPECT_FALSE(t.waitForText("never", 60s));
        EXPECT_LT(Clock::now() - start, 30s);
    }
    ScopedEnv inherited("NEWT_MONO", "1");
    TerminalOptions o = withEnv({{"FOO", "bar baz"}, {"HOME", std::nullopt}});
    o.cols = 100;
    o.mono = false;
    o.term = "vt100";
    o.cwd = "/";
    Terminal t({"/bin/sh", "-c",
                "stty size; echo \"$FOO|${HOME-unset}|$TERM|${NEWT_MONO-unset}\"; pwd; "
                "printf '\\033[7m REV \\033[0m plain\\033[6;10H日本\\033[1mB\\033[0m'; exit 7"},
               o);
    ASSERT_TRUE(t.waitForExit()) << t.dump();
    EXPECT_EQ(t.exitStatus(), 7);
    EXPECT_EQ(t.row(0), std::to_string(t.rows()) + " 100") << t.dump();
    EXPECT_EQ(t.row(1), "bar baz|unset|vt100|unset");
    EXPECT_EQ(t.row(2), "/");
    EXPECT_EQ(t.row(3), " REV  plain");
    EXPECT_EQ(t.reverseText(), "REV");
    EXPECT_EQ(t.row(5), "         日本B");
    EXPECT_EQ(t.position("B"), std::make_pair(5, 13));
    EXPECT_TRUE(t.isBold(5, 13));
    EXPECT_FALSE(t.isBold(5, 9));
}

TEST(TerminalProgram, TimeOutReturnsFalseAndTheChildAndItsChildrenAreKilledAtTheEnd) {
    pid_t pid = -1;
    int grandchild = 0;
    {
        // The grandchild ignores the hang-up that the end of the session sends.
        Terminal t({"/bin/sh", "-c", "trap '' HUP; sleep 120 & echo \"started $!\"; wait"});
        pid = t.pid();
        ASSERT_TRUE(t.waitForText("started ")) << t.dump();
        grandchild = std::stoi(t.row(0).substr(8));
        const auto start = Clock::now();
        EXPECT_FALSE(t.waitForText("anything", 300ms));
        EXPECT_GE(Clock::now() - start, 300ms);
        EXPECT_FALSE(t.waitForExit(100ms));
        EXPECT_EQ(t.exitStatus(), -1);
        EXPECT_NE(t.dump().find("running"), std::string::npos) << t.dump();
    }
    EXPECT_EQ(kill(pid, 0), -1);  // killed and reaped, not left as a zombie
    EXPECT_EQ(errno, ESRCH);
    // The orphan is reaped by whoever adopts it: wait until it is gone or a zombie.
    const auto gone = [grandchild] {
        const std::string stat = "/proc/" + std::to_string(grandchild) + "/stat";
        return !std::filesystem::exists(stat) || readFile(stat).find(") Z ") != std::string::npos;
    };
    const auto deadline = Clock::now() + 10s;
    while (!gone() && Clock::now() < deadline) {
        std::this_thread::yield();
    }
    EXPECT_TRUE(gone()) << "process " << grandchild << " survived";
}

}  // namespace
}  // namespace zoltest
