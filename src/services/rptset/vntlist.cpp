// rptset.dll: the lists the remote report service's screens choose from, kept as numbered values
// under SOFTWARE\Tavik\VNTService\LIST (docs/registry.md, "Remote report service records and
// lists"). The distributor list is read by GetVntVendSetting together with the vendor record.
#include <zolwin.h>

#include <string>
#include <type_traits>
#include <vector>

#include "regvalue.h"
#include "rptset_api.h"
#include "vntstore.h"

namespace {

// Fills names (max buffers) from the list at keyPath under one read transaction.
int GetList(const char* keyPath, int max, char** names, int* count) {
    if (names == nullptr || count == nullptr) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<[IN]Param error.return 0.");
        return 0;
    }
    std::vector<std::string> list;
    zolwin::Transaction transaction;
    const bool read =
        transaction.status() == ERROR_SUCCESS && rptset::vnt::ReadList(keyPath, max, &list);
    transaction.commit();
    if (!read) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<read of %s failed.return 0.", keyPath);
        return 0;
    }
    if (!rptset::vnt::FillNames(list, names, count)) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<[IN]Param error.return 0.");
        return 0;
    }
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<return 1. count=%d", *count);
    return 1;
}

}  // namespace

extern "C" ZOLWIN_API int GetVntMachListData(char** names, int* count) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, ">");
    return GetList(rptset::vnt::kOSListKey, VNT_OS_LIST_MAX, names, count);
}
static_assert(std::is_same_v<decltype(GetVntMachListData), GetVntMachListData_fn>);

extern "C" ZOLWIN_API int GetVntOptKindList(char** names, int* count) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, ">");
    return GetList(rptset::vnt::kOptionListKey, VNT_OPTION_LIST_MAX, names, count);
}
static_assert(std::is_same_v<decltype(GetVntOptKindList), GetVntOptKindList_fn>);

extern "C" ZOLWIN_API int GetVntOptKindDesc(char** texts, int* count) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, ">");
    return GetList(rptset::vnt::kOptionDescKey, VNT_OPTION_LIST_MAX, texts, count);
}
static_assert(std::is_same_v<decltype(GetVntOptKindDesc), GetVntOptKindDesc_fn>);
