// The remote report service's menu as an administrator meets it: ZOLamsadm in an 80x25 terminal,
// the service entered from the main menu, key floppies made with bin/zolkeyfd, the stop report
// sent through a delivery library of the test's own, the customer pages in English and Japanese,
// and the store checked afterwards.
#include <gtest/gtest.h>
#include <zolwin.h>

#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <ostream>
#include <string>
#include <vector>

#include "frame/checks.h"
#include "frame/textformat.h"
#include "frame_test_util.h"
#include "regpaths.h"
#include "servers.h"
#include "store_reader.h"
#include "ui/encoding.h"
#include "vantrel_screen_util.h"

namespace {

namespace fs = std::filesystem;
namespace keys = zoltest::keys;
using frametest::english;
using vantreltest::clearEntry;
using vantreltest::closeAll;
using vantreltest::cursorOnRow;
using vantreltest::kServiceKey;
using vantreltest::kSettingKey;
using vantreltest::reverseRun;
using vantreltest::storedDword;
using vantreltest::tabs;
using zoltest::ProductRoot;
using zoltest::Terminal;

// ---- The store ----

std::string storedText(const ProductRoot& root, const std::string& key, const char* name) {
    return zoltest::StoreReader(root).text(key, name).value_or("?");
}

// The values a key floppy sets, as the test compares them before and after.
struct ServiceSetUp {
    DWORD read, type, method;
    std::string userCode, customer;
    bool operator==(const ServiceSetUp&) const = default;
    friend std::ostream& operator<<(std::ostream& out, const ServiceSetUp& s) {
        return out << "{read " << s.read << ", type " << s.type << ", method " << s.method
                   << ", user code \"" << s.userCode << "\", customer \"" << s.customer << "\"}";
    }
};

ServiceSetUp storedSetUp(const ProductRoot& root) {
    return {storedDword(root, kServiceKey, "InstVantrelKeyFD"),
            storedDword(root, kServiceKey, "KEYFDTYPE"),
            storedDword(root, kServiceKey, "MethodType"), storedText(root, kSettingKey, "USERCODE"),
            storedText(root, kSettingKey, "TOKUINMA")};
}

// A service whose key floppy counts as read, without going through the dialog.
void markSetUp(const ProductRoot& root) {
    const zoltest::StoreReader store(root);
    ASSERT_EQ(store.setDword(kServiceKey, "InstVantrelKeyFD", 1), ERROR_SUCCESS);
    ASSERT_EQ(store.setDword(kServiceKey, "KEYFDTYPE", 1), ERROR_SUCCESS);
    ASSERT_EQ(store.setText(kSettingKey, "USERCODE", "C0012345"), ERROR_SUCCESS);
}

// ---- Key floppies ----

fs::path makeFloppy(const ProductRoot& root, const std::string& name,
                    const std::vector<std::string>& args) {
    const fs::path dir = root.path() / name;
    std::vector<std::string> argv{root.bin("zolkeyfd").string(), "make", dir.string()};
    argv.insert(argv.end(), args.begin(), args.end());
    const zoltest::RunResult made = zoltest::run(argv, root.env());
    EXPECT_EQ(made.status, 0) << made.out << made.err;
    return dir;
}

fs::path mailFloppy(const ProductRoot& root, const std::string& name, const std::string& code) {
    return makeFloppy(root, name,
                      {"--type", "1", "--mail", "centre@example.com", "--usercode", code});
}

fs::path httpsFloppy(const ProductRoot& root, const std::string& name, const std::string& code) {
    return makeFloppy(root, name,
                      {"--type", "2", "--url", "https://centre.example.com/r", "--usercode", code});
}

std::uint32_t crc32(const std::string& bytes) {
    std::uint32_t crc = 0xFFFFFFFFu;
    for (const unsigned char c : bytes) {
        crc ^= c;
        for (int bit = 0; bit < 8; ++bit)
            crc = (crc >> 1) ^ (0xEDB88320u & (0u - (crc & 1u)));
    }
    return ~crc;
}

// A key-floppy file whose checksum is right, whatever its values.
fs::path handMadeFloppy(const ProductRoot& root, const std::string& name,
                        const std::string& values) {
    const fs::path dir = root.path() / name;
    fs::create_directories(dir);
    const std::string body = "VNTKEYFD 1\n" + values;
    char checksum[32];
    std::snprintf(checksum, sizeof checksum, "CHECKSUM=%08x\n", crc32(body));
    zoltest::writeFile(dir / "VNTKEY.TXT", body + checksum);
    return dir;
}

// ---- Keys and screens ----

// vantreltest::dismissBox() by the start of the text: wrapped boxes break it.
void dismiss(Terminal& t, const std::string& text) {
    vantreltest::dismissBox(t, text.substr(0, 30));
}

// Answers a question box with its first (OK) or second (Cancel) button.
void answer(Terminal& t, const std::string& question, bool ok) {
    ASSERT_TRUE(t.waitFor([&](const Terminal& s) {
        return s.contains(question.substr(0, 30)) && !s.reverseText().empty();
    })) << t.dump();
    if (!ok)
        t.send(keys::Tab);
    t.send(keys::Enter);
}

// The path dialog, newly opened (the cursor in its entry) or run again after a refusal (on OK).
bool pathDialogShown(const ProductRoot& root, Terminal& t) {
    const std::string label = english(root, "INPUT_OPENINGFILE_PATH_LABLE_ID");
    return t.waitFor([&](const Terminal& s) {
        const int row = s.findRow(label);
        return row >= 0 && (s.cursor().first == row + 2 || reverseRun(s, "OK"));
    });
}

bool menuShown(const ProductRoot& root, Terminal& t) {
    return cursorOnRow(t, english(root, "VANTREL_USERINFO_ID1"));
}

bool mainMenuShown(const ProductRoot& root, Terminal& t) {
    return cursorOnRow(t, english(root, "MAIN_VANTREL_ID"));
}

// The main menu's last row.
std::unique_ptr<Terminal> enterService(const ProductRoot& root, bool inJapanese = false) {
    auto t = inJapanese ? frametest::start(root, {}, true) : frametest::startMenu(root);
    if (inJapanese) {
        EXPECT_TRUE(t->waitForText(frametest::messageText(root, "J_report.rc", "MAIN_BASESET_ID")))
            << t->dump();
    }
    for (int i = 0; i < 4; ++i)
        t->send(keys::Down);
    t->send(keys::Enter);
    return t;
}

// The service's menu entered, Cease chosen and its question answered with OK.
std::unique_ptr<Terminal> ceaseAsked(const ProductRoot& root) {
    auto t = enterService(root);
    EXPECT_TRUE(menuShown(root, *t)) << t->dump();
    t->send(keys::Tab);
    t->send(keys::Enter);
    answer(*t, english(root, "IDS_MSG_ASK"), true);
    return t;
}

// From the path dialog: the entry emptied, the path typed, OK.
void givePath(Terminal& t, const fs::path& path) {
    clearEntry(t, 100);
    t.type(path.string());
    t.send(keys::Tab);
    t.send(keys::Enter);
}

}  // namespace

