// The utilities: the manager's readiness test, EUC-JP to UTF-8, IPv4 text into small buffers,
// and the password encoding.
#include <arpa/inet.h>
#include <gtest/gtest.h>

#include <algorithm>

#include <cstring>
#include <filesystem>
#include <string>

#include "product_root.h"
#include "regpaths.h"
#include "zolwin.h"

namespace {

TEST(CodeConvertFromEUC, ConvertsRealTextAndRefusesWhatDoesNotFit) {
    const std::string nihon = "\xC6\xFC\xCB\xDC", nihonUtf8 = "\xE6\x97\xA5\xE6\x9C\xAC";  // 日本
    struct Case {
        std::string euc;
        int size, rc;
        std::string want;
    };
    // Too small, cut-off character, not EUC-JP: nothing half-converted is left.
    const Case cases[] = {{"disk " + nihon + " full", 64, 0, "disk " + nihonUtf8 + " full"},
                          {"\x8E\xB1", 16, 0, "\xEF\xBD\xB1"},  // half-width katakana
                          {nihon, 7, 0, nihonUtf8},             // six bytes and the terminator
                          {nihon, 6, -1, ""},
                          {"ab\xC6", 64, -1, ""},
                          {"\xFF\xFE", 64, -1, ""}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.euc + " into " + std::to_string(c.size));
        std::string target(static_cast<size_t>(c.size) + 4, '#');
        EXPECT_EQ(CodeConvertFromEUC(c.euc.c_str(), target.data(), c.size), c.rc);
        EXPECT_EQ(target.substr(static_cast<size_t>(c.size)), "####") << "wrote past the target";
        EXPECT_EQ(target.substr(0, target.find('\0')), c.want);
    }
    char target[8];
    EXPECT_EQ(CodeConvertFromEUC(nullptr, target, sizeof target), -1);
    EXPECT_EQ(CodeConvertFromEUC("a", target, 0), -1);
}

TEST(InetNtoa, FitsOrFails) {
    in_addr addr{};
    char buf[32];
    ASSERT_EQ(inet_pton(AF_INET, "10.0.0.1", &addr), 1);
    EXPECT_EQ(zol_inet_ntoa_r(addr, buf, 9), buf);
    EXPECT_STREQ(buf, "10.0.0.1");
    EXPECT_EQ(zol_inet_ntoa_r(addr, buf, 8), nullptr);
    EXPECT_EQ(zol_inet_ntoa_r(addr, buf, -1), nullptr);
    EXPECT_EQ(zol_inet_ntoa_r(addr, nullptr, 16), nullptr);
}

TEST(RasEncoding, RoundTripsEveryByteInEveryPositionAndHidesPasswords) {
    constexpr int kLength = 600;  // several periods of the position key
    for (int value = 1; value <= 255; ++value) {
        const std::string plain(kLength, static_cast<char>(value));
        std::string coded = plain;
        Ras_Encode(coded.data(), kLength);
        for (int i = 0; i < kLength; ++i)
            ASSERT_TRUE(coded[i] != '\0' && coded[i] != plain[i]) << value << " at " << i;
        Ras_Decode(coded.data(), kLength);
        ASSERT_EQ(coded, plain) << value;
    }
    char buf[64] = "Secret123!";
    Ras_Encode(buf, sizeof buf);  // callers may pass the whole buffer
    EXPECT_EQ(std::strlen(buf), 10u);
    EXPECT_EQ(std::string(buf).find_first_of("Secret123!"), std::string::npos) << buf;
    Ras_Decode(buf, static_cast<int>(std::strlen(buf)));  // or the string alone
    EXPECT_STREQ(buf, "Secret123!");
    std::string untouched = "keep";
    Ras_Encode(untouched.data(), 0);
    Ras_Decode(untouched.data(), -1);
    Ras_Encode(nullptr, 4);
    EXPECT_EQ(untouched, "keep");
}

TEST(IsZOLntserverReady, OnlyForAGoodStoreHoldingTheManagersKey) {
    zoltest::ProductRoot root(false);
    zoltest::ScopedEnv zolDir("ZolDir", root.path().string());
    ZolRegCloseStore();
    EXPECT_FALSE(IsZOLntserverReady()) << "no store at all";
    EXPECT_FALSE(std::filesystem::exists(root.store())) << "the check must not create a store";
    std::filesystem::create_directories(root.store().parent_path());
    zoltest::writeFile(root.store(), std::string(8192, 'G'));
    EXPECT_FALSE(IsZOLntserverReady()) << "garbage file";
    ZolRegCloseStore();
    std::filesystem::remove(root.store());

    ASSERT_EQ(ZolRegCreateStore(), ERROR_SUCCESS);
    HKEY key = nullptr;
    for (const char* path : {ZOL_KEY_VNTSERVICE, ZOL_KEY_ALERTMAN}) {
        EXPECT_FALSE(IsZOLntserverReady()) << "before " << path;
        ASSERT_EQ(RegCreateKey(HKEY_LOCAL_MACHINE, path, &key), 0);
        RegCloseKey(key);
    }
    EXPECT_TRUE(IsZOLntserverReady());
    ZolRegCloseStore();
}

// The start-up check reads every page of the store through SQLite's quick check, once, when it
// opens the connection: a store whose header is sound but one of whose pages is damaged is not
// ready.
TEST(IsZOLntserverReady, NotForAStoreWithADamagedPage) {
    zoltest::ProductRoot root(false);
    zoltest::ScopedEnv zolDir("ZolDir", root.path().string());
    ZolRegCloseStore();
    ASSERT_EQ(ZolRegCreateStore(), ERROR_SUCCESS);
    HKEY key = nullptr;
    ASSERT_EQ(RegCreateKey(HKEY_LOCAL_MACHINE, ZOL_KEY_ALERTMAN, &key), 0);
    const std::string text(200, 'v');
    for (int i = 0; i < 200; ++i) {
        const std::string name = "Value" + std::to_string(i);
        ASSERT_EQ(
            RegSetValueEx(key, name.c_str(), 0, REG_SZ, reinterpret_cast<const BYTE*>(text.c_str()),
                          static_cast<DWORD>(text.size() + 1)),
            0);
    }
    RegCloseKey(key);
    EXPECT_TRUE(IsZOLntserverReady());
    ZolRegCloseStore();  // the last connection writes everything into the file

    // Zero the last page, a b-tree page of the values, behind SQLite's back.
    std::string bytes = zoltest::readFile(root.store());
    constexpr std::size_t kPage = 4096;
    ASSERT_GE(bytes.size(), 4 * kPage);
    std::fill(bytes.end() - static_cast<std::ptrdiff_t>(kPage), bytes.end(), '\0');
    zoltest::writeFile(root.store(), bytes);

    EXPECT_FALSE(IsZOLntserverReady()) << "a new connection";
    EXPECT_EQ(ZolRegCheckStore(0), ERROR_REGISTRY_CORRUPT);
    ZolRegCloseStore();
}

}  // namespace
