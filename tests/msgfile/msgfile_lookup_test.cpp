// The message lookup on hand-made buffers (scan rules and guards), and opening and loading the
// file under a temporary product root.
#include <gtest/gtest.h>

#include <chrono>
#include <cstring>
#include <filesystem>
#include <memory>
#include <string>
#include <thread>

#include "frame/msgfile.h"
#include "product_root.h"
#include "zolwin.h"

namespace fs = std::filesystem;

namespace {

// The text in a heap block of exactly its size plus the terminating zero, so that the sanitizer
// catches a scan that runs past the end of the text.
std::unique_ptr<char[]> Text(const std::string& text) {
    std::unique_ptr<char[]> block(new char[text.size() + 1]);
    std::memcpy(block.get(), text.c_str(), text.size() + 1);
    return block;
}

// A fresh product root without J_report.rc.
struct TempRoot {
    TempRoot() { fs::remove(path / "data" / "J_report.rc"); }
    zoltest::ProductRoot root{false};
    const fs::path path = root.path();
    zoltest::ScopedEnv env{"ZolDir", path.string()};
};

}  // namespace

TEST(MsgFileLookup, ScanRules) {
    const std::string file =
        "[BUTTON_OK_ID]\ntext=\"OK\"\n"
        "[BUTTON]\ntext=\"short\"\n"
        " [INDENTED_ID]\ntext=\"indented\"\n"
        "text=\"x\" [INLINE_ID]\ntext=\"inline\"\n"
        "[lower_id]\ntext=\"lower\"\n"
        "[EMPTY_ID]\ntext=\"\"\n"
        "[MULTI_ID]\ntext=\"first line\nsecond line\"\n"
        "[NO_EQUALS_ID]\n"
        "[NEXT_ID]\ntext=\"next value\"\n"
        "[UNQUOTED_ID]\ntext=bare words\" tail\n"
        "[CR_ID]\r\ntext=\"one\r\ntwo\"\r\n"
        "[DUP_ID]\ntext=\"first\"\n"
        "[DUP_ID]\ntext=\"second\"\n"
        "[SKIPPED_ID] anything here\nnot a header = ignored?\n";
    const std::string longer(1500, 'l');
    struct Case {
        std::string file, id, expected;
    };
    const std::vector<Case> cases = {
        {file, "BUTTON_OK_ID", "OK"},
        {file, "BUTTON", "short"},
        // Neither a prefix nor an extension of an ID matches it, nor an indented header.
        {file, "BUTTON_OK", "No Such Name"},
        {file, "BUTTON_OK_ID_X", "No Such Name"},
        {file, "INDENTED_ID", "No Such Name"},
        {file, "INLINE_ID", "No Such Name"},
        {file, "LOWER_ID", "No Such Name"},  // case-sensitive
        {file, "lower_id", "lower"},
        {file, "EMPTY_ID", "No Such Name"},  // an empty value reads like an absent ID
        {file, "MULTI_ID", "first line\nsecond line"},
        {file, "NO_EQUALS_ID", "next value"},  // without its own '=', the next entry's value
        {file, "UNQUOTED_ID", "bare words"},   // the opening quote is optional
        {file, "CR_ID", "one\r\ntwo"},         // a carriage return is an ordinary byte
        {file, "DUP_ID", "first"},
        {file, "SKIPPED_ID", " ignored?\n"},  // the value starts after the first '='
        // A last line without a line feed: found when it is the header, the end otherwise.
        {"[A_ID]\ntext=\"a\"", "A_ID", "a"},
        {"[A_ID]\ntext=\"a\"", "B_ID", "No Such Name"},
        {"[A_ID]\ntext=\"a\"\n[B_ID]", "B_ID", "No Such Name"},
        {"[A_ID]", "A_ID", "No Such Name"},
        {"[A_ID]\ntext=", "A_ID", "No Such Name"},
        // A value whose closing quote is missing runs to the end of the text.
        {"[A_ID]\ntext=\"open\nvalue", "A_ID", "open\nvalue"},
        // Values are cut at 1023 bytes, closed or not.
        {"[E_ID]\ntext=\"" + longer.substr(0, 1023) + "\"\n", "E_ID", longer.substr(0, 1023)},
        {"[L_ID]\ntext=\"" + longer + "\"\n", "L_ID", longer.substr(0, 1023)},
        {"[L_ID]\ntext=\"" + longer, "L_ID", longer.substr(0, 1023)},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.id + " in " + c.file.substr(0, 40));
        char destination[1024];
        std::memset(destination, 'x', sizeof(destination));
        EXPECT_EQ(CPGetText(c.id.c_str(), destination, Text(c.file).get()), c.expected);
    }
}

