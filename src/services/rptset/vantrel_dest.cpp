// rptset.dll: the remote report service's destination. Its mail settings and the manager's
// address and port (via-manager method) live in ID_LIST\VantrelReport\Address, its schedule
// record in ID_LIST\VantrelReport like any destination's (docs/registry.md, "Destinations
// (rptset.dll)"). Test and opening reports are sent by the delivery libraries (vntreport).
#include <iconv.h>
#include <strings.h>

#include <zolwin.h>

#include <cstdlib>
#include <cstring>
#include <string>
#include <type_traits>
#include <vector>

#include "delivery.h"
#include "dest_fields.h"
#include "dest_store.h"
#include "regpaths.h"
#include "regvalue.h"
#include "report.h"
#include "rptset_api.h"
#include "store.h"

// The address check of the base settings (basesetting.cpp), the same export the program binds.
extern "C" ZOLWIN_API int AMBIMyIPCheck(const char* text);

namespace {

constexpr const char* kAddressKey = ZOL_KEY_VANTREL_ADDRESS;
constexpr const char* kServiceKey = ZOL_KEY_VNTSERVICE;
constexpr const char* kSetupKey = ZOL_KEY_VNT_SETUP;

// The mail settings of VxMLDestData, value by value.
struct MailText {
    const char* value;
    char (VxMLDestData::*field)[VNT_MAILTO_SIZE];
};
constexpr MailText kMailTexts[] = {{"ETo", &VxMLDestData::MailTo},
                                   {"ESubject", &VxMLDestData::Subject}};
constexpr const char* kOpeningValue = "EOpening";
constexpr const char* kManagerIPValue = "ManagerIP";
constexpr const char* kManagerPortValue = "ManagerPort";
constexpr uint32_t kMaxPort = 65535;

// The destination IDs of the remote report service begin with this (any case).
constexpr const char* kVantrelPrefix = "VANTRELREPORT";

// Administrator texts in English and Japanese (written here in UTF-8, handed out in EUC-JP,
// the program's encoding in Japanese).
struct Texts {
    const char* english;
    const char* japanese;
};
constexpr Texts kNoKeyFloppy = {
    "The key floppy has not been read: the service centre address is not set.",
    "キーフロッピーが読み込まれていません。サービスセンターのアドレスは未設定です。"};
constexpr Texts kNoCentre = {"The key floppy held no service centre address.",
                             "キーフロッピーにサービスセンターのアドレスがありません。"};
constexpr Texts kCentre = {"Reports go to the service centre at %s.",
                           "通報はサービスセンター (%s) に送られます。"};
constexpr Texts kOpeningNotStored = {
    "The opening report was sent, but that it was sent could not be stored.",
    "開局報告は送信されましたが、送信済みの状態を保存できませんでした。"};

std::string ToEucJp(const std::string& utf8) {
    iconv_t cd = iconv_open("EUC-JP", "UTF-8");
    if (cd == reinterpret_cast<iconv_t>(-1))
        return {};
    std::string out(utf8.size() * 2 + 1, '\0');
    char* in = const_cast<char*>(utf8.data());
    std::size_t inLeft = utf8.size();
    char* outPtr = out.data();
    std::size_t outLeft = out.size();
    const std::size_t rc = iconv(cd, &in, &inLeft, &outPtr, &outLeft);
    iconv_close(cd);
    if (rc == static_cast<std::size_t>(-1))
        return {};
    out.resize(out.size() - outLeft);
    return out;
}

// A malloc'd copy of the text in the system language (the caller frees it), with one "%s"
// filled by arg when given; null when out of memory.
char* MallocText(const Texts& texts, const std::string& arg = {}) {
    const bool japanese = GetSystemDefaultLangID() == LANGID_JAPANESE;
    std::string text = japanese ? texts.japanese : texts.english;
    const std::size_t at = text.find("%s");
    if (at != std::string::npos)
        text.replace(at, 2, arg);
    if (japanese) {
        // The argument (a mail address) is ASCII; a failed conversion falls back to English.
        std::string euc = ToEucJp(text);
        if (euc.empty()) {
            text = texts.english;
            if (const std::size_t en = text.find("%s"); en != std::string::npos)
                text.replace(en, 2, arg);
        } else {
            text = std::move(euc);
        }
    }
    return strdup(text.c_str());
}

// Reads a REG_SZ value of key into out (size bytes); false when missing, of another type or
// longer than the buffer (out is then "").
bool ReadTextInto(HKEY key, const char* name, char* out, std::size_t size) {
    out[0] = '\0';
    if (rptset::ReadTextField(key, name, out, size) == rptset::ValueRead::Ok)
        return true;
    out[0] = '\0';
    return false;
}

// The text of the service's set-up state for the administrator.
char* SetupStateMessage() {
    rptset::Key service;
    uint32_t keyFloppyRead = 0;
    if (service.OpenRead(HKEY_LOCAL_MACHINE, kServiceKey) == ERROR_SUCCESS)
        rptset::ReadDword(service.get(), "InstVantrelKeyFD", &keyFloppyRead);
    if (keyFloppyRead != 1)
        return MallocText(kNoKeyFloppy);
    rptset::Key setup;
    std::string centre;
    if (setup.OpenRead(HKEY_LOCAL_MACHINE, kSetupKey) == ERROR_SUCCESS)
        rptset::ReadText(setup.get(), "MAILADRS", &centre);
    return centre.empty() ? MallocText(kNoCentre) : MallocText(kCentre, centre);
}

bool IsVantrelID(const char* id) {
    return strncasecmp(id, kVantrelPrefix, std::strlen(kVantrelPrefix)) == 0;
}

// Writes the mail settings into the open Address key.
LONG WriteMail(HKEY address, const VxMLDestData& mail) {
    for (const MailText& t : kMailTexts) {
        const LONG rc = rptset::WriteTextField(address, t.value, mail.*t.field, VNT_MAILTO_SIZE);
        if (rc != ERROR_SUCCESS)
            return rc;
    }
    return rptset::WriteDword(address, kOpeningValue, mail.Opening);
}

// Writes record over the existing remote-report destination it names.
LONG WriteRecord(const DestData& record) {
    if (!rptset::StorableID(record.ID) || !IsVantrelID(record.ID))
        return ERROR_INVALID_PARAMETER;
    rptset::Key idList;
    LONG rc = idList.OpenWrite(HKEY_LOCAL_MACHINE, rptset::kIDListKey);
    std::vector<std::string> names;
    if (rc != ERROR_SUCCESS || (rc = rptset::SubkeyNames(idList.get(), &names)) != 0)
        return rc;
    for (const std::string& name : names) {
        if (rptset::EqualsNoCase(name.c_str(), record.ID))
            return rptset::WriteDestination(idList.get(), name.c_str(), record);
    }
    return ERROR_FILE_NOT_FOUND;
}

}  // namespace

