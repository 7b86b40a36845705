// The toolkit's boxes as a person at an 80x25 terminal sees them, driven through toolkit_demo.
#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

#include "terminal.h"

namespace {

using zoltest::Terminal;
using zoltest::TerminalOptions;
namespace keys = zoltest::keys;
using namespace std::chrono_literals;

TerminalOptions english() {
    TerminalOptions opts;
    opts.env = {{"LANG", "C.UTF-8"},
                {"LC_ALL", std::nullopt},
                {"LC_MESSAGES", std::nullopt},
                {"LC_CTYPE", std::nullopt}};
    return opts;
}

Terminal demo(const std::string& scenario, TerminalOptions opts = english()) {
    return Terminal({TOOLKIT_DEMO, scenario}, std::move(opts));
}

// Waits for the demo to end and returns what it printed after leaving the screen.
std::string outcome(Terminal& t) {
    EXPECT_TRUE(t.waitForExit()) << t.dump();
    EXPECT_EQ(t.exitStatus(), 0) << t.dump();
    return t.rawOutput();
}

bool has(const std::string& haystack, const std::string& needle) {
    return haystack.find(needle) != std::string::npos;
}

TEST(ToolkitScreen, MessageBoxIgnoresHotKeysAndClosesOnlyByItsButton) {
    Terminal t = demo("msg");
    ASSERT_TRUE(t.waitForText("Second line")) << t.dump();
    EXPECT_EQ(t.findRow("First line") + 1, t.findRow("Second line")) << t.dump();
    EXPECT_TRUE(t.contains("Notice")) << t.dump();
    // A box that closed would show the next form at once; newt drops keys typed ahead of a
    // new form, so each key gets its own short watch.
    for (std::string_view key : {keys::CtrlA, keys::CtrlO, keys::F12}) {
        t.send(key);
        EXPECT_FALSE(t.waitForText("typed:", 300ms)) << t.dump();
        EXPECT_TRUE(t.contains("Second line")) << t.dump();
    }
    t.send(keys::Enter);
    ASSERT_TRUE(t.waitForText("typed:")) << t.dump();
    EXPECT_FALSE(t.contains("Second line")) << t.dump();
    t.type("zz");
    t.send(keys::Enter);
    EXPECT_TRUE(has(outcome(t), "msg closed; entry=zz")) << t.dump();
}

TEST(ToolkitScreen, ButtonChoiceReportsThePressedButtonOrNullForTheHotKey) {
    {
        Terminal t = demo("select");
        ASSERT_TRUE(t.waitForText("Pick one")) << t.dump();
        t.send(keys::CtrlO);
        EXPECT_TRUE(has(outcome(t), "result=null")) << t.dump();
    }
    {
        Terminal t = demo("select");
        ASSERT_TRUE(t.waitForText("Pick one")) << t.dump();
        ASSERT_TRUE(t.waitFor([](const Terminal& s) { return s.reverseText() == "Yes"; }))
            << t.dump();
        t.send(keys::Tab);
        ASSERT_TRUE(t.waitFor([](const Terminal& s) { return s.reverseText() == "No"; }))
            << t.dump();
        t.send(keys::Enter);
        EXPECT_TRUE(has(outcome(t), "result=No")) << t.dump();
    }
    {
        // No text: the box still shows both buttons under its title.
        Terminal t = demo("select-null");
        ASSERT_TRUE(t.waitForText("No")) << t.dump();
        EXPECT_TRUE(t.contains("Choose")) << t.dump();
        t.send(keys::Enter);
        EXPECT_TRUE(has(outcome(t), "result=Yes")) << t.dump();
    }
}

TEST(ToolkitScreen, LongTextsAreWrappedInsideTheScreen) {
    for (const char* scenario : {"msgex", "proper"}) {
        SCOPED_TRACE(scenario);
        Terminal t = demo(scenario);
        ASSERT_TRUE(t.waitForText("alpha0")) << t.dump();
        // The whole text is visible, over several rows, none of them wider than the screen.
        ASSERT_TRUE(t.waitForText("omega")) << t.dump();
        const int first = t.findRow("alpha0");
        const int last = t.findRow("omega");
        EXPECT_GE(last - first, 2) << t.dump();
        for (int i = 0; i < 30; ++i) {
            EXPECT_TRUE(t.contains("alpha" + std::to_string(i) + " ") ||
                        t.contains("alpha" + std::to_string(i)))
                << i << t.dump();
        }
        t.send(keys::Enter);
        EXPECT_TRUE(t.waitForExit()) << t.dump();
    }
    {
        // The choice box keeps its text to three wrapped rows of at most 60 columns.
        Terminal t = demo("selectex");
        ASSERT_TRUE(t.waitForText("alpha0")) << t.dump();
        ASSERT_TRUE(t.waitForText("Yes")) << t.dump();
        const int first = t.findRow("alpha0");
        EXPECT_NE(t.row(first + 2).find("alpha"), std::string::npos) << t.dump();
        EXPECT_EQ(t.row(first + 3).find("alpha"), std::string::npos) << t.dump();
        EXPECT_FALSE(t.contains("omega")) << t.dump();
        for (int r = first; r < first + 3; ++r) {
            // From the first word to the last digit on the row: the text's own width.
            const std::string line = t.row(r);
            const size_t from = line.find("alpha");
            const size_t to = line.find_last_of("0123456789");
            ASSERT_NE(from, std::string::npos) << r << t.dump();
            EXPECT_LT(to - from, 60u) << r << t.dump();
        }
        t.send(keys::Tab);
        t.send(keys::Enter);
        EXPECT_TRUE(has(outcome(t), "result=No")) << t.dump();
    }
    Terminal t = demo("smart");
    // 80 columns: 90 % is 72, and 275 bytes need four lines at that width.
    EXPECT_TRUE(has(outcome(t), "smart width=72 height=4 breaks=3")) << t.dump();
}

TEST(ToolkitScreen, CheckboxEnablesAndDisablesItsEntries) {
    {
        Terminal t = demo("check");
        ASSERT_TRUE(t.waitForText("Enable")) << t.dump();
        // Unchecked: Tab skips both entries and lands on the button.
        t.send(keys::Tab);
        ASSERT_TRUE(t.waitFor([](const Terminal& s) { return s.reverseText() == "Done"; }))
            << t.dump();
        t.send(keys::Tab);
        // newt shows a focused checkbox by the cursor, not in reverse.
        ASSERT_TRUE(t.waitFor([](const Terminal& s) {
            return s.cursor().first == s.findRow("Enable") && s.reverseText().empty();
        })) << t.dump();
        t.send(keys::Space);
        ASSERT_TRUE(t.waitForText("[*]")) << t.dump();
        t.send(keys::Tab);
        t.type("12");
        t.send(keys::Tab);
        t.type("34");
        t.send(keys::Tab);
        ASSERT_TRUE(t.waitFor([](const Terminal& s) { return s.reverseText() == "Done"; }))
            << t.dump();
        t.send(keys::Enter);
        EXPECT_TRUE(has(outcome(t), "e1=12 e2=34 check=*")) << t.dump();
    }
    {
        // Checked and unchecked again: the entries are disabled again and keep nothing typed.
        Terminal t = demo("check");
        ASSERT_TRUE(t.waitForText("Enable")) << t.dump();
        t.send(keys::Space);
        ASSERT_TRUE(t.waitForText("[*]")) << t.dump();
        t.send(keys::Space);
        ASSERT_TRUE(t.waitForText("[ ]")) << t.dump();
        t.send(keys::Tab);
        ASSERT_TRUE(t.waitFor([](const Terminal& s) { return s.reverseText() == "Done"; }))
            << t.dump();
        t.type("9");
        t.send(keys::Enter);
        EXPECT_TRUE(has(outcome(t), "e1= e2= check= ")) << t.dump();
    }
}

TEST(ToolkitScreen, CheckboxEnablesAndDisablesItsCheckboxes) {
    Terminal t = demo("checkboxes");
    ASSERT_TRUE(t.waitForText("Sub two")) << t.dump();
    t.send(keys::Tab);
    ASSERT_TRUE(t.waitFor([](const Terminal& s) { return s.reverseText() == "Done"; })) << t.dump();
    t.send(keys::Tab);
    t.send(keys::Space);
    ASSERT_TRUE(t.waitForText("[*] Enable")) << t.dump();
    t.send(keys::Tab);
    ASSERT_TRUE(t.waitFor([](const Terminal& s) {
        return s.cursor().first == s.findRow("Sub one");
    })) << t.dump();
    t.send(keys::Tab);
    t.send(keys::Space);
    ASSERT_TRUE(t.waitForText("[*] Sub two")) << t.dump();
    t.send(keys::Tab);
    ASSERT_TRUE(t.waitFor([](const Terminal& s) { return s.reverseText() == "Done"; })) << t.dump();
    t.send(keys::Enter);
    EXPECT_TRUE(has(outcome(t), "s1=  s2=* check=*")) << t.dump();
}

TEST(ToolkitScreen, FormCallbacksAndFiltersCarryTheirState) {
    Terminal t = demo("callbacks");
    ASSERT_TRUE(t.waitForText("toggles=0")) << t.dump();
    t.send(keys::Space);
    ASSERT_TRUE(t.waitForText("toggles=1")) << t.dump();
    t.send(keys::Space);
    ASSERT_TRUE(t.waitForText("toggles=2")) << t.dump();
    t.send("\x1bOQ");  // F2, registered as a hot key with its own id
    t.send(keys::Tab);
    t.type("ab1");
    ASSERT_TRUE(t.waitForText("AB1")) << t.dump();
    t.send(keys::Tab);
    ASSERT_TRUE(t.waitFor([](const Terminal& s) { return s.reverseText() == "Done"; })) << t.dump();
    t.send(keys::Enter);
    EXPECT_TRUE(has(outcome(t), "toggles=2 text=AB1 hotkey=2")) << t.dump();
}

TEST(ToolkitScreen, IpEntryKeepsOnlyDigitsAndDots) {
    Terminal t = demo("ip");
    ASSERT_TRUE(t.waitForText("Address")) << t.dump();
    t.type("1a.2-3");
    ASSERT_TRUE(t.waitForText("1.23_")) << t.dump();
    // Enter is refused by the filter and left to the form, which does nothing with it here;
    // Tab still moves on to the button.
    t.send(keys::Enter);
    t.send(keys::Tab);
    ASSERT_TRUE(t.waitFor([](const Terminal& s) { return s.reverseText() == "Done"; })) << t.dump();
    t.send(keys::Enter);
    EXPECT_TRUE(has(outcome(t), "ip=1.23\r\n")) << t.dump();
}

TEST(ToolkitScreen, JapaneseTextIsLegibleAndEntriesComeBackAsEucJp) {
    TerminalOptions opts;
    opts.env = {{"LANG", "ja_JP.UTF-8"},
                {"LC_ALL", std::nullopt},
                {"LC_MESSAGES", std::nullopt},
                {"LC_CTYPE", std::nullopt}};
    Terminal t = demo("japanese", opts);
    ASSERT_TRUE(t.waitForText("日本語のテスト")) << t.dump();
    EXPECT_TRUE(t.contains("確認")) << t.dump();
    t.send(keys::Enter);
    ASSERT_TRUE(t.waitForText("Stage 2")) << t.dump();
    t.type("テスト");
    ASSERT_TRUE(t.waitForText("テスト")) << t.dump();
    t.send(keys::Enter);
    // テスト in EUC-JP.
    EXPECT_TRUE(has(outcome(t), "entry=A5C6A5B9A5C8")) << t.dump();
}

}  // namespace
