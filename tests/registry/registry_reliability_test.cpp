// Registry reliability: a writer killed at random moments, several processes reading and
// writing at once, and stores that are missing, cut short or overwritten.
#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sqlite3.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <functional>
#include <map>
#include <random>
#include <set>
#include <sstream>
#include <tuple>

#include "record_format.h"
#include "registry_fixture.h"

namespace fs = std::filesystem;
using namespace regtest;

namespace {

// The writer process of the crash test, reporting on a pipe that the test reads.
class Writer {
  public:
    Writer(int records, uint64_t firstGen) {
        int fds[2];
        if (pipe2(fds, O_CLOEXEC) != 0)
            throw std::runtime_error("pipe failed");
        std::vector<std::string> args = {ZOL_STORE_WRITER, std::to_string(records),
                                         std::to_string(firstGen), "3"};
        std::vector<char*> argv;
        for (auto& a : args)
            argv.push_back(a.data());
        argv.push_back(nullptr);
        pid_ = fork();
        if (pid_ == 0) {
            // Only async-signal-safe calls between fork and exec.
            if (fds[1] == 3) {
                fcntl(3, F_SETFD, 0);
            } else {
                dup2(fds[1], 3);
            }
            execv(argv[0], argv.data());
            _exit(127);
        }
        close(fds[1]);
        fd_ = fds[0];
    }
    ~Writer() {
        if (pid_ > 0) {
            kill(pid_, SIGKILL);
            waitpid(pid_, nullptr, 0);
        }
        if (fd_ >= 0)
            close(fd_);
    }

    // Reads until the text contains `what` or the time-out passes.
    bool waitFor(const std::string& what, std::chrono::seconds timeout) {
        const auto until = std::chrono::steady_clock::now() + timeout;
        while (out_.find(what) == std::string::npos) {
            const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
                until - std::chrono::steady_clock::now());
            if (left.count() <= 0)
                return false;
            pollfd p{fd_, POLLIN, 0};
            if (poll(&p, 1, static_cast<int>(left.count())) <= 0)
                continue;
            if (!readSome())
                return false;
        }
        return true;
    }

    // Kills the writer and returns how it ended (the signal number, or 1000 + exit code).
    int kill9() {
        kill(pid_, SIGKILL);
        int status = 0;
        waitpid(pid_, &status, 0);
        pid_ = -1;
        while (readSome()) {
        }
        return WIFSIGNALED(status) ? WTERMSIG(status) : 1000 + WEXITSTATUS(status);
    }

    const std::string& output() const { return out_; }

  private:
    bool readSome() {
        char buf[4096];
        ssize_t got = read(fd_, buf, sizeof buf);
        if (got <= 0)
            return false;
        out_.append(buf, static_cast<size_t>(got));
        return true;
    }

    pid_t pid_ = -1;
    int fd_ = -1;
    std::string out_;
};

void writeRecord(HKEY base, int rec, uint64_t gen) {
    Key k = create(("Rec" + std::to_string(rec)).c_str(), base);
    for (int i = 0; i < kRecordValues; ++i) {
        const std::string v = recordValue(gen, i);
        ASSERT_EQ(
            RegSetValueEx(k.get(), recordValueName(i).c_str(), 0, REG_BINARY,
                          reinterpret_cast<const BYTE*>(v.data()), static_cast<DWORD>(v.size())),
            ERROR_SUCCESS);
    }
}

// The generation of a whole record, or -1 (with the reason in *why) when it is not whole.
int64_t recordState(int rec, std::string* why) {
    Key k;
    LONG r =
        RegOpenKeyEx(HKEY_LOCAL_MACHINE, ("SOFTWARE\\CrashTest\\Rec" + std::to_string(rec)).c_str(),
                     0, KEY_READ, k.out());
    if (r != ERROR_SUCCESS) {
        *why = "record key missing: " + std::to_string(r);
        return -1;
    }
    int64_t gen = -2;
    for (int i = 0; i < kRecordValues; ++i) {
        auto v = readBytes(k.get(), recordValueName(i).c_str());
        int64_t g = v ? recordGeneration(*v, i) : -1;
        if (g < 0 || (gen != -2 && g != gen)) {
            *why = "field " + std::to_string(i) + " holds generation " + std::to_string(g) +
                   ", field 0 " + std::to_string(gen);
            return -1;
        }
        gen = g;
    }
    const auto names = valueNames(k.get());
    if (names.size() != static_cast<size_t>(kRecordValues)) {
        *why = "record has " + std::to_string(names.size()) + " values";
        return -1;
    }
    return gen;
}

