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
