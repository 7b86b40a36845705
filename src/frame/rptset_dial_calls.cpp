// Calls of "rptset.dll" for the dial-up delivery's settings.
#include "frame/rptset_dial_calls.h"

LibResult GetDialUpParam(HMODULE lib, VntDialData* record) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] lib=%p", lib);
    const LibResult r = CallLibrary(lib, rptset::kAMGetDialUpSetting, record);
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<return %d.", r.value);
    return r;
}

LibResult PutDialUpParam(HMODULE lib, const VntDialData& record) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] lib=%p", lib);
    const LibResult r = CallLibrary(lib, rptset::kAMSetDialUpSetting, &record);
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<return %d.", r.value);
    return r;
}
