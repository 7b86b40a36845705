// Start-up and shutdown of ZOLamsadm: the command line, the message file, the store check and
// the two start-up libraries, each failure with its trace line and exit status.
#include <gtest/gtest.h>

#include <filesystem>
#include <functional>

#include "frame_test_util.h"
#include "regpaths.h"

namespace fs = std::filesystem;
using frametest::traceCount;
using frametest::traceDump;
using zoltest::ProductRoot;

namespace {

zoltest::RunResult runProgram(const ProductRoot& root, bool japanese = false) {
    return zoltest::run({root.bin("ZOLamsadm").string()}, frametest::runEnv(root, japanese));
}

}  // namespace

// Each case runs in the same root: the trace counts grow by one run at a time.
TEST(FrameStartup, AdministratorModeIsTracedForEachCommandLine) {
    const std::vector<std::pair<std::vector<std::string>, int>> cases = {
        {{"-A"}, 1}, {{"-a"}, 0}, {{"-AB"}, 0}, {{"-A", "-A"}, 0}};
    ProductRoot root;
    int runs = 0;
    for (const auto& [args, flag] : cases) {
        auto t = frametest::startMenu(root, args);
        frametest::closeMenu(*t);
        ++runs;
        EXPECT_EQ(traceCount(root, 3, "Adm_Flag= 1."), 1) << args.size() << " args\n"
                                                          << traceDump(root);
        EXPECT_EQ(traceCount(root, 3, "Adm_Flag= 0."), runs - 1) << traceDump(root);
        EXPECT_EQ(traceCount(root, 3, "rc file=/data/E_report.rc"), runs) << traceDump(root);
        EXPECT_EQ(traceCount(root, 0, "<return 1.", "main"), runs) << traceDump(root);
    }
}

TEST(FrameStartup, MissingMessageFileEndsWithStatusZero) {
    ProductRoot root;
    for (const bool japanese : {false, true}) {
        const std::string rc = japanese ? "/data/J_report.rc" : "/data/E_report.rc";
        fs::remove(root.path().string() + rc);
        const zoltest::RunResult r = runProgram(root, japanese);
        EXPECT_EQ(r.status, 0) << r.out << r.err;
        EXPECT_EQ(traceCount(root, 3, "rc file=" + rc), 1) << traceDump(root);
        EXPECT_EQ(traceCount(root, 1, "<Open Str File:" + rc + " failed.return 0."), 1)
            << traceDump(root);
    }
    EXPECT_EQ(traceCount(root, 1, "<NT server is not running!exit(0)."), 0);
}

// One root, damaged further before each run: the key missing, garbage, no file at all.
TEST(FrameStartup, StoreNotReadyExitsWithStatusZeroAndAMessage) {
    const std::vector<std::function<void(const ProductRoot&)>> breakStore = {
        [](const ProductRoot& root) {
            frametest::zolreg(root, {"delete", "HKLM\\" ZOL_KEY_ALERTMAN, "/f"});
        },
        [](const ProductRoot& root) {
            fs::remove(root.store().string() + "-wal");
            fs::remove(root.store().string() + "-shm");
            zoltest::writeFile(root.store(), std::string(8192, 'x'));
        },
        [](const ProductRoot& root) { fs::remove(root.store()); },
    };
    ProductRoot root;
    for (std::size_t i = 0; i < breakStore.size(); ++i) {
        breakStore[i](root);
        const zoltest::RunResult r = runProgram(root);
        EXPECT_EQ(r.status, 0) << "case " << i << r.err;
        EXPECT_EQ(r.out, "Please confirm ZOLntserver is running!\n") << "case " << i;
        EXPECT_EQ(traceCount(root, 1, "<NT server is not running!exit(0)."), int(i) + 1)
            << traceDump(root);
    }
    EXPECT_EQ(traceCount(root, 0, "<return 1.", "main"), 0) << traceDump(root);
}

// rptset.dll missing first, then dscopy.dll too: without dscopy.dll the report-settings library
// is never tried.
TEST(FrameStartup, MissingStartupLibraryEndsWithStatusZero) {
    ProductRoot root;
    for (const std::string library : {"rptset", "dscopy"}) {
        ASSERT_TRUE(fs::remove(root.path() / "lib" / (library + ".dll")));
        const zoltest::RunResult r = runProgram(root);
        EXPECT_EQ(r.status, 0) << library << r.out << r.err;
        EXPECT_EQ(traceCount(root, 1, "<LoadRptsetDLL() failed!return 0."), 1) << traceDump(root);
        EXPECT_EQ(traceCount(root, 1, "<LoadDscopyDLL() failed!return 0."), library == "dscopy")
            << traceDump(root);
    }
    EXPECT_EQ(traceCount(root, 0, "<return 1.", "main"), 0) << traceDump(root);
}
