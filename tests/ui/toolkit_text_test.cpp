// The toolkit's logic without a screen: entry filters, text measuring and wrapping (Japanese
// line-breaking rules included) and the EUC-JP / UTF-8 boundary.
#include <gtest/gtest.h>
#include <newt.h>

#include <cstdlib>
#include <cstring>
#include <sstream>
#include <string>
#include <vector>

#include "ui/toolkit.h"

namespace {

using Filter = int (*)(newtComponent, void*, int, int);

// EUC-JP characters used below.
const std::string A = "\xA4\xA2";         // あ
const std::string I = "\xA4\xA4";         // い
const std::string Maru = "\xA1\xA3";      // 。
const std::string Ten = "\xA1\xA2";       // 、
const std::string Kagi = "\xA1\xD6";      // 「
const std::string KagiEnd = "\xA1\xD7";   // 」
const std::string SmallTsu = "\xA4\xC3";  // っ

std::vector<std::string> splitLines(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);) {
        lines.push_back(line);
    }
    return lines;
}

TEST(EntryFilters, AcceptDigitsEditingKeysAndTheirOwnCharactersOnly) {
    for (Filter f :
         {EntryNumricFilter, EntryTelFilter, EntryNumFilter, EntryIPFilter, EntryScheduleFilter}) {
        for (int ch : {int('0'), int('9'), NEWT_KEY_UP, NEWT_KEY_RIGHT, NEWT_KEY_BKSPC,
                       NEWT_KEY_DELETE, NEWT_KEY_HOME, NEWT_KEY_END}) {
            EXPECT_EQ(f(nullptr, nullptr, ch, 3), ch);
        }
        // Keys that must stay with the form, and keys above 255 whose low byte looks like a
        // digit or an accepted punctuation mark.
        for (int ch : {int('\t'), int('\r'), int('a'), int('+'), int('/'), 0x1B, 0xA4, NEWT_KEY_F1,
                       NEWT_KEY_F12, NEWT_KEY_UNTAB, NEWT_KEY_INSERT, 0x8000 + '5', 0x100 + '0',
                       0x100 + '.', 0x100 + '-'}) {
            EXPECT_EQ(f(nullptr, nullptr, ch, 0), 0) << "key " << ch;
        }
    }
    struct Case {
        Filter filter;
        std::string typed, shown;
    };
    const Case cases[] = {
        {EntryIPFilter, "1a.2-3", "1.23"},
        {EntryScheduleFilter, "1-3,5", "1-3,5"},
        {EntryScheduleFilter, "0.5 x;9", "0.59"},
        {EntryTelFilter, "(03) 1234-5678", "(03) 1234-5678"},
        {EntryNumFilter, "(03) 1234-5678", "(03)1234-5678"},
        {EntryNumricFilter, "-12.5 x(3)", "1253"},
    };
    for (const Case& c : cases) {
        std::string accepted;
        for (unsigned char ch : c.typed) {
            if (int r = c.filter(nullptr, nullptr, ch, 0); r != 0) {
                accepted.push_back(static_cast<char>(r));
            }
        }
        EXPECT_EQ(accepted, c.shown) << c.typed;
    }
}

TEST(TextFitting, MeasuresWithTheSpareColumnOfEndedLines) {
    const std::pair<std::string, zolui::TextSize> cases[] = {
        {"", {1, 1}},      {"abc", {3, 1}}, {"ab\ncde", {3, 2}},    {"abcd\nx", {5, 2}},
        {"abc\n", {4, 2}}, {"\n", {1, 2}},  {"a\n\nbcdef", {5, 3}},
    };
    for (const auto& [text, want] : cases) {
        SCOPED_TRACE('"' + text + '"');
        int w = 0, h = 0;
        textDimensions(text.c_str(), &w, &h);
        EXPECT_EQ(std::make_pair(w, h), std::make_pair(want.width, want.height));
        const zolui::TextSize size = zolui::measureText(text);
        EXPECT_EQ(std::make_pair(size.width, size.height), std::make_pair(w, h));
    }
}

TEST(TextFitting, KeepsNarrowTextAndWrapsWideTextAtNinetyPercent) {
    zolui::TextSize size;
    // 70 bytes and a line feed measure 71: 0.9 * 80 = 72 > 71, so the text stays as it is.
    const std::string narrow = std::string(70, 'x') + "\nshort";
    EXPECT_EQ(zolui::fitText(narrow, 80, size), narrow);
    EXPECT_EQ(std::make_pair(size.width, size.height), std::make_pair(71, 2));
    // 128 bytes, breakable at each blank: cut after the last blank within 72 columns.
    std::string wide;
    for (int i = 0; i < 20; ++i) {
        wide += (i ? " word" : "word") + std::to_string(i);
    }
    const auto lines = splitLines(zolui::fitText(wide, 80, size));
    EXPECT_EQ(std::make_pair(size.width, size.height), std::make_pair(72, 2));
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_EQ(lines[0], wide.substr(0, wide.rfind(' ', 71) + 1));
    EXPECT_EQ(lines[0] + lines[1], wide);
}

