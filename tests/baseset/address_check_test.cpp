// The address, port and mail-address checks fed directly: ports by flag, addresses the library
// accepts or refuses, host names that resolve or not, and the mail rules by the message each
// fault gives.
#include "frame/check_boxes.h"
#include "frame/checks.h"

#include <gtest/gtest.h>
#include <zolwin.h>

#include <sstream>
#include <string>

#include "product_root.h"

namespace {

class AddressCheckTest : public ::testing::Test {
  protected:
    void SetUp() override {
        ASSERT_EQ(TraceLogInit(0, "addrtest", 0, 5, 0), 0);
        ipCheck_ = LoadLibrary(IPCHECK_STANDIN);
        ASSERT_NE(ipCheck_, nullptr) << ZolLastLoadError();
        // A library of the product that has no address check.
        noCheck_ = LoadLibrary((root_.path() / "lib" / "dscopy.dll").c_str());
        ASSERT_NE(noCheck_, nullptr) << ZolLastLoadError();
    }
    void TearDown() override {
        FreeLibrary(ipCheck_);
        FreeLibrary(noCheck_);
    }
    int TraceCount(const std::string& text) const {
        std::istringstream lines(zoltest::readFile(root_.traceFile("addrtest")));
        int count = 0;
        for (std::string line; std::getline(lines, line);)
            count += line.find(text) != std::string::npos;
        return count;
    }

