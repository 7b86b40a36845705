// Registry reads through the zolwin API against the same reads done with raw SQLite prepared
// statements on the same store file, in the same run: a point read of one REG_DWORD, and a
// 100-key table of 12 values each (the shape of the destination list).
// Run: registry_bench [--benchmark_filter=...]; it makes and removes its own product root.
#include <benchmark/benchmark.h>
#include <sqlite3.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <string>
#include <vector>

#include "raw_store.h"
#include "regpaths.h"
#include "zolwin.h"

namespace {

constexpr const char* kPointKey = ZOL_KEY_BASESETTING;
constexpr const char* kPointValue = "ShutdownDelay";
constexpr const char* kTableKey = ZOL_KEY_ID_LIST;
constexpr int kTableKeys = 100;
constexpr int kTableValues = 12;

std::string valueName(int i) {
    return "Field" + std::to_string(i);
}

// A temporary product root with a populated store, removed at exit.
class Fixture {
  public:
    Fixture() {
        std::string dir = "/tmp/zolbench-XXXXXX";
        if (mkdtemp(dir.data()) == nullptr)
            std::abort();
        root_ = dir;
        setenv("ZolDir", dir.c_str(), 1);
        check(ZolRegCreateStore(), "ZolRegCreateStore");
        check(ZolRegBeginTransaction(), "ZolRegBeginTransaction");
        HKEY k = nullptr;
        check(RegCreateKey(HKEY_LOCAL_MACHINE, kPointKey, &k), "RegCreateKey");
        DWORD delay = 300;
        check(RegSetValueEx(k, kPointValue, 0, REG_DWORD, reinterpret_cast<BYTE*>(&delay), 4),
              "RegSetValueEx");
        RegCloseKey(k);
        for (int d = 0; d < kTableKeys; ++d) {
            char name[128];
            std::snprintf(name, sizeof name, "%s\\DEST%03d", kTableKey, d);
            check(RegCreateKey(HKEY_LOCAL_MACHINE, name, &k), "RegCreateKey");
            for (int v = 0; v < kTableValues; ++v) {
                if (v % 3 == 0) {
                    DWORD n = static_cast<DWORD>(d * 100 + v);
                    check(RegSetValueEx(k, valueName(v).c_str(), 0, REG_DWORD,
                                        reinterpret_cast<BYTE*>(&n), 4),
                          "RegSetValueEx");
                } else {
                    const std::string text = "mail" + std::to_string(d) + "@example.org/" +
                                             std::string(static_cast<size_t>(v) * 4, 'x');
                    check(RegSetValueEx(k, valueName(v).c_str(), 0, REG_SZ,
                                        reinterpret_cast<const BYTE*>(text.c_str()),
                                        static_cast<DWORD>(text.size() + 1)),
                          "RegSetValueEx");
                }
            }
            RegCloseKey(k);
        }
        check(ZolRegCommitTransaction(), "ZolRegCommitTransaction");
        char path[4096];
        check(ZolRegStorePath(path, sizeof path), "ZolRegStorePath");
        store_ = path;
    }
    ~Fixture() {
        ZolRegCloseStore();
        std::error_code ec;
        std::filesystem::remove_all(root_, ec);
    }
    const std::string& store() const { return store_; }

