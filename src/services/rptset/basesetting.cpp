// rptset.dll: base report settings. One key per report method under BaseSetting\Method (named
// by the method, e.g. "MANAGER (SNMP)", "SHUTDOWN DELAY") with Enable, Value and Option; the
// internet-mail base record of the remote report service; the internet-mail mode switch; the
// dotted IPv4 check. The values are listed in docs/registry.md ("Base report settings").
#include <zolwin.h>

#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <type_traits>
#include <vector>

#include "regpaths.h"
#include "regvalue.h"
#include "rptset_api.h"

// Defined with the installation check of this library.
extern "C" ZOLWIN_API CheckInstVantrel_fn CheckInstVantrel;

namespace {

constexpr const char* kBaseKey = ZOL_KEY_BASESETTING;
constexpr const char* kMethodKey = ZOL_KEY_METHOD;
constexpr char kInternetMailBasePath[] = ZOL_KEY_MAIL_SETTING;
constexpr const char* kInternetMailModeValue = "InternetMailMode";

constexpr const char* kEnableValue = "Enable";
constexpr const char* kValueValue = "Value";
constexpr const char* kOptionValue = "Option";

constexpr int32_t kShutdownDelayMax = 1800;  // seconds

// Failure results of the base-setting functions (0 is success; other values are the store's
// error codes).
constexpr int kRefused = -1;  // a bad argument or a value out of range
constexpr int kNoSuchMethod = ERROR_FILE_NOT_FOUND;

// A text field holds its terminator within its size.
bool Terminated(const char* field, std::size_t size) {
    return std::memchr(field, '\0', size) != nullptr;
}

// A method name that can be a key below BaseSetting\Method: one non-empty key name component.
bool UsableMethodName(const char* name) {
    const std::size_t length = strnlen(name, ZOL_MAX_KEY_NAME + 1);
    return length > 0 && length <= ZOL_MAX_KEY_NAME && std::strchr(name, '\\') == nullptr;
}

void TraceBadValue(const char* key, const char* value, rptset::ValueRead how) {
    const char* why = how == rptset::ValueRead::WrongType ? "has the wrong type; default used"
                                                          : "is too long; cut to fit";
    ZOL_TRACE(TRACE_LEVEL_ERROR, "%s: value %s %s.", key, value, why);
}

// Reads a REG_DWORD that may be missing (the default stays) or damaged (traced, default stays).
LONG ReadOptionalDword(HKEY key, const char* keyName, const char* value, uint32_t* out) {
    const rptset::ValueRead r = rptset::ReadDword(key, value, out);
    if (r == rptset::ValueRead::Failed)
        return ERROR_REGISTRY_IO_FAILED;
    if (r == rptset::ValueRead::WrongType)
        TraceBadValue(keyName, value, r);
    return ERROR_SUCCESS;
}

LONG ReadOptionalText(HKEY key, const char* keyName, const char* value, char* field,
                      std::size_t size) {
    const rptset::ValueRead r = rptset::ReadTextField(key, value, field, size);
    if (r == rptset::ValueRead::Failed)
        return ERROR_REGISTRY_IO_FAILED;
    if (r == rptset::ValueRead::WrongType || r == rptset::ValueRead::Cut)
        TraceBadValue(keyName, value, r);
    return ERROR_SUCCESS;
}

// Reads the method stored under the open Method key as subkey `name` into Enable, Value and
// Option of *out (MethodName and Reserved are the caller's). A missing value reads as 0 / empty.
LONG ReadMethod(HKEY methods, const char* name, BaseData* out) {
    rptset::Key key;
    LONG rc = key.OpenRead(methods, name);
    if (rc != ERROR_SUCCESS)
        return rc;
    uint32_t enable = 0;
    uint32_t value = 0;
    out->Option[0] = '\0';
    if ((rc = ReadOptionalDword(key.get(), name, kEnableValue, &enable)) != ERROR_SUCCESS ||
        (rc = ReadOptionalDword(key.get(), name, kValueValue, &value)) != ERROR_SUCCESS ||
        (rc = ReadOptionalText(key.get(), name, kOptionValue, out->Option, sizeof out->Option)) !=
            ERROR_SUCCESS) {
        return rc;
    }
    if (enable > 1)
        ZOL_TRACE(TRACE_LEVEL_ERROR, "%s: Enable %u read as 1.", name, enable);
    out->Enable = enable != 0 ? 1 : 0;
    out->Value = static_cast<int32_t>(value);
    return ERROR_SUCCESS;
}

struct FreeDeleter {
    void operator()(void* p) const { std::free(p); }
};
using BaseDataPtr = std::unique_ptr<BaseData, FreeDeleter>;

// Every stored method in the store's order of names.
LONG ReadAllMethods(std::vector<BaseDataPtr>* out) {
    rptset::Key methods;
    LONG rc = methods.OpenRead(HKEY_LOCAL_MACHINE, kMethodKey);
    if (rc != ERROR_SUCCESS)
        return rc;
    for (DWORD index = 0;; ++index) {
        std::string name;
        rc = rptset::SubkeyName(methods.get(), index, &name);
        if (rc == ERROR_NO_MORE_ITEMS)
            return ERROR_SUCCESS;
        if (rc != ERROR_SUCCESS)
            return rc;
        BaseDataPtr record(static_cast<BaseData*>(std::calloc(1, sizeof(BaseData))));
        if (!record)
            return ERROR_NOT_ENOUGH_MEMORY;
        std::memcpy(record->MethodName, name.data(), name.size());
        rc = ReadMethod(methods.get(), name.c_str(), record.get());
        if (rc != ERROR_SUCCESS)
            return rc;
        out->push_back(std::move(record));
    }
}

// The checks of a base-setting record before it is written; nullptr when it may be written.
const char* RefusalOf(const BaseData& record) {
    if (!Terminated(record.MethodName, sizeof record.MethodName))
        return "MethodName has no terminator";
    if (!Terminated(record.Option, sizeof record.Option))
        return "Option has no terminator";
    if (record.Enable != 0 && record.Enable != 1)
        return "Enable is neither 0 nor 1";
    // Only a delay that is switched on must be one: switching a delay off keeps whatever value
    // was stored, even one that an older release or another tool left out of range.
    if (rptset::EqualsNoCase(record.MethodName, BASE_METHOD_SHUTDOWN) && record.Enable == 1 &&
        (record.Value < 0 || record.Value > kShutdownDelayMax)) {
        return "the shutdown delay is outside 0 to 1800";
    }
    return nullptr;
}

// ---- Internet-mail base record ----

struct AMBITextField {
    const char* value;
    char (AMBIBaseData::*field)[REG_TEXT_SIZE];
};
struct AMBINumberField {
    const char* value;
    uint32_t AMBIBaseData::*field;
    uint32_t defaultValue;
    uint32_t min;
    uint32_t max;
};

constexpr AMBITextField kAMBITexts[] = {
    {"SMTPServer", &AMBIBaseData::SMTPServer},
    {"MailFrom", &AMBIBaseData::MailFrom},
};
constexpr AMBINumberField kAMBINumbers[] = {
    {"SMTPPort", &AMBIBaseData::SMTPPort, 25, 1, 65535},
    {"DateFormat", &AMBIBaseData::DateFormat, 0, 0, 1},
    {"POPBeforeSMTP", &AMBIBaseData::PopBeforeSMTP, 0, 0, 1},
    {"SMTPAuth", &AMBIBaseData::SMTPAuth, 0, 0, 1},
};

bool UsablePath(const char* path) {
    return path != nullptr && path[0] != '\0' && Terminated(path, BASE_REG_PATH_SIZE);
}

// ---- Dotted IPv4 check ----

// One decimal part of a dotted address: 1 to 3 digits, value 0 to 255. A part with a leading
// zero ("010", "00") is refused: some readers take it as octal, so its meaning is unclear.
bool IsAddressPart(const char* begin, const char* end) {
    const std::ptrdiff_t length = end - begin;
    if (length < 1 || length > 3)
        return false;
    if (length > 1 && begin[0] == '0')
        return false;
    int value = 0;
    for (const char* p = begin; p != end; ++p) {
        if (*p < '0' || *p > '9')
            return false;
        value = value * 10 + (*p - '0');
    }
    return value <= 255;
}

}  // namespace

