// vnthttps.dll: sending a report over HTTPS. This version does not deliver: every report ends
// with VNTHTTPS_NOT_DELIVERED and a text that says so, which the program shows as the failure.
#include <zolwin.h>

#include <cstdlib>
#include <cstring>
#include <type_traits>

#include "vantrelpkg_api.h"

namespace {

// Neither success (0), a retry (1) nor one of the failures the program only logs (2, 3): the
// caller shows the error text.
constexpr uint32_t VNTHTTPS_NOT_DELIVERED = 4;
constexpr const char* kNotDeliveredText =
    "HTTPS delivery is not available in this version; the report was not sent.";

}  // namespace

extern "C" ZOLWIN_API uint32_t GUIVntReport(char** errorText, const char* kind) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] kind=%s", kind ? kind : "(null)");
    if (errorText != nullptr) {
        *errorText = strdup(kNotDeliveredText);
        if (*errorText == nullptr)
            ZOL_TRACE(TRACE_LEVEL_FAILURE, "no memory for the error text.");
    }
    ZOL_TRACE(TRACE_LEVEL_ERROR, "<HTTPS delivery not available.return %u.",
              VNTHTTPS_NOT_DELIVERED);
    return VNTHTTPS_NOT_DELIVERED;
}
static_assert(std::is_same_v<decltype(GUIVntReport), GUIVntReport_fn>);
