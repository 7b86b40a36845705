// Loading, binding and releasing the agent's service libraries, and the direct registry reader.
#include "frame/libraries.h"

#include <cstdio>
#include <iterator>
#include <string_view>
#include <vector>

#include "frame/msgfile.h"
#include "frame/textformat.h"
#include "ui/toolkit.h"

HMODULE hLibRPTSET = nullptr;
HMODULE hLibDSCOPY = nullptr;
HMODULE hLibVNTHTTPS = nullptr;
HMODULE hLibVNTUTILI = nullptr;
HMODULE hLibCHKSET = nullptr;
HMODULE hLibHRTBEAT = nullptr;
HMODULE hLibSECRPT = nullptr;

GetHTTPProxyUse_fn* pGetHTTPProxyUse = nullptr;
GetHTTPProxyAddr_fn* pGetHTTPProxyAddr = nullptr;
GetHTTPProxyPort_fn* pGetHTTPProxyPort = nullptr;
SetHTTPProxyUse_fn* pSetHTTPProxyUse = nullptr;
SetHTTPProxyAddr_fn* pSetHTTPProxyAddr = nullptr;
SetHTTPProxyPort_fn* pSetHTTPProxyPort = nullptr;
GetHTTPSURL_fn* pGetHTTPSURL = nullptr;
SetHTTPSURL_fn* pSetHTTPSURL = nullptr;
GUIVntReport_fn* pGUIVntReport = nullptr;
WriteOpenSetting_fn* pWriteOpenSetting = nullptr;
setKeyFdType_fn* psetKeyFdType = nullptr;
getKeyFdType_fn* pgetKeyFdType = nullptr;
getVntSuppressMode_fn* pgetVntSuppressMode = nullptr;
setVntSuppressMode_fn* psetVntSuppressMode = nullptr;
getVntSuppressInterval_fn* pgetVntSuppressInterval = nullptr;
setVntSuppressInterval_fn* psetVntSuppressInterval = nullptr;
CheckScheduleFile_fn* pCheckScheduleFile = nullptr;
CheckLogFile_fn* pCheckLogFile = nullptr;
ReportByMain_fn* pReportByMain = nullptr;