extern "C" ZOLWIN_API int GetAllBaseSetting(BaseData*** records, int* count) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, ">");
    if (records == nullptr || count == nullptr) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<[IN]Param error.return %d.", kRefused);
        return kRefused;
    }
    std::vector<BaseDataPtr> all;
    LONG rc;
    {
        zolwin::ReadSnapshot snapshot;
        rc = ReadAllMethods(&all);
    }
    // The array has at least one slot, so that the caller always has something to free.
    auto** array = static_cast<BaseData**>(std::calloc(all.size() + 1, sizeof(BaseData*)));
    if (rc == ERROR_SUCCESS && array == nullptr)
        rc = ERROR_NOT_ENOUGH_MEMORY;
    if (rc != ERROR_SUCCESS) {
        std::free(array);
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<read of %s failed (%d).return %d.", kMethodKey,
                  static_cast<int>(rc), static_cast<int>(rc));
        return static_cast<int>(rc);
    }
    for (std::size_t i = 0; i < all.size(); ++i)
        array[i] = all[i].release();
    *records = array;
    *count = static_cast<int>(all.size());
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<return 0. count=%d", *count);
    return 0;
}
static_assert(std::is_same_v<decltype(GetAllBaseSetting), GetAllBaseSetting_fn>);

extern "C" ZOLWIN_API int GetBaseSetting(BaseData* record) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, ">");
    if (record == nullptr || !Terminated(record->MethodName, sizeof record->MethodName)) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<[IN]Param error.return %d.", kRefused);
        return kRefused;
    }
    if (!UsableMethodName(record->MethodName)) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<no method \"%.300s\".return %d.", record->MethodName,
                  kNoSuchMethod);
        return kNoSuchMethod;
    }
    // Read aside: a failed read leaves the caller's record as it was.
    auto fresh = std::make_unique<BaseData>(*record);
    LONG rc;
    {
        zolwin::ReadSnapshot snapshot;
        rptset::Key methods;
        rc = methods.OpenRead(HKEY_LOCAL_MACHINE, kMethodKey);
        if (rc == ERROR_SUCCESS)
            rc = ReadMethod(methods.get(), record->MethodName, fresh.get());
    }
    if (rc != ERROR_SUCCESS) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<read of method %.300s failed (%d).return %d.",
                  record->MethodName, static_cast<int>(rc), static_cast<int>(rc));
        return static_cast<int>(rc);
    }
    *record = *fresh;
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<return 0. %.300s Enable=%d Value=%d", record->MethodName,
              record->Enable, record->Value);
    return 0;
}
static_assert(std::is_same_v<decltype(GetBaseSetting), GetBaseSetting_fn>);

