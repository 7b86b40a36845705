// The base-setting screens as an administrator meets them: the menu with and without the remote
// report row, the manager on/off panels, the shutdown delay and the SNMP trap list, each checked
// in the store afterwards.
#include <gtest/gtest.h>
#include <zolwin.h>

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "frame/textformat.h"
#include "frame_test_util.h"
#include "regpaths.h"
#include "store_reader.h"

namespace keys = zoltest::keys;
using frametest::dismiss;
using frametest::english;
using frametest::frameTitle;
using frametest::sendTimes;
using frametest::traceCount;
using frametest::traceDump;
using frametest::waitFocus;
using zoltest::ProductRoot;

namespace {

const std::string kMethodKey = ZOL_KEY_METHOD "\\";

// Reads a REG_DWORD of a base-setting method straight from the root's store.
DWORD MethodDword(const ProductRoot& root, const std::string& method, const char* value) {
    return zoltest::StoreReader(root).dword(kMethodKey + method, value).value_or(0xDEADBEEF);
}

// The stored SNMP trap destinations, in order.
std::vector<std::string> TrapDestinations(const ProductRoot& root) {
    return zoltest::StoreReader(root)
        .multiString(kMethodKey + "MANAGER (SNMP)", "TrapDest")
        .value_or(std::vector<std::string>{});
}

void SetTrapDestinations(const ProductRoot& root, const std::vector<std::string>& list) {
    ASSERT_EQ(
        zoltest::StoreReader(root).setMultiString(kMethodKey + "MANAGER (SNMP)", "TrapDest", list),
        ERROR_SUCCESS);
}

void DeleteMethod(const ProductRoot& root, const std::string& method) {
    frametest::zolreg(root, {"delete", "HKLM\\" + kMethodKey + method, "/f"});
}

// The trap panel redraws the whole terminal before each run of its form, so its title may vanish
// for a moment while it is still open: closed means the base menu's focused row is seen again.
bool SnmpPanelClosed(zoltest::Terminal& t, const ProductRoot& root) {
    return waitFocus(t, english(root, "BASE_REPORT_SNMP_ID"));
}

// Starts the program and opens the base-setting menu from the main menu's first row.
std::unique_ptr<zoltest::Terminal> OpenBaseMenu(const ProductRoot& root) {
    auto t = frametest::startMenu(root);
    t->send(keys::Enter);
    EXPECT_TRUE(t->waitForText(english(root, "BASE_REPORT_ID"))) << t->dump();
    return t;
}

// Opens a row of the report list (0 SNMP, 1 in-band, 2 out-of-band, 3 remote report) and waits
// for the screen titled titleId.
void OpenReportRow(zoltest::Terminal& t, const ProductRoot& root, int row, const char* titleId) {
    sendTimes(t, row, keys::Down);
    t.send(keys::Enter);
    ASSERT_TRUE(t.waitForText("┤ " + english(root, titleId) + " ├")) << t.dump();
}

// Ends the base-setting menu and then the main menu with their hot key.
void CloseAll(zoltest::Terminal& t, const ProductRoot& root) {
    t.send(keys::CtrlO);
    ASSERT_TRUE(t.waitForNoText(english(root, "BASE_REPORT_ID"))) << t.dump();
    frametest::closeMenu(t);
}

// From the report list, opens the shutdown-delay panel of the other list.
void OpenDelayPanel(zoltest::Terminal& t, const ProductRoot& root) {
    t.send(keys::Tab);
    t.send(keys::Enter);
    ASSERT_TRUE(t.waitForText(frameTitle(root, "BASE_SUB_TITTLE_ID"))) << t.dump();
}

// Tabs to the delay panel's OK, presses it and waits for the panel to close.
void OkDelayPanel(zoltest::Terminal& t, const ProductRoot& root) {
    t.send(keys::Tab);
    ASSERT_TRUE(waitFocus(t, english(root, "BUTTON_OK_ID"))) << t.dump();
    t.send(keys::Enter);
    ASSERT_TRUE(t.waitForNoText(frameTitle(root, "BASE_SUB_TITTLE_ID"))) << t.dump();
}

// Presses the trap panel's button labelled labelId once it has the focus, with Space, which
// presses a newt button as Enter does. (The panel once handed the terminal back before every run
// of its form, when Enter could meet the terminal in its cooked mode; it now only redraws.)
void PressTrapButton(zoltest::Terminal& t, const ProductRoot& root, const char* labelId) {
    ASSERT_TRUE(waitFocus(t, english(root, labelId))) << t.dump();
    t.send(keys::Space);
}

// In the trap panel's address dialog: types an address and presses OK.
void EnterAddress(zoltest::Terminal& t, const std::string& typed) {
    t.type(typed);
    t.send(keys::Tab);
    t.send(keys::Enter);
}

// Replaces the delay entry's text.
void Retype(zoltest::Terminal& t, const std::string& text) {
    frametest::retype(t, text, 8);
}

}  // namespace

