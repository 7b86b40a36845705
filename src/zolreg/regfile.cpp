// REGEDIT4 parser and writer. The parser reads the whole text before anything is applied, so
// that a malformed line refuses the file as a whole and names the line.
#include "regfile.h"

#include <zolwin.h>

#include <cstdio>
#include <stdexcept>

#include "regtext.h"

namespace zolreg {

namespace {

constexpr std::string_view kHeader = "REGEDIT4";
constexpr size_t kHexLineWidth = 77;  // wrapped lines stay within 80 columns with ",\"

bool isBlank(char c) {
    return c == ' ' || c == '\t';
}

std::string_view trimLeft(std::string_view s) {
    while (!s.empty() && isBlank(s.front()))
        s.remove_prefix(1);
    return s;
}

std::string_view trimRight(std::string_view s) {
    while (!s.empty() && (isBlank(s.back()) || s.back() == '\r'))
        s.remove_suffix(1);
    return s;
}

std::string_view trim(std::string_view s) {
    return trimLeft(trimRight(s));
}

bool startsWithNoCase(std::string_view s, std::string_view prefix) {
    return s.size() >= prefix.size() && equalsNoCase(s.substr(0, prefix.size()), prefix);
}

// Thrown inside the parser only; parseRegFile turns it into a ParseError.
struct LineError {
    int line;
    std::string message;
};

// The file as numbered lines; a line ends at LF, and a CR before it is dropped (CRLF files).
class Lines {
  public:
    explicit Lines(std::string_view text) : text_(text) {}

    bool next(std::string_view& line) {
        if (pos_ >= text_.size())
            return false;  // no phantom empty line after a final LF
        size_t end = text_.find('\n', pos_);
        if (end == std::string_view::npos)
            end = text_.size();
        line = text_.substr(pos_, end - pos_);
        if (!line.empty() && line.back() == '\r')
            line.remove_suffix(1);
        pos_ = end + 1;
        ++number_;
        return true;
    }
    int number() const { return number_; }

  private:
    std::string_view text_;
    size_t pos_ = 0;
    int number_ = 0;
};

// A quoted text with the escapes \\ and \"; `s` starts at the opening quote and is left just
// after the closing one.
std::string parseQuoted(std::string_view& s, int line, const char* what) {
    std::string out;
    size_t i = 1;
    while (true) {
        if (i >= s.size())
            throw LineError{line, std::string("missing closing quote in ") + what};
        char c = s[i];
        if (c == '"')
            break;
        if (c == '\\') {
            if (i + 1 >= s.size()) {
                throw LineError{line, std::string("missing closing quote in ") + what};
            }
            char e = s[i + 1];
            if (e != '\\' && e != '"') {
                throw LineError{line, std::string("unknown escape \\") + e + " in " + what +
                                          " (only \\\\ and \\\" are allowed)"};
            }
            out.push_back(e);
            i += 2;
            continue;
        }
        out.push_back(c);
        ++i;
    }
    s.remove_prefix(i + 1);
    return out;
}

// Hex bytes "01,02,ab" spread over continuation segments, each with its own line number.
struct Segment {
    int line;
    std::string_view text;
};

std::string parseHexBytes(const std::vector<Segment>& segments) {
    std::string data;
    for (size_t s = 0; s < segments.size(); ++s) {
        std::string_view text = segments[s].text;
        size_t pos = 0;
        while (pos <= text.size()) {
            size_t comma = text.find(',', pos);
            bool last = comma == std::string_view::npos;
            std::string_view token = trim(text.substr(pos, last ? comma : comma - pos));
            if (token.empty()) {
                // Only the place after a final comma (or an empty line) may be empty.
                if (!last)
                    throw LineError{segments[s].line, "empty item in hex data"};
                break;
            }
            int hi = token.size() == 2 ? hexDigit(token[0]) : (token.size() == 1 ? 0 : -1);
            int lo = hexDigit(token.back());
            if (hi < 0 || lo < 0) {
                throw LineError{segments[s].line,
                                "\"" + std::string(token) + "\" is not a hex byte (00 to ff)"};
            }
            data.push_back(static_cast<char>(hi * 16 + lo));
            if (last)
                break;
            pos = comma + 1;
        }
    }
    return data;
}

void checkKeyNames(std::string_view sub, int line) {
    size_t start = 0;
    while (start <= sub.size() && !sub.empty()) {
        size_t end = sub.find('\\', start);
        if (end == std::string_view::npos)
            end = sub.size();
        if (end - start > ZOL_MAX_KEY_NAME) {
            throw LineError{
                line, "key name longer than " + std::to_string(ZOL_MAX_KEY_NAME) + " characters"};
        }
        start = end + 1;
    }
}

class Parser {
  public:
    explicit Parser(std::string_view text) : lines_(text) {}