TEST_F(RegistryTest, AWriterKilledAtAnyMomentLeavesEveryRecordWhole) {
    constexpr int kRecords = 4;
    constexpr int kKills = 200;
    const unsigned seed = std::random_device{}();
    SCOPED_TRACE("random seed " + std::to_string(seed));
    std::mt19937 rng(seed);
    // A commit waits for the disk (milliseconds), so the delays span several transactions.
    std::uniform_int_distribution<int> delayUs(0, 30000);

    std::map<int, int64_t> acked;
    {
        Key base = create("SOFTWARE\\CrashTest");
        for (int rec = 0; rec < kRecords; ++rec) {
            writeRecord(base.get(), rec, static_cast<uint64_t>(rec));
            acked[rec] = rec;
        }
    }
    uint64_t commits = 0;
    for (int run = 0; run < kKills; ++run) {
        const uint64_t firstGen = static_cast<uint64_t>(run + 1) * 1000000;
        Writer writer(kRecords, firstGen);
        ASSERT_TRUE(writer.waitFor("ready\n", std::chrono::seconds(60)))
            << "writer did not start: " << writer.output();
        // A random moment somewhere in the writer's stream of transactions.
        std::this_thread::sleep_for(std::chrono::microseconds(delayUs(rng)));
        ASSERT_EQ(writer.kill9(), SIGKILL) << "the writer stopped by itself";

        std::istringstream lines(writer.output());
        std::string line;
        std::getline(lines, line);  // "ready"
        int rec = 0;
        int64_t gen = 0;
        while (lines >> rec >> gen) {
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
            // Whatever was reported committed is there (or something newer).
            ASSERT_GE(state, acked[r]) << "record " << r << " lost a committed write";
        }
    }
    EXPECT_GT(commits, static_cast<uint64_t>(kKills / 2)) << "the writer hardly ever committed";
}

// One writer child: every transaction rewrites the shared record, the writer's counter and a
// log entry; every fifth also writes a value on its own, outside any transaction.
int writerChild(int w, int transactions) {
    auto failed = [w](const char* what, LONG r) {
        std::fprintf(stderr, "writer %d: %s returned %ld\n", w, what, static_cast<long>(r));
        return 1;
    };
    HKEY rec = nullptr, counters = nullptr, log = nullptr;
    LONG r = RegCreateKey(HKEY_LOCAL_MACHINE, "SOFTWARE\\Shared\\Record", &rec);
    if (r != ERROR_SUCCESS)
        return failed("RegCreateKey", r);
    if ((r = RegCreateKey(HKEY_LOCAL_MACHINE, "SOFTWARE\\Shared\\Counters", &counters)) != 0) {
        return failed("RegCreateKey", r);
    }
    const std::string logPath = "SOFTWARE\\Shared\\Log\\W" + std::to_string(w);
    if ((r = RegCreateKey(HKEY_LOCAL_MACHINE, logPath.c_str(), &log)) != 0) {
        return failed("RegCreateKey", r);
    }
    const std::string counter = "W" + std::to_string(w);
    for (int t = 1; t <= transactions; ++t) {
        if ((r = ZolRegBeginTransaction()) != 0)
            return failed("ZolRegBeginTransaction", r);
        const std::string tag = std::to_string(w) + ":" + std::to_string(t);
        for (int i = 0; i < kRecordValues; ++i) {
            if ((r = setString(rec, recordValueName(i).c_str(), tag)) != 0) {
                return failed("RegSetValueEx", r);
            }
        }
        if ((r = setDword(counters, counter.c_str(), static_cast<DWORD>(t))) != 0) {
            return failed("RegSetValueEx", r);
        }
        if ((r = setDword(log, ("T" + std::to_string(t)).c_str(), static_cast<DWORD>(t))) != 0) {
            return failed("RegSetValueEx", r);
        }
        if ((r = ZolRegCommitTransaction()) != 0)
            return failed("ZolRegCommitTransaction", r);
        if (t % 5 == 0 && (r = setDword(counters, ("Last" + counter).c_str(), t)) != 0) {
            return failed("RegSetValueEx", r);
        }
    }
    RegCloseKey(rec);
    RegCloseKey(counters);
    RegCloseKey(log);
    return 0;
}

