// The key-floppy file: reading, checking and writing its text, and storing its values.
#include "keyfile.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <memory>

#include "zolwin_transaction.h"

#include "heartbeat.h"
#include "records.h"
#include "store.h"

namespace vntcore {
namespace {

constexpr std::size_t kShortText = 127;  // the service's record fields (VNT_TEXT_SIZE - 1)
constexpr const char* kInstalledFlag = "InstVantrelKeyFD";
constexpr const char* kTypeName = "KEYFDTYPE";
constexpr const char* kUserCodeName = "USERCODE";
constexpr const char* kOptionListName = "OPTCDNLIST";

constexpr KeyItem Text(const char* name, const char* key, std::size_t maxLen = kShortText,
                       KeyCheck check = KeyCheck::Text) {
    return {name, key, check, maxLen, 0, 0};
}
constexpr KeyItem Number(const char* name, const char* key, DWORD min, DWORD max) {
    return {name, key, KeyCheck::Number, 0, min, max};
}

const KeyItem kItems[] = {
    Number(kTypeName, kServiceKey, KEYFD_TYPE_MAIL, KEYFD_TYPE_HTTPS),
    Number("InstVantrelBTO", kServiceKey, 0, 1),
    Text("VERSION", kSetupKey),
    Number("SETTING", kSetupKey, 0, 1),
    Text("MAILADRS", kSetupKey, kRegTextMax, KeyCheck::Mail),
    Text("PHONENO", kSetupKey, kShortText, KeyCheck::Phone),
    Text("ERRORREPLY", kSetupKey, kRegTextMax, KeyCheck::Mail),
    Text("URL1", kSetupKey, kRegTextMax, KeyCheck::Url),
    Text("URL2", kSetupKey, kRegTextMax, KeyCheck::Url),
    Text("HTTPD1URL", kHttpsKey, kRegTextMax, KeyCheck::Url),
    Text("HTTPD2URL", kHttpsKey, kRegTextMax, KeyCheck::Url),
    Text(kUserCodeName, kSettingKey),
    Number("KAISHAKBN", kSettingKey, 0, 1),
    Text("TOKUINMA", kSettingKey),
    Text("TOKUINMN", kSettingKey),
    Text("BUNMN", kSettingKey),
    Text("ZIPNO", kSettingKey),
    Text("ADRSNMA", kSettingKey),
    Text("ADRSNMN", kSettingKey),
    Text("SHOZAINMN", kSettingKey),
    Text("BUTEL", kSettingKey, kShortText, KeyCheck::Phone),
    Text("MAIL", kSettingKey, kShortText, KeyCheck::Mail),
    Text("BUTANNMA", kSettingKey),
    Text("BUTANNMN", kSettingKey),
    Text("SYSSHOPNMN", kSettingKey),
    Text("SYSEIGYOBUNMN", kSettingKey),
    Text("SYSEIGYONMN", kSettingKey),
    Text("SYSEIGYOTEL", kSettingKey, kShortText, KeyCheck::Phone),
    Text("SYSSEBU", kSettingKey),
    Text("SYSSENMN", kSettingKey),
    Text("SYSSETEL", kSettingKey, kShortText, KeyCheck::Phone),
    Number(kHeartbeatInterval, kHeartBeatKey, kHeartbeatIntervalMin, kHeartbeatIntervalMax),
    Number(kHeartbeatSleepTime, kHeartBeatKey, kHeartbeatSleepTimeMin, kHeartbeatSleepTimeMax),
};

// Values a floppy of each type must carry besides KEYFDTYPE and USERCODE: the address its
// reports go to.
constexpr const char* kRequiredForType[] = {nullptr, "MAILADRS", "HTTPD1URL"};

KeyResult Fail(KeyFault fault, std::string reason) {
    return {fault, std::move(reason)};
}

bool EqualsNoCase(std::string_view a, std::string_view b) {
    if (a.size() != b.size())
        return false;
    auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; };
    for (std::size_t i = 0; i < a.size(); ++i) {
        if (lower(a[i]) != lower(b[i]))
            return false;
    }
    return true;
}

std::string_view WithoutCR(std::string_view line) {
    return !line.empty() && line.back() == '\r' ? line.substr(0, line.size() - 1) : line;
}

bool AllOf(std::string_view text, bool (*accept)(char)) {
    for (const char c : text) {
        if (!accept(c))
            return false;
    }
    return true;
}
bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}
bool IsHexDigit(char c) {
    return IsDigit(c) || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
}
bool IsPhoneChar(char c) {
    return IsDigit(c) || c == '-' || c == '+' || c == '(' || c == ')';
}

