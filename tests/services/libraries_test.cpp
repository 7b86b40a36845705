// Loading and releasing the service libraries, the remote-report package, binding by name,
// failure reporting and the direct registry reader.
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "frame/libraries.h"
#include "frame/msgfile.h"
#include "frame/rptset_calls.h"
#include "regpaths.h"
#include "services_test_util.h"

namespace svctest {
namespace {

class LibrariesTest : public ServicesTest {
  protected:
    static constexpr const char* kPackage[] = {"vnthttps", "vntutil", "chkset", "hrtbeat"};
    // The stand-ins in place of the product's package libraries, or no package at all.
    void InstallPackage() {
        for (const char* name : kPackage)
            InstallTestModule(std::string("testpkg_") + name, std::string(name) + ".dll");
    }
    void RemovePackage() {
        for (const char* name : kPackage)
            RemoveLibrary(std::string(name) + ".dll");
    }
    static int BoundCount() {
        const auto bound = [](auto... p) { return ((p != nullptr) + ...); };
        return bound(pGetHTTPProxyUse, pGetHTTPProxyAddr, pGetHTTPProxyPort, pSetHTTPProxyUse,
                     pSetHTTPProxyAddr, pSetHTTPProxyPort, pGetHTTPSURL, pSetHTTPSURL,
                     pGUIVntReport, pWriteOpenSetting, psetKeyFdType, pgetKeyFdType,
                     pgetVntSuppressMode, psetVntSuppressMode, pgetVntSuppressInterval,
                     psetVntSuppressInterval, pCheckScheduleFile, pCheckLogFile, pReportByMain);
    }
};

TEST_F(LibrariesTest, LoadersLoadReleaseAndTraceFailures) {
    ASSERT_TRUE(LoadDscopyDLL());
    ASSERT_TRUE(LoadRptsetDLL());
    EXPECT_EQ(TraceCount("failed"), 0) << Trace();
    EXPECT_TRUE(FreeRptsetDLL());
    EXPECT_TRUE(FreeRptsetDLL());  // releasing what is not loaded is harmless

    RemoveLibrary("rptset.dll");
    EXPECT_FALSE(LoadRptsetDLL());
    EXPECT_EQ(hLibRPTSET, nullptr);
    EXPECT_EQ(TraceCount("<LoadLibrary for rptset.dll failed.return FALSE."), 1) << Trace();
    zoltest::writeFile(lib("hrtbeat.dll"), "not a library\n");
    EXPECT_FALSE(LoadHrtbeatDLL());
    EXPECT_EQ(TraceCount("<LoadLibrary for hrtbeat.dll failed.return FALSE."), 1);

    // The vntutil loader names "vntutili.dll" in its trace but loads "vntutil.dll".
    RemoveLibrary("vntutil.dll");
    EXPECT_FALSE(LoadVntutiliDLL());
    EXPECT_EQ(TraceCount("<LoadLibrary for vntutili.dll failed.return FALSE."), 1) << Trace();
    EXPECT_EQ(TraceCount("vntutil.dll"), 0);
    InstallTestModule("testpkg_vntutil", "vntutili.dll");
    EXPECT_FALSE(LoadVntutiliDLL());
    InstallTestModule("testpkg_vntutil", "vntutil.dll");
    EXPECT_TRUE(LoadVntutiliDLL());

    // A root too long for the 128-byte buffer of the start-up libraries (not for the package's
    // 4095): only the start-up libraries tell standard output.
    zoltest::ScopedEnv zolDir("ZolDir", "/nonexistent/" + std::string(187, 'r'));
    testing::internal::CaptureStdout();
    EXPECT_FALSE(LoadRptsetDLL());
    EXPECT_FALSE(LoadDscopyDLL());
    EXPECT_FALSE(LoadSecrptDLL());
    EXPECT_FALSE(LoadChksetDLL());
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "Get zol dir failed.\nGet zol dir failed.\n");
    EXPECT_EQ(TraceCount("<ExpandEnvironmentStrings failed. return FALSE"), 3) << Trace();
    EXPECT_EQ(TraceCount("<LoadLibrary for chkset.dll failed.return FALSE."), 1);
}

TEST_F(LibrariesTest, PackageBindsAllNineteenFunctions) {
    InstallPackage();
    ASSERT_TRUE(LoadVantrelPkgDLL()) << Trace();
    EXPECT_EQ(BoundCount(), 19);
    // Each pointer reaches its own function in the right library.
    EXPECT_EQ(pGetHTTPSURL(2, nullptr, 0), 109);
    EXPECT_EQ(psetKeyFdType(2), 202);
    EXPECT_EQ(pGetVntSuppressMode(), 204);  // the capitalised spelling is the same pointer
    EXPECT_EQ(pSetVntSuppressInterval(30), 30);
    EXPECT_EQ(pCheckLogFile(), 302);
    EXPECT_EQ(pReportByMain(), 401);
    EXPECT_EQ(TraceCount("failed"), 0) << Trace();

    EXPECT_TRUE(FreeVantrelPkgDLL());
    EXPECT_EQ(hLibVNTHTTPS, nullptr);
    EXPECT_EQ(BoundCount(), 0);
}

TEST_F(LibrariesTest, PackageNeverStopsEarly) {
    // Nothing installed: every library traced, nothing bound.
    RemovePackage();
    EXPECT_FALSE(LoadVantrelPkgDLL());
    for (const char* line :
         {"LoadVNTHTTPSDLL() failed!return 0.", "LoadVntutiliDLL() failed!return 0.",
          "LoadChksetDLL() failed!return 0.", "LoadHrtbeatDLL() failed!return 0."}) {
        EXPECT_EQ(TraceCount(line), 1) << line;
    }
    EXPECT_EQ(BoundCount(), 0);

    // One library missing: the libraries after it are still loaded and bound.
    InstallPackage();
    RemoveLibrary("chkset.dll");
    EXPECT_FALSE(LoadVantrelPkgDLL());
    EXPECT_EQ(TraceCount("LoadChksetDLL() failed!return 0."), 2);
    EXPECT_EQ(BoundCount(), 17);
    EXPECT_EQ(pCheckScheduleFile, nullptr);
    ASSERT_NE(pReportByMain, nullptr);
    EXPECT_EQ(pReportByMain(), 401);

    // One function missing: binding goes on past it.
    FreeVantrelPkgDLL();  // a mapped library must not be replaced under the process
    InstallPackage();
    InstallTestModule("testpkg_vntutil_partial", "vntutil.dll");
    EXPECT_FALSE(LoadVantrelPkgDLL());
    EXPECT_EQ(TraceCount("GetProcAddress() failed!return 0."), 1) << Trace();
    EXPECT_EQ(TraceCount("GetProcAddress(getVntSuppressInterval)"), 1);
    EXPECT_EQ(BoundCount(), 18);
    EXPECT_EQ(pgetVntSuppressInterval, nullptr);
    ASSERT_NE(psetVntSuppressInterval, nullptr);
    EXPECT_EQ(psetVntSuppressInterval(15), 15);
}

TEST_F(LibrariesTest, RegReadExReadsValuesAndReportsWhatIsMissing) {
    const std::string key = ZOL_KEY_BASESETTING;
    SetText(key, "Text", "abc");
    SetText(key, "Long", std::string(40, 'z'));
    DWORD type = 99, size = 0;
    BYTE data[257];
    auto read = [&](const std::string& path, const char* name, DWORD bufferSize) {
        type = 99;
        size = bufferSize;
        std::memset(data, 'x', sizeof data);
        return RegReadEx(HKEY_LOCAL_MACHINE, path.c_str(), name, &type, &size, data);
    };
    ASSERT_TRUE(read(key, "Text", sizeof data));
    EXPECT_EQ(
        std::to_string(type) + "/" + std::to_string(size) + "/" + reinterpret_cast<char*>(data),
        "1/4/abc");
    EXPECT_EQ(TraceCount("<return TRUE."), 1);

    EXPECT_FALSE(read(key + "\\Nothing", "Text", sizeof data));
    EXPECT_EQ(type, 0u);
    EXPECT_EQ(data[0], 0);
    EXPECT_EQ(TraceCount("<Open registry failed.return FALSE."), 1) << Trace();
    EXPECT_FALSE(read(key, "Nothing", sizeof data));
    // A buffer too small for the value: nothing of it is left in the buffer.
    EXPECT_FALSE(read(key, "Long", 8));
    EXPECT_EQ(data[0], 0);
    EXPECT_EQ(TraceCount("<Get value from registry failed.return FALSE."), 2);
}

TEST_F(LibrariesTest, BindingAndFailureReporting) {
    ASSERT_TRUE(LoadDscopyDLL());
    EXPECT_EQ(BindFromHandle<GetAllDestSetting_fn>(hLibDSCOPY, "GetAllDestSetting"), nullptr);
    EXPECT_EQ(BindFromHandle<GetAllDestSetting_fn>(nullptr, "GetAllDestSetting"), nullptr);

    // The call layer: a function the library lacks, one that refuses, one that succeeds.
    BaseData** records = nullptr;
    int count = 0;
    const LibResult unbound = CallLibrary(hLibDSCOPY, rptset::kGetAllBaseSetting, &records, &count);
    EXPECT_TRUE(unbound.unbound());
    EXPECT_EQ(TraceCount("<Gets GetAllBaseSetting  Address Failed."), 1) << Trace();
    ASSERT_TRUE(LoadRptsetDLL());
    auto record = std::make_unique<DestData>();
    std::strcpy(record->ID, "no such destination");
    const LibResult refused = CallLibrary(hLibRPTSET, rptset::kGetDestSetting, record.get());
    EXPECT_EQ(refused.status, LibResult::Status::Failed);
    EXPECT_EQ(TraceCount("<Calls GetDestSetting  Function Failed, returned " +
                         std::to_string(refused.value) + "."),
              1)
        << Trace();
    EXPECT_TRUE(CallLibrary(hLibRPTSET, rptset::kCheckInstVantrel).ok());
    FreeRptsetDLL();

    ASSERT_TRUE(LoadRcFile("/data/E_report.rc"));
    EXPECT_EQ(FuncCallErrText("GetProcAddress for CheckInstVantrel"),
              "Function GetProcAddress for CheckInstVantrel failed.");
    const std::string longName(150, 'n');
    EXPECT_EQ(FuncCallErrText(longName.c_str()), ("Function " + longName).substr(0, 99));
    FreeRcFile();

    // An EUC-JP text is never cut inside a character: 97 bytes and a two-byte character fit the
    // 99 bytes of text, 98 bytes and the character do not.
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
