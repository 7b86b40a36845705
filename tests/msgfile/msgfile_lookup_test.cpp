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
class Text {
  public:
    explicit Text(const std::string& text) : data_(new char[text.size() + 1]) {
        std::memcpy(data_.get(), text.c_str(), text.size() + 1);
    }
    const char* get() const { return data_.get(); }

  private:
    std::unique_ptr<char[]> data_;
};

std::string Lookup(const std::string& file, const char* id) {
    Text text(file);
    char destination[1024];
    std::memset(destination, 'x', sizeof(destination));
    return CPGetText(id, destination, text.get());
}

// A fresh product root whose data/ folder holds only what the test writes.
class TempRoot {
  public:
    TempRoot() : env_("ZolDir", root_.path().string()) {
        fs::remove_all(root_.path() / "data");
        fs::create_directories(root_.path() / "data");
    }
    fs::path data(const std::string& name) const { return root_.path() / "data" / name; }
    const fs::path& path() const { return root_.path(); }

  private:
    zoltest::ProductRoot root_{false};
    zoltest::ScopedEnv env_;
};

struct FileCloser {
    void operator()(FILE* f) const { std::fclose(f); }
};

}  // namespace

TEST(MsgFileLookup, HeadersMatchTheWholeIdAtTheStartOfALineOnly) {
    const std::string file =
        "[BUTTON_OK_ID]\ntext=\"OK\"\n"
        "[BUTTON]\ntext=\"short\"\n"
        " [INDENTED_ID]\ntext=\"indented\"\n"
        "text=\"x\" [INLINE_ID]\ntext=\"inline\"\n"
        "[lower_id]\ntext=\"lower\"\n";
    EXPECT_EQ(Lookup(file, "BUTTON_OK_ID"), "OK");
    EXPECT_EQ(Lookup(file, "BUTTON"), "short");
    // Neither a prefix nor an extension of an ID matches it.
    EXPECT_EQ(Lookup(file, "BUTTON_OK"), "No Such Name");
    EXPECT_EQ(Lookup(file, "BUTTON_OK_ID_X"), "No Such Name");
    EXPECT_EQ(Lookup(file, "INDENTED_ID"), "No Such Name");
    EXPECT_EQ(Lookup(file, "INLINE_ID"), "No Such Name");
    // Case-sensitive.
    EXPECT_EQ(Lookup(file, "LOWER_ID"), "No Such Name");
    EXPECT_EQ(Lookup(file, "lower_id"), "lower");
}

TEST(MsgFileLookup, ValuesFollowTheFirstEqualsSignAndEndAtTheNextQuote) {
    const std::string file =
        "[EMPTY_ID]\ntext=\"\"\n"
        "[MULTI_ID]\ntext=\"first line\nsecond line\"\n"
        "[NO_EQUALS_ID]\n"
        "[NEXT_ID]\ntext=\"next value\"\n"
        "[UNQUOTED_ID]\ntext=bare words\" tail\n"
        "[CR_ID]\r\ntext=\"one\r\ntwo\"\r\n"
        "[DUP_ID]\ntext=\"first\"\n"
        "[DUP_ID]\ntext=\"second\"\n"
        "[SKIPPED_ID] anything here\nnot a header = ignored?\n";
    // An empty value reads like an absent ID.
    EXPECT_EQ(Lookup(file, "EMPTY_ID"), "No Such Name");
    EXPECT_EQ(Lookup(file, "MULTI_ID"), "first line\nsecond line");
    // Without its own '=', an entry takes the next entry's value.
    EXPECT_EQ(Lookup(file, "NO_EQUALS_ID"), "next value");
    // The opening quote is optional; the closing one ends the value.
    EXPECT_EQ(Lookup(file, "UNQUOTED_ID"), "bare words");
    // A carriage return is an ordinary byte, in headers' tails and in values.
    EXPECT_EQ(Lookup(file, "CR_ID"), "one\r\ntwo");
    EXPECT_EQ(Lookup(file, "DUP_ID"), "first");
    // Text after "]" is ignored; the value starts after the first '=' wherever it is.
    EXPECT_EQ(Lookup(file, "SKIPPED_ID"), " ignored?\n");
}

TEST(MsgFileLookup, TheScanStopsAtTheEndOfTheText) {
    // A last line without a line feed: found when it is the header, the end otherwise.
    EXPECT_EQ(Lookup("[A_ID]\ntext=\"a\"", "A_ID"), "a");
    EXPECT_EQ(Lookup("[A_ID]\ntext=\"a\"", "B_ID"), "No Such Name");
    EXPECT_EQ(Lookup("[A_ID]\ntext=\"a\"\n[B_ID]", "B_ID"), "No Such Name");
    EXPECT_EQ(Lookup("[A_ID]\ntext=\"a\"\n", "B_ID"), "No Such Name");
    EXPECT_EQ(Lookup("[A_ID]", "A_ID"), "No Such Name");
    // A value whose closing quote is missing runs to the end of the text.
    EXPECT_EQ(Lookup("[A_ID]\ntext=\"open\nvalue", "A_ID"), "open\nvalue");
    EXPECT_EQ(Lookup("[A_ID]\ntext=", "A_ID"), "No Such Name");
}

