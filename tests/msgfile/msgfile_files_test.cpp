// The shipped message files: loaded as the program loads them, both defining the same IDs with
// the printf placeholders their callers pass, every ID the program's sources fetch defined, and
// the files' encodings.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "frame/msgfile.h"
#include "product_root.h"

namespace fs = std::filesystem;

namespace {

// Upper-case literals of the program that are not message IDs (named objects, registry key
// names, markers inside records).
const std::set<std::string> kNotMessageIds = {
    "EVENTLOG_SEMA",
    "Eventlog_Mod_Event",
    "ID_LIST",
    "NO_US_DEALMETHOD",
    "HKEY_LOCAL_MACHINE",
    "VANTREL_INTERNETMAIL",
    "VANTREL_HTTPS",
    // The dial-up delivery library's report entry.
    "AM_Dll_ALV_Vnt",
    // The set-up clearing entry of SRVINFO.DLL.
    "VX_Clear_EMP_info_Data",
    // The environment variables that change the palette.
    "NEWT_COLORS",
    "NEWT_COLORS_FILE",
};

// Texts the program formats, with the conversions each caller passes; every other text holds
// no conversion at all.
const std::map<std::string, std::string> kFormats = {
    {"FUNC_CALL_ERR", "%s"},
    {"ERR_SHUTDOWN_ID", "%d%d"},
    {"DEST_IDLIST_ADD2_ID", "%s"},
    {"DEST_IDLIST_ADD3_ID", "%s"},
    {"DEST_IDLIST_ADD4_ID", "%s"},
    {"DEST_IDLIST_ADD5_ID", "%s"},
    {"ERR_DEST_EXIST_ID", "%s"},
    {"ERR_RINTER_ID", "%d%d"},
    {"ERR_SCHE_RINTER_ID", "%d%d"},
    {"IDS_MSG_PATH_LONG", "%d"},
    {"IDS_ERR_LOAD_DLL", "%s"},
    {"IDS_ERR_EXE_FUNC", "%s"},
    {"SYSLOGDEL_CONFIRMSOURCE_ID", "%s"},
    {"SYSLOGDEL_CONFIRMEVENT_ID", "%s%s"},
};

// printf conversions of a text in order ("%%" is not one); a '%' that starts none is an error.
bool Conversions(const std::string& text, std::string& out) {
    const char* digits = "0123456789";
    out.clear();
    for (std::size_t i = text.find('%'); i != std::string::npos; i = text.find('%', i + 1)) {
        if (text.compare(i, 2, "%%") == 0) {
            ++i;
            continue;
        }
        std::size_t j = text.find_first_not_of(digits, text.find_first_not_of("-+ #0", i + 1));
        if (j < text.size() && text[j] == '.') {
            const std::size_t end = text.find_first_not_of(digits, j + 1);
            if (end == j + 1) {
                return false;
            }
            j = end;
        }
        for (const std::string length : {"hh", "ll", "h", "l", "z"}) {
            if (j < text.size() && text.compare(j, length.size(), length) == 0) {
                j += length.size();
                break;
            }
        }
        if (j >= text.size() || std::string("diouxXsc").find(text[j]) == std::string::npos) {
            return false;
        }
        out += text.substr(i, j - i + 1);
        i = j;
    }
    return true;
}

// Loads data/<name> of the staged product root the way main does and reads every entry back
// through CPGetText. Each entry must have the plain form [ID] / text="..." with nothing after
// the closing quote, so no entry borrows another's value; problems lists those that do not.
std::map<std::string, std::string> LoadEntries(const std::string& name,
                                               std::vector<std::string>& problems) {
    zoltest::ProductRoot root(false);
    zoltest::ScopedEnv env("ZolDir", root.path().string());
    // Appended rather than "\n" + text: GCC 12 at -O3 misreads that operator+ as an overlapping
    // copy (-Wrestrict).
    std::string file = "\n";
    file += zoltest::readFile(root.path() / "data" / name);
    std::map<std::string, std::string> entries;
    RcFileGuard guard;
    if (!LoadRcFile(("/data/" + name).c_str())) {
        problems.push_back(name + " could not be loaded");
        return entries;
    }
    for (std::size_t at = file.find("\n["); at != std::string::npos;
         at = file.find("\n[", at + 1)) {
        const std::size_t close = std::min(file.find(']', at), file.size());
        const std::string id = file.substr(at + 2, close - at - 2);
        const std::size_t from = close + 8, end = file.find('"', from);
        const std::string value = CPGetText(id.c_str(), ReadString, ZOL_RcFileBuf);
        if (file.compare(close, 8, "]\ntext=\"") != 0 || end == std::string::npos ||
            (end + 1 < file.size() && file[end + 1] != '\n')) {
            problems.push_back(id + " is not in the form [ID] / text=\"...\"");
        } else if (!entries.emplace(id, value).second) {
            problems.push_back(id + " is defined twice");
        } else if (value != file.substr(from, end - from) || value == "No Such Name") {
            problems.push_back(id + " reads back as " + value);
        }
    }
    return entries;
}

// Message IDs named in C++ source (comments and character literals skipped): string literals
// that look like IDs (MAIN_BASESET_ID, SYSLOGADD_KeywordError_ID) or are the first argument of
// CPGetText or MessageText.
std::vector<std::string> IdsIn(const std::string& src) {
    const std::string upper = "ABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789";
    const auto looksLikeId = [&](const std::string& t) {
        return !t.empty() && t[0] >= 'A' && t[0] <= 'Z' && t.find('_') != std::string::npos &&
               t.find_first_not_of(upper) == t.find('_') && t.find("__") == std::string::npos &&
               t.back() != '_' &&
               t.find_first_not_of(upper + "abcdefghijklmnopqrstuvwxyz_") == std::string::npos;
    };
    std::vector<std::string> out;
    for (std::size_t i = 0; i < src.size(); ++i) {
        if (src.compare(i, 2, "//") == 0) {
            i = std::min(src.find('\n', i), src.size());
        } else if (src.compare(i, 2, "/*") == 0) {
            i = std::min(src.find("*/", i), src.size()) + 1;
        } else if (src[i] == '"' || src[i] == '\'') {
            const std::size_t start = i + 1;
            for (++i; i < src.size() && src[i] != src[start - 1]; ++i) {
                i += src[i] == '\\';
            }
            const std::string text = src.substr(start, i - start);
            const std::size_t paren =
                start < 2 ? std::string::npos : src.find_last_not_of(" \n", start - 2);
            const std::string head = paren == std::string::npos ? "" : src.substr(0, paren + 1);
            if (src[start - 1] == '"' && (head.ends_with("CPGetText(") ||
                                          head.ends_with("MessageText(") || looksLikeId(text))) {
                out.push_back(text);
            }
        }
    }
    return out;
}

// Every message ID that the program's sources fetch, with the file that names it.
std::map<std::string, std::string> FetchedIds() {
    std::map<std::string, std::string> ids;
    const fs::path src = fs::path(ZOL_SOURCE_DIR) / "src";
    for (const auto& item : fs::recursive_directory_iterator(src)) {
        const std::string ext = item.path().extension().string();
        const std::string dir = item.path().lexically_relative(src).begin()->string();
        if (item.is_regular_file() && (ext == ".cpp" || ext == ".h") &&
            std::set<std::string>{"frame", "ui", "baseset", "destination", "remote", "monitor"}
                .count(dir)) {
            for (const std::string& id : IdsIn(zoltest::readFile(item.path()))) {
                if (kNotMessageIds.count(id) == 0) {
                    ids.emplace(id, item.path().lexically_relative(src).string());
                }
            }
        }
    }
    return ids;
}

}  // namespace

