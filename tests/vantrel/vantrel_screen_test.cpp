// The remote report service's base screens, the mail-server login dialog and the suppression
// dialog as an administrator meets them: ZOLamsadm in an 80x25 terminal, entered through the main
// menu and the base-setting menu, keys sent, the screen read back and the store checked after.
#include <gtest/gtest.h>
#include <zolwin.h>

#include <cstring>
#include <functional>
#include <string>
#include <utility>

#include "frame/textformat.h"
#include "vantrel_screen_util.h"

namespace {

using namespace vantreltest;

// From the internet-mail base screen with the focus on Login settings: toggles the two check
// boxes as asked (eight and nine Tabs further, past OK, Cancel and the fields), presses Login
// settings again and waits for the dialog's first field: the POP server while POP before SMTP
// is checked, else the SMTP account.
void openLogin(const ProductRoot& root, Terminal& t, bool togglePop, bool toggleAuth, bool popOn) {
    tabs(t, 8);
    if (togglePop)
        t.send(keys::Space);
    t.send(keys::Tab);
    if (toggleAuth)
        t.send(keys::Space);
    t.send(keys::Tab);
    // The dialog first shows as an empty window; it is ready once the cursor is in its field.
    const std::string title = english(root, "POP_SETTING_TITLE");
    const std::string first = english(root, popOn ? "POP_MAILSV_ID" : "LABEL_SMTP_TITLE_ID");
    t.send(keys::Enter);
    ASSERT_TRUE(t.waitFor([&](const Terminal& s) {
        const int row = s.findRow(first);
        return s.contains(title) && row >= 0 && s.cursor().first == row + (popOn ? 0 : 1);
    })) << t.dump();
}

}  // namespace

// Each refusal in order leaves the record as stored; the accepted one stores it whole, with the
// sender's surrounding blanks dropped.
TEST(VantrelBaseScreen, MailBaseRefusesInOrderThenStoresTheRecord) {
    ProductRoot root;
    markKeyFloppyRead(root);
    auto t = openServiceBase(root);
    enterMailBase(root, *t);
    // The service is switched on only once this screen has stored its record.
    EXPECT_EQ(methodEnabled(root, "VantrelReport(Internet Mail)"), 0u);

    tabs(*t, 7);  // Login settings, with neither box checked
    t->send(keys::Enter);
    dismiss(*t, english(root, "IMAIL_BASE_LOGIN_ERR1"));
    t->send(keys::Tab);
    t->send(keys::Enter);
    dismiss(*t, english(root, "IMAIL_BASE_SMTP_ERR1"));

    tabs(*t, 2);
    t->type("no-such-host.invalid");
    tabs(*t, 8);
    t->send(keys::Enter);
    dismiss(*t, english(root, "IDS_ERR_INVALID_IPADDRESS"));

    tabs(*t, 2);
    clearEntry(*t, 20);
    t->type("127.0.0.1");
    t->send(keys::Tab);
    clearEntry(*t, 2);
    t->type("0");
    tabs(*t, 7);
    t->send(keys::Enter);
    dismiss(*t, english(root, "IMAIL_BASE_PORT_ERR1"));

    tabs(*t, 3);
    clearEntry(*t, 1);
    t->type("2525");
    t->send(keys::Tab);
    t->type("a b@c");
    tabs(*t, 2);
    t->send(keys::Space);  // universal time
    t->send(keys::Tab);
    t->send(keys::Space);  // POP before SMTP
    tabs(*t, 3);
    t->send(keys::Enter);
    dismiss(*t, english(root, "IMAIL_BASE_MLFROM_ERR1"));
    EXPECT_EQ(storedText(root, kLoginKey, "SMTPServer"), "");
    EXPECT_EQ(storedDword(root, kLoginKey, "SMTPPort"), 25u);

    tabs(*t, 4);
    clearEntry(*t, 5);
    t->type(" ops@example.com ");
    tabs(*t, 6);
    t->send(keys::Enter);
    // The base screen stores the switch when it closes, after the mail screen.
    ASSERT_TRUE(t->waitFor([&](const Terminal& s) {
        return !s.contains(english(root, "IMAIL_BASE_SMTP_ID")) &&
               !s.contains(english(root, "VNT_SUB_ENABLE_ID"));
    })) << t->dump();
    EXPECT_EQ(storedText(root, kLoginKey, "SMTPServer"), "127.0.0.1");
    EXPECT_EQ(storedDword(root, kLoginKey, "SMTPPort"), 2525u);
    EXPECT_EQ(storedText(root, kLoginKey, "MailFrom"), "ops@example.com");
    EXPECT_EQ(storedDword(root, kLoginKey, "DateFormat"), 1u);
    EXPECT_EQ(storedDword(root, kLoginKey, "POPBeforeSMTP"), 1u);
    EXPECT_EQ(storedDword(root, kLoginKey, "SMTPAuth"), 0u);
    EXPECT_EQ(methodEnabled(root, "VantrelReport(Internet Mail)"), 1u);
    EXPECT_EQ(storedDword(root, kServiceKey, "MethodType"), 0u);
    closeAll(*t);
}