// local@domain with no blank; the form of each part is the mail server's business.
bool IsMailAddress(std::string_view text) {
    const std::size_t at = text.find('@');
    return at != 0 && at != std::string_view::npos && at + 1 < text.size() &&
           text.find('@', at + 1) == std::string_view::npos &&
           text.find(' ') == std::string_view::npos;
}

bool IsHttpsUrl(std::string_view text) {
    constexpr std::string_view scheme = "https://";
    return text.size() > scheme.size() && EqualsNoCase(text.substr(0, scheme.size()), scheme) &&
           text.find(' ') == std::string_view::npos;
}

// Checks one value; an empty text is always allowed (it clears the value).
std::string CheckValue(const KeyItem& item, std::string_view text, DWORD* number) {
    if (item.check == KeyCheck::Number) {
        if (text.empty() || text.size() > 10 || !AllOf(text, IsDigit))
            return "is not a decimal number";
        const unsigned long long value = std::stoull(std::string(text));
        if (value < item.min || value > item.max) {
            return "is out of " + std::to_string(item.min) + ".." + std::to_string(item.max);
        }
        *number = static_cast<DWORD>(value);
        return {};
    }
    if (text.size() > item.maxLen)
        return "is longer than " + std::to_string(item.maxLen) + " bytes";
    if (!IsStorableText(text, item.maxLen))
        return "holds a control character";
    if (text.empty())
        return {};
    switch (item.check) {
        case KeyCheck::Mail:
            return IsMailAddress(text) ? std::string() : "is not a mail address";
        case KeyCheck::Url:
            return IsHttpsUrl(text) ? std::string() : "is not an https:// URL";
        case KeyCheck::Phone:
            return AllOf(text, IsPhoneChar) ? std::string() : "is not a telephone number";
        case KeyCheck::Text:
        case KeyCheck::Number:
            break;
    }
    return {};
}

const KeyValue* FindValue(const KeyFloppy& floppy, std::string_view name) {
    for (const KeyValue& v : floppy.values) {
        if (EqualsNoCase(v.item->name, name))
            return &v;
    }
    return nullptr;
}

// The values between the signature line and the checksum line.
KeyResult ParseValues(std::string_view body, KeyFloppy* out) {
    KeyFloppy floppy;
    int lineNo = 1;  // the signature line
    while (!body.empty()) {
        const std::size_t end = body.find('\n');
        const std::string_view line = WithoutCR(body.substr(0, end));
        body = end == std::string_view::npos ? std::string_view() : body.substr(end + 1);
        ++lineNo;
        if (line.empty() || line.front() == '#')
            continue;
        const std::string where = "line " + std::to_string(lineNo) + ": ";
        const std::size_t eq = line.find('=');
        if (eq == std::string_view::npos)
            return Fail(KeyFault::BadContent, where + "no NAME=value");
        const std::string_view name = line.substr(0, eq);
        const std::string_view text = line.substr(eq + 1);
        const KeyItem* item = FindKeyItem(name);
        if (item == nullptr)
            return Fail(KeyFault::BadContent, where + "unknown name " + std::string(name));
        if (FindValue(floppy, item->name) != nullptr)
            return Fail(KeyFault::BadContent, where + item->name + " given twice");
        DWORD number = 0;
        if (const std::string why = CheckValue(*item, text, &number); !why.empty())
            return Fail(KeyFault::BadContent, where + item->name + " " + why);
        floppy.values.push_back({item, std::string(text), number});
    }
    const KeyValue* type = FindValue(floppy, kTypeName);
    if (type == nullptr)
        return Fail(KeyFault::BadContent, std::string(kTypeName) + " missing");
    floppy.type = type->number;
    for (const char* name : {kUserCodeName, kRequiredForType[floppy.type]}) {
        const KeyValue* v = FindValue(floppy, name);
        if (v == nullptr || v->text.empty()) {
            return Fail(KeyFault::BadContent, std::string(name) + " missing (required for type " +
                                                  std::to_string(floppy.type) + ")");
        }
    }
    *out = std::move(floppy);
    return {};
}

