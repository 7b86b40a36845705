// The trace log: the fields of a line, one line per call, the level filter, long texts, a
// missing log folder, and several processes appending to one file at once.
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

struct TraceLine {
    std::string pid, level, where, text;  // where = "file:function:line"
};

// Splits "YYYY-MM-DD hh:mm:ss.mmm [pid] Llevel where text"; nullopt for any other shape.
std::vector<std::optional<TraceLine>> readTrace(const fs::path& file) {
    std::vector<std::optional<TraceLine>> out;
    std::istringstream in(zoltest::readFile(file));
    for (std::string line; std::getline(in, line);) {
        const std::string stamp = "dddd-dd-dd dd:dd:dd.ddd [";
        bool ok = line.size() > stamp.size();
        for (size_t i = 0; ok && i < stamp.size(); ++i)
            ok = stamp[i] == 'd' ? std::isdigit(static_cast<unsigned char>(line[i])) != 0
                                 : line[i] == stamp[i];
        const auto pidEnd = line.find("] L", stamp.size());
        const auto levelEnd = line.find(' ', pidEnd + 3), whereEnd = line.find(' ', levelEnd + 1);
        out.emplace_back();
        if (ok && pidEnd != std::string::npos && whereEnd != std::string::npos)
            out.back() = TraceLine{line.substr(stamp.size(), pidEnd - stamp.size()),
                                   line.substr(pidEnd + 3, levelEnd - pidEnd - 3),
                                   line.substr(levelEnd + 1, whereEnd - levelEnd - 1),
                                   line.substr(whereEnd + 1)};
    }
    return out;
}

class TraceFile : public ::testing::Test {
  protected:
    zoltest::ProductRoot root{false};
    zoltest::ScopedEnv zolDir{"ZolDir", root.path().string()};
};

TEST_F(TraceFile, OneLinePerCallWithItsFieldsUpToTheMaximumLevel) {
    EXPECT_EQ(TraceLogInit(0, "tracefmt", 0, TRACE_LEVEL_FAILURE, 0), 0);
    const int line = __LINE__ + 1;
    ZOL_TRACE(TRACE_LEVEL_ERROR, "<return %d.", 1);
    TraceLog(TRACE_LEVEL_TRACE, "/src/frame/menu.cpp", "EditParameter", 123, "> [IN] %s=%d",
             "hLibRPTSET", 7);
    TraceLog(TRACE_LEVEL_INFO, "menu.cpp", "Hidden", 1, "above the maximum level");
    TraceLog(TRACE_LEVEL_FAILURE, "menu.cpp", "Split", 7, "first\nsecond\r\nthird\n");
    TraceLog(TRACE_LEVEL_FAILURE, nullptr, nullptr, 0, nullptr);
    const std::string longText = "BEGIN" + std::string(10000, 'y');
    TraceLog(TRACE_LEVEL_ERROR, "f.cpp", "fn", 1, "%s", longText.c_str());

    const std::string all = zoltest::readFile(root.traceFile("tracefmt"));
    const auto got = readTrace(root.traceFile("tracefmt"));
    ASSERT_EQ(got.size(), 5u) << all.substr(0, 2000);
    std::vector<std::string> fields;
    for (const auto& t : got) {
        ASSERT_TRUE(t);
        EXPECT_EQ(t->pid, std::to_string(getpid()));
        fields.push_back(t->level + " " + t->where + " " + t->text.substr(0, 30));
    }
    // Line breaks in the text are shown, not written; a long text is cut and marked.
    EXPECT_EQ(fields, (std::vector<std::string>{
                          "1 tests/platform/trace_test.cpp:TestBody:" + std::to_string(line) +
                              " <return 1.",
                          "0 /src/frame/menu.cpp:EditParameter:123 > [IN] hLibRPTSET=7",
                          "2 menu.cpp:Split:7 first\\nsecond\\r\\nthird\\n", "2 ?:?:0 ",
                          "1 f.cpp:fn:1 BEGIN" + std::string(25, 'y')}));
    EXPECT_TRUE(got[4]->text.ends_with("[...]"));
    const size_t lastLength = all.size() - all.rfind('\n', all.size() - 2) - 1;  // with its '\n'
    EXPECT_LE(lastLength, 4096u);
    EXPECT_GT(lastLength, 4000u);

    TraceLogInit(0, "tracefmt", 0, -1, 0);  // a new init sets a new maximum
    TraceLog(TRACE_LEVEL_TRACE, "f.cpp", "fn", 1, "hidden");
    EXPECT_EQ(readTrace(root.traceFile("tracefmt")).size(), 5u);
}