extern "C" ZOLWIN_API int GetVntTo(char* out) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, ">");
    if (out == nullptr) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<[IN]Param error.return 0.");
        return 0;
    }
    rptset::Key address;
    // An empty ETo is a success: no address has been set yet, and the caller shows that.
    if (address.OpenRead(HKEY_LOCAL_MACHINE, kAddressKey) != ERROR_SUCCESS ||
        !ReadTextInto(address.get(), "ETo", out, VNT_MAILTO_SIZE)) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<ETo missing or unreadable.return 0.");
        return 0;
    }
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<return 1.");
    return 1;
}
static_assert(std::is_same_v<decltype(GetVntTo), GetVntTo_fn>);

extern "C" ZOLWIN_API int GetManagerIP(char* out) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, ">");
    if (out == nullptr) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<[IN]Param error.return -1.");
        return -1;
    }
    rptset::Key address;
    if (address.OpenRead(HKEY_LOCAL_MACHINE, kAddressKey) != ERROR_SUCCESS ||
        !ReadTextInto(address.get(), kManagerIPValue, out, VNT_MAILTO_SIZE) || out[0] == '\0') {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<ManagerIP missing, empty or unreadable.return -1.");
        return -1;
    }
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<return 0.");
    return 0;
}
static_assert(std::is_same_v<decltype(GetManagerIP), GetManagerIP_fn>);

