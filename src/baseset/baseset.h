// Base report settings: the base-setting menu's state, the wrappers through which the base
// settings and the remote report method are read and written in the report-settings library,
// and the screens of the menu that other screens enter.
#pragma once

#include <zolwin.h>

#include "records.h"

// ---- State of the base-setting menu and of the internet-mail base screens ----

// Every base-setting record, as GetAllBaseSetting returned them (malloc'd records in a malloc'd
// array), and their count. Filled by InitAllBaseSetting, freed by FreeAllBaseSetting.
extern BaseData** CPAllBaseData;
extern int numBaseData;

// Registry path of the internet-mail base settings, filled by InitIMBaseRegPath.
extern char g_szAMBaseRegPath[BASE_REG_PATH_SIZE];
// The internet-mail base record read by InitIMBaseSetting and written by SetIMBaseSetting, at
// g_szAMBaseRegPath.
extern AMBIBaseData g_AMBIBaseData;

// ---- Wrappers of the report-settings library ----
// Each binds its library function at the call; none shows a message, the calling screen does.

// GetAllBaseSetting into CPAllBaseData / numBaseData (any previous array freed first). TRUE on
// success; FALSE leaves the array empty.
BOOL InitAllBaseSetting(HMODULE hLibRPTSET);
// Frees every record of CPAllBaseData, then the array, and clears both.
void FreeAllBaseSetting();
// GetBaseSetting of the record named by record->MethodName: the library's result (0 success),
// -1 when the function is missing.
int InitBaseSetting(HMODULE hLibRPTSET, BaseData* record);
// SetBaseSetting: TRUE on success, else FALSE.
BOOL PutBaseSetting(HMODULE hLibRPTSET, BaseData* record);
// AMAMGetBaseRegPath into g_szAMBaseRegPath: TRUE or FALSE.
BOOL InitIMBaseRegPath(HMODULE hLibRPTSET);
// CheckInternetMailMode: TRUE when the remote report service may be chosen as a report method.
BOOL CheckIMMode(HMODULE hLibRPTSET);
// GetAMBIBaseSetting of g_AMBIBaseData at g_szAMBaseRegPath: TRUE or FALSE.
BOOL InitIMBaseSetting(HMODULE hLibRPTSET);
// SetAMBIBaseSetting of g_AMBIBaseData at g_szAMBaseRegPath: the library's result (1 success),
// 0 when the function is missing.
int SetIMBaseSetting(HMODULE hLibRPTSET);
// Remote report delivery method (VANTREL_* of records.h): the library's result (0 success); -1 on a
// null handle or argument or a missing function.
int GetVntMethod(HMODULE hLibRPTSET, int* method);
int SetVntMethod(HMODULE hLibRPTSET, int method);
// AMResetOpenSet: the library's result (0 success); -1 on a null handle or missing function.
int ResetOpenSet(HMODULE hLibRPTSET);
// GetEOpening: the library's result (1 when the opening report has been sent); 0 on a null
// handle or missing function.
int szGetEOpening(HMODULE hLibRPTSET);

// ---- SNMP trap destinations ----
// The trap functions report success with a non-zero result (unlike Get/SetBaseSetting).
// list holds TRAP_DEST_MAX buffers of TRAP_DEST_SIZE bytes.
int GetTrapSetting(HMODULE hLibRPTSET, int* count, char** list);
int SetTrapSetting(HMODULE hLibRPTSET, int count, char** list);
// Removes address from list (and lowers *count) through the library, which stores the list.
int DelTrapSetting(HMODULE hLibRPTSET, int* count, const char* address, char** list);
// The address dialog: a checked address into address (TRAP_DEST_SIZE bytes), left empty when
// the user cancels. Always 1.
int EnterIPpanel(HMODULE hLibRPTSET, char* address);

// ---- Screens of the base-setting menu: 0 after the screen closed, -1 when it could not open ----
int SubSNMPPanel(HMODULE hLibRPTSET);
int SubSimplePanel(const char* method, HMODULE hLibRPTSET);
int SubShutdownPanel(HMODULE hLibRPTSET);
// The remote report service's base setting (delivery method).
int VantrelBaseSetting(HINSTANCE hLibRPTSET);

// ---- Shutdown delay ----
// Longest shutdown delay, in seconds.
inline constexpr unsigned int kMaxShutdownDelay = 1800;
// 1 when data is at most kMaxShutdownDelay; else shows the range error and returns 0.
int TestInputValue(unsigned int data);
// Writes the record with PutBaseSetting, showing the error box when that fails. Always 1: the
// panel closes even after a failed write.
int PutDelayValue(BaseData* record, HMODULE hLibRPTSET);
// The delay an entry's text stands for, as TestInputValue judges it: digits with an optional
// leading "-" read as a decimal number and taken unsigned (so "-1" is far out of range); any
// other text gives a value no delay can have.
unsigned int DelayFromText(const char* text);
