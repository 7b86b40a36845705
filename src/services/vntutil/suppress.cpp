// vntutil.dll: report suppression, two values of the service's SETTING key. The setters keep
// the values in range; the getters hand back what is stored, so that the suppression dialog can
// refuse to open on a value someone else stored out of range.
#include <zolwin.h>

#include <climits>
#include <optional>
#include <type_traits>

#include "store.h"
#include "vantrelpkg_api.h"

namespace {

struct SuppressValue {
    const char* name;
    DWORD fallback;  // when the value is missing
    int max;         // setters accept 0..max
};
constexpr SuppressValue kMode{"VntSuppressMode", 0, 1};
constexpr SuppressValue kInterval{"VntSuppressInterval", 60, 1440};

int Get(const SuppressValue& v) {
    const std::optional<DWORD> value =
        vntcore::ReadDwordOr(vntcore::kSettingKey, v.name, v.fallback);
    if (!value || *value > static_cast<DWORD>(INT_MAX)) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<%s cannot be read.return -1.", v.name);
        return -1;
    }
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<return %u.", *value);
    return static_cast<int>(*value);
}

int Set(const SuppressValue& v, int value) {
    if (value < 0 || value > v.max) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<[IN]%s=%d out of 0..%d.return -1.", v.name, value, v.max);
        return -1;
    }
    const LONG rc = vntcore::WriteDword(vntcore::kSettingKey, v.name, static_cast<DWORD>(value));
    if (rc != ERROR_SUCCESS) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<write of %s failed (%d).return -1.", v.name, rc);
        return -1;
    }
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<return 0.");
    return 0;
}

}  // namespace

extern "C" ZOLWIN_API int getVntSuppressMode(void) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, ">");
    return Get(kMode);
}
static_assert(std::is_same_v<decltype(getVntSuppressMode), getVntSuppressMode_fn>);

extern "C" ZOLWIN_API int setVntSuppressMode(int mode) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] mode=%d", mode);
    return Set(kMode, mode);
}
static_assert(std::is_same_v<decltype(setVntSuppressMode), setVntSuppressMode_fn>);

extern "C" ZOLWIN_API int getVntSuppressInterval(void) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, ">");
    return Get(kInterval);
}
static_assert(std::is_same_v<decltype(getVntSuppressInterval), getVntSuppressInterval_fn>);

extern "C" ZOLWIN_API int setVntSuppressInterval(int minutes) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] minutes=%d", minutes);
    return Set(kInterval, minutes);
}
static_assert(std::is_same_v<decltype(setVntSuppressInterval), setVntSuppressInterval_fn>);
