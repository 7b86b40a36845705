// The toolkit's boxes as a person at an 80x25 terminal sees them, driven through toolkit_demo,
// which runs the scenarios named on its command line one after another.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "terminal.h"

namespace {

using zoltest::Terminal;
namespace keys = zoltest::keys;
using namespace std::chrono_literals;

Terminal demo(std::vector<std::string> scenarios, const char* lang = "C.UTF-8") {
    zoltest::TerminalOptions opts;
    opts.env = {{"LANG", lang},
                {"LC_ALL", std::nullopt},
                {"LC_MESSAGES", std::nullopt},
                {"LC_CTYPE", std::nullopt}};
    scenarios.insert(scenarios.begin(), TOOLKIT_DEMO);
    return Terminal(scenarios, std::move(opts));
}

// Waits for the demo to end and checks what it printed last, after leaving the screen.
void expectOutcome(Terminal& t, const std::string& expected) {
    ASSERT_TRUE(t.waitForExit()) << t.dump();
    EXPECT_EQ(t.exitStatus(), 0) << t.dump();
    const std::string out = t.rawOutput();
    EXPECT_EQ(out.substr(out.size() - std::min(expected.size(), out.size())), expected) << t.dump();
}

bool reverseIs(Terminal& t, const std::string& text) {
    return t.waitFor([&](const Terminal& s) { return s.reverseText() == text; });
}

TEST(ToolkitScreen, MessageBoxAndButtonChoice) {
    Terminal t = demo({"select", "msg", "select"});
    // The choice box closed by hot key 15 returns null.
    ASSERT_TRUE(t.waitForText("Pick one")) << t.dump();
    t.send(keys::CtrlO);

    // The message box ignores hot keys and closes only by its button. A box that closed would
    // show the next form at once; newt drops keys typed ahead of a new form, so each key gets
    // its own short watch.
    ASSERT_TRUE(t.waitForText("Second line")) << t.dump();
    EXPECT_EQ(t.findRow("First line") + 1, t.findRow("Second line")) << t.dump();
    EXPECT_TRUE(t.contains("Notice")) << t.dump();
    for (std::string_view key : {keys::CtrlA, keys::CtrlO, keys::F12}) {
        t.send(key);
        EXPECT_FALSE(t.waitForText("typed:", 300ms)) << t.dump();
    }
    t.send(keys::Enter);
    ASSERT_TRUE(t.waitForText("typed:")) << t.dump();
    EXPECT_FALSE(t.contains("Second line")) << t.dump();
    t.type("zz");
    t.send(keys::Enter);

    ASSERT_TRUE(t.waitForText("Pick one")) << t.dump();
    ASSERT_TRUE(reverseIs(t, "Yes")) << t.dump();
    t.send(keys::Tab);
    ASSERT_TRUE(reverseIs(t, "No")) << t.dump();
    t.send(keys::Enter);

    expectOutcome(t, "result=null\r\nmsg closed; entry=zz\r\nresult=No\r\n");
}

TEST(ToolkitScreen, CheckboxesEnableTheirFieldsAndTheAddressEntryFilters) {
    Terminal t = demo({"check", "checkboxes", "ip"});
    ASSERT_TRUE(t.waitForText("Enable")) << t.dump();
    // Unchecked: Tab skips both entries and lands on the button.
    t.send(keys::Tab);
    ASSERT_TRUE(reverseIs(t, "Done")) << t.dump();
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
    ASSERT_TRUE(reverseIs(t, "Done")) << t.dump();
    t.send(keys::Enter);

    // The same for two checkboxes.
    ASSERT_TRUE(t.waitForText("Sub two")) << t.dump();
    t.send(keys::Tab);
    ASSERT_TRUE(reverseIs(t, "Done")) << t.dump();
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
    ASSERT_TRUE(reverseIs(t, "Done")) << t.dump();
    t.send(keys::Enter);

    // The address entry refuses letters and '-' and accepts '.'.
    ASSERT_TRUE(t.waitForText("Address")) << t.dump();
    t.type("1a.2-3");
    ASSERT_TRUE(t.waitForText("1.23_")) << t.dump();
    // Enter is refused by the filter and left to the form, which does nothing with it here;
    // Tab still moves on to the button.
    t.send(keys::Enter);
    t.send(keys::Tab);
    ASSERT_TRUE(reverseIs(t, "Done")) << t.dump();
    t.send(keys::Enter);
    expectOutcome(t, "e1=12 e2=34 check=*\r\ns1=  s2=* check=*\r\nip=1.23\r\n");
}

TEST(ToolkitScreen, JapaneseTextIsLegibleAndEntriesComeBackAsEucJp) {
    Terminal t = demo({"japanese"}, "ja_JP.UTF-8");
    ASSERT_TRUE(t.waitForText("日本語のテスト")) << t.dump();
    EXPECT_TRUE(t.contains("確認")) << t.dump();
    t.send(keys::Enter);
    ASSERT_TRUE(t.waitForText("Stage 2")) << t.dump();
    t.type("テスト");
    ASSERT_TRUE(t.waitForText("テスト")) << t.dump();
    t.send(keys::Enter);
    // テスト in EUC-JP.
    expectOutcome(t, "entry=A5C6A5B9A5C8\r\n");
}

}  // namespace
