// The key-floppy file: the remote report service's set-up data as the service centre hands them
// out, one text file VNTKEY.TXT in the floppy's folder. Its format is described in
// docs/key-floppy.md; this is the one reader and writer of it, shared by rptset.dll
// (GetOpenMsgfromFD, checkVntFile), vntutil.dll (WriteOpenSetting) and the zolkeyfd command.
#pragma once

#include <zolwin.h>

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace vntcore {

inline constexpr const char* kKeyFileName = "VNTKEY.TXT";
inline constexpr std::string_view kKeySignature = "VNTKEYFD";
inline constexpr std::string_view kKeyFormatVersion = "1";
inline constexpr std::string_view kKeyChecksumName = "CHECKSUM";
// A key-floppy file is never larger than this.
inline constexpr std::size_t kKeyFileMaxSize = 8192;

// How a value of the file is checked before it may be stored.
enum class KeyCheck { Text, Mail, Url, Phone, Number };

// One value a key floppy may carry: its name in the file is the value's name in the store.
struct KeyItem {
    const char* name;
    const char* key;     // store key under HKEY_LOCAL_MACHINE
    KeyCheck check;      // Number items are REG_DWORD, all others REG_SZ
    std::size_t maxLen;  // texts: longest value in bytes
    DWORD min, max;      // numbers: accepted range
};

// Every value a key floppy may carry, in the order the writer puts them.
std::span<const KeyItem> KeyItems();
// The item of a name (compared without regard to case, like the store's names), or null.
const KeyItem* FindKeyItem(std::string_view name);

struct KeyValue {
    const KeyItem* item;
    std::string text;  // as written in the file
    DWORD number;      // Number items: the parsed value
};

// The checked contents of one key floppy.
struct KeyFloppy {
    DWORD type = 0;  // KEYFD_TYPE_*
    std::vector<KeyValue> values;
};

// Why a key floppy cannot be used, worst last.
enum class KeyFault {
    None,
    BadPath,      // no key-floppy file at that path: the wrong place
    BadFile,      // not a key-floppy file, unreadable, too large or damaged
    BadContent,   // a key-floppy file whose values cannot be used
    StoreFailed,  // the values could not be written into the store
};

struct KeyResult {
    KeyFault fault = KeyFault::None;
    std::string reason;  // for the trace log and the zolkeyfd command; empty on success
    explicit operator bool() const { return fault == KeyFault::None; }
};

// IEEE CRC-32 (as zip and PNG use), the file's checksum.
uint32_t Crc32(std::string_view bytes);

// Checks a file's bytes and collects its values.
KeyResult ParseKeyFile(std::string_view bytes, KeyFloppy* out);
// A file with the signature line, name=value lines in the given order and the checksum line.
// Nothing is checked: ParseKeyFile the result to know whether it is usable.
std::string ComposeKeyFile(const std::vector<std::pair<std::string, std::string>>& values);

// The key-floppy file at path: path itself when it is a file, else the entry of the folder
// path named VNTKEY.TXT in any case (floppies are often mounted with lower-case names).
KeyResult LocateKeyFile(const char* path, std::string* file);
// Locates the file and reads it whole when it is at most maxSize bytes.
KeyResult LoadKeyFile(const char* path, std::size_t maxSize, std::string* bytes);
// True when the bytes begin with the signature line of this format.
bool HasKeySignature(std::string_view bytes);

// Reads, checks and stores a key floppy in one transaction: its values, InstVantrelKeyFD = 1 and
// KEYFDTYPE. Nothing is written unless everything is valid.
KeyResult ReadKeyFloppyIntoStore(const char* path);

}  // namespace vntcore