// Installed service: four report rows, the last one entering the remote report base screen.
// Not installed: three rows; a panel that cannot read its record shows its error box and the
// menu stays.
TEST(BaseMenu, RowsFollowInternetMailModeAndFailedPanelsKeepTheMenu) {
    const char* const rows[] = {"BASE_REPORT_SNMP_ID", "BASE_REPORT_INBAND_ID",
                                "BASE_REPORT_OUTBAND_ID", "BASE_REPORT_VANTREL_ID"};
    {
        ProductRoot root;
        auto t = OpenBaseMenu(root);
        const int first = t->findRow(english(root, rows[0]));
        for (int i = 1; i < 4; ++i)
            EXPECT_EQ(t->findRow(english(root, rows[i])), first + i) << t->dump();
        EXPECT_EQ(t->findRow(english(root, "BASE_OTHER_ID")), first + 5) << t->dump();
        EXPECT_EQ(t->findRow(english(root, "BASE_OTHER_SHUTDOWN_ID")), first + 7) << t->dump();
        OpenReportRow(*t, root, 3, "BASE_REPORT_VANTREL_ID");
        // The remote report base screen is drawn once the cursor stands on its first check box.
        const std::string enable = english(root, "VNT_SUB_ENABLE_ID");
        ASSERT_TRUE(t->waitFor([&](const zoltest::Terminal& s) {
            return s.findRow(enable) >= 0 && s.cursor().first == s.findRow(enable);
        })) << t->dump();
        t->send(keys::CtrlO);
        ASSERT_TRUE(t->waitForNoText(enable)) << t->dump();
        EXPECT_TRUE(t->contains(frameTitle(root, "TITTLE_BASE_ID"))) << t->dump();
        // Close ends the menu.
        t->send(keys::Tab);
        t->send(keys::Tab);
        ASSERT_TRUE(waitFocus(*t, english(root, "BUTTON_CLOSE_ID"))) << t->dump();
        t->send(keys::Enter);
        ASSERT_TRUE(t->waitForNoText(english(root, "BASE_REPORT_ID"))) << t->dump();
        frametest::closeMenu(*t);
    }
    ProductRoot root;
    ASSERT_EQ(zoltest::StoreReader(root).setDword(ZOL_KEY_VNT_SETUP, "Installed", 0),
              ERROR_SUCCESS);
    DeleteMethod(root, "MANAGER (TCP_IP IN-BAND)");
    auto t = OpenBaseMenu(root);
    const int first = t->findRow(english(root, rows[0]));
    EXPECT_EQ(t->findRow(english(root, rows[2])), first + 2) << t->dump();
    EXPECT_EQ(t->findRow(english(root, rows[3])), -1) << t->dump();
    EXPECT_EQ(t->findRow(english(root, "BASE_OTHER_ID")), first + 4) << t->dump();
    t->send(keys::Down);
    t->send(keys::Enter);
    const std::string error = FormatText(english(root, "FUNC_CALL_ERR"), {"SubSimplePanel"});
    dismiss(*t, error);
    EXPECT_TRUE(t->contains(frameTitle(root, "TITTLE_BASE_ID"))) << t->dump();
    CloseAll(*t, root);
    EXPECT_EQ(traceCount(root, 1, "<InitBaseSetting() Failed,return -1."), 1) << traceDump(root);

    // Without any base setting the menu does not open: its error box, then the main menu.
    frametest::zolreg(root,
                      {"delete", "HKLM\\" + kMethodKey.substr(0, kMethodKey.size() - 1), "/f"});
    t = frametest::startMenu(root);
    t->send(keys::Enter);
    const std::string noRecords =
        FormatText(english(root, "FUNC_CALL_ERR"), {"InitAllBaseSetting"});
    dismiss(*t, noRecords);
    EXPECT_FALSE(t->contains(frameTitle(root, "TITTLE_BASE_ID"))) << t->dump();
    frametest::closeMenu(*t);
    EXPECT_EQ(traceCount(root, 1, "<InitAllBaseSetting() failed."), 1) << traceDump(root);
}

