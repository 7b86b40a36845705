// Test-only stand-ins for service libraries: every export returns a value the tests recognise.
#include <cstdint>
#include <cstring>

#include "rptset_api.h"
#include "vantrelpkg_api.h"

#define EXPORT extern "C" __attribute__((visibility("default")))

#ifdef TESTPKG_VNTHTTPS
EXPORT int GetHTTPProxyUse(void) {
    return 101;
}
EXPORT int GetHTTPProxyAddr(char* address, int size) {
    if (address == nullptr || size < 1)
        return -1;
    std::strncpy(address, "proxy.test", static_cast<std::size_t>(size) - 1);
    address[size - 1] = '\0';
    return 102;
}
EXPORT int GetHTTPProxyPort(void) {
    return 103;
}
EXPORT int SetHTTPProxyUse(int use) {
    return 104 + use;
}
EXPORT int SetHTTPProxyAddr(const char* address) {
    return address ? 105 : -1;
}
EXPORT int SetHTTPProxyPort(int port) {
    return port == 8080 ? 106 : -1;
}
EXPORT int GetHTTPSURL(int index, char*, int) {
    return 107 + index;
}
EXPORT int SetHTTPSURL(int index, const char*) {
    return 108 + index;
}
EXPORT uint32_t GUIVntReport(char** errorText, const char*) {
    if (errorText != nullptr)
        *errorText = nullptr;
    return 109;
}
#endif

#ifdef TESTPKG_VNTUTIL
EXPORT int WriteOpenSetting(const char*) {
    return 201;
}
EXPORT int setKeyFdType(int type) {
    return 200 + type;
}
EXPORT int getKeyFdType(void) {
    return 203;
}
EXPORT int getVntSuppressMode(void) {
    return 204;
}
EXPORT int setVntSuppressMode(int mode) {
    return 205 + mode;
}
#ifndef TESTPKG_OMIT_SUPPRESS_INTERVAL
EXPORT int getVntSuppressInterval(void) {
    return 206;
}
#endif
EXPORT int setVntSuppressInterval(int minutes) {
    return minutes;
}
#endif

#ifdef TESTPKG_CHKSET
EXPORT int CheckScheduleFile(void) {
    return 301;
}
EXPORT int CheckLogFile(void) {
    return 302;
}
#endif

#ifdef TESTPKG_HRTBEAT
EXPORT int ReportByMain(void) {
    return 401;
}
#endif

#ifdef TESTRPT_FAILING
// The store cannot be read.
EXPORT int GetAllDestSetting(DestData**, int* count) {
    *count = 0;
    return 1016;
}
#endif

#ifdef TESTRPT_BADCOUNT
// Reports success with more records than a table can hold.
EXPORT int GetAllDestSetting(DestData**, int* count) {
    *count = DEST_MAX_RECORDS + 1;
    return 0;
}
#endif
