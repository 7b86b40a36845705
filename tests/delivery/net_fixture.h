// Fixture of the HTTPS, via-manager and dial-up delivery tests: a fresh seeded product root
// that this process's store calls and the loaded libraries use, and a delivery entry called as
// the program calls it (the library loaded from the root's lib/, the error text taken and freed).
#pragma once

#include <gtest/gtest.h>
#include <zolwin.h>

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>

#include "product_root.h"
#include "regpaths.h"
#include "store_reader.h"
#include "vantrelpkg_api.h"

namespace nettest {

struct Outcome {
    uint32_t result = 0;
    std::string text;
};

class NetDeliveryTest : public ::testing::Test {
  protected:
    NetDeliveryTest() : zolDir_("ZolDir", root_.path().string()), store_(root_) {}
    void SetUp() override { ASSERT_EQ(TraceLogInit(0, "nettest", 0, 5, 0), 0); }
    void TearDown() override { ZolRegCloseStore(); }

    // Loads lib/<library> of the root, calls entry with kind and releases the library.
    Outcome Call(const char* library, const char* entry, const char* kind) {
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

    // Every line of the root's alert logs.
    std::string AlertLog() const {
        std::string all;
        const std::filesystem::path dir = root_.path() / "log";
        for (const auto& e : std::filesystem::recursive_directory_iterator(dir)) {
            if (e.is_regular_file() && e.path().string().find("alert") != std::string::npos)
                all += zoltest::readFile(e.path());
        }
        return all;
    }
    std::string Trace() const { return zoltest::readFile(root_.traceFile("nettest")); }

    zoltest::ProductRoot root_;
    zoltest::ScopedEnv zolDir_;
    zoltest::StoreReader store_;
};

}  // namespace nettest