// In-band (seeded on) switched off with OK is stored; out-of-band switched on and cancelled is
// not.
TEST(BaseMenu, ManagerPanelsSwitchTheirMethod) {
    ProductRoot root;
    auto t = OpenBaseMenu(root);
    // Each panel names the method it switches.
    OpenReportRow(*t, root, 1, "BASE_SUBSIMPLE_INBAND_TITLE_ID");
    EXPECT_TRUE(t->waitForText("[*] " + english(root, "BASE_SUB_ENABLE_ID"))) << t->dump();
    t->send(keys::Space);
    ASSERT_TRUE(t->waitForText("[ ] " + english(root, "BASE_SUB_ENABLE_ID"))) << t->dump();
    t->send(keys::Tab);
    t->send(keys::Enter);
    ASSERT_TRUE(t->waitForNoText(english(root, "BASE_SUBSIMPLE_INBAND_TITLE_ID"))) << t->dump();
    EXPECT_EQ(MethodDword(root, "MANAGER (TCP_IP IN-BAND)", "Enable"), 0u);

    t->send(keys::Home);
    OpenReportRow(*t, root, 2, "BASE_SUBSIMPLE_OUTBAND_TITLE_ID");
    EXPECT_TRUE(t->waitForText("[ ] " + english(root, "BASE_SUB_ENABLE_ID"))) << t->dump();
    t->send(keys::Space);
    sendTimes(*t, 2);
    ASSERT_TRUE(waitFocus(*t, english(root, "BUTTON_CANCEL_ID"))) << t->dump();
    t->send(keys::Enter);
    ASSERT_TRUE(t->waitForNoText(english(root, "BASE_SUBSIMPLE_OUTBAND_TITLE_ID"))) << t->dump();
    EXPECT_EQ(MethodDword(root, "MANAGER (TCP_IP OUT-OF-BAND)", "Enable"), 0u);
    CloseAll(*t, root);
}

