// The registry: Win32-style keys and values under HKEY_LOCAL_MACHINE, kept in an SQLite store.
//
// The store
//   File $ZolDir/registry/hklm.db (the install prefix when ZolDir is not set). Only
//   ZolRegCreateStore makes it: the folder 0700, the file 0600; SQLite gives its -wal and -shm
//   files the database file's mode. A store is built under a temporary name and linked into
//   place, so no process ever sees a half-made one. A missing store is ERROR_REGISTRY_IO_FAILED,
//   a damaged or foreign file ERROR_REGISTRY_CORRUPT; nothing is ever written to either.
//   The header carries application_id 0x5A4F4C52 ("ZOLR") and user_version 1.
//
// Schema
//   meta(name PRIMARY KEY, value)                   'instance': a random number per store
//   keys(id INTEGER PRIMARY KEY AUTOINCREMENT, parent, name, fold, mtime, UNIQUE(parent, fold))
//        row 1 is HKEY_LOCAL_MACHINE (parent 0); ids are never reused, so a handle to a deleted
//        key cannot silently land on a new one; mtime is a FILETIME (100 ns since 1601).
//   vals(key, name, fold, type, data BLOB, PRIMARY KEY(key, fold)) WITHOUT ROWID
//        the default value has the name ''.
//   name is the spelling of the first write, fold the same bytes with A-Z lowered: names are
//   case-insensitive for ASCII letters and compared byte for byte otherwise (EUC-JP text).
//
// Units
//   This file: the Registry object, its connection and cache, and the key and value calls.
//   registry_transaction.cpp: ZolRegBegin/Commit/RollbackTransaction.
//   registry_admin.cpp: creating, removing, checking and closing the store.
//
// Connections and transactions
//   One connection per process, in WAL mode with synchronous=FULL and a 10 s busy timeout,
//   checked with quick_check when it opens. It is reopened when ZolDir names another store,
//   after ZolRegCloseStore, and in a child after fork() (the inherited one is left alone).
//   Every write runs in its own BEGIN IMMEDIATE transaction, retried while the store is busy;
//   between ZolRegBeginTransaction and the outermost commit, each write is a savepoint of the
//   caller's transaction instead. A transaction belongs to the thread that began it: other
//   threads of the process wait until it ends.
//
// Reads
//   Reads go through a cache of whole keys (existence, subkeys, values), each read in one read
//   transaction. Every call first compares the header of the store's shared WAL index, which
//   any process's commit changes, with the header seen when the cache was last emptied; any
//   difference, any write of this process and any transaction boundary empties it. So a read
//   never returns something older than the last commit, yet repeated reads cost no SQLite
//   call. Opening a key also checks that the store file is still the one the connection has.
//
// Win32 behaviour
//   The calls behave as the narrow-character Win32 functions do (strings completed on write,
//   subkeys made and deleted whatever the parent's rights, the buffer rules of queries and
//   enumeration); docs/registry.md lists that behaviour and every place where the layer still
//   refuses on purpose, such as volatile keys.
#include "registry_impl.h"

#include <fcntl.h>
#include <pthread.h>
#include <sqlite3.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <mutex>
#include <new>
#include <string>
#include <string_view>
#include <vector>

#include "zolwin_config.h"

