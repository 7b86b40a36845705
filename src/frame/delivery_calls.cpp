// Calling a delivery library's report entry: loading it from the product root, binding the
// entry, taking its error text and releasing everything on every path.
#include "frame/delivery_calls.h"

#include <cstdlib>
#include <memory>
#include <vector>

#include "frame/libcall.h"

namespace {

constexpr DWORD kPathSize = 4096;

struct LibraryRelease {
    void operator()(void* lib) const { FreeLibrary(static_cast<HMODULE>(lib)); }
};
using OwnedLibrary = std::unique_ptr<void, LibraryRelease>;

struct TextRelease {
    void operator()(char* text) const { std::free(text); }
};

OwnedLibrary LoadFromProductRoot(const char* library) {
    std::vector<char> root(kPathSize, '\0');
    const DWORD needed = ExpandEnvironmentStrings("%ZolDir%", root.data(), kPathSize);
    if (needed == 0 || needed > kPathSize) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "ExpandEnvironmentStrings failed.");
        return nullptr;
    }
    const std::string path = std::string(root.data()) + "/lib/" + library;
    return OwnedLibrary(LoadLibrary(path.c_str()));
}

}  // namespace

DeliveryOutcome CallLoadedDeliveryEntry(HMODULE lib, const char* entry, const char* kind) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] lib=%p entry=%s kind=%s", lib, entry, kind);
    DeliveryOutcome outcome;
    if (lib == nullptr) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<library not loaded.");
        return outcome;
    }
    DeliveryEntry_fn* call = BindFromHandle<DeliveryEntry_fn>(lib, entry);
    if (call == nullptr) {
        outcome.status = DeliveryOutcome::Status::NoEntry;
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<Gets %s  Address Failed.", entry);
        return outcome;
    }
    char* text = nullptr;
    outcome.status = DeliveryOutcome::Status::Called;
    outcome.result = call(&text, kind);
    const std::unique_ptr<char, TextRelease> owned(text);
    if (owned)
        outcome.errorText = owned.get();
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<%s returned %u.", entry, outcome.result);
    return outcome;
}

DeliveryOutcome CallDeliveryEntry(const char* library, const char* entry, const char* kind) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] library=%s", library);
    const OwnedLibrary lib = LoadFromProductRoot(library);
    if (!lib) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<LoadLibrary for %s failed.", library);
        return {};
    }
    return CallLoadedDeliveryEntry(lib.get(), entry, kind);
}
