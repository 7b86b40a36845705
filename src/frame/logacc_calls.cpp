// Loading "logacc.dll" and its one call the program makes.
#include "frame/logacc_calls.h"

#include <cstdio>
#include <cstring>

#include "frame/libraries.h"

HMODULE hLibLOGACC = nullptr;

namespace {

// Size of the product root and library path buffers.
constexpr DWORD kPathSize = 128;
// The only kind of removal: by destination ID.
constexpr int kDeleteByID = 1;

}  // namespace

BOOL LoadLogaccDLL() {
    ZOL_TRACE(TRACE_LEVEL_TRACE, ">");
    char root[kPathSize] = {};
    const DWORD needed = ExpandEnvironmentStrings("%ZolDir%", root, kPathSize);
    // A root cut to fit the buffer would name another folder: as bad as none.
    if (needed == 0 || needed > kPathSize) {
        ShowFuncCallErr("ExpandEnvironmentStrings");
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<ExpandEnvironmentStrings failed.return FALSE.");
        return FALSE;
    }
    FreeLogaccDLL();
    char path[kPathSize + 32] = {};
    std::snprintf(path, sizeof path, "%s/lib/%s", root, "logacc.dll");
    hLibLOGACC = LoadLibrary(path);
    if (hLibLOGACC == nullptr) {
        ShowFuncCallErr("LoadLibrary");
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<LoadLibrary for logacc.dll failed.return FALSE.");
        return FALSE;
    }
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<return TRUE.");
    return TRUE;
}

BOOL FreeLogaccDLL() {
    if (hLibLOGACC != nullptr) {
        FreeLibrary(hLibLOGACC);
        ZOL_TRACE(TRACE_LEVEL_TRACE, "<logacc.dll released.");
    }
    hLibLOGACC = nullptr;
    return TRUE;
}

LibResult DeleteIDFromAllLogs(HMODULE lib, const char* id) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] lib=%p id=%s", lib, id != nullptr ? id : "(null)");
    if (id == nullptr)
        return {};
    const LibResult r = CallLibrary(lib, logacc::kDeleteIDAndGIDAtAllLog, kDeleteByID,
                                    static_cast<int>(std::strlen(id)), id, 0, nullptr, 0);
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<return %d.", r.value);
    return r;
}
