// The program's calls into the HTTPS delivery library "vnthttps.dll" (hLibVNTHTTPS, loaded with
// the remote report package while the main menu runs): its settings read and written whole, and
// its report entry.
#pragma once

#include <zolwin.h>

#include "frame/libcall.h"
#include "records.h"
#include "vantrelpkg_api.h"

namespace vnthttps {
inline constexpr LibFunction<GetHTTPSSetting_fn> kGetHTTPSSetting{"GetHTTPSSetting",
                                                                  libresult::Zero};
inline constexpr LibFunction<SetHTTPSSetting_fn> kSetHTTPSSetting{"SetHTTPSSetting",
                                                                  libresult::Zero};
}  // namespace vnthttps

// "GetHTTPSSetting" of lib: the stored settings into *record (untouched on failure).
LibResult GetHTTPSParam(HMODULE lib, VntHttpsData* record);
// "SetHTTPSSetting" of lib: record written whole in one transaction, or nothing.
LibResult PutHTTPSParam(HMODULE lib, const VntHttpsData& record);