// A floppy for HTTPS read from a folder: the set-up is stored, the method becomes HTTPS and the
// menu opens; the next visit goes straight to the menu. A mail floppy says it is not one for
// HTTPS and leaves the method alone.
TEST(VantrelMenuScreen, FirstReadingFromFolderFloppies) {
    for (const bool https : {true, false}) {
        SCOPED_TRACE(https ? "HTTPS floppy" : "mail floppy");
        ProductRoot root;
        const fs::path floppy =
            https ? httpsFloppy(root, "fd", "H0000001") : mailFloppy(root, "fd", "M0000001");
        auto t = enterService(root);
        ASSERT_TRUE(pathDialogShown(root, *t)) << t->dump();
        EXPECT_TRUE(t->contains("/tmp/vntfd")) << t->dump();
        givePath(*t, floppy.string() + "/");
        if (!https)
            dismiss(*t, english(root, "HTTPS_OPEN_FILE_NOT_EXIST"));
        ASSERT_TRUE(menuShown(root, *t)) << t->dump();
        EXPECT_EQ(storedSetUp(root), (ServiceSetUp{1, https ? 2u : 1u, https ? 3u : 0u,
                                                   https ? "H0000001" : "M0000001", ""}));
        t->send(keys::CtrlO);
        ASSERT_TRUE(mainMenuShown(root, *t)) << t->dump();
        t->send(keys::Enter);
        ASSERT_TRUE(menuShown(root, *t)) << t->dump();
        closeAll(*t);
    }
}