extern "C" ZOLWIN_API int GetManagerPort(uint32_t* port) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, ">");
    if (port == nullptr) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<[IN]Param error.return -1.");
        return -1;
    }
    uint32_t stored = DEST_DEFAULT_PORT;
    rptset::Key address;
    const LONG rc = address.OpenRead(HKEY_LOCAL_MACHINE, kAddressKey);
    if (rc != ERROR_SUCCESS && rc != ERROR_FILE_NOT_FOUND) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<open %s failed (%d).return -1.", kAddressKey,
                  static_cast<int>(rc));
        return -1;
    }
    if (rc == ERROR_SUCCESS) {
        const rptset::ValueRead read = rptset::ReadDword(address.get(), kManagerPortValue, &stored);
        if (read == rptset::ValueRead::Failed) {
            ZOL_TRACE(TRACE_LEVEL_ERROR, "<read of %s failed.return -1.", kManagerPortValue);
            return -1;
        }
        // A value of another type is no port: the default stands, as for a missing one.
        if (read != rptset::ValueRead::Ok)
            stored = DEST_DEFAULT_PORT;
    }
    *port = stored;
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<port %u.return 0.", stored);
    return 0;
}
static_assert(std::is_same_v<decltype(GetManagerPort), GetManagerPort_fn>);

extern "C" ZOLWIN_API int SetManagerAddress(const char* ip, uint32_t port) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> port=%u", port);
    // Only an address is stored, never a host name: the service must not depend on a resolver
    // when it reports trouble.
    if (ip == nullptr || AMBIMyIPCheck(ip) != 1 || port == 0 || port > kMaxPort) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<[IN]Param error.return -1.");
        return -1;
    }
    zolwin::Transaction transaction;
    LONG rc = transaction.status();
    rptset::Key address;
    if (rc == ERROR_SUCCESS)
        rc = address.Create(HKEY_LOCAL_MACHINE, kAddressKey);
    if (rc == ERROR_SUCCESS)
        rc = rptset::WriteText(address.get(), kManagerIPValue, ip);
    if (rc == ERROR_SUCCESS)
        rc = rptset::WriteDword(address.get(), kManagerPortValue, port);
    if (rc == ERROR_SUCCESS)
        rc = transaction.commit();
    if (rc != ERROR_SUCCESS) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<write failed (%d).return -1.", static_cast<int>(rc));
        return -1;
    }
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<return 0.");
    return 0;
}
static_assert(std::is_same_v<decltype(SetManagerAddress), SetManagerAddress_fn>);

extern "C" ZOLWIN_API int GetAMAMDeseSetting(VxMLDestData* mail, char** message) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, ">");
    if (message != nullptr)
        *message = nullptr;
    if (mail == nullptr || message == nullptr) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<[IN]Param error.return 0.");
        return 0;
    }
    rptset::Key address;
    if (address.OpenRead(HKEY_LOCAL_MACHINE, kAddressKey) != ERROR_SUCCESS) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<open %s failed.return 0.", kAddressKey);
        return 0;
    }
    // Filled aside: a failed read leaves the caller's record as it was. Missing values (and
    // values of another type) read as a new installation's: empty texts, no opening report.
    VxMLDestData fresh{};
    for (const MailText& t : kMailTexts) {
        if (rptset::ReadTextField(address.get(), t.value, fresh.*t.field, VNT_MAILTO_SIZE) ==
            rptset::ValueRead::Failed) {
            ZOL_TRACE(TRACE_LEVEL_ERROR, "<read of %s failed.return 0.", t.value);
            return 0;
        }
    }
    if (rptset::ReadDword(address.get(), kOpeningValue, &fresh.Opening) ==
        rptset::ValueRead::Failed) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<read of %s failed.return 0.", kOpeningValue);
        return 0;
    }
    *message = SetupStateMessage();
    if (*message == nullptr) {
        ZOL_TRACE(TRACE_LEVEL_FAILURE, "<malloc message failed.return 0.");
        return 0;
    }
    *mail = fresh;
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<return 1.");
    return 1;
}
static_assert(std::is_same_v<decltype(GetAMAMDeseSetting), GetAMAMDeseSetting_fn>);

