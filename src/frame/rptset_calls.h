// The program's calls into the report-settings library "rptset.dll": one table of the functions
// it binds (name and success test), and the wrappers every screen family uses. Each wrapper
// binds its function at the call from the handle it is given; none shows a message, the calling
// screen does.
#pragma once

#include <zolwin.h>

#include <cstdint>
#include <string>
#include <vector>

#include "frame/libcall.h"
#include "records.h"
#include "regpaths.h"
#include "rptset_api.h"

namespace rptset {
using libresult::Any, libresult::NonZero, libresult::One, libresult::Zero;
// Base report settings.
inline constexpr LibFunction<CheckInstVantrel_fn> kCheckInstVantrel{"CheckInstVantrel", Any};
inline constexpr LibFunction<GetAllBaseSetting_fn> kGetAllBaseSetting{"GetAllBaseSetting", Zero};
inline constexpr LibFunction<GetBaseSetting_fn> kGetBaseSetting{"GetBaseSetting", Zero};
inline constexpr LibFunction<SetBaseSetting_fn> kSetBaseSetting{"SetBaseSetting", Zero};
inline constexpr LibFunction<AMAMGetBaseRegPath_fn> kAMAMGetBaseRegPath{"AMAMGetBaseRegPath", One};
inline constexpr LibFunction<CheckInternetMailMode_fn> kCheckInternetMailMode{
    "CheckInternetMailMode", NonZero};
inline constexpr LibFunction<GetAMBIBaseSetting_fn> kGetAMBIBaseSetting{"GetAMBIBaseSetting", One};
inline constexpr LibFunction<SetAMBIBaseSetting_fn> kSetAMBIBaseSetting{"SetAMBIBaseSetting", One};
inline constexpr LibFunction<AMBIMyIPCheck_fn> kAMBIMyIPCheck{"AMBIMyIPCheck", Any};
inline constexpr LibFunction<GetTrapDest_fn> kGetTrapDest{"GetTrapDest", NonZero};
inline constexpr LibFunction<SetTrapDest_fn> kSetTrapDest{"SetTrapDest", NonZero};
inline constexpr LibFunction<DelDest_fn> kDelDest{"DelDest", NonZero};
inline constexpr LibFunction<ApplyTrapDest_fn> kApplyTrapDest{"ApplyTrapDest", NonZero};
inline constexpr LibFunction<AMGetVntMethod_fn> kAMGetVntMethod{"AMGetVntMethod", Zero};
inline constexpr LibFunction<AMSetVntMethod_fn> kAMSetVntMethod{"AMSetVntMethod", Zero};
inline constexpr LibFunction<AMSetVntReport_fn> kAMSetVntReport{"AMSetVntReport", Zero};
inline constexpr LibFunction<AMResetOpenSet_fn> kAMResetOpenSet{"AMResetOpenSet", Zero};
inline constexpr LibFunction<GetEOpening_fn> kGetEOpening{"GetEOpening", Any};
inline constexpr LibFunction<AMAMRegReadEx_fn> kAMAMRegReadEx{"AMAMRegReadEx", NonZero};
inline constexpr LibFunction<AMAMRegWrite_fn> kAMAMRegWrite{"AMAMRegWrite", NonZero};
inline constexpr LibFunction<AMAMSetMailLogin_fn> kAMAMSetMailLogin{"AMAMSetMailLogin", NonZero};
// Destinations.
inline constexpr LibFunction<GetAllDestSetting_fn> kGetAllDestSetting{"GetAllDestSetting", Zero};
inline constexpr LibFunction<GetDestSetting_fn> kGetDestSetting{"GetDestSetting", Zero};
inline constexpr LibFunction<SetDestSetting_fn> kSetDestSetting{"SetDestSetting", Any};
inline constexpr LibFunction<GetAMAMDeseSetting_fn> kGetAMAMDeseSetting{"GetAMAMDeseSetting",
                                                                        NonZero};
inline constexpr LibFunction<SetAMAMDeseSetting_fn> kSetAMAMDeseSetting{"SetAMAMDeseSetting",
                                                                        NonZero};
inline constexpr LibFunction<GetManagerIP_fn> kGetManagerIP{"GetManagerIP", libresult::NotMinusOne};
inline constexpr LibFunction<GetVntTo_fn> kGetVntTo{"GetVntTo", NonZero};
inline constexpr LibFunction<AMAMVantrelTestReport_fn> kAMAMVantrelTestReport{
    "AMAMVantrelTestReport", Zero};
inline constexpr LibFunction<TestFatalReport_fn> kTestFatalReport{"TestFatalReport", Zero};
inline constexpr LibFunction<AMAMVantrelOpeningReport_fn> kAMAMVantrelOpeningReport{
    "AMAMVantrelOpeningReport", Zero};
inline constexpr LibFunction<GetManagerPort_fn> kGetManagerPort{"GetManagerPort", Zero};
inline constexpr LibFunction<SetManagerAddress_fn> kSetManagerAddress{"SetManagerAddress", Zero};
// Event monitoring. The writers refuse with -1 (failure) and -2 (no such destination ID), the
// deletion also with -3; every other result is success. The add's results are read by its dialog.
inline bool NotMinusOneOrTwo(int r) {
    return r != -1 && r != -2;
}
inline bool Deleted(int r) {
    return r != -1 && r != -2 && r != -3;
}
inline constexpr LibFunction<GetAllAgntSetting_fn> kGetAllAgntSetting{"GetAllAgntSetting",
                                                                      libresult::NotMinusOne};
inline constexpr LibFunction<GetAgntSetting_fn> kGetAgntSetting{"GetAgntSetting", Zero};
inline constexpr LibFunction<SetAgntSetting_fn> kSetAgntSetting{"SetAgntSetting", NotMinusOneOrTwo};
inline constexpr LibFunction<SetAgntDataForSN_fn> kSetAgntDataForSN{"SetAgntDataForSN",
                                                                    NotMinusOneOrTwo};
inline constexpr LibFunction<GetAllSyslogSetting_fn> kGetAllSyslogSetting{"GetAllSyslogSetting",
                                                                          Zero};
inline constexpr LibFunction<GetSyslogSetting_fn> kGetSyslogSetting{"GetSyslogSetting", Zero};
inline constexpr LibFunction<SetSyslogSetting_fn> kSetSyslogSetting{"SetSyslogSetting",
                                                                    NotMinusOneOrTwo};
inline constexpr LibFunction<SetSyslogDataForSN_fn> kSetSyslogDataForSN{"SetSyslogDataForSN",
                                                                        NotMinusOneOrTwo};
inline constexpr LibFunction<AddSyslogItem_fn> kAddSyslogItem{"AddSyslogItem", Any};
inline constexpr LibFunction<DelSyslogItem_fn> kDelSyslogItem{"DelSyslogItem", Deleted};
// Remote report service.
inline constexpr LibFunction<CheckKeyFDFlag_fn> kCheckKeyFDFlag{"CheckKeyFDFlag", Any};
}  // namespace rptset

