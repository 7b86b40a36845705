// vntutil.dll: reading a key floppy into the store, as the report-settings library's
// GetOpenMsgfromFD does (both use the one key-floppy reader).
#include <zolwin.h>

#include <type_traits>

#include "keyfile.h"
#include "vantrelpkg_api.h"

extern "C" ZOLWIN_API int WriteOpenSetting(const char* fdPath) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] fdPath=%s", fdPath ? fdPath : "(null)");
    const vntcore::KeyResult result = vntcore::ReadKeyFloppyIntoStore(fdPath);
    if (!result) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<%s.return -1.", result.reason.c_str());
        return -1;
    }
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<return 0.");
    return 0;
}
static_assert(std::is_same_v<decltype(WriteOpenSetting), WriteOpenSetting_fn>);
