// mailrpt.dll's AMEIMain, loaded as the program loads it, against aiosmtpd and dovecot on
// loopback high ports: the report arriving (alone, with SMTP authentication, with POP before
// SMTP, over STARTTLS, in Japanese), each failure with its result and text, and one alert-log
// line per report.
#include <gtest/gtest.h>
#include <zolwin.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <string>

#include "delivery_fixture.h"
#include "rptset_api.h"
#include "servers.h"

namespace {

using deliverytest::DeliveryTest;
using deliverytest::SmtpServer;

TEST_F(DeliveryTest, StopReportArrivesAtTheServicesAddress) {
    SmtpServer smtp;
    ASSERT_TRUE(smtp.ready());
    UseSmtp(smtp.port());
    const Sent sent = SendMail("E");
    EXPECT_EQ(sent.result, 0u) << sent.text;
    EXPECT_EQ(sent.text, "");
    ASSERT_EQ(smtp.Mails().size(), 1u);
    const std::string mail = smtp.Mails()[0];
    EXPECT_NE(mail.find("Subject: Vantrel Stop report: U0001234"), std::string::npos) << mail;
    EXPECT_NE(mail.find("From: zol@example.com\r\n"), std::string::npos);
    EXPECT_NE(mail.find("charset=us-ascii"), std::string::npos);
    const std::string body = deliverytest::MailBody(mail);
    EXPECT_NE(body.find("KIND=E\r\nTITLE=Stop report\r\n"), std::string::npos) << body;
    EXPECT_NE(body.find("TOKUINMA=Example Corp.\r\n"), std::string::npos);
    EXPECT_EQ(smtp.Envelopes()[0], "from zol@example.com\nto centre@example.com\n");
    EXPECT_EQ(AlertLines(), "VantrelReport\tE\tInternetMail\t\t0\n");

    // The stored subject replaces the built one; a subject that could inject a header is
    // refused and nothing is sent.
    SetAddress("ESubject", "Server trouble at site 3");
    EXPECT_EQ(SendMail("T").result, 0u);
    ASSERT_EQ(smtp.Mails().size(), 2u);
    EXPECT_NE(smtp.Mails()[1].find("\r\nSubject: Server trouble at site 3\r\n"), std::string::npos);
    SetAddress("ESubject", "x\r\nBcc: someone@example.com");
    const Sent refused = SendMail("T");
    EXPECT_EQ(refused.result, 4u);
    EXPECT_NE(refused.text.find("control character"), std::string::npos) << refused.text;
    EXPECT_EQ(smtp.Mails().size(), 2u);
}

TEST_F(DeliveryTest, SmtpAuthenticationWithTheRightAndAWrongPassword) {
    SmtpServer smtp({.user = "mailer", .password = "s3cret-Pw"});
    ASSERT_TRUE(smtp.ready());
    UseSmtp(smtp.port());
    SetSmtpLogin("mailer", "s3cret-Pw");
    Sent sent = SendMail("T");
    EXPECT_EQ(sent.result, 0u) << sent.text;
    EXPECT_EQ(smtp.Mails().size(), 1u);

    SetSmtpLogin("mailer", "wrong-Pw");
    sent = SendMail("T");
    EXPECT_EQ(sent.result, 4u);
    EXPECT_EQ(sent.text, "the SMTP server refused the login");
    EXPECT_EQ(smtp.Mails().size(), 1u);
    // Neither password reaches the trace.
    EXPECT_EQ(Trace().find("s3cret-Pw"), std::string::npos);
    EXPECT_EQ(Trace().find("wrong-Pw"), std::string::npos);
    EXPECT_EQ(AlertLines(),
              "VantrelReport\tT\tInternetMail\t\t0\nVantrelReport\tT\tInternetMail\t\t4\n");
}

TEST_F(DeliveryTest, PopBeforeSmtpLogsInFirstAndAWrongPopPasswordSaysSo) {
    deliverytest::PopServer pop("popuser", "pop-Pass1");
    ASSERT_TRUE(pop.ready());
    SmtpServer smtp;
    ASSERT_TRUE(smtp.ready());
    UseSmtp(smtp.port());
    SetPopLogin(pop.port(), "popuser", "pop-Pass1", 1);
    const auto start = std::chrono::steady_clock::now();
    Sent sent = SendMail("E");
    EXPECT_EQ(sent.result, 0u) << sent.text << "\n" << pop.Log();
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::seconds(1));  // POPTime
    EXPECT_EQ(smtp.Mails().size(), 1u);
    EXPECT_EQ(pop.Logins(), 1);

