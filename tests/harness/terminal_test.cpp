// Tests of the terminal harness: a small newt form driven by keys (focus, editing, listbox,
// checkbox, buttons, Japanese text) and plain shell programs for exit, time-out and rendering.
#include "terminal.h"

#include <signal.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <algorithm>
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

const auto kEnglish = withEnv({{"LANG", "C.UTF-8"}, {"LC_ALL", std::nullopt}});

TEST(TerminalNewtForm, KeysEditMoveFocusAndTheResultIsPrintedAfterNewtFinished) {
    Terminal t({NEWT_FORM_DEMO}, kEnglish);
    ASSERT_TRUE(t.waitForText("Harness demo")) << t.dump();
    const int nameRow = t.findRow("Name:");
    // The entry has the focus: the cursor stands in it; only the listbox's current item is
    // reverse (newt shows it so even without focus).
    EXPECT_EQ(t.cursor().first, nameRow) << t.dump();
    EXPECT_EQ(t.reverseText(), "Apple") << t.dump();
    const int entryCol = t.cursor().second;

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
    t.send(keys::Home);
    EXPECT_TRUE(t.waitFor([&](const Terminal& s) { return s.cursor().second == entryCol; }))
        << t.dump();

    // Listbox: focus makes its current item bold; Down moves the reverse item.
    t.send(keys::Tab);
    const auto apple = t.position("Apple");
    EXPECT_TRUE(t.waitFor([&](const Terminal& s) { return s.isBold(apple.first, apple.second); }))
        << t.dump();
    t.send(keys::Down);
    EXPECT_TRUE(t.waitFor([](const Terminal& s) { return s.reverseText() == "Banana"; }))
        << t.dump();
    EXPECT_FALSE(t.isReverse(apple.first, apple.second));

    // Checkbox: only its mark cell is reverse; Space sets it.
    t.send(keys::Tab);
    const auto box = t.position("[ ] Enabled");
    ASSERT_GE(box.first, 0) << t.dump();
    EXPECT_TRUE(t.waitFor([&](const Terminal& s) {
        return s.isReverse(box.first, box.second + 1);
    })) << t.dump();
    t.send(keys::Space);
    EXPECT_TRUE(t.waitForText("[*] Enabled")) << t.dump();
    EXPECT_EQ(t.reverseText(), "Banana\n*");

    t.send(keys::Tab);
    EXPECT_TRUE(t.waitFor([](const Terminal& s) { return s.reverseText() == "Banana\nOK"; }))
        << t.dump();
    t.send(keys::Tab);
    EXPECT_TRUE(t.waitFor([](const Terminal& s) { return s.reverseText() == "Banana\nCancel"; }))
        << t.dump();
    t.send(keys::Tab);
    t.send(keys::Tab);
    t.send(keys::Tab);
    t.send(keys::Tab);
    EXPECT_TRUE(t.waitFor([](const Terminal& s) { return s.reverseText() == "Banana\nOK"; }))
        << t.dump();

    t.send(keys::Enter);
    ASSERT_TRUE(t.waitForExit()) << t.dump();
    EXPECT_EQ(t.exitStatus(), 0);
    const std::string result = "entry=hello list=1 check=* button=OK";
    EXPECT_EQ(t.row(0), result) << t.dump();  // newt's screen is gone: the normal screen shows
    EXPECT_NE(t.rawOutput().find(result), std::string::npos);
}

