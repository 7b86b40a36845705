// The dial-up and HTTPS settings and the delivery entries through the program's call layers, with
// the libraries loaded from the product root against a seeded store.
#include <cstring>
#include <string>

#include "frame/delivery_calls.h"
#include "frame/libraries.h"
#include "frame/rptset_dial_calls.h"
#include "frame/vnthttps_calls.h"
#include "seeded_store.h"

namespace svctest {
namespace {

const std::string kDialKey = ZOL_KEY_DIAL_SETTING;
const std::string kSetupKey = ZOL_KEY_VNT_SETUP;

class MethodLibraryTest : public SeededStoreTest {
  protected:
    void SetUp() override {
        SeededStoreTest::SetUp();
        ASSERT_TRUE(LoadRptsetDLL()) << Trace();
        ASSERT_TRUE(LoadVantrelPkgDLL()) << Trace();
    }
};

VntDialData GoodDial() {
    VntDialData d{};
    std::strcpy(d.PhoneNo1, "03-1234-5678");
    std::strcpy(d.PhoneNo2, "(06)9876");
    std::strcpy(d.UserID, "site42");
    std::strcpy(d.Device, "/dev/ttyUSB0");
    d.DialMode = VNT_DIAL_MODE_PULSE;
    d.RedialInterval = 60;
    return d;
}

TEST_F(MethodLibraryTest, DialUpDefaultsRoundTripAndRefusals) {
    // Nothing stored: the key floppy's number, the first serial line, tone, five minutes.
    SetText(kSetupKey, "PHONENO", "0120-000-111");
    VntDialData read{};
    ASSERT_TRUE(GetDialUpParam(hLibRPTSET, &read)) << Trace();
    EXPECT_STREQ(read.PhoneNo1, "0120-000-111");
    EXPECT_STREQ(read.PhoneNo2, "");
    EXPECT_STREQ(read.Device, "/dev/ttyS0");
    EXPECT_EQ(read.DialMode, VNT_DIAL_MODE_TONE);
    EXPECT_EQ(read.RedialInterval, 5u);

    const VntDialData good = GoodDial();
    ASSERT_TRUE(PutDialUpParam(hLibRPTSET, good)) << Trace();
    const std::string before = Snapshot();
    const std::pair<const char*, void (*)(VntDialData&)> refused[] = {
        {"no primary", [](VntDialData& d) { d.PhoneNo1[0] = '\0'; }},
        {"letter", [](VntDialData& d) { std::strcpy(d.PhoneNo2, "06x"); }},
        {"31 digits", [](VntDialData& d) { std::memset(d.PhoneNo1, '1', 31); }},
        {"user blank", [](VntDialData& d) { std::strcpy(d.UserID, "a b"); }},
        {"device", [](VntDialData& d) { std::strcpy(d.Device, "ttyS0"); }},
        {"mode", [](VntDialData& d) { d.DialMode = 2; }},
        {"redial 0", [](VntDialData& d) { d.RedialInterval = 0; }},
        {"redial 61", [](VntDialData& d) { d.RedialInterval = 61; }},
        {"no terminator", [](VntDialData& d) { std::memset(d.UserID, 'u', sizeof d.UserID); }},
    };
    for (const auto& [what, change] : refused) {
        VntDialData bad = good;
        change(bad);
        const LibResult r = PutDialUpParam(hLibRPTSET, bad);
        EXPECT_FALSE(r) << what;
        EXPECT_EQ(r.value, -1) << what;
    }
    EXPECT_EQ(Snapshot(), before);

    read = {};
    ASSERT_TRUE(GetDialUpParam(hLibRPTSET, &read));
    EXPECT_EQ(std::memcmp(&read, &good, sizeof read), 0);
    EXPECT_EQ(Stored(kDialKey, "PhoneNo1"), "03-1234-5678");
    EXPECT_EQ(Stored(kDialKey, "DialMode"), "1");

    // A value stored with another type reads as its default; the record is still read.
    SetText(kDialKey, "RedialInterval", "7");
    ASSERT_TRUE(GetDialUpParam(hLibRPTSET, &read));
    EXPECT_EQ(read.RedialInterval, 5u);
    EXPECT_STREQ(read.UserID, "site42");
}

TEST_F(MethodLibraryTest, HttpsSettingsWholeRoundTripAndRefusals) {
    VntHttpsData read{};
    ASSERT_TRUE(GetHTTPSParam(hLibVNTHTTPS, &read)) << Trace();
    EXPECT_EQ(read.ContinueReport, 0u);
    EXPECT_EQ(read.ProxyUse, 0u);
    EXPECT_EQ(read.ProxyPort, 8080u);
    EXPECT_STREQ(read.Url1, "");

    VntHttpsData good{};
    good.ContinueReport = 1;
    good.ProxyUse = 1;
    good.ProxyPort = 3128;
    std::strcpy(good.Url1, "https://one.example.com/r");
    std::strcpy(good.Url2, "https://two.example.com/r");
    std::strcpy(good.ProxyAddr, "proxy.example.com");
    ASSERT_TRUE(PutHTTPSParam(hLibVNTHTTPS, good)) << Trace();
    const std::string before = Snapshot();
    const std::pair<const char*, void (*)(VntHttpsData&)> refused[] = {
        {"port 0", [](VntHttpsData& d) { d.ProxyPort = 0; }},
        {"port 65536", [](VntHttpsData& d) { d.ProxyPort = 65536; }},
        {"use 2", [](VntHttpsData& d) { d.ProxyUse = 2; }},
        {"continue 2", [](VntHttpsData& d) { d.ContinueReport = 2; }},
        {"blank host", [](VntHttpsData& d) { std::strcpy(d.ProxyAddr, "a b"); }},
        {"two lines", [](VntHttpsData& d) { std::strcpy(d.Url2, "https://x\ny"); }},
        {"no terminator", [](VntHttpsData& d) { std::memset(d.Url1, 'u', sizeof d.Url1); }},
    };
    for (const auto& [what, change] : refused) {
        VntHttpsData bad = good;
        change(bad);
        EXPECT_FALSE(PutHTTPSParam(hLibVNTHTTPS, bad)) << what;
    }
    EXPECT_EQ(Snapshot(), before);
    ASSERT_TRUE(GetHTTPSParam(hLibVNTHTTPS, &read));
    EXPECT_EQ(std::memcmp(&read, &good, sizeof read), 0);
    // The single-value getters the rest of the package uses see the same values.
    EXPECT_EQ(pGetHTTPProxyPort(), 3128);
    EXPECT_EQ(Stored(kHttpsKey, "ContinueReport"), "1");

    // A stored value out of range makes the whole read fail and leaves the caller's record.
    SetDword(kHttpsKey, "ContinueReport", 5);
    VntHttpsData untouched{};
    untouched.ProxyPort = 1;
    EXPECT_FALSE(GetHTTPSParam(hLibVNTHTTPS, &untouched));
    EXPECT_EQ(untouched.ProxyPort, 1u);
}

TEST_F(MethodLibraryTest, DeliveryEntriesTellLoadEntryAndResultApart) {
    // A delivery library missing from lib/: the load fails.
    RemoveLibrary("dialsvc.dll");
    const DeliveryOutcome dial = CallDeliveryEntry("dialsvc.dll", "AM_Dll_ALV_Vnt", "T1");
    EXPECT_EQ(dial.status, DeliveryOutcome::Status::NotLoaded);

    const DeliveryOutcome noEntry = CallLoadedDeliveryEntry(hLibVNTHTTPS, "NoSuchEntry", "T1");
    EXPECT_EQ(noEntry.status, DeliveryOutcome::Status::NoEntry);

    // Called: the library's result and its own text come back (no URL is stored here).
    const DeliveryOutcome https = CallLoadedDeliveryEntry(hLibVNTHTTPS, "GUIVntReport", "T1");
    EXPECT_EQ(https.status, DeliveryOutcome::Status::Called);
    EXPECT_EQ(https.result, 4u);
    EXPECT_EQ(https.errorText, "no first URL is set for HTTPS reports");

    // A library that is there but is not a delivery library: loaded, entry missing.
    const DeliveryOutcome chkset = CallDeliveryEntry("chkset.dll", "AM_Dll_ALV_Vnt", "T1");
    EXPECT_EQ(chkset.status, DeliveryOutcome::Status::NoEntry);
    EXPECT_EQ(CallLoadedDeliveryEntry(nullptr, "GUIVntReport", "T1").status,
              DeliveryOutcome::Status::NotLoaded);
}

}  // namespace
}  // namespace svctest
