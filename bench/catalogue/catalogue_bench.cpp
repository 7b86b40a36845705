// The whole-table loads the event and destination screens make, at scale: 100 destinations, 2,000
// agent events in 100 sources and 1,000 syslog items in 50 sources, some bound to destinations.
// Each load runs through the loaded rptset.dll and as a raw SQLite read of the same rows on the
// same store file, in the same run; "AfterOtherCommit" variants let another connection commit
// before every round, so that nothing read before may be reused. The loads also report the bytes
// they hand back (malloc_usable_size over the result) against the records' own size plus the
// destination IDs they hold.
// Run: catalogue_bench [--benchmark_filter=...]; it makes and removes its own product root.
#include <benchmark/benchmark.h>
#include <malloc.h>
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
#include "rptset_api.h"
#include "zolwin.h"

namespace {

constexpr const char* kAlertMan = ZOL_KEY_ALERTMAN;
constexpr int kDestinations = 100;
constexpr int kAgentSources = 100;
constexpr int kEventsPerSource = 20;
constexpr int kSyslogSources = 50;
constexpr int kItemsPerSource = 20;

void check(LONG r, const char* what) {
    if (r != ERROR_SUCCESS) {
        std::fprintf(stderr, "%s failed: %ld\n", what, static_cast<long>(r));
        std::abort();
    }
}

void setText(HKEY key, const char* name, const std::string& text) {
    check(RegSetValueEx(key, name, 0, REG_SZ, reinterpret_cast<const BYTE*>(text.c_str()),
                        static_cast<DWORD>(text.size() + 1)),
          "RegSetValueEx");
}
void setDword(HKEY key, const char* name, DWORD value) {
    check(RegSetValueEx(key, name, 0, REG_DWORD, reinterpret_cast<const BYTE*>(&value), 4),
          "RegSetValueEx");
}
HKEY create(const std::string& path) {
    HKEY key = nullptr;
    check(RegCreateKey(HKEY_LOCAL_MACHINE, path.c_str(), &key), "RegCreateKey");
    return key;
}
std::string destID(int d) {
    char name[32];
    std::snprintf(name, sizeof name, "Dest%03d", d);
    return name;
}

// Every third event or item reports to one to three destinations.
void bindDestinations(const std::string& eventKey, int n) {
    if (n % 3 != 0)
        return;
    HKEY dest = create(eventKey + "\\Dest");
    for (int k = 0; k <= n % 3 + (n % 7 == 0 ? 2 : 0); ++k)
        setDword(dest, destID((n + k * 37) % kDestinations).c_str(), 1);
    RegCloseKey(dest);
}

// A temporary product root whose store holds the tables, removed at exit; rptset.dll loaded.
class Fixture {
  public:
    Fixture() {
        std::string dir = "/tmp/zolcatbench-XXXXXX";
        if (mkdtemp(dir.data()) == nullptr)
            std::abort();
        root_ = dir;
        setenv("ZolDir", dir.c_str(), 1);
        check(ZolRegCreateStore(), "ZolRegCreateStore");
        check(ZolRegBeginTransaction(), "ZolRegBeginTransaction");
        const std::string base = kAlertMan;
        for (int d = 0; d < kDestinations; ++d) {
            HKEY k = create(base + "\\Destination\\ID_LIST\\" + destID(d));
            setText(k, "Method", "MANAGER (SNMP)");
            setText(k, "Address", "192.0.2." + std::to_string(d + 1));
            setText(k, "User", "operator" + std::to_string(d));
            setDword(k, "Port", 162);
            setDword(k, "HourMask", 0xFFFFFF);
            setDword(k, "RetryInterval", 5);
            setDword(k, "RetryTime", 72);
            RegCloseKey(k);
        }
        int n = 0;
        for (int s = 0; s < kAgentSources; ++s) {
            for (int e = 0; e < kEventsPerSource; ++e, ++n) {
                char path[256];
                std::snprintf(path, sizeof path, "%s\\AgentEvent\\AgentSource%03d\\%c%07X",
                              kAlertMan, s, "48C"[e % 3], n);
                HKEY k = create(path);
                setText(k, "TrapName", "zolTrapOfEvent" + std::to_string(n));
                setText(k, "DealMethod",
                        n % 2 ? NO_US_DEALMETHOD : "Check the unit named in the event.");
                setDword(k, "Action", n % 3);
                setDword(k, "ErrKind", 1 + n % 4);
                setDword(k, "Level", n % 9);
                RegCloseKey(k);
                bindDestinations(path, n);
            }
        }
        for (int s = 0; s < kSyslogSources; ++s) {
            for (int e = 0; e < kItemsPerSource; ++e, ++n) {
                char path[256];
                std::snprintf(path, sizeof path, "%s\\SyslogMonitor\\syslog-source-%02d\\%c%07X",
                              kAlertMan, s, "48C"[e % 3], n);
                HKEY k = create(path);
                setText(k, "Keyword1", "I/O error");
                setText(k, "Keyword2", n % 2 ? "" : "sector " + std::to_string(n));
                setText(k, "Keyword3", "");
                setText(k, "TrapName", "sysTrapOfItem" + std::to_string(n));
                setText(k, "DealMethod", NO_US_DEALMETHOD);
                setDword(k, "Count", 1 + n % 5);
                setDword(k, "TimeTable", 0xFFFFFF);
                setDword(k, "Action", 0);
                setDword(k, "ErrKind", 2);
                setDword(k, "Level", 3);
                RegCloseKey(k);
                bindDestinations(path, n);
            }
        }
        check(ZolRegCommitTransaction(), "ZolRegCommitTransaction");
        char path[4096];
        check(ZolRegStorePath(path, sizeof path), "ZolRegStorePath");
        store_ = path;
        lib_ = LoadLibrary(RPTSET_LIBRARY);
        if (lib_ == nullptr) {
            std::fprintf(stderr, "LoadLibrary(%s): %s\n", RPTSET_LIBRARY, ZolLastLoadError());
            std::abort();
        }
    }
    ~Fixture() {
        FreeLibrary(lib_);
        ZolRegCloseStore();
        std::error_code ec;
        std::filesystem::remove_all(root_, ec);
    }
    const std::string& store() const { return store_; }
    template <class Fn>
    Fn* bind(const char* name) const {
        auto* fn = reinterpret_cast<Fn*>(GetProcAddress(lib_, name));
        if (fn == nullptr)
            std::abort();
        return fn;
    }

