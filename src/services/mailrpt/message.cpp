// Composing the report's mail.
#include "message.h"

#include <cstddef>
#include <cstdint>

namespace mailrpt {
namespace {

using vntreport::IsAscii;

bool HasControl(std::string_view text) {
    for (const char c : text) {
        if (static_cast<unsigned char>(c) < 0x20 || c == 0x7f)
            return true;
    }
    return false;
}

// Splits UTF-8 text into pieces of at most `count` characters.
std::vector<std::string_view> CharacterPieces(std::string_view text, std::size_t count) {
    std::vector<std::string_view> pieces;
    std::size_t start = 0;
    std::size_t chars = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const bool lead = (static_cast<unsigned char>(text[i]) & 0xC0) != 0x80;
        if (lead && chars == count) {
            pieces.push_back(text.substr(start, i - start));
            start = i;
            chars = 0;
        }
        chars += lead ? 1 : 0;
    }
    if (start < text.size())
        pieces.push_back(text.substr(start));
    return pieces;
}

std::string Base64Lines(std::string_view data) {
    const std::string encoded = Base64(data);
    std::string lines;
    for (std::size_t i = 0; i < encoded.size(); i += 76)
        lines += encoded.substr(i, 76) + "\r\n";
    return lines;
}

// Encoded words of at most ten characters each keep every word under 75 bytes.
constexpr std::size_t kWordCharacters = 10;

}  // namespace

std::string Base64(std::string_view data) {
    static constexpr char kAlphabet[] =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string out;
    out.reserve((data.size() + 2) / 3 * 4);
    for (std::size_t i = 0; i < data.size(); i += 3) {
        const std::size_t left = data.size() - i;
        uint32_t n = static_cast<unsigned char>(data[i]) << 16;
        if (left > 1)
            n |= static_cast<unsigned char>(data[i + 1]) << 8;
        if (left > 2)
            n |= static_cast<unsigned char>(data[i + 2]);
        out += kAlphabet[(n >> 18) & 63];
        out += kAlphabet[(n >> 12) & 63];
        out += left > 1 ? kAlphabet[(n >> 6) & 63] : '=';
        out += left > 2 ? kAlphabet[n & 63] : '=';
    }
    return out;
}

std::string EncodeHeaderText(std::string_view utf8, bool japanese) {
    if (IsAscii(utf8))
        return std::string(utf8);
    std::string words;
    for (const std::string_view piece : CharacterPieces(utf8, kWordCharacters)) {
        std::optional<std::string> jis;
        if (japanese)
            jis = vntreport::Utf8ToIso2022Jp(piece);
        if (!words.empty())
            words += "\r\n ";
        words +=
            jis ? "=?ISO-2022-JP?B?" + Base64(*jis) + "?=" : "=?UTF-8?B?" + Base64(piece) + "?=";
    }
    return words;
}

std::optional<std::string> ComposeMail(const vntreport::Report& report, std::string_view from,
                                       const std::vector<std::string>& to, std::string_view subject,
                                       std::string* error) {
    const std::string_view title = subject.empty() ? std::string_view(report.subject) : subject;
    if (HasControl(title) || HasControl(from)) {
        *error = "the mail's subject or sender holds a control character";
        return std::nullopt;
    }
    std::string mail = "Date: " + report.timestamp + "\r\nFrom: " + std::string(from) + "\r\nTo: ";
    for (std::size_t i = 0; i < to.size(); ++i)
        mail += (i == 0 ? "" : ",\r\n ") + to[i];
    mail += "\r\nSubject: " + EncodeHeaderText(title, report.japanese) + "\r\n";
    mail += "MIME-Version: 1.0\r\nX-Vantrel-Kind: " + report.kind + "\r\n";
    std::optional<std::string> jis;
    if (report.japanese)
        jis = vntreport::Utf8ToIso2022Jp(report.body);
    if (jis) {
        mail +=
            "Content-Type: text/plain; charset=ISO-2022-JP\r\n"
            "Content-Transfer-Encoding: 7bit\r\n\r\n" +
            *jis;
    } else if (IsAscii(report.body)) {
        mail +=
            "Content-Type: text/plain; charset=us-ascii\r\n"
            "Content-Transfer-Encoding: 7bit\r\n\r\n" +
            report.body;
    } else {
        mail +=
            "Content-Type: text/plain; charset=UTF-8\r\n"
            "Content-Transfer-Encoding: base64\r\n\r\n" +
            Base64Lines(report.body);
    }
    return mail;
}

}  // namespace mailrpt
