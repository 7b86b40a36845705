// Wrappers of the report-settings library's base-setting, trap and remote-report-method
// functions. The call layer traces a missing function or a failed call; each wrapper adds its
// entry and exit lines and turns the outcome into the result its callers have always had.
#include "frame/rptset_calls.h"

#include <cstdlib>

BaseData** CPAllBaseData = nullptr;
int numBaseData = 0;
char g_szAMBaseRegPath[BASE_REG_PATH_SIZE] = {};
AMBIBaseData g_AMBIBaseData = {};

namespace {

// The remote-report method wrappers refuse a missing handle before anything is bound.
bool HandleMissing(HMODULE lib, int result) {
    if (lib != nullptr)
        return false;
    ZOL_TRACE(TRACE_LEVEL_ERROR, "<hLibRPTSET ==NULL.return %d [0:success -1:failure].", result);
    return true;
}

// The exit line of a wrapper that passes a library's result on.
int ReturnResult(const LibResult& r, int whenUnbound) {
    const int result = r.unbound() ? whenUnbound : r.value;
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<return %d.", result);
    return result;
}

BOOL ReturnBool(const LibResult& r) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<return %s.", r ? "TRUE" : "FALSE");
    return r ? TRUE : FALSE;
}

}  // namespace

void FreeAllBaseSetting() {
    if (CPAllBaseData != nullptr) {
        for (int i = 0; i < numBaseData; ++i)
            std::free(CPAllBaseData[i]);
        std::free(CPAllBaseData);
    }
    CPAllBaseData = nullptr;
    numBaseData = 0;
}

BOOL InitAllBaseSetting(HMODULE lib) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] lib=%p", lib);
    FreeAllBaseSetting();
    BaseData** records = nullptr;
    int count = 0;
    const LibResult r = CallLibrary(lib, rptset::kGetAllBaseSetting, &records, &count);
    // Whatever a failed call left behind is not ours to trust; the menu stays empty.
    if (r) {
        CPAllBaseData = records;
        numBaseData = records != nullptr && count > 0 ? count : 0;
    }
    return ReturnBool(r);
}

int InitBaseSetting(HMODULE lib, BaseData* record) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] lib=%p", lib);
    if (record == nullptr)
        return ReturnResult({}, -1);
    return ReturnResult(CallLibrary(lib, rptset::kGetBaseSetting, record), -1);
}

BOOL PutBaseSetting(HMODULE lib, BaseData* record) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] lib=%p", lib);
    if (record == nullptr)
        return ReturnBool({});
    return ReturnBool(CallLibrary(lib, rptset::kSetBaseSetting, record));
}

BOOL InitIMBaseRegPath(HMODULE lib) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] lib=%p", lib);
    const LibResult r = CallLibrary(lib, rptset::kAMAMGetBaseRegPath, g_szAMBaseRegPath);
    // The library writes at most BASE_REG_PATH_SIZE bytes; keep the text terminated whatever.
    g_szAMBaseRegPath[sizeof g_szAMBaseRegPath - 1] = '\0';
    return ReturnBool(r);
}

BOOL CheckIMMode(HMODULE lib) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] lib=%p", lib);
    return ReturnBool(CallLibrary(lib, rptset::kCheckInternetMailMode));
}

BOOL InitIMBaseSetting(HMODULE lib) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] lib=%p", lib);
    return ReturnBool(
        CallLibrary(lib, rptset::kGetAMBIBaseSetting, &g_AMBIBaseData, g_szAMBaseRegPath));
}

int SetIMBaseSetting(HMODULE lib) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] lib=%p", lib);
    return ReturnResult(
        CallLibrary(lib, rptset::kSetAMBIBaseSetting, &g_AMBIBaseData, g_szAMBaseRegPath), 0);
}

int GetTrapSetting(HMODULE lib, int* count, char** list) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] lib=%p", lib);
    return ReturnBool(CallLibrary(lib, rptset::kGetTrapDest, count, list));
}

int SetTrapSetting(HMODULE lib, int count, char** list) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] lib=%p count=%d", lib, count);
    return ReturnBool(CallLibrary(lib, rptset::kSetTrapDest, count, list));
}

int DelTrapSetting(HMODULE lib, int* count, const char* address, char** list) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] lib=%p address=%s", lib, address ? address : "(null)");
    return ReturnBool(CallLibrary(lib, rptset::kDelDest, count, address, list));
}

int GetVntMethod(HMODULE lib, int* method) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] lib=%p", lib);
    if (HandleMissing(lib, -1) || method == nullptr)
        return -1;
    return ReturnResult(CallLibrary(lib, rptset::kAMGetVntMethod, method), -1);
}

int SetVntMethod(HMODULE lib, int method) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] lib=%p method=%d", lib, method);
    if (HandleMissing(lib, -1))
        return -1;
    return ReturnResult(CallLibrary(lib, rptset::kAMSetVntMethod, method), -1);
}

int ResetOpenSet(HMODULE lib) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] lib=%p", lib);
    if (HandleMissing(lib, -1))
        return -1;
    return ReturnResult(CallLibrary(lib, rptset::kAMResetOpenSet), -1);
}

int szGetEOpening(HMODULE lib) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] lib=%p", lib);
    if (HandleMissing(lib, 0))
        return 0;
    return ReturnResult(CallLibrary(lib, rptset::kGetEOpening), 0);
}
