// The program's calls into the destination-data copy library "dscopy.dll": a report schedule's
// hour mask to its text ("x") and back ("b"). The one-letter export names are the library's own.
// Each wrapper binds its function at the call from the handle it is given; none shows a message.
#pragma once

#include <zolwin.h>

#include <cstdint>

#include "dscopy_api.h"
#include "frame/libcall.h"

namespace dscopy {
// Neither result is judged here: "x" always writes a text, and "b" leaves the mask alone when
// it cannot read the text, which the caller sees in the mask.
inline constexpr LibFunction<ScheduleMaskToText_fn> kMaskToText{"x", libresult::Any};
inline constexpr LibFunction<ScheduleTextToMask_fn> kTextToMask{"b", libresult::Any};
}  // namespace dscopy

// "x": the text of mask into text (at least SCHEDULE_TEXT_MAX bytes). Unbound when the library
// lacks the export or text is null.
LibResult MaskToScheduleText(HMODULE lib, uint32_t mask, char* text);
// "b": the mask of text into *mask, which stays as it was when the library cannot read the text.
// Unbound when the library lacks the export or an argument is null.
LibResult ScheduleTextToMask(HMODULE lib, const char* text, uint32_t* mask);

// The same conversions as the destination and syslog screens call them. ScheduletoOutString:
// the mask nTime as its text into lpOutString; InStringtoSchedule: the mask of lpInString into
// *nTime, left as it was when the text cannot be read. TRUE, or FALSE when the export is missing
// or an argument is null.
BOOL ScheduletoOutString(uint32_t nTime, char* lpOutString, HMODULE dscopyLib);
BOOL InStringtoSchedule(const char* lpInString, uint32_t* nTime, HMODULE dscopyLib);
