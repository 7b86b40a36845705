// The remote report service's machine, vendor and option data screens as an administrator meets
// them: ZOLamsadm in an 80x25 terminal, the main menu's service row, the service menu's row of
// the screen (the key floppy marked as read, so the menu opens at once), keys sent, the screen
// read back and the store checked afterwards.
#include <gtest/gtest.h>
#include <zolwin.h>

#include <string>

#include "frame_test_util.h"
#include "regpaths.h"
#include "store_reader.h"
#include "vantrel_screen_util.h"

namespace {

namespace keys = zoltest::keys;
using vantreltest::clearEntry;
using vantreltest::dismissBox;
using vantreltest::reverseRun;
using vantreltest::tabs;
using zoltest::ProductRoot;
using zoltest::Terminal;

using vantreltest::kServiceKey;
using vantreltest::kSettingKey;

// The service menu's rows of the three screens.
enum MenuRow { kMachineRow = 2, kOptionRow = 3, kVendorRow = 4 };

std::string text(const ProductRoot& root, const char* id, bool japanese = false) {
    return frametest::messageText(root, japanese ? "J_report.rc" : "E_report.rc", id);
}

std::string storedText(const ProductRoot& root, const char* name) {
    return zoltest::StoreReader(root).text(kSettingKey, name).value_or("?");
}

void setText(const ProductRoot& root, const char* name, const std::string& value) {
    ASSERT_EQ(zoltest::StoreReader(root).setText(kSettingKey, name, value), ERROR_SUCCESS);
}

bool focusedButton(Terminal& t, const std::string& label) {
    return t.waitFor([&](const Terminal& s) { return reverseRun(s, label); });
}

// Starts the program, opens the service menu from the main menu's last row and its row `row`,
// and waits for a label of the screen (its title is also a row of the menu).
std::unique_ptr<Terminal> openScreen(const ProductRoot& root, MenuRow row,
                                     const char* screenLabelId, bool japanese = false) {
    EXPECT_EQ(zoltest::StoreReader(root).setDword(kServiceKey, "InstVantrelKeyFD", 1),
              ERROR_SUCCESS);
    auto t = frametest::start(root, {}, japanese);
    EXPECT_TRUE(t->waitForText(text(root, "MAIN_VANTREL_ID", japanese))) << t->dump();
    for (int i = 0; i < 4; ++i)
        t->send(keys::Down);
    t->send(keys::Enter);
    EXPECT_TRUE(t->waitForText(text(root, "VANTREL_CEASE_ID", japanese))) << t->dump();
    for (int i = 0; i < row; ++i)
        t->send(keys::Down);
    t->send(keys::Enter);
    EXPECT_TRUE(t->waitForText(text(root, screenLabelId, japanese))) << t->dump();
    return t;
}

// Back in the service menu after a screen closed: a label only the screen shows is gone (its
// title is also a row of the menu).
bool backInMenu(const ProductRoot& root, Terminal& t, const char* screenLabelId,
                bool japanese = false) {
    return t.waitFor([&](const Terminal& s) {
        return !s.contains(text(root, screenLabelId, japanese)) &&
               s.contains(text(root, "VANTREL_CEASE_ID", japanese));
    });
}

// ---- Machine data ----

// From the host entry: the six fields typed over what they hold (each emptied first, `held`
// characters at most), the operating system left as shown or moved one row up, then OK.
void typeMachine(Terminal& t, const std::string& host, const std::string& license,
                 const std::string& comment, int held, bool systemAbove = false) {
    const std::string fields[] = {host, "Model 7", "Tavik", license};
    for (const std::string& field : fields) {
        clearEntry(t, held);
        t.type(field);
        t.send(keys::Tab);
    }
    if (systemAbove)
        t.send(keys::Up);  // on the operating-system list
    t.send(keys::Tab);
    clearEntry(t, held);
    t.type("12.4");
    t.send(keys::Tab);
    clearEntry(t, 300);
    t.type(comment);
    t.send(keys::Tab);
}

TEST(MachineDataScreen, LimitsRefuseSilentlyTheStoredSystemStaysAndTheCommentComesAfter) {
    ProductRoot root;
    setText(root, "OSNMA", "Plan 9");
    auto t = openScreen(root, kMachineRow, "VXMACH_HOSTNAME_ID");
    // The stored system the list lacks is shown, as its current row.
    ASSERT_TRUE(t->waitForText("Plan 9")) << t->dump();
    EXPECT_FALSE(t->contains("Debian GNU/Linux")) << t->dump();
    const std::string ok = text(root, "BUTTON_OK_ID");

    // An empty licence number, then a host name of 41: refused without a message.
    const std::string host40(40, 'h');
    typeMachine(*t, host40, "", std::string(256, 'c'), 50);
    ASSERT_TRUE(focusedButton(*t, ok)) << t->dump();
    t->send(keys::Enter);
    tabs(*t, 2);  // Cancel, then the host entry
    typeMachine(*t, host40 + "h", "L-1", std::string(256, 'c'), 50);
    ASSERT_TRUE(focusedButton(*t, ok)) << t->dump();
    t->send(keys::Enter);
    tabs(*t, 2);
    EXPECT_TRUE(t->contains(text(root, "VXMACH_HOSTNAME_ID"))) << t->dump();
    EXPECT_FALSE(t->contains("Error")) << t->dump();
    EXPECT_EQ(storedText(root, "SYSNMN"), "");
    EXPECT_EQ(storedText(root, "GUARANTEE"), "");

    // 40 and a comment of 256: both written, the screen closes.
    typeMachine(*t, host40, "L-1", std::string(256, 'c'), 50);
    t->send(keys::Enter);
    ASSERT_TRUE(backInMenu(root, *t, "VXMACH_HOSTNAME_ID")) << t->dump();
    EXPECT_EQ(storedText(root, "SYSNMN"), host40);
    EXPECT_EQ(storedText(root, "GUARANTEE"), "L-1");
    EXPECT_EQ(storedText(root, "OSNMA"), "Plan 9");
    EXPECT_EQ(storedText(root, "OSREV"), "12.4");
    EXPECT_EQ(storedText(root, "Comment"), std::string(256, 'c'));

    // A comment of 257: the record is saved, the comment refused and kept as it was.
    t->send(keys::Enter);  // the menu's current row is still the machine data
    ASSERT_TRUE(t->waitForText(text(root, "VXMACH_HOSTNAME_ID"))) << t->dump();
    typeMachine(*t, "host-2", "L-2", std::string(257, 'd'), 50, true);
    t->send(keys::Enter);
    dismissBox(*t, text(root, "COMMENT_ERROR_ID"));
    EXPECT_EQ(storedText(root, "SYSNMN"), "host-2");
    EXPECT_EQ(storedText(root, "OSNMA"), "Other Linux");
    EXPECT_EQ(storedText(root, "Comment"), std::string(256, 'c'));
    // Ctrl-O leaves without writing anything more.
    t->send(keys::CtrlO);
    ASSERT_TRUE(backInMenu(root, *t, "VXMACH_HOSTNAME_ID")) << t->dump();
    EXPECT_EQ(storedText(root, "Comment"), std::string(256, 'c'));
}

// ---- Vendor data ----

TEST(VendorDataScreen, RulesInOrderAStoredBreakAtOnceAndTheTwoTelephones) {
    ProductRoot root;
    setText(root, "SYSSHOPNMN", "Acme");
    setText(root, "SYSEIGYOTEL", "03 1234");
    auto t = openScreen(root, kVendorRow, "IDS_ERROR_MSG_BADSELLERTELNUM");
    // The stored sales telephone with a blank is reported before the screen is used.
    dismissBox(*t, text(root, "IDS_ERROR_MSG_BADSELLERTELNUM"));
    ASSERT_TRUE(t->waitFor([&](const Terminal& s) {
        const int row = s.findRow(text(root, "VXVEND_NAME_ID"));
        return row >= 0 && s.cursor().first == row;
    })) << t->dump();
    const std::string ok = text(root, "BUTTON_OK_ID");

    // Distributor of 51, then 50; the sales telephone's filter drops the blank, the engineer's
    // keeps it.
    clearEntry(*t, 4);
    t->type(std::string(51, 'd'));
    tabs(*t, 3);
    clearEntry(*t, 10);
    t->type("(03) 1234");
    tabs(*t, 3);
    t->type("(03) 5678");
    t->send(keys::Tab);
    ASSERT_TRUE(focusedButton(*t, ok)) << t->dump();
    t->send(keys::Enter);
    dismissBox(*t, text(root, "IDS_ERROR_MSG_DISTRIBUTOR"));
    tabs(*t, 2);  // Cancel, the distributor
    t->send(keys::End);
    t->send(keys::Backspace);
    tabs(*t, 7);
    ASSERT_TRUE(focusedButton(*t, ok)) << t->dump();
    t->send(keys::Enter);
    ASSERT_TRUE(backInMenu(root, *t, "VXVEND_SE_ID")) << t->dump();
    EXPECT_EQ(storedText(root, "SYSSHOPNMN"), std::string(50, 'd'));
    EXPECT_EQ(storedText(root, "SYSEIGYOTEL"), "(03)1234");
    EXPECT_EQ(storedText(root, "SYSSETEL"), "(03) 5678");
    EXPECT_EQ(storedText(root, "SYSEIGYONMN"), "");
}

TEST(VendorDataScreen, JapaneseChoosesTheDistributorAndCountsEucJpBytes) {
    ProductRoot root;
    setText(root, "SYSSHOPNMN", "Zeta Trading");
    auto t = openScreen(root, kVendorRow, "VXVEND_SE_ID", true);
    // The stored distributor the list lacks is offered as the current row.
    ASSERT_TRUE(t->waitForText("Zeta Trading")) << t->dump();
    // A sales person of 20 kanji and one letter: 41 bytes in EUC-JP, one too many.
    std::string person;
    for (int i = 0; i < 20; ++i)
        person += "\xe5\xb1\xb1";  // one kanji in UTF-8, two bytes in EUC-JP
    tabs(*t, 2);
    t->type(person + "x");
    tabs(*t, 5);
    ASSERT_TRUE(focusedButton(*t, text(root, "BUTTON_OK_ID", true))) << t->dump();
    t->send(keys::Enter);
    dismissBox(*t, text(root, "IDS_ERROR_MSG_SELLERNAME", true));
    tabs(*t, 4);  // Cancel, distributor, department, person
    t->send(keys::End);
    t->send(keys::Backspace);
    tabs(*t, 5);
    t->send(keys::Enter);
    ASSERT_TRUE(backInMenu(root, *t, "VXVEND_SE_ID", true)) << t->dump();
    EXPECT_EQ(storedText(root, "SYSSHOPNMN"), "Zeta Trading");
    std::string euc;
    for (int i = 0; i < 20; ++i)
        euc += "\xbb\xb3";
    EXPECT_EQ(storedText(root, "SYSEIGYONMN"), euc);
}

// ---- Every form ----

TEST(DataScreens, CtrlOClosesEachFormWithoutWriting) {
    struct Case {
        MenuRow row;
        const char* labelId;
        const char* value;
    };
    const Case cases[] = {
        {kMachineRow, "VXMACH_HOSTNAME_ID", "SYSNMN"},
        {kVendorRow, "VXVEND_SE_ID", "SYSSHOPNMN"},
    };
    for (const Case& c : cases) {
        ProductRoot root;
        setText(root, c.value, "stored");
        auto t = openScreen(root, c.row, c.labelId);
        ASSERT_TRUE(t->waitForText("stored")) << t->dump();
        t->type("-typed");
        t->send(keys::CtrlO);
        ASSERT_TRUE(backInMenu(root, *t, c.labelId)) << t->dump();
        EXPECT_EQ(storedText(root, c.value), "stored") << c.labelId;
    }
}

// ---- Option data ----

TEST(OptionDataScreen, AddWithItsDescriptionDeleteAndTheirRefusals) {
    ProductRoot root;
    auto t = openScreen(root, kOptionRow, "VXOPT_LIST_ID");
    ASSERT_TRUE(t->waitForText("Standard")) << t->dump();
    const std::string add = text(root, "DEST_BUTTON_ADD_ID");
    const std::string del = text(root, "DEST_BUTTON_DELETE_ID");
    zoltest::StoreReader store(root);

    // Add: the kinds with the current one's description; Extended chosen.
    t->send(keys::Tab);
    ASSERT_TRUE(focusedButton(*t, add)) << t->dump();
    t->send(keys::Enter);
    ASSERT_TRUE(t->waitForText("Hardware faults reported on working days")) << t->dump();
    t->send(keys::Down);
    ASSERT_TRUE(t->waitForText("Hardware and operating-system faults")) << t->dump();
    tabs(*t, 1);
    ASSERT_TRUE(focusedButton(*t, text(root, "BUTTON_OK_ID"))) << t->dump();
    t->send(keys::Enter);
    ASSERT_TRUE(t->waitForNoText(text(root, "VXOPT_ADD_TITLE_ID"))) << t->dump();
    ASSERT_TRUE(t->waitForText("Extended")) << t->dump();
    EXPECT_EQ(store.text(kSettingKey, "OPTCDNLIST").value_or("?"), "0,1");

    // Extended again: already held. Ctrl-O in the add dialog adds nothing.
    ASSERT_TRUE(focusedButton(*t, add)) << t->dump();
    t->send(keys::Enter);
    ASSERT_TRUE(t->waitForText(text(root, "VXOPT_ADD_TITLE_ID"))) << t->dump();
    t->send(keys::Down);
    t->send(keys::Tab);
    t->send(keys::Enter);
    dismissBox(*t, text(root, "IDS_ERROR_MSG_ADDOPTION2"));
    t->send(keys::Enter);
    ASSERT_TRUE(t->waitForText(text(root, "VXOPT_ADD_TITLE_ID"))) << t->dump();
    t->send(keys::Down);
    t->send(keys::Down);
    t->send(keys::CtrlO);
    ASSERT_TRUE(t->waitForNoText(text(root, "VXOPT_ADD_TITLE_ID"))) << t->dump();
    EXPECT_EQ(store.text(kSettingKey, "OPTCDNLIST").value_or("?"), "0,1");

    // Delete Standard (the list's first row), after the question; Extended is then the one held.
    tabs(*t, 3);  // Delete, Close, the list
    t->send(keys::Up);
    tabs(*t, 2);
    ASSERT_TRUE(focusedButton(*t, del)) << t->dump();
    t->send(keys::Enter);
    ASSERT_TRUE(t->waitForText(text(root, "VXOPT_DEL_WARN_ID"))) << t->dump();
    t->send(keys::Enter);
    ASSERT_TRUE(t->waitForNoText("Standard")) << t->dump();
    EXPECT_EQ(store.dword(kSettingKey, "OPTCDN").value_or(99), 1u);
    EXPECT_EQ(store.text(kSettingKey, "OPTCDNLIST").value_or("?"), "1");

    // The only option held cannot be deleted.
    ASSERT_TRUE(focusedButton(*t, del)) << t->dump();
    t->send(keys::Enter);
    ASSERT_TRUE(t->waitForText(text(root, "VXOPT_DEL_WARN_ID"))) << t->dump();
    t->send(keys::Enter);
    dismissBox(*t, text(root, "IDS_ERROR_MSG_DELETE"));
    EXPECT_TRUE(t->contains("Extended")) << t->dump();
    t->send(keys::CtrlO);
    ASSERT_TRUE(backInMenu(root, *t, "VXOPT_LIST_ID")) << t->dump();
}

TEST(OptionDataScreen, AStoreOfTheSingleValueShowsItsOneOption) {
    ProductRoot root;
    ASSERT_EQ(zoltest::StoreReader(root).setDword(kSettingKey, "OPTCDN", 2), ERROR_SUCCESS);
    auto t = openScreen(root, kOptionRow, "VXOPT_LIST_ID");
    ASSERT_TRUE(t->waitForText("Premium")) << t->dump();
    EXPECT_FALSE(t->contains("Standard")) << t->dump();
    t->send(keys::CtrlO);
    ASSERT_TRUE(backInMenu(root, *t, "VXOPT_LIST_ID")) << t->dump();
}

}  // namespace
