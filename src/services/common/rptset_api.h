/*
 * rptset_api.h: the functions of the report-settings library "rptset.dll" as the program binds
 * them by name. The library defines each with exactly this type; callers cast the result of
 * GetProcAddress to a pointer to it.
 */
#ifndef ZOL_RPTSET_API_H
#define ZOL_RPTSET_API_H

#include <zolwin.h>

#include "records.h"

/* 1 when the remote report service package is installed, else 0. */
typedef int CheckInstVantrel_fn(void);

/* Reads every destination ID into records[0..*count-1] (the caller passes DEST_MAX_RECORDS
 * allocated records). 0 on success, else a registry error code or -1 for bad arguments. */
typedef int GetAllDestSetting_fn(DestData** records, int* count);

/* Reads the destination whose ID (compared without regard to case) the record holds; the ID
 * takes the stored spelling, Operation is left as the caller set it. 0 on success, else failure
 * (2 when there is no such ID). */
typedef int GetDestSetting_fn(DestData* record);

/* Writes a destination as its Operation says (DEST_OP_DELETE / CREATE / CHANGE), in one
 * transaction. -3: create of an ID that exists; -2: refused (an ID the store cannot hold, a
 * built-in ID to delete, no such ID to change or delete, or DEST_MAX_RECORDS IDs already);
 * -1: system error; 0: done. Deleting an ID also removes it from every agent event and syslog
 * item that reports to it. */
typedef int SetDestSetting_fn(DestData* record);

/* Internet-mail destination of the remote report service. Get: nonzero on success; *message
 * receives a malloc'd text for the administrator (the set-up state of the service), which the
 * caller frees. Set: with recordOnly 0 writes mail and record, else the record alone (mail may
 * be null); nonzero on success. */
typedef int GetAMAMDeseSetting_fn(VxMLDestData* mail, char** message);
typedef int SetAMAMDeseSetting_fn(const VxMLDestData* mail, DestData* record, int recordOnly);

/* Manager IP address of the via-manager method into out (VNT_MAILTO_SIZE bytes); -1 on failure,
 * else 0. */
typedef int GetManagerIP_fn(char* out);
/* Manager port of the via-manager method into *port: the stored port, or DEST_DEFAULT_PORT when
 * none is stored (or it has another type). 0, or -1 for a null argument or a store failure. */
typedef int GetManagerPort_fn(uint32_t* port);
/* Stores the manager of the via-manager method, address and port together in one transaction:
 * ip a dotted IPv4 address (as AMBIMyIPCheck accepts it; host names are resolved by the caller),
 * port 1 to 65535. 0, or -1 when refused or the store failed (nothing written then). */
typedef int SetManagerAddress_fn(const char* ip, uint32_t port);
/* Mail addresses the remote report service reports to, into out (VNT_MAILTO_SIZE bytes);
 * nonzero on success. */
typedef int GetVntTo_fn(char* out);
/* Test reports through a destination: 0 sent; otherwise *errorText receives a malloc'd reason. */
typedef int AMAMVantrelTestReport_fn(const char* id, char** errorText);
typedef int TestFatalReport_fn(const char* id, char** errorText);
/* The opening report through the selected method: 0 sent (EOpening is then 1); otherwise the
 * delivery result (1 may be tried again) and *errorText a malloc'd reason. */
typedef int AMAMVantrelOpeningReport_fn(char** errorText);

/* ---- Base report settings ---- */

/* Every base-setting record, in a malloc'd array of malloc'd records the caller frees. 0 on
 * success. */
typedef int GetAllBaseSetting_fn(BaseData*** records, int* count);
/* Reads / writes the record named by MethodName. 0 on success. */
typedef int GetBaseSetting_fn(BaseData* record);
typedef int SetBaseSetting_fn(BaseData* record);
/* The internet-mail base record at path (from AMAMGetBaseRegPath). 1 on success. */
typedef int GetAMBIBaseSetting_fn(AMBIBaseData* record, const char* path);
typedef int SetAMBIBaseSetting_fn(AMBIBaseData* record, const char* path);
/* Copies the registry path of the internet-mail base settings (BASE_REG_PATH_SIZE bytes). 1 on
 * success. */
