// Registry test support: a fresh product root with a new empty store per test, an owning key
// handle, and short readers and writers over the zolwin registry API.
#pragma once

#include <gtest/gtest.h>

#include <cstring>
#include <optional>
#include <string>
#include <vector>

#include "product_root.h"
#include "zolwin.h"

namespace regtest {

// Closes its handle when it goes out of scope.
class Key {
  public:
    Key() = default;
    explicit Key(HKEY h) : h_(h) {}
    ~Key() { reset(); }
    Key(const Key&) = delete;
    Key& operator=(const Key&) = delete;
    Key(Key&& o) noexcept : h_(o.h_) { o.h_ = nullptr; }

    HKEY get() const { return h_; }
    HKEY* out() {
        reset();
        return &h_;
    }
    void reset() {
        if (h_ != nullptr)
            RegCloseKey(h_);
        h_ = nullptr;
    }

  private:
    HKEY h_ = nullptr;
};

inline Key create(const char* path, HKEY parent = HKEY_LOCAL_MACHINE) {
    Key k;
    EXPECT_EQ(RegCreateKey(parent, path, k.out()), ERROR_SUCCESS) << path;
    return k;
}

inline LONG setString(HKEY h, const char* name, const std::string& text) {
    return RegSetValueEx(h, name, 0, REG_SZ, reinterpret_cast<const BYTE*>(text.c_str()),
                         static_cast<DWORD>(text.size() + 1));
}

inline LONG setDword(HKEY h, const char* name, DWORD v) {
    return RegSetValueEx(h, name, 0, REG_DWORD, reinterpret_cast<const BYTE*>(&v), sizeof v);
}

// The value's bytes, or nullopt when the query fails.
inline std::optional<std::string> readBytes(HKEY h, const char* name, DWORD* type = nullptr) {
    DWORD size = 0;
    if (RegQueryValueEx(h, name, nullptr, type, nullptr, &size) != ERROR_SUCCESS) {
        return std::nullopt;
    }
    std::string buf(size, '\0');
    if (RegQueryValueEx(h, name, nullptr, type, reinterpret_cast<BYTE*>(buf.data()), &size) !=
        ERROR_SUCCESS) {
        return std::nullopt;
    }
    buf.resize(size);
    return buf;
}

inline std::optional<std::string> readString(HKEY h, const char* name) {
    auto b = readBytes(h, name);
    if (b && !b->empty() && b->back() == '\0')
        b->pop_back();
    return b;
}

inline std::optional<DWORD> readDword(HKEY h, const char* name) {
    DWORD v = 0, size = sizeof v, type = 0;
    if (RegQueryValueEx(h, name, nullptr, &type, reinterpret_cast<BYTE*>(&v), &size) !=
            ERROR_SUCCESS ||
        type != REG_DWORD || size != sizeof v) {
        return std::nullopt;
    }
    return v;
}

// Every subkey name in enumeration order; the last code (259 when it ended normally) in *end.
inline std::vector<std::string> subkeys(HKEY h, LONG* end = nullptr) {
    std::vector<std::string> names;
    for (DWORD i = 0;; ++i) {
        char name[ZOL_MAX_KEY_NAME + 1];
        DWORD cch = sizeof name;
        LONG r = RegEnumKeyEx(h, i, name, &cch, nullptr, nullptr, nullptr, nullptr);
        if (r != ERROR_SUCCESS) {
            if (end != nullptr)
                *end = r;
            return names;
        }
        names.emplace_back(name, cch);
    }
}

inline std::vector<std::string> valueNames(HKEY h, LONG* end = nullptr) {
    std::vector<std::string> names;
    for (DWORD i = 0;; ++i) {
        std::vector<char> name(ZOL_MAX_VALUE_NAME + 1);
        DWORD cch = static_cast<DWORD>(name.size());
        LONG r = RegEnumValue(h, i, name.data(), &cch, nullptr, nullptr, nullptr, nullptr);
        if (r != ERROR_SUCCESS) {
            if (end != nullptr)
                *end = r;
            return names;
        }
        names.emplace_back(name.data(), cch);
    }
}

// A fresh product root whose ZolDir this process points at, with a new empty store.
class RegistryTest : public ::testing::Test {
  protected:
    void SetUp() override { ASSERT_EQ(ZolRegCreateStore(), ERROR_SUCCESS); }
    void TearDown() override { ZolRegCloseStore(); }

    zoltest::ProductRoot root_{false};
    zoltest::ScopedEnv env_{"ZolDir", root_.path().string()};
};

}  // namespace regtest