    zoltest::ProductRoot root_{false};
    zoltest::ScopedEnv zolDir_{"ZolDir", root_.path().string()};
    HMODULE ipCheck_ = nullptr;
    HMODULE noCheck_ = nullptr;
};

TEST_F(AddressCheckTest, PortAndAddress) {
    struct Case {
        bool library;  // the library with the check, else one without it
        int32_t port;
        const char* text;
        int flag;
        int result;
        const char* out;  // expected out text when result is 0
    };
    const Case cases[] = {
        {true, 6000, "192.168.1.10", 1, -1, nullptr},
        {true, 65536, "192.168.1.10", 1, -1, nullptr},
        {true, 6001, "192.168.1.10", 1, 0, "192.168.1.10"},
        {true, 65535, "192.168.1.10", 1, 0, "192.168.1.10"},
        {true, 0, "192.168.1.10", 0, 0, "192.168.1.10"},
        {true, -5, "10.0.0.1", 0, 0, "10.0.0.1"},
        // The port is checked before the address.
        {true, 6000, "192.168.1.300", 1, -1, nullptr},
        {true, 0, "192.168.1.300", 0, -2, nullptr},
        {true, 0, "", 0, -2, nullptr},
        {true, 0, "...", 0, -2, nullptr},
        {true, 0, "localhost", 0, 0, "127.0.0.1"},
        {true, 7000, "localhost", 1, 0, "127.0.0.1"},
        {true, 0, "no-such-host.invalid", 0, -2, nullptr},
        // Without the library's check a dotted address is refused, a host name still resolves.
        {false, 0, "10.0.0.1", 0, -2, nullptr},
        {false, 0, "localhost", 0, 0, "127.0.0.1"},
    };
    for (const Case& c : cases) {
        char out[64] = "unchanged";
        EXPECT_EQ(CheckPortAndIP(c.library ? ipCheck_ : noCheck_, c.port, c.text, out, c.flag),
                  c.result)
            << c.text << " port " << c.port << " flag " << c.flag;
        EXPECT_STREQ(out, c.out != nullptr ? c.out : "unchanged") << c.text;
    }
    char out[64] = "";
    EXPECT_EQ(CheckPortAndIP(nullptr, 7000, "10.0.0.1", out, 1), -2);
    EXPECT_EQ(CheckManagerIP(nullptr, "10.0.0.1"), 0);
    EXPECT_EQ(CheckManagerIP(noCheck_, "10.0.0.1"), 0);
    EXPECT_EQ(CheckManagerIP(ipCheck_, "10.0.0.1"), 1);

    // Digits and dots never reach the resolver; only the two unresolvable names did.
    EXPECT_EQ(TraceCount("port number range invalid."), 3);
    EXPECT_EQ(TraceCount("HostToIP failed."), 1);
    EXPECT_EQ(TraceCount("lpszHostName=192.168.1.300"), 0);
    EXPECT_EQ(TraceCount("lpszHostName=localhost"), 3);
}

TEST_F(AddressCheckTest, HostToIP) {
    char out[kIPTextSize] = "";
    EXPECT_EQ(HostToIP("localhost", out), TRUE);
    EXPECT_STREQ(out, "127.0.0.1");
    char untouched[kIPTextSize] = "kept";
    EXPECT_EQ(HostToIP("no-such-host.invalid", untouched), FALSE);
    EXPECT_STREQ(untouched, "kept");
    EXPECT_EQ(HostToIP(nullptr, untouched), FALSE);
}

// The single-address rule of a sender and the list rule of the recipients, row by row.
TEST(MailAddress, SingleAddressAndListRules) {
    const std::string a80 = std::string(70, 'a') + "@host.test";  // 80 characters
    std::string hundred;
    for (int i = 0; i < 100; ++i)
        hundred += "a@b,";
    const auto single = SingleMailAddrFault, list = MailAddrListFault;
    struct Case {
        const char* (*rule)(const char*);
        std::string text;
        const char* fault;
    };
    const Case cases[] = {
        {single, "admin@example.test", nullptr},
        {single, "  admin@example.test   ", nullptr},
        {single, a80, nullptr},
        {single, "x" + a80, "IMAIL_DEST_MLTO_ERR3"},
        {single, "", "IMAIL_BASE_MLFROM_ERR1"},
        {single, "    ", "IMAIL_BASE_MLFROM_ERR1"},
        {single, "admin@example.test,", "IMAIL_BASE_MLFROM_ERR1"},
        {single, "a@b.test, c@d.test", "IMAIL_BASE_MLFROM_ERR1"},
        {single, "admin @example.test", "IMAIL_BASE_MLFROM_ERR1"},
        {single, "@example.test", "IMAIL_BASE_MLFROM_ERR1"},
        {single, "admin@", "IMAIL_BASE_MLFROM_ERR1"},
        {single, "a@b@c", "IMAIL_BASE_MLFROM_ERR1"},
        {single, "no-at-sign", "IMAIL_BASE_MLFROM_ERR1"},
        // Only the "@" rule is examined: tabs and high bytes are part of the address.
        {single, "a\tb@c", nullptr},
        {single, "\xa4\xa2@\xa4\xa4", nullptr},
        {list, "a@b.test", nullptr},
        {list, " a@b.test , c@d.test ,e@f.test ", nullptr},
        {list, ",,a@b.test,,,c@d.test,", nullptr},
        {list, a80 + "," + a80, nullptr},
        {list, "a@b.test," + std::string("x") + a80, "IMAIL_DEST_MLTO_ERR3"},
        {list, "a@b.test, c @d.test", "IMAIL_DEST_MLTO_ERR4"},
        {list, "@b.test", "IMAIL_DEST_MLTO_ERR4"},
        {list, "a@b.test,c@", "IMAIL_DEST_MLTO_ERR4"},
        {list, "a@b@c", "IMAIL_DEST_MLTO_ERR4"},
        {list, "a@b.test,plain", "IMAIL_DEST_MLTO_ERR4"},
        {list, "", "IMAIL_DEST_MLTO_ERR1"},
        {list, " , ,, ", "IMAIL_DEST_MLTO_ERR1"},
        {list, hundred, nullptr},
        {list, hundred + "c@d", "IMAIL_DEST_MLTO_ERR4"},
        // The scan stops at 512 characters: the address open there is not checked, and with
        // nothing closed before it the list counts as empty.
        {list, std::string(511, ' ') + "zz", "IMAIL_DEST_MLTO_ERR1"},
        {list, "a@b.test," + std::string(501, ' ') + "bad", nullptr},
    };
    for (const Case& c : cases) {
        EXPECT_STREQ(c.rule(c.text.c_str()), c.fault)
            << (c.rule == single ? "single" : "list") << " [" << c.text << "]";
    }
    EXPECT_STREQ(SingleMailAddrFault(nullptr), "IMAIL_BASE_MLFROM_ERR1");
    EXPECT_STREQ(MailAddrListFault(nullptr), "IMAIL_DEST_MLTO_ERR1");
}

TEST(MailAddress, AtSignRuleAndLineFlattening) {
    EXPECT_EQ(MyMailAddrCheck("a@b"), 0);
    EXPECT_EQ(MyMailAddrCheck("a b,c@d e"), 0);
    for (const char* bad : {"", "ab", "@b", "a@", "a@b@c"})
        EXPECT_EQ(MyMailAddrCheck(bad), -1) << bad;
    EXPECT_EQ(MyMailAddrCheck(nullptr), -1);

    char text[] = "line one\nline two\n\nend";
    EXPECT_EQ(MyStringConvert(text), 0);
    EXPECT_STREQ(text, "line one line two  end");
    EXPECT_EQ(MyStringConvert(nullptr), -1);
}

}  // namespace