TEST(MsgFileLookup, FindDestStrReportsAnEmptyBufferAndClearsItsResult) {
    const auto file = Text("[A_ID]\ntext=\"a\"\n");
    ASSERT_EQ(CPFindDestStr(file.get(), "A_ID"), 0);
    EXPECT_STREQ(deststr, "a");
    EXPECT_EQ(CPFindDestStr(file.get(), "MISSING_ID"), 0);
    EXPECT_STREQ(deststr, "");
    ASSERT_EQ(CPFindDestStr(file.get(), "A_ID"), 0);
    EXPECT_EQ(CPFindDestStr(Text("").get(), "A_ID"), -1);
    EXPECT_STREQ(deststr, "");
    EXPECT_EQ(CPFindDestStr(nullptr, "A_ID"), -1);
    // A buffer that starts with zero bytes (as a loaded empty file does) is empty too.
    EXPECT_EQ(CPFindDestStr(Text(std::string("\0[A_ID]\ntext=\"a\"\n", 17)).get(), "A_ID"), -1);
}

TEST(MsgFileLookup, OpenAndLoadUnderTheProductRoot) {
    TempRoot root;
    const std::string text = "[A_ID]\ntext=\"alpha\"\n[B_ID]\ntext=\"beta\"";
    zoltest::writeFile(root.path / "data" / "E_report.rc", text);
    int32_t length = -1;
    FILE* file = OpenStrFile("/data/E_report.rc", &length);
    ASSERT_NE(file, nullptr);
    EXPECT_EQ(length, static_cast<int32_t>(text.size()));
    std::fclose(file);
    length = -1;
    EXPECT_EQ(OpenStrFile("/data/J_report.rc", &length), nullptr);
    EXPECT_EQ(length, -1);
    EXPECT_EQ(OpenStrFile("/data", &length), nullptr);  // a directory is not a message file
    EXPECT_EQ(OpenStrFile(nullptr, &length), nullptr);

    RcFileGuard guard;
    ASSERT_TRUE(LoadRcFile("/data/E_report.rc"));
    ASSERT_NE(ZOL_RcFileBuf, nullptr);
    EXPECT_EQ(std::string(ZOL_RcFileBuf, text.size()), text);
    for (std::size_t i = 0; i < kRcFileSpare; ++i) {
        ASSERT_EQ(ZOL_RcFileBuf[text.size() + i], '\0') << "spare byte " << i;
    }
    EXPECT_EQ(MessageText("C_ID"), "No Such Name");
    // MessageText fetches through the shared buffer, as every other lookup does.
    EXPECT_STREQ(ReadString, "No Such Name");
    const std::string first = MessageText("A_ID");
    EXPECT_EQ(first + MessageText("B_ID"), "alphabeta");
    FreeRcFile();
    EXPECT_EQ(ZOL_RcFileBuf, nullptr);
    FreeRcFile();  // harmless twice

    zoltest::writeFile(root.path / "data" / "E_report.rc", "");
    ASSERT_TRUE(LoadRcFile("/data/E_report.rc"));
    ASSERT_NE(ZOL_RcFileBuf, nullptr);
    EXPECT_EQ(CPFindDestStr(ZOL_RcFileBuf, "A_ID"), -1);
}

TEST(MsgFileLookup, LoadFailuresWriteTheStartUpTraceLine) {
    TempRoot root;
    ASSERT_EQ(TraceLogInit(0, "msgfiletest", 0, 5, 0), 0);
    EXPECT_FALSE(LoadRcFile("/data/J_report.rc"));
    EXPECT_EQ(ZOL_RcFileBuf, nullptr);

    const fs::path trace = root.path / "log" / "msgfiletest.trace";
    const std::string expected = "<Open Str File:/data/J_report.rc failed.return 0.";
    std::string log;
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    while (log.find(expected) == std::string::npos && std::chrono::steady_clock::now() < deadline) {
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
        log = fs::exists(trace) ? zoltest::readFile(trace) : "";
    }
    EXPECT_NE(log.find(expected), std::string::npos) << log;
    EXPECT_NE(log.find("<Can't open the rc file:" + root.path.string() +
                       "/data/J_report.rc!return NULL."),
              std::string::npos)
        << log;
}