TEST(TerminalNewtForm, CancelAndHotKeyEndTheFormWithTheirOwnStatus) {
    {
        Terminal t({NEWT_FORM_DEMO, "--entry", "preset"}, kEnglish);
        ASSERT_TRUE(t.waitForText("preset")) << t.dump();
        for (int i = 0; i < 4; ++i) {
            t.send(keys::Tab);
        }
        ASSERT_TRUE(t.waitFor([](const Terminal& s) { return s.reverseText() == "Apple\nCancel"; }))
            << t.dump();
        t.send(keys::Enter);
        ASSERT_TRUE(t.waitForExit()) << t.dump();
        EXPECT_EQ(t.exitStatus(), 3);
        EXPECT_TRUE(t.contains("entry=preset list=0 check=  button=Cancel")) << t.dump();
    }
    Terminal t({NEWT_FORM_DEMO}, kEnglish);
    ASSERT_TRUE(t.waitForText("Harness demo")) << t.dump();
    t.send(keys::F12);
    ASSERT_TRUE(t.waitForExit()) << t.dump();
    EXPECT_EQ(t.exitStatus(), 4);
    EXPECT_TRUE(t.contains("button=key")) << t.dump();
}

TEST(TerminalNewtForm, JapaneseTextUsesDoubleWidthCellsAndReadsBackOnce) {
    Terminal t({NEWT_FORM_DEMO, "--item", "テスト"},
               withEnv({{"LANG", "ja_JP.UTF-8"}, {"LC_ALL", std::nullopt}}));
    ASSERT_TRUE(t.waitForText("日本語の項目")) << t.dump();
    // Six double-width characters fill twelve cells: the listbox's right border stays aligned.
    std::string expected = t.row(t.findRow("Apple"));
    expected.replace(expected.find("Apple"), 12, "日本語の項目");
    EXPECT_EQ(t.row(t.findRow("日本語の項目")), expected) << t.dump();
    EXPECT_EQ(t.position("の項目").second, t.position("Apple").second + 6);
    EXPECT_EQ(t.position("ト").second, t.position("Apple").second + 4);

    t.type("日本x");
    EXPECT_TRUE(t.waitForText("日本x__")) << t.dump();
    EXPECT_EQ(t.cursor().second, t.position("日本x").second + 5);
    t.send(keys::Tab);
    for (int i = 0; i < 4; ++i) {
        t.send(keys::Down);
    }
    EXPECT_TRUE(t.waitFor([](const Terminal& s) { return s.reverseText() == "日本語の項目"; }))
        << t.dump();
    t.send(keys::Tab);
    t.send(keys::Tab);
    t.send(keys::Enter);
    ASSERT_TRUE(t.waitForExit()) << t.dump();
    EXPECT_EQ(t.row(0), "entry=日本x list=4 check=  button=OK") << t.dump();
}

TEST(TerminalProgram, ExitStatusAndOutputOfProgramsThatEndAtOnce) {
    {
        Terminal t({"/bin/sh", "-c", "printf 'bye\\n'; exit 7"});
        ASSERT_TRUE(t.waitForExit()) << t.dump();
        EXPECT_EQ(t.exitStatus(), 7);
        EXPECT_EQ(t.row(0), "bye");
        // Nothing can change any more: the wait gives up long before its time-out.
        const auto start = Clock::now();
        EXPECT_FALSE(t.waitForText("never", 60s));
        EXPECT_LT(Clock::now() - start, 30s);
        t.type("keys for nobody");  // the program is gone: nothing to deliver, nothing to hang on
        EXPECT_EQ(t.row(0), "bye");
    }
    {
        Terminal t({"/bin/sh", "-c", "kill -TERM $$"});
        ASSERT_TRUE(t.waitForExit()) << t.dump();
        EXPECT_EQ(t.exitStatus(), 128 + SIGTERM);
    }
    Terminal t({"/nonexistent/program"});
    ASSERT_TRUE(t.waitForExit()) << t.dump();
    EXPECT_EQ(t.exitStatus(), 127);
    EXPECT_TRUE(t.contains("cannot execute /nonexistent/program")) << t.dump();
}

