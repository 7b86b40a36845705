// Test-only stand-ins for service libraries: every export returns a value the tests recognise.
#include "rptset_api.h"
#include "vantrelpkg_api.h"

#define EXPORT_FN(ret, name, params, value)                             \
    extern "C" __attribute__((visibility("default"))) ret name params { \
        return value;                                                   \
    }

#ifdef TESTPKG_VNTHTTPS
EXPORT_FN(int, GetHTTPProxyUse, (void), 101)
EXPORT_FN(int, GetHTTPProxyAddr, (char*, int size), 100 + size)
EXPORT_FN(int, GetHTTPProxyPort, (void), 103)
EXPORT_FN(int, SetHTTPProxyUse, (int use), 104 + use)
EXPORT_FN(int, SetHTTPProxyAddr, (const char* a), a ? 105 : -1)
EXPORT_FN(int, SetHTTPProxyPort, (int port), port)
EXPORT_FN(int, GetHTTPSURL, (int index, char*, int), 107 + index)
EXPORT_FN(int, SetHTTPSURL, (int index, const char*), 108 + index)
EXPORT_FN(uint32_t, GUIVntReport, (char** error, const char*), error ? 109 : 0)
#endif
#ifdef TESTPKG_VNTUTIL
EXPORT_FN(int, WriteOpenSetting, (const char*), 201)
EXPORT_FN(int, setKeyFdType, (int type), 200 + type)
EXPORT_FN(int, getKeyFdType, (void), 203)
EXPORT_FN(int, getVntSuppressMode, (void), 204)
EXPORT_FN(int, setVntSuppressMode, (int mode), 205 + mode)
#ifndef TESTPKG_OMIT_SUPPRESS_INTERVAL
EXPORT_FN(int, getVntSuppressInterval, (void), 206)
#endif
EXPORT_FN(int, setVntSuppressInterval, (int minutes), minutes)
#endif
#ifdef TESTPKG_CHKSET
EXPORT_FN(int, CheckScheduleFile, (void), 301)
EXPORT_FN(int, CheckLogFile, (void), 302)
#endif
#ifdef TESTPKG_HRTBEAT
EXPORT_FN(int, ReportByMain, (void), 401)
#endif
// GetAllDestSetting failing as the store would, or claiming more records than a table holds.
#ifdef TESTRPT_FAILING
EXPORT_FN(int, GetAllDestSetting, (DestData**, int* count), (*count = 0, 1016))
#endif
#ifdef TESTRPT_BADCOUNT
EXPORT_FN(int, GetAllDestSetting, (DestData**, int* count), (*count = DEST_MAX_RECORDS + 1, 0))
#endif
