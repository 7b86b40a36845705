// Test support: reading (and, for a test's set-up, writing) one value of a product root's store
// with the platform layer's registry calls, as the service libraries read it. Every call points
// ZolDir at the root for its duration and closes the connection afterwards, so the next call sees
// whatever a program wrote in between. Paths are below HKEY_LOCAL_MACHINE (regpaths.h).
#pragma once

#include <zolwin.h>

#include <optional>
#include <string>
#include <vector>

#include "product_root.h"

namespace zoltest {

struct StoredValue {
    DWORD type = REG_NONE;
    std::string bytes;  // as stored: texts with their terminator
};

class StoreReader {
  public:
    explicit StoreReader(const ProductRoot& root) : root_(root.path().string()) {}

    // The value as stored; nullopt when its key or the value is missing or the store unreadable.
    std::optional<StoredValue> value(const std::string& key, const std::string& name) const;
    bool has(const std::string& key, const std::string& name) const {
        return value(key, name).has_value();
    }
    // A REG_SZ or REG_EXPAND_SZ value without its terminator; nullopt for any other type.
    std::optional<std::string> text(const std::string& key, const std::string& name) const;
    // A REG_DWORD value; nullopt for any other type or size.
    std::optional<DWORD> dword(const std::string& key, const std::string& name) const;
    // The strings of a REG_MULTI_SZ value, up to its first empty one; nullopt for another type.
    std::optional<std::vector<std::string>> multiString(const std::string& key,
                                                        const std::string& name) const;
    // The names of the subkeys of key in the store's order; nullopt when the key is missing.
    std::optional<std::vector<std::string>> subkeys(const std::string& key) const;

    // Set-up writes (creating the key): ERROR_SUCCESS or the registry's error code.
    LONG setText(const std::string& key, const std::string& name, const std::string& text) const;
    LONG setDword(const std::string& key, const std::string& name, DWORD value) const;
    LONG setMultiString(const std::string& key, const std::string& name,
                        const std::vector<std::string>& strings) const;

  private:
    LONG set(const std::string& key, const std::string& name, DWORD type,
             const std::string& bytes) const;
    std::string root_;
};

}  // namespace zoltest