// One reader child: reads the shared record whole inside a transaction, and the counters one
// by one outside, which may only ever grow.
int readerChild(int id, int writers, int transactions) {
    auto failed = [id](const std::string& what) {
        std::fprintf(stderr, "reader %d: %s\n", id, what.c_str());
        return 1;
    };
    HKEY rec = nullptr, counters = nullptr;
    LONG r = RegOpenKeyEx(HKEY_LOCAL_MACHINE, "SOFTWARE\\Shared\\Record", 0, KEY_READ, &rec);
    if (r != 0)
        return failed("RegOpenKeyEx " + std::to_string(r));
    r = RegOpenKeyEx(HKEY_LOCAL_MACHINE, "SOFTWARE\\Shared\\Counters", 0, KEY_READ, &counters);
    if (r != 0)
        return failed("RegOpenKeyEx " + std::to_string(r));
    std::vector<DWORD> last(static_cast<size_t>(writers), 0);
    for (int t = 0; t < transactions; ++t) {
        if ((r = ZolRegBeginTransaction()) != 0)
            return failed("begin " + std::to_string(r));
        std::set<std::string> tags;
        for (int i = 0; i < kRecordValues; ++i) {
            char buf[64];
            DWORD size = sizeof buf;
            r = RegQueryValueEx(rec, recordValueName(i).c_str(), nullptr, nullptr,
                                reinterpret_cast<BYTE*>(buf), &size);
            if (r != 0)
                return failed("query " + std::to_string(r));
            tags.insert(std::string(buf));
        }
        if ((r = ZolRegCommitTransaction()) != 0)
            return failed("commit " + std::to_string(r));
        if (tags.size() != 1)
            return failed("torn record: " + *tags.begin() + " / " + *tags.rbegin());
        for (int w = 0; w < writers; ++w) {
            DWORD v = 0, size = sizeof v;
            r = RegQueryValueEx(counters, ("W" + std::to_string(w)).c_str(), nullptr, nullptr,
                                reinterpret_cast<BYTE*>(&v), &size);
            if (r == ERROR_FILE_NOT_FOUND && last[static_cast<size_t>(w)] == 0)
                continue;
            if (r != 0)
                return failed("counter query " + std::to_string(r));
            if (v < last[static_cast<size_t>(w)])
                return failed("counter went back");
            last[static_cast<size_t>(w)] = v;
        }
    }
    RegCloseKey(rec);
    RegCloseKey(counters);
    return 0;
}

TEST_F(RegistryTest, ConcurrentWritersAndReadersLoseNothing) {
    constexpr int kWriters = 4, kReaders = 2, kTransactions = 500;
    {
        Key counters = create("SOFTWARE\\Shared\\Counters");
        Key rec = create("SOFTWARE\\Shared\\Record");
        for (int i = 0; i < kRecordValues; ++i) {
            ASSERT_EQ(setString(rec.get(), recordValueName(i).c_str(), "seed"), ERROR_SUCCESS);
        }
    }
    // The children inherit this process's open connection and must leave it alone.
    std::vector<pid_t> children;
    for (int i = 0; i < kWriters + kReaders; ++i) {
        fflush(nullptr);
        pid_t pid = fork();
        ASSERT_GE(pid, 0);
        if (pid == 0) {
            _exit(i < kWriters ? writerChild(i, kTransactions)
                               : readerChild(i - kWriters, kWriters, kTransactions));
        }
        children.push_back(pid);
    }
    for (size_t i = 0; i < children.size(); ++i) {
        int status = 0;
        ASSERT_EQ(waitpid(children[i], &status, 0), children[i]);
        EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << "child " << i;
    }

    ASSERT_EQ(ZolRegCheckStore(1), ERROR_SUCCESS);
    Key counters;
    ASSERT_EQ(
        RegOpenKeyEx(HKEY_LOCAL_MACHINE, "SOFTWARE\\Shared\\Counters", 0, KEY_READ, counters.out()),
        ERROR_SUCCESS);
    std::set<std::string> lastTags;
    for (int w = 0; w < kWriters; ++w) {
        const std::string name = "W" + std::to_string(w);
        EXPECT_EQ(readDword(counters.get(), name.c_str()), static_cast<DWORD>(kTransactions));
        EXPECT_EQ(readDword(counters.get(), ("Last" + name).c_str()),
                  static_cast<DWORD>(kTransactions));
        Key log;
        ASSERT_EQ(RegOpenKeyEx(HKEY_LOCAL_MACHINE, ("SOFTWARE\\Shared\\Log\\" + name).c_str(), 0,
                               KEY_READ, log.out()),
                  ERROR_SUCCESS);
        EXPECT_EQ(valueNames(log.get()).size(), static_cast<size_t>(kTransactions));
        for (int t = 1; t <= kTransactions; ++t) {
            ASSERT_EQ(readDword(log.get(), ("T" + std::to_string(t)).c_str()),
                      static_cast<DWORD>(t))
                << name << " lost transaction " << t;
        }
        lastTags.insert(std::to_string(w) + ":" + std::to_string(kTransactions));
    }
    Key rec;
    ASSERT_EQ(RegOpenKeyEx(HKEY_LOCAL_MACHINE, "SOFTWARE\\Shared\\Record", 0, KEY_READ, rec.out()),
              ERROR_SUCCESS);
    std::set<std::string> tags;
    for (int i = 0; i < kRecordValues; ++i) {
        tags.insert(readString(rec.get(), recordValueName(i).c_str()).value_or("?"));
    }
    ASSERT_EQ(tags.size(), 1u);
    EXPECT_TRUE(lastTags.count(*tags.begin())) << *tags.begin() << " is no writer's last record";
}

