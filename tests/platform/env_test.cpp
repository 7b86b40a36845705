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
    const DWORD needed = ExpandEnvironmentStrings(src.c_str(), nullptr, 0);
    std::vector<char> buf(needed + 1, '#');
    EXPECT_EQ(ExpandEnvironmentStrings(src.c_str(), buf.data(), needed), needed) << src;
    EXPECT_EQ(buf[needed - 1], '\0') << src;
    return buf.data();
}

TEST(Environment, ExpandsVariablesAsWin32Does) {
    {
        ScopedEnv root("ZolDir", "/srv/zol");
        ScopedEnv value("ZOLTEST_VALUE", "v");
        ScopedEnv missing("ZOLTEST_MISSING", std::nullopt);
        EXPECT_EQ(expand("%ZolDir%/lib/rptset.dll"), "/srv/zol/lib/rptset.dll");
        EXPECT_EQ(expand("%ZOLDIR%|%zoldir%"), "/srv/zol|/srv/zol");  // names ignore case
        EXPECT_EQ(expand(""), "");
        // Unknown names and stray percent signs stay as written; after an unknown name its
        // closing '%' may open the next one.
        EXPECT_EQ(expand("%ZOLTEST_MISSING%/x"), "%ZOLTEST_MISSING%/x");
        EXPECT_EQ(expand("%ZOLTEST_MISSING%ZOLTEST_VALUE%"), "%ZOLTEST_MISSINGv");
        EXPECT_EQ(expand("100%% of %ZolDir"), "100%% of %ZolDir");
        EXPECT_EQ(expand("%%ZolDir%"), "%/srv/zol");
        EXPECT_EQ(expand("%ZOLTEST_VALUE%%ZOLTEST_VALUE%%"), "vv%");
    }
    for (std::optional<std::string> unsetOrEmpty : {std::optional<std::string>{}, {""}}) {
        ScopedEnv root("ZolDir", unsetOrEmpty);
        EXPECT_EQ(expand("%ZolDir%/data"), std::string(ZOL_INSTALL_PREFIX) + "/data");
    }
    EXPECT_STREQ(ZolInstallPrefix(), ZOL_INSTALL_PREFIX);
}

TEST(Environment, SmallBuffersGetTheSizeAndNothingBeyondThem) {
    ScopedEnv root("ZolDir", "/a/long/product/root");
    const std::string want = "/a/long/product/root/lib";
    const DWORD needed = static_cast<DWORD>(want.size() + 1);
    for (DWORD size : {DWORD{5}, needed - 1, needed}) {
        std::string buf(64, 'Z');
        EXPECT_EQ(ExpandEnvironmentStrings("%ZolDir%/lib", buf.data(), size), needed);
        EXPECT_EQ(buf.substr(size), std::string(64 - size, 'Z')) << size;
        EXPECT_EQ(std::string(buf.c_str()), size == needed ? want : "") << size;
    }
    char buf[8];
    EXPECT_EQ(ExpandEnvironmentStrings(nullptr, buf, sizeof buf), 0u);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INVALID_PARAMETER));
}

TEST(Environment, RootPathWithoutTrailingSlash) {
    char buf[64];
    ScopedEnv root("ZolDir", "/srv/zol//");
    ASSERT_TRUE(GetZolRootPath(buf, sizeof buf));
    EXPECT_STREQ(buf, "/srv/zol");
    EXPECT_TRUE(GetZolRootPath(buf, 9));  // exactly fits with its terminator
    EXPECT_FALSE(GetZolRootPath(buf, 8));
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_MORE_DATA));
    ScopedEnv unset("ZolDir", std::nullopt);
    ASSERT_TRUE(GetZolRootPath(buf, sizeof buf));
    EXPECT_EQ(std::string(buf) + "/", std::string(ZOL_INSTALL_PREFIX) + "/");
}

}  // namespace
