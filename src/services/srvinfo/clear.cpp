// SRVINFO.DLL: after the stop report, every set-up value of the remote report service goes back
// to what it held before a key floppy was read, in one transaction: the service then counts as
// never set up and asks for a key floppy again, and a failure leaves the old set-up whole.
#include <zolwin.h>
#include <zolwin_transaction.h>

#include <charconv>
#include <cstring>
#include <type_traits>

#include "srvinfo_api.h"
#include "store.h"
#include "vntinit_table.h"

namespace {

// Writes one row's initial value (creating its key when it is missing): ERROR_SUCCESS or why not.
LONG WriteInitialValue(const VntInitRow& row) {
    if (row.type == REG_SZ)
        return vntcore::WriteText(row.key, row.name, row.value);
    if (row.type != REG_DWORD)
        return ERROR_INVALID_PARAMETER;
    DWORD number = 0;
    const char* end = row.value + std::strlen(row.value);
    const auto [ptr, ec] = std::from_chars(row.value, end, number);
    if (ec != std::errc() || ptr != end)
        return ERROR_INVALID_PARAMETER;
    return vntcore::WriteDword(row.key, row.name, number);
}

}  // namespace

extern "C" ZOLWIN_API int VX_Clear_EMP_info_Data(void) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, ">");
    zolwin::Transaction transaction;
    if (transaction.status() != ERROR_SUCCESS) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<transaction not begun (%d).return 0.", transaction.status());
        return 0;
    }
    for (const VntInitRow* row = kVntInitRows; row->key[0] != '\0'; ++row) {
        if (const LONG rc = WriteInitialValue(*row); rc != ERROR_SUCCESS) {
            ZOL_TRACE(TRACE_LEVEL_ERROR, "<write of %s\\%s failed (%d).return 0.", row->key,
                      row->name, rc);
            return 0;
        }
    }
    // The options held go back to the single option OPTCDN of the table: the list of further
    // options (rptset.dll) ends with the set-up.
    if (const LONG rc = vntcore::DeleteValue(vntcore::kSettingKey, "OPTCDNLIST");
        rc != ERROR_SUCCESS) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<delete of OPTCDNLIST failed (%d).return 0.", rc);
        return 0;
    }
    if (const LONG rc = transaction.commit(); rc != ERROR_SUCCESS) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<commit failed (%d).return 0.", rc);
        return 0;
    }
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<return 1.");
    return 1;
}
static_assert(std::is_same_v<decltype(VX_Clear_EMP_info_Data), VX_Clear_EMP_info_Data_fn>);