// Each refusal shows its message and asks again; nothing of the floppy is stored.
TEST(VantrelMenuScreen, RefusedFloppiesStoreNothing) {
    struct Case {
        const char* what;
        const char* message;
        fs::path (*make)(const ProductRoot&);
    };
    const Case cases[] = {
        {"damaged", "IDS_MSG_KEYFD_FAILURE",
         [](const ProductRoot& root) {
             const fs::path dir = mailFloppy(root, "fd", "C0012345");
             std::string text = zoltest::readFile(dir / "VNTKEY.TXT");
             text.replace(text.find("C0012345"), 8, "C0012346");
             zoltest::writeFile(dir / "VNTKEY.TXT", text);
             return dir;
         }},
        {"in the wrong place", "IDS_MSG_PATH_FAILURE",
         [](const ProductRoot& root) {
             mailFloppy(root, "fd", "C0012345");
             return root.path() / "log";
         }},
        {"with bad content", "IDS_MSG_KEYFD_FAILURE",
         [](const ProductRoot& root) {
             return handMadeFloppy(root, "fd",
                                   "KEYFDTYPE=7\nUSERCODE=C0012345\nMAILADRS=c@example.com\n");
         }},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        ProductRoot root;
        const fs::path floppy = c.make(root);
        const ServiceSetUp before = storedSetUp(root);
        auto t = enterService(root);
        ASSERT_TRUE(pathDialogShown(root, *t)) << t->dump();
        givePath(*t, floppy);
        dismiss(*t, english(root, c.message));
        ASSERT_TRUE(pathDialogShown(root, *t)) << t->dump();
        t->send(keys::CtrlO);
        ASSERT_TRUE(mainMenuShown(root, *t)) << t->dump();
        EXPECT_EQ(storedSetUp(root), before);
        closeAll(*t);
    }
}

// A path one character too long is refused with the limit; the dialog keeps asking.
TEST(VantrelMenuScreen, PathLongerThanTheLimitIsRefused) {
    ProductRoot root;
    auto t = enterService(root);
    ASSERT_TRUE(pathDialogShown(root, *t)) << t->dump();
    clearEntry(*t, 20);
    t->send(std::string(513, 'a'));
    t->send(keys::Tab);
    t->send(keys::Enter);
    std::string refusal = english(root, "IDS_MSG_PATH_LONG");
    refusal.replace(refusal.find("%d"), 2, "512");
    dismiss(*t, refusal);
    ASSERT_TRUE(pathDialogShown(root, *t)) << t->dump();
    closeAll(*t);
}

// Reopen resets every set-up value before it reads the new floppy: a customer value typed since
// is gone, the new floppy's values and HTTPS are in. A damaged floppy then closes the menu with
// the set-up reset, and the next visit asks for a floppy.
TEST(VantrelMenuScreen, ReopenReadsANewFloppyOverTheInitialValues) {
    ProductRoot root;
    const fs::path first = mailFloppy(root, "fd1", "M0000001");
    const fs::path second = httpsFloppy(root, "fd2", "H0000002");
    auto t = enterService(root);
    ASSERT_TRUE(pathDialogShown(root, *t)) << t->dump();
    givePath(*t, first);
    dismiss(*t, english(root, "HTTPS_OPEN_FILE_NOT_EXIST"));
    ASSERT_TRUE(menuShown(root, *t)) << t->dump();
    ASSERT_EQ(zoltest::StoreReader(root).setText(kSettingKey, "TOKUINMA", "Old Co"), ERROR_SUCCESS);

    tabs(*t, 2);
    t->send(keys::Enter);
    ASSERT_TRUE(pathDialogShown(root, *t)) << t->dump();
    givePath(*t, second);
    dismiss(*t, english(root, "VANTREL_REOPEN_SUCCEED"));
    ASSERT_TRUE(t->waitForText(english(root, "VANTREL_REOPEN_ID"))) << t->dump();
    EXPECT_EQ(storedSetUp(root), (ServiceSetUp{1, 2, 3, "H0000002", ""}));

    std::string text = zoltest::readFile(first / "VNTKEY.TXT");
    text.replace(text.find("M0000001"), 8, "M0000009");
    zoltest::writeFile(first / "VNTKEY.TXT", text);
    t->send(keys::Enter);
    ASSERT_TRUE(pathDialogShown(root, *t)) << t->dump();
    givePath(*t, first);
    dismiss(*t, english(root, "IDS_MSG_KEYFD_FAILURE"));
    ASSERT_TRUE(mainMenuShown(root, *t)) << t->dump();
    EXPECT_EQ(storedSetUp(root), (ServiceSetUp{0, 0, 0, "", ""}));
    t->send(keys::Enter);
    ASSERT_TRUE(pathDialogShown(root, *t)) << t->dump();
    closeAll(*t);
}

