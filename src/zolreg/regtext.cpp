// Text forms of key paths, value types and value data for the zolreg command line.
#include "regtext.h"

#include <zolwin.h>

#include <array>
#include <charconv>
#include <cstdio>

namespace zolreg {

namespace {

constexpr std::string_view kLongRoot = "HKEY_LOCAL_MACHINE";
constexpr std::string_view kShortRoot = "HKLM";

char foldAscii(char c) {
    return (c >= 'A' && c <= 'Z') ? static_cast<char>(c - 'A' + 'a') : c;
}

struct TypeEntry {
    uint32_t type;
    std::string_view name;
};

constexpr std::array<TypeEntry, 6> kTypes{{
    {REG_NONE, "REG_NONE"},
    {REG_SZ, "REG_SZ"},
    {REG_EXPAND_SZ, "REG_EXPAND_SZ"},
    {REG_BINARY, "REG_BINARY"},
    {REG_DWORD, "REG_DWORD"},
    {REG_MULTI_SZ, "REG_MULTI_SZ"},
}};

std::string withTerminator(std::string_view text) {
    std::string data(text);
    data.push_back('\0');
    return data;
}

std::optional<std::string> dwordFromText(std::string_view text, std::string& why) {
    std::string_view digits = text;
    int base = 10;
    if (digits.size() > 2 && digits[0] == '0' && (digits[1] == 'x' || digits[1] == 'X')) {
        digits.remove_prefix(2);
        base = 16;
    }
    uint32_t number = 0;
    auto [end, ec] = std::from_chars(digits.data(), digits.data() + digits.size(), number, base);
    if (digits.empty() || ec != std::errc() || end != digits.data() + digits.size()) {
        why = "REG_DWORD data must be a number from 0 to 4294967295 (decimal or 0x hex): \"" +
              std::string(text) + "\"";
        return std::nullopt;
    }
    std::string data(4, '\0');
    for (int i = 0; i < 4; ++i)
        data[i] = static_cast<char>((number >> (8 * i)) & 0xFF);
    return data;
}

std::optional<std::string> binaryFromText(std::string_view text, std::string& why) {
    if (text.size() % 2 != 0) {
        why = "binary data must be an even number of hex digits: \"" + std::string(text) + "\"";
        return std::nullopt;
    }
    std::string data;
    data.reserve(text.size() / 2);
    for (size_t i = 0; i < text.size(); i += 2) {
        int hi = hexDigit(text[i]);
        int lo = hexDigit(text[i + 1]);
        if (hi < 0 || lo < 0) {
            why = "binary data must be hex digits only: \"" + std::string(text) + "\"";
            return std::nullopt;
        }
        data.push_back(static_cast<char>(hi * 16 + lo));
    }
    return data;
}

// Items separated by the two characters \0, as reg.exe takes them; empty items are refused
// because a zero pair would end the list early.
std::optional<std::string> multiFromText(std::string_view text, std::string& why) {
    std::string data;
    if (text.empty())
        return std::string(1, '\0');
    size_t start = 0;
    while (true) {
        size_t sep = text.find("\\0", start);
        std::string_view item =
            text.substr(start, sep == std::string_view::npos ? sep : sep - start);
        if (item.empty()) {
            why = "REG_MULTI_SZ data must not hold empty items: \"" + std::string(text) + "\"";
            return std::nullopt;
        }
        data.append(item);
        data.push_back('\0');
        if (sep == std::string_view::npos)
            break;
        start = sep + 2;
    }
    data.push_back('\0');
    return data;
}

}  // namespace

int hexDigit(char c) {
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    if (c >= 'A' && c <= 'F')
        return c - 'A' + 10;
    return -1;
}

bool equalsNoCase(std::string_view a, std::string_view b) {
    if (a.size() != b.size())
        return false;
    for (size_t i = 0; i < a.size(); ++i) {
        if (foldAscii(a[i]) != foldAscii(b[i]))
            return false;
    }
    return true;
}

std::optional<std::string> subKeyOf(std::string_view path) {
    size_t cut = path.find('\\');
    std::string_view root = path.substr(0, cut);
    if (!equalsNoCase(root, kLongRoot) && !equalsNoCase(root, kShortRoot))
        return std::nullopt;
    std::string sub;
    if (cut == std::string_view::npos)
        return sub;
    std::string_view rest = path.substr(cut);
    size_t i = 0;
    while (i < rest.size()) {
        while (i < rest.size() && rest[i] == '\\')
            ++i;
        size_t end = rest.find('\\', i);
        if (end == std::string_view::npos)
            end = rest.size();
        if (end > i) {
            if (!sub.empty())
                sub.push_back('\\');
            sub.append(rest.substr(i, end - i));
        }
        i = end;
    }
    return sub;
}

std::string childPath(std::string_view sub, std::string_view name) {
    std::string path(sub);
    if (!path.empty())
        path.push_back('\\');
    path.append(name);
    return path;
}

std::string longPath(std::string_view sub) {
    return sub.empty() ? std::string(kLongRoot) : std::string(kLongRoot) + "\\" + std::string(sub);
}

std::string shortPath(std::string_view sub) {
    return sub.empty() ? std::string(kShortRoot)
                       : std::string(kShortRoot) + "\\" + std::string(sub);
}

std::string typeName(uint32_t type) {
    for (const auto& entry : kTypes) {
        if (entry.type == type)
            return std::string(entry.name);
    }
    return "REG_TYPE_" + std::to_string(type);
}

std::optional<uint32_t> typeFromName(std::string_view name) {
    for (const auto& entry : kTypes) {
        if (equalsNoCase(entry.name, name))
            return entry.type;
    }
    return std::nullopt;
}

std::optional<std::string> dataFromText(uint32_t type, std::string_view text, std::string& why) {
    switch (type) {
        case REG_SZ:
        case REG_EXPAND_SZ:
            return withTerminator(text);
        case REG_DWORD:
            return dwordFromText(text.empty() ? std::string_view("0") : text, why);
        case REG_MULTI_SZ:
            return multiFromText(text, why);
        case REG_BINARY:
        case REG_NONE:
            return binaryFromText(text, why);
        default:
            why = "values of type " + typeName(type) + " cannot be given on the command line";
            return std::nullopt;
    }
}

std::string queryText(uint32_t type, std::string_view data) {
    switch (type) {
        case REG_SZ:
        case REG_EXPAND_SZ:
            return std::string(data.substr(0, data.find('\0')));
        case REG_DWORD:
            if (data.size() == 4) {
                uint32_t number = 0;
                for (int i = 3; i >= 0; --i)
                    number = (number << 8) | static_cast<uint8_t>(data[i]);
                char buf[16];
                std::snprintf(buf, sizeof buf, "0x%x", number);
                return buf;
            }
            break;  // a DWORD of another size is shown as the bytes it holds
        case REG_MULTI_SZ: {
            std::string text;
            size_t start = 0;
            while (start < data.size()) {
                size_t end = data.find('\0', start);
                if (end == std::string_view::npos)
                    end = data.size();
                if (end == start)
                    break;  // the empty item ends the list
                if (!text.empty())
                    text += "\\0";
                text.append(data.substr(start, end - start));
                start = end + 1;
            }
            return text;
        }
        default:
            break;
    }
    static constexpr char kHex[] = "0123456789ABCDEF";
    std::string text;
    text.reserve(data.size() * 2);
    for (unsigned char byte : data) {
        text.push_back(kHex[byte >> 4]);
        text.push_back(kHex[byte & 0x0F]);
    }
    return text;
}

std::string queryLine(std::string_view name, uint32_t type, std::string_view data) {
    std::string line = "    ";
    line += name.empty() ? std::string_view("(Default)") : name;
    line += "    ";
    line += typeName(type);
    line += "    ";
    line += queryText(type, data);
    return line;
}

}  // namespace zolreg