// ---- Base report settings ----

// Every base-setting record, as GetAllBaseSetting returned them (malloc'd records in a malloc'd
// array), and their count. Filled by InitAllBaseSetting, freed by FreeAllBaseSetting.
extern BaseData** CPAllBaseData;
extern int numBaseData;

// Registry path of the internet-mail base settings, filled by InitIMBaseRegPath.
extern char g_szAMBaseRegPath[BASE_REG_PATH_SIZE];
// The internet-mail base record read by InitIMBaseSetting and written by SetIMBaseSetting, at
// g_szAMBaseRegPath.
extern AMBIBaseData g_AMBIBaseData;

// GetAllBaseSetting into CPAllBaseData / numBaseData (any previous array freed first). TRUE on
// success; FALSE leaves the array empty.
BOOL InitAllBaseSetting(HMODULE lib);
// Frees every record of CPAllBaseData, then the array, and clears both.
void FreeAllBaseSetting();
// GetBaseSetting of the record named by record->MethodName: the library's result (0 success),
// -1 when the function is missing.
int InitBaseSetting(HMODULE lib, BaseData* record);
// SetBaseSetting: TRUE on success, else FALSE.
BOOL PutBaseSetting(HMODULE lib, BaseData* record);
// AMAMGetBaseRegPath into g_szAMBaseRegPath: TRUE or FALSE.
BOOL InitIMBaseRegPath(HMODULE lib);
// CheckInternetMailMode: TRUE when the remote report service may be chosen as a report method.
BOOL CheckIMMode(HMODULE lib);
// GetAMBIBaseSetting of g_AMBIBaseData at g_szAMBaseRegPath: TRUE or FALSE.
BOOL InitIMBaseSetting(HMODULE lib);
// SetAMBIBaseSetting of g_AMBIBaseData at g_szAMBaseRegPath: the library's result (1 success),
// 0 when the function is missing.
int SetIMBaseSetting(HMODULE lib);

