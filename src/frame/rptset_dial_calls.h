// The program's calls into the report-settings library "rptset.dll" for the remote report
// service's dial-up delivery: its settings read and written whole.
#pragma once

#include <zolwin.h>

#include "frame/libcall.h"
#include "records.h"
#include "rptset_api.h"

namespace rptset {
inline constexpr LibFunction<AMGetDialUpSetting_fn> kAMGetDialUpSetting{"AMGetDialUpSetting",
                                                                        libresult::Zero};
inline constexpr LibFunction<AMSetDialUpSetting_fn> kAMSetDialUpSetting{"AMSetDialUpSetting",
                                                                        libresult::Zero};
}  // namespace rptset

// "AMGetDialUpSetting": the stored settings into *record (untouched on failure).
LibResult GetDialUpParam(HMODULE lib, VntDialData* record);
// "AMSetDialUpSetting": record written whole in one transaction, or nothing (refused or failed).
LibResult PutDialUpParam(HMODULE lib, const VntDialData& record);
