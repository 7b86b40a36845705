// The store's texts are EUC-JP; the terminal speaks the locale's encoding. zolreg converts
// between them at the command line, and only there: export and import files stay the store's
// bytes.
#pragma once

#include <iconv.h>

#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace zolreg {

// One iconv conversion, closed when it goes.
class Iconv {
  public:
    Iconv(const std::string& to, const std::string& from);
    ~Iconv();
    Iconv(Iconv&& other) noexcept;
    Iconv& operator=(Iconv&& other) noexcept;
    Iconv(const Iconv&) = delete;
    Iconv& operator=(const Iconv&) = delete;

    // The whole input converted, or nullopt with the offset of the first byte that does not
    // convert (an invalid or incomplete sequence, or a character the target lacks).
    std::optional<std::string> convert(std::string_view in, size_t& badOffset) const;

  private:
    iconv_t cd_;
};

class TextCodec {
  public:
    // The codeset of the current locale (setlocale(LC_ALL, "") must have run). With raw, or
    // when the locale is EUC-JP already or plain ASCII (the C locale, where no other text can
    // show), nothing is converted.
    static TextCodec forLocale(bool raw);
    // Converts between EUC-JP and `codeset`; an empty codeset converts nothing.
    explicit TextCodec(const std::string& codeset);

    bool converts() const { return toTerminal_.has_value(); }
    const std::string& codeset() const { return codeset_; }

    // Stored text for the terminal; nullopt when it is no EUC-JP text.
    std::optional<std::string> toTerminal(std::string_view stored) const;
    // Typed text for the store; on failure nullopt and `why` says which character and why.
    std::optional<std::string> toStore(std::string_view typed, std::string& why) const;

  private:
    std::string codeset_;
    std::optional<Iconv> toTerminal_;
    std::optional<Iconv> toStore_;
};

// Values that hold a password (encoded, but never to be shown): SMTPAuthPass, POPPass and the
// out-of-band log-in Password of a TCP/IP destination.
bool isPasswordValue(std::string_view name);

}  // namespace zolreg
