// Registry behaviour through the zolwin API: names and paths, values and their buffer rules,
// deletion, enumeration, access masks, stale handles, transactions and store management.
#include <sqlite3.h>
#include <sys/stat.h>

#include <atomic>
#include <chrono>
#include <filesystem>
#include <thread>

#include "registry_fixture.h"

namespace fs = std::filesystem;
using namespace regtest;

namespace {

const HKEY kHklm = HKEY_LOCAL_MACHINE;

// The first column of the first row of sql, read by a connection of its own, as another
// process would see it.
std::string rawQuery(const fs::path& file, const char* sql) {
    sqlite3* db = nullptr;
    sqlite3_stmt* s = nullptr;
    std::string out = "<error>";
    sqlite3_open_v2(file.c_str(), &db, SQLITE_OPEN_READONLY, nullptr);
    if (sqlite3_prepare_v2(db, sql, -1, &s, nullptr) == SQLITE_OK && sqlite3_step(s) == SQLITE_ROW)
        out = reinterpret_cast<const char*>(sqlite3_column_text(s, 0));
    sqlite3_finalize(s);
    sqlite3_close(db);
    return out;
}

TEST_F(RegistryTest, NamesFoldCaseKeepTheirFirstSpellingAndFollowThePathRules) {
    DWORD disp = 0;
    Key k, again, tavik, sw;
    ASSERT_EQ(RegCreateKeyEx(kHklm, "SOFTWARE\\Tavik\\ZolAlertMan", 0, nullptr, 0, KEY_ALL_ACCESS,
                             nullptr, k.out(), &disp),
              ERROR_SUCCESS);
    EXPECT_EQ(disp, static_cast<DWORD>(REG_CREATED_NEW_KEY));
    ASSERT_EQ(setString(k.get(), "MailServer", "mx"), ERROR_SUCCESS);
    // Runs of separators count as one, a trailing one is fine; the intermediate keys exist.
    ASSERT_EQ(RegCreateKeyEx(kHklm, "software\\\\\\TAVIK\\zolalertman\\", 0, nullptr, 0,
                             KEY_ALL_ACCESS, nullptr, again.out(), &disp),
              ERROR_SUCCESS);
    EXPECT_EQ(disp, static_cast<DWORD>(REG_OPENED_EXISTING_KEY));
    ASSERT_EQ(setString(again.get(), "mailserver", "mx2"), ERROR_SUCCESS);
    EXPECT_EQ(valueNames(k.get()), Names{"MailServer"});
    EXPECT_EQ(readString(k.get(), "MAILSERVER"), "mx2");
    ASSERT_EQ(open(tavik, "Software\\tavik"), ERROR_SUCCESS);
    EXPECT_EQ(subkeys(tavik.get()), Names{"ZolAlertMan"});
    // Only ASCII letters fold: other bytes are compared as they are.
    Key a1 = create("SOFTWARE\\\xC1x"), a2 = create("SOFTWARE\\\xE1x");
    ASSERT_EQ(open(sw, "software"), ERROR_SUCCESS);
    EXPECT_EQ(subkeys(sw.get()).size(), 3u);

    // A leading separator and a missing key fail.
    HKEY h = nullptr;
    EXPECT_EQ(RegOpenKeyEx(kHklm, "\\SOFTWARE", 0, KEY_READ, &h), ERROR_BAD_PATHNAME);
    EXPECT_EQ(RegOpenKeyEx(kHklm, "SOFTWARE\\Nope\\Deeper", 0, KEY_READ, &h), ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(RegCreateKey(kHklm, "\\\\C", &h), ERROR_BAD_PATHNAME);
    EXPECT_EQ(RegDeleteKey(kHklm, "\\SOFTWARE\\Tavik"), ERROR_BAD_PATHNAME);

    const std::string longest(ZOL_MAX_KEY_NAME, 'k'), value(ZOL_MAX_VALUE_NAME, 'v');
    Key ok = create("A\\" + longest);
    EXPECT_EQ(RegCreateKey(kHklm, ("A\\" + longest + "k").c_str(), &h), ERROR_INVALID_PARAMETER);
    EXPECT_EQ(RegOpenKeyEx(kHklm, (longest + "k").c_str(), 0, KEY_READ, &h),
              ERROR_INVALID_PARAMETER);
    EXPECT_EQ(setDword(k.get(), value.c_str(), 1), ERROR_SUCCESS);
    EXPECT_EQ(setDword(k.get(), (value + "v").c_str(), 1), ERROR_INVALID_PARAMETER);
    DWORD size = 0;
    EXPECT_EQ(RegQueryValueEx(k.get(), (value + "v").c_str(), nullptr, nullptr, nullptr, &size),
              ERROR_INVALID_PARAMETER);
    // An empty or null sub key opens the key itself again.
    for (const char* self : {static_cast<const char*>(nullptr), ""}) {
        Key s;
        ASSERT_EQ(RegOpenKeyEx(k.get(), self, 0, KEY_READ, s.out()), ERROR_SUCCESS);
        EXPECT_EQ(readDword(s.get(), value.c_str()), 1u);
    }
    EXPECT_EQ(RegCreateKeyEx(kHklm, "V", 0, nullptr, 1 /* volatile */, KEY_ALL_ACCESS, nullptr, &h,
                             nullptr),
              ERROR_INVALID_PARAMETER);
    EXPECT_EQ(RegCreateKey(kHklm, "V", nullptr), ERROR_INVALID_PARAMETER);
    EXPECT_EQ(RegOpenKeyEx(kHklm, "V", 0, KEY_READ, nullptr), ERROR_INVALID_PARAMETER);
    Key none;
    EXPECT_EQ(open(none, "V"), ERROR_FILE_NOT_FOUND);
}

TEST_F(RegistryTest, QueryFollowsTheBufferRulesAndKeepsTypes) {
    Key k = create("Q");
    ASSERT_EQ(setString(k.get(), "Name", "hello"), ERROR_SUCCESS);
    DWORD type = 0, size = 0;
    EXPECT_EQ(RegQueryValueEx(k.get(), "Name", nullptr, &type, nullptr, &size), ERROR_SUCCESS);
    EXPECT_EQ(type, static_cast<DWORD>(REG_SZ));
    EXPECT_EQ(size, 6u);
    BYTE buf[16];
    std::memset(buf, 0xEE, sizeof buf);
    size = 5;
    EXPECT_EQ(RegQueryValueEx(k.get(), "Name", nullptr, &type, buf, &size), ERROR_MORE_DATA);
    EXPECT_EQ(size, 6u);
    for (BYTE b : buf)
        ASSERT_EQ(b, 0xEE) << "buffer touched";
    size = sizeof buf;
    EXPECT_EQ(RegQueryValueEx(k.get(), "Missing", nullptr, &type, buf, &size),
              ERROR_FILE_NOT_FOUND);
    DWORD reserved = 0;
    EXPECT_EQ(RegQueryValueEx(k.get(), "Name", &reserved, &type, buf, &size),
              ERROR_INVALID_PARAMETER);
    EXPECT_EQ(RegQueryValueEx(k.get(), "Name", nullptr, &type, buf, nullptr),
              ERROR_INVALID_PARAMETER);

    // The default value answers to a null name and to "".
    ASSERT_EQ(setString(k.get(), nullptr, "default"), ERROR_SUCCESS);
    EXPECT_EQ(readString(k.get(), ""), "default");

    // Types and bytes are kept as given; a DWORD must be four bytes.
    const std::vector<std::pair<DWORD, std::string>> typed = {
        {REG_BINARY, std::string("\0\1\2\0\xFF", 5)},
        {REG_NONE, ""},
        {REG_EXPAND_SZ, std::string("%ZolDir%\0", 9)},
        {REG_MULTI_SZ, std::string("a\0b\0\0", 5)},
        {REG_DWORD, "\xEF\xBE\xAD\xDE"}};
    for (const auto& [t, bytes] : typed) {
        SCOPED_TRACE(t);
        ASSERT_EQ(RegSetValueEx(k.get(), "T", 0, t, reinterpret_cast<const BYTE*>(bytes.data()),
                                static_cast<DWORD>(bytes.size())),
                  ERROR_SUCCESS);
        EXPECT_EQ(readBytes(k.get(), "t", &type), bytes);
        EXPECT_EQ(type, t);
    }
    const BYTE bin[5] = {};
    EXPECT_EQ(RegSetValueEx(k.get(), "T", 0, REG_DWORD, bin, 3), ERROR_INVALID_PARAMETER);
    EXPECT_EQ(RegSetValueEx(k.get(), "T", 0, REG_DWORD, bin, 5), ERROR_INVALID_PARAMETER);
    EXPECT_EQ(RegSetValueEx(k.get(), "T", 0, REG_BINARY, nullptr, 4), ERROR_NOACCESS);
    EXPECT_EQ(readDword(k.get(), "T"), 0xDEADBEEFu);
}

TEST_F(RegistryTest, DeletionAndOrderedEnumeration) {
    Key k = create("E");
    for (const char* name : {"delta", "Bravo", "alpha", "Charlie", "b2"}) {
        create(name, k.get());
        ASSERT_EQ(setDword(k.get(), name, 1), ERROR_SUCCESS);
    }
    ASSERT_EQ(setString(k.get(), nullptr, "dflt"), ERROR_SUCCESS);
    const Names order{"alpha", "b2", "Bravo", "Charlie", "delta"};
    LONG end = 0;
    EXPECT_EQ(subkeys(k.get(), &end), order);
    EXPECT_EQ(end, ERROR_NO_MORE_ITEMS);
    Names values{""};
    values.insert(values.end(), order.begin(), order.end());
    EXPECT_EQ(valueNames(k.get(), &end), values);
    EXPECT_EQ(end, ERROR_NO_MORE_ITEMS);

    // lpcchName counts the terminator going in and not coming out; a value whose data does not
    // fit gets the size it needs.
    char name[8];
    DWORD cch = 7, cb = 4;  // "Charlie" needs 8
    EXPECT_EQ(RegEnumKeyEx(k.get(), 3, name, &cch, nullptr, nullptr, nullptr, nullptr),
              ERROR_MORE_DATA);
    cch = 8;
    EXPECT_EQ(RegEnumKeyEx(k.get(), 3, name, &cch, nullptr, nullptr, nullptr, nullptr),
              ERROR_SUCCESS);
    EXPECT_EQ(std::string(name) + std::to_string(cch), "Charlie7");
    BYTE data[8];
    cch = sizeof name;
    EXPECT_EQ(RegEnumValue(k.get(), 0, name, &cch, nullptr, nullptr, data, &cb), ERROR_MORE_DATA);
    EXPECT_EQ(cb, 5u);

    // A key with subkeys stays; one made again under the same name starts empty.
    {
        Key grand = create("E\\alpha\\Grand");
        ASSERT_EQ(setDword(grand.get(), "x", 1), ERROR_SUCCESS);
    }
    EXPECT_EQ(RegDeleteKey(k.get(), "Alpha"), ERROR_ACCESS_DENIED);
    EXPECT_EQ(RegDeleteKey(k.get(), "ALPHA\\grand"), ERROR_SUCCESS);
    EXPECT_EQ(RegDeleteKey(k.get(), "alpha\\Grand"), ERROR_FILE_NOT_FOUND);
    EXPECT_TRUE(valueNames(create("E\\alpha\\Grand").get()).empty());
    EXPECT_EQ(RegDeleteKey(kHklm, "E\\alpha\\Grand"), ERROR_SUCCESS);
    EXPECT_EQ(RegDeleteKey(k.get(), "alpha"), ERROR_SUCCESS);
    EXPECT_EQ(RegDeleteKey(k.get(), "Missing\\Deeper"), ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(RegDeleteKey(k.get(), ""), ERROR_ACCESS_DENIED) << "it still has subkeys";
    EXPECT_EQ(subkeys(k.get()), Names(order.begin() + 1, order.end()));
    EXPECT_EQ(RegDeleteValue(k.get(), "DELTA"), ERROR_SUCCESS);
    EXPECT_EQ(RegDeleteValue(k.get(), "delta"), ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(valueNames(k.get()), Names(values.begin(), values.end() - 1));
}

TEST_F(RegistryTest, AccessMasksAndStaleOrMadeUpHandlesAreRefused) {
    Key sub = create("R\\Sub"), ro, roSub, wo;
    ASSERT_EQ(setDword(sub.get(), "v", 1), ERROR_SUCCESS);
    ASSERT_EQ(open(ro, "R", 0x20019 /* KEY_READ */), ERROR_SUCCESS);
    HKEY h = nullptr;
    ASSERT_EQ(open(roSub, "Sub", KEY_READ, ro.get()), ERROR_SUCCESS);
    EXPECT_EQ(setDword(roSub.get(), "v", 3), ERROR_ACCESS_DENIED);
    EXPECT_EQ(RegDeleteValue(roSub.get(), "v"), ERROR_ACCESS_DENIED);
    EXPECT_EQ(readDword(roSub.get(), "v"), 1u);
    ASSERT_EQ(open(wo, "R\\Sub", KEY_WRITE), ERROR_SUCCESS);
    EXPECT_EQ(setDword(wo.get(), "v", 4), ERROR_SUCCESS);
    EXPECT_EQ(readDword(wo.get(), "v"), std::nullopt);

    // After its key is deleted a handle is dead, even when a key of the same name comes back.
    ASSERT_EQ(RegDeleteKey(kHklm, "R\\Sub"), ERROR_SUCCESS);
    char name[16];
    DWORD cch = sizeof name, size = 0;
    EXPECT_EQ(RegQueryValueEx(sub.get(), "v", nullptr, nullptr, nullptr, &size), ERROR_KEY_DELETED);
    EXPECT_EQ(RegOpenKeyEx(sub.get(), "", 0, KEY_READ, &h), ERROR_KEY_DELETED);
    EXPECT_EQ(RegEnumValue(sub.get(), 0, name, &cch, nullptr, nullptr, nullptr, nullptr),
              ERROR_KEY_DELETED);
    Key reborn = create("R\\Sub");
    EXPECT_EQ(setDword(sub.get(), "v", 3), ERROR_KEY_DELETED);
    EXPECT_TRUE(valueNames(reborn.get()).empty());

    HKEY garbage = reinterpret_cast<HKEY>(static_cast<uintptr_t>(0xDEADBEEF));
    EXPECT_EQ(setDword(garbage, "v", 1), ERROR_INVALID_HANDLE);
    HKEY closed = nullptr;
    ASSERT_EQ(RegOpenKeyEx(kHklm, "R", 0, KEY_READ, &closed), ERROR_SUCCESS);
    ASSERT_EQ(RegCloseKey(closed), ERROR_SUCCESS);
    EXPECT_EQ(RegCloseKey(closed), ERROR_INVALID_HANDLE);
    EXPECT_EQ(RegEnumKeyEx(closed, 0, name, &cch, nullptr, nullptr, nullptr, nullptr),
              ERROR_INVALID_HANDLE);
    EXPECT_EQ(RegCloseKey(kHklm), ERROR_SUCCESS);
    EXPECT_EQ(subkeys(kHklm), Names{"R"});
}

TEST_F(RegistryTest, GroupedWritesLandTogetherOrNotAtAll) {
    auto seen = [&] { return rawQuery(root_.store(), "SELECT count(*) FROM vals"); };
    Key k = create("T");
    ASSERT_EQ(ZolRegBeginTransaction(), ERROR_SUCCESS);
    ASSERT_EQ(setDword(k.get(), "a", 1), ERROR_SUCCESS);
    ASSERT_EQ(ZolRegBeginTransaction(), ERROR_SUCCESS);
    ASSERT_EQ(setDword(k.get(), "b", 2), ERROR_SUCCESS);
    // A failed call inside a transaction leaves the rest of it alone.
    EXPECT_EQ(RegSetValueEx(k.get(), "c", 0, REG_DWORD, nullptr, 4), ERROR_NOACCESS);
    ASSERT_EQ(ZolRegCommitTransaction(), ERROR_SUCCESS);
    EXPECT_EQ(readDword(k.get(), "b"), 2u);  // this process sees its own writes
    EXPECT_EQ(seen(), "0") << "an inner commit must not write";
    ASSERT_EQ(ZolRegCommitTransaction(), ERROR_SUCCESS);
    EXPECT_EQ(seen(), "2");

    // A rollback at an inner level discards the whole: later writes are refused and the outer
    // commit reports that nothing was written.
    ASSERT_EQ(ZolRegBeginTransaction(), ERROR_SUCCESS);
    ASSERT_EQ(setDword(k.get(), "a", 20), ERROR_SUCCESS);
    create("T\\Made");
    ASSERT_EQ(ZolRegBeginTransaction(), ERROR_SUCCESS);
    ASSERT_EQ(ZolRegRollbackTransaction(), ERROR_SUCCESS);
    EXPECT_EQ(setDword(k.get(), "c", 20), ERROR_INVALID_STATE);
    EXPECT_EQ(ZolRegCommitTransaction(), ERROR_INVALID_STATE);
    EXPECT_EQ(readDword(k.get(), "a"), 1u);
    EXPECT_TRUE(subkeys(k.get()).empty());
    EXPECT_EQ(ZolRegCommitTransaction(), ERROR_INVALID_STATE);
    EXPECT_EQ(ZolRegRollbackTransaction(), ERROR_INVALID_STATE);

    // Another thread's write waits for the transaction instead of joining it.
    ASSERT_EQ(ZolRegBeginTransaction(), ERROR_SUCCESS);
    ASSERT_EQ(setDword(k.get(), "mine", 1), ERROR_SUCCESS);
    std::atomic<LONG> other{-1};
    std::thread writer([&] { other = setDword(k.get(), "other", 2); });
    const auto until = std::chrono::steady_clock::now() + std::chrono::milliseconds(200);
    while (std::chrono::steady_clock::now() < until) {
        ASSERT_EQ(other.load(), -1);
        std::this_thread::yield();
    }
    ASSERT_EQ(ZolRegRollbackTransaction(), ERROR_SUCCESS);
    writer.join();
    EXPECT_EQ(other.load(), ERROR_SUCCESS);
    EXPECT_EQ(valueNames(k.get()), (Names{"a", "b", "other"}));
    EXPECT_EQ(seen(), "3") << "without a transaction a write lands at once";
}

TEST_F(RegistryTest, StoreModesLifecycleAndSwitchingZolDir) {
    EXPECT_EQ(rawQuery(root_.store(), "PRAGMA journal_mode"), "wal");
    Key k = create("Mode");
    ASSERT_EQ(setDword(k.get(), "v", 1), ERROR_SUCCESS);
    auto mode = [](const fs::path& p) {
        struct stat st {};
        return ::stat(p.c_str(), &st) == 0 ? static_cast<int>(st.st_mode & 07777) : -1;
    };
    const fs::path store = root_.store();
    const std::pair<fs::path, int> modes[] = {{store, 0600},
                                              {store.parent_path(), 0700},
                                              {store.string() + "-wal", 0600},
                                              {store.string() + "-shm", 0600}};
    for (const auto& [file, want] : modes)
        EXPECT_EQ(mode(file), want) << file;
    char path[4096];
    ASSERT_EQ(ZolRegStorePath(path, sizeof path), ERROR_SUCCESS);
    EXPECT_EQ(fs::path(path), store);
    EXPECT_EQ(ZolRegStorePath(path, static_cast<DWORD>(std::strlen(path))), ERROR_MORE_DATA);
    EXPECT_EQ(ZolRegCreateStore(), ERROR_ALREADY_EXISTS);
    EXPECT_EQ(ZolRegCheckStore(1), ERROR_SUCCESS);

    // Another ZolDir is another store, and handles from this one mean nothing there.
    zoltest::ProductRoot other(false);
    {
        zoltest::ScopedEnv toB("ZolDir", other.path().string());
        ASSERT_EQ(ZolRegCreateStore(), ERROR_SUCCESS);
        EXPECT_EQ(setDword(k.get(), "v", 2), ERROR_KEY_DELETED);
        create("OnlyInB");
        EXPECT_EQ(subkeys(kHklm), Names{"OnlyInB"});
    }
    EXPECT_EQ(readDword(k.get(), "v"), 1u);
    ZolRegCloseStore();
    EXPECT_EQ(readDword(k.get(), "v"), 1u) << "closing the connection keeps handles";

    EXPECT_EQ(ZolRegRemoveStore(), ERROR_SUCCESS);
    EXPECT_FALSE(fs::exists(store.string() + "-wal"));
    Key gone;
    EXPECT_EQ(open(gone, "Mode"), ERROR_REGISTRY_IO_FAILED);
    EXPECT_FALSE(fs::exists(store)) << "a registry call must never create the store";
    // A new store is empty, and made the same way even under a permissive umask.
    fs::remove(store.parent_path());
    const mode_t old = ::umask(0);
    EXPECT_EQ(ZolRegCreateStore(), ERROR_SUCCESS);
    ::umask(old);
    EXPECT_EQ(mode(store), 0600);
    EXPECT_EQ(mode(store.parent_path()), 0700);
    EXPECT_TRUE(subkeys(kHklm).empty());
}

}  // namespace
