// Environment expansion and the product root: %ZolDir% from the environment or the built-in
// prefix, Win32's handling of unknown names and stray percent signs, and small buffers.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "product_root.h"
#include "zolwin.h"
#include "zolwin_config.h"

namespace {

using zoltest::ScopedEnv;

std::string expand(const std::string& src) {
    DWORD needed = ExpandEnvironmentStrings(src.c_str(), nullptr, 0);
    EXPECT_GT(needed, 0u) << src;
    std::vector<char> buf(needed + 8, '#');
    DWORD wrote = ExpandEnvironmentStrings(src.c_str(), buf.data(), needed);
    EXPECT_EQ(wrote, needed) << src;
    std::string out(buf.data());
    EXPECT_EQ(out.size() + 1, needed) << src;
    return out;
}

TEST(Environment, ZolDirFromEnvironmentOrBuiltInPrefix) {
    {
        ScopedEnv root("ZolDir", "/srv/zol-root");
        EXPECT_EQ(expand("%ZolDir%/lib/rptset.dll"), "/srv/zol-root/lib/rptset.dll");
        // Variable names ignore case, as on Win32.
        EXPECT_EQ(expand("%ZOLDIR%|%zoldir%"), "/srv/zol-root|/srv/zol-root");
    }
    {
        ScopedEnv unset("ZolDir", std::nullopt);
        EXPECT_EQ(expand("%ZolDir%/data"), std::string(ZOL_INSTALL_PREFIX) + "/data");
        EXPECT_STREQ(ZolInstallPrefix(), ZOL_INSTALL_PREFIX);
    }
    {
        ScopedEnv empty("ZolDir", "");
        EXPECT_EQ(expand("%ZolDir%"), ZOL_INSTALL_PREFIX);
    }
}

TEST(Environment, UnknownNamesAndPercentSignsStayAsWritten) {
    ScopedEnv root("ZolDir", "/r");
    ScopedEnv other("ZOLTEST_VALUE", "v");
    ScopedEnv missing("ZOLTEST_MISSING", std::nullopt);
    EXPECT_EQ(expand("plain text"), "plain text");
    EXPECT_EQ(expand(""), "");
    EXPECT_EQ(expand("%ZOLTEST_MISSING%/x"), "%ZOLTEST_MISSING%/x");
    // After an unknown name, its closing '%' may open the next name.
    EXPECT_EQ(expand("%ZOLTEST_MISSING%ZOLTEST_VALUE%"), "%ZOLTEST_MISSINGv");
    EXPECT_EQ(expand("100%%"), "100%%");
    EXPECT_EQ(expand("%%ZolDir%"), "%/r");
    EXPECT_EQ(expand("50% of %ZolDir"), "50% of %ZolDir");
    EXPECT_EQ(expand("%ZOLTEST_VALUE%%ZOLTEST_VALUE%"), "vv");
    EXPECT_EQ(expand("%"), "%");
}

TEST(Environment, SmallBuffersGetTheSizeAndNothingBeyondThem) {
    ScopedEnv root("ZolDir", "/a/rather/long/product/root");
    const std::string want = "/a/rather/long/product/root/lib";
    const DWORD needed = static_cast<DWORD>(want.size() + 1);

    std::string buf(64, 'Z');
    EXPECT_EQ(ExpandEnvironmentStrings("%ZolDir%/lib", buf.data(), 5), needed);
    EXPECT_EQ(buf.substr(5), std::string(59, 'Z'));  // nothing written past nSize
    EXPECT_EQ(buf[0], '\0');                         // and no cut-off path to use by mistake

    buf.assign(64, 'Z');
    EXPECT_EQ(ExpandEnvironmentStrings("%ZolDir%/lib", buf.data(), needed - 1), needed);
    EXPECT_EQ(buf.substr(needed - 1), std::string(64 - (needed - 1), 'Z'));

    buf.assign(64, 'Z');
    EXPECT_EQ(ExpandEnvironmentStrings("%ZolDir%/lib", buf.data(), needed), needed);
    EXPECT_EQ(std::string(buf.c_str()), want);
    EXPECT_EQ(buf[needed], 'Z');

    SetLastError(0);
    EXPECT_EQ(ExpandEnvironmentStrings(nullptr, buf.data(), 64), 0u);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INVALID_PARAMETER));
    EXPECT_EQ(ExpandEnvironmentStrings("x", nullptr, 10), 0u);
}

TEST(Environment, RootPathWithoutTrailingSlash) {
    char buf[64];
    {
        ScopedEnv root("ZolDir", "/srv/zol//");
        ASSERT_TRUE(GetZolRootPath(buf, sizeof buf));
        EXPECT_STREQ(buf, "/srv/zol");
        EXPECT_TRUE(GetZolRootPath(buf, 9));  // exactly fits with its terminator
        EXPECT_FALSE(GetZolRootPath(buf, 8));
        EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_MORE_DATA));
        EXPECT_FALSE(GetZolRootPath(nullptr, 64));
    }
    {
        ScopedEnv unset("ZolDir", std::nullopt);
        ASSERT_TRUE(GetZolRootPath(buf, sizeof buf));
        std::string prefix = ZOL_INSTALL_PREFIX;
        while (prefix.size() > 1 && prefix.back() == '/')
            prefix.pop_back();
        EXPECT_EQ(std::string(buf), prefix);
    }
}

}  // namespace