// A row whose key is missing ends the reset there: the rows before it are reset, the box names
// the reopen, and the menu closes.
TEST(VantrelMenuScreen, ReopenStopsAtAMissingKey) {
    ProductRoot root;
    markSetUp(root);
    const fs::path floppy = httpsFloppy(root, "fd", "H0000002");
    frametest::zolreg(root, {"delete", "HKLM\\" ZOL_KEY_VNT_HEARTBEAT, "/f"});
    auto t = enterService(root);
    ASSERT_TRUE(menuShown(root, *t)) << t->dump();
    tabs(*t, 2);
    t->send(keys::Enter);
    ASSERT_TRUE(pathDialogShown(root, *t)) << t->dump();
    givePath(*t, floppy);
    dismiss(*t, FormatText(english(root, "FUNC_CALL_ERR"), {"Vantrel Reopen"}));
    ASSERT_TRUE(mainMenuShown(root, *t)) << t->dump();
    EXPECT_EQ(storedSetUp(root), (ServiceSetUp{0, 0, 0, "", ""}));
    closeAll(*t);
}

// Without a delivery library the stop report cannot be sent: the load failure, then the end
// failure, and the set-up stays.
TEST(VantrelMenuScreen, CeaseWithoutDeliveryLibraryKeepsTheSetUp) {
    ProductRoot root;
    markSetUp(root);
    fs::remove(root.path() / "lib" / "mailrpt.dll");
    const ServiceSetUp before = storedSetUp(root);
    auto t = ceaseAsked(root);
    dismiss(*t, FormatText(english(root, "IDS_ERR_LOAD_DLL"), {"mailrpt.dll"}));
    dismiss(*t, english(root, "IDS_ERR_END"));
    ASSERT_TRUE(cursorOnRow(*t, english(root, "VANTREL_CEASE_ID"))) << t->dump();
    EXPECT_EQ(storedSetUp(root), before);
    EXPECT_TRUE(zoltest::StoreReader(root).subkeys(ZOL_KEY_VNT_STOPREPORT).has_value());
    closeAll(*t);
}

