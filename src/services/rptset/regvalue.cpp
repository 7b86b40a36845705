// Registry helpers shared by every area of the report-settings library (see regvalue.h).
#include "regvalue.h"

#include <string.h>

#include <cstring>

namespace rptset {

LONG Key::OpenRead(HKEY parent, const char* path) {
    Close();
    return RegOpenKeyEx(parent, path, 0, KEY_READ, &key_);
}

LONG Key::OpenWrite(HKEY parent, const char* path) {
    Close();
    const LONG rc = RegOpenKeyEx(parent, path, 0, KEY_ALL_ACCESS, &key_);
    if (rc != ERROR_SUCCESS)
        key_ = nullptr;
    return rc;
}

LONG Key::Create(HKEY parent, const char* path) {
    Close();
    const LONG rc = RegCreateKeyEx(parent, path, 0, nullptr, REG_OPTION_NON_VOLATILE,
                                   KEY_ALL_ACCESS, nullptr, &key_, nullptr);
    if (rc != ERROR_SUCCESS)
        key_ = nullptr;
    return rc;
}

void Key::Close() {
    if (key_ != nullptr)
        RegCloseKey(key_);
    key_ = nullptr;
}

ValueRead ReadDword(HKEY key, const char* name, uint32_t* out) {
    DWORD type = 0;
    DWORD value = 0;
    DWORD size = sizeof value;
    const LONG rc =
        RegQueryValueEx(key, name, nullptr, &type, reinterpret_cast<BYTE*>(&value), &size);
    if (rc == ERROR_FILE_NOT_FOUND)
        return ValueRead::Missing;
    if (rc == ERROR_MORE_DATA)
        return ValueRead::WrongType;
    if (rc != ERROR_SUCCESS)
        return ValueRead::Failed;
    if (type != REG_DWORD || size != sizeof value)
        return ValueRead::WrongType;
    *out = value;
    return ValueRead::Ok;
}

ValueRead ReadText(HKEY key, const char* name, std::string* out) {
    // Ask for the size first, then read; retry if the value grew in between.
    for (int attempt = 0; attempt < 3; ++attempt) {
        DWORD type = 0;
        DWORD size = 0;
        LONG rc = RegQueryValueEx(key, name, nullptr, &type, nullptr, &size);
        if (rc == ERROR_FILE_NOT_FOUND)
            return ValueRead::Missing;
        if (rc != ERROR_SUCCESS)
            return ValueRead::Failed;
        if (type != REG_SZ && type != REG_EXPAND_SZ)
            return ValueRead::WrongType;
        std::string data(size, '\0');
        rc = RegQueryValueEx(key, name, nullptr, &type,
                             size ? reinterpret_cast<BYTE*>(data.data()) : nullptr, &size);
        if (rc == ERROR_MORE_DATA)
            continue;
        if (rc == ERROR_FILE_NOT_FOUND)
            return ValueRead::Missing;
        if (rc != ERROR_SUCCESS)
            return ValueRead::Failed;
        if (type != REG_SZ && type != REG_EXPAND_SZ)
            return ValueRead::WrongType;
        data.resize(size);
        // The text ends at its first zero byte (normally the stored terminator).
        const std::size_t end = data.find('\0');
        if (end != std::string::npos)
            data.resize(end);
        *out = std::move(data);
        return ValueRead::Ok;
    }
    return ValueRead::Failed;
}

ValueRead ReadTextField(HKEY key, const char* name, char* field, std::size_t size) {
    std::string text;
    const ValueRead result = ReadText(key, name, &text);
    if (result != ValueRead::Ok)
        return result;
    const bool cut = text.size() > size - 1;
    const std::size_t n = cut ? size - 1 : text.size();
    std::memcpy(field, text.data(), n);
    field[n] = '\0';
    return cut ? ValueRead::Cut : ValueRead::Ok;
}

bool EqualsNoCase(const char* a, const char* b) {
    auto lower = [](unsigned char c) { return c >= 'A' && c <= 'Z' ? c - 'A' + 'a' : c; };
    for (;; ++a, ++b) {
        if (lower(static_cast<unsigned char>(*a)) != lower(static_cast<unsigned char>(*b))) {
            return false;
        }
        if (*a == '\0')
            return true;
    }
}

LONG SubkeyName(HKEY key, DWORD index, std::string* name) {
    char buffer[ZOL_MAX_KEY_NAME + 1];
    DWORD length = sizeof buffer;
    const LONG rc = RegEnumKeyEx(key, index, buffer, &length, nullptr, nullptr, nullptr, nullptr);
    if (rc == ERROR_SUCCESS)
        name->assign(buffer, length);
    return rc;
}

LONG SubkeyNames(HKEY key, std::vector<std::string>* names) {
    names->clear();
    std::string name;
    for (DWORD index = 0;; ++index) {
        const LONG rc = SubkeyName(key, index, &name);
        if (rc == ERROR_NO_MORE_ITEMS)
            return ERROR_SUCCESS;
        if (rc != ERROR_SUCCESS)
            return rc;
        names->push_back(name);
    }
}

LONG DeleteTree(HKEY parent, const char* name) {
    {
        Key key;
        LONG rc = key.OpenWrite(parent, name);
        if (rc != ERROR_SUCCESS)
            return rc;
        // The names are listed first: deleting while enumerating would shift the indexes.
        std::vector<std::string> children;
        if ((rc = SubkeyNames(key.get(), &children)) != ERROR_SUCCESS)
            return rc;
        for (const std::string& child : children) {
            if ((rc = DeleteTree(key.get(), child.c_str())) != ERROR_SUCCESS)
                return rc;
        }
    }
    return RegDeleteKey(parent, name);
}

LONG WriteDword(HKEY key, const char* name, uint32_t value) {
    return RegSetValueEx(key, name, 0, REG_DWORD, reinterpret_cast<const BYTE*>(&value),
                         sizeof value);
}

LONG WriteText(HKEY key, const char* name, const char* text) {
    return RegSetValueEx(key, name, 0, REG_SZ, reinterpret_cast<const BYTE*>(text),
                         static_cast<DWORD>(std::strlen(text) + 1));
}

LONG WriteTextField(HKEY key, const char* name, const char* field, std::size_t fieldSize) {
    const std::size_t length = strnlen(field, fieldSize);
    if (length == fieldSize)
        return ERROR_INVALID_PARAMETER;
    return RegSetValueEx(key, name, 0, REG_SZ, reinterpret_cast<const BYTE*>(field),
                         static_cast<DWORD>(length + 1));
}

}  // namespace rptset