// The delay (seeded off, 120): 1801 and an empty entry refused, 1800 and 0 stored; switched off
// the old delay stays whatever the entry shows; a failed write still closes the panel.
TEST(BaseMenu, ShutdownDelay) {
    ProductRoot root;
    auto t = OpenBaseMenu(root);
    const std::string title = frameTitle(root, "BASE_SUB_TITTLE_ID");
    // The other list keeps the focus after its panel closes.
    bool otherListFocused = false;
    const auto open = [&] {
        if (!std::exchange(otherListFocused, true))
            t->send(keys::Tab);
        t->send(keys::Enter);
        ASSERT_TRUE(t->waitForText(title)) << t->dump();
    };
    // Focus order with the delay enabled: check box, delay, OK.
    const auto pressOk = [&] {
        t->send(keys::Tab);
        ASSERT_TRUE(waitFocus(*t, english(root, "BUTTON_OK_ID"))) << t->dump();
        t->send(keys::Enter);
    };

    open();
    EXPECT_TRUE(t->waitForText("[ ] " + english(root, "BASE_SUB_ENABLE_ID"))) << t->dump();
    EXPECT_TRUE(t->waitForText("120")) << t->dump();
    // Unmarked, the delay entry takes no focus: Tab goes straight to OK.
    t->send(keys::Tab);
    ASSERT_TRUE(waitFocus(*t, english(root, "BUTTON_OK_ID"))) << t->dump();
    t->send(keys::Up);
    t->send(keys::Space);
    t->send(keys::Tab);
    Retype(*t, "1801");
    pressOk();
    dismiss(*t, FormatText("Enter a delay from %s to %s seconds.", {"0", "1800"}));
    EXPECT_EQ(english(root, "ERR_SHUTDOWN_ID"), "Enter a delay from %d to %d seconds.");
    t->send(keys::Up);
    Retype(*t, "");
    pressOk();
    dismiss(*t, english(root, "ERR_SHUTDOWN_NULL_ID"));
    // Letters never reach the entry.
    t->send(keys::Up);
    Retype(*t, "18x00");
    pressOk();
    ASSERT_TRUE(t->waitForNoText(title)) << t->dump();
    EXPECT_EQ(MethodDword(root, "SHUTDOWN DELAY", "Enable"), 1u);
    EXPECT_EQ(MethodDword(root, "SHUTDOWN DELAY", "Value"), 1800u);

    open();
    t->send(keys::Tab);
    Retype(*t, "0");
    pressOk();
    ASSERT_TRUE(t->waitForNoText(title)) << t->dump();
    EXPECT_EQ(MethodDword(root, "SHUTDOWN DELAY", "Value"), 0u);

    open();
    t->send(keys::Tab);
    Retype(*t, "900");
    t->send(keys::Up);
    t->send(keys::Space);
    pressOk();
    ASSERT_TRUE(t->waitForNoText(title)) << t->dump();
    EXPECT_EQ(MethodDword(root, "SHUTDOWN DELAY", "Enable"), 0u);
    EXPECT_EQ(MethodDword(root, "SHUTDOWN DELAY", "Value"), 0u);

    // The record vanishes from the store while the panel is open: the write fails, the error
    // box says so and the panel closes all the same.
    open();
    DeleteMethod(root, "SHUTDOWN DELAY");
    pressOk();
    dismiss(*t, FormatText(english(root, "FUNC_CALL_ERR"), {"PutBaseSetting"}));
    EXPECT_TRUE(t->waitForNoText(title)) << t->dump();
    EXPECT_TRUE(t->contains(frameTitle(root, "TITTLE_BASE_ID"))) << t->dump();
    EXPECT_EQ(MethodDword(root, "SHUTDOWN DELAY", "Enable"), 0xDEADBEEFu);
    CloseAll(*t, root);
    EXPECT_EQ(traceCount(root, 1, "PutBaseSetting failed."), 1) << traceDump(root);
}

// Adding (letters refused, a bad address and a duplicate warned of), OK storing the list and the
// switch; a removal stored at once while Cancel drops the additions of the same visit.
TEST(BaseMenu, SnmpTrapList) {
    ProductRoot root;
    auto t = OpenBaseMenu(root);
    const std::string addTitle = frameTitle(root, "SUBBASE_ADD_TITLE");
    // Focus is on Add: the form keeps it there after each dialog.
    const auto pressAdd = [&] {
        PressTrapButton(*t, root, "GPSET_BUTTON_ADD_ID");
        ASSERT_TRUE(t->waitForText(addTitle)) << t->dump();
    };

    OpenReportRow(*t, root, 0, "BASE_SNMP_TITLE");
    EXPECT_TRUE(t->waitForText("[*] " + english(root, "BASE_SUB_ENABLE_ID"))) << t->dump();
    t->send(keys::Space);
    ASSERT_TRUE(t->waitForText("[ ] " + english(root, "BASE_SUB_ENABLE_ID"))) << t->dump();
    sendTimes(*t, 2);
    pressAdd();
    EnterAddress(*t, "a10.x0-.0.1z");
    ASSERT_TRUE(t->waitForNoText(addTitle)) << t->dump();
    ASSERT_TRUE(t->waitForText("10.0.0.1")) << t->dump();
    pressAdd();
    EnterAddress(*t, "10.0.0.300");
    dismiss(*t, english(root, "IDS_ERR_INVALID_IPADDRESS2"));
    ASSERT_TRUE(t->contains(addTitle)) << t->dump();
    t->send(keys::Tab);
    ASSERT_TRUE(waitFocus(*t, english(root, "BUTTON_CANCEL_ID"))) << t->dump();
    t->send(keys::Enter);
    ASSERT_TRUE(t->waitForNoText(addTitle)) << t->dump();
    pressAdd();
    EnterAddress(*t, "10.0.0.1");
    dismiss(*t, english(root, "IDS_ERROR_MSG_EXIST"));
    pressAdd();
    EnterAddress(*t, "192.168.7.7");
    ASSERT_TRUE(t->waitForText("192.168.7.7")) << t->dump();
    sendTimes(*t, 2);
    PressTrapButton(*t, root, "BUTTON_OK_ID");
    ASSERT_TRUE(SnmpPanelClosed(*t, root)) << t->dump();
    EXPECT_EQ(TrapDestinations(root), (std::vector<std::string>{"10.0.0.1", "192.168.7.7"}));
    EXPECT_EQ(MethodDword(root, "MANAGER (SNMP)", "Enable"), 0u);

    // Remove the first (current) address, add one, cancel.
    OpenReportRow(*t, root, 0, "BASE_SNMP_TITLE");
    EXPECT_TRUE(t->waitForText("[ ] " + english(root, "BASE_SUB_ENABLE_ID"))) << t->dump();
    sendTimes(*t, 3);
    PressTrapButton(*t, root, "GPSET_BUTTON_REMOVE_ID");
    ASSERT_TRUE(t->waitForNoText("10.0.0.1")) << t->dump();
    EXPECT_EQ(TrapDestinations(root), (std::vector<std::string>{"192.168.7.7"}));
    t->send(keys::Up);
    pressAdd();
    EnterAddress(*t, "172.16.0.9");
    ASSERT_TRUE(t->waitForText("172.16.0.9")) << t->dump();
    t->send(keys::CtrlO);
    ASSERT_TRUE(SnmpPanelClosed(*t, root)) << t->dump();
    EXPECT_EQ(TrapDestinations(root), (std::vector<std::string>{"192.168.7.7"}));
    CloseAll(*t, root);
}