// A line written inside a lambda, and inside a lambda inside that one, names the function that
// holds them, as a line of the function itself does. Each text carries the line it is written on.
int traceFromLambdas() {
    ZOL_TRACE(TRACE_LEVEL_ERROR, "%d", __LINE__);
    auto outer = [](int v) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "%d", __LINE__);
        auto inner = [v] { ZOL_TRACE(TRACE_LEVEL_ERROR, "%d", __LINE__ + v - v); };
        inner();
        return v;
    };
    return outer(7);
}

struct Tracer {
    void run() const {
        [this] { ZOL_TRACE(TRACE_LEVEL_ERROR, "%d", __LINE__ + value - value); }();
    }
    int value = 3;
};

TEST_F(TraceFile, LambdaLinesNameTheirEnclosingFunctionAndTheUnitsPath) {
    ASSERT_EQ(TraceLogInit(0, "tracelambda", 0, TRACE_LEVEL_INFO, 0), 0);
    traceFromLambdas();
    Tracer{}.run();
    std::vector<std::string> where;
    for (const auto& t : readTrace(root.traceFile("tracelambda"))) {
        ASSERT_TRUE(t);
        where.push_back(t->where.substr(0, t->where.rfind(':') + 1) + t->text);
        EXPECT_TRUE(t->where.ends_with(":" + t->text)) << t->where << " " << t->text;
    }
    const std::string unit = "tests/platform/trace_test.cpp:";
    ASSERT_EQ(where.size(), 4u);
    EXPECT_EQ(where[0].substr(0, where[0].rfind(':')), unit + "traceFromLambdas");
    EXPECT_EQ(where[1].substr(0, where[1].rfind(':')), unit + "traceFromLambdas");
    EXPECT_EQ(where[2].substr(0, where[2].rfind(':')), unit + "traceFromLambdas");
    EXPECT_EQ(where[3].substr(0, where[3].rfind(':')), unit + "run");
}

TEST_F(TraceFile, WithoutInitOrLogFolderLinesAreDroppedQuietly) {
    auto r = zoltest::run({PLATFORM_HELPER}, root.env());
    EXPECT_EQ(r.status, 0) << r.err;
    EXPECT_TRUE(fs::is_empty(root.path() / "log"));

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
    auto got = readTrace(root.traceFile("tracemissing"));
    ASSERT_FALSE(got.empty());
    EXPECT_EQ(got[0]->text, "back");
}

TEST_F(TraceFile, ConcurrentProcessesWriteWholeLines) {
    constexpr int kProcesses = 4, kLines = 300, kLength = 1500;
    std::vector<std::unique_ptr<platformtest::ChildProcess>> children;
    for (int i = 0; i < kProcesses; ++i) {
        children.push_back(std::make_unique<platformtest::ChildProcess>([] {
            TraceLogInit(0, "shared", 0, TRACE_LEVEL_INFO, 0);
            const std::string text(kLength, 'x');
            for (int n = 0; n < kLines; ++n)
                TraceLog(TRACE_LEVEL_ERROR, "helper.cpp", "worker", n, "%d:%s:%d", getpid(),
                         text.c_str(), n);
            return 0;
        }));
    }
    for (auto& child : children)
        ASSERT_EQ(child->wait(), 0);
    std::map<std::string, int> perPid;
    for (const auto& t : readTrace(root.traceFile("shared"))) {
        ASSERT_TRUE(t);
        ASSERT_TRUE(t->where.starts_with("helper.cpp:worker:")) << t->where;
        const std::string number = t->where.substr(t->where.rfind(':') + 1);
        ASSERT_EQ(t->text, t->pid + ":" + std::string(kLength, 'x') + ":" + number);
        ++perPid[t->pid];
    }
    EXPECT_EQ(perPid.size(), static_cast<size_t>(kProcesses));
    for (const auto& [pid, count] : perPid)
        EXPECT_EQ(count, kLines) << pid;
}

}  // namespace