TEST_F(RegistryTest, ChangesByAnotherProcessAreSeenAtOnce) {
    Key k = create("SOFTWARE\\Seen");
    for (DWORD round = 1; round <= 20; ++round) {
        Key sub = create("Sub", k.get());
        ASSERT_EQ(setDword(k.get(), "v", round * 2), ERROR_SUCCESS);
        // Read everything once, so that this process holds it all as last read.
        ASSERT_EQ(readDword(k.get(), "v"), round * 2);
        ASSERT_EQ(subkeys(k.get()), std::vector<std::string>{"Sub"});
        ASSERT_EQ(readDword(sub.get(), "x"), std::nullopt);

        fflush(nullptr);
        pid_t pid = fork();
        ASSERT_GE(pid, 0);
        if (pid == 0) {
            HKEY h = nullptr;
            bool ok = RegOpenKeyEx(HKEY_LOCAL_MACHINE, "SOFTWARE\\Seen", 0, KEY_ALL_ACCESS, &h) ==
                          ERROR_SUCCESS &&
                      setDword(h, "v", round * 2 + 1) == ERROR_SUCCESS &&
                      RegDeleteKey(h, "Sub") == ERROR_SUCCESS &&
                      RegCreateKey(h, ("New" + std::to_string(round)).c_str(), &h) == ERROR_SUCCESS;
            _exit(ok ? 0 : 1);
        }
        int status = 0;
        ASSERT_EQ(waitpid(pid, &status, 0), pid);
        ASSERT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);

        EXPECT_EQ(readDword(k.get(), "v"), round * 2 + 1) << "round " << round;
        EXPECT_EQ(subkeys(k.get()), std::vector<std::string>{"New" + std::to_string(round)});
        EXPECT_EQ(readDword(sub.get(), "x"), std::nullopt);
        DWORD size = 0;
        EXPECT_EQ(RegQueryValueEx(sub.get(), "x", nullptr, nullptr, nullptr, &size),
                  ERROR_KEY_DELETED);
        HKEY h = nullptr;
        EXPECT_EQ(RegOpenKeyEx(k.get(), "Sub", 0, KEY_READ, &h), ERROR_FILE_NOT_FOUND);
        ASSERT_EQ(RegDeleteKey(k.get(), ("New" + std::to_string(round)).c_str()), ERROR_SUCCESS);
    }
}

// Every entry point against the current store, as (name, result).
std::vector<std::pair<std::string, LONG>> callEveryEntryPoint(HKEY opened) {
    std::vector<std::pair<std::string, LONG>> out;
    HKEY h = nullptr;
    char name[64];
    DWORD cch = sizeof name, size = sizeof name, v = 1;
    auto add = [&](const char* what, LONG r) {
        out.emplace_back(what, r);
        if (h != nullptr)
            RegCloseKey(h);
        h = nullptr;
        cch = size = sizeof name;
    };
    add("RegOpenKeyEx", RegOpenKeyEx(HKEY_LOCAL_MACHINE, "Data", 0, KEY_READ, &h));
    add("RegCreateKey", RegCreateKey(HKEY_LOCAL_MACHINE, "New", &h));
    add("RegCreateKeyEx", RegCreateKeyEx(HKEY_LOCAL_MACHINE, "New", 0, nullptr, 0, KEY_ALL_ACCESS,
                                         nullptr, &h, nullptr));
    add("RegQueryValueEx", RegQueryValueEx(HKEY_LOCAL_MACHINE, "v", nullptr, nullptr,
                                           reinterpret_cast<BYTE*>(name), &size));
    add("RegSetValueEx", setDword(HKEY_LOCAL_MACHINE, "v", v));
    add("RegDeleteValue", RegDeleteValue(HKEY_LOCAL_MACHINE, "v"));
    add("RegDeleteKey", RegDeleteKey(HKEY_LOCAL_MACHINE, "Data"));
    add("RegEnumKeyEx",
        RegEnumKeyEx(HKEY_LOCAL_MACHINE, 0, name, &cch, nullptr, nullptr, nullptr, nullptr));
    add("RegEnumValue",
        RegEnumValue(HKEY_LOCAL_MACHINE, 0, name, &cch, nullptr, nullptr, nullptr, nullptr));
    add("RegQueryValueEx(open handle)",
        RegQueryValueEx(opened, "Value0", nullptr, nullptr, reinterpret_cast<BYTE*>(name), &size));
    add("RegSetValueEx(open handle)", setDword(opened, "v", v));
    add("RegEnumValue(open handle)",
        RegEnumValue(opened, 0, name, &cch, nullptr, nullptr, nullptr, nullptr));
    add("RegOpenKeyEx(open handle)", RegOpenKeyEx(opened, "", 0, KEY_READ, &h));
    const LONG begin = ZolRegBeginTransaction();
    add("ZolRegBeginTransaction", begin);
    if (begin == ERROR_SUCCESS)
        ZolRegRollbackTransaction();
    add("ZolRegCheckStore(0)", ZolRegCheckStore(0));
    add("ZolRegCheckStore(1)", ZolRegCheckStore(1));
    return out;
}

