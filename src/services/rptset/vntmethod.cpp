// rptset.dll: the remote report service's delivery method (VNTService\MethodType), its switch
// (the base-setting records of its four methods), and the state of its opening report (EOpening
// of the built-in destination VantrelReport).
#include <zolwin.h>

#include <iterator>
#include <string>
#include <type_traits>

#include "regpaths.h"
#include "regvalue.h"
#include "rptset_api.h"

namespace {

constexpr const char* kServiceKey = ZOL_KEY_VNTSERVICE;
constexpr const char* kMethodTypeValue = "MethodType";
constexpr const char* kVantrelAddressKey = ZOL_KEY_VANTREL_ADDRESS;
constexpr const char* kEOpeningValue = "EOpening";

constexpr const char* kBaseMethodKey = ZOL_KEY_METHOD;
constexpr const char* kEnableValue = "Enable";

// The base-setting record of each delivery method (indexed by VANTREL_*): the service reports by
// the method whose record is enabled.
constexpr const char* kServiceRecords[] = {
    "VantrelReport(Internet Mail)",
    "VantrelReport(Dial-up)",
    "VantrelReport(TransToManager)",
    "VantrelReport(HTTPS)",
};
static_assert(std::size(kServiceRecords) == VANTREL_HTTPS + 1);

bool KnownMethod(uint32_t method) {
    return method <= VANTREL_HTTPS;
}

// Sets Enable of one method's record. An absent record already means off: it is only created
// (with the values a new record has) to switch it on.
LONG SwitchRecord(const char* name, bool on) {
    const std::string path = std::string(kBaseMethodKey) + "\\" + name;
    rptset::Key key;
    LONG rc = key.OpenWrite(HKEY_LOCAL_MACHINE, path.c_str());
    if (rc == ERROR_FILE_NOT_FOUND && !on)
        return ERROR_SUCCESS;
    if (rc == ERROR_FILE_NOT_FOUND) {
        if ((rc = key.Create(HKEY_LOCAL_MACHINE, path.c_str())) != ERROR_SUCCESS ||
            (rc = rptset::WriteDword(key.get(), "Value", 0)) != ERROR_SUCCESS ||
            (rc = rptset::WriteText(key.get(), "Option", "")) != ERROR_SUCCESS) {
            return rc;
        }
    }
    if (rc != ERROR_SUCCESS)
        return rc;
    uint32_t stored = 0;
    const rptset::ValueRead read = rptset::ReadDword(key.get(), kEnableValue, &stored);
    if (read == rptset::ValueRead::Ok && (stored != 0) == on)
        return ERROR_SUCCESS;
    return rptset::WriteDword(key.get(), kEnableValue, on ? 1 : 0);
}

// The method (unless kept) and every record, in one transaction.
LONG WriteServiceSwitch(int method, bool enabled) {
    zolwin::Transaction transaction;
    LONG rc = transaction.status();
    if (rc != ERROR_SUCCESS)
        return rc;
    if (method >= 0) {
        rptset::Key service;
        if ((rc = service.Create(HKEY_LOCAL_MACHINE, kServiceKey)) != ERROR_SUCCESS ||
            (rc = rptset::WriteDword(service.get(), kMethodTypeValue,
                                     static_cast<uint32_t>(method))) != ERROR_SUCCESS) {
            return rc;
        }
    }
    for (int m = VANTREL_INTERNETMAIL; m <= VANTREL_HTTPS; ++m) {
        if ((rc = SwitchRecord(kServiceRecords[m], enabled && m == method)) != ERROR_SUCCESS)
            return rc;
    }
    return transaction.commit();
}

}  // namespace

