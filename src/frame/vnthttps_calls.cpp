// Calls of "vnthttps.dll" for the HTTPS delivery's settings.
#include "frame/vnthttps_calls.h"

LibResult GetHTTPSParam(HMODULE lib, VntHttpsData* record) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] lib=%p", lib);
    const LibResult r = CallLibrary(lib, vnthttps::kGetHTTPSSetting, record);
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<return %d.", r.value);
    return r;
}

LibResult PutHTTPSParam(HMODULE lib, const VntHttpsData& record) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] lib=%p", lib);
    const LibResult r = CallLibrary(lib, vnthttps::kSetHTTPSSetting, &record);
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<return %d.", r.value);
    return r;
}