// Through the test's delivery library: what it answers decides the boxes; only a sent report
// clears the set-up, and then the menu asks for a floppy again.
TEST(VantrelMenuScreen, CeaseThroughTheDeliveryLibrary) {
    struct Case {
        const char* results;
        std::vector<bool> retryAnswers;  // OK to each retry question, in order
        bool sent;
        bool errorText;  // the library's text is shown before the end failure
        int calls;
    };
    const Case cases[] = {
        {"0", {}, true, false, 1},  {"1 0", {true}, true, false, 2}, {"1", {false}, false, true, 1},
        {"2", {}, false, false, 1}, {"5", {}, false, true, 1},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.results);
        ProductRoot root;
        markSetUp(root);
        fs::copy_file(TEST_DELIVERY_LIBRARY, root.path() / "lib" / "mailrpt.dll",
                      fs::copy_options::overwrite_existing);
        zoltest::writeFile(root.path() / "log" / "test_delivery.results", c.results);
        const ServiceSetUp before = storedSetUp(root);
        auto t = ceaseAsked(root);
        for (const bool retry : c.retryAnswers)
            answer(*t, english(root, "IDS_MSG_RETRY"), retry);
        if (c.sent) {
            dismiss(*t, english(root, "IDS_MSG_END"));
        } else {
            if (c.errorText)
                dismiss(*t, "Test delivery: the centre did not answer.");
            dismiss(*t, english(root, "IDS_ERR_END"));
        }
        // The menu runs again, on the row that ended the service, once everything is done.
        ASSERT_TRUE(cursorOnRow(*t, english(root, "VANTREL_CEASE_ID"))) << t->dump();
        std::string expectedCalls;
        for (int i = 0; i < c.calls; ++i)
            expectedCalls += "E\n";
        EXPECT_EQ(zoltest::readFile(root.path() / "log" / "test_delivery.calls"), expectedCalls);
        if (!c.sent) {
            EXPECT_EQ(storedSetUp(root), before);
            closeAll(*t);
            continue;
        }
        EXPECT_EQ(storedSetUp(root), (ServiceSetUp{0, 0, 0, "", ""}));
        EXPECT_EQ(storedDword(root, ZOL_KEY_VNT_HEARTBEAT, "HBSLEEPTIME"), 43200u);
        t->send(keys::CtrlO);
        ASSERT_TRUE(mainMenuShown(root, *t)) << t->dump();
        t->send(keys::Enter);
        ASSERT_TRUE(pathDialogShown(root, *t)) << t->dump();
        closeAll(*t);
    }
}

namespace {

std::string japanese(const ProductRoot& root, const char* id) {
    return frametest::messageText(root, "J_report.rc", id);
}

void setTexts(const ProductRoot& root,
              std::initializer_list<std::pair<const char*, std::string>> values) {
    const zoltest::StoreReader store(root);
    for (const auto& [name, text] : values)
        ASSERT_EQ(store.setText(kSettingKey, name, text), ERROR_SUCCESS) << name;
}

// A service set up with a company customer, entered to its menu (in Japanese when asked).
std::unique_ptr<Terminal> customerMenu(const ProductRoot& root, bool inJapanese = false) {
    markSetUp(root);
    setTexts(root, {{"TOKUINMA", "Example Co"},
                    {"TOKUINMN", zolui::utf8ToEuc("例会社")},
                    {"BUNMN", "Sales"},
                    {"BUTANNMA", "Smith"},
                    {"ZIPNO", "1234567"},
                    {"ADRSNMA", "1 Main Street"},
                    {"ADRSNMN", zolui::utf8ToEuc("東京都")},
                    {"BUTEL", "03-1234-5678"},
                    {"MAIL", "info@example.com"}});
    auto t = enterService(root, inJapanese);
    const std::string first =
        inJapanese ? japanese(root, "VANTREL_USERINFO_ID1") : english(root, "VANTREL_USERINFO_ID1");
    EXPECT_TRUE(cursorOnRow(*t, first)) << t->dump();
    return t;
}

// A field of a customer page given a new text, then OK (`okTabs` Tabs after the field).
struct FieldCase {
    int tabs;  // from the page's first field
    std::string text;
    int okTabs;
    std::string refusal;  // the box's text; empty when the page saves and closes
};

// okTabs -1: the field is only filled, the page is not left.
void enterField(Terminal& t, const FieldCase& c) {
    tabs(t, c.tabs);
    clearEntry(t, 130);
    t.type(c.text);
    if (c.okTabs < 0)
        return;
    tabs(t, c.okTabs);
    t.send(keys::Enter);
}

// Opens the page (the menu's row `row`), waits for its field label, and tries the case: a
// refusal is dismissed and the page closed with Ctrl-O; an accepted page closes by itself.
void tryCase(Terminal& t, int row, const std::string& label, const std::string& menuRow,
             const FieldCase& c) {
    for (int i = 0; i < row; ++i)
        t.send(keys::Down);
    t.send(keys::Enter);
    ASSERT_TRUE(t.waitForText(label)) << t.dump();
    enterField(t, c);
    if (!c.refusal.empty()) {
        dismiss(t, c.refusal);
        t.send(keys::CtrlO);
    }
    ASSERT_TRUE(t.waitForNoText(label)) << t.dump();
    ASSERT_TRUE(cursorOnRow(t, menuRow)) << t.dump();
    for (int i = 0; i < row; ++i)
        t.send(keys::Up);
}

}  // namespace

