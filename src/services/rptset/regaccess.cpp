// rptset.dll: generic typed access to single REG_SZ and REG_DWORD values, for the screens that
// keep values of their own (mail credentials, the machine comment). Value data never reaches the
// trace log: some of these values are (encoded) passwords.
#include <zolwin.h>

#include <cstring>
#include <string>
#include <type_traits>

#include "regvalue.h"
#include "rptset_api.h"

namespace {

bool SupportedType(DWORD type) {
    return type == REG_SZ || type == REG_DWORD;
}

// Reads the value into data (size bytes) when it exists with the requested type and fits;
// data is left untouched otherwise.
const char* ReadValue(HKEY root, const char* path, const char* name, DWORD type, void* data,
                      DWORD size) {
    rptset::Key key;
    if (key.OpenRead(root, path) != ERROR_SUCCESS)
        return "no such key";
    if (type == REG_DWORD) {
        uint32_t number = 0;
        switch (rptset::ReadDword(key.get(), name, &number)) {
            case rptset::ValueRead::Ok:
                break;
            case rptset::ValueRead::Missing:
                return "no such value";
            case rptset::ValueRead::WrongType:
                return "stored with another type";
            default:
                return "the store could not be read";
        }
        if (size < sizeof number)
            return "the buffer is too small";
        std::memcpy(data, &number, sizeof number);
        return nullptr;
    }
    // ReadText also takes REG_EXPAND_SZ; this reader wants exactly the requested type.
    DWORD stored = REG_NONE;
    const LONG rc = RegQueryValueEx(key.get(), name, nullptr, &stored, nullptr, nullptr);
    if (rc == ERROR_FILE_NOT_FOUND)
        return "no such value";
    if (rc != ERROR_SUCCESS)
        return "the store could not be read";
    if (stored != REG_SZ)
        return "stored with another type";
    std::string text;
    if (rptset::ReadText(key.get(), name, &text) != rptset::ValueRead::Ok)
        return "the store could not be read";
    if (text.size() + 1 > size)
        return "the buffer is too small";
    std::memcpy(data, text.c_str(), text.size() + 1);
    return nullptr;
}

}  // namespace

extern "C" ZOLWIN_API int AMAMRegReadEx(HKEY root, const char* key, const char* value, DWORD type,
                                        void* data, DWORD size) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> %s\\%s type=%u size=%u", key ? key : "(null)",
              value ? value : "(null)", type, size);
    if (root == nullptr || key == nullptr || value == nullptr || data == nullptr ||
        !SupportedType(type)) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<[IN]Param error.return FALSE.");
        return 0;
    }
    if (const char* why = ReadValue(root, key, value, type, data, size)) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<%s\\%s: %s.return FALSE.", key, value, why);
        return 0;
    }
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<return TRUE.");
    return 1;
}
static_assert(std::is_same_v<decltype(AMAMRegReadEx), AMAMRegReadEx_fn>);

extern "C" ZOLWIN_API int AMAMRegWrite(HKEY root, const char* key, const char* value, DWORD type,
                                       const void* data, DWORD size) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> %s\\%s type=%u size=%u", key ? key : "(null)",
              value ? value : "(null)", type, size);
    if (root == nullptr || key == nullptr || value == nullptr || data == nullptr ||
        !SupportedType(type)) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<[IN]Param error.return FALSE.");
        return 0;
    }
    // A text is stored up to and with its terminator, which must lie within size; a number is
    // exactly four bytes.
    DWORD stored = size;
    if (type == REG_SZ) {
        const void* end = std::memchr(data, '\0', size);
        if (end == nullptr) {
            ZOL_TRACE(TRACE_LEVEL_ERROR, "<%s\\%s: text without terminator.return FALSE.", key,
                      value);
            return 0;
        }
        stored =
            static_cast<DWORD>(static_cast<const char*>(end) - static_cast<const char*>(data)) + 1;
    } else if (size != sizeof(uint32_t)) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<%s\\%s: a REG_DWORD of %u bytes.return FALSE.", key, value,
                  size);
        return 0;
    }
    // Creating the key and writing the value land together.
    zolwin::Transaction transaction;
    LONG rc = transaction.status();
    if (rc == ERROR_SUCCESS) {
        rptset::Key target;
        rc = target.Create(root, key);
        if (rc == ERROR_SUCCESS)
            rc =
                RegSetValueEx(target.get(), value, 0, type, static_cast<const BYTE*>(data), stored);
        if (rc == ERROR_SUCCESS)
            rc = transaction.commit();
    }
    if (rc != ERROR_SUCCESS) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<write of %s\\%s failed (%d).return FALSE.", key, value,
                  static_cast<int>(rc));
        return 0;
    }
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<return TRUE.");
    return 1;
}
static_assert(std::is_same_v<decltype(AMAMRegWrite), AMAMRegWrite_fn>);