    SetPopLogin(pop.port(), "popuser", "bad-Pass", 0);
    sent = SendMail("E");
    EXPECT_EQ(sent.result, 4u);
    EXPECT_EQ(sent.text, "the POP server refused the login");
    EXPECT_EQ(smtp.Mails().size(), 1u);  // no mail without the POP login
    EXPECT_EQ(Trace().find("pop-Pass1"), std::string::npos);
    EXPECT_EQ(Trace().find("bad-Pass"), std::string::npos);
}

TEST_F(DeliveryTest, FailuresGiveTheirResultAndText) {
    SmtpServer smtp;
    ASSERT_TRUE(smtp.ready());
    const std::string local = "127.0.0.1", centre = "centre@example.com";
    const struct {
        const char* what;
        std::string server;
        uint16_t port;
        std::string to;
        uint32_t result;
        std::string text;
    } cases[] = {
        {"server down", local, deliverytest::FreePort(), centre, 1u,
         "cannot be reached now; try again later"},
        {"unknown host", "smtp.nosuch.invalid", smtp.port(), centre, 4u,
         "unknown host smtp.nosuch.invalid"},
        {"recipient refused", local, smtp.port(), "nobody@example.com", 4u,
         "the SMTP server refused the recipient nobody@example.com"},
        {"no server set", "", smtp.port(), centre, 4u,
         "no SMTP server is set in the internet-mail base settings"},
        {"no address", local, smtp.port(), "", 4u, "no address is set for the service's reports"},
    };
    for (const auto& c : cases) {
        UseSmtp(c.port, c.server);
        SetAddress("ETo", c.to);
        const Sent sent = SendMail("E");
        EXPECT_EQ(sent.result, c.result) << c.what << ": " << sent.text;
        EXPECT_NE(sent.text.find(c.text), std::string::npos) << c.what << ": " << sent.text;
    }
    SetAddress("ETo", centre);
    EXPECT_TRUE(smtp.Mails().empty());
    // An unknown kind is refused before anything is sent.
    UseSmtp(smtp.port());
    const Sent unknown = SendMail("Q");
    EXPECT_EQ(unknown.result, 4u);
    EXPECT_NE(unknown.text.find("Unknown report kind"), std::string::npos);
    EXPECT_TRUE(smtp.Mails().empty());
}

TEST_F(DeliveryTest, JapaneseReportArrivesLegibleInIso2022Jp) {
    SmtpServer smtp;
    ASSERT_TRUE(smtp.ready());
    UseSmtp(smtp.port());
    SetDword(ZOL_KEY_VNT_SETTING, "VntLang", LANGID_JAPANESE);
    SetText(ZOL_KEY_VNT_SETTING, "TOKUINMN", deliverytest::kCompanyEuc);
    const Sent sent = SendMail("E");
    ASSERT_EQ(sent.result, 0u) << sent.text;
    ASSERT_EQ(smtp.Mails().size(), 1u);
    const std::string mail = smtp.Mails()[0];
    EXPECT_NE(mail.find("Content-Type: text/plain; charset=ISO-2022-JP"), std::string::npos);
    for (const char c : mail)
        ASSERT_LT(static_cast<unsigned char>(c), 0x80) << "8-bit byte in the mail";
    const std::string body = deliverytest::MailBody(mail);
    EXPECT_NE(body.find("TITLE=停止報告\r\n"), std::string::npos) << body;
    EXPECT_NE(body.find("TOKUINMN=テスト株式会社\r\n"), std::string::npos) << body;
    // The subject as an encoded word that decodes to the Japanese title.
    const std::size_t word = mail.find("Subject: =?ISO-2022-JP?B?");
    ASSERT_NE(word, std::string::npos) << mail;
    const std::size_t start = word + std::string("Subject: =?ISO-2022-JP?B?").size();
    const std::string encoded = mail.substr(start, mail.find("?=", start) - start);
    EXPECT_NE(deliverytest::FromIso2022Jp(deliverytest::FromBase64(encoded)).find("停止"),
              std::string::npos);
}

