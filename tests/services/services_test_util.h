// Test fixture for the service libraries: a fresh product root with an empty store, the trace
// log of "svctest", the message file, and helpers to write the store and place libraries.
#pragma once

#include <gtest/gtest.h>
#include <zolwin.h>

#include <memory>
#include <string>

#include "product_root.h"

namespace svctest {

class ServicesTest : public ::testing::Test {
  protected:
    void SetUp() override;
    void TearDown() override;

    // The whole trace log of this test so far.
    std::string Trace() const;
    // Number of trace lines that contain text.
    int TraceCount(const std::string& text) const;

    // Creates key (and its parents) under HKEY_LOCAL_MACHINE.
    void CreateKey(const std::string& path);
    void SetDword(const std::string& path, const char* name, DWORD value);
    void SetText(const std::string& path, const char* name, const std::string& text);
    // Raw bytes with any type, as another program might have stored them.
    void SetRaw(const std::string& path, const char* name, DWORD type, const std::string& data);

    // Copies a test module (file name in the test build) into lib/ as fileName.
    void InstallTestModule(const std::string& module, const std::string& fileName);
    void RemoveLibrary(const std::string& fileName);

    const zoltest::ProductRoot& root() const { return *root_; }

  private:
    std::unique_ptr<zoltest::ProductRoot> root_;
    std::unique_ptr<zoltest::ScopedEnv> zolDir_;
};

// Key of the destination IDs.
inline const std::string kIDList = "SOFTWARE\\Tavik\\ZolAlertMan\\Destination\\ID_LIST";

}  // namespace svctest
