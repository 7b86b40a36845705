// rptset.dll: whether the remote report service package is installed.
#include <zolwin.h>

#include <type_traits>

#include "regpaths.h"
#include "regvalue.h"
#include "rptset_api.h"

namespace {
constexpr const char* kSetupKey = ZOL_KEY_VNT_SETUP;
constexpr const char* kInstalledValue = "Installed";
}  // namespace

extern "C" ZOLWIN_API int CheckInstVantrel(void) {
    rptset::Key setup;
    if (setup.OpenRead(HKEY_LOCAL_MACHINE, kSetupKey) != ERROR_SUCCESS)
        return 0;
    uint32_t installed = 0;
    return rptset::ReadDword(setup.get(), kInstalledValue, &installed) == rptset::ValueRead::Ok &&
                   installed == 1
               ? 1
               : 0;
}
static_assert(std::is_same_v<decltype(CheckInstVantrel), CheckInstVantrel_fn>);
