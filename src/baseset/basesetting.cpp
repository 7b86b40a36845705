// The base-setting menu and the wrappers through which the base settings, the internet-mail base
// record and the remote report method are read and written in the report-settings library.
#include <cstdlib>
#include <cstring>

#include "baseset/baseset.h"
#include "frame/libraries.h"

BaseData** CPAllBaseData = nullptr;
int numBaseData = 0;
char g_szAMBaseRegPath[BASE_REG_PATH_SIZE] = {};
AMBIBaseData g_AMBIBaseData = {};

// ---- Wrappers ----
// Trace texts of a missing function ("<Gets ... Address Failed") and of a failed call ("<Calls
// ... Function Failed") end with what the wrapper returns.

void FreeAllBaseSetting() {
    if (CPAllBaseData != nullptr) {
        for (int i = 0; i < numBaseData; ++i)
            std::free(CPAllBaseData[i]);
        std::free(CPAllBaseData);
    }
    CPAllBaseData = nullptr;
    numBaseData = 0;
}

BOOL InitAllBaseSetting(HMODULE hLibRPTSET) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] hLibRPTSET=%p", hLibRPTSET);
    FreeAllBaseSetting();
    auto* pGetAllBaseSetting = BindRptset<GetAllBaseSetting_fn>(hLibRPTSET, "GetAllBaseSetting");
    if (pGetAllBaseSetting == nullptr) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<Gets GetAllBaseSetting  Address Failed.return FALSE.");
        return FALSE;
    }
    BaseData** records = nullptr;
    int count = 0;
    if (pGetAllBaseSetting(&records, &count) != 0) {
        // Whatever a failed call left behind is not ours to trust; the menu stays empty.
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<Calls GetAllBaseSetting  Function Failed.return FALSE.");
        return FALSE;
    }
    CPAllBaseData = records;
    numBaseData = records != nullptr && count > 0 ? count : 0;
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<return TRUE. numBaseData=%d", numBaseData);
    return TRUE;
}

int InitBaseSetting(HMODULE hLibRPTSET, BaseData* record) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] hLibRPTSET=%p", hLibRPTSET);
    auto* pGetBaseSetting = BindRptset<GetBaseSetting_fn>(hLibRPTSET, "GetBaseSetting");
    if (pGetBaseSetting == nullptr || record == nullptr) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<Gets GetBaseSetting  Address Failed.return %d.", -1);
        return -1;
    }
    const int result = pGetBaseSetting(record);
    if (result != 0) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<Calls GetBaseSetting  Function Failed.return %d.", result);
        return result;
    }
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<return %d.", result);
    return result;
}

BOOL PutBaseSetting(HMODULE hLibRPTSET, BaseData* record) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] hLibRPTSET=%p", hLibRPTSET);
    auto* pSetBaseSetting = BindRptset<SetBaseSetting_fn>(hLibRPTSET, "SetBaseSetting");
    if (pSetBaseSetting == nullptr || record == nullptr) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<Gets SetBaseSetting  Address Failed.return FALSE.");
        return FALSE;
    }
    if (pSetBaseSetting(record) != 0) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<Calls SetBaseSetting  Function Failed.return FALSE.");
        return FALSE;
    }
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<return TRUE.");
    return TRUE;
}

BOOL InitIMBaseRegPath(HMODULE hLibRPTSET) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] hLibRPTSET=%p", hLibRPTSET);
    auto* pGetPath = BindRptset<AMAMGetBaseRegPath_fn>(hLibRPTSET, "AMAMGetBaseRegPath");
    if (pGetPath == nullptr) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<Gets AMAMGetBaseRegPath  Address Failed.return FALSE.");
        return FALSE;
    }
    if (pGetPath(g_szAMBaseRegPath) != 1) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<Calls AMAMGetBaseRegPath  Function Failed.return FALSE.");
        return FALSE;
    }
    // The library writes at most BASE_REG_PATH_SIZE bytes; keep the text terminated whatever.
    g_szAMBaseRegPath[sizeof g_szAMBaseRegPath - 1] = '\0';
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<return TRUE. path=%s", g_szAMBaseRegPath);
    return TRUE;
}

