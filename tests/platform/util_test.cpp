// The utilities: the manager's readiness test, EUC-JP to UTF-8, IPv4 text into small buffers,
// and the password encoding.
#include <arpa/inet.h>
#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
#include <string>

#include "product_root.h"
#include "zolwin.h"

namespace {

// Converts into a target of `size` bytes and checks nothing lands beyond it.
std::string convert(const std::string& euc, int size, int expectRc) {
    std::string target(static_cast<size_t>(size) + 4, '#');
    EXPECT_EQ(CodeConvertFromEUC(euc.c_str(), target.data(), size), expectRc) << euc;
    EXPECT_EQ(target.substr(static_cast<size_t>(size)), "####") << "wrote past the target";
    return target.substr(0, target.find('\0'));
}

TEST(CodeConvertFromEUC, ConvertsRealTextAndRefusesWhatDoesNotFit) {
    const std::string nihon = "\xC6\xFC\xCB\xDC", nihonUtf8 = "\xE6\x97\xA5\xE6\x9C\xAC";  // 日本
    EXPECT_EQ(convert("disk " + nihon + " full", 64, 0), "disk " + nihonUtf8 + " full");
    EXPECT_EQ(convert("\x8E\xB1", 16, 0), "\xEF\xBD\xB1");  // half-width katakana
    EXPECT_EQ(convert(nihon, 7, 0), nihonUtf8);             // six bytes and the terminator
    // Too small, cut-off character, not EUC-JP: nothing half-converted is left.
    EXPECT_EQ(convert(nihon, 6, -1), "");
    EXPECT_EQ(convert("ab\xC6", 64, -1), "");
    EXPECT_EQ(convert("\xFF\xFE", 64, -1), "");
    char target[8];
    EXPECT_EQ(CodeConvertFromEUC(nullptr, target, sizeof target), -1);
    EXPECT_EQ(CodeConvertFromEUC("a", target, 0), -1);
}

TEST(InetNtoa, FitsOrFails) {
    in_addr addr{};
    char buf[32];
    ASSERT_EQ(inet_pton(AF_INET, "255.255.255.255", &addr), 1);
    EXPECT_EQ(zol_inet_ntoa_r(addr, buf, 16), buf);
    EXPECT_STREQ(buf, "255.255.255.255");
    EXPECT_EQ(zol_inet_ntoa_r(addr, buf, 15), nullptr);
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
        for (int i = 0; i < kLength; ++i) {
            ASSERT_TRUE(coded[i] != '\0' && coded[i] != plain[i]) << value << " at " << i;
        }
        Ras_Decode(coded.data(), kLength);
        ASSERT_EQ(coded, plain) << value;
    }
    for (std::string password : {"password", "Secret123!", "aaaaaaaa"}) {
        char buf[64] = {};
        std::strcpy(buf, password.c_str());
        Ras_Encode(buf, sizeof buf);  // callers may pass the whole buffer
        EXPECT_EQ(std::strlen(buf), password.size());
        EXPECT_EQ(std::string(buf).find_first_of(password), std::string::npos) << buf;
        Ras_Decode(buf, static_cast<int>(std::strlen(buf)));  // or the string alone
        EXPECT_EQ(std::string(buf), password);
    }
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
    EXPECT_FALSE(IsZOLntserverReady()) << "empty store";
    HKEY key = nullptr;
    ASSERT_EQ(RegCreateKey(HKEY_LOCAL_MACHINE, "SOFTWARE\\Tavik\\VNTService", &key), 0);
    RegCloseKey(key);
    EXPECT_FALSE(IsZOLntserverReady()) << "only another service's key";
    ASSERT_EQ(RegCreateKey(HKEY_LOCAL_MACHINE, "SOFTWARE\\Tavik\\ZolAlertMan", &key), 0);
    RegCloseKey(key);
    EXPECT_TRUE(IsZOLntserverReady());
    ZolRegCloseStore();
    EXPECT_EQ(initnewtlib() + initslanglib(), 0);  // newt is linked directly
}

}  // namespace
