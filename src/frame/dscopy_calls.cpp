// Wrappers of the destination-data copy library's schedule conversions.
#include "frame/dscopy_calls.h"

BOOL ScheduletoOutString(uint32_t nTime, char* lpOutString, HMODULE dscopyLib) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] nTime=0x%06X dscopyLib=%p", nTime, dscopyLib);
    if (CallLibrary(dscopyLib, dscopy::kScheduleMaskToText, nTime, lpOutString).unbound()) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "GetProcAddress(x) Failed.return FALSE.");
        return FALSE;
    }
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<return TRUE.");
    return TRUE;
}

BOOL InStringtoSchedule(const char* lpInString, uint32_t* nTime, HMODULE dscopyLib) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] lpInString=%s dscopyLib=%p",
              lpInString ? lpInString : "(null)", dscopyLib);
    if (CallLibrary(dscopyLib, dscopy::kScheduleTextToMask, lpInString, nTime).unbound()) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "GetProcAddress(b) Failed.return FALSE.");
        return FALSE;
    }
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<return TRUE.");
    return TRUE;
}
