// Store writes of the report-settings library's destinations.
#include "dest_store.h"

#include <string.h>

#include <cstring>

#include "dest_fields.h"

namespace rptset {

LONG WriteKey::Open(HKEY parent, const char* path) {
    Close();
    return RegOpenKeyEx(parent, path, 0, KEY_ALL_ACCESS, &key_);
}

LONG WriteKey::Create(HKEY parent, const char* path) {
    Close();
    return RegCreateKeyEx(parent, path, 0, nullptr, REG_OPTION_NON_VOLATILE, KEY_ALL_ACCESS,
                          nullptr, &key_, nullptr);
}

void WriteKey::Close() {
    if (key_ != nullptr)
        RegCloseKey(key_);
    key_ = nullptr;
}

LONG WriteTextField(HKEY key, const char* name, const char* field, std::size_t fieldSize) {
    const std::size_t length = strnlen(field, fieldSize);
    if (length == fieldSize)
        return ERROR_INVALID_PARAMETER;
    return RegSetValueEx(key, name, 0, REG_SZ, reinterpret_cast<const BYTE*>(field),
                         static_cast<DWORD>(length + 1));
}

LONG WriteDword(HKEY key, const char* name, uint32_t value) {
    return RegSetValueEx(key, name, 0, REG_DWORD, reinterpret_cast<const BYTE*>(&value),
                         sizeof value);
}

LONG SubkeyNames(HKEY key, std::vector<std::string>* names) {
    names->clear();
    for (DWORD index = 0;; ++index) {
        char buffer[ZOL_MAX_KEY_NAME + 1];
        DWORD length = sizeof buffer;
        const LONG rc =
            RegEnumKeyEx(key, index, buffer, &length, nullptr, nullptr, nullptr, nullptr);
        if (rc == ERROR_NO_MORE_ITEMS)
            return ERROR_SUCCESS;
        if (rc != ERROR_SUCCESS)
            return rc;
        names->emplace_back(buffer, length);
    }
}

LONG DeleteTree(HKEY parent, const char* name) {
    {
        WriteKey key;
        LONG rc = key.Open(parent, name);
        if (rc != ERROR_SUCCESS)
            return rc;
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

bool StorableID(const char (&id)[DEST_TEXT_SIZE]) {
    const std::size_t length = strnlen(id, DEST_TEXT_SIZE);
    return length > 0 && length <= ZOL_MAX_KEY_NAME && std::memchr(id, '\\', length) == nullptr;
}

LONG WriteDestination(HKEY idList, const char* name, const DestData& record) {
    WriteKey key;
    LONG rc = key.Create(idList, name);
    if (rc != ERROR_SUCCESS)
        return rc;
    for (const DestTextField& f : kDestTextFields) {
        rc = WriteTextField(key.get(), f.value, record.*f.field, DEST_TEXT_SIZE);
        if (rc != ERROR_SUCCESS)
            return rc;
    }
    for (const DestNumberField& f : kDestNumberFields) {
        if ((rc = WriteDword(key.get(), f.value, record.*f.field)) != ERROR_SUCCESS)
            return rc;
    }
    // Encoded in a copy: the caller's record keeps the plain password.
    char password[DEST_TEXT_SIZE];
    const std::size_t length = strnlen(record.Password, sizeof password);
    if (length == sizeof password)
        return ERROR_INVALID_PARAMETER;
    std::memcpy(password, record.Password, length + 1);
    Ras_Encode(password, static_cast<int>(length));
    rc = WriteTextField(key.get(), kDestPasswordValue, password, sizeof password);
    // The encoded text is as secret as the plain one.
    explicit_bzero(password, sizeof password);
    return rc;
}

}  // namespace rptset