TEST(MsgFileChecks, SourceScanAndPlaceholderReading) {
    const std::string src =
        "// \"COMMENT_ID\" in a comment\n"
        "/* \"BLOCK_ID\" */ const char* a = \"TABLE_ROW_ID\";\n"
        "char q = '\"'; auto t = MessageText(\"lowercase text\");\n"
        "CPGetText( \"FETCHED_ID\", ReadString, ZOL_RcFileBuf); f(\"esc\\\"aped\");\n"
        "g(\"Not an id\", \"ALLCAPS\", \"A_B\", \"A__B\", \"A_\", \"Eventlog_Mod_Event\", "
        "\"aB_C\", \"Mixed_Case_ID\", \"SYSLOGADD_KeywordError_ID\");\n";
    EXPECT_EQ(IdsIn(src), (std::vector<std::string>{"TABLE_ROW_ID", "lowercase text", "FETCHED_ID",
                                                    "A_B", "SYSLOGADD_KeywordError_ID"}));
    // The program's own sources name message IDs (the main menu's labels at least).
    EXPECT_GT(FetchedIds().size(), 5u);

    std::string found;
    ASSERT_TRUE(Conversions("%s at %-5.2ld%% of %d", found));
    EXPECT_EQ(found, "%s%-5.2ld%d");
    for (const char* bad : {"50%.", "ends in %", "%.x", "%y"}) {
        EXPECT_FALSE(Conversions(bad, found)) << bad;
    }
    // printf reads a lone '%' before a blank and a letter as a conversion, and so does the check.
    ASSERT_TRUE(Conversions("100% sure", found));
    EXPECT_EQ(found, "% s");
}

