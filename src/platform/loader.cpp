// Library loading over dlopen/dlsym/dlclose with Win32 error codes. Handles are checked against
// the ones this layer handed out, so a stale or garbage HMODULE fails instead of crashing.
#include <dlfcn.h>
#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <map>
#include <mutex>
#include <string>

#include "zolwin.h"

namespace {

thread_local std::string lastLoadError;

// Live module handles and how many LoadLibrary calls each still has to be matched by.
std::mutex modulesLock;
std::map<void*, unsigned> liveModules;

bool isLive(void* module) {
    std::lock_guard<std::mutex> guard(modulesLock);
    return liveModules.count(module) != 0;
}

// The Win32 code for a failed load: a missing file is 126, an existing file that is not an
// ELF object is 193, anything else (usually a missing dependency) is 126 as on Win32.
DWORD loadFailureCode(const char* name) {
    if (std::strchr(name, '/') == nullptr)
        return ERROR_MOD_NOT_FOUND;
    int fd = open(name, O_RDONLY | O_CLOEXEC);
    if (fd < 0)
        return errno == EACCES ? ERROR_ACCESS_DENIED : ERROR_MOD_NOT_FOUND;
    std::array<char, 4> magic{};
    ssize_t got = read(fd, magic.data(), magic.size());
    close(fd);
    const bool elf = got == 4 && std::memcmp(magic.data(), "\177ELF", 4) == 0;
    return elf ? ERROR_MOD_NOT_FOUND : ERROR_BAD_EXE_FORMAT;
}

void rememberDlError(const char* fallback) {
    const char* text = dlerror();
    lastLoadError = text != nullptr ? text : fallback;
}

}  // namespace

extern "C" {

HMODULE LoadLibrary(LPCSTR lpLibFileName) {
    if (lpLibFileName == nullptr || *lpLibFileName == '\0') {
        lastLoadError = "no library name";
        SetLastError(ERROR_INVALID_PARAMETER);
        return nullptr;
    }
    void* module = dlopen(lpLibFileName, RTLD_NOW | RTLD_LOCAL);
    if (module == nullptr) {
        rememberDlError("dlopen failed");
        SetLastError(loadFailureCode(lpLibFileName));
        return nullptr;
    }
    {
        std::lock_guard<std::mutex> guard(modulesLock);
        ++liveModules[module];
    }
    lastLoadError.clear();
    SetLastError(ERROR_SUCCESS);
    return module;
}

FARPROC GetProcAddress(HMODULE hModule, LPCSTR lpProcName) {
    if (hModule == nullptr || !isLive(hModule)) {
        lastLoadError = "invalid module handle";
        SetLastError(ERROR_INVALID_HANDLE);
        return nullptr;
    }
    if (lpProcName == nullptr || *lpProcName == '\0') {
        lastLoadError = "no function name";
        SetLastError(ERROR_INVALID_PARAMETER);
        return nullptr;
    }
    dlerror();
    void* symbol = dlsym(hModule, lpProcName);
    if (symbol == nullptr) {
        rememberDlError("symbol not found");
        SetLastError(ERROR_PROC_NOT_FOUND);
        return nullptr;
    }
    // POSIX guarantees that a data pointer from dlsym converts to a function pointer.
    return reinterpret_cast<FARPROC>(symbol);
}

BOOL FreeLibrary(HMODULE hLibModule) {
    {
        std::lock_guard<std::mutex> guard(modulesLock);
        auto it = liveModules.find(hLibModule);
        if (hLibModule == nullptr || it == liveModules.end()) {
            SetLastError(ERROR_INVALID_HANDLE);
            return FALSE;
        }
        if (--it->second == 0)
            liveModules.erase(it);
    }
    if (dlclose(hLibModule) != 0) {
        rememberDlError("dlclose failed");
        SetLastError(ERROR_INVALID_HANDLE);
        return FALSE;
    }
    return TRUE;
}

LPCSTR ZolLastLoadError(void) {
    return lastLoadError.c_str();
}

}  // extern "C"
