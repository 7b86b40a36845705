// The utilities: the manager's readiness test, EUC-JP to UTF-8, IPv4 text into small buffers, and
// the password encoding.
#include <arpa/inet.h>
#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
#include <string>

#include "product_root.h"
#include "zolwin.h"

namespace {

std::string convert(const std::string& euc, int size, int* rc) {
    std::string target(static_cast<size_t>(size) + 4, '#');
    *rc = CodeConvertFromEUC(euc.c_str(), target.data(), size);
    EXPECT_EQ(target.substr(static_cast<size_t>(size)), "####") << "wrote past the target";
    EXPECT_NE(std::memchr(target.data(), '\0', static_cast<size_t>(size)), nullptr)
        << "target not terminated";
    return target.c_str();
}

TEST(CodeConvertFromEUC, ConvertsRealTextAndRefusesWhatDoesNotFit) {
    int rc = 1;
    const std::string nihon = "\xC6\xFC\xCB\xDC";  // 日本 in EUC-JP
    const std::string nihonUtf8 = "\xE6\x97\xA5\xE6\x9C\xAC";
    EXPECT_EQ(convert(nihon, 64, &rc), nihonUtf8);
    EXPECT_EQ(rc, 0);
    EXPECT_EQ(convert("disk " + nihon + " full", 64, &rc), "disk " + nihonUtf8 + " full");
    EXPECT_EQ(rc, 0);
    EXPECT_EQ(convert("\x8E\xB1", 16, &rc), "\xEF\xBD\xB1");  // half-width katakana A
    EXPECT_EQ(rc, 0);
    EXPECT_EQ(convert("", 1, &rc), "");
    EXPECT_EQ(rc, 0);

    // Exactly fits (six bytes and the terminator), then one byte short.
    EXPECT_EQ(convert(nihon, 7, &rc), nihonUtf8);
    EXPECT_EQ(rc, 0);
    EXPECT_EQ(convert(nihon, 6, &rc), "");
    EXPECT_EQ(rc, -1);

    // A cut-off character and bytes that are not EUC-JP.
    EXPECT_EQ(convert("ab\xC6", 64, &rc), "");
    EXPECT_EQ(rc, -1);
    EXPECT_EQ(convert("\xFF\xFE", 64, &rc), "");
    EXPECT_EQ(rc, -1);

    char target[8];
    EXPECT_EQ(CodeConvertFromEUC(nullptr, target, sizeof target), -1);
    EXPECT_EQ(CodeConvertFromEUC("a", nullptr, 8), -1);
    EXPECT_EQ(CodeConvertFromEUC("a", target, 0), -1);
}

TEST(InetNtoa, FitsOrFails) {
    in_addr addr{};
    ASSERT_EQ(inet_pton(AF_INET, "255.255.255.255", &addr), 1);
    char buf[32];
    EXPECT_EQ(zol_inet_ntoa_r(addr, buf, 16), buf);
    EXPECT_STREQ(buf, "255.255.255.255");
    EXPECT_EQ(zol_inet_ntoa_r(addr, buf, 15), nullptr);

    ASSERT_EQ(inet_pton(AF_INET, "10.0.0.1", &addr), 1);
    EXPECT_EQ(zol_inet_ntoa_r(addr, buf, 9), buf);
    EXPECT_STREQ(buf, "10.0.0.1");
    EXPECT_EQ(zol_inet_ntoa_r(addr, buf, 8), nullptr);
    EXPECT_EQ(zol_inet_ntoa_r(addr, buf, 0), nullptr);
    EXPECT_EQ(zol_inet_ntoa_r(addr, buf, -1), nullptr);
    EXPECT_EQ(zol_inet_ntoa_r(addr, nullptr, 16), nullptr);
}

TEST(RasEncoding, RoundTripsEveryByteInEveryPositionWithoutZeros) {
    constexpr int kLength = 600;  // several periods of the position key
    for (int value = 1; value <= 255; ++value) {
        const std::string plain(kLength, static_cast<char>(value));
        std::string coded = plain;
        Ras_Encode(coded.data(), kLength);
        for (int i = 0; i < kLength; ++i) {
            ASSERT_NE(coded[i], '\0') << "value " << value << " position " << i;
            ASSERT_NE(coded[i], plain[i]) << "value " << value << " position " << i;
        }
        Ras_Decode(coded.data(), kLength);
        ASSERT_EQ(coded, plain) << "value " << value;
    }
}

TEST(RasEncoding, HidesPasswordsAndKeepsTheirLength) {
    for (std::string password : {"password", "Secret123!", "a", "aaaaaaaaaaaaaaaa"}) {
        char buf[64] = {};
        std::strcpy(buf, password.c_str());
        Ras_Encode(buf, sizeof buf);  // callers often pass the whole buffer
        EXPECT_EQ(std::strlen(buf), password.size());
        EXPECT_EQ(std::string(buf).find(password), std::string::npos);
        // Decoding the string alone (its strlen) gives the password back.
        Ras_Decode(buf, static_cast<int>(std::strlen(buf)));
        EXPECT_EQ(std::string(buf), password);
    }
    // Repeated characters do not give repeated code, so the text's shape does not show.
    std::string same = "aaaaaaaa";
    Ras_Encode(same.data(), static_cast<int>(same.size()));
    EXPECT_NE(same.find_first_not_of(same[0]), std::string::npos);

    std::string untouched = "keep";
    Ras_Encode(untouched.data(), 0);
    Ras_Encode(untouched.data(), -3);
    Ras_Decode(untouched.data(), -1);
    Ras_Encode(nullptr, 4);
    Ras_Decode(nullptr, 4);
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
    ZolRegCloseStore();
    EXPECT_FALSE(IsZOLntserverReady()) << "garbage file";
    ZolRegCloseStore();
    std::filesystem::remove(root.store());

    ASSERT_EQ(ZolRegCreateStore(), ERROR_SUCCESS);
    EXPECT_FALSE(IsZOLntserverReady()) << "empty store";
    HKEY key = nullptr;
    ASSERT_EQ(RegCreateKey(HKEY_LOCAL_MACHINE, "SOFTWARE\\Tavik\\VNTService", &key), ERROR_SUCCESS);
    RegCloseKey(key);
    EXPECT_FALSE(IsZOLntserverReady()) << "only another service's key";
    ASSERT_EQ(RegCreateKey(HKEY_LOCAL_MACHINE, "SOFTWARE\\Tavik\\ZolAlertMan", &key),
              ERROR_SUCCESS);
    RegCloseKey(key);
    EXPECT_TRUE(IsZOLntserverReady());
    ZolRegCloseStore();
}

TEST(NewtBinding, SucceedsAtOnce) {
    EXPECT_EQ(initnewtlib(), 0);
    EXPECT_EQ(initslanglib(), 0);
    freeslanglib();
    freenewtlib();
}

}  // namespace
