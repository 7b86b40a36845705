// Single-value store access for the remote report service's libraries.
#include "store.h"

#include <cstring>

namespace vntcore {
namespace {

// Owns one open key for the length of a single read or write.
class OpenKey {
  public:
    ~OpenKey() {
        if (key_ != nullptr)
            RegCloseKey(key_);
    }
    LONG Open(const char* path) {
        return RegOpenKeyEx(HKEY_LOCAL_MACHINE, path, 0, KEY_READ, &key_);
    }
    LONG Create(const char* path) { return RegCreateKey(HKEY_LOCAL_MACHINE, path, &key_); }
    HKEY get() const { return key_; }
    HKEY& key() { return key_; }

  private:
    HKEY key_ = nullptr;
};

Read FromOpenError(LONG rc) {
    return rc == ERROR_FILE_NOT_FOUND ? Read::Missing : Read::Failed;
}

}  // namespace

Read ReadDword(const char* key, const char* name, DWORD* out) {
    OpenKey k;
    if (const LONG rc = k.Open(key); rc != ERROR_SUCCESS)
        return FromOpenError(rc);
    DWORD type = 0;
    DWORD value = 0;
    DWORD size = sizeof value;
    const LONG rc =
        RegQueryValueEx(k.get(), name, nullptr, &type, reinterpret_cast<BYTE*>(&value), &size);
    if (rc == ERROR_FILE_NOT_FOUND)
        return Read::Missing;
    if (rc == ERROR_MORE_DATA)
        return Read::WrongType;
    if (rc != ERROR_SUCCESS)
        return Read::Failed;
    if (type != REG_DWORD || size != sizeof value)
        return Read::WrongType;
    *out = value;
    return Read::Ok;
}

Read ReadText(const char* key, const char* name, std::string* out) {
    OpenKey k;
    if (const LONG rc = k.Open(key); rc != ERROR_SUCCESS)
        return FromOpenError(rc);
    // Size first, then the data; another process may change the value in between, so retry.
    for (int attempt = 0; attempt < 3; ++attempt) {
        DWORD type = 0;
        DWORD size = 0;
        LONG rc = RegQueryValueEx(k.get(), name, nullptr, &type, nullptr, &size);
        if (rc == ERROR_FILE_NOT_FOUND)
            return Read::Missing;
        if (rc != ERROR_SUCCESS)
            return Read::Failed;
        if (type != REG_SZ)
            return Read::WrongType;
        std::string data(size, '\0');
        rc = RegQueryValueEx(k.get(), name, nullptr, &type,
                             size ? reinterpret_cast<BYTE*>(data.data()) : nullptr, &size);
        if (rc == ERROR_MORE_DATA)
            continue;
        if (rc == ERROR_FILE_NOT_FOUND)
            return Read::Missing;
        if (rc != ERROR_SUCCESS)
            return Read::Failed;
        if (type != REG_SZ)
            return Read::WrongType;
        data.resize(size);
        if (const std::size_t end = data.find('\0'); end != std::string::npos)
            data.resize(end);
        *out = std::move(data);
        return Read::Ok;
    }
    return Read::Failed;
}

std::optional<DWORD> ReadDwordOr(const char* key, const char* name, DWORD fallback) {
    DWORD value = 0;
    switch (ReadDword(key, name, &value)) {
        case Read::Ok:
            return value;
        case Read::Missing:
            return fallback;
        case Read::WrongType:
        case Read::Failed:
            break;
    }
    return std::nullopt;
}

LONG WriteDword(const char* key, const char* name, DWORD value) {
    OpenKey k;
    if (const LONG rc = k.Create(key); rc != ERROR_SUCCESS)
        return rc;
    return RegSetValueEx(k.get(), name, 0, REG_DWORD, reinterpret_cast<const BYTE*>(&value),
                         sizeof value);
}

LONG WriteText(const char* key, const char* name, std::string_view text) {
    OpenKey k;
    if (const LONG rc = k.Create(key); rc != ERROR_SUCCESS)
        return rc;
    // Stored with its terminator, as every text of the store.
    const std::string stored(text);
    return RegSetValueEx(k.get(), name, 0, REG_SZ, reinterpret_cast<const BYTE*>(stored.c_str()),
                         static_cast<DWORD>(stored.size() + 1));
}

LONG DeleteValue(const char* key, const char* name) {
    OpenKey k;
    LONG rc = RegOpenKeyEx(HKEY_LOCAL_MACHINE, key, 0, KEY_ALL_ACCESS, &k.key());
    if (rc == ERROR_SUCCESS)
        rc = RegDeleteValue(k.get(), name);
    return rc == ERROR_FILE_NOT_FOUND ? ERROR_SUCCESS : rc;
}

bool IsStorableText(std::string_view text, std::size_t max) {
    if (text.size() > max)
        return false;
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte < 0x20 || byte == 0x7f)
            return false;
    }
    return true;
}

int CopyOut(std::string_view text, char* out, int size) {
    if (out == nullptr || size <= 0)
        return -1;
    if (text.size() + 1 > static_cast<std::size_t>(size)) {
        out[0] = '\0';
        return -1;
    }
    std::memcpy(out, text.data(), text.size());
    out[text.size()] = '\0';
    return 0;
}

}  // namespace vntcore
