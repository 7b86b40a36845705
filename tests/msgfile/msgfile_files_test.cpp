// The shipped message files: loaded as the program loads them, both defining the same IDs with
// the same printf placeholders, every ID the program's sources fetch defined, texts that fit
// their places on an 80x24 screen, and the files' encodings.
#include <gtest/gtest.h>
#include <iconv.h>

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "frame/msgfile.h"
#include "product_root.h"

namespace fs = std::filesystem;

namespace {

// Upper-case literals of the program that are not message IDs (named objects, registry key
// names, markers inside records).
const std::set<std::string> kNotMessageIds = {
    "EVENTLOG_SEMA",      "Eventlog_Mod_Event",   "ID_LIST",       "NO_US_DEALMETHOD",
    "HKEY_LOCAL_MACHINE", "VANTREL_INTERNETMAIL", "VANTREL_HTTPS",
};

// Texts the program formats, with the conversions each caller passes; every other text is
// shown as it stands or formatted without arguments, so it holds no conversion at all.
const std::map<std::string, std::vector<std::string>> kFormats = {
    {"FUNC_CALL_ERR", {"%s"}},
    {"ERR_SHUTDOWN_ID", {"%d", "%d"}},
    {"DEST_IDLIST_ADD2_ID", {"%s"}},
    {"DEST_IDLIST_ADD3_ID", {"%s"}},
    {"DEST_IDLIST_ADD4_ID", {"%s"}},
    {"DEST_IDLIST_ADD5_ID", {"%s"}},
    {"ERR_DEST_EXIST_ID", {"%s"}},
    {"ERR_RINTER_ID", {"%d", "%d"}},
    {"ERR_SCHE_RINTER_ID", {"%d", "%d"}},
    {"IDS_MSG_PATH_LONG", {"%d"}},
    {"IDS_ERR_LOAD_DLL", {"%s"}},
    {"IDS_ERR_EXE_FUNC", {"%s"}},
    {"SYSLOGDEL_CONFIRMSOURCE_ID", {"%s"}},
    {"SYSLOGDEL_CONFIRMEVENT_ID", {"%s", "%s"}},
};

// Room for a text, in bytes (EUC-JP: two bytes and two columns per kanji or kana).
const std::map<std::string, std::size_t> kWidths = {
    // Menu rows: 40 columns.
    {"MAIN_BASESET_ID", 40},
    {"MAIN_DESTSET_ID", 40},
    {"MAIN_AGENTS_ID", 40},
    {"MAIN_SYSLOG_ID", 40},
    {"MAIN_VANTREL_ID", 40},
    {"BASE_REPORT_SNMP_ID", 40},
    {"BASE_REPORT_INBAND_ID", 40},
    {"BASE_REPORT_OUTBAND_ID", 40},
    {"BASE_REPORT_VANTREL_ID", 40},
    {"BASE_OTHER_SHUTDOWN_ID", 40},
    // The remote report menu cuts its rows at 39.
    {"VANTREL_USERINFO_ID1", 39},
    {"VANTREL_USERINFO_ID2", 39},
    {"VANTREL_MACHINE_ID", 39},
    {"VANTREL_OPTION_ID", 39},
    {"VANTREL_SELLER_ID", 39},
    {"VANTREL_CEASE_ID", 39},
    {"VANTREL_REOPEN_ID", 39},
    // Action and error-kind lists: 20 columns; the syslog item list: 25.
    {"SUBAGENT_ACTION_NONE_ID", 20},
    {"SUBAGENT_ACTION_SHUTDOWN_ID", 20},
    {"SUBAGENT_ACTION_REBOOT_ID", 20},
    {"ADMAGENT_ERRKIND_AP_ID", 20},
    {"ADMAGENT_ERRKIND_HW_ID", 20},
    {"ADMAGENT_ERRKIND_SW_ID", 20},
    {"ADMAGENT_ERRKIND_OFF_ID", 20},
    {"ADMAGENT_ERRKIND_ENV_ID", 20},
    {"AGENT_ALL_ID", 25},
    // Help line and root text: one screen row (the root text is formatted into 100 bytes).
    {"MAIN_HELPLINE_ID", 79},
    {"MAIN_ROOTTEXT_ID", 79},
    // Formatted with a function name of up to 40 bytes into 100 bytes.
    {"FUNC_CALL_ERR", 59},
    // Copied into fixed buffers of 200 and 256 bytes.
    {"WARN_SUREDEL_ID", 199},
    {"IDS_VX_SET_NODATA", 255},
    // Wrapping text boxes: 41x3, 30x2, 60x3.
    {"DEST_HELP_ID", 123},
    {"IDSET_SCHE_HELP_ID", 60},
    {"SETALL_ALARM_ID", 180},
    {"SYSLOGDEL_CONFIRMSOURCE_ID", 150},
    {"SYSLOGDEL_CONFIRMEVENT_ID", 140},
    // Shown in a wrapping 72-column box.
    {"IMAIL_INSERT_FD_ID", 216},
};
// Every other text is one line in a message box on an 80-column screen.
constexpr std::size_t kBoxLine = 76;

struct Entry {
    std::string value;  // as CPGetText returns it
    std::string raw;    // as the file spells it, for the checks of its form
};

// printf conversions of a text in order ("%%" is not one); a '%' that starts none is an error.
bool Conversions(const std::string& text, std::vector<std::string>& out) {
    const auto isDigit = [](char c) { return c >= '0' && c <= '9'; };
    out.clear();
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '%') {
            continue;
        }
        if (i + 1 < text.size() && text[i + 1] == '%') {
            ++i;
            continue;
        }
        std::size_t j = i + 1;
        while (j < text.size() && std::string_view("-+ #0").find(text[j]) != std::string::npos) {
            ++j;
        }
        while (j < text.size() && isDigit(text[j])) {
            ++j;
        }
        if (j < text.size() && text[j] == '.') {
            ++j;
            if (j >= text.size() || !isDigit(text[j])) {
                return false;
            }
            while (j < text.size() && isDigit(text[j])) {
                ++j;
            }
        }
        for (const char* length : {"hh", "ll", "h", "l", "z"}) {
            if (text.compare(j, std::strlen(length), length) == 0) {
                j += std::strlen(length);
                break;
            }
        }
        if (j >= text.size() || std::string_view("diouxXsc").find(text[j]) == std::string::npos) {
            return false;
        }
        out.push_back(text.substr(i, j - i + 1));
        i = j;
    }
    return true;
}

