// Loading and releasing the service libraries, the remote-report package, binding by name,
// failure reporting and the direct registry reader.
#include <cstring>
#include <string>
#include <vector>

#include "dscopy_api.h"
#include "frame/libraries.h"
#include "frame/msgfile.h"
#include "services_test_util.h"

namespace svctest {
namespace {

class LibrariesTest : public ServicesTest {
  protected:
    void InstallPackage() {
        InstallTestModule("testpkg_vnthttps", "vnthttps.dll");
        InstallTestModule("testpkg_vntutil", "vntutil.dll");
        InstallTestModule("testpkg_chkset", "chkset.dll");
        InstallTestModule("testpkg_hrtbeat", "hrtbeat.dll");
    }
};

TEST_F(LibrariesTest, StartupLibrariesLoadOnceAndRelease) {
    ASSERT_TRUE(LoadDscopyDLL());
    EXPECT_NE(hLibDSCOPY, nullptr);
    ASSERT_TRUE(LoadRptsetDLL());
    HMODULE first = hLibRPTSET;
    ASSERT_NE(first, nullptr);
    // Already loaded: kept as it is.
    EXPECT_TRUE(LoadRptsetDLL());
    EXPECT_EQ(hLibRPTSET, first);
    EXPECT_GE(TraceCount("<return TRUE."), 3);
    EXPECT_EQ(TraceCount("failed"), 0) << Trace();

    EXPECT_TRUE(FreeRptsetDLL());
    EXPECT_EQ(hLibRPTSET, nullptr);
    EXPECT_TRUE(FreeDscopyDLL());
    EXPECT_EQ(hLibDSCOPY, nullptr);
    // Releasing what is not loaded is harmless.
    EXPECT_TRUE(FreeRptsetDLL());
    EXPECT_TRUE(FreeSecrptDLL());
}

TEST_F(LibrariesTest, MissingLibrariesFailWithTheirTraces) {
    RemoveLibrary("rptset.dll");
    EXPECT_FALSE(LoadRptsetDLL());
    EXPECT_EQ(hLibRPTSET, nullptr);
    EXPECT_EQ(TraceCount("<LoadLibrary for rptset.dll failed.return FALSE."), 1) << Trace();

    EXPECT_FALSE(LoadSecrptDLL());
    EXPECT_EQ(hLibSECRPT, nullptr);
    EXPECT_EQ(TraceCount("<LoadLibrary for secrpt.dll failed.return FALSE."), 1);

    // The vntutil loader names "vntutili.dll" in its trace but loads "vntutil.dll".
    EXPECT_FALSE(LoadVntutiliDLL());
    EXPECT_EQ(TraceCount("<LoadLibrary for vntutili.dll failed.return FALSE."), 1) << Trace();
    EXPECT_EQ(TraceCount("vntutil.dll"), 0);
    InstallTestModule("testpkg_vntutil", "vntutili.dll");
    EXPECT_FALSE(LoadVntutiliDLL());
    InstallTestModule("testpkg_vntutil", "vntutil.dll");
    EXPECT_TRUE(LoadVntutiliDLL());
    EXPECT_NE(hLibVNTUTILI, nullptr);
    EXPECT_TRUE(FreeVntutiliDLL());
    EXPECT_EQ(hLibVNTUTILI, nullptr);

    // A file that is not a library does not load either.
    zoltest::writeFile(root().path() / "lib" / "hrtbeat.dll", "not a library\n");
    EXPECT_FALSE(LoadHrtbeatDLL());
    EXPECT_EQ(TraceCount("<LoadLibrary for hrtbeat.dll failed.return FALSE."), 1);
}

TEST_F(LibrariesTest, RootTooLongForTheBufferIsAnExpansionFailure) {
    // 200 characters fit the package's 4095-byte buffer but not the start-up libraries' 128.
    const std::string longRoot = "/nonexistent/" + std::string(187, 'r');
    zoltest::ScopedEnv zolDir("ZolDir", longRoot);

    testing::internal::CaptureStdout();
    EXPECT_FALSE(LoadRptsetDLL());
    EXPECT_FALSE(LoadDscopyDLL());
    EXPECT_FALSE(LoadSecrptDLL());
    const std::string out = testing::internal::GetCapturedStdout();
    // Only the two start-up libraries tell standard output.
    EXPECT_EQ(out, "Get zol dir failed.\nGet zol dir failed.\n");
    EXPECT_EQ(TraceCount("<ExpandEnvironmentStrings failed. return FALSE"), 3) << Trace();

    // The package's buffer holds the root: expansion succeeds and the load fails.
    testing::internal::CaptureStdout();
    EXPECT_FALSE(LoadChksetDLL());
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    EXPECT_EQ(TraceCount("<ExpandEnvironmentStrings failed. return FALSE"), 3);
    EXPECT_EQ(TraceCount("<LoadLibrary for chkset.dll failed.return FALSE."), 1);
}

std::vector<const void*> PackagePointers() {
    return {reinterpret_cast<const void*>(pGetHTTPProxyUse),
            reinterpret_cast<const void*>(pGetHTTPProxyAddr),
            reinterpret_cast<const void*>(pGetHTTPProxyPort),
            reinterpret_cast<const void*>(pSetHTTPProxyUse),
            reinterpret_cast<const void*>(pSetHTTPProxyAddr),
            reinterpret_cast<const void*>(pSetHTTPProxyPort),
            reinterpret_cast<const void*>(pGetHTTPSURL),
            reinterpret_cast<const void*>(pSetHTTPSURL),
            reinterpret_cast<const void*>(pGUIVntReport),
            reinterpret_cast<const void*>(pWriteOpenSetting),
            reinterpret_cast<const void*>(psetKeyFdType),
            reinterpret_cast<const void*>(pgetKeyFdType),
            reinterpret_cast<const void*>(pgetVntSuppressMode),
            reinterpret_cast<const void*>(psetVntSuppressMode),
            reinterpret_cast<const void*>(pgetVntSuppressInterval),
            reinterpret_cast<const void*>(psetVntSuppressInterval),
            reinterpret_cast<const void*>(pCheckScheduleFile),
            reinterpret_cast<const void*>(pCheckLogFile),
            reinterpret_cast<const void*>(pReportByMain)};
}

TEST_F(LibrariesTest, PackageBindsAllNineteenFunctions) {
    InstallPackage();
    ASSERT_TRUE(LoadVantrelPkgDLL()) << Trace();
    for (const void* p : PackagePointers())
        EXPECT_NE(p, nullptr);

    // Each pointer reaches its own function in the right library.
    EXPECT_EQ(pGetHTTPProxyUse(), 101);
    char address[16];
    EXPECT_EQ(pGetHTTPProxyAddr(address, sizeof address), 102);
    EXPECT_STREQ(address, "proxy.test");
    EXPECT_EQ(pGetHTTPProxyPort(), 103);
    EXPECT_EQ(pSetHTTPProxyUse(1), 105);
    EXPECT_EQ(pSetHTTPProxyAddr("p"), 105);
    EXPECT_EQ(pSetHTTPProxyPort(8080), 106);
    EXPECT_EQ(pGetHTTPSURL(2, nullptr, 0), 109);
    EXPECT_EQ(pSetHTTPSURL(1, ""), 109);
    char* error = reinterpret_cast<char*>(1);
    EXPECT_EQ(pGUIVntReport(&error, "E"), 109u);
    EXPECT_EQ(error, nullptr);
    EXPECT_EQ(pWriteOpenSetting("/tmp/vntfd"), 201);
    EXPECT_EQ(psetKeyFdType(2), 202);
    EXPECT_EQ(pgetKeyFdType(), 203);
    EXPECT_EQ(pGetVntSuppressMode(), 204);
    EXPECT_EQ(pSetVntSuppressMode(1), 206);
    EXPECT_EQ(pGetVntSuppressInterval(), 206);
    EXPECT_EQ(pSetVntSuppressInterval(30), 30);
    EXPECT_EQ(pCheckScheduleFile(), 301);
    EXPECT_EQ(pCheckLogFile(), 302);
    EXPECT_EQ(pReportByMain(), 401);
    EXPECT_EQ(TraceCount("failed"), 0) << Trace();

    EXPECT_TRUE(FreeVantrelPkgDLL());
    EXPECT_EQ(hLibVNTHTTPS, nullptr);
    EXPECT_EQ(hLibVNTUTILI, nullptr);
    EXPECT_EQ(hLibCHKSET, nullptr);
    EXPECT_EQ(hLibHRTBEAT, nullptr);
    for (const void* p : PackagePointers())
        EXPECT_EQ(p, nullptr);
}

TEST_F(LibrariesTest, PackageWithALibraryMissingStillBindsTheOthers) {
    InstallPackage();
    RemoveLibrary("chkset.dll");
    EXPECT_FALSE(LoadVantrelPkgDLL());
    EXPECT_EQ(TraceCount("LoadChksetDLL() failed!return 0."), 1) << Trace();
    EXPECT_EQ(TraceCount("LoadVNTHTTPSDLL() failed!return 0."), 0);
    EXPECT_EQ(hLibCHKSET, nullptr);
    EXPECT_EQ(pCheckScheduleFile, nullptr);
    EXPECT_EQ(pCheckLogFile, nullptr);
    // The libraries after the missing one were still loaded and bound.
    ASSERT_NE(pReportByMain, nullptr);
    EXPECT_EQ(pReportByMain(), 401);
    ASSERT_NE(pGetHTTPProxyUse, nullptr);
    EXPECT_EQ(pGetHTTPProxyUse(), 101);
    EXPECT_EQ(TraceCount("GetProcAddress() failed!return 0."), 0);
}

TEST_F(LibrariesTest, PackageWithAFunctionMissingBindsTheRest) {
    InstallPackage();
    InstallTestModule("testpkg_vntutil_partial", "vntutil.dll");
    EXPECT_FALSE(LoadVantrelPkgDLL());
    EXPECT_EQ(TraceCount("GetProcAddress() failed!return 0."), 1) << Trace();
    EXPECT_EQ(TraceCount("getVntSuppressInterval"), 1);
    EXPECT_NE(hLibVNTUTILI, nullptr);
    EXPECT_EQ(pgetVntSuppressInterval, nullptr);
    // Binding went on past the missing function.
    ASSERT_NE(psetVntSuppressInterval, nullptr);
    EXPECT_EQ(psetVntSuppressInterval(15), 15);
    ASSERT_NE(pCheckLogFile, nullptr);
    EXPECT_EQ(pCheckLogFile(), 302);
}

TEST_F(LibrariesTest, PackageWithNothingInstalledTracesEveryLibrary) {
    EXPECT_FALSE(LoadVantrelPkgDLL());
    for (const char* line :
         {"LoadVNTHTTPSDLL() failed!return 0.", "LoadVntutiliDLL() failed!return 0.",
          "LoadChksetDLL() failed!return 0.", "LoadHrtbeatDLL() failed!return 0."}) {
        EXPECT_EQ(TraceCount(line), 1) << line;
    }
    for (const void* p : PackagePointers())
        EXPECT_EQ(p, nullptr);

    // A later load with the package present binds everything.
    InstallPackage();
    EXPECT_TRUE(LoadVantrelPkgDLL());
    for (const void* p : PackagePointers())
        EXPECT_NE(p, nullptr);
}

TEST_F(LibrariesTest, RegReadExReadsValuesAndReportsWhatIsMissing) {
    const std::string key = "SOFTWARE\\Tavik\\ZolAlertMan\\BaseSetting";
    SetText(key, "Text", "abc");
    SetDword(key, "Number", 0x6e);

    DWORD type = 99;
    BYTE data[257];
    DWORD size = sizeof data;
    ASSERT_TRUE(RegReadEx(HKEY_LOCAL_MACHINE, key.c_str(), "Text", &type, &size, data));
    EXPECT_EQ(type, static_cast<DWORD>(REG_SZ));
    EXPECT_EQ(size, 4u);
    EXPECT_STREQ(reinterpret_cast<char*>(data), "abc");

    DWORD number = 0;
    size = sizeof number;
    ASSERT_TRUE(RegReadEx(HKEY_LOCAL_MACHINE, key.c_str(), "number", &type, &size,
                          reinterpret_cast<BYTE*>(&number)));
    EXPECT_EQ(type, static_cast<DWORD>(REG_DWORD));
    EXPECT_EQ(number, 0x6eu);
    EXPECT_EQ(TraceCount("<return TRUE."), 2);

    // Missing key: type and data cleared.
    type = 99;
    std::memset(data, 'x', sizeof data);
    size = sizeof data;
    EXPECT_FALSE(
        RegReadEx(HKEY_LOCAL_MACHINE, (key + "\\Nothing").c_str(), "Text", &type, &size, data));
    EXPECT_EQ(type, 0u);
    EXPECT_EQ(data[0], 0);
    EXPECT_EQ(TraceCount("<Open registry failed.return FALSE."), 1) << Trace();

    // Missing value.
    size = sizeof data;
    EXPECT_FALSE(RegReadEx(HKEY_LOCAL_MACHINE, key.c_str(), "Nothing", &type, &size, data));
    EXPECT_EQ(data[0], 0);
    EXPECT_EQ(TraceCount("<Get value from registry failed.return FALSE."), 1);

    // A buffer too small for the value: nothing of it is left in the buffer.
    SetText(key, "Long", std::string(40, 'z'));
    size = 8;
    EXPECT_FALSE(RegReadEx(HKEY_LOCAL_MACHINE, key.c_str(), "Long", &type, &size, data));
    EXPECT_EQ(data[0], 0);
    EXPECT_EQ(TraceCount("<Get value from registry failed.return FALSE."), 2);
}

TEST_F(LibrariesTest, BindingByNameGivesTheTypedFunctionOrNull) {
    ASSERT_TRUE(LoadDscopyDLL());
    auto* toText = BindRptset<ScheduleMaskToText_fn>(hLibDSCOPY, "x");
    ASSERT_NE(toText, nullptr);
    char text[SCHEDULE_TEXT_MAX];
    EXPECT_EQ(toText(0xFFFFFF, text), 0);
    EXPECT_STREQ(text, "0-23");
    EXPECT_EQ(BindRptset<GetAllDestSetting_fn>(hLibDSCOPY, "GetAllDestSetting"), nullptr);
    EXPECT_EQ(BindRptset<GetAllDestSetting_fn>(nullptr, "GetAllDestSetting"), nullptr);

    ZOL_TRACE_BIND_FAILED("GetAllBaseSetting");
    ZOL_TRACE_CALL_FAILED("GetAllBaseSetting");
    EXPECT_EQ(TraceCount("<Gets GetAllBaseSetting  Address Failed.return FALSE"), 1) << Trace();
    EXPECT_EQ(TraceCount("<Calls GetAllBaseSetting  Function Failed.return FALSE."), 1);
}

struct BoxSeen {
    std::string title, button, text;
    int count = 0;
};
BoxSeen g_box;
void RecordBox(const char* title, const char* button, const char* text) {
    g_box = {title, button, text, g_box.count + 1};
}

TEST_F(LibrariesTest, FuncCallErrorTextAndBox) {
    zoltest::writeFile(root().path() / "data" / "E_report.rc",
                       "[FUNC_CALL_ERR]\nTEXT=\"Function %s failed.\"\n"
                       "[OTHER]\nTEXT=\"x\"\n");
    ASSERT_TRUE(LoadRcFile("/data/E_report.rc"));
    EXPECT_EQ(FuncCallErrText("InitialDS"), "Function InitialDS failed.");
    EXPECT_EQ(FuncCallErrText("GetProcAddress for CheckInstVantrel"),
              "Function GetProcAddress for CheckInstVantrel failed.");
    // Cut to the box's 100-byte buffer.
    const std::string longName(150, 'n');
    EXPECT_EQ(FuncCallErrText(longName.c_str()), ("Function " + longName).substr(0, 99));

    g_box = {};
    SetErrorBoxSink(RecordBox);
    ShowFuncCallErr("malloc");
    SetErrorBoxSink(nullptr);
    EXPECT_EQ(g_box.count, 1);
    EXPECT_EQ(g_box.title, "Error");
    EXPECT_EQ(g_box.button, " ok ");
    EXPECT_EQ(g_box.text, "Function malloc failed.");
    FreeRcFile();

    // A Japanese (EUC-JP) text is never cut inside a character: 97 ASCII bytes, then a
    // two-byte character that would end at byte 99 of 100, fits; one more byte and it does not.
    const std::string kanji = "\xb4\xc1";
    zoltest::writeFile(root().path() / "data" / "E_report.rc",
                       "[FUNC_CALL_ERR]\nTEXT=\"%s" + kanji + kanji + "\"\n");
    ASSERT_TRUE(LoadRcFile("/data/E_report.rc"));
    EXPECT_EQ(FuncCallErrText(std::string(97, 'a').c_str()), std::string(97, 'a') + kanji);
    EXPECT_EQ(FuncCallErrText(std::string(98, 'a').c_str()), std::string(98, 'a'));
    FreeRcFile();
}

}  // namespace
}  // namespace svctest
