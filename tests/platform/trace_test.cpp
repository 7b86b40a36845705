// The trace log: the line format, one line per call, the level filter, long texts, a missing
// log folder, and several processes appending to one file at once.
#include <gtest/gtest.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <filesystem>
#include <map>
#include <memory>
#include <regex>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "child_process.h"
#include "product_root.h"
#include "zolwin.h"

namespace {

namespace fs = std::filesystem;
using zoltest::ProductRoot;
using zoltest::ScopedEnv;

std::vector<std::string> lines(const fs::path& file) {
    std::vector<std::string> out;
    std::istringstream in(zoltest::readFile(file));
    for (std::string line; std::getline(in, line);)
        out.push_back(line);
    return out;
}

const std::string kStamp = R"(\d{4}-\d\d-\d\d \d\d:\d\d:\d\d\.\d{3})";

TEST(TraceLog, OneLinePerCallWithAllFields) {
    ProductRoot root(false);
    ScopedEnv zolDir("ZolDir", root.path().string());
    EXPECT_EQ(TraceLogInit(0, "tracefmt", 0, TRACE_LEVEL_INFO, 0), 0);
    const int line = __LINE__ + 1;
    ZOL_TRACE(TRACE_LEVEL_ERROR, "<return %d.", 1);
    TraceLog(TRACE_LEVEL_TRACE, "/src/frame/menu.cpp", "EditParameter", 123, "> [IN] %s=%p",
             "hLibRPTSET", static_cast<void*>(nullptr));
    TraceLog(TRACE_LEVEL_INFO, "menu.cpp", "Split", 7, "first\nsecond\r\nthird\n");
    TraceLog(TRACE_LEVEL_INFO, nullptr, nullptr, 0, nullptr);

    const auto got = lines(root.traceFile("tracefmt"));
    ASSERT_EQ(got.size(), 4u) << zoltest::readFile(root.traceFile("tracefmt"));
    const std::string pid = "\\[" + std::to_string(getpid()) + "\\]";
    EXPECT_TRUE(
        std::regex_match(got[0], std::regex(kStamp + " " + pid + " L1 trace_test\\.cpp:" +
                                            "TestBody:" + std::to_string(line) + " <return 1\\.")))
        << got[0];
    EXPECT_TRUE(std::regex_match(got[1], std::regex(kStamp + " " + pid +
                                                    " L0 menu\\.cpp:EditParameter:123 > \\[IN\\] "
                                                    "hLibRPTSET=.*")))
        << got[1];
    // Line breaks inside the text are shown, not written.
    EXPECT_TRUE(got[2].ends_with(" L3 menu.cpp:Split:7 first\\nsecond\\r\\nthird\\n")) << got[2];
    EXPECT_TRUE(got[3].ends_with(" L3 ?:?:0 ")) << got[3];
}

TEST(TraceLog, LevelsAboveTheMaximumAreLeftOut) {
    ProductRoot root(false);
    ScopedEnv zolDir("ZolDir", root.path().string());
    TraceLogInit(0, "tracelevel", 0, TRACE_LEVEL_ERROR, 0);
    for (int level = TRACE_LEVEL_TRACE; level <= TRACE_LEVEL_INFO; ++level) {
        TraceLog(level, "f.cpp", "fn", level, "level %d", level);
    }
    auto got = lines(root.traceFile("tracelevel"));
    ASSERT_EQ(got.size(), 2u);
    EXPECT_TRUE(got[0].ends_with("L0 f.cpp:fn:0 level 0"));
    EXPECT_TRUE(got[1].ends_with("L1 f.cpp:fn:1 level 1"));

    // A new init takes the new maximum (and program name).
    TraceLogInit(0, "tracelevel", 0, -1, 0);
    TraceLog(TRACE_LEVEL_TRACE, "f.cpp", "fn", 1, "hidden");
    EXPECT_EQ(lines(root.traceFile("tracelevel")).size(), 2u);
}

TEST(TraceLog, LongTextIsCutNotLost) {
    ProductRoot root(false);
    ScopedEnv zolDir("ZolDir", root.path().string());
    TraceLogInit(0, "tracelong", 0, TRACE_LEVEL_INFO, 0);
    std::string text = "BEGIN" + std::string(10000, 'y');
    TraceLog(TRACE_LEVEL_INFO, "f.cpp", "fn", 1, "%s", text.c_str());
    TraceLog(TRACE_LEVEL_INFO, "f.cpp", "fn", 2, "after");
    const std::string all = zoltest::readFile(root.traceFile("tracelong"));
    auto got = lines(root.traceFile("tracelong"));
    ASSERT_EQ(got.size(), 2u);
    EXPECT_LE(got[0].size() + 1, 4096u);
    EXPECT_GT(got[0].size(), 4000u);
    EXPECT_NE(got[0].find("fn:1 BEGINyyy"), std::string::npos);
    EXPECT_TRUE(got[0].ends_with("[...]")) << got[0].substr(got[0].size() - 20);
    EXPECT_TRUE(got[1].ends_with("fn:2 after"));
}

TEST(TraceLog, MissingLogFolderDropsLinesQuietlyUntilItExists) {
    ProductRoot root(false);
    ScopedEnv zolDir("ZolDir", root.path().string());
    fs::remove_all(root.path() / "log");
    EXPECT_EQ(TraceLogInit(0, "tracemissing", 0, TRACE_LEVEL_INFO, 0), 0);
    errno = EINTR;
    TraceLog(TRACE_LEVEL_ERROR, "f.cpp", "fn", 1, "dropped");
    EXPECT_EQ(errno, EINTR) << "tracing must not change errno";
    EXPECT_FALSE(fs::exists(root.path() / "log"));

    // Once the folder is back, lines reach the file again without a new init.
    fs::create_directories(root.path() / "log");
    const auto until = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    while (!fs::exists(root.traceFile("tracemissing")) &&
           std::chrono::steady_clock::now() < until) {
        TraceLog(TRACE_LEVEL_ERROR, "f.cpp", "fn", 2, "back");
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    auto got = lines(root.traceFile("tracemissing"));
    ASSERT_FALSE(got.empty());
    EXPECT_TRUE(got[0].ends_with("fn:2 back"));
}

TEST(TraceLog, NothingIsWrittenBeforeInit) {
    ProductRoot root(false);
    auto r = zoltest::run({PLATFORM_HELPER, "trace-noinit"}, root.env());
    EXPECT_EQ(r.status, 0) << r.err;
    EXPECT_TRUE(fs::is_empty(root.path() / "log"));
}

TEST(TraceLog, ConcurrentProcessesWriteWholeLines) {
    ProductRoot root(false);
    ScopedEnv zolDir("ZolDir", root.path().string());
    constexpr int kProcesses = 4, kLines = 300, kLength = 1500;
    std::vector<std::unique_ptr<platformtest::ChildProcess>> children;
    for (int i = 0; i < kProcesses; ++i) {
        children.push_back(std::make_unique<platformtest::ChildProcess>(std::vector<std::string>{
            PLATFORM_HELPER, "trace", "shared", std::to_string(kLines), std::to_string(kLength)}));
    }
    std::map<std::string, int> perPid;
    for (auto& child : children) {
        ASSERT_EQ(child->wait(std::chrono::seconds(60)), 0);
        perPid[std::to_string(child->pid())] = 0;
    }
    // The fixed part by pattern, the long text by comparison (std::regex recurses per character).
    const std::regex head(kStamp + R"( \[(\d+)\] L1 platform_helper\.cpp:worker:(\d+) )");
    auto got = lines(root.traceFile("shared"));
    ASSERT_EQ(got.size(), static_cast<size_t>(kProcesses * kLines));
    for (const auto& line : got) {
        const auto textAt = line.find(":worker:");
        ASSERT_NE(textAt, std::string::npos) << line.substr(0, 120);
        const auto space = line.find(' ', textAt + 1);
        ASSERT_NE(space, std::string::npos) << line.substr(0, 120);
        const std::string prefix = line.substr(0, space + 1);
        std::smatch m;
        ASSERT_TRUE(std::regex_match(prefix, m, head)) << prefix;
        const std::string pid = m[1], number = m[2];
        EXPECT_EQ(line.substr(space + 1), pid + ":" + std::string(kLength, 'x') + ":" + number);
        ASSERT_EQ(perPid.count(pid), 1u) << pid;
        ++perPid[pid];
    }
    for (const auto& [pid, count] : perPid)
        EXPECT_EQ(count, kLines) << pid;
}

}  // namespace