TEST(TextFitting, WrapsEnglishAndJapaneseTextAtAllowedPositions) {
    struct Case {
        std::string text;
        int width;
        std::string wrapped;
        int lines;
    };
    const std::string brackets = Kagi + Kagi + Kagi + Kagi;
    const Case cases[] = {
        // After the last blank before the limit; a tab counts as a blank.
        {"hello world again", 12, "hello world \nagain", 2},
        {"abc\tdefgh", 6, "abc\t\ndefgh", 2},
        // An existing line feed within the width ends the line there.
        {"ab\ncdef", 4, "ab\ncdef", 2},
        // No break position: exactly `width` bytes per line, even through a character.
        {"abcdefghij", 4, "abcd\nefgh\nij", 3},
        {brackets, 5, brackets.substr(0, 5) + "\n" + brackets.substr(5), 2},
        {"", 5, "", 0},
        // The full stop may not begin a line: the break moves one character back.
        {A + A + A + A + Maru + I + I, 8, A + A + A + "\n" + A + Maru + I + I, 2},
        // The opening bracket may not end a line.
        {A + A + A + Kagi + I + I + KagiEnd, 8, A + A + A + "\n" + Kagi + I + I + KagiEnd, 2},
        // Small kana behave as closing characters.
        {A + A + A + SmallTsu + I, 6, A + A + "\n" + A + SmallTsu + I, 2},
    };
    for (const Case& c : cases) {
        int lines = -1;
        EXPECT_EQ(zolui::wrapText(c.text, c.width, &lines), c.wrapped);
        EXPECT_EQ(lines, c.lines) << c.wrapped;
    }

    // Many mixed texts: the content survives and no line (unless cut for want of a break)
    // begins with 。 or 、 or ends with 「.
    const std::string alphabet[] = {A, I, Maru, Ten, Kagi, KagiEnd, " ", "ab"};
    unsigned seed = 12345;
    for (int round = 0; round < 300; ++round) {
        std::string text;
        const int n = 5 + round % 40;
        for (int k = 0; k < n; ++k) {
            seed = seed * 1103515245u + 12345u;
            text += alphabet[(seed >> 16) % 8];
        }
        const int width = 6 + round % 23;
        const std::string marks = zolui::breakMarks(text);
        int lines = 0;
        const std::string wrapped = zolui::wrapText(text, width, &lines);
        std::string joined;
        size_t offset = 0;
        for (const std::string& line : splitLines(wrapped)) {
            ASSERT_LE(line.size(), static_cast<size_t>(width)) << wrapped;
            joined += line;
            const size_t end = offset + line.size();
            const bool forced = line.size() == static_cast<size_t>(width) && !marks[end - 1];
            if (!forced && end < text.size()) {
                SCOPED_TRACE(round);
                EXPECT_NE(text.substr(end, 2), Maru);
                EXPECT_NE(text.substr(end, 2), Ten);
                EXPECT_NE(line.substr(line.size() >= 2 ? line.size() - 2 : 0), Kagi);
            }
            offset = end;
        }
        EXPECT_EQ(joined, text);
    }
}

TEST(TextFitting, CBuffersFollowTheOwnershipContract) {
    // breakLines frees its argument; width 1 is the worst case for the doubled buffer.
    char* ones = static_cast<char*>(std::malloc(6));
    std::memcpy(ones, "abcde", 6);
    int lines = 0;
    char* cut = breakLines(ones, 1, &lines);
    EXPECT_STREQ(cut, "a\nb\nc\nd\ne");
    EXPECT_EQ(lines, 5);
    std::free(cut);
}

TEST(Encoding, ConvertsBothWaysAndNeverFailsOnBadBytes) {
    const std::string euc = "\xC6\xFC\xCB\xDC\xB8\xEC";  // 日本語
    const std::string utf = "\xE6\x97\xA5\xE6\x9C\xAC\xE8\xAA\x9E";
    EXPECT_EQ(zolui::eucToUtf8(euc), utf);
    // Mixed text and half-width katakana (two bytes in EUC-JP, one column) survive both ways.
    const std::string mixed = "ID " + euc + A + Maru + " 123\x8E\xB1";
    EXPECT_EQ(zolui::utf8ToEuc(zolui::eucToUtf8(mixed)), mixed);
    // Undecodable bytes become '?', the rest is kept.
    EXPECT_EQ(zolui::eucToUtf8("\xFF\xFF,a\xA4+" + euc + "\x80 end\xA4"),
              "??,a?+" + utf + "? end?");
    EXPECT_EQ(zolui::utf8ToEuc("x\xF0\x9F\x98\x80y\xC3(\xE6\x97"), "x?y?(?");
}

}  // namespace
