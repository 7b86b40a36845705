// Wrappers of the report-settings library's destination functions and of the remote report
// service's destination (mail settings, manager address, test reports, key-floppy flag). The
// call layer traces a missing function or a failed call; each wrapper adds its entry and exit
// lines. No password or mail text reaches the trace.
#include <cstdlib>
#include <cstring>

#include "frame/rptset_calls.h"

namespace {

BOOL ReturnBool(bool ok) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<return %s.", ok ? "TRUE" : "FALSE");
    return ok ? TRUE : FALSE;
}

LibResult ReturnResult(const LibResult& r) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<return %d (%s).", r.value,
              r.unbound() ? "unbound" : (r.ok() ? "succeeded" : "failed"));
    return r;
}

// Takes over a malloc'd text a library handed out: copied into *out (when wanted) and freed.
void TakeLibraryText(char* text, std::string* out) {
    if (out != nullptr)
        *out = text != nullptr ? text : "";
    std::free(text);
}

}  // namespace

BOOL ReadDestSetting(HMODULE lib, DestData* record) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] lib=%p", lib);
    if (record == nullptr)
        return ReturnBool(false);
    return ReturnBool(CallLibrary(lib, rptset::kGetDestSetting, record).ok());
}

LibResult WriteDestSetting(HMODULE lib, DestData* record) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] lib=%p", lib);
    if (record == nullptr)
        return ReturnResult({});
    return ReturnResult(CallLibrary(lib, rptset::kSetDestSetting, record));
}

BOOL ReadVntTo(HMODULE lib, char* out) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] lib=%p", lib);
    if (out == nullptr)
        return ReturnBool(false);
    const bool ok = CallLibrary(lib, rptset::kGetVntTo, out).ok();
    if (!ok)
        out[0] = '\0';
    return ReturnBool(ok);
}

LibResult ReadManagerIP(HMODULE lib, char* out) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] lib=%p", lib);
    if (out == nullptr)
        return ReturnResult({});
    return ReturnResult(CallLibrary(lib, rptset::kGetManagerIP, out));
}

LibResult ReadManagerPort(HMODULE lib, uint32_t* port) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] lib=%p", lib);
    if (port == nullptr)
        return ReturnResult({});
    return ReturnResult(CallLibrary(lib, rptset::kGetManagerPort, port));
}

LibResult WriteManagerAddress(HMODULE lib, const char* ip, uint32_t port) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] lib=%p port=%u", lib, port);
    if (ip == nullptr)
        return ReturnResult({});
    return ReturnResult(CallLibrary(lib, rptset::kSetManagerAddress, ip, port));
}

BOOL ReadMLDestSetting(HMODULE lib, VxMLDestData* mail, std::string* message) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] lib=%p", lib);
    if (mail == nullptr)
        return ReturnBool(false);
    char* text = nullptr;
    const bool ok = CallLibrary(lib, rptset::kGetAMAMDeseSetting, mail, &text).ok();
    TakeLibraryText(text, ok ? message : nullptr);
    return ReturnBool(ok);
}

BOOL WriteMLDestSetting(HMODULE lib, const VxMLDestData* mail, DestData* record, int recordOnly) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] lib=%p recordOnly=%d", lib, recordOnly);
    if (record == nullptr || (recordOnly == 0 && mail == nullptr))
        return ReturnBool(false);
    return ReturnBool(CallLibrary(lib, rptset::kSetAMAMDeseSetting, mail, record, recordOnly).ok());
}

LibResult SendTestReport(HMODULE lib, bool critical, const char* id, std::string* reason) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] lib=%p critical=%d", lib, critical ? 1 : 0);
    if (reason != nullptr)
        reason->clear();
    if (id == nullptr)
        return ReturnResult({});
    char* text = nullptr;
    const LibResult r = critical ? CallLibrary(lib, rptset::kTestFatalReport, id, &text)
                                 : CallLibrary(lib, rptset::kAMAMVantrelTestReport, id, &text);
    TakeLibraryText(text, reason);
    return ReturnResult(r);
}

LibResult SendOpeningReport(HMODULE lib, std::string* reason) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] lib=%p", lib);
    if (reason != nullptr)
        reason->clear();
    char* text = nullptr;
    const LibResult r = CallLibrary(lib, rptset::kAMAMVantrelOpeningReport, &text);
    TakeLibraryText(text, reason);
    return ReturnResult(r);
}

BOOL CheckInstVantrelFD(HMODULE lib) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] lib=%p", lib);
    const LibResult r = CallLibrary(lib, rptset::kCheckKeyFDFlag);
    return ReturnBool(r.ok() && r.value != 0);
}