using CrcTable = std::array<uint32_t, 256>;
constexpr CrcTable MakeCrcTable() {
    CrcTable table{};
    for (uint32_t n = 0; n < 256; ++n) {
        uint32_t c = n;
        for (int k = 0; k < 8; ++k)
            c = (c & 1) ? 0xEDB88320u ^ (c >> 1) : c >> 1;
        table[n] = c;
    }
    return table;
}
constexpr CrcTable kCrcTable = MakeCrcTable();

}  // namespace

std::span<const KeyItem> KeyItems() {
    return kItems;
}

const KeyItem* FindKeyItem(std::string_view name) {
    for (const KeyItem& item : kItems) {
        if (EqualsNoCase(item.name, name))
            return &item;
    }
    return nullptr;
}

uint32_t Crc32(std::string_view bytes) {
    uint32_t c = 0xFFFFFFFFu;
    for (const char b : bytes)
        c = kCrcTable[(c ^ static_cast<unsigned char>(b)) & 0xFF] ^ (c >> 8);
    return c ^ 0xFFFFFFFFu;
}

bool HasKeySignature(std::string_view bytes) {
    const std::string_view first = WithoutCR(bytes.substr(0, bytes.find('\n')));
    return first.size() > kKeySignature.size() && first.starts_with(kKeySignature) &&
           first[kKeySignature.size()] == ' ';
}

KeyResult ParseKeyFile(std::string_view bytes, KeyFloppy* out) {
    if (!HasKeySignature(bytes) || bytes.find('\n') == std::string_view::npos)
        return Fail(KeyFault::BadFile, "no VNTKEYFD signature line: not a key-floppy file");
    const std::size_t firstEnd = bytes.find('\n');
    const std::string_view version =
        WithoutCR(bytes.substr(0, firstEnd)).substr(kKeySignature.size() + 1);
    if (version != kKeyFormatVersion) {
        return Fail(KeyFault::BadFile,
                    "format version " + std::string(version) + " is not supported");
    }
    if (bytes.find('\0') != std::string_view::npos)
        return Fail(KeyFault::BadFile, "holds a zero byte: the file is damaged");

    // The checksum line is the last one, after everything it covers.
    std::string_view content = bytes;
    if (content.ends_with('\n'))
        content.remove_suffix(1);
    const std::size_t lastStart = content.rfind('\n') + 1;  // 0 when there is one line only
    const std::string_view last = WithoutCR(content.substr(lastStart));
    const std::string checksumPrefix = std::string(kKeyChecksumName) + "=";
    if (lastStart <= firstEnd || !last.starts_with(checksumPrefix) ||
        last.size() != checksumPrefix.size() + 8 ||
        !AllOf(last.substr(checksumPrefix.size()), IsHexDigit)) {
        return Fail(KeyFault::BadFile, "no CHECKSUM line at the end: the file is damaged");
    }
    const uint32_t stored = static_cast<uint32_t>(
        std::stoul(std::string(last.substr(checksumPrefix.size())), nullptr, 16));
    if (Crc32(bytes.substr(0, lastStart)) != stored)
        return Fail(KeyFault::BadFile, "checksum does not match: the file is damaged");

    return ParseValues(bytes.substr(firstEnd + 1, lastStart - firstEnd - 1), out);
}

std::string ComposeKeyFile(const std::vector<std::pair<std::string, std::string>>& values) {
    std::string text = std::string(kKeySignature) + " " + std::string(kKeyFormatVersion) + "\n";
    for (const auto& [name, value] : values)
        text += name + "=" + value + "\n";
    char checksum[32];
    std::snprintf(checksum, sizeof checksum, "%.*s=%08x\n",
                  static_cast<int>(kKeyChecksumName.size()), kKeyChecksumName.data(), Crc32(text));
    return text + checksum;
}