// SNMP trap destinations. The trap functions report success with a non-zero result.
// list holds TRAP_DEST_MAX buffers of TRAP_DEST_SIZE bytes.
int GetTrapSetting(HMODULE lib, int* count, char** list);
int SetTrapSetting(HMODULE lib, int count, char** list);
// Removes address from list (and lowers *count) through the library, which stores the list.
int DelTrapSetting(HMODULE lib, int* count, const char* address, char** list);
// Applies the trap screen's own changes to the list as stored now, in one call: removes each of
// removed that is stored, adds each of added that is not. TRUE, or FALSE when the library
// refused (a full list, an unusable address) or failed, and then the stored list is as it was.
BOOL ApplyTrapSetting(HMODULE lib, const std::vector<std::string>& added,
                      const std::vector<std::string>& removed);
// AMBIMyIPCheck: 1 when text is an IP address the library accepts, 0 when not, -1 when the handle
// is null or the library lacks the check.
int IPAddressCheck(HMODULE lib, const char* text);

// ---- Mail-server logins of the internet-mail delivery ----

// Key of the login values, under HKEY_LOCAL_MACHINE.
inline constexpr const char* kMailLoginKey = ZOL_KEY_MAIL_SETTING;
// The POP port and wait time a login starts with when nothing is stored.
inline constexpr DWORD kDefaultPopPort = 110;
inline constexpr DWORD kDefaultPopWait = 0;

// Reads SMTPAuthUser and SMTPAuthPass (decoded) through "AMAMRegReadEx"; a value that cannot be
// read leaves its field empty. 0, or -1 for a null argument or an unbound "AMAMRegReadEx".
int GetSMTPParam(HMODULE lib, SMTPParam* smtp);
// Reads POPServer, POPUser, POPPass (decoded), POPPort (110 when unreadable) and POPTime
// (*waitTime, 0 when unreadable). 0, or -1 as GetSMTPParam.
int GetPopParam(HMODULE lib, POPParam* pop, DWORD* waitTime);
// Each writes its half of the logins whole in one library call ("AMAMSetMailLogin"), which
// encodes the password: either every value of the half is stored or none is. 0, or -1 on a
// refusal, a failed write, a null argument or an unbound function.
int PutSMTPParam(HMODULE lib, const SMTPParam* smtp);
int PutPopParam(HMODULE lib, const POPParam* pop, DWORD waitTime);

// ---- Remote report service ----

// Remote report delivery method (VANTREL_* of records.h): the library's result (0 success); -1 on
// a null handle or argument or a missing function.
int GetVntMethod(HMODULE lib, int* method);
int SetVntMethod(HMODULE lib, int method);
// The delivery method and the service's switch in one library call ("AMSetVntReport"): the method
// (-1 keeps the stored one, only while switching off) and the base-setting records of the four
// methods, only the chosen one enabled and only while enabled. 0, or -1 when the library refused
// or failed (nothing stored), on a null handle or a missing function.
int SetVntReport(HMODULE lib, int method, bool enabled);
// AMResetOpenSet: the library's result (0 success); -1 on a null handle or missing function.
int ResetOpenSet(HMODULE lib);
// GetEOpening: the library's result (1 when the opening report has been sent); 0 on a null
// handle or missing function.
int szGetEOpening(HMODULE lib);

// ---- Destinations ----

