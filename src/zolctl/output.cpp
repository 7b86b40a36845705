// Text at the edge of zolctl: store texts (EUC-JP in Japanese installations) converted for the
// terminal and for JSON, typed texts converted for comparison with the store, JSON escaping.
#include <iconv.h>
#include <langinfo.h>

#include <cstdio>
#include <string>

#include "zolctl/zolctl.h"

namespace zolctl {

namespace {

bool IsAscii(std::string_view text) {
    for (const char c : text) {
        if (static_cast<unsigned char>(c) >= 0x80)
            return false;
    }
    return true;
}

bool LocaleIsUtf8() {
    const std::string_view codeset = nl_langinfo(CODESET);
    return codeset == "UTF-8" || codeset == "utf8";
}

// Converts text between two character sets; nothing when it holds a byte sequence the source
// set does not have.
std::optional<std::string> Convert(std::string_view text, const char* to, const char* from) {
    iconv_t cd = iconv_open(to, from);
    if (cd == reinterpret_cast<iconv_t>(-1))
        return std::nullopt;
    std::string in(text);
    std::string out(text.size() * 4 + 4, '\0');
    char* inPtr = in.data();
    std::size_t inLeft = in.size();
    char* outPtr = out.data();
    std::size_t outLeft = out.size();
    const std::size_t rc = iconv(cd, &inPtr, &inLeft, &outPtr, &outLeft);
    iconv_close(cd);
    if (rc == static_cast<std::size_t>(-1) || inLeft != 0)
        return std::nullopt;
    out.resize(out.size() - outLeft);
    return out;
}

// EUC-JP store text as UTF-8; bytes that are no EUC-JP are shown as "\xNN" rather than lost.
std::string EucToUtf8(std::string_view text) {
    if (IsAscii(text))
        return std::string(text);
    if (auto converted = Convert(text, "UTF-8", "EUC-JP"))
        return *converted;
    std::string shown;
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte < 0x80) {
            shown += c;
        } else {
            char hex[8];
            std::snprintf(hex, sizeof hex, "\\x%02X", byte);
            shown += hex;
        }
    }
    return shown;
}

}  // namespace

std::string ForTerminal(std::string_view storeText) {
    return LocaleIsUtf8() ? EucToUtf8(storeText) : std::string(storeText);
}

std::string ForStore(std::string_view typed) {
    if (IsAscii(typed) || !LocaleIsUtf8())
        return std::string(typed);
    return Convert(typed, "EUC-JP", "UTF-8").value_or(std::string(typed));
}

std::string JsonString(std::string_view storeText) {
    const std::string text = EucToUtf8(storeText);
    std::string out = "\"";
    for (const char c : text) {
        switch (c) {
            case '"':
                out += "\\\"";
                break;
            case '\\':
                out += "\\\\";
                break;
            case '\n':
                out += "\\n";
                break;
            case '\r':
                out += "\\r";
                break;
            case '\t':
                out += "\\t";
                break;
            default:
                if (static_cast<unsigned char>(c) < 0x20) {
                    char escaped[8];
                    std::snprintf(escaped, sizeof escaped, "\\u%04x", static_cast<unsigned>(c));
                    out += escaped;
                } else {
                    out += c;
                }
        }
    }
    return out + "\"";
}

}  // namespace zolctl
