// Start-up and shutdown of ZOLamsadm: the command line, the message file, the store check and
// the two start-up libraries, each failure with its trace line and exit status.
#include <gtest/gtest.h>

#include <filesystem>
#include <functional>

#include "frame/startup.h"
#include "frame/textformat.h"
#include "frame_test_util.h"

namespace fs = std::filesystem;
using frametest::traceCount;
using frametest::traceDump;
using zoltest::ProductRoot;

namespace {

zoltest::RunResult runProgram(const ProductRoot& root, bool japanese = false) {
    return zoltest::run({root.bin("ZOLamsadm").string()}, frametest::runEnv(root, japanese));
}

}  // namespace

TEST(FrameStartup, OnlyTheSingleExactDashAIsAdministratorMode) {
    const char* admin[] = {"ZOLamsadm", "-A"};
    EXPECT_TRUE(IsAdministratorCommandLine(2, admin));
    const std::vector<std::vector<const char*>> others = {
        {"ZOLamsadm"},      {"ZOLamsadm", "-a"},       {"ZOLamsadm", "-AB"}, {"ZOLamsadm", "A"},
        {"ZOLamsadm", "-"}, {"ZOLamsadm", "-A", "-A"}, {"ZOLamsadm", ""},    {"ZOLamsadm", " -A"},
    };
    for (const auto& argv : others) {
        EXPECT_FALSE(IsAdministratorCommandLine(static_cast<int>(argv.size()), argv.data()))
            << argv.size() << " arguments, last " << argv.back();
    }
}

TEST(FrameStartup, MessageFormatsNeverReadMissingArguments) {
    EXPECT_EQ(FormatText("100%% done"), "100% done");
    EXPECT_EQ(FormatText("Call of %s failed.", {"InitialDS"}), "Call of InitialDS failed.");
    // A damaged text asks for more than it is given: the rest stays empty or as written.
    EXPECT_EQ(FormatText("%s and %s %d%", {"one"}), "one and  %d%");
    char cut[8];
    EXPECT_STREQ(FormatTextInto(cut, sizeof cut, "%s!", {"abcdefghij"}), "abcdefg");
}

TEST(FrameStartup, AdministratorModeIsTracedForEachCommandLine) {
    const std::vector<std::pair<std::vector<std::string>, int>> cases = {
        {{"-A"}, 1}, {{"-a"}, 0}, {{"-AB"}, 0}, {{"-A", "-A"}, 0}, {{}, 0}};
    for (const auto& [args, flag] : cases) {
        ProductRoot root;
        auto t = frametest::startMenu(root, args);
        frametest::closeMenu(*t);
        const std::string text = "Adm_Flag= " + std::to_string(flag) + ".";
        EXPECT_EQ(traceCount(root, 3, text), 1) << args.size() << " args\n" << traceDump(root);
        EXPECT_EQ(traceCount(root, 3, "rc file=/data/E_report.rc"), 1) << traceDump(root);
        EXPECT_EQ(traceCount(root, 0, "<return 1.", "main"), 1) << traceDump(root);
    }
}

TEST(FrameStartup, MissingMessageFileEndsWithStatusZero) {
    for (const bool japanese : {false, true}) {
        ProductRoot root;
        const std::string rc = japanese ? "/data/J_report.rc" : "/data/E_report.rc";
        fs::remove(root.path().string() + rc);
        const zoltest::RunResult r = runProgram(root, japanese);
        EXPECT_EQ(r.status, 0) << r.out << r.err;
        EXPECT_EQ(traceCount(root, 3, "rc file=" + rc), 1) << traceDump(root);
        EXPECT_EQ(traceCount(root, 1, "<Open Str File:" + rc + " failed.return 0."), 1)
            << traceDump(root);
        EXPECT_EQ(traceCount(root, 1, "<NT server is not running!exit(0)."), 0);
    }
}

TEST(FrameStartup, StoreNotReadyExitsWithStatusZeroAndAMessage) {
    const std::vector<std::function<void(const ProductRoot&)>> breakStore = {
        [](const ProductRoot& root) { fs::remove(root.store()); },
        [](const ProductRoot& root) {
            fs::remove(root.store().string() + "-wal");
            fs::remove(root.store().string() + "-shm");
            zoltest::writeFile(root.store(), std::string(8192, 'x'));
        },
        [](const ProductRoot& root) {
            frametest::zolreg(root, {"delete", "HKLM\\SOFTWARE\\Tavik\\ZolAlertMan", "/f"});
        },
    };
    for (std::size_t i = 0; i < breakStore.size(); ++i) {
        ProductRoot root;
        breakStore[i](root);
        const zoltest::RunResult r = runProgram(root);
        EXPECT_EQ(r.status, 0) << "case " << i << r.err;
        EXPECT_EQ(r.out, "Please confirm ZOLntserver is running!\n") << "case " << i;
        EXPECT_EQ(traceCount(root, 1, "<NT server is not running!exit(0)."), 1) << traceDump(root);
        EXPECT_EQ(traceCount(root, 0, "<return 1.", "main"), 0) << traceDump(root);
    }
}

TEST(FrameStartup, MissingStartupLibraryEndsWithStatusZero) {
    const std::vector<std::pair<std::string, std::string>> cases = {
        {"dscopy.dll", "<LoadDscopyDLL() failed!return 0."},
        {"rptset.dll", "<LoadRptsetDLL() failed!return 0."}};
    for (const auto& [library, trace] : cases) {
        ProductRoot root;
        ASSERT_TRUE(fs::remove(root.path() / "lib" / library));
        const zoltest::RunResult r = runProgram(root);
        EXPECT_EQ(r.status, 0) << library << r.out << r.err;
        EXPECT_EQ(traceCount(root, 1, trace), 1) << traceDump(root);
        EXPECT_EQ(traceCount(root, 0, "<return 1.", "main"), 0) << traceDump(root);
        // Without dscopy.dll the report-settings library is never tried.
        int rptsetLines = 0;
        for (const auto& e : frametest::readTrace(root))
            rptsetLines += e.function == "LoadRptsetDLL";
        EXPECT_EQ(rptsetLines > 0, library == "rptset.dll") << traceDump(root);
    }
}