// Both halves: the defaults, every POP refusal in order, the POP half written before the SMTP
// half is refused, and passwords never on screen and stored only encoded.
TEST(MailLoginDialog, RefusesInOrderAndStoresPasswordsEncoded) {
    ProductRoot root;
    markKeyFloppyRead(root);
    auto t = openServiceBase(root);
    enterMailBase(root, *t);
    tabs(*t, 7);
    openLogin(root, *t, true, true, true);
    const int portRow = t->findRow(english(root, "POP_PORT_NUM_ID"));
    EXPECT_NE(t->row(portRow).find(" 110_"), std::string::npos) << t->dump();
    EXPECT_NE(t->row(portRow + 1).find(" 0_"), std::string::npos) << t->dump();
    EXPECT_NE(t->row(portRow - 3).find(" " + std::string(30, '_') + " "), std::string::npos)
        << t->dump();

    // Focus order: server, account, password, port, its Default, wait, its Default, SMTP account,
    // SMTP password, OK, Cancel. After a refusal one Tab is sent and seen to reach Cancel before
    // the next keys, so that they go to a dialog that is running again; the server is then one
    // Tab further.
    auto refused = [&](const char* id) {
        ASSERT_TRUE(focusedButton(*t, english(root, "BUTTON_OK_ID"))) << id << "\n" << t->dump();
        t->send(keys::Enter);
        dismiss(*t, english(root, id));
        t->send(keys::Tab);
        ASSERT_TRUE(focusedButton(*t, english(root, "BUTTON_CANCEL_ID"))) << t->dump();
    };
    // Each step: Tabs, the entry emptied of so many characters, text typed, Tabs, the refusal.
    struct Step {
        int before, clear;
        const char* text;
        int after;
        const char* refusal;
    };
    auto run = [&](std::initializer_list<Step> steps) {
        for (const Step& step : steps) {
            tabs(*t, step.before);
            if (step.clear > 0)
                clearEntry(*t, step.clear);
            t->type(step.text);
            tabs(*t, step.after);
            if (step.refusal != nullptr)
                refused(step.refusal);
        }
    };
    run({{0, 0, "", 9, "POP_MAILSRV_EMPTY"},
         {1, 0, "no-such-host.invalid", 9, "IDS_ERR_INVALID_IPADDRESS"},
         {1, 20, "localhost", 9, "POP_ACCOUNT_EMPTY"},
         {2, 0, "alice", 8, "POP_PASSWORD_EMPTY"},
         {3, 0, "s3cret", 1, nullptr},
         {0, 3, "", 6, "POP_PORT_EMPTY"},
         {4, 0, "0", 6, "POP_PORT_ERR"}});
    tabs(*t, 5);
    t->send(keys::Enter);  // the port's Default button
    t->send(keys::Tab);
    ASSERT_TRUE(t->waitFor([&](const Terminal& s) {
        return s.row(portRow).find(" 110_") != std::string::npos && s.cursor().first == portRow + 1;
    })) << t->dump();
    // The POP half is written before the SMTP half is checked.
    run({{0, 1, "61", 4, "LATENCY_TIME_ERR"}, {6, 2, "60", 4, "SMTP_ACNT_EMPTY"}});
    EXPECT_FALSE(t->contains("s3cret")) << t->dump();
    EXPECT_EQ(storedText(root, kLoginKey, "POPServer"), "localhost");
    EXPECT_EQ(storedText(root, kLoginKey, "POPUser"), "alice");
    EXPECT_EQ(storedDword(root, kLoginKey, "POPPort"), 110u);
    EXPECT_EQ(storedDword(root, kLoginKey, "POPTime"), 60u);
    std::string password = storedText(root, kLoginKey, "POPPass");
    EXPECT_NE(password, "s3cret");
    Ras_Decode(password.data(), static_cast<int>(password.size()));
    EXPECT_EQ(password, "s3cret");
    EXPECT_EQ(storedText(root, kLoginKey, "SMTPAuthUser"), "");

    tabs(*t, 8);
    t->type("bob");
    t->send(keys::Tab);
    t->type("pw-2");
    t->send(keys::Tab);
    t->send(keys::Enter);
    ASSERT_TRUE(t->waitForNoText(english(root, "POP_SETTING_TITLE"))) << t->dump();
    EXPECT_EQ(storedText(root, kLoginKey, "SMTPAuthUser"), "bob");
    password = storedText(root, kLoginKey, "SMTPAuthPass");
    EXPECT_NE(password, "pw-2");
    Ras_Decode(password.data(), static_cast<int>(password.size()));
    EXPECT_EQ(password, "pw-2");
    closeAll(*t);
}

