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
        ScopedEnv root("ZolDir", "/srv/zol"), value("ZOLTEST_VALUE", "v"),
            missing("ZOLTEST_MISSING", std::nullopt);
        // Names ignore case; unknown names and stray percent signs stay as written, and after
        // an unknown name its closing '%' may open the next one.
        const std::pair<const char*, const char*> cases[] = {
            {"%ZolDir%/lib/rptset.dll", "/srv/zol/lib/rptset.dll"},
            {"%ZOLDIR%|%zoldir%", "/srv/zol|/srv/zol"},
            {"", ""},
            {"%ZOLTEST_MISSING%/x", "%ZOLTEST_MISSING%/x"},
            {"%ZOLTEST_MISSING%ZOLTEST_VALUE%", "%ZOLTEST_MISSINGv"},
            {"100%% of %ZolDir", "100%% of %ZolDir"},
            {"%%ZolDir%", "%/srv/zol"},
            {"%ZOLTEST_VALUE%%ZOLTEST_VALUE%%", "vv%"},
        };
        for (const auto& [src, want] : cases)
            EXPECT_EQ(expand(src), want) << src;
    }
    for (std::optional<std::string> unsetOrEmpty : {std::optional<std::string>{}, {""}}) {
        ScopedEnv root("ZolDir", unsetOrEmpty);
        EXPECT_EQ(expand("%ZolDir%/data"), std::string(ZOL_INSTALL_PREFIX) + "/data");
    }
}

TEST(Environment, SmallBuffersGetTheSizeAndNothingBeyondThem) {
    ScopedEnv root("ZolDir", "/srv/zol//");
    const std::string want = "/srv/zol///lib";
    const DWORD needed = static_cast<DWORD>(want.size() + 1);
    for (DWORD size : {DWORD{5}, needed - 1, needed}) {
        std::string buf(64, 'Z');
        EXPECT_EQ(ExpandEnvironmentStrings("%ZolDir%/lib", buf.data(), size), needed);
        EXPECT_EQ(buf.substr(size), std::string(64 - size, 'Z')) << size;
        EXPECT_EQ(std::string(buf.c_str()), size == needed ? want : "") << size;
    }
    char path[64];
    EXPECT_EQ(ExpandEnvironmentStrings(nullptr, path, sizeof path), 0u);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INVALID_PARAMETER));

    // The root path drops trailing slashes and must fit with its terminator.
    ASSERT_TRUE(GetZolRootPath(path, sizeof path));
    EXPECT_STREQ(path, "/srv/zol");
    EXPECT_TRUE(GetZolRootPath(path, 9));
    EXPECT_FALSE(GetZolRootPath(path, 8));
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_MORE_DATA));
}

}  // namespace
