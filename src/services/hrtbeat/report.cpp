// hrtbeat.dll: the heartbeat report that tells the service centre the server is alive. This
// version has no delivery: the report always ends as not sent (-1) and the store keeps the date
// of the last report that was sent (HBRDATE) unchanged.
#include <zolwin.h>

#include <type_traits>

#include "vantrelpkg_api.h"

extern "C" ZOLWIN_API int ReportByMain(void) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, ">");
    ZOL_TRACE(TRACE_LEVEL_ERROR, "<heartbeat delivery not available.return -1.");
    return -1;
}
static_assert(std::is_same_v<decltype(ReportByMain), ReportByMain_fn>);
