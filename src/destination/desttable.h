// The destination table: every destination record of the report-settings library, loaded by
// InitialDS before the destination and event screens, and the IDs those screens list.
#pragma once

#include <zolwin.h>

#include "records.h"

// Size of one entry of the display table (the IDs shown in list boxes), terminator included.
inline constexpr int kDestDisplaySize = 100;

// The records the library returned, hidden IDs included; entries from IDnum on are allocated but
// hold no destination. Freed by FreeDestTable.
extern DestData* CPDestData[DEST_MAX_RECORDS];
// How many records the library returned.
extern int IDnum;
// The listed IDs (hidden ones skipped), in the library's order: cut to fit for display ...
extern char DestDispTable[DEST_MAX_RECORDS][kDestDisplaySize];
// ... and whole.
extern char DestList[DEST_MAX_RECORDS][DEST_TEXT_SIZE];
// How many IDs are listed.
extern int szIDnum;

// Reloads the table through "GetAllDestSetting" and rebuilds the listed IDs. 0 on success; -1
// when the handle is missing or the load fails (after the "InitAllDestSetting" error box), and
// then the table is empty.
int InitialDS(HMODULE hLibRPTSET);

// Frees the table, allocates DEST_MAX_RECORDS fresh records and fills them through
// "GetAllDestSetting". Returns the number of records, or -1 (the table then empty).
int InitAllDestSetting(HMODULE hLibRPTSET);

// Frees every record of CPDestData and clears the table and its counts.
void FreeDestTable();

// TRUE for the IDs the library keeps for its own use and the lists never show (exact match,
// case included).
BOOL IsHiddenDestID(const char* id);