// A list of 256 refuses a 257th before asking for it; Remove on an empty list fails in the
// library and leaves the listbox empty.
TEST(BaseMenu, SnmpTrapListLimits) {
    ProductRoot root;
    std::vector<std::string> full;
    for (int i = 0; i < 256; ++i)
        full.push_back("10.1." + std::to_string(i / 16) + "." + std::to_string(i % 16));
    SetTrapDestinations(root, full);
    auto t = OpenBaseMenu(root);
    OpenReportRow(*t, root, 0, "BASE_SNMP_TITLE");
    ASSERT_TRUE(t->waitForText("10.1.0.0")) << t->dump();
    sendTimes(*t, 2);
    PressTrapButton(*t, root, "GPSET_BUTTON_ADD_ID");
    const std::string fullText = english(root, "SNMP_TRAP_LIST_FULL_ID");
    ASSERT_TRUE(t->waitForText(fullText)) << t->dump();
    EXPECT_FALSE(t->contains(english(root, "SUBBASE_ADD_TITLE"))) << t->dump();
    dismiss(*t, fullText);
    t->send(keys::CtrlO);
    ASSERT_TRUE(SnmpPanelClosed(*t, root)) << t->dump();
    EXPECT_EQ(TrapDestinations(root).size(), 256u);

    SetTrapDestinations(root, {});
    OpenReportRow(*t, root, 0, "BASE_SNMP_TITLE");
    sendTimes(*t, 3);
    PressTrapButton(*t, root, "GPSET_BUTTON_REMOVE_ID");
    const std::string error = FormatText(english(root, "FUNC_CALL_ERR"), {"DelTrapSetting"});
    dismiss(*t, error);
    t->send(keys::CtrlO);
    ASSERT_TRUE(SnmpPanelClosed(*t, root)) << t->dump();
    CloseAll(*t, root);
}

