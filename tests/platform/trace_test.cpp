// The trace log: the line format, one line per call, the level filter, long texts, a missing
// log folder, and several processes appending to one file at once.
#include <gtest/gtest.h>
#include <unistd.h>

#include <cctype>
#include <cerrno>
#include <chrono>
#include <filesystem>
#include <map>
#include <memory>
#include <optional>
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

// A trace line split into its fields; nullopt when the line does not have a trace line's shape.
struct TraceLine {
    std::string pid, level, where, text;  // where = "file:function:line"
};

bool allDigits(const std::string& s) {
    return !s.empty() && s.find_first_not_of("0123456789") == std::string::npos;
}

std::optional<TraceLine> parse(const std::string& line) {
    static const std::string stamp = "dddd-dd-dd dd:dd:dd.ddd";
    if (line.size() < stamp.size() + 2)
        return std::nullopt;
    for (size_t i = 0; i < stamp.size(); ++i) {
        const bool ok = stamp[i] == 'd' ? std::isdigit(static_cast<unsigned char>(line[i])) != 0
                                        : line[i] == stamp[i];
        if (!ok)
            return std::nullopt;
    }
    const std::string rest = line.substr(stamp.size());
    const auto pidEnd = rest.find("] L");
    const auto levelEnd = rest.find(' ', pidEnd + 3);
    const auto whereEnd = rest.find(' ', levelEnd + 1);
    if (!rest.starts_with(" [") || pidEnd == std::string::npos || levelEnd == std::string::npos ||
        whereEnd == std::string::npos) {
        return std::nullopt;
    }
    TraceLine t{rest.substr(2, pidEnd - 2), rest.substr(pidEnd + 3, levelEnd - pidEnd - 3),
                rest.substr(levelEnd + 1, whereEnd - levelEnd - 1), rest.substr(whereEnd + 1)};
    if (!allDigits(t.pid) || !allDigits(t.level))
        return std::nullopt;
    return t;
}

TEST(TraceLog, OneLinePerCallWithAllFields) {
    ProductRoot root(false);
    ScopedEnv zolDir("ZolDir", root.path().string());
    EXPECT_EQ(TraceLogInit(0, "tracefmt", 0, TRACE_LEVEL_INFO, 0), 0);
    const int line = __LINE__ + 1;
    ZOL_TRACE(TRACE_LEVEL_ERROR, "<return %d.", 1);
    TraceLog(TRACE_LEVEL_TRACE, "/src/frame/menu.cpp", "EditParameter", 123, "> [IN] %s=%d",
             "hLibRPTSET", 7);
    TraceLog(TRACE_LEVEL_INFO, "menu.cpp", "Split", 7, "first\nsecond\r\nthird\n");
    TraceLog(TRACE_LEVEL_INFO, nullptr, nullptr, 0, nullptr);

    const auto got = lines(root.traceFile("tracefmt"));
    ASSERT_EQ(got.size(), 4u) << zoltest::readFile(root.traceFile("tracefmt"));
    std::vector<TraceLine> parsed;
    for (const auto& l : got) {
        auto t = parse(l);
        ASSERT_TRUE(t) << l;
        EXPECT_EQ(t->pid, std::to_string(getpid()));
        parsed.push_back(*t);
    }
    EXPECT_EQ(parsed[0].level, "1");
    EXPECT_EQ(parsed[0].where, "trace_test.cpp:TestBody:" + std::to_string(line));
    EXPECT_EQ(parsed[0].text, "<return 1.");
    EXPECT_EQ(parsed[1].level, "0");
    EXPECT_EQ(parsed[1].where, "menu.cpp:EditParameter:123");
    EXPECT_EQ(parsed[1].text, "> [IN] hLibRPTSET=7");
    // Line breaks inside the text are shown, not written.
    EXPECT_EQ(parsed[2].level, "3");
    EXPECT_EQ(parsed[2].text, "first\\nsecond\\r\\nthird\\n");
    EXPECT_EQ(parsed[3].where, "?:?:0");
    EXPECT_EQ(parsed[3].text, "");
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
    auto got = lines(root.traceFile("shared"));
    ASSERT_EQ(got.size(), static_cast<size_t>(kProcesses * kLines));
    for (const auto& line : got) {
        auto t = parse(line);
        ASSERT_TRUE(t) << line.substr(0, 120);
        EXPECT_EQ(t->level, "1");
        ASSERT_TRUE(t->where.starts_with("platform_helper.cpp:worker:")) << t->where;
        const std::string number = t->where.substr(t->where.rfind(':') + 1);
        EXPECT_EQ(t->text, t->pid + ":" + std::string(kLength, 'x') + ":" + number);
        ASSERT_EQ(perPid.count(t->pid), 1u) << t->pid;
        ++perPid[t->pid];
    }
    for (const auto& [pid, count] : perPid)
        EXPECT_EQ(count, kLines) << pid;
}

}  // namespace
