// vntutil.dll: which delivery library sends the service's reports, by the stored method.
#include <zolwin.h>

#include <optional>
#include <type_traits>

#include "delivery.h"
#include "records.h"
#include "store.h"
#include "vantrelpkg_api.h"

namespace {

constexpr const char* kMethodValue = "MethodType";

}  // namespace

extern "C" ZOLWIN_API int VNTGetSelectedDllName(char* name, int size) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] size=%d", size);
    // A store without the value has never left the seeded method, internet mail.
    const std::optional<DWORD> method =
        vntcore::ReadDwordOr(vntcore::kServiceKey, kMethodValue, VANTREL_INTERNETMAIL);
    const auto libraries = vntreport::DeliveryLibraries();
    if (!method || *method >= libraries.size()) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<no delivery library for the stored method.return -1.");
        return -1;
    }
    if (vntcore::CopyOut(libraries[*method].file, name, size) != 0) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<[OUT]buffer of %d bytes too small.return -1.", size);
        return -1;
    }
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<return 0. method=%u name=%s", *method, name);
    return 0;
}
static_assert(std::is_same_v<decltype(VNTGetSelectedDllName), VNTGetSelectedDllName_fn>);
