// Wrappers of the schedule conversions of "dscopy.dll". The conversions run for every schedule a
// screen shows, so they trace their outcome only.
#include "frame/dscopy_calls.h"

LibResult MaskToScheduleText(HMODULE lib, uint32_t mask, char* text) {
    if (text == nullptr)
        return {};
    const LibResult r = CallLibrary(lib, dscopy::kMaskToText, mask, text);
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<x(0x%06X) return %d.", mask, r.value);
    return r;
}

LibResult ScheduleTextToMask(HMODULE lib, const char* text, uint32_t* mask) {
    if (text == nullptr || mask == nullptr)
        return {};
    const LibResult r = CallLibrary(lib, dscopy::kTextToMask, text, mask);
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<b(%s) return %d.", text, r.value);
    return r;
}

BOOL ScheduletoOutString(uint32_t nTime, char* lpOutString, HMODULE dscopyLib) {
    if (MaskToScheduleText(dscopyLib, nTime, lpOutString).unbound()) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<GetProcAddress(X) Failed.return FALSE.");
        return FALSE;
    }
    return TRUE;
}

BOOL InStringtoSchedule(const char* lpInString, uint32_t* nTime, HMODULE dscopyLib) {
    if (ScheduleTextToMask(dscopyLib, lpInString, nTime).unbound()) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<GetProcAddress(b) Failed.return FALSE.");
        return FALSE;
    }
    return TRUE;
}
