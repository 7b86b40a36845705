// The remote report service's own menu and what it runs: reading the key floppy (first reading
// and reopen), ending the service with a stop report, and the customer pages with their
// newt-free checks.
#pragma once

#include <zolwin.h>

#include <cstddef>
#include <string>

#include "records.h"
#include "vntinit_table.h"

// ---- Key floppy ----

// Longest key-floppy path, in characters; g_fdPath holds it and its terminator.
inline constexpr int kFdPathMax = 512;
// The key floppy's path, cleared at the start of every visit of the service menu.
extern char g_fdPath[kFdPathMax + 1];
// Where the path dialog starts when no floppy is mounted.
inline constexpr const char* kDefaultFdPath = "/tmp/vntfd";
inline constexpr const char* kMountTable = "/etc/mtab";

// The mount directory of the first mount-table entry whose directory contains "floppy", copied
// into buffer (size characters and a terminator), cut to size characters when longer. The
// number of characters copied; 0 when none is mounted or the table cannot be read.
int getFloppyMountPoint(char* buffer, int size, const char* mountTable = kMountTable);
// Removes one trailing "/" unless the path is just "/".
void cutPathTail(char* path);
// Asks for the key floppy's path into buffer (size characters and a terminator), with
// "checkVntFile" of lib judging it: 1 when a checked path is in buffer, 0 when cancelled or
// not possible.
int SetFDPathWin(char* buffer, int size, HMODULE lib);
// "GetOpenMsgfromFD" of g_fdPath: 0 the call failed, 100 or 200 the file is not valid, 300 the
// path is not valid, anything else read and stored.
int GetKeyFDmsg(HMODULE lib);

// The service's set-up values and their initial values (shared with SRVINFO.DLL), in order, then
// an end row with an empty key.
inline constexpr const VntInitRow* InitFDRegList = kVntInitRows;
// Writes every row of InitFDRegList back to its initial value, row by row (what was written
// stays when a later row fails): 0 all written; -2 the row "InstVantrelKeyFD" could not be
// opened or written; -1 any other failure.
int InitKeyFDmsg();
// Reads a new key floppy: 1 cancelled, 0 done, -1 failed (the menu closes), -2 the store could
// not be reset.
int VantrelReopen(HMODULE lib);

// ---- Ending the service ----

// The outcome of the last stop report (0 sent, 1 may be tried again, others failed) and the
// delivery library's error text (malloc'd by the library, null when it gave none).
extern DWORD m_dwResult;
extern char* m_lpszErrMsg;
// The library LoadDLL loaded last; null while none is loaded.
extern HMODULE hLib;
// Loads "<product root>/lib/<name>" into hLib: TRUE, or FALSE for an empty name, a product root
// that cannot be found or a library that does not load.
BOOL LoadDLL(const char* name);
// Sends the stop report through the delivery method's library, asking whether to try again when
// it may be, and reports the outcome; after a sent report SRVINFO.DLL clears the set-up.
void StopService(HMODULE lib);
// One stop report: sets m_dwResult and m_lpszErrMsg.
void DoReport(HMODULE lib);

// ---- Customer data ----

// What the two customer pages edit, as typed (texts in the program's encoding).
struct CustomerPage1 {
    int kind = 1;  // 0 personal, 1 company
    std::string nameA, nameJ, department, personA, personJ;
};
struct CustomerPage2 {
    std::string postCode, addressA, addressJ, addressDetail, telephone, mail;
};
CustomerPage1 Page1Of(const VntUserData& record);
CustomerPage2 Page2Of(const VntUserData& record);
// The message ID of the first rule the page breaks, or null. Japanese-only fields are checked
// only when japanese; lengths are bytes of the program's encoding (EUC-JP in Japanese mode).
// The mail address's own form is CheckMailAddr's to judge after these rules.
const char* CustomerPage1Fault(const CustomerPage1& page, bool japanese);
const char* CustomerPage2Fault(const CustomerPage2& page, bool japanese);
// Copies a page into the record: false, with the record as it was, when a text does not fit its
// field.
bool ApplyPage1(const CustomerPage1& page, VntUserData& record);
bool ApplyPage2(const CustomerPage2& page, VntUserData& record);

// The checks of the pages over the record, with the box of the first rule broken: 1 valid, 0 a
// message was shown.
int CheckVntUserData1(const VntUserData* record);
int CheckVntUserData2(const VntUserData* record);
// "GetVntUserSetting" into the page's record / "SetVntUserSetting" of record: TRUE on the
// library's 1.
BOOL InitUserSetting(HMODULE lib);
BOOL PutVntUserSetting(HMODULE lib, VntUserData* record);