typedef int AMAMGetBaseRegPath_fn(char* path);
/* Nonzero when the remote report service may be chosen as a report method. */
typedef int CheckInternetMailMode_fn(void);
/* 1 when text is a dotted IPv4 address (four decimal parts 0 to 255), else 0. */
typedef int AMBIMyIPCheck_fn(const char* text);

/* SNMP trap destinations: list holds TRAP_DEST_MAX buffers of TRAP_DEST_SIZE bytes. Nonzero on
 * success. DelDest removes address from list and lowers *count, and stores the list. */
typedef int GetTrapDest_fn(int* count, char** list);
typedef int SetTrapDest_fn(int count, char** list);
typedef int DelDest_fn(int* count, const char* address, char** list);
/* Applies a visit's changes to the list as stored now, in one transaction: removes each address of
 * removed[0..removeCount-1] that is stored, then appends each of added[0..addCount-1] that is
 * not. Refuses (0, nothing written) counts outside 0 to 256, an entry that is null, empty or 256
 * bytes or longer, an addition of 0.0.0.0 or 255.255.255.255, and a list that would grow past
 * 256 entries. Nonzero on success. */
typedef int ApplyTrapDest_fn(int addCount, char** added, int removeCount, char** removed);

/* Remote report delivery method (VANTREL_*). 0 on success. */
typedef int AMGetVntMethod_fn(int* method);
typedef int AMSetVntMethod_fn(int method);
/* The delivery method and the service's switch in one transaction: the method is stored (-1
 * keeps the stored one, allowed only with enabled 0) and of the base-setting records
 * "VantrelReport(...)" of the four methods the chosen method's is enabled when enabled is 1,
 * every other stored one is switched off (a missing record is created only to switch it on).
 * 0 on success; -1 refused or failed, nothing written. */
typedef int AMSetVntReport_fn(int method, int enabled);
/* Forgets that the opening report was sent. 0 on success. */
typedef int AMResetOpenSet_fn(void);
/* 1 when the opening report has been sent, else 0. */
typedef int GetEOpening_fn(void);

/* Generic access to the alert manager's and the service's keys. Read: fails unless the value
 * has the requested type; size is the buffer's. Write: type REG_SZ or REG_DWORD, size bytes of
 * data. Both return nonzero on success, 0 on failure. */
typedef int AMAMRegReadEx_fn(HKEY root, const char* key, const char* value, DWORD type, void* data,
                             DWORD size);
typedef int AMAMRegWrite_fn(HKEY root, const char* key, const char* value, DWORD type,
                            const void* data, DWORD size);
/* The mail-server logins of the internet-mail delivery, each half whole: the POP before SMTP
 * record with its wait in seconds (when pop is not null) and the SMTP authentication record (when
 * smtp is not null), in one transaction. Passwords are given plain and stored encoded with
 * Ras_Encode; no value reaches the trace log. Refuses (0, nothing written) two null records, a
 * text without its terminator, a port outside 1 to 65535 and a wait above 60. Nonzero on
 * success. */
typedef int AMAMSetMailLogin_fn(const POPParam* pop, DWORD popWait, const SMTPParam* smtp);

/* ---- Event monitoring ----
 * The catalogue readers hand back a malloc'd array of malloc'd records; each record's
 * lplpszDestID[0..DestNum-1] are malloc'd to fit their ID, the rest null. numSN and numEvntID
 * receive slot counts large enough for the screens' searches (more than the distinct sources,
 * more than the events of any one source). The single-record readers fill caller-allocated
 * destination buffers of DEST_TEXT_SIZE bytes. */
typedef int GetAllAgntSetting_fn(AgentEventData*** records, int* count, int* numSN, int* numEvntID);
/* 0 on success. */
typedef int GetAgntSetting_fn(AgentEventData* record);
/* Writes action, handling method (when changed), administrator fields and the report flag of
 * lplpszDestID[0]. -1 failure, -2 no such destination ID; other values success. */
