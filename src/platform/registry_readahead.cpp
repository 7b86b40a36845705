// Reading a whole subtree into the read cache in one pass. A caller about to read every key
// below one key (a catalogue of thousands of events) would otherwise pay one read transaction
// and two or three queries per key on a cold cache; here the subtree costs two queries. What
// later reads return does not change: the entries are filled under the same rule as single
// keys (after the change token was taken, inside one read transaction).
#include <algorithm>

#include "registry_impl.h"

namespace zolwin::registry {

namespace {

// A subtree larger than this is left to be read key by key: it would crowd out the rest of
// the cache, and nobody reads that much at once.
constexpr sqlite3_int64 kMaxReadAheadKeys = 50000;

template <class T>
void sortByFold(std::vector<T>& items) {
    std::sort(items.begin(), items.end(), [](const T& a, const T& b) { return a.fold < b.fold; });
}

}  // namespace

// True when the key and each of its subkeys are already in the cache: the subtree was read
// since the last commit of any process, so reading it again would only cost time.
bool Registry::subtreeCached(sqlite3_int64 id) const {
    const CachedKey* k = cache_.find(id);
    if (k == nullptr)
        return false;
    return std::all_of(k->children.begin(), k->children.end(),
                       [&](const CachedChild& c) { return cache_.find(c.id) != nullptr; });
}

// Reads key `id` and everything below it into out, each key whole; out stays empty when the key
// is gone or the subtree is larger than kMaxReadAheadKeys.
LONG Registry::loadSubtree(sqlite3_int64 id, std::unordered_map<sqlite3_int64, CachedKey>& out) {
    out.clear();
    const bool own = sqlite3_get_autocommit(store_.db()) != 0;
    if (own) {
        Query begin(store_, Sql::BeginRead);
        const int rc = begin.step();
        if (rc != SQLITE_DONE)
            return mapSqliteError(rc);
    }
    LONG r = [&]() -> LONG {
        Query keys(store_, Sql::SubtreeKeys);
        keys.bind(id).bind(kMaxReadAheadKeys + 1);
        int rc;
        while ((rc = keys.step()) == SQLITE_ROW) {
            const sqlite3_int64 key = keys.integer(0);
            out[key].exists = true;
            if (key != id) {
                out[keys.integer(1)].children.push_back(
                    {std::string(keys.text(3)), std::string(keys.text(2)), key, keys.integer(4)});
            }
        }
        if (rc != SQLITE_DONE)
            return mapSqliteError(rc);
        if (out.size() > static_cast<size_t>(kMaxReadAheadKeys) || !out[id].exists) {
            out.clear();
            return ERROR_SUCCESS;
        }
        Query values(store_, Sql::SubtreeValues);
        values.bind(id).bind(kMaxReadAheadKeys + 1);
        while ((rc = values.step()) == SQLITE_ROW) {
            out[values.integer(0)].values.push_back(
                {std::string(values.text(2)), std::string(values.text(1)),
                 static_cast<DWORD>(values.integer(3)), std::string(values.blob(4))});
        }
        return rc == SQLITE_DONE ? ERROR_SUCCESS : mapSqliteError(rc);
    }();
    if (own) {
        Query end(store_, Sql::EndRead);
        const int rc = end.step();
        if (rc != SQLITE_DONE && r == ERROR_SUCCESS)
            r = mapSqliteError(rc);
        if (sqlite3_get_autocommit(store_.db()) == 0)
            store_.exec("ROLLBACK");
    }
    if (r != ERROR_SUCCESS) {
        out.clear();
        return r;
    }
    for (auto& [key, info] : out) {
        sortByFold(info.children);
        sortByFold(info.values);
    }
    return ERROR_SUCCESS;
}

LONG Registry::readAhead(HKEY hKey) {
    Lock lk = enter();
    KeyHandle* key = nullptr;
    LONG r = lookup(hKey, KEY_QUERY_VALUE | KEY_ENUMERATE_SUB_KEYS, key);
    if (r != ERROR_SUCCESS)
        return r;
    return read([&]() -> LONG {
        LONG q = live(*key);
        if (q != ERROR_SUCCESS)
            return q;
        const CachedKey* top = keyInfo(key->id, q);
        if (top == nullptr)
            return q;
        if (!top->exists)
            return ERROR_KEY_DELETED;
        // Nothing may be kept while the cache cannot be trusted; the reads then go to the store.
        if (!cache_.usable() || subtreeCached(key->id))
            return ERROR_SUCCESS;
        std::unordered_map<sqlite3_int64, CachedKey> subtree;
        if ((q = loadSubtree(key->id, subtree)) != ERROR_SUCCESS)
            return q;
        size_t bytes = 0;
        for (const auto& [id, info] : subtree)
            bytes += info.bytes();
        if (bytes > cache_.room())
            return ERROR_SUCCESS;
        // Keys already cached stay as they are: callers may hold pointers to them.
        for (auto& [id, info] : subtree) {
            if (cache_.find(id) == nullptr)
                cache_.put(id, std::move(info));
        }
        return ERROR_SUCCESS;
    });
}

}  // namespace zolwin::registry

using zolwin::registry::guarded;
using zolwin::registry::Registry;

LONG ZolRegReadAhead(HKEY hKey) {
    return guarded([&](Registry& r) { return r.readAhead(hKey); });
}
