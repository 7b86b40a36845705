// Test library: a report-settings library whose generic writer stores every value but one, the
// POP port, which it refuses as a full or damaged store would.
#include <zolwin.h>

#include <cstring>
#include <type_traits>

#include "rptset_api.h"

extern "C" __attribute__((visibility("default"))) int AMAMRegWrite(HKEY root, const char* key,
                                                                   const char* value, DWORD type,
                                                                   const void* data, DWORD size) {
    if (std::strcmp(value, "POPPort") == 0)
        return 0;
    HKEY handle = nullptr;
    if (RegCreateKey(root, key, &handle) != ERROR_SUCCESS)
        return 0;
    const LONG rc = RegSetValueEx(handle, value, 0, type, static_cast<const BYTE*>(data), size);
    RegCloseKey(handle);
    return rc == ERROR_SUCCESS;
}
static_assert(std::is_same_v<decltype(AMAMRegWrite), AMAMRegWrite_fn>);
