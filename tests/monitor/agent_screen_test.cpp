// The agent event list and the per-event report settings as an administrator meets them: an
// event bound to a destination ID and freed again, the handling-method marker, a whole source
// changed at once without the remote report service's own ID, and the administrator variant's
// error kind and level, each checked in the store afterwards.
#include <gtest/gtest.h>

#include "monitor_screen_util.h"
#include "records.h"

namespace keys = zoltest::keys;
using frametest::dismiss;
using frametest::english;
using frametest::frameTitle;
using frametest::sendTimes;
using frametest::waitFocus;
using montest::Bindings;
using montest::Dword;
using montest::Text;
using zoltest::ProductRoot;
using Ids = std::set<std::string>;

namespace {

// Two sources; the second's last event reports to the remote report service and to SNMP.
const char* const kCatalogue = R"([AgentEvent\Alpha\40000001]
"TrapName"="alphaUp"
"DealMethod"="NO_US_DEALMETHOD"
"Action"=dword:00000000
"ErrKind"=dword:00000005
"Level"=dword:00000002
[AgentEvent\Alpha\80000002]
"TrapName"="alphaWarn"
"DealMethod"="Reseat the card."
"ErrKind"=dword:00000006
"Level"=dword:00000008
[AgentEvent\Beta\C0000003]
"TrapName"="betaDown"
[AgentEvent\Beta\C0000004]
"TrapName"="betaGone"
[AgentEvent\Beta\C0000004\Dest]
"VantrelReport"=dword:00000001
"SNMP"=dword:00000001
)";

const std::string kAlpha1 = "AgentEvent\\Alpha\\40000001";
const std::string kAlpha2 = "AgentEvent\\Alpha\\80000002";
const std::string kBeta3 = "AgentEvent\\Beta\\C0000003";
const std::string kBeta4 = "AgentEvent\\Beta\\C0000004";

const char* const kEventScreen = "TITTLE_SUBAGENT_SET_ID";

// Presses the focused button and waits for the per-event screen to close.
void PressAndClose(zoltest::Terminal& t, const ProductRoot& root) {
    t.send(keys::Enter);
    montest::WaitSettingsClosed(t, root, kEventScreen);
}

void PressOkAndClose(zoltest::Terminal& t, const ProductRoot& root) {
    ASSERT_TRUE(waitFocus(t, english(root, "BUTTON_OK_ID"))) << t.dump();
    PressAndClose(t, root);
}

}  // namespace

// The list shows each event's trap; an ID is added with a new action while the marker of an
// unset handling method stays; then removed while a handling method is typed.
TEST(AgentEvents, BindRemoveAndTheHandlingMethod) {
    ProductRoot root;
    montest::ReplaceCatalogues(root, kCatalogue);
    auto t = montest::OpenAgentList(root);
    ASSERT_TRUE(t->waitForText("alphaUp")) << t->dump();
    sendTimes(*t, 3);  // radios, then the event list
    t->send(keys::Down);
    ASSERT_TRUE(t->waitForText("alphaWarn")) << t->dump();
    t->send(keys::Up);
    ASSERT_TRUE(t->waitForText("alphaUp")) << t->dump();
    t->send(keys::Tab);
    montest::OpenSettings(*t, root, kEventScreen);
    EXPECT_TRUE(t->contains(english(root, "AGENT_DEALMETHOD_ID"))) << t->dump();
    EXPECT_FALSE(t->contains(NO_US_DEALMETHOD)) << t->dump();
    EXPECT_TRUE(t->contains("<none>")) << t->dump();

    t->send(keys::Down);  // action: shut down
    ASSERT_TRUE(t->waitForText(english(root, "SUBAGENT_ACTION_SHUTDOWN_ID"))) << t->dump();
    sendTimes(*t, 2);  // past the empty handling method to the other IDs
    t->send(keys::Down);
    t->send(keys::Tab);
    ASSERT_TRUE(waitFocus(*t, english(root, "GPSET_BUTTON_ADD_ID"))) << t->dump();
    t->send(keys::Enter);
    ASSERT_TRUE(t->waitForNoText("<none>")) << t->dump();
    sendTimes(*t, 3);
    PressOkAndClose(*t, root);
    EXPECT_EQ(Bindings(root, kAlpha1), Ids{"TCP_IP In-Band"});
    EXPECT_EQ(Dword(root, kAlpha1, "Action"), 1);
    EXPECT_EQ(Text(root, kAlpha1, "DealMethod"), NO_US_DEALMETHOD);

    montest::OpenSettings(*t, root, kEventScreen);
    ASSERT_TRUE(t->waitForText("TCP_IP In-Band")) << t->dump();
    t->send(keys::Tab);
    t->send("Call the operator");
    sendTimes(*t, 3);
    ASSERT_TRUE(waitFocus(*t, english(root, "GPSET_BUTTON_REMOVE_ID"))) << t->dump();
    t->send(keys::Enter);
    ASSERT_TRUE(t->waitForText("<none>")) << t->dump();
    sendTimes(*t, 2);
    PressAndClose(*t, root);
    EXPECT_EQ(Bindings(root, kAlpha1), Ids{});
    EXPECT_EQ(Text(root, kAlpha1, "DealMethod"), "Call the operator");
    EXPECT_EQ(Dword(root, kAlpha1, "Action"), 1);
    montest::CloseListAndMenu(*t, root, "TITTLE_AGENT_ID");
}