extern "C" ZOLWIN_API int AMGetVntMethod(int* method) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, ">");
    if (method == nullptr) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<[IN]Param error.return -1.");
        return -1;
    }
    // A store without the value delivers by internet mail, as a new installation is seeded.
    uint32_t stored = VANTREL_INTERNETMAIL;
    rptset::Key key;
    LONG rc = key.OpenRead(HKEY_LOCAL_MACHINE, kServiceKey);
    rptset::ValueRead read = rptset::ValueRead::Missing;
    if (rc == ERROR_SUCCESS)
        read = rptset::ReadDword(key.get(), kMethodTypeValue, &stored);
    if ((rc != ERROR_SUCCESS && rc != ERROR_FILE_NOT_FOUND) || read == rptset::ValueRead::Failed ||
        read == rptset::ValueRead::WrongType || !KnownMethod(stored)) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<%s\\%s unreadable or not a method (%u).return -1.",
                  kServiceKey, kMethodTypeValue, stored);
        return -1;
    }
    *method = static_cast<int>(stored);
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<return 0. method=%d", *method);
    return 0;
}
static_assert(std::is_same_v<decltype(AMGetVntMethod), AMGetVntMethod_fn>);

extern "C" ZOLWIN_API int AMSetVntMethod(int method) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> method=%d", method);
    if (method < 0 || !KnownMethod(static_cast<uint32_t>(method))) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<refused: %d is not a delivery method.return -1.", method);
        return -1;
    }
    zolwin::Transaction transaction;
    LONG rc = transaction.status();
    if (rc == ERROR_SUCCESS) {
        rptset::Key key;
        rc = key.Create(HKEY_LOCAL_MACHINE, kServiceKey);
        if (rc == ERROR_SUCCESS)
            rc = rptset::WriteDword(key.get(), kMethodTypeValue, static_cast<uint32_t>(method));
        if (rc == ERROR_SUCCESS)
            rc = transaction.commit();
    }
    if (rc != ERROR_SUCCESS) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<write of %s\\%s failed (%d).return -1.", kServiceKey,
                  kMethodTypeValue, static_cast<int>(rc));
        return -1;
    }
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<return 0.");
    return 0;
}
static_assert(std::is_same_v<decltype(AMSetVntMethod), AMSetVntMethod_fn>);

extern "C" ZOLWIN_API int AMResetOpenSet(void) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, ">");
    // The key belongs to the built-in destination VantrelReport: it is opened, never created,
    // so that a store without that destination does not gain half of one.
    rptset::Key key;
    LONG rc = key.OpenWrite(HKEY_LOCAL_MACHINE, kVantrelAddressKey);
    if (rc == ERROR_SUCCESS)
        rc = rptset::WriteDword(key.get(), kEOpeningValue, 0);
    if (rc != ERROR_SUCCESS) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<write of %s\\%s failed (%d).return -1.", kVantrelAddressKey,
                  kEOpeningValue, static_cast<int>(rc));
        return -1;
    }
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<return 0.");
    return 0;
}
static_assert(std::is_same_v<decltype(AMResetOpenSet), AMResetOpenSet_fn>);

extern "C" ZOLWIN_API int GetEOpening(void) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, ">");
    uint32_t opening = 0;
    rptset::Key key;
    if (key.OpenRead(HKEY_LOCAL_MACHINE, kVantrelAddressKey) == ERROR_SUCCESS &&
        rptset::ReadDword(key.get(), kEOpeningValue, &opening) == rptset::ValueRead::WrongType) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "%s\\%s has the wrong type; read as 0.", kVantrelAddressKey,
                  kEOpeningValue);
    }
    // Any non-zero state means the opening report went out.
    const int result = opening != 0 ? 1 : 0;
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<return %d.", result);
    return result;
}
static_assert(std::is_same_v<decltype(GetEOpening), GetEOpening_fn>);

extern "C" ZOLWIN_API int AMSetVntReport(int method, int enabled) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> method=%d enabled=%d", method, enabled);
    const bool keepMethod = method == -1;
    if ((!keepMethod && (method < 0 || !KnownMethod(static_cast<uint32_t>(method)))) ||
        (enabled != 0 && enabled != 1) || (keepMethod && enabled == 1)) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<refused: method %d, enabled %d.return -1.", method, enabled);
        return -1;
    }
    const LONG rc = WriteServiceSwitch(method, enabled == 1);
    if (rc != ERROR_SUCCESS) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<write of the service switch failed (%d).return -1.",
                  static_cast<int>(rc));
        return -1;
    }
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<return 0.");
    return 0;
}
static_assert(std::is_same_v<decltype(AMSetVntReport), AMSetVntReport_fn>);