TEST_F(DeliveryTest, StartTlsWithTheTestCaTrustedAndUntrusted) {
    const deliverytest::TestCa certs;
    SmtpServer smtp({.user = "mailer", .password = "tls-Pw", .tls = &certs});
    ASSERT_TRUE(smtp.ready());
    UseSmtp(smtp.port());
    SetSmtpLogin("mailer", "tls-Pw");
    {
        // The system's CAs do not know the test CA: refused before the login.
        zoltest::ScopedEnv noBundle("CURL_CA_BUNDLE", std::nullopt);
        const Sent sent = SendMail("E");
        EXPECT_EQ(sent.result, 4u);
        EXPECT_EQ(sent.text, "the SMTP server's certificate is not trusted");
        EXPECT_TRUE(smtp.Mails().empty());
    }
    zoltest::ScopedEnv bundle("CURL_CA_BUNDLE", certs.caCert().string());
    const Sent sent = SendMail("E");
    EXPECT_EQ(sent.result, 0u) << sent.text;
    EXPECT_EQ(smtp.Mails().size(), 1u);
}

// The test, critical-test and opening reports through rptset.dll's entries, which reach the
// mail library through the method vntutil.dll names: each arrives with its kind, the opening is
// marked done only once sent, and every report leaves its alert-log line.
TEST_F(DeliveryTest, TestAndOpeningReportsThroughTheSettingsLibrary) {
    SmtpServer smtp;
    ASSERT_TRUE(smtp.ready());
    SetDword(ZOL_KEY_VANTREL_ADDRESS, "EOpening", 0);
    const std::string path = (root().path() / "lib" / "rptset.dll").string();
    HMODULE lib = LoadLibrary(path.c_str());
    ASSERT_NE(lib, nullptr) << ZolLastLoadError();
    auto* test =
        reinterpret_cast<AMAMVantrelTestReport_fn*>(GetProcAddress(lib, "AMAMVantrelTestReport"));
    auto* critical = reinterpret_cast<TestFatalReport_fn*>(GetProcAddress(lib, "TestFatalReport"));
    auto* opening = reinterpret_cast<AMAMVantrelOpeningReport_fn*>(
        GetProcAddress(lib, "AMAMVantrelOpeningReport"));
    ASSERT_TRUE(test && critical && opening);
    auto opened = [] {
        DWORD value = 99;
        HKEY key = nullptr;
        DWORD size = sizeof value;
        RegOpenKeyEx(HKEY_LOCAL_MACHINE, ZOL_KEY_VANTREL_ADDRESS, 0, KEY_READ, &key);
        RegQueryValueEx(key, "EOpening", nullptr, nullptr, reinterpret_cast<BYTE*>(&value), &size);
        RegCloseKey(key);
        return value;
    };

    UseSmtp(deliverytest::FreePort());  // the server is not there yet
    char* text = nullptr;
    EXPECT_EQ(opening(&text), 1);
    ASSERT_NE(text, nullptr);
    EXPECT_NE(std::string(text).find("cannot be reached now"), std::string::npos) << text;
    std::free(text);
    EXPECT_EQ(opened(), 0u);

    UseSmtp(smtp.port());
    EXPECT_EQ(test("VantrelReport", nullptr), 0);
    EXPECT_EQ(critical("VantrelReport", nullptr), 0);
    text = nullptr;
    EXPECT_EQ(opening(&text), 0);
    EXPECT_EQ(text, nullptr);
    EXPECT_EQ(opened(), 1u);
    FreeLibrary(lib);

    const auto mails = smtp.Mails();
    ASSERT_EQ(mails.size(), 3u);
    EXPECT_NE(deliverytest::MailBody(mails[0]).find("KIND=T\r\nTITLE=Test report\r\n"),
              std::string::npos);
    EXPECT_NE(deliverytest::MailBody(mails[1]).find("KIND=TF\r\nTITLE=Critical test report\r\n"),
              std::string::npos);
    EXPECT_NE(deliverytest::MailBody(mails[2]).find("KIND=O\r\nTITLE=Opening report\r\n"),
              std::string::npos);
    EXPECT_EQ(AlertLines(),
              "VantrelReport\tO\tInternetMail\t\t1\n"
              "VantrelReport\tT\tInternetMail\t\t0\n"
              "VantrelReport\tTF\tInternetMail\t\t0\n"
              "VantrelReport\tO\tInternetMail\t\t0\n");
}

}  // namespace
