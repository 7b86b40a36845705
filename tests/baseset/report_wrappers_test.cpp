// The wrappers of the report-settings library against a library that lacks their functions and
// against no library: each gives its own failure value and leaves the menu's state empty.
#include <gtest/gtest.h>
#include <zolwin.h>

#include <cstring>
#include <string>

#include "frame/rptset_calls.h"
#include "product_root.h"

TEST(ReportWrappers, MissingFunctionsAndHandle) {
    zoltest::ProductRoot root(false);
    zoltest::ScopedEnv zolDir("ZolDir", root.path().string());
    ASSERT_EQ(TraceLogInit(0, "wraptest", 0, 5, 0), 0);
    HMODULE lacking = LoadLibrary((root.path() / "lib" / "dscopy.dll").c_str());
    ASSERT_NE(lacking, nullptr) << ZolLastLoadError();

    BaseData record{};
    int method = 7;
    for (HMODULE lib : {lacking, static_cast<HMODULE>(nullptr)}) {
        EXPECT_EQ(InitAllBaseSetting(lib), FALSE);
        EXPECT_EQ(CPAllBaseData, nullptr);
        EXPECT_EQ(numBaseData, 0);
        EXPECT_EQ(InitBaseSetting(lib, &record), -1);
        EXPECT_EQ(PutBaseSetting(lib, &record), FALSE);
        EXPECT_EQ(InitIMBaseRegPath(lib), FALSE);
        EXPECT_EQ(CheckIMMode(lib), FALSE);
        EXPECT_EQ(InitIMBaseSetting(lib), FALSE);
        EXPECT_EQ(SetIMBaseSetting(lib), 0);
        EXPECT_EQ(GetVntMethod(lib, &method), -1);
        EXPECT_EQ(method, 7);
        EXPECT_EQ(SetVntMethod(lib, VANTREL_HTTPS), -1);
        EXPECT_EQ(ResetOpenSet(lib), -1);
        EXPECT_EQ(szGetEOpening(lib), 0);
        EXPECT_EQ(SetVntReport(lib, VANTREL_HTTPS, true), -1);
        EXPECT_EQ(ApplyTrapSetting(lib, {"192.0.2.1"}, {}), FALSE);
        EXPECT_EQ(IPAddressCheck(lib, "192.0.2.1"), -1);
        POPParam pop{};
        SMTPParam smtp{};
        DWORD wait = 9;
        EXPECT_EQ(GetPopParam(lib, &pop, &wait), -1);
        EXPECT_EQ(GetSMTPParam(lib, &smtp), -1);
        EXPECT_EQ(PutPopParam(lib, &pop, wait), -1);
        EXPECT_EQ(PutSMTPParam(lib, &smtp), -1);
    }
    FreeLibrary(lacking);

    const std::string trace = zoltest::readFile(root.traceFile("wraptest"));
    for (const char* line :
         {"<Gets GetBaseSetting  Address Failed.", "<Gets CheckInternetMailMode  Address Failed.",
          "<Gets AMGetVntMethod  Address Failed.", "<GetProcAddress(AMAMRegReadEx) failed.",
          "<Gets AMAMSetMailLogin  Address Failed.", "<[IN]Param error.",
          "<hLibRPTSET ==NULL.return -1 [0:success -1:failure].",
          "<hLibRPTSET ==NULL.return 0 [0:success -1:failure]."}) {
        EXPECT_NE(trace.find(line), std::string::npos) << line;
    }
}

// The login accessors against the real library: what is written comes back whole, with the
// password decoded; values never written read as empty, port 110 and wait 0.
TEST(ReportWrappers, MailLoginsRoundTrip) {
    zoltest::ProductRoot root;
    zoltest::ScopedEnv zolDir("ZolDir", root.path().string());
    ASSERT_EQ(TraceLogInit(0, "wraptest", 0, 5, 0), 0);
    HMODULE lib = LoadLibrary((root.path() / "lib" / "rptset.dll").c_str());
    ASSERT_NE(lib, nullptr) << ZolLastLoadError();
    HKEY key = nullptr;
    ASSERT_EQ(RegOpenKeyEx(HKEY_LOCAL_MACHINE, kMailLoginKey, 0, KEY_ALL_ACCESS, &key), 0);
    for (const char* value : {"POPPort", "POPTime", "POPPass"})
        RegDeleteValue(key, value);
    RegCloseKey(key);

    POPParam pop;
    std::memset(&pop, 'x', sizeof pop);
    DWORD wait = 99;
    ASSERT_EQ(GetPopParam(lib, &pop, &wait), 0);
    EXPECT_EQ(std::string(pop.Server) + "|" + pop.Password, "|");
    EXPECT_EQ(pop.Port, kDefaultPopPort);
    EXPECT_EQ(wait, kDefaultPopWait);

    std::strcpy(pop.Server, "pop.example.com");
    std::strcpy(pop.User, "alice");
    std::strcpy(pop.Password, "pw-pop");
    pop.Port = 995;
    ASSERT_EQ(PutPopParam(lib, &pop, 30), 0);
    SMTPParam smtp{};
    std::strcpy(smtp.User, "bob");
    std::strcpy(smtp.Password, "pw-smtp");
    ASSERT_EQ(PutSMTPParam(lib, &smtp), 0);
    pop.Port = 70000;  // refused by the library: nothing of the half is written
    std::strcpy(pop.User, "mallory");
    EXPECT_EQ(PutPopParam(lib, &pop, 30), -1);

    POPParam popBack{};
    SMTPParam smtpBack{};
    ASSERT_EQ(GetPopParam(lib, &popBack, &wait), 0);
    ASSERT_EQ(GetSMTPParam(lib, &smtpBack), 0);
    EXPECT_EQ(std::string(popBack.Server) + "|" + popBack.User + "|" + popBack.Password,
              "pop.example.com|alice|pw-pop");
    EXPECT_EQ(popBack.Port, 995u);
    EXPECT_EQ(wait, 30u);
    EXPECT_EQ(std::string(smtpBack.User) + "|" + smtpBack.Password, "bob|pw-smtp");
    FreeLibrary(lib);
    ZolRegCloseStore();
    EXPECT_EQ(zoltest::readFile(root.traceFile("wraptest")).find("pw-"), std::string::npos);
}
