// The wrappers of the report-settings library against a library that lacks their functions and
// against no library: each gives its own failure value and leaves the menu's state empty.
#include <gtest/gtest.h>
#include <zolwin.h>

#include "frame/rptset_calls.h"
#include "product_root.h"

TEST(ReportWrappers, MissingFunctionsAndHandle) {
    zoltest::ProductRoot root(false);
    zoltest::ScopedEnv zolDir("ZolDir", root.path().string());
    ASSERT_EQ(TraceLogInit(0, "wraptest", 0, 5, 0), 0);
    HMODULE lacking = LoadLibrary((root.path() / "lib" / "dscopy.dll").c_str());
    ASSERT_NE(lacking, nullptr) << ZolLastLoadError();

    BaseData record{};
    int method = 7;
    for (HMODULE lib : {lacking, static_cast<HMODULE>(nullptr)}) {
        EXPECT_EQ(InitAllBaseSetting(lib), FALSE);
        EXPECT_EQ(CPAllBaseData, nullptr);
        EXPECT_EQ(numBaseData, 0);
        EXPECT_EQ(InitBaseSetting(lib, &record), -1);
        EXPECT_EQ(PutBaseSetting(lib, &record), FALSE);
        EXPECT_EQ(InitIMBaseRegPath(lib), FALSE);
        EXPECT_EQ(CheckIMMode(lib), FALSE);
        EXPECT_EQ(InitIMBaseSetting(lib), FALSE);
        EXPECT_EQ(SetIMBaseSetting(lib), 0);
        EXPECT_EQ(GetVntMethod(lib, &method), -1);
        EXPECT_EQ(method, 7);
        EXPECT_EQ(SetVntMethod(lib, VANTREL_HTTPS), -1);
        EXPECT_EQ(ResetOpenSet(lib), -1);
        EXPECT_EQ(szGetEOpening(lib), 0);
    }
    FreeLibrary(lacking);

    const std::string trace = zoltest::readFile(root.traceFile("wraptest"));
    for (const char* line :
         {"<Gets GetBaseSetting  Address Failed.", "<Gets CheckInternetMailMode  Address Failed.",
          "<Gets AMGetVntMethod  Address Failed.",
          "<hLibRPTSET ==NULL.return -1 [0:success -1:failure].",
          "<hLibRPTSET ==NULL.return 0 [0:success -1:failure]."}) {
        EXPECT_NE(trace.find(line), std::string::npos) << line;
    }
}