std::vector<std::string> HeaderIds(const std::string& file) {
    std::vector<std::string> ids;
    std::size_t pos = 0;
    while (pos < file.size()) {
        std::size_t end = file.find('\n', pos);
        if (end == std::string::npos) {
            end = file.size();
        }
        if (file[pos] == '[') {
            const std::size_t close = file.find(']', pos);
            if (close != std::string::npos && close < end) {
                ids.push_back(file.substr(pos + 1, close - pos - 1));
            }
        }
        pos = end + 1;
    }
    return ids;
}

struct LoadedFile {
    std::map<std::string, Entry> entries;
    std::vector<std::string> problems;  // entries not in the plain form, duplicates
};

// Loads data/<name> of the staged product root the way main does and reads every entry back
// through CPGetText. The raw text checks that each entry has the plain form
// [ID] / text="..." with nothing after the closing quote, so no entry borrows another's value.
LoadedFile LoadEntries(const std::string& name) {
    zoltest::ProductRoot root(false);
    zoltest::ScopedEnv env("ZolDir", root.path().string());
    const std::string file = zoltest::readFile(root.path() / "data" / name);

    LoadedFile loaded;
    RcFileGuard guard;
    if (!LoadRcFile(("/data/" + name).c_str())) {
        loaded.problems.push_back(name + " could not be loaded");
        return loaded;
    }
    for (const std::string& id : HeaderIds(file)) {
        if (loaded.entries.count(id) != 0) {
            loaded.problems.push_back(id + " is defined twice");
            continue;
        }
        Entry entry;
        entry.value = CPGetText(id.c_str(), ReadString, ZOL_RcFileBuf);
        const std::string header = "[" + id + "]\ntext=\"";
        const std::size_t start = file.find(header);
        const std::size_t from = start + header.size();
        const std::size_t close = start == std::string::npos ? start : file.find('"', from);
        if (start == std::string::npos) {
            loaded.problems.push_back(id + " is not followed by a line text=\"...\"");
        } else if (close == std::string::npos) {
            loaded.problems.push_back(id + " has no closing quote");
        } else {
            entry.raw = file.substr(from, close - from);
            if (close + 1 != file.size() && file[close + 1] != '\n') {
                loaded.problems.push_back("text after the closing quote of " + id);
            }
        }
        loaded.entries.emplace(id, entry);
    }
    return loaded;
}

