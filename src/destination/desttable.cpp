// Loading the destination table from the report-settings library and listing its IDs.
#include "frame/screens.h"

#include <cstdlib>
#include <cstring>
#include <string_view>

#include "frame/libraries.h"

DestData* CPDestData[DEST_MAX_RECORDS] = {};
int IDnum = 0;
char DestDispTable[DEST_MAX_RECORDS][kDestDisplaySize] = {};
char DestList[DEST_MAX_RECORDS][DEST_TEXT_SIZE] = {};
int szIDnum = 0;

namespace {

// IDs the library keeps for the syslog monitor, the critical error log and the remote report
// service's delivery methods.
constexpr std::string_view kHiddenIDs[] = {
    "SYSLOG",
    "CRITICAL ERROR LOG",
    "VANTRELREPORT(INTERNET MAIL)",
    "VANTRELREPORT(DIAL-UP)",
    "VANTRELREPORT(TRANSTOMANAGER)",
    "VANTRELREPORT(HTTPS)",
};

// Copies src into a buffer of size bytes, cut to size - 1 bytes.
void CopyCut(char* dst, std::size_t size, const char* src) {
    const std::size_t n = strnlen(src, size - 1);
    std::memcpy(dst, src, n);
    dst[n] = '\0';
}

void ClearListedIDs() {
    std::memset(DestDispTable, 0, sizeof DestDispTable);
    std::memset(DestList, 0, sizeof DestList);
    szIDnum = 0;
}

}  // namespace

BOOL IsHiddenDestID(const char* id) {
    if (id == nullptr)
        return FALSE;
    for (std::string_view hidden : kHiddenIDs) {
        if (hidden == id)
            return TRUE;
    }
    return FALSE;
}

void FreeDestTable() {
    for (DestData*& record : CPDestData) {
        std::free(record);
        record = nullptr;
    }
    IDnum = 0;
    ClearListedIDs();
}

int InitAllDestSetting(HMODULE rptsetLib) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] hLibRPTSET=%p", rptsetLib);
    auto* pGetAllDestSetting = BindFromHandle<GetAllDestSetting_fn>(rptsetLib, "GetAllDestSetting");
    if (pGetAllDestSetting == nullptr) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<Get GetAllDestSetting Address Failed,return -1.");
        return -1;
    }

    // Each reload starts from fresh records; the previous ones go first.
    FreeDestTable();
    for (int i = 0; i < DEST_MAX_RECORDS; ++i) {
        CPDestData[i] = static_cast<DestData*>(std::calloc(1, sizeof(DestData)));
        if (CPDestData[i] == nullptr) {
            ZOL_TRACE(TRACE_LEVEL_FAILURE, "malloc fPDestData[%d] failed.", i);
            FreeDestTable();
            return -1;
        }
    }

    int count = 0;
    const int rc = pGetAllDestSetting(CPDestData, &count);
    // A count the table cannot hold is as much a failure as an error result.
    if (rc != 0 || count < 0 || count > DEST_MAX_RECORDS) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "pGetAllDestSetting failed.");
        FreeDestTable();
        return -1;
    }
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<return %d.", count);
    return count;
}

int InitialDS(HMODULE rptsetLib) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] hLibRPTSET=%p", rptsetLib);
    if (rptsetLib == nullptr) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<hLibRPTSET is NULL.return -1.");
        return -1;
    }
    const int count = InitAllDestSetting(rptsetLib);
    if (count == -1) {
        ShowFuncCallErr("InitAllDestSetting");
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<InitAllDestSetting failed.return -1.");
        return -1;
    }

    IDnum = count;
    ClearListedIDs();
    int listed = 0;
    for (int i = 0; i < IDnum; ++i) {
        const char* id = CPDestData[i]->ID;
        if (IsHiddenDestID(id))
            continue;
        CopyCut(DestDispTable[listed], kDestDisplaySize, id);
        CopyCut(DestList[listed], DEST_TEXT_SIZE, id);
        ++listed;
    }
    szIDnum = listed;
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<return 0.");
    return 0;
}
