// The remote report service's method screens as an administrator meets them: the service's base
// screen switching the service on by dial-up, via the manager or HTTPS, each method's screen
// with its refusals, its test report and its store, and the service never left on half set up.
#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "frame/textformat.h"
#include "vantrel_screen_util.h"

namespace {

using namespace vantreltest;

const std::string kDialKey = ZOL_KEY_DIAL_SETTING;
const std::string kHttpsKey = ZOL_KEY_HTTPS_SETTING;

// Every value below SOFTWARE\\Tavik as zolreg exports it.
std::string storeExport(const ProductRoot& root) {
    const auto file = root.path() / "export.reg";
    const zoltest::RunResult r = zoltest::run(
        {root.bin("zolreg").string(), "export", "HKLM\\" ZOL_KEY_TAVIK, file.string(), "/y"},
        root.env());
    EXPECT_EQ(r.status, 0) << r.err;
    return zoltest::readFile(file);
}

std::string titled(const ProductRoot& root, const char* id) {
    return "┤ " + english(root, id) + " ├";
}

// Presses the focused OK of a method screen, expects the refusal `id` and is back on OK after it.
void refusedWith(const ProductRoot& root, Terminal& t, const char* id) {
    ASSERT_TRUE(focusedButton(t, english(root, "BUTTON_OK_ID"))) << id << "\n" << t.dump();
    t.send(keys::Enter);
    dismiss(t, english(root, id));
    ASSERT_TRUE(focusedButton(t, english(root, "BUTTON_OK_ID"))) << t.dump();
}

// Waits until the method screen showing `label` and the service's base screen have both closed:
// the base screen closes only after it stored the switch.
bool backOnBaseMenu(const ProductRoot& root, Terminal& t, const std::string& label) {
    const std::string enable = english(root, "VNT_SUB_ENABLE_ID");
    return t.waitFor([&](const Terminal& s) { return !s.contains(label) && !s.contains(enable); });
}

// dismiss() for a box over a dialog that is itself over a screen whose focused button stays
// drawn in reverse: the box's button is the last reverse text.
void dismissOverDialog(Terminal& t, const std::string& text) {
    ASSERT_TRUE(t.waitFor([&](const Terminal& s) {
        const std::string reverse = s.reverseText();
        return s.contains(text) && (reverse == "ok" || reverse.ends_with("\nok"));
    })) << t.dump();
    t.send(keys::Enter);
    ASSERT_TRUE(t.waitFor([&](const Terminal& s) {
        return !s.contains(text) && !s.reverseText().ends_with("ok");
    })) << t.dump();
}

// Nothing of the service switched on: every method's record off, the method as seeded.
void expectServiceOff(const ProductRoot& root) {
    for (const char* record : {"VantrelReport(Internet Mail)", "VantrelReport(Dial-up)",
                               "VantrelReport(TransToManager)", "VantrelReport(HTTPS)"}) {
        EXPECT_EQ(methodEnabled(root, record), 0u) << record;
    }
    EXPECT_EQ(storedDword(root, kServiceKey, "MethodType"), 0u);
}

}  // namespace