extern "C" ZOLWIN_API int SetBaseSetting(BaseData* record) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, ">");
    if (record == nullptr) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<[IN]Param error.return %d.", kRefused);
        return kRefused;
    }
    if (const char* why = RefusalOf(*record)) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<refused: %s.return %d.", why, kRefused);
        return kRefused;
    }
    if (!UsableMethodName(record->MethodName)) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<no method \"%.300s\".return %d.", record->MethodName,
                  kNoSuchMethod);
        return kNoSuchMethod;
    }
    zolwin::Transaction transaction;
    LONG rc = transaction.status();
    if (rc == ERROR_SUCCESS) {
        // Only a stored method is written: a misspelt name must not become a new method.
        const std::string path = std::string(kMethodKey) + "\\" + record->MethodName;
        rptset::Key key;
        rc = key.OpenWrite(HKEY_LOCAL_MACHINE, path.c_str());
        if (rc == ERROR_SUCCESS &&
            (rc = rptset::WriteDword(key.get(), kEnableValue, record->Enable)) == ERROR_SUCCESS &&
            (rc = rptset::WriteDword(key.get(), kValueValue,
                                     static_cast<uint32_t>(record->Value))) == ERROR_SUCCESS &&
            (rc = rptset::WriteText(key.get(), kOptionValue, record->Option)) == ERROR_SUCCESS) {
            rc = transaction.commit();
        }
    }
    if (rc != ERROR_SUCCESS) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<write of method %.300s failed (%d).return %d.",
                  record->MethodName, static_cast<int>(rc), static_cast<int>(rc));
        return static_cast<int>(rc);
    }
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<return 0. %.300s Enable=%d Value=%d", record->MethodName,
              record->Enable, record->Value);
    return 0;
}
static_assert(std::is_same_v<decltype(SetBaseSetting), SetBaseSetting_fn>);

extern "C" ZOLWIN_API int AMAMGetBaseRegPath(char* path) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, ">");
    if (path == nullptr) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<[IN]Param error.return FALSE.");
        return 0;
    }
    static_assert(sizeof kInternetMailBasePath <= BASE_REG_PATH_SIZE);
    std::strcpy(path, kInternetMailBasePath);
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<return TRUE. %s", path);
    return 1;
}
static_assert(std::is_same_v<decltype(AMAMGetBaseRegPath), AMAMGetBaseRegPath_fn>);

extern "C" ZOLWIN_API int CheckInternetMailMode(void) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, ">");
    if (CheckInstVantrel() != 1) {
        ZOL_TRACE(TRACE_LEVEL_TRACE, "<remote report service not installed.return 0.");
        return 0;
    }
    // A store without the switch counts as internet-mail mode, as a new installation is seeded.
    uint32_t mode = 1;
    rptset::Key base;
    if (base.OpenRead(HKEY_LOCAL_MACHINE, kBaseKey) == ERROR_SUCCESS &&
        rptset::ReadDword(base.get(), kInternetMailModeValue, &mode) ==
            rptset::ValueRead::WrongType) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "%s: value %s has the wrong type; read as 1.", kBaseKey,
                  kInternetMailModeValue);
    }
    const int result = mode != 0 ? 1 : 0;
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<return %d.", result);
    return result;
}
static_assert(std::is_same_v<decltype(CheckInternetMailMode), CheckInternetMailMode_fn>);

