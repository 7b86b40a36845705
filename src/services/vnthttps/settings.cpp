// vnthttps.dll: the HTTPS delivery's proxy and its two URLs, stored under the HTTPS method's
// Setting key (docs/registry.md, "HTTPS delivery settings (vnthttps.dll)").
#include <zolwin.h>
#include <zolwin_transaction.h>

#include <cstring>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>

#include "store.h"
#include "vantrelpkg_api.h"

namespace {

constexpr const char* kProxyUse = "ProxyUse";
constexpr const char* kProxyAddr = "ProxyAddr";
constexpr const char* kProxyPort = "ProxyPort";
constexpr const char* kContinue = "ContinueReport";
constexpr DWORD kDefaultProxyPort = 8080;
constexpr DWORD kMaxPort = 65535;

// The URL values by index (1 or 2).
constexpr const char* kUrlValues[] = {"HTTPD1URL", "HTTPD2URL"};

const char* UrlValue(int index) {
    return index >= 1 && index <= 2 ? kUrlValues[index - 1] : nullptr;
}

// Reads a text value of the Setting key (empty when missing) into out; 0 or -1.
int GetText(const char* name, char* out, int size) {
    std::string text;
    const vntcore::Read r = vntcore::ReadText(vntcore::kHttpsKey, name, &text);
    if (r != vntcore::Read::Ok && r != vntcore::Read::Missing) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<%s cannot be read.return -1.", name);
        return -1;
    }
    if (vntcore::CopyOut(text, out, size) != 0) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<[OUT]buffer of %d bytes too small for %s.return -1.", size,
                  name);
        return -1;
    }
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<return 0. %s=%s", name, out);
    return 0;
}

int SetText(const char* name, const char* text) {
    if (text == nullptr || !vntcore::IsStorableText(text, vntcore::kRegTextMax)) {
        ZOL_TRACE(TRACE_LEVEL_ERROR,
                  "<[IN]%s refused (missing, too long or not one line).return -1.", name);
        return -1;
    }
    if (const LONG rc = vntcore::WriteText(vntcore::kHttpsKey, name, text); rc != ERROR_SUCCESS) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<write of %s failed (%d).return -1.", name, rc);
        return -1;
    }
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<return 0. %s=%s", name, text);
    return 0;
}

int SetNumber(const char* name, int value, int low, int high) {
    if (value < low || value > high) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<[IN]%s=%d out of %d..%d.return -1.", name, value, low, high);
        return -1;
    }
    const LONG rc = vntcore::WriteDword(vntcore::kHttpsKey, name, static_cast<DWORD>(value));
    if (rc != ERROR_SUCCESS) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<write of %s failed (%d).return -1.", name, rc);
        return -1;
    }
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<return 0. %s=%d", name, value);
    return 0;
}

// A stored number within low..high (fallback when missing), or -1 with a trace line.
int GetNumber(const char* name, DWORD fallback, DWORD low, DWORD high) {
    const std::optional<DWORD> value = vntcore::ReadDwordOr(vntcore::kHttpsKey, name, fallback);
    if (!value) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<%s cannot be read.return -1.", name);
        return -1;
    }
    if (*value < low || *value > high) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<stored %s=%u out of %u..%u.return -1.", name, *value, low,
                  high);
        return -1;
    }
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<return %u.", *value);
    return static_cast<int>(*value);
}

}  // namespace

extern "C" ZOLWIN_API int GetHTTPProxyUse(void) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, ">");
    return GetNumber(kProxyUse, 0, 0, 1);
}
static_assert(std::is_same_v<decltype(GetHTTPProxyUse), GetHTTPProxyUse_fn>);

extern "C" ZOLWIN_API int GetHTTPProxyAddr(char* address, int size) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] size=%d", size);
    return GetText(kProxyAddr, address, size);
}
static_assert(std::is_same_v<decltype(GetHTTPProxyAddr), GetHTTPProxyAddr_fn>);

extern "C" ZOLWIN_API int GetHTTPProxyPort(void) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, ">");
    return GetNumber(kProxyPort, kDefaultProxyPort, 1, kMaxPort);
}
static_assert(std::is_same_v<decltype(GetHTTPProxyPort), GetHTTPProxyPort_fn>);

extern "C" ZOLWIN_API int SetHTTPProxyUse(int use) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] use=%d", use);
    return SetNumber(kProxyUse, use, 0, 1);
}
static_assert(std::is_same_v<decltype(SetHTTPProxyUse), SetHTTPProxyUse_fn>);

// The address is a host name or a dotted IPv4 address; blanks are refused here, the form of
// the name is the settings screen's check.
extern "C" ZOLWIN_API int SetHTTPProxyAddr(const char* address) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] address=%s", address ? address : "(null)");
    if (address != nullptr && std::string_view(address).find(' ') != std::string_view::npos) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<[IN]address holds a blank.return -1.");
        return -1;
    }
    return SetText(kProxyAddr, address);
}
static_assert(std::is_same_v<decltype(SetHTTPProxyAddr), SetHTTPProxyAddr_fn>);

extern "C" ZOLWIN_API int SetHTTPProxyPort(int port) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] port=%d", port);
    return SetNumber(kProxyPort, port, 1, static_cast<int>(kMaxPort));
}
static_assert(std::is_same_v<decltype(SetHTTPProxyPort), SetHTTPProxyPort_fn>);