typedef int SetAgntSetting_fn(AgentEventData* record, int changed);
/* The report flag of lplpszDestID[0] for every event of the record's source. -1 failure. */
typedef int SetAgntDataForSN_fn(AgentEventData* record);

typedef int GetAllSyslogSetting_fn(SyslogData*** records, int* count, int* numSN, int* numEvntID);
typedef int GetSyslogSetting_fn(SyslogData* record);
/* -1 failure, -2 no such destination ID; other values success. */
typedef int SetSyslogSetting_fn(SyslogData* record, int changed);
typedef int SetSyslogDataForSN_fn(SyslogData* record);
/* 1 added; -3 the event ID exists in that source; -4 the source exists under another
 * spelling; -1 failure (bad record). */
typedef int AddSyslogItem_fn(SyslogData* record);
/* -1 failure; -2 no such item; -3 refused; other values: deleted. */
typedef int DelSyslogItem_fn(const char* source, const char* eventID);

/* ---- Remote report service ---- */
/* Each returns 1 on success, 0 on failure. */
typedef int GetVntSetting_fn(VntSetupData* record);
typedef int GetVntUserSetting_fn(VntUserData* record);
typedef int SetVntUserSetting_fn(VntUserData* record);
typedef int GetVntMachSetting_fn(VntMachData* record);
typedef int SetVntMachSetting_fn(VntMachData* record);
/* names: VNT_OS_LIST_MAX buffers of VNT_TEXT_SIZE bytes. */
typedef int GetVntMachListData_fn(char** names, int* count);
/* vendors: VNT_VENDOR_LIST_MAX buffers of VNT_TEXT_SIZE bytes, or null when no list is wanted. */
typedef int GetVntVendSetting_fn(VntVendData* record, char** vendors, int* count);
typedef int SetVntVendSetting_fn(VntVendData* record);
typedef int GetVntOptSetting_fn(VntOptData* record);
typedef int SetVntOptSetting_fn(VntOptData* record);
/* names: VNT_OPTION_LIST_MAX buffers of VNT_TEXT_SIZE bytes. */
typedef int GetVntOptKindList_fn(char** names, int* count);
/* What each option kind is, numbered as GetVntOptKindList's names (a kind without one has none:
 * the count may be lower). texts: VNT_OPTION_LIST_MAX buffers of VNT_TEXT_SIZE bytes. */
typedef int GetVntOptKindDesc_fn(char** texts, int* count);

/* The options held, as a list of option kind codes; one is always held (OPTCDN, what
 * GetVntOptSetting reads, is the first). GetVntOptList fills codes (VNT_OPTION_LIST_MAX slots)
 * and *count: 1, or 0 when the store cannot be read. A store that holds OPTCDN alone reads as
 * that one option. Add and Del change the list in one transaction: VNT_OPT_DONE, VNT_OPT_HELD
 * (add: already held; del: not held), VNT_OPT_REFUSED (add: no such kind or the list is full;
 * del: the only option held), 0 when the store failed (nothing written). */
typedef int GetVntOptList_fn(uint32_t* codes, int* count);
typedef int AddVntOption_fn(uint32_t code);
typedef int DelVntOption_fn(uint32_t code);

/* Key floppy. CheckKeyFDFlag: nonzero when one has been read in. GetOpenMsgfromFD: reads the
 * key-floppy file under path into the store; KEYFD_* on failure, 1 on success. checkVntFile:
 * 0 when path (a folder or the file itself) holds a key-floppy file of at most maxSize bytes,
 * -1 otherwise; mode 0 is the only mode. */
typedef int CheckKeyFDFlag_fn(void);
typedef int GetOpenMsgfromFD_fn(const char* path);
typedef int checkVntFile_fn(const char* path, int mode, int maxSize);

/* Dial-up delivery, read and written whole: 0 on success, -1 on failure (a refused record writes
 * nothing). A store without a primary number reads the service centre's number of the key floppy
 * (SETUP\\PHONENO). */
typedef int AMGetDialUpSetting_fn(VntDialData* record);
typedef int AMSetDialUpSetting_fn(const VntDialData* record);

#endif /* ZOL_RPTSET_API_H */
