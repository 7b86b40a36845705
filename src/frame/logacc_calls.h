// The program's calls into the alert-log library "logacc.dll", which the destination list loads
// only to remove a deleted destination ID from every alert log.
#pragma once

#include <zolwin.h>

#include "frame/libcall.h"
#include "logacc_api.h"

namespace logacc {
inline constexpr LibFunction<AMACETDeleteIDAndGIDAtAllLog_fn> kDeleteIDAndGIDAtAllLog{
    "AMACETDeleteIDAndGIDAtAllLog", libresult::NonZero};
}  // namespace logacc

// "logacc.dll" while it is loaded; null otherwise.
extern HMODULE hLibLOGACC;

// Loads "%ZolDir%/lib/logacc.dll" into hLibLOGACC (releasing an earlier load first). On failure
// shows "FUNC_CALL_ERR" with "ExpandEnvironmentStrings" or "LoadLibrary" and returns FALSE.
BOOL LoadLogaccDLL();
// Releases hLibLOGACC when loaded and clears it. TRUE.
BOOL FreeLogaccDLL();

// AMACETDeleteIDAndGIDAtAllLog(1, length of id, id, 0, null, 0): removes the destination ID id
// from every alert log. Unbound when the library lacks the function or id is null.
LibResult DeleteIDFromAllLogs(HMODULE lib, const char* id);