extern "C" ZOLWIN_API int GetHTTPSURL(int index, char* url, int size) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] index=%d size=%d", index, size);
    const char* name = UrlValue(index);
    if (name == nullptr) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<[IN]index %d is not 1 or 2.return -1.", index);
        return -1;
    }
    return GetText(name, url, size);
}
static_assert(std::is_same_v<decltype(GetHTTPSURL), GetHTTPSURL_fn>);

extern "C" ZOLWIN_API int SetHTTPSURL(int index, const char* url) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] index=%d url=%s", index, url ? url : "(null)");
    const char* name = UrlValue(index);
    if (name == nullptr) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<[IN]index %d is not 1 or 2.return -1.", index);
        return -1;
    }
    return SetText(name, url);
}
static_assert(std::is_same_v<decltype(SetHTTPSURL), SetHTTPSURL_fn>);

namespace {

bool FieldHasTerminator(const char (&field)[REG_TEXT_SIZE]) {
    return std::memchr(field, '\0', sizeof field) != nullptr;
}

// Why a record cannot be stored, or null: each value as its own setter checks it.
const char* HttpsRecordFault(const VntHttpsData& r) {
    if (!FieldHasTerminator(r.Url1) || !FieldHasTerminator(r.Url2) ||
        !FieldHasTerminator(r.ProxyAddr))
        return "a text without its terminator";
    for (const char* text : {r.Url1, r.Url2, r.ProxyAddr}) {
        if (!vntcore::IsStorableText(text, vntcore::kRegTextMax))
            return "a text too long or not one line";
    }
    if (std::strchr(r.ProxyAddr, ' ') != nullptr)
        return "a blank in the proxy address";
    if (r.ContinueReport > 1 || r.ProxyUse > 1)
        return "a switch other than 0 or 1";
    if (r.ProxyPort < 1 || r.ProxyPort > kMaxPort)
        return "the proxy port";
    return nullptr;
}

LONG WriteHttpsRecord(const VntHttpsData& r) {
    zolwin::Transaction transaction;
    LONG rc = transaction.status();
    const std::pair<const char*, const char*> texts[] = {
        {kUrlValues[0], r.Url1}, {kUrlValues[1], r.Url2}, {kProxyAddr, r.ProxyAddr}};
    for (const auto& [name, text] : texts) {
        if (rc == ERROR_SUCCESS)
            rc = vntcore::WriteText(vntcore::kHttpsKey, name, text);
    }
    const std::pair<const char*, DWORD> numbers[] = {
        {kContinue, r.ContinueReport}, {kProxyUse, r.ProxyUse}, {kProxyPort, r.ProxyPort}};
    for (const auto& [name, value] : numbers) {
        if (rc == ERROR_SUCCESS)
            rc = vntcore::WriteDword(vntcore::kHttpsKey, name, value);
    }
    if (rc == ERROR_SUCCESS)
        rc = transaction.commit();
    return rc;
}

bool ReadHttpsRecord(VntHttpsData* r) {
    const int use = GetNumber(kProxyUse, 0, 0, 1);
    const int port = GetNumber(kProxyPort, kDefaultProxyPort, 1, kMaxPort);
    const int next = GetNumber(kContinue, 0, 0, 1);
    if (use < 0 || port < 0 || next < 0)
        return false;
    r->ProxyUse = static_cast<uint32_t>(use);
    r->ProxyPort = static_cast<uint32_t>(port);
    r->ContinueReport = static_cast<uint32_t>(next);
    return GetText(kUrlValues[0], r->Url1, sizeof r->Url1) == 0 &&
           GetText(kUrlValues[1], r->Url2, sizeof r->Url2) == 0 &&
           GetText(kProxyAddr, r->ProxyAddr, sizeof r->ProxyAddr) == 0;
}

}  // namespace

// The whole record in one snapshot; the caller's record is written only when every value could
// be read and is within its range.
extern "C" ZOLWIN_API int GetHTTPSSetting(VntHttpsData* record) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, ">");
    if (record == nullptr) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<[IN]Param error.return -1.");
        return -1;
    }
    VntHttpsData read{};
    {
        zolwin::ReadSnapshot snapshot;
        if (!ReadHttpsRecord(&read)) {
            ZOL_TRACE(TRACE_LEVEL_ERROR, "<the HTTPS settings cannot be read.return -1.");
            return -1;
        }
    }
    *record = read;
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<return 0.");
    return 0;
}
static_assert(std::is_same_v<decltype(GetHTTPSSetting), GetHTTPSSetting_fn>);

extern "C" ZOLWIN_API int SetHTTPSSetting(const VntHttpsData* record) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, ">");
    if (record == nullptr) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<[IN]Param error.return -1.");
        return -1;
    }
    if (const char* fault = HttpsRecordFault(*record)) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<refused: %s.return -1.", fault);
        return -1;
    }
    if (const LONG rc = WriteHttpsRecord(*record); rc != ERROR_SUCCESS) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<write of the HTTPS settings failed (%d).return -1.",
                  static_cast<int>(rc));
        return -1;
    }
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<return 0. url1=%s url2=%s continue=%u proxy=%u %s:%u",
              record->Url1, record->Url2, record->ContinueReport, record->ProxyUse,
              record->ProxyAddr, record->ProxyPort);
    return 0;
}
static_assert(std::is_same_v<decltype(SetHTTPSSetting), SetHTTPSSetting_fn>);
