// The remote report service's package libraries as the program loads them from the product
// root: HTTPS settings, suppression, key-floppy type, delivery library choice, the service checks
// and the delivery entries that are not built.
#include <cstdlib>
#include <filesystem>
#include <string>

#include "frame/libraries.h"
#include "seeded_store.h"

namespace svctest {
namespace {

class VantrelPkgTest : public SeededStoreTest {
  protected:
    void SetUp() override {
        SeededStoreTest::SetUp();
        ASSERT_TRUE(LoadVantrelPkgDLL()) << Trace();
    }
};

TEST_F(VantrelPkgTest, HttpsProxyAndUrlsRoundTripAndRefuseBadValues) {
    char text[300];
    EXPECT_EQ(pGetHTTPProxyUse(), 0);
    EXPECT_EQ(pGetHTTPProxyPort(), 8080);
    ASSERT_EQ(pGetHTTPProxyAddr(text, sizeof text), 0);
    EXPECT_STREQ(text, "");

    EXPECT_EQ(pSetHTTPProxyUse(1), 0);
    EXPECT_EQ(pSetHTTPProxyAddr("proxy.example.com"), 0);
    EXPECT_EQ(pSetHTTPProxyPort(65535), 0);
    EXPECT_EQ(pSetHTTPSURL(1, "https://one.example.com/r"), 0);
    EXPECT_EQ(pSetHTTPSURL(2, "https://two.example.com/r"), 0);

    const std::string before = Snapshot();
    const std::string longText(257, 'a');
    for (const int rc : {pSetHTTPProxyUse(2), pSetHTTPProxyUse(-1), pSetHTTPProxyPort(0),
                         pSetHTTPProxyPort(65536), pSetHTTPProxyAddr("proxy example"),
                         pSetHTTPProxyAddr(nullptr), pSetHTTPProxyAddr(longText.c_str()),
                         pSetHTTPSURL(0, "https://x"), pSetHTTPSURL(3, "https://x"),
                         pSetHTTPSURL(1, "https://x\ny"), pSetHTTPSURL(1, nullptr)}) {
        EXPECT_EQ(rc, -1);
    }
    EXPECT_EQ(Snapshot(), before);

    EXPECT_EQ(pGetHTTPProxyUse(), 1);
    EXPECT_EQ(pGetHTTPProxyPort(), 65535);
    ASSERT_EQ(pGetHTTPProxyAddr(text, sizeof text), 0);
    EXPECT_STREQ(text, "proxy.example.com");
    ASSERT_EQ(pGetHTTPSURL(2, text, sizeof text), 0);
    EXPECT_STREQ(text, "https://two.example.com/r");
    EXPECT_EQ(Stored(kHttpsKey, "HTTPD1URL"), "https://one.example.com/r");
    // A buffer must hold the text and its terminator; index 1 and 2 only.
    EXPECT_EQ(pGetHTTPProxyAddr(text, 18), 0);
    EXPECT_EQ(pGetHTTPProxyAddr(text, 17), -1);
    EXPECT_EQ(pGetHTTPSURL(3, text, sizeof text), -1);

    // Values stored out of range or with another type are failures, not numbers.
    SetDword(kHttpsKey, "ProxyPort", 70000);
    SetText(kHttpsKey, "ProxyUse", "1");
    EXPECT_EQ(pGetHTTPProxyPort(), -1);
    EXPECT_EQ(pGetHTTPProxyUse(), -1);
}

TEST_F(VantrelPkgTest, SuppressionValuesKeepRangeOnWriteAndComeBackAsStored) {
    EXPECT_EQ(pgetVntSuppressMode(), 0);
    EXPECT_EQ(pgetVntSuppressInterval(), 60);
    for (const int minutes : {0, 1440, 15}) {
        EXPECT_EQ(psetVntSuppressInterval(minutes), 0);
        EXPECT_EQ(pgetVntSuppressInterval(), minutes);
    }
    EXPECT_EQ(psetVntSuppressMode(1), 0);
    EXPECT_EQ(pgetVntSuppressMode(), 1);

    for (const int rc : {psetVntSuppressMode(2), psetVntSuppressMode(-1),
                         psetVntSuppressInterval(1441), psetVntSuppressInterval(-1)}) {
        EXPECT_EQ(rc, -1);
    }
    EXPECT_EQ(
        Stored(kSettingKey, "VntSuppressMode") + "/" + Stored(kSettingKey, "VntSuppressInterval"),
        "1/15");

    // Someone else's out-of-range values come back as they are, for the dialog to refuse.
    SetDword(kSettingKey, "VntSuppressMode", 2);
    SetDword(kSettingKey, "VntSuppressInterval", 1441);
    EXPECT_EQ(pgetVntSuppressMode(), 2);
    EXPECT_EQ(pgetVntSuppressInterval(), 1441);
    SetText(kSettingKey, "VntSuppressMode", "1");
    SetDword(kSettingKey, "VntSuppressInterval", 0x80000000u);
    EXPECT_EQ(pgetVntSuppressMode(), -1);
    EXPECT_EQ(pgetVntSuppressInterval(), -1);
}

TEST_F(VantrelPkgTest, KeyFloppyTypeAndDeliveryLibraryOfTheMethod) {
    EXPECT_EQ(pgetKeyFdType(), 0);
    EXPECT_EQ(psetKeyFdType(2), 0);
    EXPECT_EQ(psetKeyFdType(0), -1);
    EXPECT_EQ(psetKeyFdType(3), -1);
    EXPECT_EQ(pgetKeyFdType(), 2);
    EXPECT_EQ(Stored(kServiceKey, "KEYFDTYPE"), "2");

    auto* dllName = BindFromHandle<VNTGetSelectedDllName_fn>(hLibVNTUTILI, "VNTGetSelectedDllName");
    ASSERT_NE(dllName, nullptr);
    char name[128];
    const char* expected[] = {"mailrpt.dll", "dialsvc.dll", "vntmgr.dll", "vnthttps.dll"};
    for (DWORD method = 0; method < 4; ++method) {
        SetDword(kServiceKey, "MethodType", method);
        ASSERT_EQ(dllName(name, sizeof name), 0) << method;
        EXPECT_STREQ(name, expected[method]);
    }
    EXPECT_EQ(dllName(name, 13), 0);  // "vnthttps.dll" and its terminator
    EXPECT_EQ(dllName(name, 12), -1);
    SetDword(kServiceKey, "MethodType", 4);
    EXPECT_EQ(dllName(name, sizeof name), -1);
}

TEST_F(VantrelPkgTest, ScheduleAndLogFolderChecks) {
    EXPECT_EQ(pCheckScheduleFile(), 0);
    struct Case {
        const char* name;
        DWORD value;
        int expected;
    };
    for (const Case& c : {Case{"HBINTERVAL", 0, -1}, Case{"HBINTERVAL", 366, -1},
                          Case{"HBINTERVAL", 365, 0}, Case{"HBSLEEPTIME", 59, -1},
                          Case{"HBSLEEPTIME", 86401, -1}, Case{"HBSLEEPTIME", 60, 0}}) {
        SetDword(kHeartBeatKey, c.name, c.value);
        EXPECT_EQ(pCheckScheduleFile(), c.expected) << c.name << "=" << c.value;
    }
    for (const auto& [date, expected] : {std::pair{"2024/02/29", 0}, std::pair{"2026/02/29", -1},
                                         std::pair{"2026/1/05", -1}, std::pair{"", 0}}) {
        SetText(kHeartBeatKey, "HBRDATE", date);
        EXPECT_EQ(pCheckScheduleFile(), expected) << date;
    }
    ASSERT_EQ(SetRaw(kHeartBeatKey, nullptr), 0);
    HKEY key = nullptr;
    ASSERT_EQ(RegOpenKeyEx(HKEY_LOCAL_MACHINE, kHeartBeatKey.c_str(), 0, KEY_ALL_ACCESS, &key), 0);
    EXPECT_EQ(RegDeleteValue(key, "HBSLEEPTIME"), 0);
    RegCloseKey(key);
    EXPECT_EQ(pCheckScheduleFile(), -1);

    const std::filesystem::path folder = root().path() / "log" / "vnt";
    EXPECT_FALSE(std::filesystem::exists(folder));
    EXPECT_EQ(pCheckLogFile(), 0);
    EXPECT_TRUE(std::filesystem::is_directory(folder));
    EXPECT_EQ(pCheckLogFile(), 0);
    std::filesystem::remove(folder);
    zoltest::writeFile(folder, "a file where the folder belongs\n");
    EXPECT_EQ(pCheckLogFile(), -1);
}

TEST_F(VantrelPkgTest, DeliveryEntriesReportWhyNothingWasSent) {
    char* error = nullptr;
    const uint32_t result = pGUIVntReport(&error, "E");
    // Not success, retry, or a failure the program only logs: it shows the text.
    EXPECT_GT(result, 3u);
    ASSERT_NE(error, nullptr);
    // The store of this test holds no HTTPS URL: the library says so.
    EXPECT_EQ(std::string(error), "no first URL is set for HTTPS reports");
    std::free(error);
    EXPECT_EQ(pGUIVntReport(nullptr, "E"), result);

    EXPECT_EQ(pReportByMain(), -1);
    EXPECT_EQ(Stored(kHeartBeatKey, "HBRDATE"), "");
}

}  // namespace
}  // namespace svctest