// Remove on an empty list warns (its blanks around the text); Ctrl-O leaves the screen without
// writing what Add did; a handling method cleared by the user is stored empty.
TEST(AgentEvents, EmptyListWarningCtrlOAndAClearedHandlingMethod) {
    ProductRoot root;
    montest::ReplaceCatalogues(root, kCatalogue);
    auto t = montest::OpenAgentList(root);
    sendTimes(*t, 4);
    montest::OpenSettings(*t, root, kEventScreen);
    sendTimes(*t, 4);
    ASSERT_TRUE(waitFocus(*t, english(root, "GPSET_BUTTON_REMOVE_ID"))) << t->dump();
    t->send(keys::Enter);
    const std::string removeWarning = "   " + english(root, "WARN_INVALID_ID") + "    ";
    ASSERT_TRUE(t->waitForText(removeWarning)) << t->dump();
    EXPECT_TRUE(t->contains("┤ " + english(root, "TITTLE_WARNING_ID") + " ├")) << t->dump();
    dismiss(*t, removeWarning);
    t->send(keys::BackTab);
    ASSERT_TRUE(waitFocus(*t, english(root, "GPSET_BUTTON_ADD_ID"))) << t->dump();
    t->send(keys::Enter);
    ASSERT_TRUE(t->waitForNoText("<none>")) << t->dump();
    frametest::closeWindow(*t, root, kEventScreen);
    EXPECT_EQ(Bindings(root, kAlpha1), Ids{}) << "Ctrl-O wrote";

    t->send(keys::BackTab);  // back to the event list
    t->send(keys::Down);
    t->send(keys::Tab);
    montest::OpenSettings(*t, root, kEventScreen);
    ASSERT_TRUE(t->waitForText("Reseat the card.")) << t->dump();
    t->send(keys::Tab);
    montest::Retype(*t, "");
    ASSERT_TRUE(t->waitForNoText("Reseat the card.")) << t->dump();
    sendTimes(*t, 5);
    PressOkAndClose(*t, root);
    EXPECT_EQ(Text(root, kAlpha2, "DealMethod"), "");
    montest::CloseListAndMenu(*t, root, "TITTLE_AGENT_ID");
}