    std::vector<Operation> run() {
        std::string_view line;
        if (!lines_.next(line))
            throw LineError{1, "the file is empty (expected REGEDIT4)"};
        // A UTF-8 byte order mark some editors add is tolerated before the header.
        if (line.substr(0, 3) == "\xEF\xBB\xBF")
            line.remove_prefix(3);
        if (trimRight(line) != kHeader) {
            throw LineError{1, "the file does not begin with REGEDIT4"};
        }
        while (lines_.next(line))
            parseLine(line);
        return std::move(ops_);
    }

  private:
    void parseLine(std::string_view raw) {
        const int line = lines_.number();
        std::string_view s = trim(raw);
        if (s.empty() || s.front() == ';')
            return;
        if (s.front() == '[') {
            parseKeyHeader(s, line);
        } else if (s.front() == '"' || s.front() == '@') {
            parseValue(s, line);
        } else {
            throw LineError{line, "expected [KEY], \"name\"=data or @=data"};
        }
    }

    void parseKeyHeader(std::string_view s, int line) {
        size_t close = s.rfind(']');
        if (close == std::string_view::npos || !trim(s.substr(close + 1)).empty()) {
            throw LineError{line, "a key line must end with ]"};
        }
        std::string_view path = s.substr(1, close - 1);
        bool remove = !path.empty() && path.front() == '-';
        if (remove)
            path.remove_prefix(1);
        std::optional<std::string> sub = subKeyOf(path);
        if (!sub) {
            throw LineError{line, "only keys under HKEY_LOCAL_MACHINE can be imported: \"" +
                                      std::string(path) + "\""};
        }
        checkKeyNames(*sub, line);
        if (remove && sub->empty()) {
            throw LineError{line, "the root key HKEY_LOCAL_MACHINE cannot be deleted"};
        }
        Operation op;
        op.kind = remove ? OpKind::DeleteKey : OpKind::CreateKey;
        op.key = *sub;
        op.line = line;
        ops_.push_back(op);
        currentKey_ = std::move(*sub);
        haveKey_ = true;
        keyDeleted_ = remove;
    }

    void parseValue(std::string_view s, int line) {
        if (!haveKey_)
            throw LineError{line, "value before the first [KEY] line"};
        if (keyDeleted_)
            throw LineError{line, "value under a key that is being deleted"};
        Operation op;
        op.key = currentKey_;
        op.line = line;
        if (s.front() == '@') {
            s.remove_prefix(1);
        } else {
            op.value.name = parseQuoted(s, line, "the value name");
            if (op.value.name.size() > ZOL_MAX_VALUE_NAME) {
                throw LineError{line, "value name longer than " +
                                          std::to_string(ZOL_MAX_VALUE_NAME) + " characters"};
            }
        }
        s = trimLeft(s);
        if (s.empty() || s.front() != '=')
            throw LineError{line, "expected = after the value name"};
        s = trimLeft(s.substr(1));

        if (s == "-") {
            op.kind = OpKind::DeleteValue;
        } else {
            op.kind = OpKind::SetValue;
            parseData(s, line, op.value);
        }
        ops_.push_back(std::move(op));
    }

    void parseData(std::string_view s, int line, Value& value) {
        if (!s.empty() && s.front() == '"') {
            std::string text = parseQuoted(s, line, "the string data");
            if (!trim(s).empty())
                throw LineError{line, "unexpected text after the string data"};
            value.type = REG_SZ;
            value.data = std::move(text);
            value.data.push_back('\0');
        } else if (startsWithNoCase(s, "dword:")) {
            std::string_view digits = trim(s.substr(6));
            if (digits.empty() || digits.size() > 8) {
                throw LineError{line, "dword: needs 1 to 8 hex digits"};
            }
            uint32_t number = 0;
            for (char c : digits) {
                int d = hexDigit(c);
                if (d < 0)
                    throw LineError{line, "dword: needs 1 to 8 hex digits"};
                number = number * 16 + static_cast<uint32_t>(d);
            }
            value.type = REG_DWORD;
            value.data.assign(4, '\0');
            for (int i = 0; i < 4; ++i) {
                value.data[i] = static_cast<char>((number >> (8 * i)) & 0xFF);
            }
        } else if (startsWithNoCase(s, "hex:") || startsWithNoCase(s, "hex(")) {
            value.type = REG_BINARY;
            if (s[3] == '(') {
                size_t close = s.find(')');
                std::string_view digits =
                    s.substr(4, close == std::string_view::npos ? 0 : close - 4);
                if (close == std::string_view::npos || digits.empty() || digits.size() > 8 ||
                    close + 1 >= s.size() || s[close + 1] != ':') {
                    throw LineError{line, "hex(N): needs a hex type number, as in hex(7):"};
                }
                uint32_t type = 0;
                for (char c : digits) {
                    int d = hexDigit(c);
                    if (d < 0)
                        throw LineError{line, "hex(N): needs a hex type number"};
                    type = type * 16 + static_cast<uint32_t>(d);
                }
                value.type = type;
                s.remove_prefix(close + 2);
            } else {
                s.remove_prefix(4);
            }
            value.data = parseHexBytes(continuedSegments(s, line));
        } else {
            throw LineError{line,
                            "unknown value data (expected \"text\", dword:, hex:, hex(N): or -)"};
        }
    }

