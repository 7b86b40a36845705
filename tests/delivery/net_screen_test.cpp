// The deliveries as an administrator meets them in ZOLamsadm: the stop report sent from the
// service's menu to a real HTTPS server, the HTTPS screen's test buttons showing each outcome,
// and the dial-up screen's test button dialling a modem played on a pseudo-terminal.
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "frame_test_util.h"
#include "net_servers.h"
#include "regpaths.h"
#include "store_reader.h"
#include "terminal.h"
#include "vantrel_screen_util.h"

namespace nettest {
namespace {

namespace keys = zoltest::keys;
using frametest::english;
using vantreltest::closeAll;
using vantreltest::cursorOnRow;
using vantreltest::tabs;
using zoltest::ProductRoot;
using zoltest::Terminal;

const std::string kService = ZOL_KEY_VNTSERVICE;
const std::string kHttps = ZOL_KEY_HTTPS_SETTING;

// Waits for a message box showing text, drawn to its focused button, and closes it. The box's
// button is the last reverse text: a menu's current row below it stays drawn in reverse.
void Dismiss(Terminal& t, const std::string& text) {
    ASSERT_TRUE(t.waitFor([&](const Terminal& s) {
        const std::string reverse = s.reverseText();
        return s.contains(text) && (reverse == "ok" || reverse.ends_with("\nok"));
    })) << t.dump();
    t.send(keys::Enter);
    ASSERT_TRUE(t.waitFor([&](const Terminal& s) { return !s.contains(text); })) << t.dump();
}

// From the main menu: the service's base screen switched on by that method, whose screen opens.
std::unique_ptr<Terminal> OpenMethodScreen(const ProductRoot& root, vantreltest::Method method) {
    auto t = vantreltest::openServiceBase(root);
    vantreltest::switchOnBy(root, *t, method);
    return t;
}

class NetScreenTest : public ::testing::Test {
  protected:
    NetScreenTest() : bundle_("CURL_CA_BUNDLE", ca_.caCert().string()) {}

    // A service set up from an HTTPS key floppy, reporting over HTTPS to these URLs.
    void SetUpHttps(const std::string& url1, const std::string& url2) {
        const zoltest::StoreReader store(root_);
        ASSERT_EQ(store.setDword(kService, "InstVantrelKeyFD", 1), 0);
        ASSERT_EQ(store.setDword(kService, "KEYFDTYPE", 2), 0);
        ASSERT_EQ(store.setDword(kService, "MethodType", 3), 0);
        ASSERT_EQ(store.setText(ZOL_KEY_VNT_SETTING, "USERCODE", "H0000042"), 0);
        ASSERT_EQ(store.setText(kHttps, "HTTPD1URL", url1), 0);
        ASSERT_EQ(store.setText(kHttps, "HTTPD2URL", url2), 0);
    }

    ProductRoot root_;
    TestCa ca_;
    zoltest::ScopedEnv bundle_;
};

// Cease: the question, the report sent over HTTPS, the end message, the set-up cleared.
TEST_F(NetScreenTest, StopReportGoesOverHttpsFromTheMenu) {
    HttpsServer server(ca_);
    SetUpHttps(server.url("/centre"), "");
    auto t = frametest::startMenu(root_);
    for (int i = 0; i < 4; ++i)
        t->send(keys::Down);
    t->send(keys::Enter);
    ASSERT_TRUE(cursorOnRow(*t, english(root_, "VANTREL_USERINFO_ID1"))) << t->dump();
    t->send(keys::Tab);
    t->send(keys::Enter);
    const std::string ask = english(root_, "IDS_MSG_ASK");
    ASSERT_TRUE(t->waitFor([&](const Terminal& s) {
        return s.contains(ask.substr(0, 30)) && !s.reverseText().empty();
    })) << t->dump();
    t->send(keys::Enter);
    Dismiss(*t, english(root_, "IDS_MSG_END"));
    ASSERT_TRUE(cursorOnRow(*t, english(root_, "VANTREL_CEASE_ID"))) << t->dump();

    ASSERT_TRUE(server.waitForPosts(1));
    EXPECT_NE(server.bodies().front().find("KIND=E\r\n"), std::string::npos);
    EXPECT_NE(server.bodies().front().find("USERCODE=H0000042\r\n"), std::string::npos);
    EXPECT_NE(server.headers().front().find("POST /centre"), std::string::npos);
    // Sent: the service's set-up is cleared.
    EXPECT_EQ(zoltest::StoreReader(root_).dword(kService, "InstVantrelKeyFD"), 0u);
    closeAll(*t);
}

// The HTTPS screen's two test buttons: the first URL takes the report, the second is down.
TEST_F(NetScreenTest, HttpsTestButtonsShowEachOutcome) {
    HttpsServer server(ca_);
    SetUpHttps(server.url(), "https://127.0.0.1:" + std::to_string(FreePort()) + "/r");
    ASSERT_EQ(zoltest::StoreReader(root_).setDword(kService, "MethodType", 0), 0);
    auto t = OpenMethodScreen(root_, vantreltest::kHttps);  // HTTPS, with the stored URLs
    ASSERT_TRUE(t->waitForText(server.url())) << t->dump();
    tabs(*t, 4);  // primary URL, secondary URL, continuation, Proxy
    t->send(keys::Enter);
    Dismiss(*t, english(root_, "TEST_REPORT_OK"));
    ASSERT_TRUE(server.waitForPosts(1));
    EXPECT_NE(server.headers().front().find("X-ZOLVNT-Kind: T1"), std::string::npos);

    t->send(keys::Tab);
    t->send(keys::Enter);
    ASSERT_TRUE(t->waitForText(english(root_, "ERROR_TEST_REPORT"))) << t->dump();
    ASSERT_TRUE(t->waitForText("cannot be reached")) << t->dump();
    Dismiss(*t, english(root_, "ERROR_TEST_REPORT"));
    EXPECT_EQ(server.bodies().size(), 1u);
    closeAll(*t);
}

// The dial-up screen's first test button dials the stored primary number on the stored line (a
// pseudo-terminal playing the modem) and shows the report sent.
TEST_F(NetScreenTest, DialUpTestButtonDialsTheStoredNumber) {
    FakeModem modem({});
    const zoltest::StoreReader store(root_);
    const std::string dial = ZOL_KEY_DIAL_SETTING;
    ASSERT_EQ(store.setDword(kService, "InstVantrelKeyFD", 1), 0);
    ASSERT_EQ(store.setText(dial, "PhoneNo1", "(045)123-4567"), 0);
    ASSERT_EQ(store.setText(dial, "Device", modem.linePath()), 0);
    ASSERT_EQ(store.setDword(dial, "DialMode", 1), 0);
    auto t = OpenMethodScreen(root_, vantreltest::kDialUp);  // dial-up, with the stored line
    ASSERT_TRUE(t->waitForText(modem.linePath())) << t->dump();
    tabs(*t, 7);  // numbers, user, device, tone, pulse, redial
    t->send(keys::Enter);
    Dismiss(*t, english(root_, "TEST_REPORT_OK"));
    const std::vector<std::string> expected = {"ATZ", "ATE0", "ATDP0451234567", "ATH"};
    EXPECT_EQ(modem.commands(), expected);
    ASSERT_EQ(modem.frames().size(), 1u);
    EXPECT_EQ(modem.frames().front().rfind("ZOLVNT/1 T1 ", 0), 0u);
    closeAll(*t);
}

}  // namespace
}  // namespace nettest
