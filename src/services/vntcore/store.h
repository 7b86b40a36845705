// Single-value store access for the remote report service's libraries: each call opens the key
// by path under HKEY_LOCAL_MACHINE, reads or writes one value and closes it again.
#pragma once

#include <zolwin.h>

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "regpaths.h"

namespace vntcore {

inline constexpr const char* kServiceKey = ZOL_KEY_VNTSERVICE;
inline constexpr const char* kSetupKey = ZOL_KEY_VNT_SETUP;
inline constexpr const char* kSettingKey = ZOL_KEY_VNT_SETTING;
inline constexpr const char* kHeartBeatKey = ZOL_KEY_VNT_HEARTBEAT;
inline constexpr const char* kHttpsKey = ZOL_KEY_HTTPS_SETTING;

// Longest text a registry string of the service may hold (257-byte buffers, terminator included).
inline constexpr std::size_t kRegTextMax = 256;

enum class Read {
    Ok,
    Missing,    // the key or the value does not exist
    WrongType,  // stored with another type (or another size)
    Failed,     // the store could not be read
};

Read ReadDword(const char* key, const char* name, DWORD* out);
// The whole text of a REG_SZ value, without its terminator.
Read ReadText(const char* key, const char* name, std::string* out);

// A REG_DWORD value, or fallback when the key or value is missing; nullopt when the value is
// stored with another type or the store cannot be read.
std::optional<DWORD> ReadDwordOr(const char* key, const char* name, DWORD fallback);

// Write one value, creating the key when it is missing. ERROR_SUCCESS or the store's error.
LONG WriteDword(const char* key, const char* name, DWORD value);
LONG WriteText(const char* key, const char* name, std::string_view text);
// Deletes one value: ERROR_SUCCESS also when the key or the value is missing.
LONG DeleteValue(const char* key, const char* name);

// True when text fits in max bytes and holds no control character (a stored text is one line).
bool IsStorableText(std::string_view text, std::size_t max);

// Copies text with its terminator into out (size bytes): 0, or -1 when out is null or too
// small (then out is left as an empty text when it has room for one).
int CopyOut(std::string_view text, char* out, int size);

}  // namespace vntcore