  private:
    std::filesystem::path root_;
    std::string store_;
    HMODULE lib_ = nullptr;
};

Fixture& fixture() {
    static Fixture f;
    return f;
}

using Raw = zolbench::RawStore;

// Raw read of a catalogue: every event's values and its Dest values, in one read transaction.
// Returns the number of events.
int rawCatalogue(Raw& raw, const std::string& root) {
    std::array<char, 4096> scratch;
    int events = 0;
    raw.begin();
    for (const auto& [source, sourceName] : raw.children(raw.resolve(root))) {
        benchmark::DoNotOptimize(sourceName.data());
        for (const auto& [event, eventName] : raw.children(source)) {
            benchmark::DoNotOptimize(eventName.data());
            raw.values(event, scratch);
            for (const auto& [dest, destName] : raw.children(event))
                raw.values(dest, scratch);
            ++events;
        }
    }
    raw.end();
    return events;
}
int rawDestinations(Raw& raw) {
    std::array<char, 4096> scratch;
    int ids = 0;
    raw.begin();
    for (const auto& [dest, name] :
         raw.children(raw.resolve(std::string(kAlertMan) + "\\Destination\\ID_LIST"))) {
        benchmark::DoNotOptimize(name.data());
        raw.values(dest, scratch);
        ++ids;
    }
    raw.end();
    return ids;
}

// Runs op once per round, with another connection committing first when cold.
template <class Op>
void rounds(benchmark::State& state, bool cold, Op&& op) {
    Raw other(fixture().store());
    for (auto _ : state) {
        if (cold) {
            state.PauseTiming();
            other.commitSomething();
            state.ResumeTiming();
        }
        if (!op()) {
            state.SkipWithError("load incomplete");
            break;
        }
    }
}

// Bytes handed back by a catalogue load against the records' own size plus their IDs; frees it.
template <class Record>
void freeCatalogue(Record** records, int count, size_t* handed, size_t* own) {
    *handed = malloc_usable_size(records);
    *own = 0;
    for (int i = 0; i < count; ++i) {
        *handed += malloc_usable_size(records[i]);
        *own += sizeof(Record);
        for (int s = 0; s < records[i]->DestNum; ++s) {
            *handed += malloc_usable_size(records[i]->lplpszDestID[s]);
            *own += std::strlen(records[i]->lplpszDestID[s]) + 1;
        }
        for (char* id : records[i]->lplpszDestID)
            std::free(id);
        std::free(records[i]);
    }
    std::free(records);
}

template <class Record, class Fn>
void catalogueLibrary(benchmark::State& state, const char* name, int expected, bool cold) {
    auto* getAll = fixture().bind<Fn>(name);
    size_t handed = 0, own = 0;
    rounds(state, cold, [&] {
        Record** records = nullptr;
        int count = 0, numSN = 0, numEvntID = 0;
        if (getAll(&records, &count, &numSN, &numEvntID) != 0)
            return false;
        freeCatalogue(records, count, &handed, &own);
        return count == expected;
    });
    state.counters["records"] = expected;
    state.counters["bytes_handed"] = static_cast<double>(handed);
    state.counters["bytes_own"] = static_cast<double>(own);
    state.counters["memory_ratio"] = own ? static_cast<double>(handed) / own : 0;
}

void BM_Agent_Library(benchmark::State& s) {
    catalogueLibrary<AgentEventData, GetAllAgntSetting_fn>(s, "GetAllAgntSetting",
                                                           kAgentSources * kEventsPerSource, false);
}
void BM_Agent_Library_AfterOtherCommit(benchmark::State& s) {
    catalogueLibrary<AgentEventData, GetAllAgntSetting_fn>(s, "GetAllAgntSetting",
                                                           kAgentSources * kEventsPerSource, true);
}
void BM_Syslog_Library(benchmark::State& s) {
    catalogueLibrary<SyslogData, GetAllSyslogSetting_fn>(s, "GetAllSyslogSetting",
                                                         kSyslogSources * kItemsPerSource, false);
}
void BM_Syslog_Library_AfterOtherCommit(benchmark::State& s) {
    catalogueLibrary<SyslogData, GetAllSyslogSetting_fn>(s, "GetAllSyslogSetting",
                                                         kSyslogSources * kItemsPerSource, true);
}

void catalogueRaw(benchmark::State& state, const char* key, int expected, bool cold) {
    Raw raw(fixture().store());
    const std::string root = std::string(kAlertMan) + "\\" + key;
    rounds(state, cold, [&] { return rawCatalogue(raw, root) == expected; });
}
void BM_Agent_RawSqlite(benchmark::State& s) {
    catalogueRaw(s, "AgentEvent", kAgentSources * kEventsPerSource, false);
}
void BM_Agent_RawSqlite_AfterOtherCommit(benchmark::State& s) {
    catalogueRaw(s, "AgentEvent", kAgentSources * kEventsPerSource, true);
}
void BM_Syslog_RawSqlite(benchmark::State& s) {
    catalogueRaw(s, "SyslogMonitor", kSyslogSources * kItemsPerSource, false);
}
void BM_Syslog_RawSqlite_AfterOtherCommit(benchmark::State& s) {
    catalogueRaw(s, "SyslogMonitor", kSyslogSources * kItemsPerSource, true);
}

void destinationsLibrary(benchmark::State& state, bool cold) {
    auto* getAll = fixture().bind<GetAllDestSetting_fn>("GetAllDestSetting");
    std::vector<DestData> records(DEST_MAX_RECORDS);
    std::vector<DestData*> table;
    for (DestData& r : records)
        table.push_back(&r);
    rounds(state, cold, [&] {
        int count = 0;
        return getAll(table.data(), &count) == 0 && count == kDestinations;
    });
    state.counters["records"] = kDestinations;
}
void BM_Destinations_Library(benchmark::State& s) {
    destinationsLibrary(s, false);
}
void BM_Destinations_Library_AfterOtherCommit(benchmark::State& s) {
    destinationsLibrary(s, true);
}
void destinationsRaw(benchmark::State& state, bool cold) {
    Raw raw(fixture().store());
    rounds(state, cold, [&] { return rawDestinations(raw) == kDestinations; });
}
void BM_Destinations_RawSqlite(benchmark::State& s) {
    destinationsRaw(s, false);
}
void BM_Destinations_RawSqlite_AfterOtherCommit(benchmark::State& s) {
    destinationsRaw(s, true);
}

BENCHMARK(BM_Destinations_Library)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Destinations_Library_AfterOtherCommit)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Destinations_RawSqlite)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Destinations_RawSqlite_AfterOtherCommit)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Agent_Library)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Agent_Library_AfterOtherCommit)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Agent_RawSqlite)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Agent_RawSqlite_AfterOtherCommit)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Syslog_Library)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Syslog_Library_AfterOtherCommit)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Syslog_RawSqlite)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Syslog_RawSqlite_AfterOtherCommit)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
