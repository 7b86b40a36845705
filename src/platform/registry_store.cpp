// The registry's SQLite connection: opening and validating a store file, the statement cache and
// the translation of SQLite results into the registry's error codes.
#include "registry_store.h"

#include <sys/stat.h>

#include <atomic>
#include <vector>

namespace zolwin::registry {

namespace {

// Statement texts, in the order of the Sql enumeration. Names are compared through their folded
// form (ASCII letters in lower case, other bytes as they are), so ORDER BY fold gives a stable
// case-insensitive order and the UNIQUE(parent, fold) index serves both look-up and enumeration.
constexpr const char* kStatementSql[] = {
    "SELECT id FROM keys WHERE parent = ?1 AND fold = ?2",
    "SELECT 1 FROM keys WHERE id = ?1",
    "SELECT parent FROM keys WHERE id = ?1",
    "INSERT INTO keys(parent, name, fold, mtime) VALUES (?1, ?2, ?3, ?4)",
    "SELECT 1 FROM keys WHERE parent = ?1 LIMIT 1",
    "DELETE FROM vals WHERE key = ?1",
    "DELETE FROM keys WHERE id = ?1",
    "UPDATE keys SET mtime = ?2 WHERE id = ?1",
    // The first spelling of a value name is kept when it is written again in another case.
    ("INSERT INTO vals(key, name, fold, type, data) VALUES (?1, ?2, ?3, ?4, ?5) "
     "ON CONFLICT(key, fold) DO UPDATE SET type = excluded.type, data = excluded.data"),
    "DELETE FROM vals WHERE key = ?1 AND fold = ?2",
    "SELECT id, name, fold, mtime FROM keys WHERE parent = ?1 ORDER BY fold",
    "SELECT name, fold, type, data FROM vals WHERE key = ?1 ORDER BY fold",
    "BEGIN",
    "COMMIT",
    // A key and everything below it, at most ?2 keys (one more tells that there were more).
    // CROSS JOIN keeps the subtree as the outer loop, so each step is an index look-up.
    ("WITH RECURSIVE sub(id) AS (SELECT ?1 UNION ALL"
     " SELECT k.id FROM sub CROSS JOIN keys k ON k.parent = sub.id LIMIT ?2)"
     " SELECT k.id, k.parent, k.name, k.fold, k.mtime FROM sub CROSS JOIN keys k ON k.id = sub.id"),
    ("WITH RECURSIVE sub(id) AS (SELECT ?1 UNION ALL"
     " SELECT k.id FROM sub CROSS JOIN keys k ON k.parent = sub.id LIMIT ?2)"
     " SELECT v.key, v.name, v.fold, v.type, v.data FROM sub CROSS JOIN vals v ON v.key = sub.id"),
};
static_assert(std::size(kStatementSql) == static_cast<size_t>(Sql::Count));

// Runs a statement expected to produce one row and hands that row to fn; returns an SQLite
// result code (SQLITE_DONE when there was no row).
template <class Fn>
int singleRow(sqlite3* db, const char* sql, Fn&& fn) {
    sqlite3_stmt* raw = nullptr;
    int rc = sqlite3_prepare_v2(db, sql, -1, &raw, nullptr);
    if (rc != SQLITE_OK)
        return rc;
    rc = sqlite3_step(raw);
    if (rc == SQLITE_ROW)
        fn(raw);
    sqlite3_finalize(raw);
    return rc;
}

}  // namespace

const char* const kSchemaSql =
    "CREATE TABLE meta(name TEXT PRIMARY KEY, value) WITHOUT ROWID;"
    "CREATE TABLE keys(id INTEGER PRIMARY KEY AUTOINCREMENT, parent INTEGER NOT NULL,"
    " name TEXT NOT NULL, fold TEXT NOT NULL, mtime INTEGER NOT NULL DEFAULT 0,"
    " UNIQUE(parent, fold));"
    "CREATE TABLE vals(key INTEGER NOT NULL, name TEXT NOT NULL, fold TEXT NOT NULL,"
    " type INTEGER NOT NULL, data BLOB NOT NULL, PRIMARY KEY(key, fold)) WITHOUT ROWID;"
    "INSERT INTO keys(id, parent, name, fold) VALUES (1, 0, 'HKEY_LOCAL_MACHINE',"
    " 'hkey_local_machine');"
    "INSERT INTO meta(name, value) VALUES ('instance', abs(random()));";

LONG mapSqliteError(int rc) {
    switch (rc & 0xff) {
        case SQLITE_BUSY:
        case SQLITE_LOCKED:
            return kBusy;
        case SQLITE_CORRUPT:
        case SQLITE_NOTADB:
        case SQLITE_FORMAT:
        case SQLITE_ERROR:       // a statement that does not fit the file: not a store of ours
        case SQLITE_CONSTRAINT:  // the store holds rows the registry never writes
        case SQLITE_MISMATCH:
        case SQLITE_SCHEMA:
            return ERROR_REGISTRY_CORRUPT;
        case SQLITE_NOMEM:
            return ERROR_NOT_ENOUGH_MEMORY;
        case SQLITE_TOOBIG:
            return ERROR_INVALID_PARAMETER;
        default:  // IOERR, CANTOPEN, READONLY, FULL, PERM, PROTOCOL, ...
            return ERROR_REGISTRY_IO_FAILED;
    }
}

LONG Store::open(const std::string& path) {
    close();
    struct stat st {};
    // Never create a store here: opening a missing file would make an empty database.
    if (::stat(path.c_str(), &st) != 0 || !S_ISREG(st.st_mode))
        return ERROR_REGISTRY_IO_FAILED;

    sqlite3* db = nullptr;
    int rc =
        sqlite3_open_v2(path.c_str(), &db, SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX, nullptr);
    if (rc != SQLITE_OK) {
        sqlite3_close(db);
        LONG mapped = mapSqliteError(rc);
        return mapped == kBusy ? ERROR_REGISTRY_IO_FAILED : mapped;
    }
    db_ = db;
    path_ = path;
    walIndex_ = nullptr;
    owner_ = getpid();
    dev_ = st.st_dev;
    ino_ = st.st_ino;
    sqlite3_extended_result_codes(db_, 1);
    sqlite3_busy_timeout(db_, 10000);

    LONG r = retryWhileBusy([this] { return validate(); });
    if (r != ERROR_SUCCESS)
        close();
    return r;
}

LONG Store::validate() {
    sqlite3_int64 appId = 0, version = 0;
    int rc = singleRow(db_, "PRAGMA application_id",
                       [&](sqlite3_stmt* s) { appId = sqlite3_column_int64(s, 0); });
    if (rc != SQLITE_ROW)
        return mapSqliteError(rc);
    rc = singleRow(db_, "PRAGMA user_version",
                   [&](sqlite3_stmt* s) { version = sqlite3_column_int64(s, 0); });
    if (rc != SQLITE_ROW)
        return mapSqliteError(rc);
    // An empty file, another program's database or a newer schema: refuse before writing to it.
    if (appId != kApplicationId || version != kSchemaVersion)
        return ERROR_REGISTRY_CORRUPT;

    LONG r = check(false);
    if (r != ERROR_SUCCESS)
        return r;

    rc = singleRow(db_, "SELECT value FROM meta WHERE name = 'instance'",
                   [&](sqlite3_stmt* s) { instance_ = sqlite3_column_int64(s, 0); });
    if (rc == SQLITE_DONE)
        return ERROR_REGISTRY_CORRUPT;
    if (rc != SQLITE_ROW)
        return mapSqliteError(rc);
    bool hasRoot = false;
    rc = singleRow(db_, "SELECT 1 FROM keys WHERE id = 1 AND parent = 0",
                   [&](sqlite3_stmt*) { hasRoot = true; });
    if (rc != SQLITE_ROW && rc != SQLITE_DONE)
        return mapSqliteError(rc);
    if (!hasRoot)
        return ERROR_REGISTRY_CORRUPT;

    // A store is made in WAL mode, which the file keeps; asking again repairs a store copied
    // in from elsewhere. FULL makes every commit durable before it returns.
    std::string mode;
    rc = singleRow(db_, "PRAGMA journal_mode = WAL", [&](sqlite3_stmt* s) {
        const auto* t = sqlite3_column_text(s, 0);
        if (t != nullptr)
            mode = reinterpret_cast<const char*>(t);
    });
    if (rc != SQLITE_ROW && (rc & 0xff) != SQLITE_BUSY)
        return mapSqliteError(rc);
    rc = exec("PRAGMA synchronous = FULL");
    if (rc != SQLITE_OK)
        return mapSqliteError(rc);

    // The reads above opened the WAL index; its header tells a cache whether anything changed.
    // Without WAL (a store that could not be switched) there is no such index: no cache.
    sqlite3_file* file = nullptr;
    if (mode == "wal" &&
        sqlite3_file_control(db_, "main", SQLITE_FCNTL_FILE_POINTER, &file) == SQLITE_OK &&
        file != nullptr && file->pMethods != nullptr && file->pMethods->iVersion >= 2) {
        void volatile* region = nullptr;
        if (file->pMethods->xShmMap(file, 0, 32768, 0, &region) == SQLITE_OK) {
            walIndex_ = const_cast<const uint32_t*>(static_cast<volatile uint32_t*>(region));
        }
    }
    return ERROR_SUCCESS;
}

bool Store::changeToken(ChangeToken& out) const {
    if (walIndex_ == nullptr)
        return false;
    // The index holds two copies of its header; a writer updates the second, then the first.
    // Equal copies, read first then second, are a consistent header.
    ChangeToken second{};
    for (size_t i = 0; i < out.size(); ++i) {
        out[i] = __atomic_load_n(walIndex_ + i, __ATOMIC_RELAXED);
    }
    std::atomic_thread_fence(std::memory_order_acquire);
    for (size_t i = 0; i < second.size(); ++i) {
        second[i] = __atomic_load_n(walIndex_ + out.size() + i, __ATOMIC_RELAXED);
    }
    return out == second;
}

LONG Store::check(bool full) {
    std::string verdict;
    int rc = singleRow(db_, full ? "PRAGMA integrity_check(1)" : "PRAGMA quick_check(1)",
                       [&](sqlite3_stmt* s) {
                           const auto* t = sqlite3_column_text(s, 0);
                           if (t != nullptr)
                               verdict = reinterpret_cast<const char*>(t);
                       });
    if (rc != SQLITE_ROW)
        return mapSqliteError(rc);
    return verdict == "ok" ? ERROR_SUCCESS : ERROR_REGISTRY_CORRUPT;
}

bool Store::fileUnchanged() const {
    struct stat st {};
    return ::stat(path_.c_str(), &st) == 0 && st.st_dev == dev_ && st.st_ino == ino_;
}

sqlite3_stmt* Store::statement(Sql id, int& rc) {
    auto& slot = stmts_[static_cast<size_t>(id)];
    if (slot == nullptr) {
        rc = sqlite3_prepare_v3(db_, kStatementSql[static_cast<size_t>(id)], -1,
                                SQLITE_PREPARE_PERSISTENT, &slot, nullptr);
        if (rc != SQLITE_OK) {
            sqlite3_finalize(slot);
            slot = nullptr;
        }
    }
    return slot;
}

int Store::exec(const char* sql) {
    return sqlite3_exec(db_, sql, nullptr, nullptr, nullptr);
}

void Store::finalizeAll() {
    for (auto& s : stmts_) {
        sqlite3_finalize(s);
        s = nullptr;
    }
}

void Store::close() {
    if (db_ == nullptr)
        return;
    finalizeAll();
    sqlite3_close(db_);
    db_ = nullptr;
    walIndex_ = nullptr;
    path_.clear();
}

void Store::abandon() {
    // The connection and its statements stay allocated and reachable from here for the rest of
    // the child's life; they belong to the parent's open files.
    static auto* abandoned = new std::vector<sqlite3*>();
    if (db_ != nullptr)
        abandoned->push_back(db_);
    stmts_.fill(nullptr);
    db_ = nullptr;
    walIndex_ = nullptr;
    path_.clear();
}

}  // namespace zolwin::registry