// String literals of C++ source text (comments and character literals skipped), each with
// whether it is the first argument of CPGetText or MessageText.
struct Literal {
    std::string text;
    bool fetched = false;
};

std::vector<Literal> StringLiterals(const std::string& src) {
    std::vector<Literal> out;
    std::size_t i = 0;
    while (i < src.size()) {
        const char c = src[i];
        if (c == '/' && i + 1 < src.size() && src[i + 1] == '/') {
            i = src.find('\n', i);
            if (i == std::string::npos) {
                break;
            }
        } else if (c == '/' && i + 1 < src.size() && src[i + 1] == '*') {
            i = src.find("*/", i + 2);
            if (i == std::string::npos) {
                break;
            }
            i += 2;
        } else if (c == '\'') {
            ++i;
            while (i < src.size() && src[i] != '\'') {
                i += src[i] == '\\' ? 2 : 1;
            }
            ++i;
        } else if (c == '"') {
            std::size_t before = i;
            while (before > 0 && (src[before - 1] == ' ' || src[before - 1] == '\n')) {
                --before;
            }
            bool fetched = false;
            if (before > 0 && src[before - 1] == '(') {
                const std::string head = src.substr(0, before - 1);
                fetched = head.ends_with("CPGetText") || head.ends_with("MessageText");
            }
            std::string text;
            ++i;
            while (i < src.size() && src[i] != '"') {
                if (src[i] == '\\' && i + 1 < src.size()) {
                    text += src[i];
                    ++i;
                }
                text += src[i];
                ++i;
            }
            ++i;
            out.push_back({text, fetched});
        } else {
            ++i;
        }
    }
    return out;
}

// An upper-case word, then one or more "_word" parts: MAIN_BASESET_ID, SYSLOGADD_KeywordError_ID.
bool LooksLikeMessageId(const std::string& text) {
    const auto isUpperOrDigit = [](char c) {
        return (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
    };
    const auto isWordChar = [&](char c) { return isUpperOrDigit(c) || (c >= 'a' && c <= 'z'); };
    const std::size_t underscore = text.find('_');
    if (text.empty() || !(text[0] >= 'A' && text[0] <= 'Z') || underscore == std::string::npos ||
        !std::all_of(text.begin(), text.begin() + underscore, isUpperOrDigit)) {
        return false;
    }
    for (std::size_t i = underscore; i < text.size(); ++i) {
        if (text[i] == '_') {
            if (i + 1 == text.size() || text[i + 1] == '_') {
                return false;
            }
        } else if (!isWordChar(text[i])) {
            return false;
        }
    }
    return true;
}

// Every message ID that the program's sources fetch, with the file that names it.
std::map<std::string, std::string> FetchedIds() {
    std::map<std::string, std::string> ids;
    const fs::path src = fs::path(ZOL_SOURCE_DIR) / "src";
    for (const char* dir : {"frame", "ui", "baseset", "destination", "remote", "monitor"}) {
        if (!fs::exists(src / dir)) {
            continue;
        }
        for (const auto& item : fs::recursive_directory_iterator(src / dir)) {
            const std::string ext = item.path().extension().string();
            if (!item.is_regular_file() || (ext != ".cpp" && ext != ".h")) {
                continue;
            }
            for (const Literal& lit : StringLiterals(zoltest::readFile(item.path()))) {
                if ((lit.fetched || LooksLikeMessageId(lit.text)) &&
                    kNotMessageIds.count(lit.text) == 0) {
                    ids.emplace(lit.text, item.path().lexically_relative(src).string());
                }
            }
        }
    }
    return ids;
}

bool ValidEucJp(const std::string& text) {
    iconv_t cd = iconv_open("UTF-8", "EUC-JP");
    if (cd == reinterpret_cast<iconv_t>(-1)) {
        ADD_FAILURE() << "iconv cannot convert EUC-JP";
        return false;
    }
    std::string in = text;
    std::string out(text.size() * 3 + 16, '\0');
    char* inp = in.data();
    char* outp = out.data();
    std::size_t inLeft = in.size();
    std::size_t outLeft = out.size();
    const std::size_t r = iconv(cd, &inp, &inLeft, &outp, &outLeft);
    iconv_close(cd);
    return r != static_cast<std::size_t>(-1) && inLeft == 0;
}

class MsgFiles : public ::testing::Test {
  protected:
    static void SetUpTestSuite() {
        englishFile_ = new LoadedFile(LoadEntries("E_report.rc"));
        japaneseFile_ = new LoadedFile(LoadEntries("J_report.rc"));
        english_ = &englishFile_->entries;
        japanese_ = &japaneseFile_->entries;
    }
    static void TearDownTestSuite() {
        delete englishFile_;
        delete japaneseFile_;
        englishFile_ = japaneseFile_ = nullptr;
        english_ = japanese_ = nullptr;
    }
    static LoadedFile* englishFile_;
    static LoadedFile* japaneseFile_;
    static std::map<std::string, Entry>* english_;
    static std::map<std::string, Entry>* japanese_;
};

LoadedFile* MsgFiles::englishFile_ = nullptr;
LoadedFile* MsgFiles::japaneseFile_ = nullptr;

std::map<std::string, Entry>* MsgFiles::english_ = nullptr;
std::map<std::string, Entry>* MsgFiles::japanese_ = nullptr;

}  // namespace