namespace {

// Buffer sizes for the product root and the library path: the two start-up libraries and
// "secrpt.dll" use the small one, the remote-report package the large one.
constexpr DWORD kSmallPathSize = 128;
constexpr DWORD kLargePathSize = 4095;

struct LibrarySpec {
    HMODULE* handle;
    const char* file;       // file name under lib/
    const char* traceName;  // name in the load-failure trace
    DWORD bufferSize;
    bool startup;  // a start-up library also tells standard output when the root is unknown
};

// The loader of vntutil.dll has always named "vntutili.dll" in its failure trace; log readers
// search for that text, so it stays.
constexpr LibrarySpec kRptset{&hLibRPTSET, "rptset.dll", "rptset.dll", kSmallPathSize, true};
constexpr LibrarySpec kDscopy{&hLibDSCOPY, "dscopy.dll", "dscopy.dll", kSmallPathSize, true};
constexpr LibrarySpec kSecrpt{&hLibSECRPT, "secrpt.dll", "secrpt.dll", kSmallPathSize, false};
constexpr LibrarySpec kVnthttps{&hLibVNTHTTPS, "vnthttps.dll", "vnthttps.dll", kLargePathSize,
                                false};
constexpr LibrarySpec kVntutil{&hLibVNTUTILI, "vntutil.dll", "vntutili.dll", kLargePathSize, false};
constexpr LibrarySpec kChkset{&hLibCHKSET, "chkset.dll", "chkset.dll", kLargePathSize, false};
constexpr LibrarySpec kHrtbeat{&hLibHRTBEAT, "hrtbeat.dll", "hrtbeat.dll", kLargePathSize, false};

// Trace from the public loader's name rather than this helper's, so that the log reads as the
// loader's own lines.
#define TRACE_AS(fn, level, ...) TraceLog((level), __FILE__, (fn), __LINE__, __VA_ARGS__)

BOOL LoadOne(const LibrarySpec& lib, const char* fn) {
    TRACE_AS(fn, TRACE_LEVEL_TRACE, ">");
    std::vector<char> root(lib.bufferSize, '\0');
    const DWORD needed = ExpandEnvironmentStrings("%ZolDir%", root.data(), lib.bufferSize);
    // A root that does not fit the buffer would give a truncated path: as bad as none.
    if (needed == 0 || needed > lib.bufferSize) {
        TRACE_AS(fn, TRACE_LEVEL_ERROR, "<ExpandEnvironmentStrings failed. return FALSE");
        if (lib.startup) {
            std::puts("Get zol dir failed.");
            std::fflush(stdout);
        }
        return FALSE;
    }
    std::vector<char> path(lib.bufferSize, '\0');
    const int length = std::snprintf(path.data(), path.size(), "%s/lib/%s", root.data(), lib.file);
    HMODULE loaded = nullptr;
    if (length > 0 && static_cast<DWORD>(length) < lib.bufferSize) {
        loaded = LoadLibrary(path.data());
    }
    // Loading again replaces the handle: release the earlier reference so none is leaked.
    if (*lib.handle != nullptr)
        FreeLibrary(*lib.handle);
    *lib.handle = loaded;
    if (loaded == nullptr) {
        TRACE_AS(fn, TRACE_LEVEL_ERROR, "<LoadLibrary for %s failed.return FALSE.", lib.traceName);
        return FALSE;
    }
    TRACE_AS(fn, TRACE_LEVEL_TRACE, "<return TRUE.");
    return TRUE;
}

BOOL FreeOne(const LibrarySpec& lib, const char* fn) {
    TRACE_AS(fn, TRACE_LEVEL_TRACE, ">");
    if (*lib.handle != nullptr)
        FreeLibrary(*lib.handle);
    *lib.handle = nullptr;
    TRACE_AS(fn, TRACE_LEVEL_TRACE, "<return TRUE.");
    return TRUE;
}

// One function of the remote-report package: its library, its name and how to store it.
struct PackageFunction {
    HMODULE* library;
    const char* name;
    void (*store)(FARPROC);
};

#define PACKAGE_FUNCTION(lib, Name)                                               \
    PackageFunction {                                                             \
        &lib, #Name, [](FARPROC f) { p##Name = reinterpret_cast<Name##_fn*>(f); } \
    }

// In the order each library's functions are bound.
const PackageFunction kPackageFunctions[] = {
    PACKAGE_FUNCTION(hLibVNTHTTPS, GetHTTPProxyUse),
    PACKAGE_FUNCTION(hLibVNTHTTPS, GetHTTPProxyAddr),
    PACKAGE_FUNCTION(hLibVNTHTTPS, GetHTTPProxyPort),
    PACKAGE_FUNCTION(hLibVNTHTTPS, SetHTTPProxyUse),
    PACKAGE_FUNCTION(hLibVNTHTTPS, SetHTTPProxyAddr),
    PACKAGE_FUNCTION(hLibVNTHTTPS, SetHTTPProxyPort),
    PACKAGE_FUNCTION(hLibVNTHTTPS, GetHTTPSURL),
    PACKAGE_FUNCTION(hLibVNTHTTPS, SetHTTPSURL),
    PACKAGE_FUNCTION(hLibVNTHTTPS, GUIVntReport),
    PACKAGE_FUNCTION(hLibVNTUTILI, WriteOpenSetting),
    PACKAGE_FUNCTION(hLibVNTUTILI, setKeyFdType),
    PACKAGE_FUNCTION(hLibVNTUTILI, getKeyFdType),
    PACKAGE_FUNCTION(hLibVNTUTILI, getVntSuppressMode),
    PACKAGE_FUNCTION(hLibVNTUTILI, setVntSuppressMode),
    PACKAGE_FUNCTION(hLibVNTUTILI, getVntSuppressInterval),
    PACKAGE_FUNCTION(hLibVNTUTILI, setVntSuppressInterval),
    PACKAGE_FUNCTION(hLibCHKSET, CheckScheduleFile),
    PACKAGE_FUNCTION(hLibCHKSET, CheckLogFile),
    PACKAGE_FUNCTION(hLibHRTBEAT, ReportByMain),
};
static_assert(std::size(kPackageFunctions) == 19);

void ClearPackageFunctions() {
    for (const PackageFunction& f : kPackageFunctions)
        f.store(nullptr);
}

ErrorBoxSink g_errorBoxSink = nullptr;

}  // namespace