TEST(TerminalProgram, TimeOutReturnsFalseAndTheChildIsKilledAtTheEnd) {
    pid_t pid = -1;
    {
        Terminal t({"/bin/sh", "-c", "exec sleep 120"});
        pid = t.pid();
        const auto start = Clock::now();
        EXPECT_FALSE(t.waitForText("anything", 300ms));
        EXPECT_GE(Clock::now() - start, 300ms);
        EXPECT_FALSE(t.waitForExit(100ms));
        EXPECT_EQ(t.exitStatus(), -1);
        const std::string dump = t.dump();
        EXPECT_NE(dump.find(" 24 |"), std::string::npos) << dump;
        EXPECT_NE(dump.find("cursor: row 0, column 0"), std::string::npos) << dump;
        EXPECT_NE(dump.find("running"), std::string::npos) << dump;
    }
    EXPECT_EQ(kill(pid, 0), -1);  // killed and reaped, not left as a zombie
    EXPECT_EQ(errno, ESRCH);

    // What the child started goes with it, even when it ignores the hang-up that the end of the
    // session sends. The orphan is reaped by whoever adopts it: wait until it is gone or a zombie.
    int grandchild = 0;
    {
        Terminal t({"/bin/sh", "-c", "trap '' HUP; sleep 120 & echo \"started $!\"; wait"});
        ASSERT_TRUE(t.waitForText("started ")) << t.dump();
        grandchild = std::stoi(t.row(0).substr(8));
    }
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

TEST(TerminalProgram, OptionsReachTheChild) {
    ScopedEnv inherited("NEWT_MONO", "1");
    const auto dir =
        std::filesystem::temp_directory_path() / ("zolterm-" + std::to_string(::getpid()));
    std::filesystem::create_directories(dir);
    TerminalOptions o = withEnv({{"FOO", "bar baz"}, {"HOME", std::nullopt}});
    o.rows = 24;
    o.cols = 100;
    o.mono = false;
    o.term = "vt100";
    o.cwd = dir;
    Terminal t(
        {"/bin/sh", "-c", "stty size; echo \"$FOO|${HOME-unset}|$TERM|${NEWT_MONO-unset}\"; pwd"},
        o);
    ASSERT_TRUE(t.waitForExit()) << t.dump();
    EXPECT_EQ(t.row(0), "24 100") << t.dump();
    EXPECT_EQ(t.row(1), "bar baz|unset|vt100|unset");
    EXPECT_EQ(t.row(2), dir.string());
    EXPECT_EQ(t.rows(), 24);
    EXPECT_EQ(t.cols(), 100);
    std::filesystem::remove_all(dir);
}

TEST(TerminalProgram, RendersAttributesWideCharactersAndAnswersQueries) {
    Terminal t({"/bin/sh", "-c",
                "printf '\\033[7m REV \\033[0m plain\\033[5;10H日本\\033[1mB\\033[0m'; "
                "printf '\\033[3;1Hfirst'; exec sleep 120"});
    ASSERT_TRUE(t.waitForText("first")) << t.dump();
    EXPECT_EQ(t.row(0), " REV  plain");
    EXPECT_EQ(t.reverseText(), "REV");
    EXPECT_TRUE(t.isReverse(0, 0));
    EXPECT_FALSE(t.isReverse(0, 6));
    EXPECT_EQ(t.row(4), "         日本B");
    EXPECT_EQ(t.position("B"), std::make_pair(4, 13));
    EXPECT_TRUE(t.isBold(4, 13));
    EXPECT_EQ(t.findRow("first"), 2);
    EXPECT_EQ(t.cursor(), std::make_pair(2, 5));
    const std::string screen = t.screenText();
    EXPECT_EQ(std::count(screen.begin(), screen.end(), '\n'), 24);

    // A program that asks for the cursor position gets the emulator's answer.
    Terminal q({"/bin/sh", "-c",
                "stty raw -echo; printf 'x\\033[6n'; r=$(head -c 6 | tr '\\033' E); "
                "printf '\\033[2J\\033[Hgot %s' \"$r\""});
    ASSERT_TRUE(q.waitForExit()) << q.dump();
    EXPECT_TRUE(q.waitForNoText("x")) << q.dump();
    EXPECT_EQ(q.row(0), "got E[1;2R") << q.dump();
}

}  // namespace
}  // namespace zoltest
