// Text encodings at the boundary with newt: the program's texts are EUC-JP in Japanese mode,
// newt (through S-Lang) understands only UTF-8 as a multibyte encoding.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace zolui {

// Chosen once at start-up (Japanese when the system language is 1041). Texts of an English
// run are pure ASCII and pass the boundary unchanged.
void SetJapaneseText(bool japanese);
bool JapaneseText();

// True when the C library's codeset (nl_langinfo(CODESET), after setlocale) is UTF-8.
bool TerminalIsUtf8();

// Plain conversions. Bytes that cannot be decoded, or characters that have no counterpart in
// the target encoding, become '?'; nothing else is lost and no input can make them fail.
std::string eucToUtf8(std::string_view euc);
std::string utf8ToEuc(std::string_view utf8);

// Bytes of the EUC-JP character that starts with lead: 3 for JIS X 0212 (0x8F), 2 for half-width
// kana (0x8E) and JIS X 0208 (0xA1 and above), 1 for ASCII and for bytes that start no character.
// The one measure of an EUC-JP character in the program: byte limits, cuts and the conversion
// below all count with it.
std::size_t EucCharLength(unsigned char lead);
// The longest start of text of at most maxBytes bytes that ends on a whole character.
std::string_view CutEuc(std::string_view text, std::size_t maxBytes);

// Every text that enters newt goes through toNewt, every text read back from newt through
// fromNewt: they convert only in Japanese mode on a UTF-8 terminal, else return the text as is.
std::string toNewt(std::string_view text);
std::string fromNewt(std::string_view text);

}  // namespace zolui