// Before the key floppy is read the service cannot be switched on; afterwards it is switched on
// only by a method whose screen stored its settings: Cancel on the HTTPS screen and on the
// internet-mail screen store nothing, OK on the via-manager screen stores the manager, the
// method and the switch.
TEST(VantrelBaseScreen, NeverSwitchedOnHalfSetUp) {
    ProductRoot root;
    auto t = openServiceBase(root);
    switchOnBy(root, *t, kHttps);
    // The box wraps its text: its first sentence stands on one line.
    const std::string noFloppy = english(root, "IMAIL_INSERT_FD_ID");
    dismiss(*t, noFloppy.substr(0, noFloppy.find('.') + 1));
    EXPECT_FALSE(t->contains(english(root, "TITLE_HTTPS_BASE_SETTING_ID"))) << t->dump();
    expectServiceOff(root);

    markKeyFloppyRead(root);
    // OK again on the same choice: the HTTPS screen, left with Cancel.
    t->send(keys::Enter);
    ASSERT_TRUE(t->waitForText(titled(root, "TITLE_HTTPS_BASE_SETTING_ID"))) << t->dump();
    t->type("https://centre.example.com/r");
    tabs(*t, 7);  // secondary URL, continuation, Proxy, two tests, OK, Cancel
    ASSERT_TRUE(focusedButton(*t, english(root, "BUTTON_CANCEL_ID"))) << t->dump();
    t->send(keys::Enter);
    ASSERT_TRUE(focusedButton(*t, english(root, "BUTTON_OK_ID"))) << t->dump();
    EXPECT_TRUE(t->contains(english(root, "VNT_SUB_ENABLE_ID"))) << t->dump();
    expectServiceOff(root);
    EXPECT_EQ(storedText(root, kHttpsKey, "HTTPD1URL"), "");

    // Internet mail, its screen left with Cancel.
    tabs(*t, 3);  // Cancel, the switch, internet mail
    t->send(keys::Space);
    tabs(*t, 5);
    pressOk(root, *t);
    ASSERT_TRUE(cursorOnRow(*t, english(root, "IMAIL_BASE_SMTP_ID"))) << t->dump();
    tabs(*t, 9);  // port, sender, two date formats, two switches, Login, OK, Cancel
    ASSERT_TRUE(focusedButton(*t, english(root, "BUTTON_CANCEL_ID"))) << t->dump();
    t->send(keys::Enter);
    ASSERT_TRUE(focusedButton(*t, english(root, "BUTTON_OK_ID"))) << t->dump();
    expectServiceOff(root);

    // Via the manager, its screen stored.
    tabs(*t, 5);  // Cancel, the switch, internet mail, dial-up, via the manager
    t->send(keys::Space);
    tabs(*t, 3);
    t->send(keys::Enter);
    ASSERT_TRUE(t->waitForText(titled(root, "FWMANAGERL_DEST_TITLE_ID"))) << t->dump();
    t->type("127.0.0.1");
    tabs(*t, 3);  // port, Default, OK
    pressOk(root, *t);
    ASSERT_TRUE(backOnBaseMenu(root, *t, english(root, "FWMANAGERL_DEST_TITLE_ID"))) << t->dump();
    EXPECT_EQ(storedDword(root, kServiceKey, "MethodType"), 2u);
    EXPECT_EQ(methodEnabled(root, "VantrelReport(TransToManager)"), 1u);
    EXPECT_EQ(methodEnabled(root, "VantrelReport(HTTPS)"), 0u);
    closeAll(*t);
}

