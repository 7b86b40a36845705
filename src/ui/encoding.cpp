// EUC-JP <-> UTF-8 at the newt boundary, over iconv, never failing on bad input.
#include "ui/encoding.h"

#include <iconv.h>
#include <langinfo.h>

#include <algorithm>
#include <atomic>
#include <cctype>
#include <cerrno>

namespace zolui {
namespace {

std::atomic<bool> japaneseText{false};

// One conversion descriptor per direction and thread, closed when the thread ends.
class Converter {
  public:
    Converter(const char* to, const char* from) : cd_(iconv_open(to, from)) {}
    ~Converter() {
        if (ok()) {
            iconv_close(cd_);
        }
    }
    Converter(const Converter&) = delete;
    Converter& operator=(const Converter&) = delete;

    bool ok() const { return cd_ != reinterpret_cast<iconv_t>(-1); }

    // Converts `in`; at a byte that cannot be converted writes '?' and skips `skip(rest)` bytes.
    template <typename Skip>
    std::string convert(std::string_view in, Skip skip) {
        std::string out;
        if (!ok()) {
            // Without iconv nothing can be decoded: keep ASCII, mark the rest.
            for (unsigned char c : in) {
                out.push_back(c < 0x80 ? static_cast<char>(c) : '?');
            }
            return out;
        }
        iconv(cd_, nullptr, nullptr, nullptr, nullptr);
        out.reserve(in.size() * 3 / 2 + 8);
        char* src = const_cast<char*>(in.data());
        size_t srcLeft = in.size();
        char buf[256];
        while (srcLeft > 0) {
            char* dst = buf;
            size_t dstLeft = sizeof buf;
            size_t r = iconv(cd_, &src, &srcLeft, &dst, &dstLeft);
            out.append(buf, static_cast<size_t>(dst - buf));
            if (r != static_cast<size_t>(-1)) {
                continue;
            }
            if (errno == E2BIG) {
                continue;
            }
            // EILSEQ (undecodable or unmappable) or EINVAL (cut off at the end).
            size_t n = skip(std::string_view(src, srcLeft));
            if (n == 0 || n > srcLeft) {
                n = srcLeft < 1 ? srcLeft : 1;
            }
            out.push_back('?');
            src += n;
            srcLeft -= n;
            iconv(cd_, nullptr, nullptr, nullptr, nullptr);
        }
        return out;
    }

  private:
    iconv_t cd_;
};

// Length of the UTF-8 sequence that starts `rest`, so that an unmappable character becomes a
// single '?'; a stray byte is skipped alone.
size_t utf8SequenceLength(std::string_view rest) {
    const auto lead = static_cast<unsigned char>(rest[0]);
    size_t len = lead < 0x80           ? 1
                 : (lead >> 5) == 0x6  ? 2
                 : (lead >> 4) == 0xE  ? 3
                 : (lead >> 3) == 0x1E ? 4
                                       : 1;
    // A sequence cut off by the end of the text is one character lost, not several.
    const size_t have = std::min(len, rest.size());
    for (size_t i = 1; i < have; ++i) {
        if ((static_cast<unsigned char>(rest[i]) & 0xC0) != 0x80) {
            return 1;
        }
    }
    return have;
}

bool isAscii(std::string_view text) {
    for (unsigned char c : text) {
        if (c >= 0x80) {
            return false;
        }
    }
    return true;
}

}  // namespace

void SetJapaneseText(bool japanese) {
    japaneseText = japanese;
}
bool JapaneseText() {
    return japaneseText;
}

bool TerminalIsUtf8() {
    std::string norm;
    for (const char* p = nl_langinfo(CODESET); p && *p; ++p) {
        if (*p != '-' && *p != '_') {
            norm.push_back(static_cast<char>(std::tolower(static_cast<unsigned char>(*p))));
        }
    }
    return norm == "utf8";
}

std::size_t EucCharLength(unsigned char lead) {
    if (lead == 0x8F) {
        return 3;  // JIS X 0212
    }
    if (lead == 0x8E || lead >= 0xA1) {
        return 2;  // half-width kana, JIS X 0208
    }
    return 1;
}

std::string_view CutEuc(std::string_view text, std::size_t maxBytes) {
    std::size_t end = 0;
    while (end < text.size()) {
        const std::size_t next = end + EucCharLength(static_cast<unsigned char>(text[end]));
        if (next > maxBytes || next > text.size()) {
            break;
        }
        end = next;
    }
    return text.substr(0, end);
}

std::string eucToUtf8(std::string_view euc) {
    if (isAscii(euc)) {
        return std::string(euc);
    }
    // A byte above 0x7F that starts no EUC-JP character (0x80-0xA0 but the single shifts) follows
    // none either; iconv would pass some of them on as C1 control codes, which a terminal may
    // obey.
    std::string clean(euc);
    for (char& c : clean) {
        const auto b = static_cast<unsigned char>(c);
        if (b >= 0x80 && EucCharLength(b) == 1) {
            c = '?';
        }
    }
    thread_local Converter conv("UTF-8", "EUC-JP");
    // An undecodable byte is skipped alone: the next byte may start a valid character again.
    return conv.convert(clean, [](std::string_view) { return size_t{1}; });
}

std::string utf8ToEuc(std::string_view utf8) {
    if (isAscii(utf8)) {
        return std::string(utf8);
    }
    thread_local Converter conv("EUC-JP", "UTF-8");
    return conv.convert(utf8, utf8SequenceLength);
}

std::string toNewt(std::string_view text) {
    if (japaneseText && TerminalIsUtf8()) {
        return eucToUtf8(text);
    }
    return std::string(text);
}

std::string fromNewt(std::string_view text) {
    if (japaneseText && TerminalIsUtf8()) {
        return utf8ToEuc(text);
    }
    return std::string(text);
}

}  // namespace zolui
