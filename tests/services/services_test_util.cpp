// Test fixture for the service libraries.
#include "services_test_util.h"

#include <filesystem>
#include <sstream>

#include "frame/libraries.h"

namespace fs = std::filesystem;

namespace svctest {

void ServicesTest::SetUp() {
    root_ = std::make_unique<zoltest::ProductRoot>(false);
    zolDir_ = std::make_unique<zoltest::ScopedEnv>("ZolDir", root_->path().string());
    ASSERT_EQ(ZolRegCreateStore(), ERROR_SUCCESS);
    ASSERT_EQ(TraceLogInit(0, "svctest", 0, 5, 0), 0);
    zoltest::writeFile(root_->path() / "data" / "E_report.rc",
                       "[FUNC_CALL_ERR]\nTEXT=\"Function %s failed.\"\n");
}

void ServicesTest::TearDown() {
    // No library or store connection may outlive the root it came from.
    FreeVantrelPkgDLL();
    FreeRptsetDLL();
    FreeDscopyDLL();
    ZolRegCloseStore();
    zolDir_.reset();
    root_.reset();
}

int ServicesTest::TraceCount(const std::string& text) const {
    std::istringstream lines(Trace());
    int count = 0;
    for (std::string line; std::getline(lines, line);)
        count += line.find(text) != line.npos;
    return count;
}

LONG ServicesTest::SetRaw(const std::string& path, const char* name, DWORD type,
                          const std::string& data) {
    HKEY key = nullptr;
    LONG rc = RegCreateKey(HKEY_LOCAL_MACHINE, path.c_str(), &key);
    if (rc != ERROR_SUCCESS)
        return rc;
    rc = RegSetValueEx(key, name, 0, type, reinterpret_cast<const BYTE*>(data.data()),
                       static_cast<DWORD>(data.size()));
    RegCloseKey(key);
    return rc;
}

void ServicesTest::CreateKey(const std::string& path) {
    HKEY key = nullptr;
    ASSERT_EQ(RegCreateKey(HKEY_LOCAL_MACHINE, path.c_str(), &key), ERROR_SUCCESS) << path;
    RegCloseKey(key);
}

void ServicesTest::InstallTestModule(const std::string& module, const std::string& fileName) {
    // A new file rather than one rewritten in place, which a process may still have mapped.
    fs::remove(root_->path() / "lib" / fileName);
    fs::copy_file(fs::path(SERVICES_TEST_MODULE_DIR) / (module + ".so"),
                  root_->path() / "lib" / fileName);
}

void ServicesTest::RemoveLibrary(const std::string& fileName) {
    fs::remove(root_->path() / "lib" / fileName);
}

}  // namespace svctest