    // The hex data of one value: its first line, and further lines while a line ends with \.
    std::vector<Segment> continuedSegments(std::string_view first, int line) {
        std::vector<Segment> segments;
        std::string_view text = trimRight(first);
        int number = line;
        while (!text.empty() && text.back() == '\\') {
            segments.push_back({number, text.substr(0, text.size() - 1)});
            std::string_view next;
            if (!lines_.next(next)) {
                throw LineError{number, "the file ends in the middle of continued hex data"};
            }
            number = lines_.number();
            text = trim(next);
        }
        segments.push_back({number, text});
        return segments;
    }

    Lines lines_;
    std::vector<Operation> ops_;
    std::string currentKey_;
    bool haveKey_ = false;
    bool keyDeleted_ = false;
};

bool holdsLineBreak(std::string_view s) {
    return s.find('\n') != std::string_view::npos || s.find('\r') != std::string_view::npos;
}

std::string quoted(std::string_view s) {
    std::string out = "\"";
    for (char c : s) {
        if (c == '\\' || c == '"')
            out.push_back('\\');
        out.push_back(c);
    }
    out.push_back('"');
    return out;
}

// A REG_SZ is written as a quoted string only when that form gives back the same bytes.
bool fitsQuotedString(const Value& value) {
    const std::string& d = value.data;
    return value.type == REG_SZ && !d.empty() && d.back() == '\0' && d.find('\0') == d.size() - 1 &&
           !holdsLineBreak(d);
}

std::string hexData(std::string prefix, std::string_view data) {
    static constexpr char kHex[] = "0123456789abcdef";
    std::string out = std::move(prefix);
    size_t column = out.size();
    for (size_t i = 0; i < data.size(); ++i) {
        auto byte = static_cast<unsigned char>(data[i]);
        std::string piece{kHex[byte >> 4], kHex[byte & 0x0F]};
        if (i + 1 < data.size())
            piece.push_back(',');
        if (i > 0 && column + piece.size() > kHexLineWidth) {
            out += "\\\n  ";
            column = 2;
        }
        out += piece;
        column += piece.size();
    }
    return out;
}

}  // namespace

ParseResult parseRegFile(std::string_view text) {
    ParseResult result;
    try {
        result.ops = Parser(text).run();
    } catch (const LineError& e) {
        result.ops.clear();
        result.error = ParseError{e.line, e.message};
    }
    return result;
}

std::string formatValueLine(const Value& value) {
    // A CR inside a name survives a line of its own; only LF ends a line early.
    if (value.name.find('\n') != std::string::npos) {
        throw std::invalid_argument("value name with a line break: REGEDIT4 cannot carry it");
    }
    std::string out = value.name.empty() ? std::string("@") : quoted(value.name);
    out.push_back('=');
    if (fitsQuotedString(value)) {
        return out + quoted(std::string_view(value.data).substr(0, value.data.size() - 1));
    }
    if (value.type == REG_DWORD && value.data.size() == 4) {
        uint32_t number = 0;
        for (int i = 3; i >= 0; --i)
            number = (number << 8) | static_cast<uint8_t>(value.data[i]);
        char buf[16];
        std::snprintf(buf, sizeof buf, "dword:%08x", number);
        return out + buf;
    }
    if (value.type == REG_BINARY)
        return hexData(out + "hex:", value.data);
    char buf[32];
    std::snprintf(buf, sizeof buf, "hex(%x):", value.type);
    return hexData(out + buf, value.data);
}

std::string writeRegFile(const std::vector<KeyBlock>& blocks) {
    std::string out(kHeader);
    out += "\n\n";
    for (const KeyBlock& block : blocks) {
        if (block.key.find('\n') != std::string::npos) {
            throw std::invalid_argument("key name with a line break: REGEDIT4 cannot carry it");
        }
        out += '[';
        out += longPath(block.key);
        out += "]\n";
        for (const Value& value : block.values)
            out += formatValueLine(value) + "\n";
        out += "\n";
    }
    return out;
}

}  // namespace zolreg
