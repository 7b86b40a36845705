// dscopy.dll exports: "x" turns an hour mask into schedule text, "b" schedule text into a mask.
// The one-letter names are the ones the program binds. Unlike the other libraries' functions
// they write no trace lines: they are pure conversions, called for every schedule a screen
// shows and, in the tests, for all 2^24 masks.
#include <zolwin.h>

#include <cstring>
#include <type_traits>

#include "dscopy_api.h"
#include "schedule.h"

extern "C" ZOLWIN_API int x(uint32_t mask, char* text) {
    if (text == nullptr)
        return -1;
    static_assert(SCHEDULE_TEXT_MAX == dscopy::kMaxTextSize &&
                  SCHEDULE_TEXT_MAX >= sizeof "0-0,2-2,4-4,6-6,8-8,10-10,12-12,14-14,16-16,"
                                              "18-18,20-20,22-22");
    dscopy::WriteMaskText(mask, text);
    return 0;
}
static_assert(std::is_same_v<decltype(x), ScheduleMaskToText_fn>);

extern "C" ZOLWIN_API int b(const char* text, uint32_t* mask) {
    if (text == nullptr || mask == nullptr)
        return -1;
    const std::optional<uint32_t> parsed = dscopy::TextToMask(text);
    if (!parsed)
        return -1;
    *mask = *parsed;
    return 0;
}
static_assert(std::is_same_v<decltype(b), ScheduleTextToMask_fn>);
