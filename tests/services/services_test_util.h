// Test fixture for the service libraries: a fresh product root with an empty store, the trace
// log of "svctest", a message file, and helpers to write the store and place libraries.
#pragma once

#include <gtest/gtest.h>
#include <zolwin.h>

#include <memory>
#include <string>

#include "product_root.h"

namespace svctest {

inline const std::string kIDList = "SOFTWARE\\Tavik\\ZolAlertMan\\Destination\\ID_LIST";

class ServicesTest : public ::testing::Test {
  protected:
    void SetUp() override;
    void TearDown() override;

    // Number of lines of this test's trace log that contain text.
    int TraceCount(const std::string& text) const;
    std::string Trace() const { return zoltest::readFile(root_->traceFile("svctest")); }

    // Writes a value (creating its key) under HKEY_LOCAL_MACHINE; data as stored, any type.
    LONG SetRaw(const std::string& key, const char* name, DWORD type, const std::string& data);
    void SetDword(const std::string& key, const char* name, DWORD value) {
        ASSERT_EQ(SetRaw(key, name, REG_DWORD, std::string(reinterpret_cast<char*>(&value), 4)), 0);
    }
    void SetText(const std::string& key, const char* name, const std::string& text) {
        ASSERT_EQ(SetRaw(key, name, REG_SZ, std::string(text.c_str(), text.size() + 1)), 0);
    }
    void CreateKey(const std::string& key);

    // Copies a test module into lib/ as fileName, or removes a library from lib/.
    void InstallTestModule(const std::string& module, const std::string& fileName);
    void RemoveLibrary(const std::string& fileName);

    const zoltest::ProductRoot& root() const { return *root_; }

  private:
    std::unique_ptr<zoltest::ProductRoot> root_;
    std::unique_ptr<zoltest::ScopedEnv> zolDir_;
};

}  // namespace svctest
