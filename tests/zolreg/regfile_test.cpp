// REGEDIT4 parsing and writing: every value form, escapes, continuation lines, deletions,
// CRLF files, and malformed lines refused with the right line number.
#include <gtest/gtest.h>
#include <zolwin.h>

#include <algorithm>
#include <random>
#include <tuple>

#include "regfile.h"

namespace {

using zolreg::OpKind;
using zolreg::parseRegFile;
using zolreg::Value;

std::string dword(uint32_t n) {  // as stored on this little-endian machine
    return std::string(reinterpret_cast<const char*>(&n), 4);
}

std::string z(std::string s) {
    return s.push_back('\0'), s;
}

zolreg::ParseError errorOf(std::string_view text) {
    zolreg::ParseResult r = parseRegFile(text);
    EXPECT_TRUE(r.error.has_value()) << text;
    EXPECT_TRUE(r.ops.empty());
    return r.error.value_or(zolreg::ParseError{});
}

TEST(RegFileParse, EveryValueFormAndEscape) {
    const std::string text =
        "REGEDIT4\n"
        "\n"
        "; a comment\n"
        "[HKEY_LOCAL_MACHINE\\SOFTWARE\\Test]\n"
        "\"Plain\"=\"hello world\"\n"
        "\"Esc \\\"q\\\"\"=\"C:\\\\dir\\\\ \\\"x\\\"\"\n"
        "@=\"default\"\n"
        "\"Num\"=dword:0000006e\n"
        "\"Bin\"=hex:01,ab,FF\n"
        "\"Empty\"=hex:\n"
        "\"Multi\"=hex(7):61,00,62,00,00\n"
        "\"Expand\"=hex(2):25,00\n"
        "\"Euc\"=\"\xC6\xFC\xCB\xDC\"\n"
        "  \"Spaced\" = \"v\"  \n"
        "\"Long\"=hex:00,01,\\\n"
        "  02,03,\\\n"
        "    04\n"
        "\"Gone\"=-\n"
        "[-HKEY_LOCAL_MACHINE\\SOFTWARE\\Old]\n"
        "[hklm\\SOFTWARE\\\\Other\\]\n";
    zolreg::ParseResult r = parseRegFile(text);
    ASSERT_FALSE(r.error) << r.error->line << ": " << r.error->message;
    ASSERT_EQ(r.ops.size(), 15u);
    EXPECT_EQ(r.ops[0].kind, OpKind::CreateKey);
    EXPECT_EQ(r.ops[0].key, "SOFTWARE\\Test");
    EXPECT_EQ(r.ops[0].line, 4);
    const std::vector<Value> expected = {
        {"Plain", REG_SZ, z("hello world")},
        {"Esc \"q\"", REG_SZ, z("C:\\dir\\ \"x\"")},
        {"", REG_SZ, z("default")},
        {"Num", REG_DWORD, dword(110)},
        {"Bin", REG_BINARY, std::string("\x01\xab\xff", 3)},
        {"Empty", REG_BINARY, ""},
        {"Multi", REG_MULTI_SZ, std::string("a\0b\0\0", 5)},
        {"Expand", REG_EXPAND_SZ, std::string("%\0", 2)},
        {"Euc", REG_SZ, z("\xC6\xFC\xCB\xDC")},
        {"Spaced", REG_SZ, z("v")},
        {"Long", REG_BINARY, std::string("\0\1\2\3\4", 5)},
    };
    for (size_t i = 0; i < expected.size(); ++i) {
        EXPECT_EQ(r.ops[i + 1].kind, OpKind::SetValue) << i;
        EXPECT_EQ(r.ops[i + 1].key, "SOFTWARE\\Test") << i;
        EXPECT_EQ(r.ops[i + 1].value, expected[i]) << i;
    }
    EXPECT_EQ(r.ops[12].kind, OpKind::DeleteValue);
    EXPECT_EQ(r.ops[12].value.name, "Gone");
    EXPECT_EQ(r.ops[12].line, 18);  // line numbers go on after the continued lines
    EXPECT_EQ(r.ops[13].kind, OpKind::DeleteKey);
    EXPECT_EQ(r.ops[13].key, "SOFTWARE\\Old");
    EXPECT_EQ(r.ops[14].kind, OpKind::CreateKey);
    EXPECT_EQ(r.ops[14].key, "SOFTWARE\\Other");  // root case-insensitive, backslash runs
}

TEST(RegFileParse, MalformedLinesNameTheirLine) {
    const std::string head = "REGEDIT4\n\n[HKLM\\SOFTWARE\\T]\n\"ok\"=\"1\"\n";
    const std::vector<std::tuple<std::string, int, std::string>> cases = {
        {"", 1, "empty"},
        {"REGEDIT5\n", 1, "REGEDIT4"},
        {"REGEDIT4\n\"v\"=\"x\"\n", 2, "before the first"},
        {head + "\"bad\"=\"unterminated\n", 5, "closing quote"},
        {head + "\"bad\"=\"a\\nb\"\n", 5, "escape"},
        {head + "\"bad\"=dword:123456789\n", 5, "1 to 8"},
        {head + "\"bad\"=hex:01,zz\n", 5, "zz"},
        {head + "\"bad\"=hex:01,,02\n", 5, "empty item"},
        {head + "\"bad\"=hex(q):01\n", 5, "hex(N)"},
        {head + "\"bad\"=hex:01,\\\n 02,\\\n  0g\n", 7, "0g"},
        {head + "\"bad\"=str\n", 5, "unknown value data"},
        {head + "bad line\n", 5, "expected [KEY]"},
        {head + "[HKEY_CURRENT_USER\\x]\n", 5, "HKEY_LOCAL_MACHINE"},
        {head + "[-HKLM]\n", 5, "cannot be deleted"},
        {head + "[-HKLM\\SOFTWARE\\T]\n\"v\"=\"x\"\n", 6, "being deleted"},
        {head + "[HKLM\\" + std::string(256, 'k') + "]\n", 5, "longer than 255"},
        {head + "\"" + std::string(16384, 'v') + "\"=\"x\"\n", 5, "longer than 16383"},
    };
    for (const auto& [text, line, mentions] : cases) {
        SCOPED_TRACE(text.substr(0, 200));
        zolreg::ParseError e = errorOf(text);
        EXPECT_EQ(e.line, line);
        EXPECT_NE(e.message.find(mentions), std::string::npos) << e.message;
    }
    // A CRLF file counts lines just the same.
    zolreg::ParseError e = errorOf("REGEDIT4\r\n\r\n[HKLM\\A]\r\n\"x\"=dword:g\r\n");
    EXPECT_EQ(e.line, 4);
}

TEST(RegFileWrite, EveryFormAndParsesBack) {
    const std::string longData(100, '\x7f');
    const std::vector<zolreg::KeyBlock> blocks = {
        {"SOFTWARE\\T",
         {
             {"", REG_SZ, z("def")},
             {"q\"\\", REG_SZ, z("a\\\"b")},
             {"n", REG_DWORD, dword(0x6e)},
             {"b", REG_BINARY, std::string("\x01\xab", 2)},
             {"m", REG_MULTI_SZ, std::string("a\0\0", 3)},
             {"nl", REG_SZ, z("two\nlines")},  // no quoted form for a line break
             {"unterminated", REG_SZ, "abc"},  // nor for missing terminator
             {"odd", REG_DWORD, "\x01\x02"},   // a DWORD of the wrong size
             {"long", REG_BINARY, longData},
         }},
        {"SOFTWARE\\T\\Empty", {}},
    };
    const std::string text = zolreg::writeRegFile(blocks);
    EXPECT_EQ(text.substr(0, 42), "REGEDIT4\n\n[HKEY_LOCAL_MACHINE\\SOFTWARE\\T]\n");
    EXPECT_NE(text.find("\n\"q\\\"\\\\\"=\"a\\\\\\\"b\"\n"), std::string::npos);
    EXPECT_NE(text.find("\n\"b\"=hex:01,ab\n"), std::string::npos);
    EXPECT_NE(text.find("\n\"unterminated\"=hex(1):61,62,63\n"), std::string::npos);
    EXPECT_NE(text.find("\n\"odd\"=hex(4):01,02\n"), std::string::npos);

    zolreg::ParseResult back = parseRegFile(text);
    ASSERT_FALSE(back.error) << back.error->line << ": " << back.error->message;
    std::vector<zolreg::KeyBlock> rebuilt;
    for (const zolreg::Operation& op : back.ops) {
        if (op.kind == OpKind::CreateKey)
            rebuilt.push_back({op.key, {}});
        if (op.kind == OpKind::SetValue)
            rebuilt.back().values.push_back(op.value);
    }
    ASSERT_EQ(rebuilt.size(), blocks.size());
    EXPECT_EQ(rebuilt[0].values, blocks[0].values);
    EXPECT_EQ(zolreg::writeRegFile(rebuilt), text);

    EXPECT_THROW(zolreg::formatValueLine({"a\nb", REG_SZ, z("x")}), std::invalid_argument);
}

TEST(RegFileParse, MutatedFilesNeverBreakTheParser) {
    const std::string seed =
        "REGEDIT4\n\n[HKEY_LOCAL_MACHINE\\SOFTWARE\\T]\n@=\"d\\\\e\\\"f\"\n"
        "\"n\"=dword:0000006e\n\"b\"=hex:01,02,\\\n  03\n\"m\"=hex(7):61,00,00\n"
        "\"x\"=-\n[-HKLM\\SOFTWARE\\U]\n";
    ASSERT_FALSE(parseRegFile(seed).error);
    const std::string alphabet = "[]\\\"@=-:,()\r\n hexdword0179afAF;\xC6";
    std::mt19937 random(7);
    for (int round = 0; round < 3000; ++round) {
        std::string text = seed;
        int edits = 1 + static_cast<int>(random() % 4);
        for (int e = 0; e < edits && !text.empty(); ++e) {
            size_t at = random() % text.size();
            char c = alphabet[random() % alphabet.size()];
            const auto edit = random() % 3;
            if (edit == 0)
                text[at] = c;
            else if (edit == 1)
                text.insert(at, 1, c);
            else
                text.erase(at, 1 + random() % 3);
        }
        zolreg::ParseResult r = parseRegFile(text);
        if (r.error) {
            EXPECT_TRUE(r.ops.empty());
            EXPECT_TRUE(r.error->line >= 1 &&
                        r.error->line <= std::count(text.begin(), text.end(), '\n') + 1);
            EXPECT_FALSE(r.error->message.empty());
        } else {
            // Whatever was accepted writes out and reads back to the same values.
            for (const zolreg::Operation& op : r.ops) {
                if (op.kind != OpKind::SetValue)
                    continue;
                std::string line = zolreg::formatValueLine(op.value);
                zolreg::ParseResult back =
                    parseRegFile("REGEDIT4\n[HKLM\\" + op.key + "]\n" + line + "\n");
                ASSERT_FALSE(back.error) << line;
                EXPECT_EQ(back.ops.back().value, op.value) << line;
            }
        }
    }
}

}  // namespace
