// Text encodings at the boundary with newt: the program's texts are EUC-JP in Japanese mode,
// newt (through S-Lang) understands only UTF-8 as a multibyte encoding.
#pragma once

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

// Every text that enters newt goes through toNewt, every text read back from newt through
// fromNewt: they convert only in Japanese mode on a UTF-8 terminal, else return the text as is.
std::string toNewt(std::string_view text);
std::string fromNewt(std::string_view text);

}  // namespace zolui