TEST(MsgFileChecks, BothFilesDefineTheFetchedIdsWithTheCallersPlaceholders) {
    std::vector<std::string> problems;
    const auto english = LoadEntries("E_report.rc", problems);
    const auto japanese = LoadEntries("J_report.rc", problems);
    EXPECT_TRUE(problems.empty()) << ::testing::PrintToString(problems);
    ASSERT_GT(english.size(), 400u);
    for (const auto& [id, where] : FetchedIds()) {
        EXPECT_EQ(english.count(id), 1u) << id << " (" << where << ") is not in E_report.rc";
    }
    // The frame's own entry for screens still to come.
    EXPECT_EQ(english.count("SCREEN_NOT_BUILT_ID"), 1u);
    for (const auto& [id, conversions] : kFormats) {
        EXPECT_EQ(english.count(id), 1u) << id;
    }
    for (const auto* file : {&english, &japanese}) {
        const auto* other = file == &english ? &japanese : &english;
        for (const auto& [id, value] : *file) {
            EXPECT_EQ(other->count(id), 1u) << id << " is in one file only";
            std::string found;
            EXPECT_TRUE(Conversions(value, found)) << id << ": stray '%' in " << value;
            const auto expected = kFormats.find(id);
            EXPECT_EQ(found, expected == kFormats.end() ? std::string() : expected->second)
                << id << ": " << value;
        }
    }
}

TEST(MsgFileChecks, EncodingsAreAsciiAndJapaneseEucJp) {
    const fs::path data = fs::path(ZOL_SOURCE_DIR) / "data";
    const std::string english = zoltest::readFile(data / "E_report.rc");
    const std::string japanese = zoltest::readFile(data / "J_report.rc");
    ASSERT_FALSE(english.empty());
    for (unsigned char c : english) {
        ASSERT_TRUE(c == '\n' || (c >= 0x20 && c < 0x7F)) << "byte " << int(c) << " in E_report.rc";
    }
    // JIS X 0208 pairs only: no half-width katakana (0x8E), no JIS X 0212 (0x8F), no stray byte.
    for (std::size_t i = 0; i < japanese.size(); ++i) {
        const auto c = static_cast<unsigned char>(japanese[i]);
        const auto next = static_cast<unsigned char>(i + 1 < japanese.size() ? japanese[i + 1] : 0);
        ASSERT_TRUE(c < 0x80 || (c >= 0xA1 && c <= 0xFE && next >= 0xA1 && next <= 0xFE))
            << "byte " << int(c) << " at " << i << " of J_report.rc";
        i += c >= 0x80;
    }
    EXPECT_GT(std::count_if(japanese.begin(), japanese.end(), [](char c) { return c & 0x80; }),
              japanese.size() / 4);  // the Japanese file is Japanese
}