BOOL CheckIMMode(HMODULE hLibRPTSET) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] hLibRPTSET=%p", hLibRPTSET);
    auto* pCheck = BindRptset<CheckInternetMailMode_fn>(hLibRPTSET, "CheckInternetMailMode");
    if (pCheck == nullptr) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<Gets CheckInternetMailMode Address Failed.return FALSE.");
        return FALSE;
    }
    if (pCheck() == 0) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<Calls CheckInternetMailMode Function Failed.return FALSE.");
        return FALSE;
    }
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<return TRUE.");
    return TRUE;
}

BOOL InitIMBaseSetting(HMODULE hLibRPTSET) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] hLibRPTSET=%p", hLibRPTSET);
    auto* pGet = BindRptset<GetAMBIBaseSetting_fn>(hLibRPTSET, "GetAMBIBaseSetting");
    if (pGet == nullptr) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<Gets GetAMBIBaseSetting  Address Failed.return FALSE.");
        return FALSE;
    }
    if (pGet(&g_AMBIBaseData, g_szAMBaseRegPath) != 1) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<Calls GetAMBIBaseSetting  Function Failed.return FALSE.");
        return FALSE;
    }
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<return TRUE.");
    return TRUE;
}

int SetIMBaseSetting(HMODULE hLibRPTSET) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] hLibRPTSET=%p", hLibRPTSET);
    auto* pSet = BindRptset<SetAMBIBaseSetting_fn>(hLibRPTSET, "SetAMBIBaseSetting");
    if (pSet == nullptr) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<Gets SetAMBIBaseSetting  Address Failed.return %d.", 0);
        return 0;
    }
    const int result = pSet(&g_AMBIBaseData, g_szAMBaseRegPath);
    if (result != 1) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<Calls SetAMBIBaseSetting  Function Failed.return %d.",
                  result);
        return result;
    }
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<return %d.", result);
    return result;
}

// The remote report method wrappers return the library's result: 0 success, -1 failure.

int GetVntMethod(HMODULE hLibRPTSET, int* method) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] hLibRPTSET=%p", hLibRPTSET);
    if (hLibRPTSET == nullptr || method == nullptr) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<hLibRPTSET ==NULL.return %d [0:success -1:failure].", -1);
        return -1;
    }
    auto* pGet = BindRptset<AMGetVntMethod_fn>(hLibRPTSET, "AMGetVntMethod");
    if (pGet == nullptr) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<Gets AMGetVntMethod  Address Failed.return %d.", -1);
        return -1;
    }
    const int result = pGet(method);
    if (result != 0) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<Calls AMGetVntMethod  Function Failed.return %d.", result);
        return result;
    }
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<return %d. method=%d", result, *method);
    return result;
}

int SetVntMethod(HMODULE hLibRPTSET, int method) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] hLibRPTSET=%p method=%d", hLibRPTSET, method);
    if (hLibRPTSET == nullptr) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<hLibRPTSET ==NULL.return %d [0:success -1:failure].", -1);
        return -1;
    }
    auto* pSet = BindRptset<AMSetVntMethod_fn>(hLibRPTSET, "AMSetVntMethod");
    if (pSet == nullptr) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<Gets AMSetVntMethod  Address Failed.return %d.", -1);
        return -1;
    }
    const int result = pSet(method);
    if (result != 0) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<Calls AMSetVntMethod  Function Failed.return %d.", result);
        return result;
    }
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<return %d.", result);
    return result;
}

int ResetOpenSet(HMODULE hLibRPTSET) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] hLibRPTSET=%p", hLibRPTSET);
    if (hLibRPTSET == nullptr) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<hLibRPTSET ==NULL.return %d [0:success -1:failure].", -1);
        return -1;
    }
    auto* pReset = BindRptset<AMResetOpenSet_fn>(hLibRPTSET, "AMResetOpenSet");
    if (pReset == nullptr) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<Gets AMResetOpenSet  Address Failed.return %d.", -1);
        return -1;
    }
    const int result = pReset();
    if (result != 0) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<Calls AMResetOpenSet  Function Failed.return %d.", result);
        return result;
    }
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<return %d.", result);
    return result;
}

int szGetEOpening(HMODULE hLibRPTSET) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] hLibRPTSET=%p", hLibRPTSET);
    if (hLibRPTSET == nullptr) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<hLibRPTSET ==NULL.return %d [0:success -1:failure].", 0);
        return 0;
    }
    auto* pGet = BindRptset<GetEOpening_fn>(hLibRPTSET, "GetEOpening");
    if (pGet == nullptr) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<Gets GetEOpening  Address Failed.return %d.", 0);
        return 0;
    }
    const int result = pGet();
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<return %d.", result);
    return result;
}