BOOL LoadRptsetDLL() {
    if (hLibRPTSET != nullptr) {
        ZOL_TRACE(TRACE_LEVEL_TRACE, ">");
        ZOL_TRACE(TRACE_LEVEL_TRACE, "<return TRUE.");
        return TRUE;
    }
    return LoadOne(kRptset, __func__);
}
BOOL FreeRptsetDLL() {
    return FreeOne(kRptset, __func__);
}
BOOL LoadDscopyDLL() {
    return LoadOne(kDscopy, __func__);
}
BOOL FreeDscopyDLL() {
    return FreeOne(kDscopy, __func__);
}
BOOL LoadVNTHTTPSDLL() {
    return LoadOne(kVnthttps, __func__);
}
BOOL FreeVNTHTTPSDLL() {
    return FreeOne(kVnthttps, __func__);
}
BOOL LoadVntutiliDLL() {
    return LoadOne(kVntutil, __func__);
}
BOOL FreeVntutiliDLL() {
    return FreeOne(kVntutil, __func__);
}
BOOL LoadChksetDLL() {
    return LoadOne(kChkset, __func__);
}
BOOL FreeChksetDLL() {
    return FreeOne(kChkset, __func__);
}
BOOL LoadHrtbeatDLL() {
    return LoadOne(kHrtbeat, __func__);
}
BOOL FreeHrtbeatDLL() {
    return FreeOne(kHrtbeat, __func__);
}
BOOL LoadSecrptDLL() {
    return LoadOne(kSecrpt, __func__);
}
BOOL FreeSecrptDLL() {
    return FreeOne(kSecrpt, __func__);
}

BOOL LoadVantrelPkgDLL() {
    ZOL_TRACE(TRACE_LEVEL_TRACE, ">");
    BOOL result = TRUE;
    // Pointers left from an earlier load may point into a library that is about to be replaced.
    ClearPackageFunctions();

    struct Loader {
        BOOL (*load)();
        const char* failure;
    };
    static constexpr Loader kLoaders[] = {
        {LoadVNTHTTPSDLL, "LoadVNTHTTPSDLL() failed!return 0."},
        {LoadVntutiliDLL, "LoadVntutiliDLL() failed!return 0."},
        {LoadChksetDLL, "LoadChksetDLL() failed!return 0."},
        {LoadHrtbeatDLL, "LoadHrtbeatDLL() failed!return 0."},
    };
    for (const Loader& loader : kLoaders) {
        if (!loader.load()) {
            ZOL_TRACE(TRACE_LEVEL_ERROR, "%s", loader.failure);
            result = FALSE;
        }
    }

    for (const PackageFunction& f : kPackageFunctions) {
        if (*f.library == nullptr)
            continue;  // its load failure is traced above
        FARPROC proc = GetProcAddress(*f.library, f.name);
        if (proc == nullptr) {
            ZOL_TRACE(TRACE_LEVEL_ERROR, "GetProcAddress(%s): %s", f.name, ZolLastLoadError());
            ZOL_TRACE(TRACE_LEVEL_ERROR, "GetProcAddress() failed!return 0.");
            result = FALSE;
            continue;
        }
        f.store(proc);
    }
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<return %d.", result);
    return result;
}

BOOL FreeVantrelPkgDLL() {
    ZOL_TRACE(TRACE_LEVEL_TRACE, ">");
    ClearPackageFunctions();
    FreeVNTHTTPSDLL();
    FreeVntutiliDLL();
    FreeChksetDLL();
    FreeHrtbeatDLL();
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<return TRUE.");
    return TRUE;
}

BOOL RegReadEx(HKEY root, LPCSTR keyPath, LPCSTR valueName, LPDWORD type, LPDWORD size,
               LPBYTE data) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] key=%s value=%s", keyPath ? keyPath : "(null)",
              valueName ? valueName : "(null)");
    if (keyPath == nullptr || type == nullptr || size == nullptr || data == nullptr || *size == 0) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<[IN]Param error.");
        return FALSE;
    }
    *type = 0;
    data[0] = 0;

    HKEY key = nullptr;
    if (RegOpenKeyEx(root, keyPath, 0, KEY_READ, &key) != ERROR_SUCCESS) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<Open registry failed.return FALSE.");
        return FALSE;
    }
    const LONG rc = RegQueryValueEx(key, valueName, nullptr, type, data, size);
    RegCloseKey(key);
    if (rc != ERROR_SUCCESS) {
        // A value too large for the buffer may leave part of it behind: the caller sees none.
        data[0] = 0;
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<Get value from registry failed.return FALSE.");
        return FALSE;
    }
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<return TRUE.");
    return TRUE;
}

std::string FuncCallErrText(const char* what) {
    const std::string format = MessageText("FUNC_CALL_ERR");
    std::string text = FormatText(format, {what != nullptr ? what : ""});
    // Cut to the box's buffer, never inside a multibyte character.
    text.resize(zolui::CutEuc(text, kFuncCallErrSize - 1).size());
    return text;
}

void ShowFuncCallErr(const char* what) {
    const std::string text = FuncCallErrText(what);
    if (g_errorBoxSink != nullptr) {
        g_errorBoxSink("Error", " ok ", text.c_str());
    } else {
        msgWindow("Error", " ok ", text.c_str());
    }
}

void SetErrorBoxSink(ErrorBoxSink sink) {
    g_errorBoxSink = sink;
}