// One flag at a time: POP only writes the POP half and never looks at the empty SMTP fields;
// SMTP only starts on the SMTP account, shows the Default controls as plain text and leaves the
// POP values as they were.
TEST(MailLoginDialog, EachFlagWritesOnlyItsHalf) {
    ProductRoot root;
    markKeyFloppyRead(root);
    auto t = openServiceBase(root);
    enterMailBase(root, *t);
    tabs(*t, 7);
    openLogin(root, *t, true, false, true);
    t->type("127.0.0.1");
    t->send(keys::Tab);
    t->type("u1");
    t->send(keys::Tab);
    t->type("p1");
    tabs(*t, 5);  // port, Default, wait, Default, OK: the SMTP fields take no focus
    pressOk(root, *t);
    ASSERT_TRUE(t->waitForNoText(english(root, "POP_SETTING_TITLE"))) << t->dump();
    EXPECT_EQ(storedText(root, kLoginKey, "POPServer"), "127.0.0.1");
    EXPECT_EQ(storedText(root, kLoginKey, "SMTPAuthUser"), "");

    openLogin(root, *t, true, true, false);
    // Appended rather than "<" + text: GCC 12 at -O3 takes that for an overlapping copy.
    std::string defaultButton = "<";
    defaultButton += english(root, "POP_DEFAULT_ID");
    defaultButton += ">";
    EXPECT_TRUE(t->contains(defaultButton)) << t->dump();
    t->type("carol");
    t->send(keys::Tab);
    t->type("p3");
    t->send(keys::Tab);
    t->send(keys::Enter);
    ASSERT_TRUE(t->waitForNoText(english(root, "POP_SETTING_TITLE"))) << t->dump();
    EXPECT_EQ(storedText(root, kLoginKey, "SMTPAuthUser"), "carol");
    EXPECT_EQ(storedText(root, kLoginKey, "POPServer"), "127.0.0.1");
    EXPECT_EQ(storedText(root, kLoginKey, "POPUser"), "u1");
    closeAll(*t);
}

