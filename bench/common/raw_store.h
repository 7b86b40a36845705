// The settings store read with raw SQLite statements on its own connection: the yardstick the
// benchmarks hold the registry API and rptset.dll against. It reads the store's tables directly
// (keys: id, parent, name, fold; vals: key, name, fold, type, data), folding names as the store
// does.
#pragma once

#include <benchmark/benchmark.h>
#include <sqlite3.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace zolbench {

class RawStore {
  public:
    explicit RawStore(const std::string& file) {
        sqlite3_open_v2(file.c_str(), &db_, SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX, nullptr);
        sqlite3_busy_timeout(db_, 10000);
        prepare(findChild_, "SELECT id FROM keys WHERE parent = ?1 AND fold = ?2");
        prepare(children_, "SELECT id, name FROM keys WHERE parent = ?1 ORDER BY fold");
        prepare(value_, "SELECT type, data FROM vals WHERE key = ?1 AND fold = ?2");
        prepare(values_, "SELECT name, type, data FROM vals WHERE key = ?1 ORDER BY fold");
    }
    ~RawStore() {
        for (sqlite3_stmt* s : {findChild_, children_, value_, values_})
            sqlite3_finalize(s);
        sqlite3_close(db_);
    }
    RawStore(const RawStore&) = delete;
    RawStore& operator=(const RawStore&) = delete;

    // Follows a backslash path from the root key; -1 when a component is missing.
    sqlite3_int64 resolve(std::string_view path) {
        sqlite3_int64 id = 1;
        std::string part;
        for (size_t i = 0; i <= path.size(); ++i) {
            const char c = i < path.size() ? path[i] : '\0';
            if (c == '\\' || c == '\0') {
                sqlite3_bind_int64(findChild_, 1, id);
                sqlite3_bind_text(findChild_, 2, part.data(), static_cast<int>(part.size()),
                                  SQLITE_STATIC);
                id = sqlite3_step(findChild_) == SQLITE_ROW ? sqlite3_column_int64(findChild_, 0)
                                                            : -1;
                sqlite3_reset(findChild_);
                part.clear();
                if (c == '\0' || id < 0)
                    return id;
            } else {
                part.push_back(c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c);
            }
        }
        return id;
    }

    // The children statement (columns id, name), for a caller that steps it itself: bind ?1 to
    // the parent, step, reset.
    sqlite3_stmt* childrenQuery() { return children_; }
    // Children of a key as (id, name), in the store's order.
    std::vector<std::pair<sqlite3_int64, std::string>> children(sqlite3_int64 key) {
        std::vector<std::pair<sqlite3_int64, std::string>> out;
        sqlite3_bind_int64(children_, 1, key);
        while (sqlite3_step(children_) == SQLITE_ROW) {
            out.emplace_back(sqlite3_column_int64(children_, 0),
                             reinterpret_cast<const char*>(sqlite3_column_text(children_, 1)));
        }
        sqlite3_reset(children_);
        return out;
    }

    // Copies one value (by folded name) into buf like a query does; returns its size or -1.
    int value(sqlite3_int64 key, const std::string& fold, unsigned char* buf, size_t size) {
        sqlite3_bind_int64(value_, 1, key);
        sqlite3_bind_text(value_, 2, fold.data(), static_cast<int>(fold.size()), SQLITE_STATIC);
        int n = -1;
        if (sqlite3_step(value_) == SQLITE_ROW) {
            n = sqlite3_column_bytes(value_, 1);
            if (static_cast<size_t>(n) <= size)
                std::memcpy(buf, sqlite3_column_blob(value_, 1), static_cast<size_t>(n));
        }
        sqlite3_reset(value_);
        return n;
    }
    // Copies every value of a key into a scratch buffer; returns the number of values.
    int values(sqlite3_int64 key, std::array<char, 4096>& scratch) {
        int n = 0;
        sqlite3_bind_int64(values_, 1, key);
        while (sqlite3_step(values_) == SQLITE_ROW) {
            const int size = sqlite3_column_bytes(values_, 2);
            std::memcpy(scratch.data(), sqlite3_column_blob(values_, 2),
                        std::min<size_t>(static_cast<size_t>(size), scratch.size()));
            benchmark::DoNotOptimize(sqlite3_column_text(values_, 0));
            benchmark::DoNotOptimize(scratch);
            ++n;
        }
        sqlite3_reset(values_);
        return n;
    }

    // One read transaction around a whole load, as the library's own snapshot.
    void begin() { sqlite3_exec(db_, "BEGIN", nullptr, nullptr, nullptr); }
    void end() { sqlite3_exec(db_, "COMMIT", nullptr, nullptr, nullptr); }
    // A commit from this connection, as another process would make it.
    void commitSomething() {
        sqlite3_exec(db_, "UPDATE keys SET mtime = mtime + 1 WHERE id = 1", nullptr, nullptr,
                     nullptr);
    }

  private:
    void prepare(sqlite3_stmt*& s, const char* sql) {
        if (sqlite3_prepare_v3(db_, sql, -1, SQLITE_PREPARE_PERSISTENT, &s, nullptr) != SQLITE_OK) {
            std::fprintf(stderr, "prepare failed: %s\n", sqlite3_errmsg(db_));
            std::abort();
        }
    }
    sqlite3* db_ = nullptr;
    sqlite3_stmt* findChild_ = nullptr;
    sqlite3_stmt* children_ = nullptr;
    sqlite3_stmt* value_ = nullptr;
    sqlite3_stmt* values_ = nullptr;
};

}  // namespace zolbench
