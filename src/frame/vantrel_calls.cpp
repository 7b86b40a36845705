// Wrappers of the remote report service's key-floppy, customer, delivery and clearing
// functions. The call layer traces a missing function or a failed call; each wrapper adds its
// entry and exit lines.
#include "frame/vantrel_calls.h"

namespace {

LibResult Traced(const LibResult& r) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<return %d (%s).", r.value,
              r.unbound() ? "unbound" : (r.ok() ? "succeeded" : "failed"));
    return r;
}

}  // namespace

LibResult ReadKeyFloppy(HMODULE lib, const char* path) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] lib=%p path=%s", lib, path ? path : "(null)");
    return Traced(CallLibrary(lib, vantrel::kGetOpenMsgfromFD, path));
}

bool HasKeyFloppyCheck(HMODULE lib) {
    return BindFromHandle<checkVntFile_fn>(lib, vantrel::kCheckVntFile.name) != nullptr;
}

LibResult CheckKeyFloppyPath(HMODULE lib, const char* path) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] lib=%p path=%s", lib, path ? path : "(null)");
    return Traced(CallLibrary(lib, vantrel::kCheckVntFile, path, 0, kKeyFloppyMaxFile));
}

LibResult ReadVntUser(HMODULE lib, VntUserData* record) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] lib=%p", lib);
    if (record == nullptr)
        return Traced({});
    return Traced(CallLibrary(lib, vantrel::kGetVntUserSetting, record));
}

LibResult WriteVntUser(HMODULE lib, VntUserData* record) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] lib=%p", lib);
    if (record == nullptr)
        return Traced({});
    return Traced(CallLibrary(lib, vantrel::kSetVntUserSetting, record));
}

LibResult SelectedDeliveryLibrary(HMODULE vntutil, char* name, int size) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] vntutil=%p size=%d", vntutil, size);
    if (name == nullptr)
        return Traced({});
    return Traced(CallLibrary(vntutil, vantrel::kVNTGetSelectedDllName, name, size));
}

LibResult CallDeliveryEntry(HMODULE delivery, const char* entry, char** errorText,
                            const char* kind) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] delivery=%p entry=%s kind=%s", delivery,
              entry ? entry : "(null)", kind ? kind : "(null)");
    const LibFunction<GUIVntReport_fn> fn{entry, libresult::Any};
    return Traced(CallLibrary(delivery, fn, errorText, kind));
}

LibResult ClearServiceSetup(HMODULE srvinfo) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] srvinfo=%p", srvinfo);
    return Traced(CallLibrary(srvinfo, vantrel::kVXClearEMPInfoData));
}
