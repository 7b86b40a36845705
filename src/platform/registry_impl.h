// The registry's shared parts: the one Registry object of the process, which the key and value
// calls (registry.cpp), transactions (registry_transaction.cpp) and store creation and checking
// (registry_admin.cpp) all work on, and the helpers they share. See registry.cpp for the store,
// its schema, connections and the read cache.
#pragma once

#include <sqlite3.h>

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <new>
#include <string>
#include <string_view>
#include <thread>
#include <unordered_map>
#include <vector>

#include "registry_cache.h"
#include "registry_store.h"
#include "zolwin.h"

namespace zolwin::registry {

// The product root for the store: $ZolDir, else the install prefix, without trailing slashes.
std::string registryRoot();
std::string storePathFor(const std::string& root);
// Now as a FILETIME (100 ns since 1601).
int64_t fileTimeNow();

struct KeyHandle {
    sqlite3_int64 id = kRootKeyId;
    REGSAM access = KEY_ALL_ACCESS;
    int64_t instance = 0;  // 0: the root key, valid in every store
};

// Bumped in every child of fork(), so that a call notices a fork without asking for its pid.
extern std::atomic<unsigned> forkGeneration;

class Registry {
  public:
    Registry();
    ~Registry();

    LONG openKey(HKEY hKey, LPCSTR subKey, REGSAM sam, PHKEY result);
    LONG createKey(HKEY hKey, LPCSTR subKey, REGSAM sam, PHKEY result, LPDWORD disposition);
    LONG queryValue(HKEY hKey, LPCSTR name, LPDWORD type, LPBYTE data, LPDWORD cbData);
    LONG setValue(HKEY hKey, LPCSTR name, DWORD type, const BYTE* data, DWORD cbData);
    LONG deleteValue(HKEY hKey, LPCSTR name);
    LONG deleteKey(HKEY hKey, LPCSTR subKey);
    LONG enumKey(HKEY hKey, DWORD index, LPSTR name, LPDWORD cchName, LPSTR cls, LPDWORD cchCls,
                 void* lastWrite);
    LONG enumValue(HKEY hKey, DWORD index, LPSTR name, LPDWORD cchName, LPDWORD type, LPBYTE data,
                   LPDWORD cbData);
    LONG closeKey(HKEY hKey);

    LONG begin();
    LONG commit();
    LONG rollback();
    LONG createStore();
    LONG removeStore();
    LONG checkStore(bool full);
    void closeStore();
    LONG readAhead(HKEY hKey);

  private:
    using Lock = std::unique_lock<std::mutex>;
    Lock enter(bool waitForTransaction = true);
    const std::string& currentStorePath();
    // Opens the connection when needed (then *opened is set): a new connection has passed the
    // store's quick check.
    LONG connect(bool verifyFile, bool* opened = nullptr);
    LONG lookup(HKEY hKey, KeyHandle*& out);
    // lookup, then refuses a handle that has none of the access bits in `need`.
    LONG lookup(HKEY hKey, REGSAM need, KeyHandle*& out) {
        LONG r = lookup(hKey, out);
        if (r == ERROR_SUCCESS && (out->access & need) == 0)
            return ERROR_ACCESS_DENIED;
        return r;
    }
    LONG live(const KeyHandle& key) const;
    HKEY newHandle(sqlite3_int64 id, REGSAM access);
    LONG missingOrDeleted(sqlite3_int64 id);
    LONG walk(sqlite3_int64 start, const std::vector<std::string_view>& parts, size_t count,
              sqlite3_int64& id);
    LONG touch(sqlite3_int64 id);
    LONG deletionTarget(sqlite3_int64 from, const std::vector<std::string_view>& parts,
                        sqlite3_int64& parent, sqlite3_int64& target);
    void endTransactionLocked();
    void syncCache();
    LONG loadKey(sqlite3_int64 id, CachedKey& out);
    const CachedKey* keyInfo(sqlite3_int64 id, LONG& err);
    bool subtreeCached(sqlite3_int64 id) const;
    LONG loadSubtree(sqlite3_int64 id, std::unordered_map<sqlite3_int64, CachedKey>& out);
    LONG walkCached(sqlite3_int64 start, const std::vector<std::string_view>& parts,
                    sqlite3_int64& id);

    template <class Op>
    LONG read(Op&& op) {
        return retryWhileBusy([&]() -> LONG {
            LONG r = connect(false);
            if (r != ERROR_SUCCESS)
                return r;
            syncCache();
            return op();
        });
    }
    template <class Op>
    LONG write(Op&& op);
    // A read of the cached contents of a live, existing key: op(const CachedKey&).
    template <class Op>
    LONG readKey(const KeyHandle& key, Op&& op) {
        return read([&]() -> LONG {
            LONG q = live(key);
            if (q != ERROR_SUCCESS)
                return q;
            const CachedKey* k = keyInfo(key.id, q);
            if (k == nullptr)
                return q;
            return k->exists ? op(*k) : ERROR_KEY_DELETED;
        });
    }

    std::mutex mu_;
    std::condition_variable txEnded_;
    Store store_;
    std::string cachedRoot_;
    std::string cachedPath_;
    std::unordered_map<uintptr_t, KeyHandle> handles_;
    uintptr_t nextHandle_ = 0x00A00000;
    KeyHandle root_;
    int depth_ = 0;
    bool doomed_ = false;  // rolled back inside an outer transaction: writes refused until it ends
    bool wrote_ = false;   // the open transaction has written: reads inside it saw uncommitted data
    std::thread::id txOwner_;
    unsigned forkGeneration_ = 0;
    ReadCache cache_;
    CachedKey uncached_;  // a key read while the cache cannot be trusted
    std::string fold_;    // scratch for folded names, reused to spare allocations
};

// The process's one registry.
Registry& registry();

// Every entry point: nothing thrown ever crosses the C interface.
template <class Fn>
LONG guarded(Fn&& fn) noexcept {
    try {
        return fn(registry());
    } catch (const std::bad_alloc&) {
        return ERROR_NOT_ENOUGH_MEMORY;
    } catch (...) {
        return ERROR_REGISTRY_IO_FAILED;
    }
}

}  // namespace zolwin::registry