// Every refusal in order with the record left as stored, the test report's failure, then
// the typed values stored with the method and the switch.
TEST(DialUpScreen, RefusesInOrderTestsAndStores) {
    ProductRoot root;
    markKeyFloppyRead(root);
    auto t = openServiceBase(root);
    switchOnBy(root, *t, kDialUp);
    ASSERT_TRUE(cursorOnRow(*t, english(root, "DIAL_FIRST_ID"))) << t->dump();
    const int redialRow = t->findRow(english(root, "DIAL_UP_INTVAL"));
    EXPECT_NE(t->row(redialRow).find(" 5__"), std::string::npos) << t->dump();
    EXPECT_TRUE(t->contains("/dev/ttyS0")) << t->dump();
    EXPECT_TRUE(t->contains("(*) " + english(root, "DIAL_UP_MODE_T"))) << t->dump();

    // Focus order: primary, secondary, user, device, tone, pulse, redial, the two tests, OK.
    tabs(*t, 7);
    ASSERT_TRUE(focusedButton(*t, "<" + english(root, "DIAL_TEST_1") + ">")) << t->dump();
    t->send(keys::Enter);
    // The dial-up library's own text under the program's: nothing to dial yet.
    ASSERT_TRUE(t->waitForText("no number is set for dial-up reports")) << t->dump();
    dismiss(*t, english(root, "ERROR_TEST_REPORT"));

    tabs(*t, 2);
    refusedWith(root, *t, "IDS_ERROR_MSG_TELNUM");
    tabs(*t, 2);  // Cancel, primary
    t->type("03-1234-5678");
    t->send(keys::Tab);
    t->type("(06)9876-5432");
    t->send(keys::Tab);
    t->type("site 42");
    tabs(*t, 7);
    refusedWith(root, *t, "DIAL_UP_USER_ERR");
    tabs(*t, 4);
    clearEntry(*t, 7);
    t->type("site42");
    t->send(keys::Tab);
    clearEntry(*t, 10);
    t->type("ttyS1");
    tabs(*t, 6);
    refusedWith(root, *t, "DIAL_UP_PORT_ERR");
    tabs(*t, 5);  // Cancel, primary, secondary, user, device
    clearEntry(*t, 5);
    t->type("/dev/ttyUSB0");
    tabs(*t, 3);  // tone, pulse, redial
    for (const char* redial : {"0", "61"}) {
        clearEntry(*t, 3);
        t->type(redial);
        tabs(*t, 3);
        refusedWith(root, *t, "DIAL_UP_INTVAL_ERR");
        tabs(*t, 8);  // Cancel, the four entries, tone, pulse, redial
    }
    EXPECT_EQ(stored(root, kDialKey, "PhoneNo1"), "?");
    expectServiceOff(root);

    clearEntry(*t, 3);
    t->type("60");
    tabs(*t, 10);  // round to pulse
    t->send(keys::Space);
    tabs(*t, 4);  // redial, the two tests, OK
    pressOk(root, *t);
    ASSERT_TRUE(backOnBaseMenu(root, *t, english(root, "DIAL_FIRST_ID"))) << t->dump();
    EXPECT_EQ(storedText(root, kDialKey, "PhoneNo1"), "03-1234-5678");
    EXPECT_EQ(storedText(root, kDialKey, "PhoneNo2"), "(06)9876-5432");
    EXPECT_EQ(storedText(root, kDialKey, "UserID"), "site42");
    EXPECT_EQ(storedText(root, kDialKey, "Device"), "/dev/ttyUSB0");
    EXPECT_EQ(storedDword(root, kDialKey, "DialMode"), 1u);
    EXPECT_EQ(storedDword(root, kDialKey, "RedialInterval"), 60u);
    EXPECT_EQ(storedDword(root, kServiceKey, "MethodType"), 1u);
    EXPECT_EQ(methodEnabled(root, "VantrelReport(Dial-up)"), 1u);
    closeAll(*t);
}

