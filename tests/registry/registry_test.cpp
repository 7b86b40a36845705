// Registry behaviour through the zolwin API: names and paths, values and their buffer rules,
// deletion, enumeration, access masks, stale handles, transactions and store management.
#include <sqlite3.h>
#include <sys/stat.h>

#include <atomic>
#include <chrono>
#include <ctime>
#include <filesystem>
#include <thread>

#include "registry_fixture.h"

namespace fs = std::filesystem;
using namespace regtest;

namespace {

// A raw connection of its own, to see what other processes see.
class RawDb {
  public:
    explicit RawDb(const fs::path& file) {
        sqlite3_open_v2(file.c_str(), &db_, SQLITE_OPEN_READONLY, nullptr);
    }
    ~RawDb() { sqlite3_close(db_); }
    std::string text(const char* sql) {
        std::string out = "<error>";
        sqlite3_stmt* s = nullptr;
        if (sqlite3_prepare_v2(db_, sql, -1, &s, nullptr) == SQLITE_OK &&
            sqlite3_step(s) == SQLITE_ROW) {
            const auto* t = sqlite3_column_text(s, 0);
            out = t != nullptr ? reinterpret_cast<const char*>(t) : "";
        }
        sqlite3_finalize(s);
        return out;
    }

  private:
    sqlite3* db_ = nullptr;
};

TEST_F(RegistryTest, NamesAreCaseInsensitiveAndKeepTheirFirstSpelling) {
    DWORD disp = 0;
    Key k;
    ASSERT_EQ(RegCreateKeyEx(HKEY_LOCAL_MACHINE, "SOFTWARE\\Tavik\\ZolAlertMan", 0, nullptr,
                             REG_OPTION_NON_VOLATILE, KEY_ALL_ACCESS, nullptr, k.out(), &disp),
              ERROR_SUCCESS);
    EXPECT_EQ(disp, static_cast<DWORD>(REG_CREATED_NEW_KEY));
    ASSERT_EQ(setString(k.get(), "MailServer", "mx.example.org"), ERROR_SUCCESS);

    Key again;
    ASSERT_EQ(RegCreateKeyEx(HKEY_LOCAL_MACHINE, "software\\TAVIK\\zolalertman", 0, nullptr, 0,
                             KEY_ALL_ACCESS, nullptr, again.out(), &disp),
              ERROR_SUCCESS);
    EXPECT_EQ(disp, static_cast<DWORD>(REG_OPENED_EXISTING_KEY));

    Key upper;
    ASSERT_EQ(
        RegOpenKeyEx(HKEY_LOCAL_MACHINE, "SOFTWARE\\TAVIK\\ZOLALERTMAN", 0, KEY_READ, upper.out()),
        ERROR_SUCCESS);
    EXPECT_EQ(readString(upper.get(), "MAILSERVER"), "mx.example.org");

    // A second write under another spelling replaces the data, not the name.
    ASSERT_EQ(setString(again.get(), "mailserver", "mx2"), ERROR_SUCCESS);
    EXPECT_EQ(valueNames(upper.get()), std::vector<std::string>{"MailServer"});
    EXPECT_EQ(readString(upper.get(), "MailServer"), "mx2");
    Key tavik;
    ASSERT_EQ(RegOpenKeyEx(HKEY_LOCAL_MACHINE, "Software\\tavik", 0, KEY_READ, tavik.out()),
              ERROR_SUCCESS);
    EXPECT_EQ(subkeys(tavik.get()), std::vector<std::string>{"ZolAlertMan"});

    // Only ASCII letters fold: other bytes (EUC-JP text, Latin-1) are compared as they are.
    Key jp = create("SOFTWARE\\\xC6\xFC\xCB\xDC");
    Key a1 = create("SOFTWARE\\\xC1x");
    Key a2 = create("SOFTWARE\\\xE1x");
    Key sw;
    ASSERT_EQ(RegOpenKeyEx(HKEY_LOCAL_MACHINE, "software", 0, KEY_READ, sw.out()), ERROR_SUCCESS);
    EXPECT_EQ(subkeys(sw.get()).size(), 4u);
    Key jpAgain;
    EXPECT_EQ(RegOpenKeyEx(sw.get(), "\xC6\xFC\xCB\xDC", 0, KEY_READ, jpAgain.out()),
              ERROR_SUCCESS);
}

TEST_F(RegistryTest, PathSyntaxAndNameLimits) {
    Key k = create("A\\\\\\B\\");  // runs of separators count as one, a trailing one is fine
    ASSERT_EQ(setDword(k.get(), "v", 7), ERROR_SUCCESS);
    Key same;
    ASSERT_EQ(RegOpenKeyEx(HKEY_LOCAL_MACHINE, "a\\b", 0, KEY_READ, same.out()), ERROR_SUCCESS);
    EXPECT_EQ(readDword(same.get(), "V"), 7u);
    Key a;
    ASSERT_EQ(RegOpenKeyEx(HKEY_LOCAL_MACHINE, "A", 0, KEY_READ, a.out()), ERROR_SUCCESS);
    EXPECT_EQ(subkeys(a.get()), std::vector<std::string>{"B"});

    // An empty or null sub key opens the key itself again.
    for (const char* empty : {static_cast<const char*>(nullptr), ""}) {
        Key self;
        ASSERT_EQ(RegOpenKeyEx(same.get(), empty, 0, KEY_READ, self.out()), ERROR_SUCCESS);
        EXPECT_NE(self.get(), same.get());
        EXPECT_EQ(readDword(self.get(), "v"), 7u);
    }

    HKEY h = reinterpret_cast<HKEY>(0x1);
    EXPECT_EQ(RegOpenKeyEx(HKEY_LOCAL_MACHINE, "\\A", 0, KEY_READ, &h), ERROR_BAD_PATHNAME);
    EXPECT_EQ(h, nullptr);
    EXPECT_EQ(RegCreateKey(HKEY_LOCAL_MACHINE, "\\\\C", &h), ERROR_BAD_PATHNAME);
    EXPECT_EQ(RegDeleteKey(HKEY_LOCAL_MACHINE, "\\A\\B"), ERROR_BAD_PATHNAME);

    const std::string longest(ZOL_MAX_KEY_NAME, 'k');
    Key ok = create(("A\\" + longest).c_str());
    EXPECT_EQ(RegCreateKey(HKEY_LOCAL_MACHINE, ("A\\" + longest + "k").c_str(), &h),
              ERROR_INVALID_PARAMETER);
    EXPECT_EQ(RegOpenKeyEx(HKEY_LOCAL_MACHINE, (longest + "k").c_str(), 0, KEY_READ, &h),
              ERROR_INVALID_PARAMETER);
    const std::string value(ZOL_MAX_VALUE_NAME, 'v');
    EXPECT_EQ(setDword(k.get(), value.c_str(), 1), ERROR_SUCCESS);
    EXPECT_EQ(readDword(k.get(), value.c_str()), 1u);
    EXPECT_EQ(setDword(k.get(), (value + "v").c_str(), 1), ERROR_INVALID_PARAMETER);
    DWORD size = 0;
    EXPECT_EQ(RegQueryValueEx(k.get(), (value + "v").c_str(), nullptr, nullptr, nullptr, &size),
              ERROR_INVALID_PARAMETER);
}

TEST_F(RegistryTest, CreateMakesEveryMissingKeyAndOpenOfMissingFails) {
    Key k;
    DWORD disp = 0;
    ASSERT_EQ(RegCreateKeyEx(HKEY_LOCAL_MACHINE, "X\\Y\\Z", 0, nullptr, 0, KEY_ALL_ACCESS, nullptr,
                             k.out(), &disp),
              ERROR_SUCCESS);
    EXPECT_EQ(disp, static_cast<DWORD>(REG_CREATED_NEW_KEY));
    for (const char* p : {"X", "X\\Y", "X\\Y\\Z"}) {
        Key o;
        EXPECT_EQ(RegOpenKeyEx(HKEY_LOCAL_MACHINE, p, 0, KEY_READ, o.out()), ERROR_SUCCESS) << p;
    }
    // Relative to an open key, and below an existing part of the path.
    Key w;
    ASSERT_EQ(RegCreateKeyEx(k.get(), "W", 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, w.out(), &disp),
              ERROR_SUCCESS);
    EXPECT_EQ(disp, static_cast<DWORD>(REG_CREATED_NEW_KEY));
    Key w2;
    ASSERT_EQ(RegCreateKeyEx(HKEY_LOCAL_MACHINE, "x\\y\\z\\w", 0, nullptr, 0, KEY_ALL_ACCESS,
                             nullptr, w2.out(), &disp),
              ERROR_SUCCESS);
    EXPECT_EQ(disp, static_cast<DWORD>(REG_OPENED_EXISTING_KEY));

    HKEY h = reinterpret_cast<HKEY>(0x1);
    EXPECT_EQ(RegOpenKeyEx(HKEY_LOCAL_MACHINE, "X\\Nope", 0, KEY_READ, &h), ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(h, nullptr);
    h = reinterpret_cast<HKEY>(0x1);
    EXPECT_EQ(RegOpenKeyEx(HKEY_LOCAL_MACHINE, "Nope\\Deeper", 0, KEY_READ, &h),
              ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(h, nullptr);
    EXPECT_EQ(RegCreateKeyEx(HKEY_LOCAL_MACHINE, "V", 0, nullptr, 1 /* volatile */, KEY_ALL_ACCESS,
                             nullptr, &h, nullptr),
              ERROR_INVALID_PARAMETER);
    EXPECT_EQ(RegOpenKeyEx(HKEY_LOCAL_MACHINE, "V", 0, KEY_READ, &h), ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(RegCreateKey(HKEY_LOCAL_MACHINE, "V", nullptr), ERROR_INVALID_PARAMETER);
    EXPECT_EQ(RegOpenKeyEx(HKEY_LOCAL_MACHINE, "X", 0, KEY_READ, nullptr), ERROR_INVALID_PARAMETER);
}

TEST_F(RegistryTest, QueryFollowsTheBufferRules) {
    Key k = create("Q");
    ASSERT_EQ(setString(k.get(), "Name", "hello"), ERROR_SUCCESS);

    DWORD type = 0, size = 0;
    EXPECT_EQ(RegQueryValueEx(k.get(), "Name", nullptr, &type, nullptr, &size), ERROR_SUCCESS);
    EXPECT_EQ(type, static_cast<DWORD>(REG_SZ));
    EXPECT_EQ(size, 6u);
    EXPECT_EQ(RegQueryValueEx(k.get(), "Name", nullptr, &type, nullptr, nullptr), ERROR_SUCCESS);

    BYTE buf[16];
    std::memset(buf, 0xEE, sizeof buf);
    size = 5;
    EXPECT_EQ(RegQueryValueEx(k.get(), "Name", nullptr, &type, buf, &size), ERROR_MORE_DATA);
    EXPECT_EQ(size, 6u);
    for (BYTE b : buf)
        ASSERT_EQ(b, 0xEE) << "buffer touched";
    size = sizeof buf;
    EXPECT_EQ(RegQueryValueEx(k.get(), "Name", nullptr, &type, buf, &size), ERROR_SUCCESS);
    EXPECT_EQ(size, 6u);
    EXPECT_STREQ(reinterpret_cast<char*>(buf), "hello");

    size = sizeof buf;
    EXPECT_EQ(RegQueryValueEx(k.get(), "Missing", nullptr, &type, buf, &size),
              ERROR_FILE_NOT_FOUND);
    DWORD reserved = 0;
    EXPECT_EQ(RegQueryValueEx(k.get(), "Name", &reserved, &type, buf, &size),
              ERROR_INVALID_PARAMETER);
    EXPECT_EQ(RegQueryValueEx(k.get(), "Name", nullptr, &type, buf, nullptr),
              ERROR_INVALID_PARAMETER);

    // A string stored without its terminator gains one when the buffer has room.
    ASSERT_EQ(RegSetValueEx(k.get(), "Bare", 0, REG_SZ, reinterpret_cast<const BYTE*>("abc"), 3),
              ERROR_SUCCESS);
    size = 0;
    EXPECT_EQ(RegQueryValueEx(k.get(), "Bare", nullptr, nullptr, nullptr, &size), ERROR_SUCCESS);
    EXPECT_EQ(size, 3u);
    std::memset(buf, 0xEE, sizeof buf);
    size = sizeof buf;
    EXPECT_EQ(RegQueryValueEx(k.get(), "Bare", nullptr, nullptr, buf, &size), ERROR_SUCCESS);
    EXPECT_EQ(size, 4u);
    EXPECT_STREQ(reinterpret_cast<char*>(buf), "abc");
    std::memset(buf, 0xEE, sizeof buf);
    size = 3;
    EXPECT_EQ(RegQueryValueEx(k.get(), "Bare", nullptr, nullptr, buf, &size), ERROR_SUCCESS);
    EXPECT_EQ(size, 3u);
    EXPECT_EQ(buf[3], 0xEE);
    ASSERT_EQ(
        RegSetValueEx(k.get(), "List", 0, REG_MULTI_SZ, reinterpret_cast<const BYTE*>("a\0b\0"), 4),
        ERROR_SUCCESS);
    std::memset(buf, 0xEE, sizeof buf);
    size = sizeof buf;
    EXPECT_EQ(RegQueryValueEx(k.get(), "List", nullptr, &type, buf, &size), ERROR_SUCCESS);
    EXPECT_EQ(type, static_cast<DWORD>(REG_MULTI_SZ));
    EXPECT_EQ(std::string(reinterpret_cast<char*>(buf), size), std::string("a\0b\0\0", 5));

    // The default value answers to a null name and to "".
    ASSERT_EQ(setString(k.get(), nullptr, "default"), ERROR_SUCCESS);
    EXPECT_EQ(readString(k.get(), ""), "default");
    ASSERT_EQ(setString(k.get(), "", "changed"), ERROR_SUCCESS);
    EXPECT_EQ(readString(k.get(), nullptr), "changed");

    // Types are stored as given; a DWORD must be four bytes.
    const BYTE bin[] = {0, 1, 2, 0, 255};
    ASSERT_EQ(RegSetValueEx(k.get(), "Bin", 0, REG_BINARY, bin, sizeof bin), ERROR_SUCCESS);
    EXPECT_EQ(readBytes(k.get(), "Bin", &type), std::string("\0\1\2\0\xFF", 5));
    EXPECT_EQ(type, static_cast<DWORD>(REG_BINARY));
    ASSERT_EQ(RegSetValueEx(k.get(), "None", 0, REG_NONE, nullptr, 0), ERROR_SUCCESS);
    EXPECT_EQ(readBytes(k.get(), "None", &type), std::string());
    EXPECT_EQ(type, static_cast<DWORD>(REG_NONE));
    ASSERT_EQ(RegSetValueEx(k.get(), "Exp", 0, REG_EXPAND_SZ,
                            reinterpret_cast<const BYTE*>("%ZolDir%"), 9),
              ERROR_SUCCESS);
    EXPECT_EQ(readBytes(k.get(), "Exp", &type), std::string("%ZolDir%\0", 9));
    EXPECT_EQ(type, static_cast<DWORD>(REG_EXPAND_SZ));
    ASSERT_EQ(setDword(k.get(), "Num", 0xDEADBEEF), ERROR_SUCCESS);
    EXPECT_EQ(readDword(k.get(), "num"), 0xDEADBEEFu);
    EXPECT_EQ(RegSetValueEx(k.get(), "Num", 0, REG_DWORD, bin, 3), ERROR_INVALID_PARAMETER);
    EXPECT_EQ(RegSetValueEx(k.get(), "Num", 0, REG_DWORD, bin, 5), ERROR_INVALID_PARAMETER);
    EXPECT_EQ(RegSetValueEx(k.get(), "Num", 0, REG_BINARY, nullptr, 4), ERROR_INVALID_PARAMETER);
    EXPECT_EQ(readDword(k.get(), "Num"), 0xDEADBEEFu);
}

TEST_F(RegistryTest, DeletingKeysAndValues) {
    Key parent = create("P");
    {
        Key child = create("P\\Child\\Grand");
        ASSERT_EQ(setDword(child.get(), "x", 1), ERROR_SUCCESS);
    }
    EXPECT_EQ(RegDeleteKey(parent.get(), "Child"), ERROR_ACCESS_DENIED);
    EXPECT_EQ(RegDeleteKey(parent.get(), "child\\GRAND"), ERROR_SUCCESS);
    EXPECT_EQ(RegDeleteKey(parent.get(), "Child\\Grand"), ERROR_FILE_NOT_FOUND);
    {
        // A key made again under the same name starts without the old values.
        Key again = create("P\\Child\\Grand");
        DWORD size = 0;
        EXPECT_EQ(RegQueryValueEx(again.get(), "x", nullptr, nullptr, nullptr, &size),
                  ERROR_FILE_NOT_FOUND);
        EXPECT_TRUE(valueNames(again.get()).empty());
    }
    EXPECT_EQ(RegDeleteKey(HKEY_LOCAL_MACHINE, "P\\Child\\Grand"), ERROR_SUCCESS);
    EXPECT_EQ(RegDeleteKey(parent.get(), "Child"), ERROR_SUCCESS);
    EXPECT_EQ(RegDeleteKey(parent.get(), "Missing\\Deeper"), ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(RegDeleteKey(parent.get(), ""), ERROR_INVALID_PARAMETER);
    EXPECT_EQ(RegDeleteKey(parent.get(), nullptr), ERROR_INVALID_PARAMETER);
    EXPECT_TRUE(subkeys(parent.get()).empty());

    ASSERT_EQ(setDword(parent.get(), "Keep", 1), ERROR_SUCCESS);
    ASSERT_EQ(setDword(parent.get(), "Drop", 2), ERROR_SUCCESS);
    EXPECT_EQ(RegDeleteValue(parent.get(), "DROP"), ERROR_SUCCESS);
    EXPECT_EQ(RegDeleteValue(parent.get(), "Drop"), ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(valueNames(parent.get()), std::vector<std::string>{"Keep"});
}

TEST_F(RegistryTest, EnumerationIsOrderedAndEndsWithNoMoreItems) {
    Key k = create("E");
    for (const char* name : {"delta", "Bravo", "alpha", "Charlie", "b2"}) {
        Key sub = create(name, k.get());
        ASSERT_EQ(setDword(k.get(), name, 1), ERROR_SUCCESS);
    }
    ASSERT_EQ(setString(k.get(), nullptr, "dflt"), ERROR_SUCCESS);
    const std::vector<std::string> order{"alpha", "b2", "Bravo", "Charlie", "delta"};
    LONG end = 0;
    EXPECT_EQ(subkeys(k.get(), &end), order);
    EXPECT_EQ(end, ERROR_NO_MORE_ITEMS);
    std::vector<std::string> values{""};
    values.insert(values.end(), order.begin(), order.end());
    EXPECT_EQ(valueNames(k.get(), &end), values);
    EXPECT_EQ(end, ERROR_NO_MORE_ITEMS);

    // Indices in any order give the same names as a sequential walk.
    for (DWORD i : {3u, 1u, 4u, 0u, 2u, 3u}) {
        char name[32];
        DWORD cch = sizeof name;
        ASSERT_EQ(RegEnumKeyEx(k.get(), i, name, &cch, nullptr, nullptr, nullptr, nullptr),
                  ERROR_SUCCESS);
        EXPECT_EQ(std::string(name, cch), order[i]);
    }

    // lpcchName counts the terminator going in and not coming out.
    char name[8];
    DWORD cch = 7;  // "Charlie" needs 8
    EXPECT_EQ(RegEnumKeyEx(k.get(), 3, name, &cch, nullptr, nullptr, nullptr, nullptr),
              ERROR_MORE_DATA);
    cch = 8;
    char cls[4] = "xyz";
    DWORD cchCls = sizeof cls;
    DWORD ft[2] = {0, 0};
    EXPECT_EQ(RegEnumKeyEx(k.get(), 3, name, &cch, nullptr, cls, &cchCls, ft), ERROR_SUCCESS);
    EXPECT_EQ(cch, 7u);
    EXPECT_STREQ(name, "Charlie");
    EXPECT_EQ(cchCls, 0u);
    EXPECT_STREQ(cls, "");
    // The last write time is a FILETIME close to now.
    const uint64_t filetime = (uint64_t{ft[1]} << 32) | ft[0];
    const auto unixSeconds = static_cast<int64_t>(filetime / 10000000) - 11644473600LL;
    EXPECT_LT(std::llabs(unixSeconds - static_cast<int64_t>(std::time(nullptr))), 600);

    // A value whose data does not fit: the name is given, the data size is the one needed.
    ASSERT_EQ(setString(k.get(), "zz", "0123456789"), ERROR_SUCCESS);
    char vname[8];
    DWORD vcch = sizeof vname, type = 0, cb = 4;
    BYTE data[16];
    EXPECT_EQ(RegEnumValue(k.get(), 6, vname, &vcch, nullptr, &type, data, &cb), ERROR_MORE_DATA);
    EXPECT_EQ(cb, 11u);
    cb = sizeof data;
    vcch = 2;
    EXPECT_EQ(RegEnumValue(k.get(), 6, vname, &vcch, nullptr, &type, data, &cb), ERROR_MORE_DATA);
    vcch = 3;
    EXPECT_EQ(RegEnumValue(k.get(), 6, vname, &vcch, nullptr, &type, data, &cb), ERROR_SUCCESS);
    EXPECT_EQ(vcch, 2u);
    EXPECT_STREQ(vname, "zz");
    EXPECT_EQ(type, static_cast<DWORD>(REG_SZ));
    EXPECT_EQ(cb, 11u);
    EXPECT_STREQ(reinterpret_cast<char*>(data), "0123456789");
    vcch = sizeof vname;
    EXPECT_EQ(RegEnumValue(k.get(), 7, vname, &vcch, nullptr, nullptr, nullptr, nullptr),
              ERROR_NO_MORE_ITEMS);

    // An enumeration started again after a deletion sees the new set.
    ASSERT_EQ(RegDeleteKey(k.get(), "alpha"), ERROR_SUCCESS);
    EXPECT_EQ(subkeys(k.get()), std::vector<std::string>(order.begin() + 1, order.end()));
}

TEST_F(RegistryTest, AccessMaskDecidesWhatAHandleMayDo) {
    {
        Key k = create("R\\Sub");
        ASSERT_EQ(setDword(k.get(), "v", 1), ERROR_SUCCESS);
    }
    Key ro;
    ASSERT_EQ(RegOpenKeyEx(HKEY_LOCAL_MACHINE, "R", 0, KEY_READ, ro.out()), ERROR_SUCCESS);
    HKEY h = nullptr;
    EXPECT_EQ(setDword(ro.get(), "v", 2), ERROR_ACCESS_DENIED);
    EXPECT_EQ(RegDeleteValue(ro.get(), "v"), ERROR_ACCESS_DENIED);
    EXPECT_EQ(RegCreateKey(ro.get(), "New", &h), ERROR_ACCESS_DENIED);
    EXPECT_EQ(h, nullptr);
    EXPECT_EQ(RegDeleteKey(ro.get(), "Sub"), ERROR_ACCESS_DENIED);
    EXPECT_EQ(subkeys(ro.get()), std::vector<std::string>{"Sub"});

    Key roSub;
    ASSERT_EQ(RegOpenKeyEx(ro.get(), "Sub", 0, KEY_READ, roSub.out()), ERROR_SUCCESS);
    EXPECT_EQ(readDword(roSub.get(), "v"), 1u);
    EXPECT_EQ(setDword(roSub.get(), "v", 3), ERROR_ACCESS_DENIED);

    // A write-only handle cannot read; one opened for everything can do both.
    Key wo;
    ASSERT_EQ(RegOpenKeyEx(HKEY_LOCAL_MACHINE, "R\\Sub", 0, KEY_WRITE, wo.out()), ERROR_SUCCESS);
    EXPECT_EQ(setDword(wo.get(), "v", 4), ERROR_SUCCESS);
    DWORD size = 0;
    EXPECT_EQ(RegQueryValueEx(wo.get(), "v", nullptr, nullptr, nullptr, &size),
              ERROR_ACCESS_DENIED);
    Key all;
    ASSERT_EQ(RegOpenKeyEx(HKEY_LOCAL_MACHINE, "R", 0, KEY_ALL_ACCESS, all.out()), ERROR_SUCCESS);
    EXPECT_EQ(RegDeleteKey(all.get(), "Sub"), ERROR_SUCCESS);
    EXPECT_TRUE(subkeys(ro.get()).empty());
}

TEST_F(RegistryTest, StaleAndInvalidHandlesAreRefused) {
    Key parent = create("S");
    Key victim = create("S\\Victim");
    ASSERT_EQ(setDword(victim.get(), "v", 1), ERROR_SUCCESS);
    ASSERT_EQ(RegDeleteKey(parent.get(), "Victim"), ERROR_SUCCESS);

    DWORD size = 4, v = 0;
    HKEY h = nullptr;
    char name[16];
    DWORD cch = sizeof name;
    EXPECT_EQ(
        RegQueryValueEx(victim.get(), "v", nullptr, nullptr, reinterpret_cast<BYTE*>(&v), &size),
        ERROR_KEY_DELETED);
    EXPECT_EQ(setDword(victim.get(), "v", 2), ERROR_KEY_DELETED);
    EXPECT_EQ(RegDeleteValue(victim.get(), "v"), ERROR_KEY_DELETED);
    EXPECT_EQ(RegCreateKey(victim.get(), "Sub", &h), ERROR_KEY_DELETED);
    EXPECT_EQ(RegOpenKeyEx(victim.get(), "", 0, KEY_READ, &h), ERROR_KEY_DELETED);
    EXPECT_EQ(RegOpenKeyEx(victim.get(), "Sub", 0, KEY_READ, &h), ERROR_KEY_DELETED);
    EXPECT_EQ(RegEnumKeyEx(victim.get(), 0, name, &cch, nullptr, nullptr, nullptr, nullptr),
              ERROR_KEY_DELETED);
    EXPECT_EQ(RegEnumValue(victim.get(), 0, name, &cch, nullptr, nullptr, nullptr, nullptr),
              ERROR_KEY_DELETED);
    // A new key of the same name is another key: the old handle stays dead.
    Key reborn = create("S\\Victim");
    EXPECT_EQ(setDword(victim.get(), "v", 3), ERROR_KEY_DELETED);
    EXPECT_TRUE(valueNames(reborn.get()).empty());

    HKEY garbage = reinterpret_cast<HKEY>(static_cast<uintptr_t>(0xDEADBEEF));
    EXPECT_EQ(setDword(garbage, "v", 1), ERROR_INVALID_HANDLE);
    EXPECT_EQ(RegOpenKeyEx(garbage, "x", 0, KEY_READ, &h), ERROR_INVALID_HANDLE);
    EXPECT_EQ(RegCloseKey(garbage), ERROR_INVALID_HANDLE);
    HKEY closed = nullptr;
    ASSERT_EQ(RegOpenKeyEx(HKEY_LOCAL_MACHINE, "S", 0, KEY_READ, &closed), ERROR_SUCCESS);
    ASSERT_EQ(RegCloseKey(closed), ERROR_SUCCESS);
    EXPECT_EQ(RegCloseKey(closed), ERROR_INVALID_HANDLE);
    EXPECT_EQ(RegEnumKeyEx(closed, 0, name, &cch, nullptr, nullptr, nullptr, nullptr),
              ERROR_INVALID_HANDLE);
    EXPECT_EQ(RegCloseKey(HKEY_LOCAL_MACHINE), ERROR_SUCCESS);
    EXPECT_EQ(subkeys(HKEY_LOCAL_MACHINE), std::vector<std::string>{"S"});
}

TEST_F(RegistryTest, TransactionsNestAndRollBackWhole) {
    RawDb raw(root_.store());
    auto seen = [&] { return raw.text("SELECT count(*) FROM vals"); };
    Key k = create("T");

    ASSERT_EQ(ZolRegBeginTransaction(), ERROR_SUCCESS);
    ASSERT_EQ(setDword(k.get(), "a", 1), ERROR_SUCCESS);
    ASSERT_EQ(ZolRegBeginTransaction(), ERROR_SUCCESS);
    ASSERT_EQ(setDword(k.get(), "b", 2), ERROR_SUCCESS);
    // A failed call inside a transaction leaves the rest of it alone.
    EXPECT_EQ(setDword(k.get(), std::string(ZOL_MAX_VALUE_NAME + 1, 'x').c_str(), 3),
              ERROR_INVALID_PARAMETER);
    EXPECT_EQ(RegSetValueEx(k.get(), "c", 0, REG_DWORD, nullptr, 4), ERROR_INVALID_PARAMETER);
    ASSERT_EQ(ZolRegCommitTransaction(), ERROR_SUCCESS);
    EXPECT_EQ(readDword(k.get(), "b"), 2u);  // this process sees its own writes
    EXPECT_EQ(seen(), "0") << "an inner commit must not write";
    ASSERT_EQ(ZolRegCommitTransaction(), ERROR_SUCCESS);
    EXPECT_EQ(seen(), "2");

    ASSERT_EQ(ZolRegBeginTransaction(), ERROR_SUCCESS);
    ASSERT_EQ(setDword(k.get(), "a", 10), ERROR_SUCCESS);
    {
        Key made = create("T\\Made");
        ASSERT_EQ(setDword(made.get(), "m", 1), ERROR_SUCCESS);
    }
    ASSERT_EQ(ZolRegRollbackTransaction(), ERROR_SUCCESS);
    EXPECT_EQ(readDword(k.get(), "a"), 1u);
    EXPECT_TRUE(subkeys(k.get()).empty());

    // A rollback at an inner level discards the whole: later writes are refused and the outer
    // commit reports that nothing was written.
    ASSERT_EQ(ZolRegBeginTransaction(), ERROR_SUCCESS);
    ASSERT_EQ(setDword(k.get(), "a", 20), ERROR_SUCCESS);
    ASSERT_EQ(ZolRegBeginTransaction(), ERROR_SUCCESS);
    ASSERT_EQ(setDword(k.get(), "b", 20), ERROR_SUCCESS);
    ASSERT_EQ(ZolRegRollbackTransaction(), ERROR_SUCCESS);
    EXPECT_EQ(setDword(k.get(), "c", 20), ERROR_INVALID_STATE);
    EXPECT_EQ(ZolRegCommitTransaction(), ERROR_INVALID_STATE);
    EXPECT_EQ(readDword(k.get(), "a"), 1u);
    EXPECT_EQ(readDword(k.get(), "b"), 2u);
    EXPECT_EQ(seen(), "2");

    EXPECT_EQ(ZolRegCommitTransaction(), ERROR_INVALID_STATE);
    EXPECT_EQ(ZolRegRollbackTransaction(), ERROR_INVALID_STATE);
    // Without a transaction every write lands at once.
    ASSERT_EQ(setDword(k.get(), "d", 4), ERROR_SUCCESS);
    EXPECT_EQ(seen(), "3");
}

TEST_F(RegistryTest, ATransactionBelongsToItsThread) {
    Key k = create("Th");
    ASSERT_EQ(ZolRegBeginTransaction(), ERROR_SUCCESS);
    ASSERT_EQ(setDword(k.get(), "mine", 1), ERROR_SUCCESS);
    std::atomic<bool> done{false};
    LONG otherResult = -1;
    std::thread other([&] {
        otherResult = setDword(k.get(), "other", 2);
        done = true;
    });
    // The other thread's write waits for the transaction instead of joining it.
    const auto until = std::chrono::steady_clock::now() + std::chrono::milliseconds(200);
    while (std::chrono::steady_clock::now() < until) {
        ASSERT_FALSE(done.load());
        std::this_thread::yield();
    }
    ASSERT_EQ(ZolRegRollbackTransaction(), ERROR_SUCCESS);
    other.join();
    EXPECT_EQ(otherResult, ERROR_SUCCESS);
    EXPECT_EQ(readDword(k.get(), "other"), 2u);
    EXPECT_EQ(readDword(k.get(), "mine"), std::nullopt);
}

TEST_F(RegistryTest, StoreFileModesPathAndLifecycle) {
    RawDb raw(root_.store());
    EXPECT_EQ(raw.text("PRAGMA journal_mode"), "wal");
    {
        Key k = create("Mode");
        ASSERT_EQ(setDword(k.get(), "v", 1), ERROR_SUCCESS);
    }
    auto mode = [](const fs::path& p) {
        struct stat st {};
        return ::stat(p.c_str(), &st) == 0 ? static_cast<int>(st.st_mode & 07777) : -1;
    };
    EXPECT_EQ(mode(root_.store()), 0600);
    EXPECT_EQ(mode(root_.store().parent_path()), 0700);
    EXPECT_EQ(mode(root_.store().string() + "-wal"), 0600);
    EXPECT_EQ(mode(root_.store().string() + "-shm"), 0600);

    char path[4096];
    ASSERT_EQ(ZolRegStorePath(path, sizeof path), ERROR_SUCCESS);
    EXPECT_EQ(fs::path(path), root_.store());
    EXPECT_EQ(ZolRegStorePath(path, static_cast<DWORD>(std::strlen(path))), ERROR_MORE_DATA);
    EXPECT_EQ(ZolRegCreateStore(), ERROR_ALREADY_EXISTS);
    EXPECT_EQ(ZolRegCheckStore(0), ERROR_SUCCESS);
    EXPECT_EQ(ZolRegCheckStore(1), ERROR_SUCCESS);

    EXPECT_EQ(ZolRegRemoveStore(), ERROR_SUCCESS);
    EXPECT_FALSE(fs::exists(root_.store()));
    EXPECT_FALSE(fs::exists(root_.store().string() + "-wal"));
    HKEY h = nullptr;
    EXPECT_EQ(RegOpenKeyEx(HKEY_LOCAL_MACHINE, "Mode", 0, KEY_READ, &h), ERROR_REGISTRY_IO_FAILED);
    EXPECT_FALSE(fs::exists(root_.store())) << "a registry call must never create the store";

    // A new store is empty, and made the same way even under a permissive umask.
    fs::remove(root_.store().parent_path());
    const mode_t old = ::umask(0);
    EXPECT_EQ(ZolRegCreateStore(), ERROR_SUCCESS);
    ::umask(old);
    EXPECT_EQ(mode(root_.store()), 0600);
    EXPECT_EQ(mode(root_.store().parent_path()), 0700);
    EXPECT_EQ(RegOpenKeyEx(HKEY_LOCAL_MACHINE, "Mode", 0, KEY_READ, &h), ERROR_FILE_NOT_FOUND);
    EXPECT_TRUE(subkeys(HKEY_LOCAL_MACHINE).empty());
}

TEST_F(RegistryTest, SwitchingZolDirSwitchesStores) {
    Key inA = create("OnlyInA");
    ASSERT_EQ(setDword(inA.get(), "v", 1), ERROR_SUCCESS);
    zoltest::ProductRoot other(false);
    {
        zoltest::ScopedEnv toB("ZolDir", other.path().string());
        ASSERT_EQ(ZolRegCreateStore(), ERROR_SUCCESS);
        HKEY h = nullptr;
        EXPECT_EQ(RegOpenKeyEx(HKEY_LOCAL_MACHINE, "OnlyInA", 0, KEY_READ, &h),
                  ERROR_FILE_NOT_FOUND);
        // A handle from the other store means nothing here.
        EXPECT_EQ(setDword(inA.get(), "v", 2), ERROR_KEY_DELETED);
        Key inB = create("OnlyInB");
        EXPECT_EQ(subkeys(HKEY_LOCAL_MACHINE), std::vector<std::string>{"OnlyInB"});
    }
    EXPECT_EQ(readDword(inA.get(), "v"), 1u);
    EXPECT_EQ(subkeys(HKEY_LOCAL_MACHINE), std::vector<std::string>{"OnlyInA"});
    ZolRegCloseStore();
    // Closing the connection keeps handles: the next call opens the store again.
    EXPECT_EQ(readDword(inA.get(), "v"), 1u);
}

}  // namespace
