// EUC-JP <-> the locale's encoding for zolreg's command line, over iconv.
#include "encoding.h"

#include <langinfo.h>

#include <array>
#include <cerrno>
#include <stdexcept>

#include "regtext.h"

namespace zolreg {

namespace {

constexpr std::string_view kStoreCodeset = "EUC-JP";
const iconv_t kNoConversion = reinterpret_cast<iconv_t>(-1);

// Codesets whose text goes to and from the store unchanged.
bool isPassThrough(std::string_view codeset) {
    constexpr std::array<std::string_view, 4> kSame{"EUC-JP", "EUCJP", "ANSI_X3.4-1968", "ASCII"};
    for (std::string_view same : kSame) {
        if (equalsNoCase(codeset, same))
            return true;
    }
    return false;
}

}  // namespace

Iconv::Iconv(const std::string& to, const std::string& from)
    : cd_(iconv_open(to.c_str(), from.c_str())) {
    if (cd_ == kNoConversion)
        throw std::runtime_error("no conversion from " + from + " to " + to + " on this system");
}

Iconv::Iconv(Iconv&& other) noexcept : cd_(std::exchange(other.cd_, kNoConversion)) {}

Iconv& Iconv::operator=(Iconv&& other) noexcept {
    std::swap(cd_, other.cd_);
    return *this;
}

Iconv::~Iconv() {
    if (cd_ != kNoConversion)
        iconv_close(cd_);
}

std::optional<std::string> Iconv::convert(std::string_view in, size_t& badOffset) const {
    iconv(cd_, nullptr, nullptr, nullptr, nullptr);  // a fresh shift state
    // EUC-JP and UTF-8 grow a text by at most half again; the loop grows the room if needed.
    std::string out(in.size() * 2 + 16, '\0');
    char* inPtr = const_cast<char*>(in.data());
    size_t inLeft = in.size();
    size_t done = 0;
    while (inLeft > 0) {
        char* outPtr = out.data() + done;
        size_t outLeft = out.size() - done;
        const size_t rc = iconv(cd_, &inPtr, &inLeft, &outPtr, &outLeft);
        done = out.size() - outLeft;
        if (rc != static_cast<size_t>(-1))
            break;
        if (errno != E2BIG) {
            badOffset = in.size() - inLeft;
            return std::nullopt;
        }
        out.resize(out.size() * 2);
    }
    out.resize(done);
    return out;
}

TextCodec TextCodec::forLocale(bool raw) {
    if (raw)
        return TextCodec(std::string());
    const char* codeset = nl_langinfo(CODESET);
    if (codeset == nullptr || isPassThrough(codeset))
        return TextCodec(std::string());
    return TextCodec(codeset);
}

TextCodec::TextCodec(const std::string& codeset) : codeset_(codeset) {
    if (codeset.empty())
        return;
    toTerminal_.emplace(codeset, std::string(kStoreCodeset));
    toStore_.emplace(std::string(kStoreCodeset), codeset);
}

std::optional<std::string> TextCodec::toTerminal(std::string_view stored) const {
    if (!toTerminal_)
        return std::string(stored);
    size_t bad = 0;
    return toTerminal_->convert(stored, bad);
}

std::optional<std::string> TextCodec::toStore(std::string_view typed, std::string& why) const {
    if (!toStore_)
        return std::string(typed);
    size_t bad = 0;
    std::optional<std::string> out = toStore_->convert(typed, bad);
    if (out)
        return out;
    // Tell a byte that is no text of the locale from a character the store cannot hold.
    size_t ignored = 0;
    Iconv check("UTF-32LE", codeset_);
    if (!check.convert(typed.substr(bad), ignored) && ignored == 0) {
        why = "is not " + codeset_ + " text (byte " + std::to_string(bad + 1) + ")";
    } else {
        why = "has a character EUC-JP cannot hold (byte " + std::to_string(bad + 1) + ")";
    }
    return std::nullopt;
}

bool isPasswordValue(std::string_view name) {
    return equalsNoCase(name, "SMTPAuthPass") || equalsNoCase(name, "POPPass") ||
           equalsNoCase(name, "Password");
}

}  // namespace zolreg
