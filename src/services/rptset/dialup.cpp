// rptset.dll: the remote report service's dial-up delivery, kept under the dial-up method's
// Setting key (docs/registry.md, "Dial-up delivery settings (rptset.dll)"): the service centre's
// two numbers, the user ID, the modem's line device, tone or pulse dialling and the redial
// interval. Read and written as one record; a write stores all of it or nothing.
#include <zolwin.h>
#include <zolwin_transaction.h>

#include <cstring>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>

#include "regpaths.h"
#include "rptset_api.h"
#include "store.h"

namespace {

constexpr const char* kDialKey = ZOL_KEY_DIAL_SETTING;
constexpr const char* kPhone1 = "PhoneNo1";
constexpr const char* kPhone2 = "PhoneNo2";
constexpr const char* kUser = "UserID";
constexpr const char* kDevice = "Device";
constexpr const char* kMode = "DialMode";
constexpr const char* kRedial = "RedialInterval";
// The service centre's number as the key floppy gives it: the primary number until one is set.
constexpr const char* kFloppyPhone = "PHONENO";

constexpr const char* kDefaultDevice = "/dev/ttyS0";
constexpr DWORD kDefaultRedial = 5;
constexpr std::string_view kDevicePrefix = "/dev/";

// The text field of a record and its stored value.
struct TextField {
    const char* value;
    char (VntDialData::*field)[VNT_TEXT_SIZE];
};
constexpr TextField kTexts[] = {
    {kPhone1, &VntDialData::PhoneNo1},
    {kPhone2, &VntDialData::PhoneNo2},
    {kUser, &VntDialData::UserID},
    {kDevice, &VntDialData::Device},
};

bool HasTerminator(const char (&field)[VNT_TEXT_SIZE]) {
    return std::memchr(field, '\0', sizeof field) != nullptr;
}

bool IsPhoneNumber(std::string_view text) {
    return text.size() <= VNT_DIAL_PHONE_MAX &&
           text.find_first_not_of("0123456789-()") == std::string_view::npos;
}

bool IsPrintableWord(std::string_view text) {
    for (const char c : text) {
        if (static_cast<unsigned char>(c) <= ' ' || c == 0x7F)
            return false;
    }
    return true;
}

// Why a record cannot be stored, or null.
const char* RecordFault(const VntDialData& r) {
    for (const TextField& t : kTexts) {
        if (!HasTerminator(r.*t.field))
            return "a text without its terminator";
    }
    if (r.PhoneNo1[0] == '\0' || !IsPhoneNumber(r.PhoneNo1))
        return "the primary number";
    if (!IsPhoneNumber(r.PhoneNo2))
        return "the secondary number";
    const std::string_view user = r.UserID;
    if (user.size() > VNT_DIAL_USER_MAX || !IsPrintableWord(user))
        return "the user ID";
    const std::string_view device = r.Device;
    if (device.size() <= kDevicePrefix.size() || !device.starts_with(kDevicePrefix) ||
        !IsPrintableWord(device))
        return "the line device";
    if (r.DialMode != VNT_DIAL_MODE_TONE && r.DialMode != VNT_DIAL_MODE_PULSE)
        return "the dial mode";
    if (r.RedialInterval < VNT_DIAL_REDIAL_MIN || r.RedialInterval > VNT_DIAL_REDIAL_MAX)
        return "the redial interval";
    return nullptr;
}

// What one read gave: true to take the value read, false to take the default (missing, or of
// another type: traced), nothing when the store cannot be read.
std::optional<bool> UseRead(vntcore::Read read, const char* name) {
    switch (read) {
        case vntcore::Read::Ok:
            return true;
        case vntcore::Read::Failed:
            return std::nullopt;
        case vntcore::Read::WrongType:
            ZOL_TRACE(TRACE_LEVEL_ERROR, "%s has the wrong type; read as its default.", name);
            return false;
        case vntcore::Read::Missing:
            return false;
    }
    return std::nullopt;
}

// Reads one text into its field (missing: fallback). False when the store cannot be read; a
// value of another type or too long for the field reads as the fallback, traced.
bool ReadField(const char* key, const char* name, const char* fallback,
               char (&field)[VNT_TEXT_SIZE]) {
    std::string text;
    const std::optional<bool> read = UseRead(vntcore::ReadText(key, name, &text), name);
    if (!read)
        return false;
    if (!*read)
        text = fallback;
    if (vntcore::CopyOut(text, field, sizeof field) != 0) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "%s longer than its field; read as its default.", name);
        vntcore::CopyOut(fallback, field, sizeof field);
    }
    return true;
}

bool ReadNumber(const char* name, DWORD fallback, uint32_t* out) {
    DWORD value = fallback;
    const std::optional<bool> read = UseRead(vntcore::ReadDword(kDialKey, name, &value), name);
    if (!read)
        return false;
    if (!*read)
        value = fallback;
    *out = value;
    return true;
}

bool ReadRecord(VntDialData* r) {
    char floppyPhone[VNT_TEXT_SIZE] = {};
    return ReadField(vntcore::kSetupKey, kFloppyPhone, "", floppyPhone) &&
           ReadField(kDialKey, kPhone1, floppyPhone, r->PhoneNo1) &&
           ReadField(kDialKey, kPhone2, "", r->PhoneNo2) &&
           ReadField(kDialKey, kUser, "", r->UserID) &&
           ReadField(kDialKey, kDevice, kDefaultDevice, r->Device) &&
           ReadNumber(kMode, VNT_DIAL_MODE_TONE, &r->DialMode) &&
           ReadNumber(kRedial, kDefaultRedial, &r->RedialInterval);
}

LONG WriteRecord(const VntDialData& r) {
    zolwin::Transaction transaction;
    LONG rc = transaction.status();
    for (const TextField& t : kTexts) {
        if (rc == ERROR_SUCCESS)
            rc = vntcore::WriteText(kDialKey, t.value, r.*t.field);
    }
    if (rc == ERROR_SUCCESS)
        rc = vntcore::WriteDword(kDialKey, kMode, r.DialMode);
    if (rc == ERROR_SUCCESS)
        rc = vntcore::WriteDword(kDialKey, kRedial, r.RedialInterval);
    if (rc == ERROR_SUCCESS)
        rc = transaction.commit();
    return rc;
}

}  // namespace

extern "C" ZOLWIN_API int AMGetDialUpSetting(VntDialData* record) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, ">");
    if (record == nullptr) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<[IN]Param error.return -1.");
        return -1;
    }
    VntDialData read{};
    {
        zolwin::ReadSnapshot snapshot;
        if (!ReadRecord(&read)) {
            ZOL_TRACE(TRACE_LEVEL_ERROR, "<%s cannot be read.return -1.", kDialKey);
            return -1;
        }
    }
    *record = read;
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<return 0.");
    return 0;
}
static_assert(std::is_same_v<decltype(AMGetDialUpSetting), AMGetDialUpSetting_fn>);

extern "C" ZOLWIN_API int AMSetDialUpSetting(const VntDialData* record) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, ">");
    if (record == nullptr) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<[IN]Param error.return -1.");
        return -1;
    }
    if (const char* fault = RecordFault(*record)) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<refused: %s.return -1.", fault);
        return -1;
    }
    if (const LONG rc = WriteRecord(*record); rc != ERROR_SUCCESS) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<write of %s failed (%d).return -1.", kDialKey,
                  static_cast<int>(rc));
        return -1;
    }
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<return 0.");
    return 0;
}
static_assert(std::is_same_v<decltype(AMSetDialUpSetting), AMSetDialUpSetting_fn>);
