// Text forms of registry things the command line deals in: key paths under HKLM, type names,
// value data typed after /d, and value data shown by query in reg.exe's layout.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace zolreg {

// "HKLM\A\B" or "HKEY_LOCAL_MACHINE\A\B" (root matched without regard to case) to "A\B".
// Runs of backslashes count as one and a trailing one is dropped; nullopt for any other root.
std::optional<std::string> subKeyOf(std::string_view path);

// "HKEY_LOCAL_MACHINE\A\B" (query output, export headers) and "HKLM\A\B" (messages).
std::string longPath(std::string_view sub);
std::string shortPath(std::string_view sub);

// Joins a key path and one more component.
std::string childPath(std::string_view sub, std::string_view name);

// REG_SZ, REG_DWORD, ...; an unknown type shows as its number.
std::string typeName(uint32_t type);
std::optional<uint32_t> typeFromName(std::string_view name);

// Value data as stored, from the text given after /d. On failure returns nullopt and says why.
std::optional<std::string> dataFromText(uint32_t type, std::string_view text, std::string& why);

// Value data as query shows it: text, 0x-hex for REG_DWORD, uppercase hex for binary data,
// REG_MULTI_SZ items joined with the two characters \0.
std::string queryText(uint32_t type, std::string_view data);

// One query line: four blanks, the name ("(Default)" for the default value), type and data.
std::string queryLine(std::string_view name, uint32_t type, std::string_view data);

// The value of one hexadecimal digit, -1 for any other character.
int hexDigit(char c);

// ASCII-only case folding, as the store compares names.
bool equalsNoCase(std::string_view a, std::string_view b);

}  // namespace zolreg