TEST(MsgFileSourceScan, FindsLiteralsAndTheArgumentsOfLookups) {
    const std::string src =
        "// \"COMMENT_ID\" in a comment\n"
        "/* \"BLOCK_ID\" */ const char* a = \"TABLE_ROW_ID\";\n"
        "char q = '\"'; auto t = MessageText(\"lowercase text\");\n"
        "CPGetText( \"FETCHED_ID\", ReadString, ZOL_RcFileBuf); f(\"esc\\\"aped\");\n"
        "g(\"Not an id\", \"ALLCAPS\", \"A_B\");\n";
    std::vector<std::string> found;
    for (const Literal& lit : StringLiterals(src)) {
        if (lit.fetched || LooksLikeMessageId(lit.text)) {
            found.push_back(lit.text);
        }
    }
    EXPECT_EQ(found,
              (std::vector<std::string>{"TABLE_ROW_ID", "lowercase text", "FETCHED_ID", "A_B"}));
    EXPECT_TRUE(LooksLikeMessageId("SYSLOGADD_KeywordError_ID"));
    for (const char* notId : {"A__B", "A_", "_A", "Eventlog_Mod_Event", "ABC_d-e", "aB_C"}) {
        EXPECT_FALSE(LooksLikeMessageId(notId)) << notId;
    }
    // The program's own sources name message IDs (the main menu's labels at least).
    EXPECT_GT(FetchedIds().size(), 5u);
}

TEST(MsgFilePlaceholders, ConversionsAreReadInOrderAndStrayPerCentSignsRefused) {
    std::vector<std::string> found;
    ASSERT_TRUE(Conversions("%s at %-5.2ld%% of %d", found));
    EXPECT_EQ(found, (std::vector<std::string>{"%s", "%-5.2ld", "%d"}));
    ASSERT_TRUE(Conversions("100%% sure", found));
    EXPECT_TRUE(found.empty());
    for (const char* bad : {"50%.", "ends in %", "%.x", "%y"}) {
        EXPECT_FALSE(Conversions(bad, found)) << bad;
    }
    // printf reads a lone '%' before a blank and a letter as a conversion, and so does the check.
    ASSERT_TRUE(Conversions("100% sure", found));
    EXPECT_EQ(found, (std::vector<std::string>{"% s"}));
}

TEST_F(MsgFiles, EveryEntryHasThePlainFormOnce) {
    EXPECT_TRUE(englishFile_->problems.empty())
        << "E_report.rc: " << ::testing::PrintToString(englishFile_->problems);
    EXPECT_TRUE(japaneseFile_->problems.empty())
        << "J_report.rc: " << ::testing::PrintToString(japaneseFile_->problems);
}

