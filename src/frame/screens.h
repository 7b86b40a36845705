// What the screen families offer one another and the main menu: the entry point of every screen
// opened from outside its own family, and the tables that several families share. A family
// includes this header and frame's, never another family's.
#pragma once

#include <zolwin.h>

#include "records.h"

// ---- Screens entered from the main menu; each returns when its screen closes ----
void BaseSetting(HMODULE rptsetLib);                            // src/baseset
void DestinationSetting(HMODULE rptsetLib, HMODULE dscopyLib);  // src/destination
void AgentEventSetting(HMODULE rptsetLib);                      // src/monitor
void SyslogSetting(HMODULE rptsetLib, HMODULE dscopyLib);       // src/monitor
void VantrelReportSetting(HMODULE rptsetLib);                   // src/remote

// ---- Remote report service screens other families open (src/remote) ----
// The data screens of the service's menu; each returns when its screen closes.
void VantrelUserSetting(HMODULE rptsetLib);
void VantrelUserSettingNext(HMODULE rptsetLib);
void VantrelMachineSetting(HMODULE rptsetLib);
void VantrelVendorSetting(HMODULE rptsetLib);
void VantrelOptionSetting(HMODULE rptsetLib);

// The suppression dialog. 0 when nothing failed (also after Cancel); the failing set call's
// result when saving failed; -1, without showing anything, when a pointer is unbound or a
// stored value is out of range.
int vntSuppressSet();

// The remote report service's internet-mail destination, edited together with its destination
// record (the ID editor's record): 0, or -1 when its settings cannot be read (after the box).
int InternetMailSetting(DestData* record, HMODULE rptsetLib);
// The settings screens of the service's delivery methods, which its base screen opens before it
// switches the service on by that method. Each answers 1 when OK stored its settings, 0 when it
// was left without storing, -1 when its settings cannot be read (after the box).
// The manager of the via-manager method, its address and port.
int ViaFWManagerSet(HMODULE rptsetLib);
// The dial-up method: the service centre's numbers, user ID, serial line, dial mode, redial.
int VantrelDialUpSetting(HMODULE rptsetLib);
// The HTTPS method: the two URLs, the continuation switch and the proxy ("vnthttps.dll").
int VantrelHTTPSSetting(HMODULE rptsetLib);

// ---- The destination table (src/destination), read by the destination and event screens ----

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
int InitialDS(HMODULE rptsetLib);

// Frees the table, allocates DEST_MAX_RECORDS fresh records and fills them through
// "GetAllDestSetting". Returns the number of records, or -1 (the table then empty).
int InitAllDestSetting(HMODULE rptsetLib);

// Frees every record of CPDestData and clears the table and its counts.
void FreeDestTable();

// TRUE for the IDs the library keeps for its own use and the lists never show (exact match,
// case included).
BOOL IsHiddenDestID(const char* id);

// ---- The destination-ID selection list of the event screens (src/monitor) ----

// Head of the list; null when it has not been built or holds nothing.
extern IDListNode* IDList;

// Rebuilds IDList from the listed destination IDs (DestList, szIDnum): one node per ID in order,
// report flag 0, index 0 upwards. The earlier list is freed first. 0 on success; -1 when an
// allocation fails, and then the list is empty.
int GetReportIDformReg(HMODULE rptsetLib);

// Frees the whole list and sets IDList to null.
void FreeReportID();