extern "C" ZOLWIN_API int SetAMAMDeseSetting(const VxMLDestData* mail, DestData* record,
                                             int recordOnly) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> recordOnly=%d", recordOnly);
    if (record == nullptr || (recordOnly == 0 && mail == nullptr)) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<[IN]Param error.return 0.");
        return 0;
    }
    zolwin::Transaction transaction;
    LONG rc = transaction.status();
    if (rc == ERROR_SUCCESS && recordOnly == 0) {
        rptset::Key address;
        rc = address.Create(HKEY_LOCAL_MACHINE, kAddressKey);
        if (rc == ERROR_SUCCESS)
            rc = WriteMail(address.get(), *mail);
    }
    if (rc == ERROR_SUCCESS)
        rc = WriteRecord(*record);
    if (rc == ERROR_SUCCESS)
        rc = transaction.commit();
    if (rc != ERROR_SUCCESS) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<write failed (%d).return 0.", static_cast<int>(rc));
        return 0;
    }
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<return 1.");
    return 1;
}
static_assert(std::is_same_v<decltype(SetAMAMDeseSetting), SetAMAMDeseSetting_fn>);

// The test, critical-test and opening reports go through the delivery library of the method
// selected for the service, which hands back its result and text and writes the alert-log line.
namespace {
int SendReport(const char* kind, const char* id, char** errorText) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] kind=%s id=%s", kind, id != nullptr ? id : "(null)");
    const uint32_t result = vntreport::SendBySelectedMethod(kind, errorText);
    ZOL_TRACE(result == vntreport::kSent ? TRACE_LEVEL_TRACE : TRACE_LEVEL_ERROR, "<return %u.",
              result);
    return static_cast<int>(result);
}
}  // namespace

extern "C" ZOLWIN_API int AMAMVantrelTestReport(const char* id, char** errorText) {
    return SendReport("T", id, errorText);
}
static_assert(std::is_same_v<decltype(AMAMVantrelTestReport), AMAMVantrelTestReport_fn>);

extern "C" ZOLWIN_API int TestFatalReport(const char* id, char** errorText) {
    return SendReport("TF", id, errorText);
}
static_assert(std::is_same_v<decltype(TestFatalReport), TestFatalReport_fn>);

extern "C" ZOLWIN_API int AMAMVantrelOpeningReport(char** errorText) {
    const int result = SendReport("O", nullptr, errorText);
    if (result != 0)
        return result;
    // Only a report that left marks the opening as done.
    const LONG rc = vntcore::WriteDword(kAddressKey, kOpeningValue, 1);
    if (rc == ERROR_SUCCESS)
        return 0;
    ZOL_TRACE(TRACE_LEVEL_ERROR, "<%s not written (%d).return 4.", kOpeningValue,
              static_cast<int>(rc));
    if (errorText != nullptr)
        *errorText = MallocText(kOpeningNotStored);
    return static_cast<int>(vntreport::kFailed);
}
static_assert(std::is_same_v<decltype(AMAMVantrelOpeningReport), AMAMVantrelOpeningReport_fn>);
