/*
 * vantrelpkg_api.h: the functions of the remote report service's package libraries
 * ("vnthttps.dll", "vntutil.dll", "chkset.dll", "hrtbeat.dll") that the program binds once when
 * the main menu starts. Unless stated otherwise a function returns 0 on success and -1 on
 * failure.
 */
#ifndef ZOL_VANTRELPKG_API_H
#define ZOL_VANTRELPKG_API_H

#include <stdint.h>

#include "records.h"

/* ---- vnthttps.dll: HTTPS delivery and its proxy ---- */
/* 1 when the proxy is used, 0 when not, -1 on failure. */
typedef int GetHTTPProxyUse_fn(void);
/* Copies the proxy address (at most size bytes with the terminator). */
typedef int GetHTTPProxyAddr_fn(char* address, int size);
/* The proxy port, or -1 on failure. */
typedef int GetHTTPProxyPort_fn(void);
typedef int SetHTTPProxyUse_fn(int use);
typedef int SetHTTPProxyAddr_fn(const char* address);
typedef int SetHTTPProxyPort_fn(int port);
/* index 1 or 2: the first or second delivery URL. */
typedef int GetHTTPSURL_fn(int index, char* url, int size);
typedef int SetHTTPSURL_fn(int index, const char* url);
/* Sends one report; *errorText receives a malloc'd text on failure. Returns 0 on success, 1 when
 * the report may be tried again, other values on failure. */
typedef uint32_t GUIVntReport_fn(char** errorText, const char* kind);
/* The HTTPS settings read and written whole, the last in one transaction: 0, or -1 (a refused
 * record writes nothing). */
typedef int GetHTTPSSetting_fn(VntHttpsData* record);
typedef int SetHTTPSSetting_fn(const VntHttpsData* record);

/* ---- vntutil.dll: key floppy and report suppression ---- */
/* Writes the set-up data read from the key floppy at fdPath into the store. */
typedef int WriteOpenSetting_fn(const char* fdPath);
/* Key floppy type: 1 mail delivery, 2 HTTPS delivery. */
typedef int setKeyFdType_fn(int type);
typedef int getKeyFdType_fn(void);
/* Suppression mode 0 off, 1 on; interval in minutes. Getters return -1 on failure. */
typedef int getVntSuppressMode_fn(void);
typedef int setVntSuppressMode_fn(int mode);
typedef int getVntSuppressInterval_fn(void);
typedef int setVntSuppressInterval_fn(int minutes);
/* File name of the delivery library of the current method ("vnthttps.dll" for HTTPS) into
 * name (size bytes). 0 on success, -1 on failure. */
typedef int VNTGetSelectedDllName_fn(char* name, int size);

/* ---- chkset.dll: checks of the service's files ---- */
typedef int CheckScheduleFile_fn(void);
typedef int CheckLogFile_fn(void);

/* ---- hrtbeat.dll: heartbeat report ---- */
typedef int ReportByMain_fn(void);

#endif /* ZOL_VANTRELPKG_API_H */
