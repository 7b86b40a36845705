// The HTTPS delivery ("GUIVntReport" of vnthttps.dll) against a real HTTPS server with a test CA
// and a real proxy, all on loopback: which URL the report goes to, the proxy, certificates, and
// each failure's result and text.
#include <gtest/gtest.h>

#include <iterator>
#include <string>

#include "net_fixture.h"
#include "net_servers.h"

namespace nettest {
namespace {

constexpr const char* kLib = "vnthttps.dll";

int Occurrences(const std::string& text, const std::string& part) {
    int count = 0;
    for (std::size_t at = 0; (at = text.find(part, at)) != std::string::npos; at += part.size())
        ++count;
    return count;
}
constexpr const char* kEntry = "GUIVntReport";
const std::string kHttps = ZOL_KEY_HTTPS_SETTING;

class HttpsDeliveryTest : public NetDeliveryTest {
  protected:
    HttpsDeliveryTest() : bundle_("CURL_CA_BUNDLE", ca_.caCert().string()) {}

    void Settings(const std::string& url1, const std::string& url2, DWORD next, int proxyPort = 0) {
        ASSERT_EQ(store_.setText(kHttps, "HTTPD1URL", url1), 0);
        ASSERT_EQ(store_.setText(kHttps, "HTTPD2URL", url2), 0);
        ASSERT_EQ(store_.setDword(kHttps, "ContinueReport", next), 0);
        ASSERT_EQ(store_.setDword(kHttps, "ProxyUse", proxyPort != 0 ? 1 : 0), 0);
        ASSERT_EQ(store_.setText(kHttps, "ProxyAddr", proxyPort != 0 ? "127.0.0.1" : ""), 0);
        ASSERT_EQ(store_.setDword(kHttps, "ProxyPort", proxyPort != 0 ? proxyPort : 8080), 0);
    }
    // A URL on which nothing listens.
    static std::string DeadUrl() {
        return "https://127.0.0.1:" + std::to_string(FreePort()) + "/r";
    }