// Page 1 in English: each limit refused with its message and nothing stored, then the edge values
// stored; a personal customer keeps the department it had.
TEST(VantrelCustomerScreen, Page1LimitsInEnglish) {
    ProductRoot root;
    auto t = customerMenu(root);
    const std::string label = english(root, "VXUSER_PROPERTY_ID");
    const std::string row = english(root, "VANTREL_USERINFO_ID1");
    const FieldCase refused[] = {
        {2, std::string(51, 'A'), 3, english(root, "IDS_ERROR_MSG_USERNAMEK")},
        {2, "", 3, english(root, "IDS_ERROR_MSG_USERNAMEK")},
        {3, std::string(61, 'D'), 2, english(root, "IDS_ERROR_MSG_DEPTNAME")},
        {4, std::string(21, 'P'), 1, english(root, "IDS_ERROR_MSG_PERSONNAMEK")},
    };
    for (const FieldCase& c : refused) {
        SCOPED_TRACE(c.refusal);
        tryCase(*t, 0, label, row, c);
    }
    EXPECT_EQ(storedText(root, kSettingKey, "TOKUINMA"), "Example Co");
    EXPECT_EQ(storedText(root, kSettingKey, "BUNMN"), "Sales");
    EXPECT_EQ(storedText(root, kSettingKey, "BUTANNMA"), "Smith");

    t->send(keys::Enter);
    ASSERT_TRUE(t->waitForText(label)) << t->dump();
    enterField(*t, {2, std::string(50, 'A'), -1, ""});
    enterField(*t, {1, std::string(60, 'D'), -1, ""});
    enterField(*t, {1, std::string(20, 'P'), 1, ""});
    ASSERT_TRUE(t->waitForNoText(label)) << t->dump();
    ASSERT_TRUE(cursorOnRow(*t, row)) << t->dump();
    EXPECT_EQ(storedText(root, kSettingKey, "TOKUINMA"), std::string(50, 'A'));
    EXPECT_EQ(storedText(root, kSettingKey, "BUNMN"), std::string(60, 'D'));
    EXPECT_EQ(storedText(root, kSettingKey, "BUTANNMA"), std::string(20, 'P'));
    EXPECT_EQ(storedDword(root, kSettingKey, "KAISHAKBN"), 1u);

    // Personal: the department and person entries are disabled (skipped by Tab) and keep what the
    // record holds.
    t->send(keys::Enter);
    ASSERT_TRUE(t->waitForText(label)) << t->dump();
    t->send(keys::Space);
    tabs(*t, 3);
    ASSERT_TRUE(t->waitFor([&](const Terminal& s) {
        return reverseRun(s, english(root, "BUTTON_OK_ID"));
    })) << t->dump();
    t->send(keys::Enter);
    ASSERT_TRUE(cursorOnRow(*t, row)) << t->dump();
    EXPECT_EQ(storedDword(root, kSettingKey, "KAISHAKBN"), 0u);
    EXPECT_EQ(storedText(root, kSettingKey, "BUNMN"), std::string(60, 'D'));

    // A personal customer's page shows no department; choosing company brings the stored one
    // back.
    t->send(keys::Enter);
    ASSERT_TRUE(t->waitForText(label)) << t->dump();
    EXPECT_FALSE(t->contains("DDDDDDDDDD")) << t->dump();
    t->send(keys::Tab);
    t->send(keys::Space);
    ASSERT_TRUE(t->waitForText("DDDDDDDDDD")) << t->dump();
    t->send(keys::CtrlO);
    ASSERT_TRUE(cursorOnRow(*t, row)) << t->dump();
    EXPECT_EQ(storedDword(root, kSettingKey, "KAISHAKBN"), 0u);

    // Stored data that break a rule are reported before the page shows.
    setTexts(root, {{"BUNMN", std::string(61, 'x')}});
    t->send(keys::Enter);
    dismiss(*t, english(root, "IDS_ERROR_MSG_DEPTNAME"));
    ASSERT_TRUE(t->waitForText(label)) << t->dump();
    closeAll(*t);
}

