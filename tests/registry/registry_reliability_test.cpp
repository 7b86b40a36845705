// Registry reliability: a writer killed at random moments, several processes reading and
// writing at once, and stores that are missing, cut short or overwritten.
#include <signal.h>
#include <sqlite3.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <random>
#include <set>
#include <sstream>
#include <thread>
#include <tuple>

#include "child_process.h"
#include "registry_fixture.h"

namespace fs = std::filesystem;
using namespace regtest;

namespace {

// A letter and a number ("T12"). Built by appending: GCC 12 at -O3 takes "T" + std::to_string(n)
// for an overlapping copy (-Wrestrict).
std::string tagged(char letter, std::size_t number) {
    std::string name(1, letter);
    name += std::to_string(number);
    return name;
}

// The 12-value record that the crash test rewrites: every value names its generation and its
// place, followed by bytes derived from both, so a mixed or damaged record shows.
constexpr int kRecordValues = 12;

std::string recordValueName(int i) {
    return "Field" + std::to_string(i);
}

std::string recordValue(uint64_t gen, int i) {
    std::string v = std::to_string(gen) + ":" + std::to_string(i) + ":";
    for (size_t j = v.size(); j < 256; ++j)
        v += static_cast<char>((gen * 31 + static_cast<uint64_t>(i) * 7 + j) & 0xff);
    return v;
}

// The generation a value holds, or -1 when it is not a well-formed value of field i.
int64_t recordGeneration(const std::string& v, int i) {
    const int64_t gen = std::atoll(v.c_str());
    return v == recordValue(static_cast<uint64_t>(gen), i) ? gen : -1;
}

// In a child process: ends it with status 1 and says why when r is not ERROR_SUCCESS.
void need(LONG r, const std::string& what) {
    if (r != ERROR_SUCCESS) {
        std::fprintf(stderr, "child %d: %s: %ld\n", getpid(), what.c_str(), static_cast<long>(r));
        _exit(1);
    }
}

// Writes the records with generations from gen + 1 on, one transaction each, and reports each
// commit on standard output, until it is killed.
int recordWriter(int records, uint64_t gen) {
    Key base;
    need(open(base, "SOFTWARE\\CrashTest", KEY_ALL_ACCESS), "open");
    std::puts("ready");
    std::fflush(stdout);
    for (;;) {
        const int rec = static_cast<int>(++gen % static_cast<uint64_t>(records));
        const std::string name = "Rec" + std::to_string(rec);
        need(ZolRegBeginTransaction(), "begin");
        // Now and then the record is dropped and made anew inside the same transaction.
        if (gen % 5 == 0)
            need(RegDeleteKey(base.get(), name.c_str()), "RegDeleteKey");
        Key k = create(name, base.get());
        for (int i = 0; i < kRecordValues; ++i) {
            const std::string v = recordValue(gen, i);
            need(RegSetValueEx(k.get(), recordValueName(i).c_str(), 0, REG_BINARY,
                               reinterpret_cast<const BYTE*>(v.data()),
                               static_cast<DWORD>(v.size())),
                 "RegSetValueEx");
        }
        k.reset();
        need(ZolRegCommitTransaction(), "commit");
        const std::string line = std::to_string(rec) + " " + std::to_string(gen) + "\n";
        if (write(1, line.data(), line.size()) < 0)  // a lost report only weakens the check
            continue;
    }
}

// The generation of a whole record, or -1 (with the reason in *why) when it is not whole.
int64_t recordState(int rec, std::string* why) {
    Key k;
    if (LONG r = open(k, "SOFTWARE\\CrashTest\\Rec" + std::to_string(rec)); r != 0) {
        *why = "record key missing: " + std::to_string(r);
        return -1;
    }
    std::set<int64_t> gens;
    for (int i = 0; i < kRecordValues; ++i) {
        auto v = readBytes(k.get(), recordValueName(i).c_str());
        gens.insert(v ? recordGeneration(*v, i) : -1);
    }
    const size_t count = valueNames(k.get()).size();
    if (gens.size() == 1 && *gens.begin() >= 0 && count == kRecordValues)
        return *gens.begin();
    *why = std::to_string(count) + " values, generations " + std::to_string(*gens.begin()) + ".." +
           std::to_string(*gens.rbegin());
    return -1;
}

TEST_F(RegistryTest, AWriterKilledAtAnyMomentLeavesEveryRecordWhole) {
    constexpr int kRecords = 4, kKills = 200;
    const unsigned seed = std::random_device{}();
    SCOPED_TRACE("random seed " + std::to_string(seed));
    std::mt19937 rng(seed);
    // A commit waits for the disk (milliseconds), so the delays span several transactions.
    std::uniform_int_distribution<int> delayUs(0, 30000);
    std::map<int, int64_t> acked;
    Key base = create("SOFTWARE\\CrashTest");
    for (int rec = 0; rec < kRecords; ++rec) {
        Key k = create("Rec" + std::to_string(rec), base.get());
        for (int i = 0; i < kRecordValues; ++i) {
            const std::string v = recordValue(static_cast<uint64_t>(rec), i);
            ASSERT_EQ(RegSetValueEx(k.get(), recordValueName(i).c_str(), 0, REG_BINARY,
                                    reinterpret_cast<const BYTE*>(v.data()),
                                    static_cast<DWORD>(v.size())),
                      ERROR_SUCCESS);
        }
        acked[rec] = rec;
    }
    uint64_t commits = 0;
    for (int run = 0; run < kKills; ++run) {
        platformtest::ChildProcess writer(
            [&] { return recordWriter(kRecords, (run + 1) * 1000000); });
        ASSERT_EQ(writer.readLine(60000), "ready");
        // A random moment somewhere in the writer's stream of transactions.
        std::this_thread::sleep_for(std::chrono::microseconds(delayUs(rng)));
        writer.killNow();
        ASSERT_EQ(writer.wait(), 128 + SIGKILL) << "the writer stopped by itself";
        while (auto line = writer.readLine(0)) {
            int rec = 0;
            int64_t gen = 0;
            std::istringstream(*line) >> rec >> gen;
            acked[rec] = std::max(acked[rec], gen);
            ++commits;
        }
        // Now and then a fresh connection, which checks and recovers the store from scratch.
        if (run % 50 == 49)
            ZolRegCloseStore();
        ASSERT_EQ(ZolRegCheckStore(1), ERROR_SUCCESS) << "after kill " << run;
        for (int r = 0; r < kRecords; ++r) {
            std::string why;
            const int64_t state = recordState(r, &why);
            ASSERT_GE(state, 0) << "record " << r << " after kill " << run << ": " << why;
            EXPECT_EQ(state % kRecords, r);
            ASSERT_GE(state, acked[r]) << "record " << r << " lost a committed write";
        }
    }
    EXPECT_GT(commits, static_cast<uint64_t>(kKills / 2)) << "the writer hardly ever committed";
}

// Every transaction rewrites the shared record, the writer's counter and a log entry; every
// fifth also writes a value on its own, outside any transaction.
void writerChild(int w, int transactions) {
    HKEY rec = nullptr, counters = nullptr, log = nullptr;
    const std::string counter = "W" + std::to_string(w);
    need(RegCreateKey(HKEY_LOCAL_MACHINE, "SOFTWARE\\Shared\\Record", &rec), "create");
    need(RegCreateKey(HKEY_LOCAL_MACHINE, "SOFTWARE\\Shared\\Counters", &counters), "create");
    need(RegCreateKey(HKEY_LOCAL_MACHINE, ("SOFTWARE\\Shared\\Log\\" + counter).c_str(), &log),
         "create");
    for (int t = 1; t <= transactions; ++t) {
        need(ZolRegBeginTransaction(), "begin");
        for (int i = 0; i < kRecordValues; ++i)
            need(setString(rec, recordValueName(i).c_str(), counter + ":" + std::to_string(t)),
                 "set");
        need(setDword(counters, counter.c_str(), static_cast<DWORD>(t)), "set");
        need(setDword(log, tagged('T', t).c_str(), static_cast<DWORD>(t)), "set");
        need(ZolRegCommitTransaction(), "commit");
        if (t % 5 == 0)
            need(setDword(counters, ("Last" + counter).c_str(), static_cast<DWORD>(t)), "set");
    }
}

// Reads the shared record whole inside a transaction, and the counters one by one outside,
// which may only ever grow.
void readerChild(int writers, int transactions) {
    Key rec, counters;
    need(open(rec, "SOFTWARE\\Shared\\Record"), "open");
    need(open(counters, "SOFTWARE\\Shared\\Counters"), "open");
    std::vector<DWORD> last(static_cast<size_t>(writers), 0);
    for (int t = 0; t < transactions; ++t) {
        need(ZolRegBeginTransaction(), "begin");
        std::set<std::string> tags;
        for (int i = 0; i < kRecordValues; ++i)
            tags.insert(readString(rec.get(), recordValueName(i).c_str()).value_or("?"));
        need(ZolRegCommitTransaction(), "commit");
        need(tags.size() == 1 && !tags.count("?") ? 0 : 1, "torn record " + *tags.begin());
        for (size_t w = 0; w < last.size(); ++w) {
            auto v = readDword(counters.get(), tagged('W', w).c_str());
            need(v || last[w] == 0 ? 0 : 1, "counter query");
            need(v.value_or(0) >= last[w] ? 0 : 1, "counter went back");
            last[w] = v.value_or(0);
        }
    }
}

TEST_F(RegistryTest, ConcurrentWritersAndReadersLoseNothing) {
    constexpr int kWriters = 4, kReaders = 2, kTransactions = 500;
    Key rec = create("SOFTWARE\\Shared\\Record"), counters = create("SOFTWARE\\Shared\\Counters");
    for (int i = 0; i < kRecordValues; ++i)
        ASSERT_EQ(setString(rec.get(), recordValueName(i).c_str(), "seed"), ERROR_SUCCESS);
    // The children inherit this process's open connection and must leave it alone.
    std::vector<std::unique_ptr<platformtest::ChildProcess>> children;
    for (int i = 0; i < kWriters + kReaders; ++i) {
        children.push_back(std::make_unique<platformtest::ChildProcess>([&] {
            i < kWriters ? writerChild(i, kTransactions) : readerChild(kWriters, kTransactions);
            return 0;
        }));
    }
    for (auto& child : children)
        EXPECT_EQ(child->wait(), 0);

    ASSERT_EQ(ZolRegCheckStore(1), ERROR_SUCCESS);
    std::set<std::string> lastTags, tags;
    for (int w = 0; w < kWriters; ++w) {
        const std::string name = "W" + std::to_string(w);
        EXPECT_EQ(readDword(counters.get(), name.c_str()), static_cast<DWORD>(kTransactions));
        EXPECT_EQ(readDword(counters.get(), ("Last" + name).c_str()),
                  static_cast<DWORD>(kTransactions));
        Key log;
        ASSERT_EQ(open(log, "SOFTWARE\\Shared\\Log\\" + name), ERROR_SUCCESS);
        EXPECT_EQ(valueNames(log.get()).size(), static_cast<size_t>(kTransactions));
        for (int t = 1; t <= kTransactions; ++t) {
            ASSERT_EQ(readDword(log.get(), ("T" + std::to_string(t)).c_str()),
                      static_cast<DWORD>(t))
                << name << " lost transaction " << t;
        }
        lastTags.insert(name + ":" + std::to_string(kTransactions));
    }
    for (int i = 0; i < kRecordValues; ++i)
        tags.insert(readString(rec.get(), recordValueName(i).c_str()).value_or("?"));
    ASSERT_EQ(tags.size(), 1u);
    EXPECT_TRUE(lastTags.count(*tags.begin())) << *tags.begin() << " is no writer's last record";
}

TEST_F(RegistryTest, ChangesByAnotherProcessAreSeenAtOnce) {
    Key k = create("SOFTWARE\\Seen");
    for (DWORD round = 1; round <= 20; ++round) {
        const std::string fresh = "New" + std::to_string(round);
        Key sub = create("Sub", k.get());
        // Read everything once, so that this process holds it all as last read.
        ASSERT_EQ(setDword(k.get(), "v", round * 2), ERROR_SUCCESS);
        ASSERT_EQ(readDword(k.get(), "v"), round * 2);
        ASSERT_EQ(subkeys(k.get()), Names{"Sub"});
        platformtest::ChildProcess other([&] {
            Key h;
            need(open(h, "SOFTWARE\\Seen", KEY_ALL_ACCESS), "open");
            need(setDword(h.get(), "v", round * 2 + 1), "set");
            need(RegDeleteKey(h.get(), "Sub"), "delete");
            return create(fresh, h.get()).get() != nullptr ? 0 : 1;
        });
        ASSERT_EQ(other.wait(), 0);
        EXPECT_EQ(readDword(k.get(), "v"), round * 2 + 1) << "round " << round;
        EXPECT_EQ(subkeys(k.get()), Names{fresh});
        DWORD size = 0;
        EXPECT_EQ(RegQueryValueEx(sub.get(), "x", nullptr, nullptr, nullptr, &size),
                  ERROR_KEY_DELETED);
        ASSERT_EQ(RegDeleteKey(k.get(), fresh.c_str()), ERROR_SUCCESS);
    }
}

// Reading a subtree ahead changes nothing that later reads return: names in the store's order
// and spelling, values, a commit of another process made after it, and a key deleted since.
TEST_F(RegistryTest, ReadingASubtreeAheadKeepsEveryReadAsTheStoreHasIt) {
    Key top = create("SOFTWARE\\Ahead");
    for (const char* source : {"beta", "Alpha", "gamma"}) {
        Key s = create(source, top.get());
        for (DWORD e = 0; e < 3; ++e) {
            Key ev = create("E" + std::to_string(e), s.get());
            ASSERT_EQ(setDword(ev.get(), "Level", e), ERROR_SUCCESS);
            Key dest = create("Dest", ev.get());
            ASSERT_EQ(setDword(dest.get(), "ID1", 1), ERROR_SUCCESS);
        }
    }
    ZolRegCloseStore();  // nothing cached: the read-ahead fills the cache from the store
    Key read;
    ASSERT_EQ(open(read, "SOFTWARE\\Ahead", KEY_READ), ERROR_SUCCESS);
    ASSERT_EQ(ZolRegReadAhead(read.get()), ERROR_SUCCESS);
    EXPECT_EQ(subkeys(read.get()), (Names{"Alpha", "beta", "gamma"}));
    Key ev;
    ASSERT_EQ(open(ev, "SOFTWARE\\Ahead\\beta\\E2", KEY_READ), ERROR_SUCCESS);
    EXPECT_EQ(readDword(ev.get(), "level"), 2u);
    EXPECT_EQ(subkeys(ev.get()), Names{"Dest"});

    platformtest::ChildProcess other([&] {
        Key h;
        need(open(h, "SOFTWARE\\Ahead\\beta\\E2", KEY_ALL_ACCESS), "open");
        need(setDword(h.get(), "Level", 7), "set");
        Key g;
        need(open(g, "SOFTWARE\\Ahead\\gamma", KEY_ALL_ACCESS), "open gamma");
        need(RegDeleteKey(g.get(), "E0\\Dest"), "delete dest");
        return RegDeleteKey(g.get(), "E0") == ERROR_SUCCESS ? 0 : 1;
    });
    ASSERT_EQ(other.wait(), 0);
    ASSERT_EQ(ZolRegReadAhead(read.get()), ERROR_SUCCESS);
    EXPECT_EQ(readDword(ev.get(), "Level"), 7u);
    Key gamma;
    ASSERT_EQ(open(gamma, "SOFTWARE\\Ahead\\gamma", KEY_READ), ERROR_SUCCESS);
    EXPECT_EQ(subkeys(gamma.get()), (Names{"E1", "E2"}));

    // A key deleted under its handle: the read-ahead says so, as any read would.
    Key doomed = create("SOFTWARE\\Ahead\\Doomed");
    ASSERT_EQ(RegDeleteKey(top.get(), "Doomed"), ERROR_SUCCESS);
    EXPECT_EQ(ZolRegReadAhead(doomed.get()), ERROR_KEY_DELETED);
    EXPECT_EQ(ZolRegReadAhead(nullptr), ERROR_INVALID_HANDLE);
}

// Every entry point against the current store, as (name, result).
std::vector<std::pair<std::string, LONG>> callEveryEntryPoint(HKEY opened) {
    const HKEY hklm = HKEY_LOCAL_MACHINE;
    HKEY h = nullptr;
    char name[64];
    DWORD cch = sizeof name, size = sizeof name;
    auto buf = reinterpret_cast<BYTE*>(name);
    std::vector<std::pair<std::string, LONG>> out = {
        {"RegOpenKeyEx", RegOpenKeyEx(hklm, "Data", 0, KEY_READ, &h)},
        {"RegCreateKey", RegCreateKey(hklm, "New", &h)},
        {"RegQueryValueEx", RegQueryValueEx(hklm, "v", nullptr, nullptr, buf, &size)},
        {"RegSetValueEx", setDword(hklm, "v", 1)},
        {"RegDeleteValue", RegDeleteValue(hklm, "v")},
        {"RegDeleteKey", RegDeleteKey(hklm, "Data")},
        {"RegEnumKeyEx", RegEnumKeyEx(hklm, 0, name, &cch, nullptr, nullptr, nullptr, nullptr)},
        {"RegQueryValueEx(open)", RegQueryValueEx(opened, "Value0", nullptr, nullptr, buf, &size)},
        {"RegSetValueEx(open)", setDword(opened, "v", 1)},
        {"RegEnumValue(open)",
         RegEnumValue(opened, 0, name, &cch, nullptr, nullptr, nullptr, nullptr)},
        {"ZolRegBeginTransaction", ZolRegBeginTransaction()},
        {"ZolRegCheckStore(0)", ZolRegCheckStore(0)},
        {"ZolRegCheckStore(1)", ZolRegCheckStore(1)},
    };
    if (h != nullptr)
        RegCloseKey(h);
    return out;
}

TEST_F(RegistryTest, MissingOrDamagedStoresGiveErrorsAndStayUntouched) {
    const fs::path store = root_.store();
    auto garbage = [](size_t n, unsigned seed) {
        std::mt19937 rng(seed);
        std::string s(n, '\0');
        for (char& c : s)
            c = static_cast<char>(rng());
        return s;
    };
    const std::set<LONG> corrupt{ERROR_REGISTRY_CORRUPT},
        either{ERROR_REGISTRY_CORRUPT, ERROR_REGISTRY_IO_FAILED};
    const std::vector<std::tuple<std::string, std::function<void()>, std::set<LONG>>> cases = {
        {"missing", [&] { fs::remove(store); }, {ERROR_REGISTRY_IO_FAILED}},
        {"empty", [&] { fs::resize_file(store, 0); }, corrupt},
        {"cut to 100 bytes", [&] { fs::resize_file(store, 100); }, either},
        {"cut in half", [&] { fs::resize_file(store, fs::file_size(store) / 2); }, either},
        {"garbage", [&] { zoltest::writeFile(store, garbage(fs::file_size(store), 1)); }, corrupt},
        {"garbage page",
         [&] {
             std::string bytes = zoltest::readFile(store);
             zoltest::writeFile(store, bytes.replace(4096 * 3, 4096, garbage(4096, 2)));
         },
         either},
        {"another program's database",
         [&] {
             fs::remove(store);
             sqlite3* db = nullptr;
             sqlite3_open(store.c_str(), &db);
             sqlite3_exec(db, "CREATE TABLE t(x); INSERT INTO t VALUES (1);", nullptr, nullptr,
                          nullptr);
             sqlite3_close(db);
         },
         corrupt},
    };
    for (const auto& [what, damage, expected] : cases) {
        SCOPED_TRACE(what);
        ASSERT_EQ(ZolRegBeginTransaction(), ERROR_SUCCESS);
        for (int i = 0; i < 300; ++i) {
            Key k = create("Data\\Item" + std::to_string(i));
            for (int j = 0; j < 3; ++j)
                ASSERT_EQ(setString(k.get(), ("Value" + std::to_string(j)).c_str(),
                                    std::string(40, static_cast<char>('a' + j))),
                          ERROR_SUCCESS);
        }
        ASSERT_EQ(ZolRegCommitTransaction(), ERROR_SUCCESS);
        Key opened;
        ASSERT_EQ(open(opened, "Data\\Item7", KEY_ALL_ACCESS), ERROR_SUCCESS);
        ZolRegCloseStore();
        ASSERT_FALSE(fs::exists(store.string() + "-wal")) << "closing leaves the journal";
        damage();
        const std::string before = fs::exists(store) ? zoltest::readFile(store) : "<none>";
        for (const auto& [call, result] : callEveryEntryPoint(opened.get()))
            EXPECT_TRUE(expected.count(result)) << call << " returned " << result;
        EXPECT_EQ(ZolRegCommitTransaction(), ERROR_INVALID_STATE);
        const std::string after = fs::exists(store) ? zoltest::readFile(store) : "<none>";
        EXPECT_TRUE(before == after) << "a damaged or missing store was written to";
        // Only an explicit removal replaces it.
        if (what == "missing") {
            EXPECT_EQ(ZolRegRemoveStore(), ERROR_REGISTRY_IO_FAILED);
        } else {
            EXPECT_EQ(ZolRegCreateStore(), ERROR_ALREADY_EXISTS);
            EXPECT_EQ(ZolRegRemoveStore(), ERROR_SUCCESS);
        }
        ASSERT_EQ(ZolRegCreateStore(), ERROR_SUCCESS);
        EXPECT_EQ(setDword(opened.get(), "v", 1), ERROR_KEY_DELETED) << "handle into a new store";
    }
}

}  // namespace