// 1441 refused, 1440 and 0 stored with suppression on, off stored whatever the disabled entry
// holds, and a stored mode of 2 keeps the dialog from opening.
TEST(SuppressionDialog, IntervalLimitsOffAndABadStoredMode) {
    ProductRoot root;
    auto t = openServiceBase(root);
    const std::string title = english(root, "TITLE_VNT_SUPPRESS_ID");
    const std::string check = english(root, "CHECK_VNT_SUPPRESS_INTERVAL_ID");
    t->send(keys::Tab);  // the methods are off: Suppression
    t->send(keys::Enter);
    ASSERT_TRUE(cursorOnRow(*t, check)) << t->dump();
    EXPECT_TRUE(t->contains("[ ] " + check)) << t->dump();
    EXPECT_TRUE(t->contains(" 60___ ")) << t->dump();

    // Focus order: check box, interval (only while checked), OK, Cancel.
    auto save = [&](const char* minutes, int tabsToEntry) {
        tabs(*t, tabsToEntry);
        clearEntry(*t, 4);
        t->type(minutes);
        t->send(keys::Tab);
        t->send(keys::Enter);
    };
    t->send(keys::Space);
    save("1441", 1);
    dismiss(*t, english(root, "MSG_VNT_SUPPRESS_INTERVAL_ERR_ID"));
    EXPECT_EQ(storedDword(root, kSettingKey, "VntSuppressMode"), 0u);
    EXPECT_EQ(storedDword(root, kSettingKey, "VntSuppressInterval"), 60u);
    save("1440", 3);
    ASSERT_TRUE(t->waitForNoText(title)) << t->dump();
    EXPECT_EQ(storedDword(root, kSettingKey, "VntSuppressMode"), 1u);
    EXPECT_EQ(storedDword(root, kSettingKey, "VntSuppressInterval"), 1440u);

    t->send(keys::Enter);
    ASSERT_TRUE(cursorOnRow(*t, "[*] " + check)) << t->dump();
    save("0", 1);
    ASSERT_TRUE(t->waitForNoText(title)) << t->dump();
    EXPECT_EQ(storedDword(root, kSettingKey, "VntSuppressInterval"), 0u);

    t->send(keys::Enter);
    ASSERT_TRUE(cursorOnRow(*t, check)) << t->dump();
    t->send(keys::Tab);
    t->type("999");
    tabs(*t, 3);
    t->send(keys::Space);  // off: the entry is disabled and skipped
    t->send(keys::Tab);
    pressOk(root, *t);
    ASSERT_TRUE(t->waitForNoText(title)) << t->dump();
    EXPECT_EQ(storedDword(root, kSettingKey, "VntSuppressMode"), 0u);
    EXPECT_EQ(storedDword(root, kSettingKey, "VntSuppressInterval"), 0u);

    // A stored mode of 2: the dialog does not appear and nothing is shown in its place; only the
    // trace says why.
    frametest::zolreg(root, {"add", "HKLM\\" + kSettingKey, "/v", "VntSuppressMode", "/t",
                             "REG_DWORD", "/d", "2", "/f"});
    const std::string refused = "<getVntSuppressMode() return 2.return -1.";
    t->send(keys::Enter);
    ASSERT_TRUE(t->waitFor([&](const Terminal&) {
        return frametest::traceCount(root, 1, refused) == 1 &&
               frametest::traceCount(root, 1, "vntSuppressSet() return -1.") == 1;
    })) << frametest::traceDump(root);
    // The base screen runs on, the Suppression button still focused.
    ASSERT_TRUE(focusedButton(*t, english(root, "VNT_BASE_BUTTON_SUPPRESS_ID"))) << t->dump();
    EXPECT_FALSE(t->contains(title)) << t->dump();
    EXPECT_FALSE(t->contains(FormatText(english(root, "FUNC_CALL_ERR"), {"vntSuppressSet"})))
        << t->dump();
    EXPECT_EQ(storedDword(root, kSettingKey, "VntSuppressMode"), 2u);
    closeAll(*t);
}

