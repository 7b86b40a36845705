// Environment strings: %NAME% expansion with the product root's built-in fallback, and the root.
#include <strings.h>

#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>

#include "zolwin.h"
#include "zolwin_config.h"
#include "zolwin_private.h"

extern char** environ;

namespace zolwin {

bool lookupEnv(const std::string& name, std::string& value) {
    if (name.empty())
        return false;
    if (const char* exact = std::getenv(name.c_str())) {
        value = exact;
        return true;
    }
    // Win32 variable names ignore case; scripts here may well write ZOLDIR or zoldir.
    for (char** e = environ; e != nullptr && *e != nullptr; ++e) {
        const char* eq = std::strchr(*e, '=');
        if (eq == nullptr || static_cast<size_t>(eq - *e) != name.size())
            continue;
        if (strncasecmp(*e, name.c_str(), name.size()) == 0) {
            value = eq + 1;
            return true;
        }
    }
    return false;
}

namespace {

bool isZolDir(std::string_view name) {
    return name.size() == 6 && strncasecmp(name.data(), "ZolDir", 6) == 0;
}

// The value a %NAME% stands for; the product root falls back to the install prefix like a
// machine-wide variable would.
bool variableValue(const std::string& name, std::string& value) {
    if (lookupEnv(name, value) && !(value.empty() && isZolDir(name)))
        return true;
    if (isZolDir(name)) {
        value = ZOL_INSTALL_PREFIX;
        return true;
    }
    return false;
}

// Win32's algorithm: a '%' opens a name up to the next '%'. When that name is known it is
// replaced; otherwise only the opening '%' is copied and scanning resumes after it, so an
// unknown %VAR% stays as written and "%%" is two plain percent signs.
std::string expand(std::string_view src) {
    std::string out;
    out.reserve(src.size());
    size_t i = 0;
    while (i < src.size()) {
        if (src[i] != '%') {
            out.push_back(src[i++]);
            continue;
        }
        size_t close = src.find('%', i + 1);
        std::string value;
        if (close != std::string_view::npos &&
            variableValue(std::string(src.substr(i + 1, close - i - 1)), value)) {
            out += value;
            i = close + 1;
        } else {
            out.push_back('%');
            ++i;
        }
    }
    return out;
}

}  // namespace

std::string productRoot() {
    std::string root;
    if (!lookupEnv("ZolDir", root) || root.empty())
        root = ZOL_INSTALL_PREFIX;
    while (root.size() > 1 && root.back() == '/')
        root.pop_back();
    return root;
}

}  // namespace zolwin

extern "C" {

DWORD ExpandEnvironmentStrings(LPCSTR lpSrc, LPSTR lpDst, DWORD nSize) {
    if (lpSrc == nullptr || (lpDst == nullptr && nSize != 0)) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return 0;
    }
    const std::string out = zolwin::expand(lpSrc);
    if (out.size() >= UINT32_MAX) {
        SetLastError(ERROR_NOT_ENOUGH_MEMORY);
        return 0;
    }
    const DWORD needed = static_cast<DWORD>(out.size() + 1);
    if (needed > nSize) {
        // Too small: report the size and leave an empty string rather than a cut-off path.
        if (nSize > 0)
            lpDst[0] = '\0';
        return needed;
    }
    std::memcpy(lpDst, out.c_str(), needed);
    return needed;
}

BOOL GetZolRootPath(LPSTR lpBuffer, DWORD nSize) {
    if (lpBuffer == nullptr) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return FALSE;
    }
    const std::string root = zolwin::productRoot();
    if (root.empty() || root.size() + 1 > nSize) {
        if (nSize > 0)
            lpBuffer[0] = '\0';
        SetLastError(root.empty() ? ERROR_BAD_PATHNAME : ERROR_MORE_DATA);
        return FALSE;
    }
    std::memcpy(lpBuffer, root.c_str(), root.size() + 1);
    return TRUE;
}

LPCSTR ZolInstallPrefix(void) {
    return ZOL_INSTALL_PREFIX;
}

}  // extern "C"
