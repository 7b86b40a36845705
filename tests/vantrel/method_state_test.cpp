// What OK does on the service's base screen and on the dial-up, HTTPS and proxy screens, and what
// a test report's outcome shows, driven through their state without a terminal.
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "baseset/vantrel_base.h"
#include "remote/vantrel_method.h"

namespace {

// ---- The service's switch: the order of the steps ----

struct SwitchRun {
    bool floppy = true;
    int screen = 1;
    bool storeOk = true;
    std::vector<std::string> calls;

    ServiceSwitchSteps steps() {
        return {[this] {
                    calls.push_back("floppy");
                    return floppy;
                },
                [this](int method) {
                    calls.push_back("screen " + std::to_string(method));
                    return screen;
                },
                [this](int method, bool on) {
                    calls.push_back("store " + std::to_string(method) + (on ? " on" : " off"));
                    return storeOk;
                }};
    }
};

TEST(ServiceSwitch, StoresOnlyAfterTheFloppyAndTheMethodScreen) {
    struct Case {
        const char* what;
        VantrelBaseState state;
        bool floppy;
        int screen;
        bool storeOk;
        SwitchOutcome outcome;
        const char* message;
        std::vector<std::string> calls;
    };
    const Case cases[] = {
        {"on without a method",
         {true, -1},
         true,
         1,
         true,
         SwitchOutcome::Refused,
         "WARN_INVALID_ID",
         {}},
        {"on before the key floppy",
         {true, 3},
         false,
         1,
         true,
         SwitchOutcome::Refused,
         "IMAIL_INSERT_FD_ID",
         {"floppy"}},
        {"method screen cancelled",
         {true, 3},
         true,
         0,
         true,
         SwitchOutcome::NotSaved,
         nullptr,
         {"floppy", "screen 3"}},
        {"method screen failed",
         {true, 0},
         true,
         -1,
         true,
         SwitchOutcome::NotSaved,
         nullptr,
         {"floppy", "screen 0"}},
        {"method screen saved",
         {true, 1},
         true,
         1,
         true,
         SwitchOutcome::Stored,
         nullptr,
         {"floppy", "screen 1", "store 1 on"}},
        {"store fails",
         {true, 2},
         true,
         1,
         false,
         SwitchOutcome::StoreFailed,
         nullptr,
         {"floppy", "screen 2", "store 2 on"}},
        // Switching off needs neither the floppy nor a method screen.
        {"off", {false, 3}, false, 0, true, SwitchOutcome::Stored, nullptr, {"store 3 off"}},
        {"off keeping the method",
         {false, -1},
         false,
         0,
         true,
         SwitchOutcome::Stored,
         nullptr,
         {"store -1 off"}},
    };
    for (const Case& c : cases) {
        SwitchRun run{c.floppy, c.screen, c.storeOk, {}};
        const SwitchResult result = ApplyServiceSwitch(c.state, run.steps());
        EXPECT_EQ(result.outcome, c.outcome) << c.what;
        EXPECT_STREQ(result.messageId, c.message) << c.what;
        EXPECT_EQ(run.calls, c.calls) << c.what;
    }
}

// ---- Dial-up ----

DialUpEntries GoodDialUp() {
    return {"03-1234-5678", "(06)98765432", "site42", "/dev/ttyS1", "15", 1};
}

TEST(DialUpState, RefusesInOrderAndLeavesTheRecord) {
    struct Case {
        const char* what;
        void (*change)(DialUpEntries&);
        const char* refusal;
    };
    const Case cases[] = {
        {"no primary", [](DialUpEntries& e) { e.primary.clear(); }, "IDS_ERROR_MSG_TELNUM"},
        {"primary of 31", [](DialUpEntries& e) { e.primary.assign(31, '1'); },
         "IDS_ERROR_MSG_TELNUM"},
        {"primary with a blank", [](DialUpEntries& e) { e.primary = "03 1234"; },
         "IDS_ERROR_MSG_BADTELNUM"},
        {"secondary of 31", [](DialUpEntries& e) { e.secondary.assign(31, '2'); },
         "IDS_ERROR_MSG_TELNUM"},
        {"secondary with a letter", [](DialUpEntries& e) { e.secondary = "06x"; },
         "IDS_ERROR_MSG_BADTELNUM"},
        {"user of 33", [](DialUpEntries& e) { e.user.assign(33, 'u'); }, "DIAL_UP_USER_ERR"},
        {"user with a blank", [](DialUpEntries& e) { e.user = "a b"; }, "DIAL_UP_USER_ERR"},
        {"device outside /dev", [](DialUpEntries& e) { e.device = "/tmp/ttyS0"; },
         "DIAL_UP_PORT_ERR"},
        {"device /dev/ alone", [](DialUpEntries& e) { e.device = "/dev/"; }, "DIAL_UP_PORT_ERR"},
        {"redial 0", [](DialUpEntries& e) { e.redial = "0"; }, "DIAL_UP_INTVAL_ERR"},
        {"redial 61", [](DialUpEntries& e) { e.redial = "61"; }, "DIAL_UP_INTVAL_ERR"},
        {"redial empty", [](DialUpEntries& e) { e.redial.clear(); }, "DIAL_UP_INTVAL_ERR"},
        // The first refusal wins.
        {"primary and redial",
         [](DialUpEntries& e) {
             e.primary.clear();
             e.redial = "0";
         },
         "IDS_ERROR_MSG_TELNUM"},
    };
    for (const Case& c : cases) {
        DialUpEntries entries = GoodDialUp();
        c.change(entries);
        VntDialData record{};
        std::strcpy(record.PhoneNo1, "kept");
        EXPECT_STREQ(ApplyDialUpEntries(entries, record), c.refusal) << c.what;
        EXPECT_STREQ(record.PhoneNo1, "kept") << c.what;
    }
}

TEST(DialUpState, AcceptedValuesAreWhatIsTyped) {
    VntDialData record{};
    DialUpEntries entries = GoodDialUp();
    entries.primary.assign(30, '9');
    entries.secondary.clear();
    entries.user.assign(32, 'u');
    entries.redial = "60";
    ASSERT_EQ(ApplyDialUpEntries(entries, record), nullptr);
    EXPECT_EQ(std::string(record.PhoneNo1), std::string(30, '9'));
    EXPECT_STREQ(record.PhoneNo2, "");
    EXPECT_EQ(std::string(record.UserID), std::string(32, 'u'));
    EXPECT_STREQ(record.Device, "/dev/ttyS1");
    EXPECT_EQ(record.DialMode, VNT_DIAL_MODE_PULSE);
    EXPECT_EQ(record.RedialInterval, 60u);
    entries.mode = 0;
    entries.redial = "1";
    ASSERT_EQ(ApplyDialUpEntries(entries, record), nullptr);
    EXPECT_EQ(record.DialMode, VNT_DIAL_MODE_TONE);
    EXPECT_EQ(record.RedialInterval, 1u);
}

// ---- HTTPS and its proxy ----

TEST(HttpsState, UrlAndProxyRefusals) {
    const std::string url256 = "https://" + std::string(248, 'a');
    struct Case {
        HttpsEntries entries;
        const char* refusal;
    };
    const Case urls[] = {
        {{"", "", false}, "URL1_NOT_EXIST"},
        {{"http://a.example/", "", false}, "HTTPS_URL_ERR"},
        {{"https://", "", false}, "HTTPS_URL_ERR"},
        {{"https://a b", "", false}, "HTTPS_URL_ERR"},
        {{url256 + "a", "", false}, "HTTPS_URL_ERR"},
        {{"https://a.example/", "", true}, "URL2_NOT_EXIST"},
        {{"https://a.example/", "ftp://b", false}, "HTTPS_URL_ERR"},
        {{url256, "", false}, nullptr},
        {{"HTTPS://A.example/", "https://b.example/", true}, nullptr},
    };
    for (const Case& c : urls) {
        VntHttpsData record{};
        EXPECT_STREQ(ApplyHttpsEntries(c.entries, record), c.refusal) << c.entries.url1;
        if (c.refusal == nullptr) {
            EXPECT_EQ(std::string(record.Url1), c.entries.url1);
            EXPECT_EQ(record.ContinueReport, c.entries.continueReport ? 1u : 0u);
        } else {
            EXPECT_STREQ(record.Url1, "");
        }
    }

    struct ProxyCase {
        ProxyEntries entries;
        const char* refusal;
    };
    const ProxyCase proxies[] = {
        {{true, "", "8080"}, "PROXY_HOST_ERR"},
        {{true, "a b", "8080"}, "PROXY_HOST_ERR"},
        {{false, "a b", "8080"}, "PROXY_HOST_ERR"},
        {{true, std::string(257, 'h'), "8080"}, "IDS_ERR_HOST_TOO_LONG"},
        {{true, "proxy", "0"}, "ERROR_PROXYPORT"},
        {{true, "proxy", "65536"}, "ERROR_PROXYPORT"},
        {{false, "", ""}, "ERROR_PROXYPORT"},
        {{true, "proxy", "65535"}, nullptr},
        {{false, "", "1"}, nullptr},
    };
    for (const ProxyCase& c : proxies) {
        VntHttpsData record{};
        record.ProxyPort = 8080;
        EXPECT_STREQ(ApplyProxyEntries(c.entries, record), c.refusal)
            << c.entries.host << ":" << c.entries.port;
        if (c.refusal == nullptr) {
            EXPECT_EQ(record.ProxyUse, c.entries.use ? 1u : 0u);
            EXPECT_EQ(std::string(record.ProxyAddr), c.entries.host);
            EXPECT_EQ(std::to_string(record.ProxyPort), c.entries.port);
        } else {
            EXPECT_EQ(record.ProxyPort, 8080u);
        }
    }
}

// ---- Test reports ----

TEST(TestReportBox, EachOutcomeSaysWhatHappened) {
    using S = DeliveryOutcome::Status;
    const TestReportBox notLoaded =
        TestReportOutcomeBox({S::NotLoaded, 0, {}}, "dialsvc.dll", "AM_Dll_ALV_Vnt");
    EXPECT_STREQ(notLoaded.messageId, "IDS_ERR_LOAD_DLL");
    EXPECT_EQ(notLoaded.argument, "dialsvc.dll");
    const TestReportBox noEntry =
        TestReportOutcomeBox({S::NoEntry, 0, {}}, "dialsvc.dll", "AM_Dll_ALV_Vnt");
    EXPECT_STREQ(noEntry.messageId, "IDS_ERR_EXE_FUNC");
    EXPECT_EQ(noEntry.argument, "AM_Dll_ALV_Vnt");
    EXPECT_STREQ(TestReportOutcomeBox({S::Called, 0, {}}, "x", "y").messageId, "TEST_REPORT_OK");
    for (const uint32_t result : {1u, 2u, 4u}) {
        const TestReportBox failed = TestReportOutcomeBox({S::Called, result, "why"}, "x", "y");
        EXPECT_STREQ(failed.messageId, "ERROR_TEST_REPORT") << result;
        EXPECT_STREQ(failed.title, "Error");
        EXPECT_EQ(failed.detail, "why");
    }
}

}  // namespace
