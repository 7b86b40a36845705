// vnthttps.dll: the HTTPS delivery's proxy and its two URLs, stored under the HTTPS method's
// Setting key (docs/registry.md, "HTTPS delivery settings (vnthttps.dll)").
#include <zolwin.h>

#include <optional>
#include <string>
#include <string_view>
#include <type_traits>

#include "store.h"
#include "vantrelpkg_api.h"

namespace {

constexpr const char* kProxyUse = "ProxyUse";
constexpr const char* kProxyAddr = "ProxyAddr";
constexpr const char* kProxyPort = "ProxyPort";
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