// Page 2 in English: the limits, the mail check's own message, the stored values, and a stored
// post code with a hyphen reported on opening.
TEST(VantrelCustomerScreen, Page2LimitsInEnglish) {
    ProductRoot root;
    auto t = customerMenu(root);
    const std::string label = english(root, "VXUSER_POSTCODE_ID");
    const std::string row = english(root, "VANTREL_USERINFO_ID2");
    t->send(keys::Down);
    ASSERT_TRUE(cursorOnRow(*t, row)) << t->dump();
    t->send(keys::Up);
    const FieldCase refused[] = {
        {0, "12345678", 4, english(root, "IDS_ERROR_MSG_POSTNUM")},
        {1, std::string(51, 'a'), 3, english(root, "IDS_ERROR_MSG_ADDRESSK")},
        {2, std::string(31, '1'), 2, english(root, "IDS_ERROR_MSG_TELNUM")},
        {3, std::string(69, 'm') + "@example.com", 1, english(root, "IDS_ERROR_MSG_MAILADDRESS")},
        {3, "nobody", 1, english(root, MailAddrListFault("nobody"))},
    };
    for (const FieldCase& c : refused) {
        SCOPED_TRACE(c.refusal);
        tryCase(*t, 1, label, row, c);
    }
    EXPECT_EQ(storedText(root, kSettingKey, "ZIPNO"), "1234567");

    t->send(keys::Down);
    t->send(keys::Enter);
    ASSERT_TRUE(t->waitForText(label)) << t->dump();
    enterField(*t, {0, "7654321", -1, ""});
    enterField(*t, {2, "(03)1234-5678", -1, ""});
    enterField(*t, {1, std::string(68, 'm') + "@example.com", 1, ""});
    ASSERT_TRUE(cursorOnRow(*t, row)) << t->dump();
    EXPECT_EQ(storedText(root, kSettingKey, "ZIPNO"), "7654321");
    EXPECT_EQ(storedText(root, kSettingKey, "BUTEL"), "(03)1234-5678");
    EXPECT_EQ(storedText(root, kSettingKey, "MAIL"), std::string(68, 'm') + "@example.com");

    setTexts(root, {{"ZIPNO", "123-456"}});
    t->send(keys::Enter);
    dismiss(*t, english(root, "IDS_ERROR_MSG_BADPOSTNUM"));
    ASSERT_TRUE(t->waitForText(label)) << t->dump();
    closeAll(*t);
}

// Japanese mode: the Japanese customer name and address are limited in EUC-JP bytes: 81 (40
// double-width characters and one letter) is refused, 80 stored.
TEST(VantrelCustomerScreen, JapaneseFieldsLimitedInEucBytes) {
    ProductRoot root;
    auto t = customerMenu(root, true);
    const std::string label = japanese(root, "VXUSER_PROPERTY_ID");
    const std::string row = japanese(root, "VANTREL_USERINFO_ID1");
    std::string forty;
    for (int i = 0; i < 40; ++i)
        forty += "日";
    tryCase(*t, 0, label, row, {3, forty + "a", 4, japanese(root, "IDS_ERROR_MSG_USERNAMEC")});
    EXPECT_EQ(storedText(root, kSettingKey, "TOKUINMN"), zolui::utf8ToEuc("例会社"));
    tryCase(*t, 0, label, row, {3, forty, 4, ""});
    EXPECT_EQ(storedText(root, kSettingKey, "TOKUINMN"), zolui::utf8ToEuc(forty));

    // Page 2: the Japanese address likewise.
    const std::string label2 = japanese(root, "VXUSER_POSTCODE_ID");
    const std::string row2 = japanese(root, "VANTREL_USERINFO_ID2");
    tryCase(*t, 1, label2, row2, {2, forty + "a", 4, japanese(root, "IDS_ERROR_MSG_ADDRESSC")});
    EXPECT_EQ(storedText(root, kSettingKey, "ADRSNMN"), zolui::utf8ToEuc("東京都"));
    tryCase(*t, 1, label2, row2, {2, forty, 4, ""});
    EXPECT_EQ(storedText(root, kSettingKey, "ADRSNMN"), zolui::utf8ToEuc(forty));
    closeAll(*t);
}

