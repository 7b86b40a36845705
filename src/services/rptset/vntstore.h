// Store access shared by the remote report service's record and list functions of rptset.dll:
// value readers that fall back to defaults and the numbered lists.
#pragma once

#include <zolwin.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "regpaths.h"

namespace rptset::vnt {

inline constexpr const char* kServiceKey = ZOL_KEY_VNTSERVICE;
inline constexpr const char* kSetupKey = ZOL_KEY_VNT_SETUP;
inline constexpr const char* kSettingKey = ZOL_KEY_VNT_SETTING;
inline constexpr const char* kOSListKey = ZOL_KEY_VNT_LIST_OS;
inline constexpr const char* kVendorListKey = ZOL_KEY_VNT_LIST_VENDOR;
inline constexpr const char* kOptionListKey = ZOL_KEY_VNT_LIST_OPTION;
inline constexpr const char* kOptionDescKey = ZOL_KEY_VNT_LIST_OPTION_DESC;

// Length of the longest start of text that has at most limit bytes and does not end inside an
// EUC-JP character, so that a cut never leaves half a kanji behind.
std::size_t EucPrefixLength(std::string_view text, std::size_t limit);

// A key opened for reading that may be missing: a missing key reads as all defaults.
class ReadKey {
  public:
    ReadKey() = default;
    ~ReadKey();
    ReadKey(const ReadKey&) = delete;
    ReadKey& operator=(const ReadKey&) = delete;

    // ERROR_SUCCESS also when the key does not exist (get() is then null).
    LONG Open(const char* path);
    HKEY get() const { return key_; }

  private:
    HKEY key_ = nullptr;
};

// Reads text value `name` of key into field (size bytes). A missing key or value leaves the
// field as it is (its default); so does a value of another type, which is traced. A longer text
// is cut on a character boundary and traced. false only when the store could not be read.
bool ReadTextValue(const ReadKey& key, const char* keyPath, const char* name, char* field,
                   std::size_t size);
// The same for a REG_DWORD value.
bool ReadDwordValue(const ReadKey& key, const char* keyPath, const char* name, uint32_t* out);

// Reads a list key: its REG_SZ values named "000", "001", ... in that order up to the first
// missing number, at most max entries. An entry of another type ends the list there; entries
// beyond max and over-long names (cut to fit a VNT_TEXT_SIZE field) are traced. A missing key is
// an empty list. false only when the store could not be read.
bool ReadList(const char* keyPath, int max, std::vector<std::string>* names);

// Copies names into the caller's buffers of VNT_TEXT_SIZE bytes and sets *count. Refuses (false,
// nothing written) when a buffer the list needs is null.
bool FillNames(const std::vector<std::string>& names, char** out, int* count);

}  // namespace rptset::vnt