TEST_F(RegistryTest, MissingOrDamagedStoresGiveErrorsAndStayUntouched) {
    auto populate = [] {
        ASSERT_EQ(ZolRegBeginTransaction(), ERROR_SUCCESS);
        for (int i = 0; i < 300; ++i) {
            Key k = create(("Data\\Item" + std::to_string(i)).c_str());
            for (int j = 0; j < 3; ++j) {
                ASSERT_EQ(setString(k.get(), ("Value" + std::to_string(j)).c_str(),
                                    std::string(40, static_cast<char>('a' + j))),
                          ERROR_SUCCESS);
            }
        }
        ASSERT_EQ(ZolRegCommitTransaction(), ERROR_SUCCESS);
    };
    const fs::path store = root_.store();
    using Damage = std::function<void()>;
    auto garbage = [](size_t n, unsigned seed) {
        std::mt19937 rng(seed);
        std::string s(n, '\0');
        for (char& c : s)
            c = static_cast<char>(rng());
        return s;
    };
    const std::vector<std::tuple<std::string, Damage, std::set<LONG>>> cases = {
        {"missing", [&] { fs::remove(store); }, {ERROR_REGISTRY_IO_FAILED}},
        {"empty", [&] { fs::resize_file(store, 0); }, {ERROR_REGISTRY_CORRUPT}},
        {"cut to 100 bytes",
         [&] { fs::resize_file(store, 100); },
         {ERROR_REGISTRY_CORRUPT, ERROR_REGISTRY_IO_FAILED}},
        {"cut in half",
         [&] { fs::resize_file(store, fs::file_size(store) / 2); },
         {ERROR_REGISTRY_CORRUPT, ERROR_REGISTRY_IO_FAILED}},
        {"garbage",
         [&] { zoltest::writeFile(store, garbage(fs::file_size(store), 1)); },
         {ERROR_REGISTRY_CORRUPT}},
        {"garbage page",
         [&] {
             std::string bytes = zoltest::readFile(store);
             const std::string junk = garbage(4096, 2);
             bytes.replace(4096 * 3, junk.size(), junk);
             zoltest::writeFile(store, bytes);
         },
         {ERROR_REGISTRY_CORRUPT, ERROR_REGISTRY_IO_FAILED}},
        {"another program's database",
         [&] {
             fs::remove(store);
             sqlite3* db = nullptr;
             sqlite3_open(store.c_str(), &db);
             sqlite3_exec(db, "CREATE TABLE t(x); INSERT INTO t VALUES (1);", nullptr, nullptr,
                          nullptr);
             sqlite3_close(db);
         },
         {ERROR_REGISTRY_CORRUPT}},
    };
    for (const auto& [what, damage, expected] : cases) {
        SCOPED_TRACE(what);
        populate();
        Key opened;
        ASSERT_EQ(RegOpenKeyEx(HKEY_LOCAL_MACHINE, "Data\\Item7", 0, KEY_ALL_ACCESS, opened.out()),
                  ERROR_SUCCESS);
        ZolRegCloseStore();
        ASSERT_FALSE(fs::exists(store.string() + "-wal")) << "closing leaves the journal";
        damage();
        const std::string before = fs::exists(store) ? zoltest::readFile(store) : "<none>";

        for (const auto& [call, result] : callEveryEntryPoint(opened.get())) {
            EXPECT_TRUE(expected.count(result)) << call << " returned " << result;
        }
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