// An entry for digits keeps what it shows: a full delay entry erased from the end and retyped
// holds exactly what was typed, and that is what is stored.
TEST(BaseMenu, NumberEntryErasedAndRetypedKeepsWhatItShows) {
    ProductRoot root;
    auto t = OpenBaseMenu(root);
    OpenDelayPanel(*t, root);
    t->send(keys::Space);
    t->send(keys::Tab);
    Retype(*t, "12345");
    // Four digits hold every delay: the fifth is not taken, so nothing hides behind the cursor.
    const std::string label = english(root, "BASE_SUB_DELAY_ID");
    ASSERT_TRUE(t->waitForText(label + " 1234_")) << t->dump();
    t->send(keys::End);
    sendTimes(*t, 5, keys::Backspace);
    t->type("60");
    ASSERT_TRUE(t->waitForText(label + " 60___")) << t->dump();
    OkDelayPanel(*t, root);
    EXPECT_EQ(MethodDword(root, "SHUTDOWN DELAY", "Enable"), 1u);
    EXPECT_EQ(MethodDword(root, "SHUTDOWN DELAY", "Value"), 60u);
    CloseAll(*t, root);
}

// A delay another tool stored out of range (5000) is shown as stored and can be switched off:
// no error box, the value kept.
TEST(BaseMenu, ShutdownDelayOutOfRangeCanBeSwitchedOff) {
    ProductRoot root;
    const zoltest::StoreReader store(root);
    ASSERT_EQ(store.setDword(kMethodKey + "SHUTDOWN DELAY", "Enable", 1), ERROR_SUCCESS);
    ASSERT_EQ(store.setDword(kMethodKey + "SHUTDOWN DELAY", "Value", 5000), ERROR_SUCCESS);
    auto t = OpenBaseMenu(root);
    OpenDelayPanel(*t, root);
    EXPECT_TRUE(t->waitForText("[*] " + english(root, "BASE_SUB_ENABLE_ID"))) << t->dump();
    EXPECT_TRUE(t->contains(english(root, "BASE_SUB_DELAY_ID") + " 5000_")) << t->dump();
    t->send(keys::Space);
    OkDelayPanel(*t, root);
    EXPECT_FALSE(t->contains(FormatText(english(root, "FUNC_CALL_ERR"), {"PutBaseSetting"})))
        << t->dump();
    EXPECT_EQ(MethodDword(root, "SHUTDOWN DELAY", "Enable"), 0u);
    EXPECT_EQ(MethodDword(root, "SHUTDOWN DELAY", "Value"), 5000u);
    CloseAll(*t, root);
}

// OK stores the panel's own addition into the list as stored then: an address another process
// added while the panel was open stays. 0.0.0.0 and 255.255.255.255 are refused in the address
// dialog, which stays open to take another.
TEST(BaseMenu, SnmpTrapListKeepsAnotherProcessesAddition) {
    ProductRoot root;
    SetTrapDestinations(root, {"192.0.2.1"});
    auto t = OpenBaseMenu(root);
    const std::string addTitle = frameTitle(root, "SUBBASE_ADD_TITLE");
    OpenReportRow(*t, root, 0, "BASE_SNMP_TITLE");
    ASSERT_TRUE(t->waitForText("192.0.2.1")) << t->dump();
    sendTimes(*t, 2);
    PressTrapButton(*t, root, "GPSET_BUTTON_ADD_ID");
    ASSERT_TRUE(t->waitForText(addTitle)) << t->dump();
    for (const char* unusable : {"0.0.0.0", "255.255.255.255"}) {
        EnterAddress(*t, unusable);
        dismiss(*t, english(root, "SNMP_TRAP_ADDRESS_ERR_ID"));
        ASSERT_TRUE(t->contains(addTitle)) << t->dump();
        t->send(keys::Up);
        t->send(keys::End);
        sendTimes(*t, static_cast<int>(std::string_view(unusable).size()), keys::Backspace);
    }
    EnterAddress(*t, "10.0.0.5");
    ASSERT_TRUE(t->waitForNoText(addTitle)) << t->dump();
    ASSERT_TRUE(t->waitForText("10.0.0.5")) << t->dump();

    // Meanwhile another process adds an address.
    SetTrapDestinations(root, {"192.0.2.1", "198.51.100.7"});
    sendTimes(*t, 2);
    PressTrapButton(*t, root, "BUTTON_OK_ID");
    ASSERT_TRUE(SnmpPanelClosed(*t, root)) << t->dump();
    EXPECT_EQ(TrapDestinations(root),
              (std::vector<std::string>{"192.0.2.1", "198.51.100.7", "10.0.0.5"}));
    CloseAll(*t, root);
}