// GetDestSetting of the destination whose ID the record holds (compared without regard to case):
// TRUE when it was read (the record then holds it), FALSE otherwise.
BOOL ReadDestSetting(HMODULE lib, DestData* record);
// SetDestSetting of the record as its Operation says. The value is the library's own result
// (0 done, -1 system error, -2 refused, -3 an ID of that name exists); unbound when the library
// lacks the function or an argument is null.
LibResult WriteDestSetting(HMODULE lib, DestData* record);

// ---- The remote report service's destination ----

// GetVntTo into out (VNT_MAILTO_SIZE bytes): TRUE, or FALSE (out then empty).
BOOL ReadVntTo(HMODULE lib, char* out);
// GetManagerIP into out (VNT_MAILTO_SIZE bytes): failed when the library answered -1 (no
// manager address stored), unbound when it lacks the function.
LibResult ReadManagerIP(HMODULE lib, char* out);
// GetManagerPort: the stored port of the via-manager method, 31134 when none is stored.
LibResult ReadManagerPort(HMODULE lib, uint32_t* port);
// SetManagerAddress: address (dotted IPv4) and port of the via-manager method in one write.
LibResult WriteManagerAddress(HMODULE lib, const char* ip, uint32_t port);
// GetAMAMDeseSetting into mail; the library's text for the administrator (the state of the
// service's set-up data) is copied into *message when message is not null, and the library's
// copy freed. TRUE, or FALSE with mail and *message as they were.
BOOL ReadMLDestSetting(HMODULE lib, VxMLDestData* mail, std::string* message);
// SetAMAMDeseSetting: with recordOnly 0 the mail settings and the record, else the record alone
// (mail may then be null), in one write. TRUE or FALSE.
BOOL WriteMLDestSetting(HMODULE lib, const VxMLDestData* mail, DestData* record, int recordOnly);
// A test report through the destination id: AMAMVantrelTestReport, or TestFatalReport when
// critical. Failed (with the library's reason in *reason when it gave one, else empty) unless the
// library sent it.
LibResult SendTestReport(HMODULE lib, bool critical, const char* id, std::string* reason);
// The opening report (AMAMVantrelOpeningReport), which marks the opening as done once sent.
// Failed (with the library's reason in *reason when it gave one, else empty) unless it was sent.
LibResult SendOpeningReport(HMODULE lib, std::string* reason);
// CheckKeyFDFlag: TRUE when the service's set-up data has been read from its key floppy.
BOOL CheckInstVantrelFD(HMODULE lib);

// ---- Event monitoring ----
// Each binds its function at the call and passes the outcome on: unbound when the library lacks
// the function, else the function's own result judged by its test in the table above. The
// screens show the boxes.

// The whole agent event catalogue (malloc'd records in a malloc'd array, which the caller frees)
// and the numbers of source-name and event-ID slots the screens need.
LibResult GetAllAgntRecords(HMODULE lib, AgentEventData*** records, int* count, int* numSN,
                            int* numEvntID);
// One event (source and event ID filled in), into the record's own destination buffers.
LibResult GetAgntRecord(HMODULE lib, AgentEventData* record);
// One event's settings and the report flag of lplpszDestID[0]; changed 1 writes the handling
// method too.
LibResult SetAgntRecord(HMODULE lib, AgentEventData* record, int changed);
// The report flag of lplpszDestID[0] for every event of the record's source.
LibResult SetAgntSourceFlag(HMODULE lib, AgentEventData* record);

// The same four for the syslog monitoring items.
LibResult GetAllSyslogRecords(HMODULE lib, SyslogData*** records, int* count, int* numSN,
                              int* numEvntID);
LibResult GetSyslogRecord(HMODULE lib, SyslogData* record);
LibResult SetSyslogRecord(HMODULE lib, SyslogData* record, int changed);
LibResult SetSyslogSourceFlag(HMODULE lib, SyslogData* record);
// A new syslog item; the value tells added (1), event exists (-3), source spelled otherwise (-4).
LibResult AddSyslogRecord(HMODULE lib, SyslogData* record);
// Deletes one item, or with the event ID "All" every item of the source.
LibResult DelSyslogRecord(HMODULE lib, const char* source, const char* eventID);