extern "C" ZOLWIN_API int GetAMBIBaseSetting(AMBIBaseData* record, const char* path) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, ">");
    if (record == nullptr || !UsablePath(path)) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<[IN]Param error.return FALSE.");
        return 0;
    }
    auto fresh = std::make_unique<AMBIBaseData>(*record);
    LONG rc;
    {
        zolwin::ReadSnapshot snapshot;
        rptset::Key key;
        rc = key.OpenRead(HKEY_LOCAL_MACHINE, path);
        for (const AMBITextField& f : kAMBITexts) {
            if (rc != ERROR_SUCCESS)
                break;
            char* field = &((*fresh).*f.field)[0];
            field[0] = '\0';
            rc = ReadOptionalText(key.get(), path, f.value, field, REG_TEXT_SIZE);
        }
        for (const AMBINumberField& f : kAMBINumbers) {
            if (rc != ERROR_SUCCESS)
                break;
            (*fresh).*f.field = f.defaultValue;
            rc = ReadOptionalDword(key.get(), path, f.value, &((*fresh).*f.field));
        }
    }
    if (rc != ERROR_SUCCESS) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<read of %s failed (%d).return FALSE.", path,
                  static_cast<int>(rc));
        return 0;
    }
    *record = *fresh;
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<return TRUE.");
    return 1;
}
static_assert(std::is_same_v<decltype(GetAMBIBaseSetting), GetAMBIBaseSetting_fn>);

extern "C" ZOLWIN_API int SetAMBIBaseSetting(AMBIBaseData* record, const char* path) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, ">");
    if (record == nullptr || !UsablePath(path)) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<[IN]Param error.return FALSE.");
        return 0;
    }
    for (const AMBITextField& f : kAMBITexts) {
        if (!Terminated((*record).*f.field, REG_TEXT_SIZE)) {
            ZOL_TRACE(TRACE_LEVEL_ERROR, "<refused: %s has no terminator.return FALSE.", f.value);
            return 0;
        }
    }
    for (const AMBINumberField& f : kAMBINumbers) {
        const uint32_t v = (*record).*f.field;
        if (v < f.min || v > f.max) {
            ZOL_TRACE(TRACE_LEVEL_ERROR, "<refused: %s %u outside %u to %u.return FALSE.", f.value,
                      v, f.min, f.max);
            return 0;
        }
    }
    zolwin::Transaction transaction;
    LONG rc = transaction.status();
    if (rc == ERROR_SUCCESS) {
        rptset::Key key;
        rc = key.Create(HKEY_LOCAL_MACHINE, path);
        for (const AMBITextField& f : kAMBITexts) {
            if (rc == ERROR_SUCCESS)
                rc = rptset::WriteText(key.get(), f.value, (*record).*f.field);
        }
        for (const AMBINumberField& f : kAMBINumbers) {
            if (rc == ERROR_SUCCESS)
                rc = rptset::WriteDword(key.get(), f.value, (*record).*f.field);
        }
        if (rc == ERROR_SUCCESS)
            rc = transaction.commit();
    }
    if (rc != ERROR_SUCCESS) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<write of %s failed (%d).return FALSE.", path,
                  static_cast<int>(rc));
        return 0;
    }
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<return TRUE.");
    return 1;
}
static_assert(std::is_same_v<decltype(SetAMBIBaseSetting), SetAMBIBaseSetting_fn>);

extern "C" ZOLWIN_API int AMBIMyIPCheck(const char* text) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, ">");
    if (text == nullptr) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<[IN]Param error.return 0.");
        return 0;
    }
    int parts = 0;
    const char* begin = text;
    for (const char* p = text;; ++p) {
        if (*p != '.' && *p != '\0')
            continue;
        if (++parts > 4 || !IsAddressPart(begin, p))
            break;
        if (*p == '\0') {
            const int result = parts == 4 ? 1 : 0;
            ZOL_TRACE(TRACE_LEVEL_TRACE, "<return %d.", result);
            return result;
        }
        begin = p + 1;
    }
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<return 0.");
    return 0;
}
static_assert(std::is_same_v<decltype(AMBIMyIPCheck), AMBIMyIPCheck_fn>);
