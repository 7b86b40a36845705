// Service libraries of the alert manager: the process-wide library handles, their loaders and
// release functions, the remote-report package's function pointers, binding by name at each
// call, the shared reporting of a failed binding or call, and the direct registry reader.
#pragma once

#include <zolwin.h>

#include <string>

#include "frame/libcall.h"
#include "rptset_api.h"
#include "vantrelpkg_api.h"

// ---- Library handles: null while not loaded ----
extern HMODULE hLibRPTSET;    // "rptset.dll", whole run
extern HMODULE hLibDSCOPY;    // "dscopy.dll", whole run
extern HMODULE hLibVNTHTTPS;  // "vnthttps.dll", while the main menu runs (service installed)
extern HMODULE hLibVNTUTILI;  // "vntutil.dll", likewise
extern HMODULE hLibCHKSET;    // "chkset.dll", likewise
extern HMODULE hLibHRTBEAT;   // "hrtbeat.dll", likewise
extern HMODULE hLibSECRPT;    // "secrpt.dll", while the security-product report screen runs

// Loaders load "%ZolDir%/lib/<file>" into their handle: TRUE when the handle is set, else FALSE.
// Release functions free the library when loaded, clear the handle and return TRUE.
BOOL LoadRptsetDLL();
BOOL FreeRptsetDLL();
BOOL LoadDscopyDLL();
BOOL FreeDscopyDLL();
BOOL LoadVNTHTTPSDLL();
BOOL FreeVNTHTTPSDLL();
BOOL LoadVntutiliDLL();
BOOL FreeVntutiliDLL();
BOOL LoadChksetDLL();
BOOL FreeChksetDLL();
BOOL LoadHrtbeatDLL();
BOOL FreeHrtbeatDLL();
BOOL LoadSecrptDLL();
BOOL FreeSecrptDLL();

// ---- The remote-report package, bound once by LoadVantrelPkgDLL ----
// A pointer stays null while its library is not loaded or lacks the function: check before use.
extern GetHTTPProxyUse_fn* pGetHTTPProxyUse;
extern GetHTTPProxyAddr_fn* pGetHTTPProxyAddr;
extern GetHTTPProxyPort_fn* pGetHTTPProxyPort;
extern SetHTTPProxyUse_fn* pSetHTTPProxyUse;
extern SetHTTPProxyAddr_fn* pSetHTTPProxyAddr;
extern SetHTTPProxyPort_fn* pSetHTTPProxyPort;
extern GetHTTPSURL_fn* pGetHTTPSURL;
extern SetHTTPSURL_fn* pSetHTTPSURL;
extern GUIVntReport_fn* pGUIVntReport;
extern WriteOpenSetting_fn* pWriteOpenSetting;
extern setKeyFdType_fn* psetKeyFdType;
extern getKeyFdType_fn* pgetKeyFdType;
extern getVntSuppressMode_fn* pgetVntSuppressMode;
extern setVntSuppressMode_fn* psetVntSuppressMode;
extern getVntSuppressInterval_fn* pgetVntSuppressInterval;
extern setVntSuppressInterval_fn* psetVntSuppressInterval;
extern CheckScheduleFile_fn* pCheckScheduleFile;
extern CheckLogFile_fn* pCheckLogFile;
extern ReportByMain_fn* pReportByMain;

// The suppression dialog spells its four pointers with a capital letter after the "p"; these
// are the same pointers under that spelling.
inline getVntSuppressMode_fn*& pGetVntSuppressMode = pgetVntSuppressMode;
inline setVntSuppressMode_fn*& pSetVntSuppressMode = psetVntSuppressMode;
inline getVntSuppressInterval_fn*& pGetVntSuppressInterval = pgetVntSuppressInterval;
inline setVntSuppressInterval_fn*& pSetVntSuppressInterval = psetVntSuppressInterval;

// Loads the four package libraries (vnthttps, vntutil, chkset, hrtbeat) and binds their nineteen
// functions. Never stops early: every library is tried and every function of a loaded library is
// looked up. TRUE only when everything was found.
BOOL LoadVantrelPkgDLL();
// Clears the nineteen pointers and releases the four libraries in the order above. TRUE.
BOOL FreeVantrelPkgDLL();

// ---- Direct registry reader ----
// Reads one value: *type and data[0] are cleared first; *size is the buffer size in and the
// data size out. TRUE on success, FALSE when the key cannot be opened or the value not read.
BOOL RegReadEx(HKEY root, LPCSTR keyPath, LPCSTR valueName, LPDWORD type, LPDWORD size,
               LPBYTE data);

// Size of the buffer the "FUNC_CALL_ERR" text is formatted into, terminator included.
inline constexpr std::size_t kFuncCallErrSize = 100;

// The text of "FUNC_CALL_ERR" formatted with what failed (a function name, or a phrase such as
// "GetProcAddress for CheckInstVantrel"), cut to fit kFuncCallErrSize bytes without splitting a
// character.
std::string FuncCallErrText(const char* what);

// Shows the standard error box: title "Error", button " ok ", text FuncCallErrText(what).
void ShowFuncCallErr(const char* what);

// Where ShowFuncCallErr sends its box; msgWindow unless replaced. Tests of code paths that show
// the box replace it to see the box without a terminal; nullptr restores msgWindow.
using ErrorBoxSink = void (*)(const char* title, const char* button, const char* text);
void SetErrorBoxSink(ErrorBoxSink sink);
