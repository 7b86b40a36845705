// Text at the edge of zolctl: store texts (EUC-JP in Japanese installations) converted for the
// terminal and for JSON, typed texts converted for comparison with the store, JSON escaping.
#include <langinfo.h>

#include <cstdio>
#include <string>

#include "report.h"
#include "zolctl/zolctl.h"

namespace zolctl {

namespace {

using vntreport::IsAscii;

bool LocaleIsUtf8() {
    const std::string_view codeset = nl_langinfo(CODESET);
    return codeset == "UTF-8" || codeset == "utf8";
}

// EUC-JP store text as UTF-8; bytes that are no EUC-JP are shown as "\xNN" rather than lost.
std::string EucToUtf8(std::string_view text) {
    if (IsAscii(text))
        return std::string(text);
    if (auto converted = vntreport::EucJpToUtf8(text))
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
    return vntreport::Utf8ToEucJp(typed).value_or(std::string(typed));
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