    TestCa ca_;
    zoltest::ScopedEnv bundle_;
};

// Which URLs each kind goes to, with the continuation on and off.
TEST_F(HttpsDeliveryTest, FirstUrlThenSecondWhenTheSettingsSaySo) {
    HttpsServer first(ca_), second(ca_);
    struct Case {
        const char* what;
        bool firstUp;
        DWORD next;
        const char* kind;
        uint32_t result;
        std::size_t toFirst, toSecond;  // posts each server has afterwards
    };
    const Case cases[] = {
        {"stop report to the first URL", true, 1, "E", 0, 1, 0},
        {"test 1 to the first URL only", true, 1, "T1", 0, 2, 0},
        {"test 2 to the second URL only", true, 0, "T2", 0, 2, 1},
        {"first down, continuation on: the second", false, 1, "E", 0, 2, 2},
        {"first down, continuation off: retry", false, 0, "E", 1, 2, 2},
        {"first down, test 1 never goes to the second", false, 1, "T1", 1, 2, 2},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        Settings(c.firstUp ? first.url() : DeadUrl(), second.url(), c.next);
        const Outcome o = Call(kLib, kEntry, c.kind);
        EXPECT_EQ(o.result, c.result) << o.text;
        EXPECT_EQ(o.text.empty(), c.result == 0) << o.text;
        EXPECT_EQ(first.bodies().size(), c.toFirst);
        EXPECT_EQ(second.bodies().size(), c.toSecond);
    }
    // Both down: may be tried again, and the text names both URLs.
    Settings(DeadUrl(), DeadUrl(), 1);
    const Outcome down = Call(kLib, kEntry, "E");
    EXPECT_EQ(down.result, 1u);
    EXPECT_NE(down.text.find("URL 1: "), std::string::npos) << down.text;
    EXPECT_NE(down.text.find("URL 2: "), std::string::npos) << down.text;
    EXPECT_NE(down.text.find("cannot be reached"), std::string::npos) << down.text;

    // What the server received: the report as UTF-8 text with its kind.
    ASSERT_TRUE(second.waitForPosts(1));
    const std::string headers = second.headers().front();
    EXPECT_NE(headers.find("POST /report"), std::string::npos) << headers;
    EXPECT_NE(headers.find("Content-Type: text/plain; charset=UTF-8"), std::string::npos);
    EXPECT_NE(headers.find("X-ZOLVNT-Kind: T2"), std::string::npos) << headers;
    EXPECT_EQ(second.bodies().front().rfind("Subject: ", 0), 0u) << second.bodies().front();

    // One alert-log line per report, sent or not, with its kind, the method and the result.
    const std::string log = AlertLog();
    EXPECT_EQ(Occurrences(log, "\tVantrelReport\t"), std::size(cases) + 1) << log;
    EXPECT_EQ(Occurrences(log, "\tVantrelReport\tT2\tHTTPS\t\t0"), 1) << log;
    EXPECT_EQ(Occurrences(log, "\tVantrelReport\tE\tHTTPS\t\t1"), 2) << log;
}

// A Japanese report arrives legible: the store's EUC-JP texts as UTF-8.
TEST_F(HttpsDeliveryTest, JapaneseReportArrivesAsUtf8) {
    HttpsServer server(ca_);
    Settings(server.url(), "", 0);
    const std::string kSetting = ZOL_KEY_VNT_SETTING;
    ASSERT_EQ(store_.setDword(kSetting, "VntLang", 1041), 0);
    ASSERT_EQ(store_.setText(kSetting, "TOKUINMN", "\xA5\xC6\xA5\xB9\xA5\xC8"), 0);  // テスト
    const Outcome o = Call(kLib, kEntry, "E");
    ASSERT_EQ(o.result, 0u) << o.text;
    ASSERT_TRUE(server.waitForPosts(1));
    const std::string body = server.bodies().front();
    EXPECT_NE(body.find("TOKUINMN=\u30c6\u30b9\u30c8\r\n"), std::string::npos) << body;
    EXPECT_NE(body.find("LANG=JA\r\n"), std::string::npos) << body;
}

TEST_F(HttpsDeliveryTest, ThroughTheProxyWhenOneIsSet) {
    HttpsServer server(ca_);
    Tinyproxy proxy;
    Settings(server.url(), "", 0, proxy.port());
    const Outcome o = Call(kLib, kEntry, "E");
    EXPECT_EQ(o.result, 0u) << o.text;
    ASSERT_TRUE(server.waitForPosts(1));
    EXPECT_NE(proxy.log().find("CONNECT 127.0.0.1:" + std::to_string(server.port())),
              std::string::npos)
        << proxy.log();

    // The proxy switched on but not there: may be tried again.
    Settings(server.url(), "", 0, FreePort());
    const Outcome noProxy = Call(kLib, kEntry, "E");
    EXPECT_EQ(noProxy.result, 1u) << noProxy.text;
    EXPECT_NE(noProxy.text.find("proxy"), std::string::npos) << noProxy.text;
    EXPECT_EQ(server.bodies().size(), 1u);
}

// Failures that no retry mends: each with its result 4 and its own text, nothing accepted.
TEST_F(HttpsDeliveryTest, RefusalsSayWhatFailed) {
    const TestCa otherCa;
    HttpsServer unknownCa(otherCa);
    HttpsServer refusing(ca_, 503);
    struct Case {
        const char* what;
        std::string url;
        const char* text;
    };
    const Case cases[] = {
        {"certificate of an unknown CA", unknownCa.url(),
         "the HTTPS server's certificate is not trusted"},
        {"HTTP error status", refusing.url(), "answered with status 503"},
        {"not an https URL", "http://127.0.0.1:1/r", "not a valid https:// URL"},
        {"unknown host", "https://zol-no-such-host.invalid/r",
         "unknown host zol-no-such-host.invalid"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        Settings(c.url, "", 0);
        const Outcome o = Call(kLib, kEntry, "E");
        EXPECT_EQ(o.result, 4u);
        EXPECT_NE(o.text.find(c.text), std::string::npos) << o.text;
    }
    EXPECT_TRUE(unknownCa.bodies().empty());
    // A proxy host that does not resolve.
    Settings(refusing.url(), "", 0, 3128);
    ASSERT_EQ(store_.setText(kHttps, "ProxyAddr", "zol-no-such-proxy.invalid"), 0);
    const Outcome noProxy = Call(kLib, kEntry, "E");
    EXPECT_EQ(noProxy.result, 4u);
    EXPECT_NE(noProxy.text.find("unknown proxy host zol-no-such-proxy.invalid"), std::string::npos)
        << noProxy.text;
    EXPECT_EQ(refusing.bodies().size(), 1u);  // the 503 case's post only

    // A refusal of the first URL and a good second one: sent.
    Settings(unknownCa.url(), refusing.url(), 1);
    EXPECT_EQ(Call(kLib, kEntry, "E").result, 4u);
    HttpsServer good(ca_);
    Settings(unknownCa.url(), good.url(), 1);
    EXPECT_EQ(Call(kLib, kEntry, "E").result, 0u);

    // No URL for the kind, and an unknown kind.
    Settings("", "", 1);
    const Outcome none = Call(kLib, kEntry, "E");
    EXPECT_EQ(none.result, 4u);
    EXPECT_NE(none.text.find("no first URL"), std::string::npos) << none.text;
    Settings(good.url(), "", 0);
    const Outcome noSecond = Call(kLib, kEntry, "T2");
    EXPECT_EQ(noSecond.result, 4u);
    EXPECT_NE(noSecond.text.find("no second URL"), std::string::npos) << noSecond.text;
    EXPECT_EQ(Call(kLib, kEntry, "X9").result, 4u);
    EXPECT_EQ(good.bodies().size(), 1u);
}

}  // namespace
}  // namespace nettest