TEST_F(MsgFiles, BothFilesDefineTheSameIdsWithNonEmptyTexts) {
    ASSERT_GT(english_->size(), 400u);
    for (const auto& [id, entry] : *english_) {
        EXPECT_EQ(japanese_->count(id), 1u) << id << " is missing from J_report.rc";
        EXPECT_NE(entry.value, "No Such Name") << id << " is empty in E_report.rc";
        EXPECT_EQ(entry.value, entry.raw) << id;
        EXPECT_LE(entry.value.size(), 1023u) << id;
    }
    for (const auto& [id, entry] : *japanese_) {
        EXPECT_EQ(english_->count(id), 1u) << id << " is missing from E_report.rc";
        EXPECT_NE(entry.value, "No Such Name") << id << " is empty in J_report.rc";
        EXPECT_EQ(entry.value, entry.raw) << id;
        EXPECT_LE(entry.value.size(), 1023u) << id;
    }
}

TEST_F(MsgFiles, EveryIdTheProgramFetchesIsDefinedInBothFiles) {
    const auto fetched = FetchedIds();
    ASSERT_FALSE(fetched.empty());
    for (const auto& [id, where] : fetched) {
        EXPECT_EQ(english_->count(id), 1u) << id << " (" << where << ") is not in E_report.rc";
        EXPECT_EQ(japanese_->count(id), 1u) << id << " (" << where << ") is not in J_report.rc";
    }
    // The frame's own entry for screens still to come.
    EXPECT_EQ(english_->count("SCREEN_NOT_BUILT_ID"), 1u);
}

TEST_F(MsgFiles, PlaceholdersMatchTheCallersInBothLanguages) {
    for (const auto* file : {english_, japanese_}) {
        for (const auto& [id, entry] : *file) {
            std::vector<std::string> found;
            if (!Conversions(entry.value, found)) {
                ADD_FAILURE() << id << ": stray '%' in " << entry.value;
                continue;
            }
            const auto expected = kFormats.find(id);
            if (expected != kFormats.end()) {
                EXPECT_EQ(found, expected->second) << id << ": " << entry.value;
            } else {
                EXPECT_TRUE(found.empty()) << id << " is not formatted by its callers";
            }
        }
    }
    for (const auto& [id, conversions] : kFormats) {
        EXPECT_EQ(english_->count(id), 1u) << id;
    }
}

TEST_F(MsgFiles, TextsFitTheirPlacesOnTheScreen) {
    for (const auto* file : {english_, japanese_}) {
        for (const auto& [id, entry] : *file) {
            const auto width = kWidths.find(id);
            const std::size_t limit = width != kWidths.end() ? width->second : kBoxLine;
            EXPECT_LE(entry.value.size(), limit) << id << ": " << entry.value;
            if (width == kWidths.end()) {
                EXPECT_EQ(entry.value.find('\n'), std::string::npos) << id;
            }
            EXPECT_EQ(entry.value.find('"'), std::string::npos) << id;
        }
    }
}

TEST_F(MsgFiles, EncodingsAreAsciiAndEucJp) {
    const fs::path data = fs::path(ZOL_SOURCE_DIR) / "data";
    const std::string english = zoltest::readFile(data / "E_report.rc");
    const std::string japanese = zoltest::readFile(data / "J_report.rc");
    ASSERT_FALSE(english.empty());
    ASSERT_FALSE(japanese.empty());
    for (unsigned char c : english) {
        ASSERT_TRUE(c == '\n' || (c >= 0x20 && c < 0x7F)) << "byte " << int(c) << " in E_report.rc";
    }
    EXPECT_TRUE(ValidEucJp(japanese));
    // JIS X 0208 only: no half-width katakana (0x8E) and no JIS X 0212 (0x8F) sequences.
    EXPECT_EQ(japanese.find('\x8e'), std::string::npos);
    EXPECT_EQ(japanese.find('\x8f'), std::string::npos);
    // The Japanese file is actually Japanese: most of its texts hold two-byte characters.
    std::size_t withKanji = 0;
    for (const auto& [id, entry] : *japanese_) {
        const bool twoByte = std::any_of(entry.value.begin(), entry.value.end(), [](char c) {
            return static_cast<unsigned char>(c) > 0xA0;
        });
        withKanji += twoByte ? 1 : 0;
    }
    EXPECT_GT(withKanji * 10, japanese_->size() * 9);
    // A damaged sequence is noticed by the check itself.
    EXPECT_FALSE(ValidEucJp("\xa4\x22"));
}
