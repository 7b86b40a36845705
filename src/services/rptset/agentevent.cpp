// rptset.dll: the agent event catalogue and the per-event report settings. Storage and checks are
// shared with the syslog items (monitor_store.h); this unit is the agent events' entry points.
#include <zolwin.h>

#include <type_traits>

#include "monitor_store.h"
#include "rptset_api.h"

namespace monitor = rptset::monitor;

// The whole catalogue, sources and then their event IDs in the store's order of names (ASCII
// letters folded to lower case, then byte order). numSN is one more than the sources that have
// events, numEvntID one more than the events of the largest source. An empty catalogue is a
// success with *records null and *count 0.
extern "C" ZOLWIN_API int GetAllAgntSetting(AgentEventData*** records, int* count, int* numSN,
                                            int* numEvntID) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, ">");
    const int rc = monitor::ReadCatalogue(records, count, numSN, numEvntID);
    if (rc != 0) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<return %d.", rc);
        return rc;
    }
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<return 0. count=%d numSN=%d numEvntID=%d", *count, *numSN,
              *numEvntID);
    return 0;
}
static_assert(std::is_same_v<decltype(GetAllAgntSetting), GetAllAgntSetting_fn>);

// One event: 0, 2 when there is no such event, -1 for a bad record or a failed read (the record
// is unchanged then). For the event ID "All" it succeeds when the source exists, with no
// destination IDs, empty trap name, the unset handling-method marker and zero numbers.
extern "C" ZOLWIN_API int GetAgntSetting(AgentEventData* record) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, ">");
    const int rc = monitor::ReadOne(record);
    ZOL_TRACE(rc == 0 ? TRACE_LEVEL_TRACE : TRACE_LEVEL_ERROR, "<return %d.", rc);
    return rc;
}
static_assert(std::is_same_v<decltype(GetAgntSetting), GetAgntSetting_fn>);

// Action, ErrKind (0 keeps the stored kind), Level, DealMethod (only when changed is 1) and the
// report flag of lplpszDestID[0], in one transaction.
extern "C" ZOLWIN_API int SetAgntSetting(AgentEventData* record, int changed) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> changed=%d", changed);
    const int rc = monitor::WriteOne(record, changed);
    ZOL_TRACE(rc == 0 ? TRACE_LEVEL_TRACE : TRACE_LEVEL_ERROR, "<return %d.", rc);
    return rc;
}
static_assert(std::is_same_v<decltype(SetAgntSetting), SetAgntSetting_fn>);

// The report flag of lplpszDestID[0] for every event of the source, in one transaction: -1 for a
// bad record, no such source or an event that would exceed 50 IDs, -2 for no such destination.
extern "C" ZOLWIN_API int SetAgntDataForSN(AgentEventData* record) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, ">");
    const int rc = monitor::WriteFlagForSource(record);
    ZOL_TRACE(rc == 0 ? TRACE_LEVEL_TRACE : TRACE_LEVEL_ERROR, "<return %d.", rc);
    return rc;
}
static_assert(std::is_same_v<decltype(SetAgntDataForSN), SetAgntDataForSN_fn>);
