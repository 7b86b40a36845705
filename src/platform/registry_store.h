// The registry's SQLite connection: opening and validating the store, cached statements, and the
// mapping of SQLite results to the registry's Win32 error codes. Private to libzolwin.
#pragma once

#include <sqlite3.h>
#include <sys/types.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdint>
#include <string>
#include <string_view>
#include <thread>

#include "zolwin.h"

namespace zolwin::registry {

// Returned internally when SQLite stayed busy past its timeout; the caller retries the whole
// operation and this value never reaches a registry caller.
inline constexpr LONG kBusy = -1;

// The store's identity in its header, so that any other SQLite file is refused as corrupt.
inline constexpr int kApplicationId = 0x5A4F4C52;  // "ZOLR"
inline constexpr int kSchemaVersion = 1;
inline constexpr sqlite3_int64 kRootKeyId = 1;  // HKEY_LOCAL_MACHINE

// Runs op until it returns something other than kBusy. SQLite's own busy timeout already waits
// for a lock; this outer loop covers what the busy handler cannot (recovery of a crashed
// writer's journal, a lock that changed hands many times) and gives up only after minutes.
template <class Op>
LONG retryWhileBusy(Op&& op) {
    LONG r = op();
    if (r != kBusy)
        return r;
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::minutes(2);
    for (int attempt = 1;; ++attempt) {
        if (std::chrono::steady_clock::now() > deadline)
            return ERROR_REGISTRY_IO_FAILED;
        // A short, growing pause, spread by the process id so that waiters do not move in step.
        const int ms = std::min(attempt, 20) + static_cast<int>(getpid() % 3);
        std::this_thread::sleep_for(std::chrono::milliseconds(ms));
        r = op();
        if (r != kBusy)
            return r;
    }
}

// Translates an SQLite result code (other than OK, ROW, DONE) into a registry error code.
LONG mapSqliteError(int rc);

// Every statement the registry runs, prepared once per connection.
enum class Sql : int {
    FindChild,
    KeyExists,
    KeyParent,
    InsertKey,
    HasChildren,
    DeleteKeyValues,
    DeleteKey,
    TouchKey,
    SetValue,
    DeleteValue,
    LoadChildren,
    LoadValues,
    BeginRead,
    EndRead,
    SubtreeKeys,
    SubtreeValues,
    Count
};

class Store {
  public:
    Store() = default;
    ~Store() { close(); }
    Store(const Store&) = delete;
    Store& operator=(const Store&) = delete;

    // Opens and validates an existing store file; ERROR_REGISTRY_IO_FAILED when it is missing
    // or cannot be read, ERROR_REGISTRY_CORRUPT when it is damaged or not a store.
    LONG open(const std::string& path);
    void close();
    // Forgets a connection inherited over fork() without touching it: closing it in the child
    // would disturb the parent's locks and journal.
    void abandon();

    bool isOpen() const { return db_ != nullptr; }
    const std::string& path() const { return path_; }
    pid_t owner() const { return owner_; }
    std::int64_t instance() const { return instance_; }
    sqlite3* db() const { return db_; }
    // True when the file at path() is still the one this connection opened.
    bool fileUnchanged() const;

    // The cached statement, reset and ready to bind; nullptr (and the reason in rc) when it
    // cannot be prepared.
    sqlite3_stmt* statement(Sql id, int& rc);
    // Runs statements without results; returns an SQLite result code.
    int exec(const char* sql);
    // Runs "PRAGMA quick_check" or "PRAGMA integrity_check" and reports the verdict.
    LONG check(bool full);

    // The header of the store's shared WAL index, which every commit of any process changes.
    // False while no consistent copy can be read (a writer is updating it, or the index is not
    // mapped): then nothing may be taken from a cache.
    using ChangeToken = std::array<uint32_t, 12>;
    bool changeToken(ChangeToken& out) const;

  private:
    LONG validate();
    void finalizeAll();

    sqlite3* db_ = nullptr;
    std::string path_;
    pid_t owner_ = 0;
    std::int64_t instance_ = 0;
    dev_t dev_ = 0;
    ino_t ino_ = 0;
    const uint32_t* walIndex_ = nullptr;  // SQLite's own mapping of the -shm file, region 0
    std::array<sqlite3_stmt*, static_cast<size_t>(Sql::Count)> stmts_{};
};

// One use of a cached statement: binds parameters in order and resets the statement when the
// use ends, so that no read transaction stays open between calls.
class Query {
  public:
    Query(Store& store, Sql id) : stmt_(store.statement(id, prepareRc_)) {}
    ~Query() {
        if (stmt_ != nullptr) {
            sqlite3_reset(stmt_);
            sqlite3_clear_bindings(stmt_);
        }
    }
    Query(const Query&) = delete;
    Query& operator=(const Query&) = delete;

    Query& bind(sqlite3_int64 v) {
        sqlite3_bind_int64(stmt_, ++arg_, v);
        return *this;
    }
    Query& bind(std::string_view text) {
        // An empty name is the text '', never NULL.
        sqlite3_bind_text(stmt_, ++arg_, text.data() != nullptr ? text.data() : "",
                          static_cast<int>(text.size()), SQLITE_STATIC);
        return *this;
    }
    Query& bindBlob(const void* data, DWORD size) {
        // A zero-length blob still binds as a blob, never as NULL.
        static const char empty = 0;
        sqlite3_bind_blob(stmt_, ++arg_, size != 0 ? data : &empty, static_cast<int>(size),
                          SQLITE_STATIC);
        return *this;
    }
    // SQLITE_ROW, SQLITE_DONE or an error code (also the reason a statement could not be
    // prepared, such as a store without the registry's tables).
    int step() { return stmt_ != nullptr ? sqlite3_step(stmt_) : prepareRc_; }

    sqlite3_int64 integer(int col) const { return sqlite3_column_int64(stmt_, col); }
    std::string_view text(int col) const {
        const auto* p = reinterpret_cast<const char*>(sqlite3_column_text(stmt_, col));
        return {p != nullptr ? p : "", static_cast<size_t>(sqlite3_column_bytes(stmt_, col))};
    }
    std::string_view blob(int col) const {
        const auto* p = static_cast<const char*>(sqlite3_column_blob(stmt_, col));
        return {p != nullptr ? p : "", static_cast<size_t>(sqlite3_column_bytes(stmt_, col))};
    }

  private:
    int prepareRc_ = SQLITE_OK;
    sqlite3_stmt* stmt_;
    int arg_ = 0;
};

// The statements that create a new store's schema (run inside one transaction).
extern const char* const kSchemaSql;

}  // namespace zolwin::registry
