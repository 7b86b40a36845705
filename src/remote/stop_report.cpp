// Ending the remote report service: the stop report goes out through the delivery library of the
// stored method, loaded for this one report; the administrator may try again when the library
// says so; once it was sent, SRVINFO.DLL clears the service's set-up. Nothing is rolled back
// when the report fails: the set-up stays as it was.
#include <cstdlib>
#include <memory>
#include <optional>
#include <string>
#include <type_traits>

#include "frame/libraries.h"
#include "frame/msgfile.h"
#include "frame/rptset_calls.h"
#include "frame/textformat.h"
#include "frame/vantrel_calls.h"
#include "regpaths.h"
#include "remote/vantrel_menu.h"
#include "ui/newt_raii.h"
#include "ui/toolkit.h"

DWORD m_dwResult = 2;
char* m_lpszErrMsg = nullptr;
HMODULE hLib = nullptr;

namespace {

constexpr DWORD kSent = 0;
constexpr DWORD kMayRetry = 1;
constexpr DWORD kFailedLogged = 2;
constexpr DWORD kFailedLoggedToo = 3;
constexpr int kLibraryNameSize = 128;
constexpr std::size_t kRootPathSize = 4096;
// What the delivery library is told the report is: the stop ("end") report.
constexpr const char* kStopReportKind = "E";

// The delivery library and its report entry of each method (VANTREL_*); the HTTPS method asks
// "vntutil.dll" for its library.
struct Delivery {
    const char* library;
    const char* entry;
};
constexpr Delivery kDeliveries[] = {
    {"mailrpt.dll", "AMEIMain"},
    {"dialsvc.dll", "AM_Dll_ALV_Vnt"},
    {"vntmgr.dll", "AMVntManReport_E"},
};
constexpr const char* kSelectedEntry = "GUIVntReport";

struct Chosen {
    std::string library, entry;
};

// Frees the library LoadDLL loaded when the scope ends.
struct LoadedDll {
    LoadedDll() = default;
    LoadedDll(const LoadedDll&) = delete;
    LoadedDll& operator=(const LoadedDll&) = delete;
    ~LoadedDll() {
        if (hLib != nullptr)
            FreeLibrary(hLib);
        hLib = nullptr;
    }
};

void FreeErrorText() {
    std::free(m_lpszErrMsg);
    m_lpszErrMsg = nullptr;
}

bool AskRetry() {
    const std::string title = MessageText("TITTLE_WARNING_ID");
    const std::string text = MessageText("IDS_MSG_RETRY");
    newtComponent buttons[2] = {zolui::button(-1, -1, MessageText("BUTTON_OK_ID")),
                                zolui::button(-1, -1, MessageText("BUTTON_CANCEL_ID"))};
    const newtComponent ok = buttons[0];
    return SelectFromButtons(title.c_str(), text.c_str(), buttons, 2) == ok;
}

void ErrorBox(const char* title, const char* textId, const std::string& argument) {
    const std::string text = FormatText(MessageText(textId), {argument});
    msgWindow(title, " ok ", text.c_str());
}

// The delivery library and entry of the stored method: nothing, after the box, when there is
// none.
std::optional<Chosen> ChooseDelivery(HMODULE lib) {
    int method = 0;
    if (GetVntMethod(lib, &method) != 0) {
        ShowFuncCallErr("GetVntMethod");
        return std::nullopt;
    }
    if (method >= 0 && method < static_cast<int>(std::size(kDeliveries)))
        return Chosen{kDeliveries[method].library, kDeliveries[method].entry};
    char name[kLibraryNameSize] = {};
    if (!SelectedDeliveryLibrary(hLibVNTUTILI, name, kLibraryNameSize)) {
        ShowFuncCallErr("VNTGetSelectedDllName");
        return std::nullopt;
    }
    return Chosen{name, kSelectedEntry};
}

// The set-up of the ended service is cleared; a failure is only traced.
void ClearEndedService() {
    const LoadedDll loaded;
    if (!LoadDLL("SRVINFO.DLL")) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "SRVINFO.DLL cannot be loaded; the set-up stays.");
        return;
    }
    if (!ClearServiceSetup(hLib))
        ZOL_TRACE(TRACE_LEVEL_ERROR, "VX_Clear_EMP_info_Data failed; the set-up stays.");
}

void ReportFailure() {
    if (m_dwResult != kFailedLogged && m_dwResult != kFailedLoggedToo && m_lpszErrMsg != nullptr)
        msgWindow("Error", " ok ", m_lpszErrMsg);
    FreeErrorText();
    const std::string text = MessageText("IDS_ERR_END");
    msgWindow("Error", "ok", text.c_str());
}

}  // namespace

BOOL LoadDLL(const char* name) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] name=%s", name ? name : "(null)");
    if (name == nullptr || name[0] == '\0') {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<[IN]no library name.return FALSE.");
        return FALSE;
    }
    char root[kRootPathSize] = {};
    if (!GetZolRootPath(root, sizeof root)) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<GetZolRootPath failed.return FALSE.");
        return FALSE;
    }
    const std::string path = std::string(root) + "/lib/" + name;
    hLib = LoadLibrary(path.c_str());
    if (hLib == nullptr) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<LoadLibrary for %s failed.return FALSE.", path.c_str());
        return FALSE;
    }
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<return TRUE.");
    return TRUE;
}

void DoReport(HMODULE lib) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] lib=%p", lib);
    HKEY key = nullptr;
    if (const LONG rc = RegCreateKey(HKEY_LOCAL_MACHINE, ZOL_KEY_VNT_STOPREPORT, &key);
        rc != ERROR_SUCCESS) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<%s cannot be opened (%d).", ZOL_KEY_VNT_STOPREPORT, rc);
        return;
    }
    RegCloseKey(key);
    const std::optional<Chosen> chosen = ChooseDelivery(lib);
    if (!chosen) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<no delivery library.");
        return;
    }
    const std::string& library = chosen->library;
    const std::string& entry = chosen->entry;
    const LoadedDll loaded;
    if (!LoadDLL(library.c_str())) {
        ErrorBox("ERROR", "IDS_ERR_LOAD_DLL", library);
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<%s not loaded.", library.c_str());
        return;
    }
    const LibResult sent = CallDeliveryEntry(hLib, entry.c_str(), &m_lpszErrMsg, kStopReportKind);
    if (sent.unbound()) {
        ErrorBox("ERROR", "IDS_ERR_EXE_FUNC", entry);
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<%s not found in %s.", entry.c_str(), library.c_str());
        return;
    }
    m_dwResult = static_cast<DWORD>(sent.value);
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<%s gave %u.", entry.c_str(), m_dwResult);
}

void StopService(HMODULE lib) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] lib=%p", lib);
    for (;;) {
        m_dwResult = kFailedLogged;
        FreeErrorText();
        DoReport(lib);
        if (m_dwResult != kMayRetry || !AskRetry())
            break;
    }
    if (m_dwResult != kSent) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "stop report failed (%u): %s", m_dwResult,
                  m_lpszErrMsg ? m_lpszErrMsg : "");
        ReportFailure();
        ZOL_TRACE(TRACE_LEVEL_TRACE, "<not ended.");
        return;
    }
    const std::string text = MessageText("IDS_MSG_END");
    msgWindow("Message", "ok", text.c_str());
    FreeErrorText();
    ClearEndedService();
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<ended.");
}