namespace zolwin::registry {

// The product root for the store: $ZolDir, else the install prefix, without trailing slashes.
std::string registryRoot() {
    const char* dir = std::getenv("ZolDir");
    std::string root = (dir != nullptr && *dir != '\0') ? dir : ZOL_INSTALL_PREFIX;
    while (root.size() > 1 && root.back() == '/')
        root.pop_back();
    return root;
}

std::string storePathFor(const std::string& root) {
    return (root == "/" ? std::string() : root) + "/registry/hklm.db";
}

int64_t fileTimeNow() {
    constexpr int64_t kFileTimeUnixEpoch = 116444736000000000LL;
    timespec ts{};
    clock_gettime(CLOCK_REALTIME, &ts);
    return kFileTimeUnixEpoch + static_cast<int64_t>(ts.tv_sec) * 10000000 + ts.tv_nsec / 100;
}

std::atomic<unsigned> forkGeneration{0};

namespace {

constexpr REGSAM kGenericRead = 0x80000000u;
constexpr REGSAM kGenericWrite = 0x40000000u;
constexpr REGSAM kGenericExecute = 0x20000000u;
constexpr REGSAM kGenericAll = 0x10000000u;
constexpr REGSAM kMaximumAllowed = 0x02000000u;
constexpr DWORD kRegQword = 11;       // the highest value type the store accepts
constexpr size_t kMaxKeyDepth = 512;  // components in one path, as Win32 allows

void foldInto(std::string_view name, std::string& out) {
    out.assign(name);
    for (char& c : out) {
        if (c >= 'A' && c <= 'Z')
            c = static_cast<char>(c - 'A' + 'a');
    }
}

REGSAM normalizeAccess(REGSAM sam) {
    if ((sam & (kGenericAll | kMaximumAllowed)) != 0)
        sam |= KEY_ALL_ACCESS;
    if ((sam & (kGenericRead | kGenericExecute)) != 0)
        sam |= KEY_READ;
    if ((sam & kGenericWrite) != 0)
        sam |= KEY_WRITE;
    return sam;
}

// Splits a sub key path into its components: runs of backslashes count as one and a trailing
// one is accepted; a leading one is a bad path, an over-long component an invalid parameter.
LONG splitPath(LPCSTR subKey, std::vector<std::string_view>& parts) {
    parts.clear();
    if (subKey == nullptr || *subKey == '\0')
        return ERROR_SUCCESS;
    if (*subKey == '\\')
        return ERROR_BAD_PATHNAME;
    std::string_view rest(subKey);
    while (!rest.empty()) {
        size_t sep = rest.find('\\');
        std::string_view part = rest.substr(0, sep);
        if (part.size() > ZOL_MAX_KEY_NAME)
            return ERROR_INVALID_PARAMETER;
        if (!part.empty())
            parts.push_back(part);
        if (sep == std::string_view::npos)
            break;
        rest.remove_prefix(sep + 1);
    }
    return parts.size() > kMaxKeyDepth ? ERROR_INVALID_PARAMETER : ERROR_SUCCESS;
}

LONG valueName(LPCSTR name, std::string_view& out) {
    out = name != nullptr ? std::string_view(name) : std::string_view();
    return out.size() > ZOL_MAX_VALUE_NAME ? ERROR_INVALID_PARAMETER : ERROR_SUCCESS;
}

bool isStringType(DWORD type) {
    return type == REG_SZ || type == REG_EXPAND_SZ || type == REG_MULTI_SZ;
}

// The zero bytes a stored string lacks to read back terminated: one for a text, up to two for a
// list (its last string's terminator and the list's).
DWORD missingTerminators(DWORD type, std::string_view bytes) {
    if (type == REG_SZ || type == REG_EXPAND_SZ)
        return bytes.empty() || bytes.back() != '\0' ? 1 : 0;
    if (type != REG_MULTI_SZ)
        return 0;
    if (bytes.empty() || bytes.back() != '\0')
        return 2;
    return bytes.size() >= 2 && bytes[bytes.size() - 2] != '\0' ? 1 : 0;
}

// Copies a value out under the Win32 buffer rules. The caller's size is read before anything is
// written, because callers may pass one variable as both type and size; the size is written last.
// A string stored without its terminator (a store written before strings were completed on
// write) reads back with as many terminators as the buffer has room for, and the size then
// counts exactly the bytes copied.
LONG deliverValue(DWORD type, std::string_view bytes, LPDWORD lpType, LPBYTE lpData,
                  LPDWORD lpcbData) {
    const DWORD room = lpcbData != nullptr ? *lpcbData : 0;
    const auto stored = static_cast<DWORD>(bytes.size());
    DWORD size = stored;
    LONG r = ERROR_SUCCESS;
    if (lpData != nullptr && room < stored) {
        r = ERROR_MORE_DATA;
    } else if (lpData != nullptr) {
        if (stored != 0)
            std::memcpy(lpData, bytes.data(), stored);
        const DWORD pad = std::min(missingTerminators(type, bytes), room - stored);
        std::memset(lpData + stored, 0, pad);
        size += pad;
    }
    if (lpType != nullptr)
        *lpType = type;
    if (lpcbData != nullptr)
        *lpcbData = size;
    return r;
}

// HKEY_LOCAL_MACHINE as this layer's header spells it, or sign-extended to 64 bits as headers
// written for Windows define it.
bool isLocalMachine(HKEY hKey) {
    const auto v = reinterpret_cast<uintptr_t>(hKey);
    return v == reinterpret_cast<uintptr_t>(HKEY_LOCAL_MACHINE) ||
           static_cast<uint64_t>(v) == 0xFFFFFFFF80000002ull;
}

}  // namespace

Registry::Registry() {
    pthread_atfork(nullptr, nullptr,
                   [] { forkGeneration.fetch_add(1, std::memory_order_relaxed); });
}

Registry::~Registry() {
    Lock lk(mu_, std::try_to_lock);
    if (!lk.owns_lock() || (store_.isOpen() && store_.owner() != getpid())) {
        store_.abandon();
        return;
    }
    if (store_.isOpen() && sqlite3_get_autocommit(store_.db()) == 0)
        store_.exec("ROLLBACK");
    store_.close();
}

Registry::Lock Registry::enter(bool waitForTransaction) {
    Lock lk(mu_);
    // A child of fork(): the parent's connection and transaction are not ours to use.
    const unsigned gen = forkGeneration.load(std::memory_order_relaxed);
    if (gen != forkGeneration_) {
        forkGeneration_ = gen;
        if (store_.isOpen() && store_.owner() != getpid()) {
            store_.abandon();
            cache_.clear();
            depth_ = 0;
            doomed_ = false;
        }
    }
    if (waitForTransaction) {
        const auto self = std::this_thread::get_id();
        txEnded_.wait(lk, [&] { return depth_ == 0 || txOwner_ == self; });
    }
    return lk;
}

const std::string& Registry::currentStorePath() {
    const char* dir = std::getenv("ZolDir");
    if (cachedPath_.empty() || dir == nullptr || cachedRoot_ != dir) {
        cachedPath_ = storePathFor(registryRoot());
        cachedRoot_ = dir != nullptr ? dir : "";
    }
    return cachedPath_;
}

LONG Registry::connect(bool verifyFile, bool* opened) {
    if (store_.isOpen()) {
        if (depth_ > 0)
            return ERROR_SUCCESS;  // a transaction keeps the store it began on
        if (store_.path() == currentStorePath() && (!verifyFile || store_.fileUnchanged())) {
            return ERROR_SUCCESS;
        }
        store_.close();
    }
    cache_.clear();
    const LONG r = store_.open(currentStorePath());
    if (opened != nullptr)
        *opened = r == ERROR_SUCCESS;
    return r;
}

void Registry::syncCache() {
    Store::ChangeToken now;
    if (store_.changeToken(now)) {
        cache_.sync(now);
    } else {
        cache_.clear();
    }
}

// Reads a key whole (existence, subkeys, values) in one read transaction.
LONG Registry::loadKey(sqlite3_int64 id, CachedKey& out) {
    out = CachedKey();
    const bool own = sqlite3_get_autocommit(store_.db()) != 0;
    if (own) {
        Query begin(store_, Sql::BeginRead);
        int rc = begin.step();
        if (rc != SQLITE_DONE)
            return mapSqliteError(rc);
    }
    LONG r = [&]() -> LONG {
        Query children(store_, Sql::LoadChildren);
        children.bind(id);
        int rc;
        while ((rc = children.step()) == SQLITE_ROW) {
            out.children.push_back({std::string(children.text(2)), std::string(children.text(1)),
                                    children.integer(0), children.integer(3)});
        }
        if (rc != SQLITE_DONE)
            return mapSqliteError(rc);
        Query values(store_, Sql::LoadValues);
        values.bind(id);
        while ((rc = values.step()) == SQLITE_ROW) {
            out.values.push_back({std::string(values.text(1)), std::string(values.text(0)),
                                  static_cast<DWORD>(values.integer(2)),
                                  std::string(values.blob(3))});
        }
        if (rc != SQLITE_DONE)
            return mapSqliteError(rc);
        // Subkeys and values are deleted with their key and key ids are never reused, so a key
        // that has either exists; only an empty key costs the third query.
        if (!out.children.empty() || !out.values.empty()) {
            out.exists = true;
            return ERROR_SUCCESS;
        }
        Query exists(store_, Sql::KeyExists);
        rc = exists.bind(id).step();
        out.exists = rc == SQLITE_ROW;
        return rc == SQLITE_ROW || rc == SQLITE_DONE ? ERROR_SUCCESS : mapSqliteError(rc);
    }();
    if (own) {
        Query end(store_, Sql::EndRead);
        int rc = end.step();
        if (rc != SQLITE_DONE && r == ERROR_SUCCESS)
            r = mapSqliteError(rc);
        if (sqlite3_get_autocommit(store_.db()) == 0)
            store_.exec("ROLLBACK");
    }
    return r;
}

const CachedKey* Registry::keyInfo(sqlite3_int64 id, LONG& err) {
    if (cache_.usable()) {
        if (const CachedKey* k = cache_.find(id))
            return k;
    }
    CachedKey k;
    if ((err = loadKey(id, k)) != ERROR_SUCCESS)
        return nullptr;
    if (cache_.usable())
        return cache_.put(id, std::move(k));
    uncached_ = std::move(k);
    return &uncached_;
}

// Follows every component from `start` through cached keys; only the parents are read whole.
LONG Registry::walkCached(sqlite3_int64 start, const std::vector<std::string_view>& parts,
                          sqlite3_int64& id) {
    LONG err = ERROR_SUCCESS;
    const CachedKey* k = keyInfo(start, err);
    if (k == nullptr)
        return err;
    if (!k->exists)
        return ERROR_KEY_DELETED;
    id = start;
    for (size_t i = 0; i < parts.size(); ++i) {
        if (i > 0) {
            if ((k = keyInfo(id, err)) == nullptr)
                return err;
            if (!k->exists)
                return ERROR_FILE_NOT_FOUND;
        }
        foldInto(parts[i], fold_);
        const CachedChild* c = k->child(fold_);
        if (c == nullptr)
            return ERROR_FILE_NOT_FOUND;
        id = c->id;
    }
    return ERROR_SUCCESS;
}

LONG Registry::lookup(HKEY hKey, KeyHandle*& out) {
    if (isLocalMachine(hKey)) {
        out = &root_;
        return ERROR_SUCCESS;
    }
    auto it = handles_.find(reinterpret_cast<uintptr_t>(hKey));
    if (it == handles_.end())
        return ERROR_INVALID_HANDLE;
    out = &it->second;
    return ERROR_SUCCESS;
}

// A handle opened in one store means nothing in another (ZolDir changed, or the store was made
// anew): its key is gone as far as the caller is concerned.
LONG Registry::live(const KeyHandle& key) const {
    return key.instance == 0 || key.instance == store_.instance() ? ERROR_SUCCESS
                                                                  : ERROR_KEY_DELETED;
}

HKEY Registry::newHandle(sqlite3_int64 id, REGSAM access) {
    // Handle values are never reused, so a closed handle stays invalid.
    nextHandle_ += 0x10;
    KeyHandle& k = handles_[nextHandle_];
    k.id = id;
    k.access = normalizeAccess(access);
    k.instance = store_.instance();
    return reinterpret_cast<HKEY>(nextHandle_);
}

// After a look-up found nothing: either the thing is missing (2) or the key itself was deleted.
LONG Registry::missingOrDeleted(sqlite3_int64 id) {
    Query q(store_, Sql::KeyExists);
    int rc = q.bind(id).step();
    if (rc == SQLITE_ROW)
        return ERROR_FILE_NOT_FOUND;
    if (rc == SQLITE_DONE)
        return ERROR_KEY_DELETED;
    return mapSqliteError(rc);
}

// Follows the first `count` components from `start`.
LONG Registry::walk(sqlite3_int64 start, const std::vector<std::string_view>& parts, size_t count,
                    sqlite3_int64& id) {
    id = start;
    if (count == 0) {
        LONG r = missingOrDeleted(start);
        return r == ERROR_FILE_NOT_FOUND ? ERROR_SUCCESS : r;
    }
    for (size_t i = 0; i < count; ++i) {
        foldInto(parts[i], fold_);
        Query q(store_, Sql::FindChild);
        int rc = q.bind(id).bind(fold_).step();
        if (rc == SQLITE_ROW) {
            id = q.integer(0);
            continue;
        }
        if (rc != SQLITE_DONE)
            return mapSqliteError(rc);
        if (i > 0)
            return ERROR_FILE_NOT_FOUND;
        return missingOrDeleted(start);
    }
    return ERROR_SUCCESS;
}

// Records a write's time on its key; ERROR_KEY_DELETED when the key is gone.
LONG Registry::touch(sqlite3_int64 id) {
    Query q(store_, Sql::TouchKey);
    int rc = q.bind(id).bind(fileTimeNow()).step();
    if (rc != SQLITE_DONE)
        return mapSqliteError(rc);
    return sqlite3_changes(store_.db()) == 0 ? ERROR_KEY_DELETED : ERROR_SUCCESS;
}

template <class Op>
LONG Registry::write(Op&& op) {
    // Whatever happens below, cached reads may no longer describe the store.
    struct Invalidate {
        ReadCache& cache;
        ~Invalidate() { cache.clear(); }
    } invalidate{cache_};
    if (depth_ > 0) {
        if (doomed_)
            return ERROR_INVALID_STATE;
        wrote_ = true;
        LONG r = connect(false);
        if (r != ERROR_SUCCESS)
            return r;
        // A savepoint keeps this call all-or-nothing inside the caller's transaction.
        int rc = store_.exec("SAVEPOINT zol_write");
        if (rc != SQLITE_OK) {
            r = mapSqliteError(rc);
        } else {
            r = op();
            if (r == ERROR_SUCCESS) {
                rc = store_.exec("RELEASE zol_write");
                if (rc != SQLITE_OK)
                    r = mapSqliteError(rc);
            }
            if (r != ERROR_SUCCESS && sqlite3_get_autocommit(store_.db()) == 0) {
                store_.exec("ROLLBACK TO zol_write");
                store_.exec("RELEASE zol_write");
            }
        }
        // SQLite abandons the whole transaction after some I/O errors; the caller must learn
        // that its earlier writes are gone.
        if (sqlite3_get_autocommit(store_.db()) != 0) {
            doomed_ = true;
            if (r == ERROR_SUCCESS)
                r = ERROR_REGISTRY_IO_FAILED;
        }
        // The write lock is held for the whole transaction, so busy here is a failure.
        return r == kBusy ? ERROR_REGISTRY_IO_FAILED : r;
    }
    return retryWhileBusy([&]() -> LONG {
        LONG r = connect(true);  // never write into a store file replaced meanwhile
        if (r != ERROR_SUCCESS)
            return r;
        int rc = store_.exec("BEGIN IMMEDIATE");
        if (rc != SQLITE_OK)
            return mapSqliteError(rc);
        r = op();
        if (r == ERROR_SUCCESS) {
            rc = store_.exec("COMMIT");
            if (rc != SQLITE_OK)
                r = mapSqliteError(rc);
        }
        if (sqlite3_get_autocommit(store_.db()) == 0)
            store_.exec("ROLLBACK");
        return r;
    });
}

// A failed open leaves *result as the caller had it, as Win32 does.
LONG Registry::openKey(HKEY hKey, LPCSTR subKey, REGSAM sam, PHKEY result) {
    if (result == nullptr)
        return ERROR_INVALID_PARAMETER;
    std::vector<std::string_view> parts;
    LONG r = splitPath(subKey, parts);
    if (r != ERROR_SUCCESS)
        return r;
    // The predefined key opened as itself is handed back as it is, in the caller's spelling.
    if (parts.empty() && isLocalMachine(hKey)) {
        *result = hKey;
        return ERROR_SUCCESS;
    }
    Lock lk = enter();
    KeyHandle* base = nullptr;
    if ((r = lookup(hKey, base)) != ERROR_SUCCESS)
        return r;
    const KeyHandle& from = *base;
    sqlite3_int64 id = 0;
    // Opening is where a caller meets the store first: notice a store replaced meanwhile.
    r = retryWhileBusy([&]() -> LONG {
        LONG c = connect(true);
        if (c != ERROR_SUCCESS || (c = live(from)) != ERROR_SUCCESS)
            return c;
        syncCache();
        return walkCached(from.id, parts, id);
    });
    if (r != ERROR_SUCCESS)
        return r;
    *result = newHandle(id, sam);
    return ERROR_SUCCESS;
}

LONG Registry::createKey(HKEY hKey, LPCSTR subKey, REGSAM sam, PHKEY result, LPDWORD disposition) {
    if (result == nullptr)
        return ERROR_INVALID_PARAMETER;
    *result = nullptr;
    std::vector<std::string_view> parts;
    LONG r = splitPath(subKey, parts);
    if (r != ERROR_SUCCESS)
        return r;
    Lock lk = enter();
    KeyHandle* base = nullptr;
    // As in Win32, the rights the parent was opened with do not matter for creating a subkey.
    if ((r = lookup(hKey, base)) != ERROR_SUCCESS)
        return r;
    const KeyHandle& from = *base;
    sqlite3_int64 id = 0;
    bool created = false;
    r = write([&]() -> LONG {
        created = false;
        LONG w = live(from);
        if (w != ERROR_SUCCESS)
            return w;
        if ((w = walk(from.id, parts, 0, id)) != ERROR_SUCCESS)
            return w;
        const int64_t now = fileTimeNow();
        for (std::string_view part : parts) {
            foldInto(part, fold_);
            if (!created) {
                Query find(store_, Sql::FindChild);
                int rc = find.bind(id).bind(fold_).step();
                if (rc == SQLITE_ROW) {
                    id = find.integer(0);
                    continue;
                }
                if (rc != SQLITE_DONE)
                    return mapSqliteError(rc);
                if ((w = touch(id)) != ERROR_SUCCESS)
                    return w;
            }
            Query insert(store_, Sql::InsertKey);
            int rc = insert.bind(id).bind(part).bind(fold_).bind(now).step();
            if (rc != SQLITE_DONE)
                return mapSqliteError(rc);
            id = sqlite3_last_insert_rowid(store_.db());
            created = true;
        }
        return ERROR_SUCCESS;
    });
    if (r != ERROR_SUCCESS)
        return r;
    *result = newHandle(id, sam);
    if (disposition != nullptr)
        *disposition = created ? REG_CREATED_NEW_KEY : REG_OPENED_EXISTING_KEY;
    return ERROR_SUCCESS;
}

LONG Registry::queryValue(HKEY hKey, LPCSTR name, LPDWORD type, LPBYTE data, LPDWORD cbData) {
    if (data != nullptr && cbData == nullptr)
        return ERROR_INVALID_PARAMETER;
    std::string_view vname;
    LONG r = valueName(name, vname);
    if (r != ERROR_SUCCESS)
        return r;
    Lock lk = enter();
    KeyHandle* key = nullptr;
    if ((r = lookup(hKey, KEY_QUERY_VALUE, key)) != ERROR_SUCCESS)
        return r;
    return readKey(*key, [&](const CachedKey& info) -> LONG {
        foldInto(vname, fold_);
        const CachedValue* v = info.value(fold_);
        if (v == nullptr) {
            if (cbData != nullptr)
                *cbData = 0;
            return ERROR_FILE_NOT_FOUND;
        }
        return deliverValue(v->type, v->data, type, data, cbData);
    });
}

LONG Registry::setValue(HKEY hKey, LPCSTR name, DWORD type, const BYTE* data, DWORD cbData) {
    if (data == nullptr && cbData != 0)
        return ERROR_NOACCESS;
    if (type > kRegQword)
        return ERROR_INVALID_PARAMETER;
    if ((type == REG_DWORD && cbData != 4) || (type == kRegQword && cbData != 8)) {
        return ERROR_INVALID_PARAMETER;
    }
    std::string_view vname;
    LONG r = valueName(name, vname);
    if (r != ERROR_SUCCESS)
        return r;
    Lock lk = enter();
    KeyHandle* key = nullptr;
    if ((r = lookup(hKey, KEY_SET_VALUE, key)) != ERROR_SUCCESS)
        return r;
    const KeyHandle& k = *key;
    // A string given without its terminator (a size from strlen) is stored with one, as the
    // narrow-character Win32 functions do; an empty one stays empty.
    std::string completed;
    if (isStringType(type) && cbData != 0 && cbData != 0xFFFFFFFFu && data[cbData - 1] != 0) {
        completed.reserve(size_t{cbData} + 1);
        completed.assign(reinterpret_cast<const char*>(data), cbData);
        completed.push_back('\0');
        data = reinterpret_cast<const BYTE*>(completed.data());
        cbData = static_cast<DWORD>(completed.size());
    }
    return write([&]() -> LONG {
        LONG w = live(k);
        if (w != ERROR_SUCCESS || (w = touch(k.id)) != ERROR_SUCCESS)
            return w;
        foldInto(vname, fold_);
        Query set(store_, Sql::SetValue);
        int rc = set.bind(k.id)
                     .bind(vname)
                     .bind(fold_)
                     .bind(sqlite3_int64{type})
                     .bindBlob(data, cbData)
                     .step();
        return rc == SQLITE_DONE ? ERROR_SUCCESS : mapSqliteError(rc);
    });
}

LONG Registry::deleteValue(HKEY hKey, LPCSTR name) {
    std::string_view vname;
    LONG r = valueName(name, vname);
    if (r != ERROR_SUCCESS)
        return r;
    Lock lk = enter();
    KeyHandle* key = nullptr;
    if ((r = lookup(hKey, KEY_SET_VALUE, key)) != ERROR_SUCCESS)
        return r;
    const KeyHandle& k = *key;
    return write([&]() -> LONG {
        LONG w = live(k);
        if (w != ERROR_SUCCESS)
            return w;
        foldInto(vname, fold_);
        Query del(store_, Sql::DeleteValue);
        int rc = del.bind(k.id).bind(fold_).step();
        if (rc != SQLITE_DONE)
            return mapSqliteError(rc);
        if (sqlite3_changes(store_.db()) == 0)
            return missingOrDeleted(k.id);
        return touch(k.id);
    });
}

// Finds the key deleteKey removes and its parent: the handle's own key for an empty path (never
// the root), else the last component below the path's parent.
LONG Registry::deletionTarget(sqlite3_int64 from, const std::vector<std::string_view>& parts,
                              sqlite3_int64& parent, sqlite3_int64& target) {
    if (parts.empty()) {
        if (from == kRootKeyId)
            return ERROR_ACCESS_DENIED;
        Query q(store_, Sql::KeyParent);
        int rc = q.bind(from).step();
        if (rc == SQLITE_DONE)
            return ERROR_KEY_DELETED;
        if (rc != SQLITE_ROW)
            return mapSqliteError(rc);
        parent = q.integer(0);
        target = from;
        return ERROR_SUCCESS;
    }
    LONG w = walk(from, parts, parts.size() - 1, parent);
    if (w != ERROR_SUCCESS)
        return w;
    std::vector<std::string_view> last{parts.back()};
    if ((w = walk(parent, last, 1, target)) != ERROR_SUCCESS)
        return (w == ERROR_KEY_DELETED && parts.size() > 1) ? ERROR_FILE_NOT_FOUND : w;
    return ERROR_SUCCESS;
}

// As in Win32, the rights the handle was opened with do not matter for deleting a subkey (or,
// through an empty path, the handle's own key); a key with subkeys is refused.
LONG Registry::deleteKey(HKEY hKey, LPCSTR subKey) {
    std::vector<std::string_view> parts;
    LONG r = splitPath(subKey, parts);
    if (r != ERROR_SUCCESS)
        return r;
    Lock lk = enter();
    KeyHandle* key = nullptr;
    if ((r = lookup(hKey, key)) != ERROR_SUCCESS)
        return r;
    const KeyHandle& k = *key;
    return write([&]() -> LONG {
        LONG w = live(k);
        if (w != ERROR_SUCCESS)
            return w;
        sqlite3_int64 parent = 0, target = 0;
        if ((w = deletionTarget(k.id, parts, parent, target)) != ERROR_SUCCESS)
            return w;
        {
            Query children(store_, Sql::HasChildren);
            int rc = children.bind(target).step();
            if (rc == SQLITE_ROW)
                return ERROR_ACCESS_DENIED;
            if (rc != SQLITE_DONE)
                return mapSqliteError(rc);
        }
        for (Sql s : {Sql::DeleteKeyValues, Sql::DeleteKey}) {
            Query del(store_, s);
            int rc = del.bind(target).step();
            if (rc != SQLITE_DONE)
                return mapSqliteError(rc);
        }
        return touch(parent);
    });
}

// Copies an enumerated name and its terminator when *cch has room for both; *cch becomes the
// name's length.
static LONG copyName(const std::string& found, LPSTR name, LPDWORD cch) {
    if (found.size() + 1 > *cch)
        return ERROR_MORE_DATA;
    std::memcpy(name, found.c_str(), found.size() + 1);
    *cch = static_cast<DWORD>(found.size());
    return ERROR_SUCCESS;
}

LONG Registry::enumKey(HKEY hKey, DWORD index, LPSTR name, LPDWORD cchName, LPSTR cls,
                       LPDWORD cchCls, void* lastWrite) {
    if (name == nullptr || cchName == nullptr || (cls != nullptr && cchCls == nullptr)) {
        return ERROR_INVALID_PARAMETER;
    }
    Lock lk = enter();
    KeyHandle* key = nullptr;
    LONG r = lookup(hKey, KEY_ENUMERATE_SUB_KEYS, key);
    if (r != ERROR_SUCCESS)
        return r;
    return readKey(*key, [&](const CachedKey& info) -> LONG {
        if (index >= info.children.size())
            return ERROR_NO_MORE_ITEMS;
        const CachedChild& found = info.children[index];
        if (LONG c = copyName(found.name, name, cchName); c != ERROR_SUCCESS)
            return c;
        if (cls != nullptr && *cchCls > 0)
            cls[0] = '\0';
        if (cchCls != nullptr)
            *cchCls = 0;
        if (lastWrite != nullptr) {
            const auto ft = static_cast<uint64_t>(found.mtime);
            const DWORD parts[2] = {static_cast<DWORD>(ft), static_cast<DWORD>(ft >> 32)};
            std::memcpy(lastWrite, parts, sizeof parts);  // a FILETIME: low part first
        }
        return ERROR_SUCCESS;
    });
}

LONG Registry::enumValue(HKEY hKey, DWORD index, LPSTR name, LPDWORD cchName, LPDWORD type,
                         LPBYTE data, LPDWORD cbData) {
    if (name == nullptr || cchName == nullptr || (data != nullptr && cbData == nullptr)) {
        return ERROR_INVALID_PARAMETER;
    }
    Lock lk = enter();
    KeyHandle* key = nullptr;
    LONG r = lookup(hKey, KEY_QUERY_VALUE, key);
    if (r != ERROR_SUCCESS)
        return r;
    return readKey(*key, [&](const CachedKey& info) -> LONG {
        if (index >= info.values.size())
            return ERROR_NO_MORE_ITEMS;
        const CachedValue& found = info.values[index];
        // When the name or the data does not fit, Win32 still reports the type and the data's
        // size, and leaves both buffers and the name's count as they were.
        const bool nameFits = found.name.size() + 1 <= *cchName;
        const bool dataFits = data == nullptr || *cbData >= found.data.size();
        if (!nameFits || !dataFits) {
            deliverValue(found.type, found.data, type, nullptr, cbData);  // type and size only
            return ERROR_MORE_DATA;
        }
        copyName(found.name, name, cchName);
        return deliverValue(found.type, found.data, type, data, cbData);
    });
}

LONG Registry::closeKey(HKEY hKey) {
    if (isLocalMachine(hKey))
        return ERROR_SUCCESS;
    Lock lk = enter(false);
    return handles_.erase(reinterpret_cast<uintptr_t>(hKey)) != 0 ? ERROR_SUCCESS
                                                                  : ERROR_INVALID_HANDLE;
}

Registry& registry() {
    static Registry instance;
    return instance;
}

}  // namespace zolwin::registry

