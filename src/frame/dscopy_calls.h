// The program's calls into the destination-data copy library "dscopy.dll": the report schedule's
// hour mask as text ("x") and back ("b"). Each wrapper binds its function at the call from the
// handle it is given; none shows a message.
#pragma once

#include <zolwin.h>

#include <cstdint>

#include "dscopy_api.h"
#include "frame/libcall.h"

namespace dscopy {
inline constexpr LibFunction<ScheduleMaskToText_fn> kScheduleMaskToText{"x", libresult::Zero};
// A text "b" cannot read leaves the mask alone; the callers look at the mask, not the result.
inline constexpr LibFunction<ScheduleTextToMask_fn> kScheduleTextToMask{"b", libresult::Any};
}  // namespace dscopy

// The hour mask nTime as its text, into lpOutString (SCHEDULE_TEXT_MAX bytes). TRUE, or FALSE
// when "x" is missing.
BOOL ScheduletoOutString(uint32_t nTime, char* lpOutString, HMODULE dscopyLib);
// The hour mask of the text lpInString into *nTime; a text "b" cannot read leaves *nTime as it
// was. TRUE, or FALSE when "b" is missing.
BOOL InStringtoSchedule(const char* lpInString, uint32_t* nTime, HMODULE dscopyLib);