// URL refusals in order, the proxy dialog's refusals and its Cancel, the HTTPS library's own
// failure text for a test report with no URL stored, then everything stored together.
TEST(HttpsScreen, RefusesInOrderTestsAndStoresWithTheProxy) {
    ProductRoot root;
    markKeyFloppyRead(root);
    auto t = openServiceBase(root);
    switchOnBy(root, *t, kHttps);
    ASSERT_TRUE(t->waitForText(titled(root, "TITLE_HTTPS_BASE_SETTING_ID"))) << t->dump();

    // Focus order: primary URL, secondary URL, continuation, Proxy, the two tests, OK, Cancel.
    tabs(*t, 4);
    t->send(keys::Enter);
    // The library's own text under the program's.
    ASSERT_TRUE(t->waitForText("no first URL is set for HTTPS reports")) << t->dump();
    dismiss(*t, english(root, "ERROR_TEST_REPORT"));
    tabs(*t, 2);
    refusedWith(root, *t, "URL1_NOT_EXIST");
    tabs(*t, 2);  // Cancel, primary URL
    t->type("http://centre.example.com/r");
    tabs(*t, 6);
    refusedWith(root, *t, "HTTPS_URL_ERR");
    tabs(*t, 2);
    clearEntry(*t, 27);
    t->type("https://centre.example.com/r");
    tabs(*t, 2);
    t->send(keys::Space);  // the secondary URL after the primary, with none given
    tabs(*t, 4);
    refusedWith(root, *t, "URL2_NOT_EXIST");
    tabs(*t, 3);
    t->type("https://backup.example.com/r");

    // The proxy dialog: used without a host, a port of 0, then Cancel keeps nothing of it; then
    // set for real.
    tabs(*t, 2);
    t->send(keys::Enter);
    const std::string proxy = english(root, "SPECIFY_PROXY_ID");
    ASSERT_TRUE(cursorOnRow(*t, "[ ] " + proxy)) << t->dump();
    EXPECT_TRUE(t->contains(" 8080_")) << t->dump();
    t->send(keys::Space);
    tabs(*t, 3);  // host, port, OK
    // The HTTPS screen's Proxy button stays drawn in reverse under the dialog.
    t->send(keys::Enter);
    dismissOverDialog(*t, english(root, "PROXY_HOST_ERR"));
    tabs(*t, 3);  // Cancel, the switch, host
    t->type("proxy.example.com");
    t->send(keys::Tab);
    clearEntry(*t, 4);
    t->type("0");
    t->send(keys::Tab);
    t->send(keys::Enter);
    dismissOverDialog(*t, english(root, "ERROR_PROXYPORT"));
    t->send(keys::Tab);
    t->send(keys::Enter);  // Cancel
    ASSERT_TRUE(t->waitForNoText(proxy)) << t->dump();
    t->send(keys::Enter);  // Proxy again: as stored
    ASSERT_TRUE(cursorOnRow(*t, "[ ] " + proxy)) << t->dump();
    EXPECT_FALSE(t->contains("proxy.example.com")) << t->dump();
    t->send(keys::Space);
    t->send(keys::Tab);
    t->type("proxy.example.com");
    t->send(keys::Tab);
    clearEntry(*t, 4);
    t->type("3128");
    t->send(keys::Tab);
    t->send(keys::Enter);
    ASSERT_TRUE(t->waitForNoText(proxy)) << t->dump();
    EXPECT_EQ(storedText(root, kHttpsKey, "ProxyAddr"), "");

    tabs(*t, 3);  // the two tests, OK
    pressOk(root, *t);
    ASSERT_TRUE(backOnBaseMenu(root, *t, english(root, "LABEL_HTTPS_FIRST_ID"))) << t->dump();
    EXPECT_EQ(storedText(root, kHttpsKey, "HTTPD1URL"), "https://centre.example.com/r");
    EXPECT_EQ(storedText(root, kHttpsKey, "HTTPD2URL"), "https://backup.example.com/r");
    EXPECT_EQ(storedDword(root, kHttpsKey, "ContinueReport"), 1u);
    EXPECT_EQ(storedDword(root, kHttpsKey, "ProxyUse"), 1u);
    EXPECT_EQ(storedText(root, kHttpsKey, "ProxyAddr"), "proxy.example.com");
    EXPECT_EQ(storedDword(root, kHttpsKey, "ProxyPort"), 3128u);
    EXPECT_EQ(storedDword(root, kServiceKey, "MethodType"), 3u);
    EXPECT_EQ(methodEnabled(root, "VantrelReport(HTTPS)"), 1u);
    closeAll(*t);
}

