// Type names, /d data and query text of odd data in reg.exe's forms.
#include <gtest/gtest.h>
#include <zolwin.h>

#include "regtext.h"

namespace {

using namespace zolreg;

TEST(RegText, TypesAndCommandLineData) {
    EXPECT_EQ(typeFromName("reg_dword"), REG_DWORD);
    EXPECT_EQ(typeFromName("REG_MULTI_SZ"), REG_MULTI_SZ);
    EXPECT_FALSE(typeFromName("REG_QWORD"));
    EXPECT_EQ(typeName(11), "REG_TYPE_11");

    std::string why;
    EXPECT_EQ(dataFromText(REG_SZ, "abc", why), std::string("abc\0", 4));
    EXPECT_EQ(dataFromText(REG_DWORD, "110", why), std::string("\x6e\0\0\0", 4));
    EXPECT_EQ(dataFromText(REG_DWORD, "", why), std::string(4, '\0'));
    EXPECT_EQ(dataFromText(REG_BINARY, "01aB", why), std::string("\x01\xab", 2));
    EXPECT_EQ(dataFromText(REG_MULTI_SZ, "a\\0bc", why), std::string("a\0bc\0\0", 6));
    for (auto [type, bad] : std::vector<std::pair<uint32_t, std::string>>{
             {REG_DWORD, "4294967296"},
             {REG_DWORD, "-1"},
             {REG_DWORD, "12x"},
             {REG_DWORD, "0x"},
             {REG_BINARY, "123"},
             {REG_BINARY, "0g"},
             {REG_MULTI_SZ, "a\\0\\0b"},
         }) {
        why.clear();
        EXPECT_FALSE(dataFromText(type, bad, why)) << bad;
        EXPECT_NE(why.find(bad), std::string::npos) << why;
    }
}

TEST(RegText, QueryTextOfOddData) {
    EXPECT_EQ(queryText(REG_SZ, "unterminated"), "unterminated");
    EXPECT_EQ(queryText(REG_DWORD, "\x01\x02"), "0102");  // a DWORD of the wrong size
    EXPECT_EQ(queryLine("M", REG_MULTI_SZ, std::string("a\0b\0\0", 5)),
              "    M    REG_MULTI_SZ    a\\0b");
}

}  // namespace
