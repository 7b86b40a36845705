// Test fixture for the service libraries: a fresh product root with an empty store, the trace
// log of "svctest", a message file, and helpers to write the store and place libraries.
#pragma once

#include <gtest/gtest.h>
#include <zolwin.h>

#include <filesystem>
#include <memory>
#include <sstream>
#include <string>

#include "frame/libraries.h"
#include "product_root.h"
#include "regpaths.h"
#include "srvinfo_api.h"

namespace svctest {

inline const std::string kIDList = ZOL_KEY_ID_LIST;

class ServicesTest : public ::testing::Test {
  protected:
    void SetUp() override {
        ASSERT_EQ(ZolRegCreateStore(), ERROR_SUCCESS);
        ASSERT_EQ(TraceLogInit(0, "svctest", 0, 5, 0), 0);
        zoltest::writeFile(root_.path() / "data" / "E_report.rc",
                           "[FUNC_CALL_ERR]\nTEXT=\"Function %s failed.\"\n");
    }
    void TearDown() override {
        // No library or store connection may outlive the root it came from.
        FreeVantrelPkgDLL();
        FreeRptsetDLL();
        FreeDscopyDLL();
        ZolRegCloseStore();
    }

    std::string Trace() const { return zoltest::readFile(root_.traceFile("svctest")); }
    // Number of lines of this test's trace log that contain text.
    int TraceCount(const std::string& text) const {
        std::istringstream lines(Trace());
        int count = 0;
        for (std::string line; std::getline(lines, line);)
            count += line.find(text) != line.npos;
        return count;
    }

    // Writes a value (creating its key, and only the key when name is null) under
    // HKEY_LOCAL_MACHINE; data as stored, any type.
    LONG SetRaw(const std::string& path, const char* name, DWORD type = REG_SZ,
                const std::string& data = {}) {
        HKEY key = nullptr;
        LONG rc = RegCreateKey(HKEY_LOCAL_MACHINE, path.c_str(), &key);
        if (rc == ERROR_SUCCESS && name != nullptr)
            rc = RegSetValueEx(key, name, 0, type, reinterpret_cast<const BYTE*>(data.data()),
                               static_cast<DWORD>(data.size()));
        RegCloseKey(key);
        return rc;
    }
    void SetDword(const std::string& key, const char* name, DWORD value) {
        ASSERT_EQ(SetRaw(key, name, REG_DWORD, std::string(reinterpret_cast<char*>(&value), 4)), 0);
    }
    void SetText(const std::string& key, const char* name, const std::string& text) {
        ASSERT_EQ(SetRaw(key, name, REG_SZ, std::string(text.c_str(), text.size() + 1)), 0);
    }
    void CreateKey(const std::string& key) { ASSERT_EQ(SetRaw(key, nullptr), 0) << key; }

    // Copies a test module into lib/ as fileName (a new file rather than one rewritten in
    // place, which a process may still have mapped), or removes a library from lib/.
    void InstallTestModule(const std::string& module, const std::string& fileName) {
        RemoveLibrary(fileName);
        std::filesystem::copy_file(
            std::filesystem::path(SERVICES_TEST_MODULE_DIR) / (module + ".so"), lib(fileName));
    }
    void RemoveLibrary(const std::string& fileName) { std::filesystem::remove(lib(fileName)); }
    std::filesystem::path lib(const std::string& name) const { return root_.path() / "lib" / name; }

    // Binds fn to the export `name` of lib, failing the test when it is missing.
    template <class Fn>
    static void Bind(Fn*& fn, const char* name, HMODULE lib = hLibRPTSET) {
        fn = BindFromHandle<Fn>(lib, name);
        ASSERT_NE(fn, nullptr) << name;
    }
    // Clears the remote report service's set-up through SRVINFO.DLL, loaded as the program loads
    // it.
    void ClearServiceSetUp() {
        HMODULE srvinfo = LoadLibrary(lib("SRVINFO.DLL").c_str());
        ASSERT_NE(srvinfo, nullptr) << ZolLastLoadError();
        auto* clear = reinterpret_cast<VX_Clear_EMP_info_Data_fn*>(
            GetProcAddress(srvinfo, "VX_Clear_EMP_info_Data"));
        EXPECT_NE(clear, nullptr);
        EXPECT_NE(clear != nullptr ? clear() : 0, 0);
        FreeLibrary(srvinfo);
    }
    // Every value below SOFTWARE\Tavik as zolreg exports it: a refused call must leave it equal.
    std::string Snapshot() const {
        const auto file = root_.path() / "snapshot.reg";
        const zoltest::RunResult r = zoltest::run(
            {root_.bin("zolreg").string(), "export", "HKLM\\" ZOL_KEY_TAVIK, file.string(), "/y"},
            root_.env());
        EXPECT_EQ(r.status, 0) << r.err;
        return zoltest::readFile(file);
    }

    const zoltest::ProductRoot& root() const { return root_; }

  private:
    zoltest::ProductRoot root_{false};
    zoltest::ScopedEnv zolDir_{"ZolDir", root_.path().string()};
};

}  // namespace svctest
