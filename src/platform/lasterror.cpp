// The calling thread's last error code, as GetLastError/SetLastError keep it on Win32.
#include "zolwin.h"

namespace {
thread_local DWORD lastError = ERROR_SUCCESS;
}

extern "C" {

DWORD GetLastError(void) {
    return lastError;
}

void SetLastError(DWORD dwErrCode) {
    lastError = dwErrCode;
}

}  // extern "C"
