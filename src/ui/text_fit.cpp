// Measuring and word-wrapping texts for boxes, by bytes: in EUC-JP a two-byte character takes
// two columns, so byte counts are column counts. Japanese lines obey the kinsoku rules.
#include <newt.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <new>

#include "ui/toolkit.h"

namespace {

constexpr unsigned pairOf(unsigned char first, unsigned char second) {
    return (unsigned{first} << 8) | second;
}

// Characters that may not begin a line: 、。 closing brackets, the prolonged sound mark and
// the small kana.
constexpr unsigned kClosing[] = {
    0xA1A3, 0xA1A2, 0xA1D7, 0xA1D9, 0xA1CF, 0xA1DB, 0xA1D1, 0xA1BC, 0xA4A1,
    0xA4A3, 0xA4A5, 0xA4A7, 0xA4A9, 0xA4C3, 0xA5A1, 0xA5A3, 0xA5A5, 0xA5A7,
    0xA5A9, 0xA5C3, 0xA4E3, 0xA4E5, 0xA4E7, 0xA5E3, 0xA5E5, 0xA5E7,
};
// Characters that may not end a line: opening brackets.
constexpr unsigned kOpening[] = {0xA1D6, 0xA1D8, 0xA1CE, 0xA1DA, 0xA1D0};

bool contains(const unsigned* first, const unsigned* last, unsigned value) {
    return std::find(first, last, value) != last;
}

// How many bytes of `text` the next line takes, and whether a line feed must be added.
size_t nextLine(std::string_view text, int width, const char* marks, bool& addLineFeed) {
    const size_t w = static_cast<size_t>(std::max(width, 1));
    addLineFeed = false;
    const size_t head = std::min(text.size(), w);
    for (size_t i = 0; i < head; ++i) {
        if (text[i] == '\n') {
            return i + 1;
        }
    }
    if (text.size() <= w) {
        return text.size();
    }
    addLineFeed = true;
    for (size_t i = w; i-- > 0;) {
        if (marks[i]) {
            return i + 1;  // the blank that allowed the break stays at the line's end
        }
    }
    // No break allowed anywhere: cut at exactly `width` bytes, even inside a two-byte
    // character. Long-standing behaviour that callers' layouts rely on.
    return w;
}

std::string wrapWithMarks(std::string_view text, int width, const std::string& marks, int* lines) {
    std::string out;
    out.reserve(text.size() * 2);
    int count = 0;
    size_t pos = 0;
    while (pos < text.size()) {
        bool lf = false;
        const size_t used = nextLine(text.substr(pos), width, marks.data() + pos, lf);
        out.append(text.substr(pos, used));
        if (lf) {
            out.push_back('\n');
        }
        pos += used;
        ++count;
    }
    if (lines) {
        *lines = count;
    }
    return out;
}

}  // namespace

namespace zolui {

TextSize measureText(std::string_view text) {
    if (text.empty()) {
        return {1, 1};
    }
    TextSize size{0, 1};
    int line = 0;
    for (char c : text) {
        if (c == '\n') {
            // An ended line counts its line feed as a column: the box keeps a spare column.
            size.width = std::max(size.width, line + 1);
            ++size.height;
            line = 0;
        } else {
            ++line;
        }
    }
    size.width = std::max(size.width, line);
    return size;
}

std::string breakMarks(std::string_view text) {
    std::string marks(text.size(), '\0');
    size_t i = 0;
    while (i < text.size()) {
        const auto c = static_cast<unsigned char>(text[i]);
        // The wrapping rule has always taken every byte above 159 for the first of a two-byte
        // character, which is not quite EucCharLength (0xA0 starts none there; the single
        // shifts 0x8E and 0x8F start characters of two and three bytes). The texts wrapped here
        // come from the message files, which hold JIS X 0208 only, where both agree; the rule
        // stays as documented so that long messages break where they always have.
        if (c > 159) {
            // First byte of a two-byte EUC-JP character: never a break after it.
            if (i + 1 >= text.size()) {
                break;
            }
            const unsigned ch = pairOf(c, static_cast<unsigned char>(text[i + 1]));
            if (contains(std::begin(kClosing), std::end(kClosing), ch)) {
                if (i > 0) {
                    marks[i - 1] = '\0';
                }
                marks[i + 1] = '\1';
            } else if (!contains(std::begin(kOpening), std::end(kOpening), ch)) {
                marks[i + 1] = '\1';
            }
            i += 2;
        } else {
            if (c == ' ' || c == '\t' || c == '\n') {
                marks[i] = '\1';
            }
            ++i;
        }
    }
    return marks;
}

std::string wrapText(std::string_view text, int width, int* lines) {
    return wrapWithMarks(text, width, breakMarks(text), lines);
}

std::string fitText(std::string_view text, int screenCols, TextSize& size) {
    size = measureText(text);
    // 90 % of the columns, compared exactly: 0.9 * cols > width.
    if (9 * screenCols > 10 * size.width) {
        return std::string(text);
    }
    size.width = std::max(9 * screenCols / 10, 1);
    return wrapText(text, size.width, &size.height);
}

std::string fitTextToScreen(std::string_view text, TextSize& size) {
    int cols = 0;
    int rows = 0;
    newtGetScreenSize(&cols, &rows);
    return fitText(text, cols, size);
}

}  // namespace zolui

void textDimensions(const char* text, int* width, int* height) {
    const zolui::TextSize size = zolui::measureText(text ? std::string_view(text) : "");
    *width = size.width;
    *height = size.height;
}

int addALine(char* out, const char* text, int width, const char* marks) {
    bool lf = false;
    const size_t used = nextLine(text, width, marks, lf);
    std::memcpy(out, text, used);
    if (lf) {
        out[used] = '\n';
    }
    out[used + (lf ? 1 : 0)] = '\0';
    return static_cast<int>(used);
}

char* breakLines(char* text, int width, int* lines) {
    if (!text) {
        *lines = 0;
        return nullptr;
    }
    // Each line adds at most one line feed to at least one byte: twice the input suffices.
    const size_t len = std::strlen(text);
    char* out = static_cast<char*>(std::malloc(len * 2 + 1));
    if (!out) {
        *lines = zolui::measureText(text).height;
        return text;  // no memory: show the text unwrapped rather than lose it
    }
    const std::string marks = zolui::breakMarks(std::string_view(text, len));
    char* o = out;
    *o = '\0';
    int count = 0;
    size_t pos = 0;
    while (pos < len) {
        pos += static_cast<size_t>(addALine(o, text + pos, width, marks.data() + pos));
        o += std::strlen(o);
        ++count;
    }
    std::free(text);
    *lines = count;
    return out;
}

char* smartTextDimensions(char* text, int* width, int* height) {
    textDimensions(text, width, height);
    if (!text) {
        return text;
    }
    int cols = 0;
    int rows = 0;
    newtGetScreenSize(&cols, &rows);
    if (9 * cols > 10 * *width) {
        return text;
    }
    *width = std::max(9 * cols / 10, 1);
    return breakLines(text, *width, height);
}