using zolwin::registry::guarded;
using zolwin::registry::Registry;

LONG RegOpenKeyEx(HKEY hKey, LPCSTR lpSubKey, DWORD, REGSAM samDesired, PHKEY phkResult) {
    return guarded([&](Registry& r) { return r.openKey(hKey, lpSubKey, samDesired, phkResult); });
}

LONG RegCreateKey(HKEY hKey, LPCSTR lpSubKey, PHKEY phkResult) {
    return guarded([&](Registry& r) {
        return r.createKey(hKey, lpSubKey, KEY_ALL_ACCESS, phkResult, nullptr);
    });
}

LONG RegCreateKeyEx(HKEY hKey, LPCSTR lpSubKey, DWORD, LPSTR, DWORD dwOptions, REGSAM samDesired,
                    const void*, PHKEY phkResult, LPDWORD lpdwDisposition) {
    if (phkResult == nullptr)
        return ERROR_BADKEY;
    // Only lasting keys exist here: volatile keys and links are refused (docs/registry.md says
    // why).
    if (dwOptions != REG_OPTION_NON_VOLATILE) {
        if (phkResult != nullptr)
            *phkResult = nullptr;
        return ERROR_INVALID_PARAMETER;
    }
    return guarded([&](Registry& r) {
        return r.createKey(hKey, lpSubKey, samDesired, phkResult, lpdwDisposition);
    });
}

