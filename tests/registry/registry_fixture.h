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
struct Key {
    HKEY h = nullptr;
    Key() = default;
    Key(const Key&) = delete;
    Key(Key&& o) noexcept : h(o.h) { o.h = nullptr; }
    ~Key() { reset(); }
    HKEY get() const { return h; }
    HKEY* out() { return reset(), &h; }
    void reset() {
        if (h != nullptr)
            RegCloseKey(h);
        h = nullptr;
    }
};

inline Key create(const std::string& path, HKEY parent = HKEY_LOCAL_MACHINE) {
    Key k;
    EXPECT_EQ(RegCreateKey(parent, path.c_str(), k.out()), ERROR_SUCCESS) << path;
    return k;
}

// The open code of path, and the handle in *k.
inline LONG open(Key& k, const std::string& path, REGSAM sam = KEY_READ,
                 HKEY parent = HKEY_LOCAL_MACHINE) {
    return RegOpenKeyEx(parent, path.c_str(), 0, sam, k.out());
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
    if (RegQueryValueEx(h, name, nullptr, type, nullptr, &size) != ERROR_SUCCESS)
        return std::nullopt;
    std::string buf(size, '\0');
    if (RegQueryValueEx(h, name, nullptr, type, reinterpret_cast<BYTE*>(buf.data()), &size) != 0)
        return std::nullopt;
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
    DWORD type = 0;
    auto b = readBytes(h, name, &type);
    if (!b || type != REG_DWORD || b->size() != sizeof(DWORD))
        return std::nullopt;
    DWORD v = 0;
    std::memcpy(&v, b->data(), sizeof v);
    return v;
}

// Every subkey (or value) name in enumeration order; the code that ended it in *end.
inline std::vector<std::string> names(HKEY h, bool values = false, LONG* end = nullptr) {
    std::vector<std::string> out;
    std::vector<char> name(ZOL_MAX_VALUE_NAME + 1);
    for (DWORD i = 0;; ++i) {
        DWORD cch = static_cast<DWORD>(name.size());
        LONG r = values ? RegEnumValue(h, i, name.data(), &cch, nullptr, nullptr, nullptr, nullptr)
                        : RegEnumKeyEx(h, i, name.data(), &cch, nullptr, nullptr, nullptr, nullptr);
        if (r != ERROR_SUCCESS) {
            if (end != nullptr)
                *end = r;
            return out;
        }
        out.emplace_back(name.data(), cch);
    }
}
inline std::vector<std::string> subkeys(HKEY h, LONG* end = nullptr) {
    return names(h, false, end);
}
inline std::vector<std::string> valueNames(HKEY h, LONG* end = nullptr) {
    return names(h, true, end);
}

using Names = std::vector<std::string>;

// A fresh product root whose ZolDir this process points at, with a new empty store.
class RegistryTest : public ::testing::Test {
  protected:
    void SetUp() override { ASSERT_EQ(ZolRegCreateStore(), ERROR_SUCCESS); }
    void TearDown() override { ZolRegCloseStore(); }

    zoltest::ProductRoot root_{false};
    zoltest::ScopedEnv env_{"ZolDir", root_.path().string()};
};

}  // namespace regtest