// Ctrl-O closes the dial-up screen, the HTTPS screen and its proxy dialog without writing, each
// back on the screen below.
TEST(MethodScreens, CtrlOClosesEachFormWithoutWriting) {
    ProductRoot root;
    markKeyFloppyRead(root);
    const std::string before = storeExport(root);
    auto t = openServiceBase(root);
    switchOnBy(root, *t, kDialUp);
    ASSERT_TRUE(cursorOnRow(*t, english(root, "DIAL_FIRST_ID"))) << t->dump();
    t->type("0312345678");
    t->send(keys::CtrlO);
    ASSERT_TRUE(focusedButton(*t, english(root, "BUTTON_OK_ID"))) << t->dump();

    tabs(*t, 6);  // Cancel, the switch, four methods: HTTPS
    t->send(keys::Space);
    tabs(*t, 2);
    t->send(keys::Enter);
    ASSERT_TRUE(t->waitForText(titled(root, "TITLE_HTTPS_BASE_SETTING_ID"))) << t->dump();
    t->type("https://x.example.com/");
    tabs(*t, 3);
    t->send(keys::Enter);
    const std::string proxy = english(root, "SPECIFY_PROXY_ID");
    ASSERT_TRUE(cursorOnRow(*t, "[ ] " + proxy)) << t->dump();
    t->send(keys::Space);
    t->send(keys::CtrlO);
    ASSERT_TRUE(t->waitForNoText(proxy)) << t->dump();
    ASSERT_TRUE(focusedButton(*t, "<" + english(root, "BUTTON_PROXY_SETTING_ID") + ">"))
        << t->dump();
    t->send(keys::CtrlO);
    ASSERT_TRUE(focusedButton(*t, english(root, "BUTTON_OK_ID"))) << t->dump();
    EXPECT_TRUE(t->contains(english(root, "VNT_SUB_ENABLE_ID"))) << t->dump();
    closeAll(*t);
    EXPECT_EQ(storeExport(root), before);
}

// In Japanese mode each method screen and the proxy dialog show their labels whole inside the
// 80-column terminal, and Ctrl-O leaves them without writing.
TEST(MethodScreens, JapaneseModeShowsEveryLabel) {
    ProductRoot root;
    markKeyFloppyRead(root);
    auto japanese = [&](const char* id) { return frametest::messageText(root, "J_report.rc", id); };
    auto t = frametest::start(root, {}, true);
    ASSERT_TRUE(t->waitForText(japanese("MAIN_BASESET_ID"))) << t->dump();
    t->send(keys::Enter);
    ASSERT_TRUE(t->waitForText(japanese("BASE_REPORT_SNMP_ID"))) << t->dump();
    for (int i = 0; i < 3; ++i)
        t->send(keys::Down);
    t->send(keys::Enter);
    ASSERT_TRUE(cursorOnRow(*t, japanese("VNT_SUB_ENABLE_ID"))) << t->dump();
    auto seesAll = [&](std::initializer_list<const char*> ids) {
        return t->waitFor([&](const Terminal& s) {
            for (const char* id : ids) {
                if (!s.contains(japanese(id)))
                    return false;
            }
            return true;
        });
    };

    t->send(keys::Space);
    tabs(*t, 2);
    t->send(keys::Space);
    tabs(*t, 4);
    t->send(keys::Enter);
    ASSERT_TRUE(seesAll({"DIAL_DEST_SET_TITLE", "DIAL_FIRST_ID", "DIAL_SECOND_ID",
                         "DIAL_UP_USER_ID", "DIAL_UP_PORT_ID", "DIAL_UP_MODE_T", "DIAL_UP_MODE_P",
                         "DIAL_UP_INTVAL", "DIAL_TEST_1", "DIAL_TEST_2", "BUTTON_CANCEL_ID"}))
        << t->dump();
    t->send(keys::CtrlO);
    ASSERT_TRUE(t->waitForNoText(japanese("DIAL_FIRST_ID"))) << t->dump();

    tabs(*t, 6);
    t->send(keys::Space);
    tabs(*t, 2);
    t->send(keys::Enter);
    ASSERT_TRUE(seesAll({"TITLE_HTTPS_BASE_SETTING_ID", "LABEL_HTTPS_FIRST_ID",
                         "LABEL_HTTPS_SECOND_ID", "LABEL_HTTPS_CONTINUE_REPORT_ID",
                         "BUTTON_FIRST_REPORT_TEST_ID", "BUTTON_SECONDARY_REPORT_TEST_ID"}))
        << t->dump();
    tabs(*t, 3);
    t->send(keys::Enter);
    ASSERT_TRUE(seesAll({"TITLE_PROXY_SETTING_ID", "SPECIFY_PROXY_ID", "LABEL_PROXY_HOST_ID",
                         "LABEL_HTTPS_PORT_ID"}))
        << t->dump();
    closeAll(*t);
    EXPECT_EQ(stored(root, kDialKey, "PhoneNo1"), "?");
    expectServiceOff(root);
}