LONG RegQueryValueEx(HKEY hKey, LPCSTR lpValueName, LPDWORD lpReserved, LPDWORD lpType,
                     LPBYTE lpData, LPDWORD lpcbData) {
    if (lpReserved != nullptr)
        return ERROR_INVALID_PARAMETER;
    return guarded(
        [&](Registry& r) { return r.queryValue(hKey, lpValueName, lpType, lpData, lpcbData); });
}

LONG RegSetValueEx(HKEY hKey, LPCSTR lpValueName, DWORD, DWORD dwType, const BYTE* lpData,
                   DWORD cbData) {
    return guarded(
        [&](Registry& r) { return r.setValue(hKey, lpValueName, dwType, lpData, cbData); });
}

LONG RegDeleteValue(HKEY hKey, LPCSTR lpValueName) {
    return guarded([&](Registry& r) { return r.deleteValue(hKey, lpValueName); });
}

LONG RegDeleteKey(HKEY hKey, LPCSTR lpSubKey) {
    return guarded([&](Registry& r) { return r.deleteKey(hKey, lpSubKey); });
}

LONG RegEnumKeyEx(HKEY hKey, DWORD dwIndex, LPSTR lpName, LPDWORD lpcchName, LPDWORD lpReserved,
                  LPSTR lpClass, LPDWORD lpcchClass, void* lpftLastWriteTime) {
    if (lpReserved != nullptr)
        return ERROR_INVALID_PARAMETER;
    return guarded([&](Registry& r) {
        return r.enumKey(hKey, dwIndex, lpName, lpcchName, lpClass, lpcchClass, lpftLastWriteTime);
    });
}

LONG RegEnumValue(HKEY hKey, DWORD dwIndex, LPSTR lpValueName, LPDWORD lpcchValueName,
                  LPDWORD lpReserved, LPDWORD lpType, LPBYTE lpData, LPDWORD lpcbData) {
    if (lpReserved != nullptr)
        return ERROR_INVALID_PARAMETER;
    return guarded([&](Registry& r) {
        return r.enumValue(hKey, dwIndex, lpValueName, lpcchValueName, lpType, lpData, lpcbData);
    });
}

LONG RegCloseKey(HKEY hKey) {
    return guarded([&](Registry& r) { return r.closeKey(hKey); });
}
