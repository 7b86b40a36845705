// The report builder against a store seeded as a new installation: the report of every kind,
// Japanese data converted from the store's EUC-JP, the date as the mail base setting says,
// refusals of unusable store values, and the outcome convention (error text, alert-log line).
#include <gtest/gtest.h>
#include <zolwin.h>

#include <algorithm>
#include <cstdlib>
#include <string>

#include "delivery_fixture.h"
#include "regpaths.h"
#include "report.h"
#include "servers.h"

namespace {

const std::string kSetting = ZOL_KEY_VNT_SETTING;
const std::string kMail = ZOL_KEY_MAIL_SETTING;

using deliverytest::kCompanyEuc;
const std::string kCompanyUtf8 = "テスト株式会社";

class ReportTest : public deliverytest::LibraryTest {
  protected:
    ReportTest() : LibraryTest("reporttest") {}
    void SetUp() override {
        LibraryTest::SetUp();
        SetText(kSetting, "USERCODE", "U0001234");
        SetText(kSetting, "TOKUINMA", "Example Corp.");
        SetText(kSetting, "SYSNMN", "db01");
    }
};

using deliverytest::FromIso2022Jp;

TEST_F(ReportTest, EveryKindHasItsTitleAndTheStoreData) {
    const struct {
        const char* kind;
        const char* title;
    } cases[] = {
        {"E", "Stop report"},
        {"T1", "Test report (primary destination)"},
        {"T2", "Test report (secondary destination)"},
        {"T", "Test report"},
        {"TF", "Critical test report"},
        {"O", "Opening report"},
    };
    for (const auto& c : cases) {
        std::string error;
        const auto report = vntreport::BuildReport(c.kind, &error);
        ASSERT_TRUE(report) << c.kind << ": " << error;
        EXPECT_EQ(report->kind, c.kind);
        EXPECT_FALSE(report->japanese);
        EXPECT_EQ(report->body.rfind("VANTREL-REPORT 1\r\nKIND=" + std::string(c.kind) +
                                         "\r\nTITLE=" + c.title + "\r\n",
                                     0),
                  0u)
            << report->body;
        EXPECT_NE(report->body.find("\r\nUSERCODE=U0001234\r\n"), std::string::npos);
        EXPECT_NE(report->body.find("\r\n[CUSTOMER]\r\nKAISHAKBN=1\r\nTOKUINMA=Example Corp.\r\n"),
                  std::string::npos);
        EXPECT_NE(report->body.find("\r\n[MACHINE]\r\nSYSNMN=db01\r\n"), std::string::npos);
        EXPECT_NE(report->body.find("\r\nDATE=" + report->timestamp + "\r\n"), std::string::npos);
        EXPECT_TRUE(report->body.ends_with("\r\nEND\r\n"));
        // Every line ends with CR LF: no bare line feed anywhere.
        for (std::size_t at = report->body.find('\n'); at != std::string::npos;
             at = report->body.find('\n', at + 1))
            ASSERT_EQ(report->body[at - 1], '\r') << c.kind;
        EXPECT_EQ(report->subject.find_first_of("\r\n"), std::string::npos);
        EXPECT_NE(report->subject.find(c.title), std::string::npos) << report->subject;
        EXPECT_NE(report->subject.find("U0001234"), std::string::npos) << report->subject;
    }
}

TEST_F(ReportTest, UnknownKindsAreRefused) {
    for (const char* kind : {"", "X", "e", "T3", "E "}) {
        std::string error;
        EXPECT_FALSE(vntreport::BuildReport(kind, &error)) << kind;
        EXPECT_NE(error.find("Unknown report kind"), std::string::npos) << error;
    }
}

TEST_F(ReportTest, JapaneseDataAreConvertedFromTheStoresEucJp) {
    SetDword(kSetting, "VntLang", LANGID_JAPANESE);
    SetText(kSetting, "TOKUINMN", kCompanyEuc);
    std::string error;
    const auto report = vntreport::BuildReport("E", &error);
    ASSERT_TRUE(report) << error;
    EXPECT_TRUE(report->japanese);
    EXPECT_NE(report->body.find("TITLE=停止報告\r\n"), std::string::npos) << report->body;
    EXPECT_NE(report->body.find("TOKUINMN=" + kCompanyUtf8 + "\r\n"), std::string::npos);
    EXPECT_NE(report->body.find("LANG=JA\r\n"), std::string::npos);
    // ISO-2022-JP for the mail, legible again after decoding.
    const auto mail = vntreport::Utf8ToIso2022Jp(report->body);
    ASSERT_TRUE(mail);
    EXPECT_EQ(mail->find('\x80'), std::string::npos);
    EXPECT_EQ(FromIso2022Jp(*mail), report->body);
}

TEST_F(ReportTest, ConvertersRefuseWhatTheyCannotCarry) {
    EXPECT_EQ(vntreport::Utf8ToIso2022Jp("plain"), "plain");
    EXPECT_FALSE(vntreport::Utf8ToIso2022Jp("bad \xff utf-8"));
    EXPECT_FALSE(vntreport::Utf8ToIso2022Jp("emoji \xf0\x9f\x98\x80"));  // none in JIS X 0208
    EXPECT_EQ(vntreport::EucJpToUtf8(kCompanyEuc), kCompanyUtf8);
    EXPECT_FALSE(vntreport::EucJpToUtf8("\xa5"));  // half a character
}

TEST_F(ReportTest, DateIsLocalOrUniversalAsTheMailBaseSettingSays) {
    zoltest::ScopedEnv tz("TZ", "JST-9");
    tzset();
    const auto local = vntreport::BuildReport("T", nullptr);
    ASSERT_TRUE(local);
    EXPECT_TRUE(local->timestamp.ends_with(" +0900")) << local->timestamp;
    SetDword(kMail, "DateFormat", 1);
    const auto universal = vntreport::BuildReport("T", nullptr);
    ASSERT_TRUE(universal);
    EXPECT_TRUE(universal->timestamp.ends_with(" GMT")) << universal->timestamp;
    EXPECT_EQ(universal->timestamp.size(), std::string("Wed, 25 Nov 2026 07:40:00 GMT").size());
}

TEST_F(ReportTest, UnusableStoreValuesAreRefusedWithTheirName) {
    const struct {
        const char* name;
        DWORD type;
        std::string data;
        const char* says;
    } cases[] = {
        {"TOKUINMA", REG_SZ, std::string("two\nlines", 10),
         "TOKUINMA of VNTService\\SETTING holds a control character"},
        {"ADRSNMN", REG_SZ, std::string("\xa5\0", 2),
         "ADRSNMN of VNTService\\SETTING is not valid EUC-JP"},
        {"SYSNMN", REG_DWORD, std::string(4, '\0'),
         "SYSNMN of VNTService\\SETTING has the wrong type"},
        {"VntLang", REG_SZ, std::string("1\0", 2),
         "VntLang of VNTService\\SETTING has the wrong type"},
    };
    for (const auto& c : cases) {
        SetRaw(kSetting, c.name, c.type, c.data);
        std::string error;
        EXPECT_FALSE(vntreport::BuildReport("E", &error)) << c.name;
        EXPECT_NE(error.find(c.says), std::string::npos) << error;
        HKEY key = nullptr;
        ASSERT_EQ(RegOpenKeyEx(HKEY_LOCAL_MACHINE, kSetting.c_str(), 0, KEY_ALL_ACCESS, &key), 0);
        RegDeleteValue(key, c.name);
        RegCloseKey(key);
    }
    EXPECT_TRUE(vntreport::BuildReport("E", nullptr));
}

TEST_F(ReportTest, OptionsHeldAreListedWithTheirNames) {
    SetText(ZOL_KEY_VNT_LIST_OPTION, "000", "Backup");
    SetText(ZOL_KEY_VNT_LIST_OPTION, "002", "UPS");
    SetDword(kSetting, "OPTCDN", 0);
    SetText(kSetting, "OPTCDNLIST", "0,2");
    auto report = vntreport::BuildReport("E", nullptr);
    ASSERT_TRUE(report);
    EXPECT_NE(report->body.find("[OPTION]\r\nOPTION=0 Backup\r\nOPTION=2 UPS\r\n[VENDOR]"),
              std::string::npos)
        << report->body;
    // A list that does not start with OPTCDN: the single option OPTCDN is held.
    SetDword(kSetting, "OPTCDN", 2);
    report = vntreport::BuildReport("E", nullptr);
    ASSERT_TRUE(report);
    EXPECT_NE(report->body.find("[OPTION]\r\nOPTION=2 UPS\r\n[VENDOR]"), std::string::npos);
}

TEST_F(ReportTest, FinishHandsBackTheTextAndWritesOneAlertLogLine) {
    const auto report = vntreport::BuildReport("TF", nullptr);
    ASSERT_TRUE(report);
    char* text = nullptr;
    EXPECT_EQ(vntreport::Finish(&text, &*report, "InternetMail", 4, "unknown host smtp.example"),
              4u);
    ASSERT_NE(text, nullptr);
    EXPECT_STREQ(text, "unknown host smtp.example");
    std::free(text);
    text = nullptr;
    EXPECT_EQ(vntreport::Finish(&text, &*report, "InternetMail", 0, ""), 0u);
    EXPECT_EQ(text, nullptr);
    EXPECT_EQ(vntreport::Finish(nullptr, nullptr, "HTTPS", 4, "no report"), 4u);
    const std::string log = AlertLog();
    EXPECT_NE(log.find("\tVantrelReport\tTF\tInternetMail\t\t4\n"), std::string::npos) << log;
    EXPECT_NE(log.find("\tVantrelReport\tTF\tInternetMail\t\t0\n"), std::string::npos) << log;
    EXPECT_NE(log.find("\tVantrelReport\tnone\tHTTPS\t\t4\n"), std::string::npos) << log;
    EXPECT_EQ(std::count(log.begin(), log.end(), '\n'), 3);
}

}  // namespace
