// Text conversions at the edge of the report: store texts (EUC-JP) to UTF-8, and UTF-8 to
// ISO-2022-JP for mail.
#include <iconv.h>
#include <string.h>

#include <cerrno>
#include <optional>
#include <string>
#include <string_view>

#include "report.h"

namespace vntreport {
namespace {

// One iconv conversion descriptor for the length of one conversion.
class Converter {
  public:
    Converter(const char* to, const char* from) : cd_(iconv_open(to, from)) {}
    ~Converter() {
        if (ok())
            iconv_close(cd_);
    }
    Converter(const Converter&) = delete;
    Converter& operator=(const Converter&) = delete;

    bool ok() const { return cd_ != reinterpret_cast<iconv_t>(-1); }

    // The whole text converted, the final shift sequence included; nullopt for an invalid or
    // cut-off input or a character the target cannot carry.
    std::optional<std::string> Convert(std::string_view text) {
        std::string out(text.size() * 4 + 16, '\0');
        char* in = const_cast<char*>(text.data());
        size_t inLeft = text.size();
        char* dst = out.data();
        size_t outLeft = out.size();
        while (true) {
            const size_t done = inLeft == 0 ? iconv(cd_, nullptr, nullptr, &dst, &outLeft)
                                            : iconv(cd_, &in, &inLeft, &dst, &outLeft);
            if (done != static_cast<size_t>(-1)) {
                if (inLeft == 0 && done == 0)
                    break;
                if (done > 0)  // iconv replaced a character it could not carry
                    return std::nullopt;
                continue;
            }
            if (errno != E2BIG)
                return std::nullopt;
            const size_t used = out.size() - outLeft;
            out.resize(out.size() * 2);
            dst = out.data() + used;
            outLeft = out.size() - used;
        }
        out.resize(out.size() - outLeft);
        return out;
    }

  private:
    iconv_t cd_;
};

std::optional<std::string> ConvertText(const char* to, const char* from, std::string_view text) {
    Converter converter(to, from);
    if (!converter.ok())
        return std::nullopt;
    return converter.Convert(text);
}

}  // namespace

std::optional<std::string> Utf8ToIso2022Jp(std::string_view utf8) {
    return ConvertText("ISO-2022-JP", "UTF-8", utf8);
}

std::optional<std::string> EucJpToUtf8(std::string_view euc) {
    return ConvertText("UTF-8", "EUC-JP", euc);
}

std::optional<std::string> Utf8ToEucJp(std::string_view utf8) {
    return ConvertText("EUC-JP", "UTF-8", utf8);
}

bool IsAscii(std::string_view text) {
    for (const char c : text) {
        if (static_cast<unsigned char>(c) >= 0x80)
            return false;
    }
    return true;
}

void Wipe(std::string* secret) {
    if (secret == nullptr || secret->empty())
        return;
    explicit_bzero(secret->data(), secret->size());
    secret->clear();
}

}  // namespace vntreport