TEST(MsgFileLookup, ValuesAreCutAt1023Bytes) {
    const std::string exact(1023, 'e');
    const std::string longer(1500, 'l');
    EXPECT_EQ(Lookup("[E_ID]\ntext=\"" + exact + "\"\n", "E_ID"), exact);
    EXPECT_EQ(Lookup("[L_ID]\ntext=\"" + longer + "\"\n", "L_ID"), longer.substr(0, 1023));
    // Unterminated as well as too long.
    EXPECT_EQ(Lookup("[L_ID]\ntext=\"" + longer, "L_ID"), longer.substr(0, 1023));
    EXPECT_EQ(std::strlen(deststr), 1023u);
}

TEST(MsgFileLookup, FindDestStrReportsAnEmptyBufferAndClearsItsResult) {
    Text file("[A_ID]\ntext=\"a\"\n");
    ASSERT_EQ(CPFindDestStr(file.get(), "A_ID"), 0);
    EXPECT_STREQ(deststr, "a");
    EXPECT_EQ(CPFindDestStr(file.get(), "MISSING_ID"), 0);
    EXPECT_STREQ(deststr, "");

    ASSERT_EQ(CPFindDestStr(file.get(), "A_ID"), 0);
    Text empty("");
    EXPECT_EQ(CPFindDestStr(empty.get(), "A_ID"), -1);
    EXPECT_STREQ(deststr, "");
    EXPECT_EQ(CPFindDestStr(nullptr, "A_ID"), -1);
    // A buffer that starts with zero bytes (as a loaded empty file does) is empty too.
    Text zeroLead(std::string("\0[A_ID]\ntext=\"a\"\n", 17));
    EXPECT_EQ(CPFindDestStr(zeroLead.get(), "A_ID"), -1);
}

TEST(MsgFileLookup, OpenStrFileOpensUnderTheProductRootAndReportsTheSize) {
    TempRoot root;
    zoltest::writeFile(root.data("E_report.rc"), "[A_ID]\ntext=\"a\"\n");

    int32_t length = -1;
    std::unique_ptr<FILE, FileCloser> file(OpenStrFile("/data/E_report.rc", &length));
    ASSERT_TRUE(file);
    EXPECT_EQ(length, 16);
    char head[4] = {};
    ASSERT_EQ(std::fread(head, 1, 3, file.get()), 3u);
    EXPECT_STREQ(head, "[A_");

    length = -1;
    EXPECT_EQ(OpenStrFile("/data/J_report.rc", &length), nullptr);
    EXPECT_EQ(length, -1);
    // A directory is not a message file.
    EXPECT_EQ(OpenStrFile("/data", &length), nullptr);
    EXPECT_EQ(OpenStrFile(nullptr, &length), nullptr);
}

TEST(MsgFileLookup, LoadRcFileReadsTheWholeFileWithZeroedSpareBytes) {
    TempRoot root;
    const std::string text = "[A_ID]\ntext=\"alpha\"\n[B_ID]\ntext=\"beta\"";
    zoltest::writeFile(root.data("E_report.rc"), text);

    RcFileGuard guard;
    ASSERT_TRUE(LoadRcFile("/data/E_report.rc"));
    ASSERT_NE(ZOL_RcFileBuf, nullptr);
    EXPECT_EQ(std::string(ZOL_RcFileBuf, text.size()), text);
    for (std::size_t i = 0; i < kRcFileSpare; ++i) {
        ASSERT_EQ(ZOL_RcFileBuf[text.size() + i], '\0') << "spare byte " << i;
    }
    EXPECT_EQ(MessageText("B_ID"), "beta");
    EXPECT_EQ(MessageText("C_ID"), "No Such Name");
    // MessageText fetches through the shared buffer, as every other lookup does.
    EXPECT_STREQ(ReadString, "No Such Name");
    const std::string first = MessageText("A_ID");
    const std::string second = MessageText("B_ID");
    EXPECT_EQ(first, "alpha");
    EXPECT_EQ(second, "beta");

    FreeRcFile();
    EXPECT_EQ(ZOL_RcFileBuf, nullptr);
    FreeRcFile();  // harmless twice
}

TEST(MsgFileLookup, AnEmptyFileLoadsAsAnEmptyBuffer) {
    TempRoot root;
    zoltest::writeFile(root.data("E_report.rc"), "");
    RcFileGuard guard;
    ASSERT_TRUE(LoadRcFile("/data/E_report.rc"));
    ASSERT_NE(ZOL_RcFileBuf, nullptr);
    EXPECT_EQ(CPFindDestStr(ZOL_RcFileBuf, "A_ID"), -1);
}

TEST(MsgFileLookup, LoadFailuresWriteTheStartUpTraceLine) {
    TempRoot root;
    ASSERT_EQ(TraceLogInit(0, "msgfiletest", 0, 5, 0), 0);
    EXPECT_FALSE(LoadRcFile("/data/J_report.rc"));
    EXPECT_EQ(ZOL_RcFileBuf, nullptr);

    const fs::path trace = root.path() / "log" / "msgfiletest.trace";
    const std::string expected = "<Open Str File:/data/J_report.rc failed.return 0.";
    std::string log;
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    while (std::chrono::steady_clock::now() < deadline) {
        log = fs::exists(trace) ? zoltest::readFile(trace) : "";
        if (log.find(expected) != std::string::npos) {
            break;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    EXPECT_NE(log.find(expected), std::string::npos) << log;
    EXPECT_NE(log.find("<Can't open the rc file:" + root.path().string() +
                       "/data/J_report.rc!return NULL."),
              std::string::npos)
        << log;
}