  private:
    static void check(LONG r, const char* what) {
        if (r != ERROR_SUCCESS) {
            std::fprintf(stderr, "%s failed: %ld\n", what, static_cast<long>(r));
            std::abort();
        }
    }
    std::filesystem::path root_;
    std::string store_;
};

Fixture& fixture() {
    static Fixture f;
    return f;
}

using Raw = zolbench::RawStore;

void pointRegistry(benchmark::State& state, bool cold) {
    Raw other(fixture().store());
    for (auto _ : state) {
        if (cold) {
            state.PauseTiming();
            other.commitSomething();
            state.ResumeTiming();
        }
        HKEY k = nullptr;
        DWORD v = 0, size = sizeof v, type = 0;
        if (RegOpenKeyEx(HKEY_LOCAL_MACHINE, kPointKey, 0, KEY_READ, &k) != ERROR_SUCCESS ||
            RegQueryValueEx(k, kPointValue, nullptr, &type, reinterpret_cast<BYTE*>(&v), &size) !=
                ERROR_SUCCESS) {
            state.SkipWithError("read failed");
            break;
        }
        RegCloseKey(k);
        benchmark::DoNotOptimize(v);
    }
}
void BM_PointRead_Registry(benchmark::State& state) {
    pointRegistry(state, false);
}
void BM_PointRead_Registry_AfterOtherCommit(benchmark::State& state) {
    pointRegistry(state, true);
}
BENCHMARK(BM_PointRead_Registry);
BENCHMARK(BM_PointRead_Registry_AfterOtherCommit);

void pointRaw(benchmark::State& state, bool cold) {
    Raw raw(fixture().store());
    Raw other(fixture().store());
    const std::string fold = "shutdowndelay";
    for (auto _ : state) {
        if (cold) {
            state.PauseTiming();
            other.commitSomething();
            state.ResumeTiming();
        }
        DWORD v = 0;
        sqlite3_int64 id = raw.resolve(kPointKey);
        if (id < 0 || raw.value(id, fold, reinterpret_cast<BYTE*>(&v), sizeof v) != 4) {
            state.SkipWithError("read failed");
            break;
        }
        benchmark::DoNotOptimize(v);
    }
}
void BM_PointRead_RawSqlite(benchmark::State& state) {
    pointRaw(state, false);
}
void BM_PointRead_RawSqlite_AfterOtherCommit(benchmark::State& state) {
    pointRaw(state, true);
}
BENCHMARK(BM_PointRead_RawSqlite);
BENCHMARK(BM_PointRead_RawSqlite_AfterOtherCommit);

// Reads the whole table as a screen would; returns the number of values read.
int readTable(const std::vector<std::string>& names) {
    int rows = 0;
    {
        HKEY list = nullptr;
        if (RegOpenKeyEx(HKEY_LOCAL_MACHINE, kTableKey, 0, KEY_READ, &list) != ERROR_SUCCESS) {
            return 0;
        }
        char name[ZOL_MAX_KEY_NAME + 1];
        DWORD cch = sizeof name;
        for (DWORD i = 0;
             RegEnumKeyEx(list, i, name, &cch, nullptr, nullptr, nullptr, nullptr) == ERROR_SUCCESS;
             ++i, cch = sizeof name) {
            HKEY dest = nullptr;
            if (RegOpenKeyEx(list, name, 0, KEY_READ, &dest) != ERROR_SUCCESS)
                break;
            for (const auto& n : names) {
                std::array<BYTE, 257> buf;
                DWORD size = buf.size(), type = 0;
                if (RegQueryValueEx(dest, n.c_str(), nullptr, &type, buf.data(), &size) ==
                    ERROR_SUCCESS) {
                    ++rows;
                }
                benchmark::DoNotOptimize(buf);
            }
            RegCloseKey(dest);
        }
        RegCloseKey(list);
    }
    return rows;
}

// With cold=true another connection commits before every round, so nothing read before
// may be reused: the worst case, every key read from SQLite again.
void tableRegistry(benchmark::State& state, bool cold) {
    Raw other(fixture().store());
    std::vector<std::string> names;
    for (int v = 0; v < kTableValues; ++v)
        names.push_back(valueName(v));
    for (auto _ : state) {
        if (cold) {
            state.PauseTiming();
            other.commitSomething();
            state.ResumeTiming();
        }
        if (readTable(names) != kTableKeys * kTableValues) {
            state.SkipWithError("table incomplete");
            break;
        }
    }
}
void BM_Table_Registry(benchmark::State& state) {
    tableRegistry(state, false);
}
void BM_Table_Registry_AfterOtherCommit(benchmark::State& state) {
    tableRegistry(state, true);
}
BENCHMARK(BM_Table_Registry);
BENCHMARK(BM_Table_Registry_AfterOtherCommit);

void tableRaw(benchmark::State& state, bool cold) {
    Raw raw(fixture().store());
    Raw other(fixture().store());
    std::vector<std::string> folds;
    for (int v = 0; v < kTableValues; ++v)
        folds.push_back("field" + std::to_string(v));
    for (auto _ : state) {
        if (cold) {
            state.PauseTiming();
            other.commitSomething();
            state.ResumeTiming();
        }
        const sqlite3_int64 list = raw.resolve(kTableKey);
        int rows = 0;
        sqlite3_stmt* e = raw.childrenQuery();
        sqlite3_bind_int64(e, 1, list);
        while (sqlite3_step(e) == SQLITE_ROW) {
            const sqlite3_int64 id = sqlite3_column_int64(e, 0);
            benchmark::DoNotOptimize(sqlite3_column_text(e, 1));
            for (const auto& f : folds) {
                std::array<BYTE, 257> buf;
                if (raw.value(id, f, buf.data(), buf.size()) >= 0)
                    ++rows;
                benchmark::DoNotOptimize(buf);
            }
        }
        sqlite3_reset(e);
        if (rows != kTableKeys * kTableValues) {
            state.SkipWithError("table incomplete");
            break;
        }
    }
}
void BM_Table_RawSqlite(benchmark::State& state) {
    tableRaw(state, false);
}
void BM_Table_RawSqlite_AfterOtherCommit(benchmark::State& state) {
    tableRaw(state, true);
}
BENCHMARK(BM_Table_RawSqlite);
BENCHMARK(BM_Table_RawSqlite_AfterOtherCommit);

}  // namespace

BENCHMARK_MAIN();