// Ctrl-O closes every form of the program, as the help line promises, and writes nothing: each
// screen is opened the way an administrator reaches it, something is typed or toggled, Ctrl-O
// is pressed and the screen below is seen again with its focus where it was.
TEST(EveryForm, CtrlOClosesItWithoutWriting) {
    ProductRoot root;
    markKeyFloppyRead(root);
    frametest::zolreg(root, {"add", "HKLM\\" + kLoginKey, "/v", "POPServer", "/t", "REG_SZ", "/d",
                             "pop.example", "/f"});
    auto t = frametest::startMenu(root);
    const std::string menuRow = english(root, "BASE_REPORT_SNMP_ID");
    // Closes the form showing `title` with Ctrl-O and waits for `below` to come back.
    auto closeForm = [&](const std::string& title, const std::function<bool()>& below) {
        ASSERT_TRUE(t->waitForText(title)) << t->dump();
        t->send(keys::CtrlO);
        ASSERT_TRUE(t->waitForNoText(title)) << title << "\n" << t->dump();
        ASSERT_TRUE(below()) << title << "\n" << t->dump();
    };
    auto baseMenuBack = [&] {
        return t->waitForText("┤ " + english(root, "TITTLE_BASE_ID") + " ├");
    };
    auto titled = [&](const char* id) { return "┤ " + english(root, id) + " ├"; };

    t->send(keys::Enter);
    ASSERT_TRUE(t->waitForText(menuRow)) << t->dump();
    // The SNMP panel and its address dialog.
    t->send(keys::Enter);
    ASSERT_TRUE(t->waitForText(titled("BASE_SNMP_TITLE"))) << t->dump();
    t->send(keys::Space);  // switch off, never stored
    tabs(*t, 2);
    ASSERT_TRUE(focusedButton(*t, "<" + english(root, "GPSET_BUTTON_ADD_ID") + ">")) << t->dump();
    t->send(keys::Space);
    ASSERT_TRUE(t->waitForText(titled("SUBBASE_ADD_TITLE"))) << t->dump();
    t->type("10.0.0.9");
    closeForm(titled("SUBBASE_ADD_TITLE"),
              [&] { return focusedButton(*t, "<" + english(root, "GPSET_BUTTON_ADD_ID") + ">"); });
    closeForm(titled("BASE_SNMP_TITLE"), baseMenuBack);
    // The manager panels and the shutdown delay.
    for (const auto& [downs, id] : {std::pair{1, "BASE_SUBSIMPLE_INBAND_TITLE_ID"},
                                    std::pair{1, "BASE_SUBSIMPLE_OUTBAND_TITLE_ID"}}) {
        for (int i = 0; i < downs; ++i)
            t->send(keys::Down);
        t->send(keys::Enter);
        ASSERT_TRUE(t->waitForText(titled(id))) << t->dump();
        t->send(keys::Space);
        closeForm(titled(id), baseMenuBack);
    }
    t->send(keys::Tab);
    t->send(keys::Enter);
    ASSERT_TRUE(t->waitForText(titled("BASE_SUB_TITTLE_ID"))) << t->dump();
    t->send(keys::Space);
    closeForm(titled("BASE_SUB_TITTLE_ID"), baseMenuBack);
    EXPECT_EQ(methodEnabled(root, "MANAGER (SNMP)"), 1u);
    EXPECT_EQ(methodEnabled(root, "MANAGER (TCP_IP IN-BAND)"), 1u);
    EXPECT_EQ(methodEnabled(root, "MANAGER (TCP_IP OUT-OF-BAND)"), 0u);
    EXPECT_EQ(methodEnabled(root, "SHUTDOWN DELAY"), 0u);

    // The remote report base screen and its suppression dialog.
    tabs(*t, 2);  // past Close, back to the report list, still on its out-of-band row
    t->send(keys::Down);
    t->send(keys::Enter);
    const std::string enable = english(root, "VNT_SUB_ENABLE_ID");
    ASSERT_TRUE(cursorOnRow(*t, enable)) << t->dump();
    t->send(keys::Tab);
    t->send(keys::Enter);
    const std::string check = english(root, "CHECK_VNT_SUPPRESS_INTERVAL_ID");
    ASSERT_TRUE(cursorOnRow(*t, check)) << t->dump();
    t->send(keys::Space);
    t->send(keys::Tab);
    t->type("5");
    closeForm(english(root, "TITLE_VNT_SUPPRESS_ID"),
              [&] { return focusedButton(*t, english(root, "VNT_BASE_BUTTON_SUPPRESS_ID")); });
    EXPECT_EQ(storedDword(root, kSettingKey, "VntSuppressMode"), 0u);
    EXPECT_EQ(storedDword(root, kSettingKey, "VntSuppressInterval"), 60u);

    // The internet-mail base screen and the login dialog (OK of the base screen switching the
    // service on opens it, which is how an administrator gets there).
    tabs(*t, 3);  // OK, Cancel, then round to the switch (the methods are off)
    ASSERT_TRUE(cursorOnRow(*t, enable)) << t->dump();
    enterMailBase(root, *t);
    t->type("mail.example");
    tabs(*t, 5);  // port, sender, the two date formats, POP before SMTP
    t->send(keys::Space);
    tabs(*t, 2);
    ASSERT_TRUE(focusedButton(*t, "<" + english(root, "BUTTON_POP_SET_ID") + ">")) << t->dump();
    t->send(keys::Enter);
    ASSERT_TRUE(cursorOnRow(*t, english(root, "POP_MAILSV_ID"))) << t->dump();
    t->type(".invalid");
    t->send(keys::Tab);
    t->type("alice");
    closeForm(english(root, "POP_SETTING_TITLE"),
              [&] { return focusedButton(*t, "<" + english(root, "BUTTON_POP_SET_ID") + ">"); });
    // Left without storing: back on the service's base screen, the service still off.
    closeForm(english(root, "IMAIL_BASE_SMTP_ID"),
              [&] { return focusedButton(*t, english(root, "BUTTON_OK_ID")); });
    EXPECT_EQ(methodEnabled(root, "VantrelReport(Internet Mail)"), 0u);
    closeForm(english(root, "VNT_SUB_ENABLE_ID"), baseMenuBack);
    EXPECT_EQ(storedText(root, kLoginKey, "POPServer"), "pop.example");
    EXPECT_EQ(storedText(root, kLoginKey, "SMTPServer"), "");
    EXPECT_EQ(storedDword(root, kLoginKey, "POPBeforeSMTP"), 0u);

    // The base-setting menu, then the main menu.
    closeForm(titled("TITTLE_BASE_ID"),
              [&] { return t->waitForText("┤ " + english(root, "TITTLE_MAIN_ID") + " ├"); });
    frametest::closeMenu(*t);
}
