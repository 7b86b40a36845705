// Storage of the agent event catalogue and of the syslog monitoring items, shared by the exports
// of both families. One key per source under the catalogue's root, one subkey per event ID, the
// destination IDs an event reports to as values of its "Dest" subkey (docs/registry.md, "Agent
// event catalogue (rptset.dll)" and "Syslog monitoring items (rptset.dll)").
#pragma once

#include <zolwin.h>

#include <cstddef>
#include <cstdint>

#include "records.h"
#include "regpaths.h"

namespace rptset::monitor {

constexpr const char* kAgentEventRoot = ZOL_KEY_AGENTEVENT;
constexpr const char* kSyslogRoot = ZOL_KEY_SYSLOG;
constexpr const char* kIDListKey = ZOL_KEY_ID_LIST;
constexpr const char* kDestSubkey = "Dest";

// Results of the writers, as the screens read them.
constexpr int kWritten = 0;
constexpr int kFailed = -1;             // bad record, no such event/item, store failure
constexpr int kNoSuchDestination = -2;  // lplpszDestID[0] is not a destination ID

// ---- Checks of record fields (plain functions, no store) ----

// The field of size bytes holds its terminator.
bool IsTerminated(const char* field, std::size_t size);
// A text usable as one key name: terminated within size bytes, 1 to ZOL_MAX_KEY_NAME
// characters, no backslash (which would name a deeper key).
bool IsKeyName(const char* field, std::size_t size);
// A destination ID as the writers take it in lplpszDestID[0]: a non-empty text terminated within
// its DEST_TEXT_SIZE buffer.
bool IsDestinationID(const char* id);
// The event ID form the add dialog accepts: 8 characters, the first '4', '8', 'c' or 'C', then
// seven hexadecimal digits.
bool IsAddableEventID(const char* id);
// Ranges of the numeric fields.
bool IsAction(uint32_t value);    // 0 to 2
bool IsErrKind(uint32_t value);   // 1, 2, 3, 4, 6 (0 on writing: keep what is stored)
bool IsLevel(uint32_t value);     // 0 to 8
bool IsCount(uint32_t value);     // 0 to INT32_MAX
bool IsHourMask(uint32_t value);  // bits 0-23 only

// ---- Readers and writers of both record types (AgentEventData, SyslogData) ----

// The whole catalogue: 0, or -1 with nothing handed back.
template <class Record>
int ReadCatalogue(Record*** records, int* count, int* numSN, int* numEvntID);
// One event/item (or "All"): 0, or non-zero with the record unchanged.
template <class Record>
int ReadOne(Record* record);
// Settings and the report flag of lplpszDestID[0] for one event/item.
template <class Record>
int WriteOne(Record* record, int changed);
// The report flag of lplpszDestID[0] for every event/item of the record's source.
template <class Record>
int WriteFlagForSource(Record* record);

// ---- Store helper the syslog exports share ----

// Stored spelling of subkey `name` of key (compared without regard to case) into out
// (ZOL_MAX_KEY_NAME + 1 bytes): ERROR_FILE_NOT_FOUND when there is none.
LONG FindSubkey(HKEY key, const char* name, char* out);

}  // namespace rptset::monitor