// "Whole source" shows the single all-events entry and no trap, and hands "All" on: the screen
// has no action or handling method, lists every ID but the remote report service's own, asks
// before writing (Cancel keeps it open), and sets or clears each listed ID on every event of the
// source, leaving that service's bindings and the other source alone.
TEST(AgentEvents, WholeSourceLeavesOutTheRemoteReportServiceID) {
    ProductRoot root;
    montest::ReplaceCatalogues(root, kCatalogue);
    auto t = montest::OpenAgentList(root);
    t->send(keys::Down);
    ASSERT_TRUE(t->waitForText("betaDown")) << t->dump();
    t->send(keys::Tab);
    t->send(keys::Space);
    ASSERT_TRUE(t->waitForText(english(root, "AGENT_ALL_ID"))) << t->dump();
    ASSERT_TRUE(t->waitForNoText("betaDown")) << t->dump();
    sendTimes(*t, 3);
    montest::OpenSettings(*t, root, kEventScreen);
    EXPECT_TRUE(t->contains(english(root, "AGENT_ALL_ID"))) << t->dump();
    EXPECT_FALSE(t->contains(english(root, "SUBAGENT_ACTION_ID"))) << t->dump();
    EXPECT_FALSE(t->contains(english(root, "AGENT_DEALMETHOD_ID"))) << t->dump();

    // Only SNMP to report to; OK asks; Cancel goes back to the screen.
    t->send(keys::Tab);
    t->send(keys::Enter);
    sendTimes(*t, 3);
    t->send(keys::Enter);
    const std::string alarm = english(root, "SETALL_ALARM_ID").substr(0, 40);
    ASSERT_TRUE(t->waitForText(alarm)) << t->dump();
    t->send(keys::Tab);
    t->send(keys::Enter);
    ASSERT_TRUE(t->waitForNoText(alarm)) << t->dump();
    EXPECT_EQ(Bindings(root, kBeta3), Ids{}) << "written after Cancel";
    ASSERT_TRUE(waitFocus(*t, english(root, "BUTTON_OK_ID"))) << t->dump();
    t->send(keys::Enter);
    ASSERT_TRUE(t->waitForText(alarm)) << t->dump();
    PressAndClose(*t, root);
    EXPECT_EQ(Bindings(root, kBeta3), (Ids{"SNMP"}));
    EXPECT_EQ(Bindings(root, kBeta4), (Ids{"SNMP", "VantrelReport"}));

    // Three IDs are listed: a fourth Add finds nothing to move and warns.
    montest::OpenSettings(*t, root, kEventScreen);
    t->send(keys::Tab);
    for (int i = 0; i < 3; ++i)
        t->send(keys::Enter);
    const std::string addWarning = "  " + english(root, "TITTLE_WARNING_ID") + "  ";
    ASSERT_TRUE(t->waitForText("<none>")) << t->dump();
    EXPECT_FALSE(t->contains("VantrelReport")) << t->dump();
    t->send(keys::Enter);
    ASSERT_TRUE(t->waitForText("┤ " + addWarning + " ├")) << t->dump();
    dismiss(*t, english(root, "WARN_INVALID_ID"));
    t->send(keys::Tab);
    t->send(keys::Enter);  // SNMP back
    t->send(keys::Enter);  // TCP_IP In-Band back
    sendTimes(*t, 2);
    ASSERT_TRUE(waitFocus(*t, english(root, "BUTTON_OK_ID"))) << t->dump();
    t->send(keys::Enter);
    ASSERT_TRUE(t->waitForText(alarm)) << t->dump();
    PressAndClose(*t, root);
    EXPECT_EQ(Bindings(root, kBeta3), Ids{"TCP_IP Out-of-Band"});
    EXPECT_EQ(Bindings(root, kBeta4), (Ids{"TCP_IP Out-of-Band", "VantrelReport"}));
    EXPECT_EQ(Bindings(root, kAlpha1), Ids{});
    EXPECT_EQ(Dword(root, kBeta3, "Action"), -1) << "a whole source writes no settings";
    montest::CloseListAndMenu(*t, root, "TITTLE_AGENT_ID");
}

// Started with -A: error kind and level instead of the handling method. A kind without a row (5,
// read as unset) shows the first row and is written back as application; "off" (6) starts on
// its own row; the handling method is left as it was.
TEST(AgentEvents, AdministratorErrorKindAndLevel) {
    ProductRoot root;
    montest::ReplaceCatalogues(root, kCatalogue);
    auto t = montest::OpenAgentList(root, {"-A"});
    sendTimes(*t, 4);
    montest::OpenSettings(*t, root, kEventScreen);
    EXPECT_TRUE(t->contains(english(root, "ADMAGENT_ERRKIND_LABEL_ID"))) << t->dump();
    EXPECT_TRUE(t->contains(english(root, "ADMAGENT_ERRKIND_AP_ID"))) << t->dump();
    EXPECT_FALSE(t->contains(english(root, "AGENT_DEALMETHOD_ID"))) << t->dump();
    sendTimes(*t, 2);
    for (int i = 0; i < 3; ++i)
        t->send(keys::Down);
    sendTimes(*t, 5);
    PressOkAndClose(*t, root);
    EXPECT_EQ(Dword(root, kAlpha1, "ErrKind"), 3);
    EXPECT_EQ(Dword(root, kAlpha1, "Level"), 5);
    EXPECT_EQ(Text(root, kAlpha1, "DealMethod"), NO_US_DEALMETHOD);

    t->send(keys::BackTab);
    t->send(keys::Down);
    t->send(keys::Tab);
    montest::OpenSettings(*t, root, kEventScreen);
    ASSERT_TRUE(t->waitForText(english(root, "ADMAGENT_ERRKIND_OFF_ID"))) << t->dump();
    t->send(keys::Tab);
    t->send(keys::Down);
    ASSERT_TRUE(t->waitForText(english(root, "ADMAGENT_ERRKIND_ENV_ID"))) << t->dump();
    sendTimes(*t, 6);
    PressOkAndClose(*t, root);
    EXPECT_EQ(Dword(root, kAlpha2, "ErrKind"), 4);
    EXPECT_EQ(Dword(root, kAlpha2, "Level"), 8);
    EXPECT_EQ(Text(root, kAlpha2, "DealMethod"), "Reseat the card.");
    montest::CloseListAndMenu(*t, root, "TITTLE_AGENT_ID");
}
