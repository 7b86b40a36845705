// The registry functions where code written for Windows expects Win32's own behaviour: strings
// completed on write and on read, subkeys made and deleted whatever the parent's rights, value
// enumeration that does not fit, the smaller calling details, both spellings of the predefined
// key, and the refused key options.
#include <sqlite3.h>

#include <array>
#include <functional>

#include "registry_fixture.h"

using namespace regtest;

namespace {

const HKEY kHklm = HKEY_LOCAL_MACHINE;
const HKEY kHklmSignExtended =
    reinterpret_cast<HKEY>(static_cast<uintptr_t>(0xFFFFFFFF80000002ull));

std::string bytesOf(const char* text, size_t size) {
    return std::string(text, size);
}

LONG setBytes(HKEY h, const char* name, DWORD type, const std::string& bytes) {
    return RegSetValueEx(h, name, 0, type, reinterpret_cast<const BYTE*>(bytes.data()),
                         static_cast<DWORD>(bytes.size()));
}

// Replaces a value's bytes through a connection of its own, as another process (or an older
// version of this layer) would have written them.
void writeRaw(const std::string& store, const std::string& keyFold, const std::string& name,
              DWORD type, const std::string& bytes) {
    sqlite3* db = nullptr;
    ASSERT_EQ(sqlite3_open_v2(store.c_str(), &db, SQLITE_OPEN_READWRITE, nullptr), SQLITE_OK);
    sqlite3_busy_timeout(db, 10000);
    sqlite3_stmt* s = nullptr;
    const char* sql =
        "INSERT OR REPLACE INTO vals(key, name, fold, type, data) VALUES ("
        "(SELECT id FROM keys WHERE parent = 1 AND fold = ?1), ?2, lower(?2), ?3, ?4)";
    ASSERT_EQ(sqlite3_prepare_v2(db, sql, -1, &s, nullptr), SQLITE_OK);
    sqlite3_bind_text(s, 1, keyFold.c_str(), -1, SQLITE_TRANSIENT);
    sqlite3_bind_text(s, 2, name.c_str(), -1, SQLITE_TRANSIENT);
    sqlite3_bind_int64(s, 3, type);
    sqlite3_bind_blob(s, 4, bytes.data(), static_cast<int>(bytes.size()), SQLITE_TRANSIENT);
    EXPECT_EQ(sqlite3_step(s), SQLITE_DONE) << sqlite3_errmsg(db);
    sqlite3_finalize(s);
    sqlite3_close(db);
}

TEST_F(RegistryTest, StringsWrittenWithoutTerminatorAreStoredWithOne) {
    Key k = create("Str");
    struct Case {
        DWORD type;
        std::string written, stored;
    };
    const Case cases[] = {
        {REG_SZ, "abc", bytesOf("abc\0", 4)},
        {REG_SZ, bytesOf("abc\0", 4), bytesOf("abc\0", 4)},
        {REG_SZ, bytesOf("a\0bc", 4), bytesOf("a\0bc\0", 5)},
        {REG_SZ, "", ""},  // an empty text stays empty
        {REG_EXPAND_SZ, "%ZolDir%\\log", bytesOf("%ZolDir%\\log\0", 13)},
        {REG_MULTI_SZ, bytesOf("a\0b", 3), bytesOf("a\0b\0", 4)},
        {REG_MULTI_SZ, bytesOf("a\0b\0\0", 5), bytesOf("a\0b\0\0", 5)},
        {REG_BINARY, "abc", "abc"},  // only strings are completed
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(testing::Message() << c.type << " " << testing::PrintToString(c.written));
        ASSERT_EQ(setBytes(k.get(), "v", c.type, c.written), ERROR_SUCCESS);
        DWORD type = 0, size = 0;
        ASSERT_EQ(RegQueryValueEx(k.get(), "v", nullptr, &type, nullptr, &size), ERROR_SUCCESS);
        EXPECT_EQ(size, c.stored.size());
        EXPECT_EQ(readBytes(k.get(), "v"), c.stored);
        // A buffer of exactly the written length no longer holds the value.
        std::string buf(c.written.size() + 4, '\xEE');
        size = static_cast<DWORD>(c.written.size());
        const LONG r = RegQueryValueEx(k.get(), "v", nullptr, &type,
                                       reinterpret_cast<BYTE*>(buf.data()), &size);
        EXPECT_EQ(r, c.stored == c.written ? ERROR_SUCCESS : ERROR_MORE_DATA);
        EXPECT_EQ(size, c.stored.size());
    }

    // A string stored without its terminator (by an older layer) reads back terminated when the
    // buffer has room, and the size says exactly what was copied.
    struct Read {
        DWORD type;
        std::string stored;
        DWORD room;
        LONG result;
        std::string copied;  // the buffer's first bytes afterwards; size() is the reported size
    };
    const Read reads[] = {
        {REG_SZ, "abc", 10, ERROR_SUCCESS, bytesOf("abc\0", 4)},
        {REG_SZ, "abc", 3, ERROR_SUCCESS, "abc"},
        {REG_SZ, "abc", 2, ERROR_MORE_DATA, "\xEE\xEE\xEE"},
        {REG_EXPAND_SZ, "", 4, ERROR_SUCCESS, bytesOf("\0", 1)},
        {REG_MULTI_SZ, bytesOf("a\0b", 3), 10, ERROR_SUCCESS, bytesOf("a\0b\0\0", 5)},
        {REG_MULTI_SZ, bytesOf("a\0b", 3), 4, ERROR_SUCCESS, bytesOf("a\0b\0", 4)},
        {REG_MULTI_SZ, bytesOf("a\0b\0", 4), 10, ERROR_SUCCESS, bytesOf("a\0b\0\0", 5)},
        {REG_BINARY, "abc", 10, ERROR_SUCCESS, "abc"},
    };
    for (const Read& c : reads) {
        SCOPED_TRACE(testing::Message()
                     << c.type << " " << testing::PrintToString(c.stored) << " room " << c.room);
        writeRaw(root_.store().string(), "str", "raw", c.type, c.stored);
        std::string buf(16, '\xEE');
        DWORD size = c.room;
        EXPECT_EQ(RegQueryValueEx(k.get(), "raw", nullptr, nullptr,
                                  reinterpret_cast<BYTE*>(buf.data()), &size),
                  c.result);
        const size_t reported = c.result == ERROR_SUCCESS ? c.copied.size() : c.stored.size();
        EXPECT_EQ(size, reported);
        EXPECT_EQ(buf.substr(0, c.copied.size()), c.copied);
        EXPECT_EQ(buf.substr(c.copied.size()), std::string(16 - c.copied.size(), '\xEE'))
            << "bytes past the reported size were written";
    }
}

TEST_F(RegistryTest, SubkeysAreMadeAndDeletedWhateverTheParentWasOpenedFor) {
    Key made = create("P");
    const REGSAM masks[] = {KEY_READ, KEY_NOTIFY, KEY_SET_VALUE | KEY_ENUMERATE_SUB_KEYS,
                            KEY_QUERY_VALUE, KEY_WRITE};
    for (REGSAM mask : masks) {
        SCOPED_TRACE(mask);
        Key parent, child, childEx, other;
        ASSERT_EQ(open(parent, "P", mask), ERROR_SUCCESS);
        ASSERT_EQ(RegCreateKey(parent.get(), "Child", child.out()), ERROR_SUCCESS);
        DWORD disp = 0;
        ASSERT_EQ(
            RegCreateKeyEx(parent.get(), "ChildEx\\Deeper", 0, nullptr, REG_OPTION_NON_VOLATILE,
                           KEY_ALL_ACCESS, nullptr, childEx.out(), &disp),
            ERROR_SUCCESS);
        EXPECT_EQ(disp, static_cast<DWORD>(REG_CREATED_NEW_KEY));
        EXPECT_EQ(subkeys(made.get()), (Names{"Child", "ChildEx"}));
        // The new keys have the rights asked for them, not their parent's.
        EXPECT_EQ(setDword(child.get(), "v", 1), ERROR_SUCCESS);
        EXPECT_EQ(RegDeleteKey(parent.get(), "Child"), ERROR_SUCCESS);
        EXPECT_EQ(RegDeleteKey(parent.get(), "ChildEx\\Deeper"), ERROR_SUCCESS);
        EXPECT_EQ(RegDeleteKey(parent.get(), "ChildEx"), ERROR_SUCCESS);
        EXPECT_TRUE(subkeys(made.get()).empty());
        // Values still need the matching right on the key itself.
        EXPECT_EQ(setDword(parent.get(), "w", 2),
                  (mask & KEY_SET_VALUE) != 0 ? ERROR_SUCCESS : ERROR_ACCESS_DENIED);
        EXPECT_EQ(RegDeleteValue(parent.get(), "w"),
                  (mask & KEY_SET_VALUE) != 0 ? ERROR_SUCCESS : ERROR_ACCESS_DENIED);
        DWORD size = 0;
        EXPECT_EQ(RegQueryValueEx(parent.get(), "w", nullptr, nullptr, nullptr, &size),
                  (mask & KEY_QUERY_VALUE) != 0 ? ERROR_FILE_NOT_FOUND : ERROR_ACCESS_DENIED);
        EXPECT_EQ(open(other, "P\\Child"), ERROR_FILE_NOT_FOUND);
    }
}

TEST_F(RegistryTest, EnumValueThatDoesNotFitReportsTypeAndSizeAndLeavesTheBuffers) {
    Key k = create("En");
    ASSERT_EQ(setString(k.get(), "Charlie", "hello"), ERROR_SUCCESS);  // name 7 + 1, data 6
    struct Case {
        DWORD nameRoom, dataRoom;
        bool withData;
        LONG result;
        DWORD nameCount;  // what *lpcchValueName holds afterwards
        bool written;     // the name and data buffers hold the value
    };
    const Case cases[] = {
        {3, 20, true, ERROR_MORE_DATA, 3, false},   // name too small
        {7, 20, true, ERROR_MORE_DATA, 7, false},   // no room for the name's terminator
        {7, 0, false, ERROR_MORE_DATA, 7, false},   // name too small, size query
        {20, 2, true, ERROR_MORE_DATA, 20, false},  // only the data too small
        {3, 2, true, ERROR_MORE_DATA, 3, false},    // both
        {8, 6, true, ERROR_SUCCESS, 7, true},       // both just fit
        {20, 0, false, ERROR_SUCCESS, 7, false},    // size query: the name is copied
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(testing::Message()
                     << "name room " << c.nameRoom << ", data room " << c.dataRoom);
        std::array<char, 24> name;
        std::array<BYTE, 24> data;
        name.fill('x');
        data.fill(0xEE);
        DWORD cch = c.nameRoom, cb = c.dataRoom, type = 1234;
        EXPECT_EQ(RegEnumValue(k.get(), 0, name.data(), &cch, nullptr, &type,
                               c.withData ? data.data() : nullptr, &cb),
                  c.result);
        EXPECT_EQ(type, static_cast<DWORD>(REG_SZ));
        EXPECT_EQ(cb, 6u);
        EXPECT_EQ(cch, c.nameCount);
        const bool nameCopied = c.result == ERROR_SUCCESS;
        EXPECT_EQ(std::string(name.data(), 8),
                  nameCopied ? bytesOf("Charlie\0", 8) : std::string(8, 'x'));
        EXPECT_EQ(std::string(reinterpret_cast<char*>(data.data()), 7),
                  c.written ? bytesOf("hello\0\xEE", 7) : std::string(7, '\xEE'));
    }
}

TEST_F(RegistryTest, CallingDetailsFollowWin32) {
    Key k = create("D");
    Key leaf = create("D\\Leaf"), child = create("D\\Parent\\Child"), parent = create("D\\Parent");
    ASSERT_EQ(setString(k.get(), "s", "hello"), ERROR_SUCCESS);
    HKEY const sentinel = reinterpret_cast<HKEY>(static_cast<uintptr_t>(0x5EED0));
    BYTE buf[16];
    DWORD var = 0;
    struct Case {
        const char* what;
        std::function<LONG()> call;
        LONG result;
        std::function<bool()> after;
    };
    HKEY h = sentinel;
    DWORD size = 0;
    auto exists = [](const char* path) {
        Key o;
        return open(o, path) == ERROR_SUCCESS;
    };
    const Case cases[] = {
        {"delete a key through its own handle", [&] { return RegDeleteKey(leaf.get(), ""); },
         ERROR_SUCCESS,
         [&] {
             return !exists("D\\Leaf") &&
                    RegOpenKeyEx(leaf.get(), nullptr, 0, KEY_READ, &h) == ERROR_KEY_DELETED;
         }},
        {"a key with subkeys stays", [&] { return RegDeleteKey(parent.get(), nullptr); },
         ERROR_ACCESS_DENIED, [&] { return exists("D\\Parent\\Child"); }},
        {"the root stays", [&] { return RegDeleteKey(kHklm, ""); }, ERROR_ACCESS_DENIED,
         [&] { return exists("D"); }},
        {"a missing value's size is 0",
         [&] {
             size = 99;
             return RegQueryValueEx(k.get(), "none", nullptr, nullptr, buf, &size);
         },
         ERROR_FILE_NOT_FOUND, [&] { return size == 0; }},
        {"a missing value's size is 0 without a buffer",
         [&] {
             size = 99;
             return RegQueryValueEx(k.get(), "none", nullptr, nullptr, nullptr, &size);
         },
         ERROR_FILE_NOT_FOUND, [&] { return size == 0; }},
        {"type and size in one variable",
         [&] {
             var = sizeof buf;
             return RegQueryValueEx(k.get(), "s", nullptr, &var, buf, &var);
         },
         ERROR_SUCCESS, [&] { return var == 6 && std::memcmp(buf, "hello", 6) == 0; }},
        {"type and size in one variable, too small",
         [&] {
             var = 3;
             return RegQueryValueEx(k.get(), "s", nullptr, &var, buf, &var);
         },
         ERROR_MORE_DATA, [&] { return var == 6; }},
        {"type and size in one variable, enumerated",
         [&] {
             char name[8];
             DWORD cch = sizeof name;
             var = sizeof buf;
             return RegEnumValue(k.get(), 0, name, &cch, nullptr, &var, buf, &var);
         },
         ERROR_SUCCESS, [&] { return var == 6; }},
        {"no data and no size", [&] { return RegSetValueEx(k.get(), "e", 0, REG_SZ, nullptr, 0); },
         ERROR_SUCCESS, [&] { return readBytes(k.get(), "e") == std::string(); }},
        {"no data and no size, binary",
         [&] { return RegSetValueEx(k.get(), "b", 0, REG_BINARY, nullptr, 0); }, ERROR_SUCCESS,
         [&] { return readBytes(k.get(), "b") == std::string(); }},
        {"no data but a size", [&] { return RegSetValueEx(k.get(), "n", 0, REG_SZ, nullptr, 4); },
         ERROR_NOACCESS, [&] { return !readBytes(k.get(), "n"); }},
        {"create without a result",
         [&] {
             return RegCreateKeyEx(kHklm, "NoResult", 0, nullptr, REG_OPTION_NON_VOLATILE,
                                   KEY_ALL_ACCESS, nullptr, nullptr, nullptr);
         },
         ERROR_BADKEY, [&] { return !exists("NoResult"); }},
        {"failed open of a missing key",
         [&] { return RegOpenKeyEx(kHklm, "D\\Missing", 0, KEY_READ, &h); }, ERROR_FILE_NOT_FOUND,
         [&] { return h == sentinel; }},
        {"failed open of a bad path", [&] { return RegOpenKeyEx(kHklm, "\\D", 0, KEY_READ, &h); },
         ERROR_BAD_PATHNAME, [&] { return h == sentinel; }},
        {"failed open through a bad handle",
         [&] { return RegOpenKeyEx(sentinel, "D", 0, KEY_READ, &h); }, ERROR_INVALID_HANDLE,
         [&] { return h == sentinel; }},
        {"the predefined key opened by an empty name",
         [&] { return RegOpenKeyEx(kHklm, "", 0, KEY_READ, &h); }, ERROR_SUCCESS,
         [&] { return h == kHklm; }},
        {"the predefined key opened by a null name",
         [&] { return RegOpenKeyEx(kHklmSignExtended, nullptr, 0, KEY_READ, &h); }, ERROR_SUCCESS,
         [&] { return h == kHklmSignExtended && RegCloseKey(h) == ERROR_SUCCESS; }},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        h = sentinel;
        EXPECT_EQ(c.call(), c.result);
        EXPECT_TRUE(c.after());
    }
    EXPECT_EQ(subkeys(kHklm), Names{"D"}) << "the predefined key still works after its close";
}

TEST_F(RegistryTest, ThePredefinedKeyAnswersInBothSpellings) {
    const HKEY spellings[] = {kHklm, kHklmSignExtended};
    for (HKEY root : spellings) {
        SCOPED_TRACE(reinterpret_cast<uintptr_t>(root));
        Key k, o;
        ASSERT_EQ(RegCreateKeyEx(root, "Spelled\\Sub", 0, nullptr, REG_OPTION_NON_VOLATILE,
                                 KEY_ALL_ACCESS, nullptr, k.out(), nullptr),
                  ERROR_SUCCESS);
        ASSERT_EQ(setDword(k.get(), "v", 7), ERROR_SUCCESS);
        ASSERT_EQ(RegOpenKeyEx(root, "SPELLED\\sub", 0, KEY_READ, o.out()), ERROR_SUCCESS);
        EXPECT_EQ(readDword(o.get(), "v"), 7u);
        EXPECT_EQ(subkeys(root), Names{"Spelled"});
        EXPECT_EQ(setDword(root, "top", 1), ERROR_SUCCESS);
        EXPECT_EQ(valueNames(root), Names{"top"});
        EXPECT_EQ(RegDeleteValue(root, "top"), ERROR_SUCCESS);
        EXPECT_EQ(RegDeleteKey(root, "Spelled\\Sub"), ERROR_SUCCESS);
        EXPECT_EQ(RegDeleteKey(root, "Spelled"), ERROR_SUCCESS);
        EXPECT_EQ(RegCloseKey(root), ERROR_SUCCESS);
        EXPECT_TRUE(subkeys(kHklm).empty());
    }
    // Other predefined keys do not exist here.
    for (uintptr_t other : {uintptr_t{0x80000001u}, uintptr_t{0xFFFFFFFF80000001ull},
                            uintptr_t{0x0000000180000002ull}}) {
        Key o;
        EXPECT_EQ(RegOpenKeyEx(reinterpret_cast<HKEY>(other), "", 0, KEY_READ, o.out()),
                  ERROR_INVALID_HANDLE)
            << std::hex << other;
    }
}

TEST_F(RegistryTest, KeyOptionsOtherThanLastingAreRefusedAndCreateNothing) {
    // Volatile keys and links are not kept by this store (docs/registry.md says why).
    for (DWORD options : {DWORD{REG_OPTION_VOLATILE}, DWORD{2} /* create link */, DWORD{3}}) {
        SCOPED_TRACE(options);
        HKEY h = reinterpret_cast<HKEY>(0x1);
        DWORD disp = 0;
        EXPECT_EQ(RegCreateKeyEx(kHklm, "Opt\\V", 0, nullptr, options, KEY_ALL_ACCESS, nullptr, &h,
                                 &disp),
                  ERROR_INVALID_PARAMETER);
        EXPECT_EQ(h, nullptr);
        EXPECT_EQ(disp, 0u);
        EXPECT_TRUE(subkeys(kHklm).empty());
    }
}

}  // namespace
