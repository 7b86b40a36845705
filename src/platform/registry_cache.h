// The registry's read cache: keys with their subkeys and values as last read from the store,
// kept only while the store's WAL index shows no commit by any process since they were read.
// Private to libzolwin.
#pragma once

#include <sqlite3.h>

#include <algorithm>
#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "registry_store.h"

namespace zolwin::registry {

struct CachedChild {
    std::string fold;
    std::string name;
    sqlite3_int64 id = 0;
    int64_t mtime = 0;
};

struct CachedValue {
    std::string fold;
    std::string name;
    DWORD type = 0;
    std::string data;
};

// One key as a single read transaction saw it; both lists are in fold order.
struct CachedKey {
    bool exists = false;
    std::vector<CachedChild> children;
    std::vector<CachedValue> values;

    template <class T>
    static const T* findIn(const std::vector<T>& items, std::string_view fold) {
        auto it = std::lower_bound(items.begin(), items.end(), fold,
                                   [](const T& item, std::string_view f) { return item.fold < f; });
        return it != items.end() && it->fold == fold ? &*it : nullptr;
    }
    const CachedChild* child(std::string_view fold) const { return findIn(children, fold); }
    const CachedValue* value(std::string_view fold) const { return findIn(values, fold); }

    size_t bytes() const {
        size_t n = sizeof *this;
        for (const auto& c : children)
            n += sizeof c + c.fold.size() + c.name.size();
        for (const auto& v : values)
            n += sizeof v + v.fold.size() + v.name.size() + v.data.size();
        return n;
    }
};

class ReadCache {
  public:
    // Makes the cache describe the store as the token shows it: everything read under another
    // token is dropped. An entry is only ever filled after its token was taken, so an unchanged
    // token proves that no commit happened after the entry was read.
    void sync(const Store::ChangeToken& now) {
        if (!valid_ || now != token_ || bytes_ > kMaxBytes) {
            clear();
            token_ = now;
            valid_ = true;
        }
    }
    void clear() {
        keys_.clear();
        bytes_ = 0;
        valid_ = false;
    }
    bool usable() const { return valid_; }
    // Bytes that may still be added before the next sync empties the cache.
    size_t room() const { return bytes_ < kMaxBytes ? kMaxBytes - bytes_ : 0; }
    const CachedKey* find(sqlite3_int64 id) const {
        auto it = keys_.find(id);
        return it != keys_.end() ? &it->second : nullptr;
    }
    // Entries stay where they are until the next sync or clear.
    const CachedKey* put(sqlite3_int64 id, CachedKey&& key) {
        bytes_ += key.bytes();
        return &(keys_[id] = std::move(key));
    }

  private:
    static constexpr size_t kMaxBytes = 32u << 20;
    std::unordered_map<sqlite3_int64, CachedKey> keys_;
    Store::ChangeToken token_{};
    size_t bytes_ = 0;
    bool valid_ = false;
};

}  // namespace zolwin::registry
