// The base of the delivery tests' fixtures: a fresh seeded product root that this process's
// store calls and the loaded libraries use, the store written in process, a delivery entry
// called as the program calls it (the library loaded from the root's lib/, the error text taken
// and freed), and the alert log and trace read back.
#pragma once

#include <gtest/gtest.h>
#include <zolwin.h>

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <sstream>
#include <string>

#include "product_root.h"
#include "store_reader.h"
#include "vantrelpkg_api.h"

namespace deliverytest {

// What a delivery entry returned: its result (99 when it could not be called) and its text.
struct Outcome {
    uint32_t result = 99;
    std::string text;
};

class LibraryTest : public ::testing::Test {
  protected:
    explicit LibraryTest(const char* traceName) : traceName_(traceName) {}
    void SetUp() override { ASSERT_EQ(TraceLogInit(0, traceName_, 0, 5, 0), 0); }
    void TearDown() override { ZolRegCloseStore(); }

    static void SetRaw(const std::string& path, const char* name, DWORD type,
                       const std::string& data) {
        HKEY key = nullptr;
        ASSERT_EQ(RegCreateKey(HKEY_LOCAL_MACHINE, path.c_str(), &key), ERROR_SUCCESS);
        EXPECT_EQ(RegSetValueEx(key, name, 0, type, reinterpret_cast<const BYTE*>(data.data()),
                                static_cast<DWORD>(data.size())),
                  ERROR_SUCCESS);
        RegCloseKey(key);
    }
    static void SetText(const std::string& key, const char* name, const std::string& text) {
        SetRaw(key, name, REG_SZ, std::string(text.c_str(), text.size() + 1));
    }
    static void SetDword(const std::string& key, const char* name, DWORD value) {
        SetRaw(key, name, REG_DWORD, std::string(reinterpret_cast<const char*>(&value), 4));
    }

    // Loads lib/<library> of the root, calls entry with kind, releases the library and closes
    // the store, so that the next write and the next call see the store as it is on disk.
    Outcome Call(const char* library, const char* entry, const char* kind) const {
        const std::string path = (root_.path() / "lib" / library).string();
        struct Release {
            void operator()(void* lib) const { FreeLibrary(static_cast<HMODULE>(lib)); }
        };
        const std::unique_ptr<void, Release> lib(LoadLibrary(path.c_str()));
        EXPECT_NE(lib, nullptr) << ZolLastLoadError();
        if (!lib)
            return {99, "not loaded"};
        auto* call = reinterpret_cast<GUIVntReport_fn*>(
            GetProcAddress(static_cast<HMODULE>(lib.get()), entry));
        EXPECT_NE(call, nullptr) << entry;
        if (call == nullptr)
            return {99, "no entry"};
        char* text = nullptr;
        Outcome outcome;
        outcome.result = call(&text, kind);
        if (text != nullptr) {
            outcome.text = text;
            std::free(text);
        }
        ZolRegCloseStore();
        return outcome;
    }

    // The alert log's lines as written (time stamp first).
    std::string AlertLog() const {
        std::string all;
        const std::filesystem::path folder = root_.path() / "log" / "alert";
        if (std::filesystem::exists(folder)) {
            for (const auto& entry : std::filesystem::directory_iterator(folder))
                all += zoltest::readFile(entry.path());
        }
        return all;
    }
    // The alert log's lines without their time stamps.
    std::string AlertLines() const {
        std::istringstream in(AlertLog());
        std::string lines;
        for (std::string line; std::getline(in, line);)
            lines += line.substr(line.find('\t') + 1) + "\n";
        return lines;
    }
    std::string Trace() const { return zoltest::readFile(root_.traceFile(traceName_)); }
    const zoltest::ProductRoot& root() const { return root_; }

    zoltest::ProductRoot root_;
    zoltest::ScopedEnv zolDir_{"ZolDir", root_.path().string()};
    zoltest::StoreReader store_{root_};

  private:
    const char* traceName_;
};

}  // namespace deliverytest