// The libraries read files with POSIX calls rather than <fstream> and <filesystem>: those would
// link the C++ locale machinery into every library that carries this reader, and its start-up
// into every load of the library.
KeyResult LocateKeyFile(const char* path, std::string* file) {
    if (path == nullptr || *path == '\0')
        return Fail(KeyFault::BadPath, "no path given");
    struct stat st {};
    if (stat(path, &st) != 0)
        return Fail(KeyFault::BadPath, std::string(path) + " does not exist");
    if (S_ISREG(st.st_mode)) {
        *file = path;
        return {};
    }
    if (!S_ISDIR(st.st_mode))
        return Fail(KeyFault::BadPath, std::string(path) + " is neither a folder nor a file");
    const std::unique_ptr<DIR, int (*)(DIR*)> dir(opendir(path), closedir);
    if (!dir)
        return Fail(KeyFault::BadPath, std::string(path) + " cannot be listed");
    std::string folder(path);
    if (folder.back() != '/')
        folder += '/';
    errno = 0;
    while (const dirent* entry = readdir(dir.get())) {
        if (!EqualsNoCase(entry->d_name, kKeyFileName))
            continue;
        const std::string candidate = folder + entry->d_name;
        if (stat(candidate.c_str(), &st) == 0 && S_ISREG(st.st_mode)) {
            *file = candidate;
            return {};
        }
    }
    if (errno != 0)
        return Fail(KeyFault::BadPath, std::string(path) + " cannot be listed");
    return Fail(KeyFault::BadPath, std::string("no ") + kKeyFileName + " in " + path);
}

KeyResult LoadKeyFile(const char* path, std::size_t maxSize, std::string* bytes) {
    std::string file;
    if (KeyResult located = LocateKeyFile(path, &file); !located)
        return located;
    const int fd = open(file.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0)
        return Fail(KeyFault::BadFile, file + " cannot be read");
    const std::unique_ptr<const int, void (*)(const int*)> closer(&fd,
                                                                  [](const int* f) { close(*f); });
    // Read in pieces until the end or one byte past maxSize: the size is judged by what was
    // read, not by a stat that a writer could overtake, and a large maxSize costs no memory.
    std::string data;
    char piece[4096];
    while (data.size() <= maxSize) {
        const ssize_t n = read(fd, piece, sizeof piece);
        if (n < 0 && errno == EINTR)
            continue;
        if (n < 0)
            return Fail(KeyFault::BadFile, file + " cannot be read");
        if (n == 0)
            break;
        data.append(piece, static_cast<std::size_t>(n));
    }
    if (data.size() > maxSize) {
        char limit[32];
        std::snprintf(limit, sizeof limit, "%zu", maxSize);
        return Fail(KeyFault::BadFile, file + " is larger than " + limit + " bytes");
    }
    *bytes = std::move(data);
    return {};
}

KeyResult ReadKeyFloppyIntoStore(const char* path) {
    std::string bytes;
    if (KeyResult loaded = LoadKeyFile(path, kKeyFileMaxSize, &bytes); !loaded)
        return loaded;
    KeyFloppy floppy;
    if (KeyResult parsed = ParseKeyFile(bytes, &floppy); !parsed)
        return parsed;

    zolwin::Transaction transaction;
    if (LONG rc = transaction.status(); rc != ERROR_SUCCESS)
        return Fail(KeyFault::StoreFailed, "store transaction failed (" + std::to_string(rc) + ")");
    LONG rc = ERROR_SUCCESS;
    for (const KeyValue& v : floppy.values) {
        rc = v.item->check == KeyCheck::Number ? WriteDword(v.item->key, v.item->name, v.number)
                                               : WriteText(v.item->key, v.item->name, v.text);
        if (rc != ERROR_SUCCESS)
            return Fail(KeyFault::StoreFailed, std::string("write of ") + v.item->name +
                                                   " failed (" + std::to_string(rc) + ")");
    }
    // The floppy starts the option data anew: the single option OPTCDN (reset to its initial
    // value before a new floppy is read), without the list of further options.
    if ((rc = DeleteValue(kSettingKey, kOptionListName)) != ERROR_SUCCESS)
        return Fail(KeyFault::StoreFailed, std::string("delete of ") + kOptionListName +
                                               " failed (" + std::to_string(rc) + ")");
    if ((rc = WriteDword(kServiceKey, kInstalledFlag, 1)) != ERROR_SUCCESS)
        return Fail(KeyFault::StoreFailed, std::string("write of ") + kInstalledFlag + " failed (" +
                                               std::to_string(rc) + ")");
    if ((rc = transaction.commit()) != ERROR_SUCCESS)
        return Fail(KeyFault::StoreFailed, "store commit failed (" + std::to_string(rc) + ")");
    return {};
}

}  // namespace vntcore
