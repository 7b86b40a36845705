// vntutil.dll: the type of the key floppy read in last (KEYFDTYPE of the service's key).
#include <zolwin.h>

#include <climits>
#include <optional>
#include <type_traits>

#include "records.h"
#include "store.h"
#include "vantrelpkg_api.h"

namespace {
constexpr const char* kTypeValue = "KEYFDTYPE";
}  // namespace

extern "C" ZOLWIN_API int setKeyFdType(int type) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] type=%d", type);
    if (type != KEYFD_TYPE_MAIL && type != KEYFD_TYPE_HTTPS) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<[IN]type %d is not 1 or 2.return -1.", type);
        return -1;
    }
    const LONG rc = vntcore::WriteDword(vntcore::kServiceKey, kTypeValue, static_cast<DWORD>(type));
    if (rc != ERROR_SUCCESS) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<write of %s failed (%d).return -1.", kTypeValue, rc);
        return -1;
    }
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<return 0.");
    return 0;
}
static_assert(std::is_same_v<decltype(setKeyFdType), setKeyFdType_fn>);

// The stored type as it is (0 when no floppy was read); the program decides what other values
// mean.
extern "C" ZOLWIN_API int getKeyFdType(void) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, ">");
    const std::optional<DWORD> type = vntcore::ReadDwordOr(vntcore::kServiceKey, kTypeValue, 0);
    if (!type || *type > static_cast<DWORD>(INT_MAX)) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<%s cannot be read.return -1.", kTypeValue);
        return -1;
    }
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<return %u.", *type);
    return static_cast<int>(*type);
}
static_assert(std::is_same_v<decltype(getKeyFdType), getKeyFdType_fn>);