namespace {

// The internet-mail settings of a root pointing at the test's SMTP server; POP before SMTP
// through the POP server when pop is not null. Passwords stored encoded, as the login dialog does.
void useMailServers(const ProductRoot& root, uint16_t smtpPort,
                    const deliverytest::PopServer* pop) {
    const zoltest::StoreReader store(root);
    const std::string mail = ZOL_KEY_MAIL_SETTING;
    ASSERT_EQ(store.setText(mail, "SMTPServer", "127.0.0.1"), ERROR_SUCCESS);
    ASSERT_EQ(store.setDword(mail, "SMTPPort", smtpPort), ERROR_SUCCESS);
    ASSERT_EQ(store.setText(mail, "MailFrom", "zol@example.com"), ERROR_SUCCESS);
    ASSERT_EQ(store.setText(ZOL_KEY_VANTREL_ADDRESS, "ETo", "centre@example.com"), ERROR_SUCCESS);
    if (pop == nullptr)
        return;
    std::string password = "pop-Pass1";
    Ras_Encode(password.data(), static_cast<int>(password.size()));
    ASSERT_EQ(store.setDword(mail, "POPBeforeSMTP", 1), ERROR_SUCCESS);
    ASSERT_EQ(store.setText(mail, "POPServer", "127.0.0.1"), ERROR_SUCCESS);
    ASSERT_EQ(store.setDword(mail, "POPPort", pop->port()), ERROR_SUCCESS);
    ASSERT_EQ(store.setText(mail, "POPUser", "popuser"), ERROR_SUCCESS);
    ASSERT_EQ(store.setText(mail, "POPPass", password), ERROR_SUCCESS);
}

}  // namespace

// Ending the service through the real mail library: the stop report arrives at the test's SMTP
// server, alone and after a POP login, and the set-up is cleared; with the server down the
// retry question comes, and Cancel shows the library's text and keeps the set-up.
TEST(VantrelMenuScreen, CeaseByMailThroughRealServers) {
    deliverytest::PopServer pop("popuser", "pop-Pass1");
    ASSERT_TRUE(pop.ready());
    for (const char* how : {"alone", "pop", "down"}) {
        SCOPED_TRACE(how);
        const std::string_view mode = how;
        deliverytest::SmtpServer smtp;
        ASSERT_TRUE(smtp.ready());
        ProductRoot root;
        markSetUp(root);
        useMailServers(root, mode == "down" ? deliverytest::FreePort() : smtp.port(),
                       mode == "pop" ? &pop : nullptr);
        const ServiceSetUp before = storedSetUp(root);
        auto t = ceaseAsked(root);
        if (mode == "down") {
            answer(*t, english(root, "IDS_MSG_RETRY"), false);
            dismiss(*t, "cannot be reached now");
            dismiss(*t, english(root, "IDS_ERR_END"));
            ASSERT_TRUE(cursorOnRow(*t, english(root, "VANTREL_CEASE_ID"))) << t->dump();
            EXPECT_EQ(storedSetUp(root), before);
            EXPECT_TRUE(smtp.Mails().empty());
            closeAll(*t);
            continue;
        }
        dismiss(*t, english(root, "IDS_MSG_END"));
        ASSERT_TRUE(cursorOnRow(*t, english(root, "VANTREL_CEASE_ID"))) << t->dump();
        EXPECT_EQ(storedSetUp(root), (ServiceSetUp{0, 0, 0, "", ""}));
        ASSERT_EQ(smtp.Mails().size(), 1u);
        const std::string body = deliverytest::MailBody(smtp.Mails()[0]);
        EXPECT_NE(body.find("KIND=E\r\nTITLE=Stop report\r\n"), std::string::npos) << body;
        EXPECT_NE(body.find("USERCODE=C0012345\r\n"), std::string::npos) << body;
        EXPECT_EQ(pop.Logins(), mode == "pop" ? 1 : 0);
        t->send(keys::CtrlO);
        ASSERT_TRUE(mainMenuShown(root, *t)) << t->dump();
        frametest::closeMenu(*t);
    }
}
