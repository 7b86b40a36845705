// The main menu: a listbox of the settings areas and a Close button, the guarded entry into the
// syslog settings, and the release of what the settings screens loaded.
#include "frame/menu.h"

#include <newt.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <iterator>
#include <string>

#include "frame/libraries.h"
#include "frame/msgfile.h"
#include "frame/rptset_calls.h"
#include "frame/screens.h"
#include "frame/startup.h"
#include "ui/dialog.h"
#include "ui/toolkit.h"

namespace {

// The event-log monitoring service guards its settings with this mutex and rereads them when the
// event is signalled.
constexpr DWORD kSyncAccess = 0x1F0003;
constexpr const char* kEventLogMutex = "EVENTLOG_SEMA";
constexpr const char* kEventLogModified = "Eventlog_Mod_Event";
constexpr int kMutexAttempts = 3;
constexpr DWORD kMutexWaitMs = 1000;

// What the menu remembers between the screens it enters.
struct MenuState {
    // After one guarded entry into the syslog settings, a later entry that cannot get the mutex
    // goes back to the menu silently (see EnterSyslogSetting).
    bool syslogAcquiredOnce = false;
};

// Tells the event-log monitor that its settings may have changed, when it is running.
void SignalEventLogMonitor() {
    HANDLE event = OpenEvent(kSyncAccess, FALSE, kEventLogModified);
    if (event == nullptr)
        return;
    SetEvent(event);
    CloseHandle(event);
}

// Enters the syslog settings while holding the event-log monitor's mutex, or unguarded when the
// monitor is not running (no mutex). After one successful entry, a later entry that cannot get
// the mutex goes back to the menu silently and leaves its handle open. Old releases behaved so
// and administrators know it; keep it.
void EnterSyslogSetting(MenuState& state) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] acquiredOnce=%d", state.syslogAcquiredOnce ? 1 : 0);
    HANDLE mutex = OpenMutex(kSyncAccess, FALSE, kEventLogMutex);
    if (mutex == nullptr) {
        SyslogSetting(hLibRPTSET, hLibDSCOPY);
        SignalEventLogMonitor();
        ZOL_TRACE(TRACE_LEVEL_TRACE, "<return (no %s).", kEventLogMutex);
        return;
    }

    bool acquired = false;
    for (int attempt = 0; attempt < kMutexAttempts && !acquired; ++attempt) {
        acquired = WaitForSingleObject(mutex, kMutexWaitMs) == ZOL_WAIT_ACQUIRED;
        if (!acquired)
            sleep(1);
    }
    if (acquired) {
        state.syslogAcquiredOnce = true;
        SyslogSetting(hLibRPTSET, hLibDSCOPY);
        SignalEventLogMonitor();
        ReleaseMutex(mutex);
        CloseHandle(mutex);
        ZOL_TRACE(TRACE_LEVEL_TRACE, "<return (guarded).");
        return;
    }
    if (state.syslogAcquiredOnce) {
        ZOL_TRACE(TRACE_LEVEL_TRACE, "<return (%s busy).", kEventLogMutex);
        return;
    }
    CloseHandle(mutex);
    const std::string title = MessageText("TITTLE_WARNING_ID");
    const std::string text = MessageText("ACCESS_REGISTRY_ERR");
    msgWindow(title.c_str(), " ok ", text.c_str());
    ZOL_TRACE(TRACE_LEVEL_ERROR, "%s.", text.c_str());
}

// ---- What a row loads before its screen; false ends the menu ----

bool LoadDestinations() {
    if (InitialDS(hLibRPTSET) == -1) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "InitialDS(hLibRPTSET) == -1");
        ShowFuncCallErr("InitialDS");
        return false;
    }
    return true;
}

bool LoadDestinationsAndIDList() {
    if (!LoadDestinations())
        return false;
    GetReportIDformReg(hLibRPTSET);
    if (IDList == nullptr) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "GetReportIDformReg initialize for IDList failed.");
        return false;
    }
    return true;
}

bool Always() {
    return true;
}

bool VantrelInstalled() {
    return Vantrel_Installed == 1;
}

// The rows of the menu, in order; a row's listbox key is its index here.
struct MenuRow {
    const char* labelId;
    bool (*shown)();
    bool (*load)();  // null: the screen needs nothing loaded
    void (*open)(MenuState& state);
};

constexpr MenuRow kMenuRows[] = {
    {"MAIN_BASESET_ID", Always, nullptr, [](MenuState&) { BaseSetting(hLibRPTSET); }},
    {"MAIN_DESTSET_ID", Always, LoadDestinations,
     [](MenuState&) { DestinationSetting(hLibRPTSET, hLibDSCOPY); }},
    {"MAIN_AGENTS_ID", Always, LoadDestinationsAndIDList,
     [](MenuState&) { AgentEventSetting(hLibRPTSET); }},
    {"MAIN_SYSLOG_ID", Always, LoadDestinationsAndIDList, EnterSyslogSetting},
    {"MAIN_VANTREL_ID", VantrelInstalled, nullptr,
     [](MenuState&) { VantrelReportSetting(hLibRPTSET); }},
};
constexpr int kRowCount = static_cast<int>(std::size(kMenuRows));
constexpr int kMenuListId = 1;

// Opens the chosen row's screen after loading what it needs; false ends the menu.
bool EnterRow(int row, MenuState& state) {
    if (row < 0 || row >= kRowCount) {
        const std::string title = MessageText("TITTLE_WARNING_ID");
        msgWindow(title.c_str(), " ok ", CPGetText("WARN_INVALID_ID", ReadString, ZOL_RcFileBuf));
        return true;
    }
    const MenuRow& entry = kMenuRows[row];
    if (entry.load != nullptr && !entry.load())
        return false;
    entry.open(state);
    return true;
}

void RunMenu() {
    zolui::Dialog dialog;
    const int shownRows = static_cast<int>(std::count_if(
        std::begin(kMenuRows), std::end(kMenuRows), [](const MenuRow& r) { return r.shown(); }));
    newtComponent list = dialog.add(zolui::listbox(shownRows, NEWT_FLAG_RETURNEXIT), kMenuListId);
    for (int i = 0; i < kRowCount; ++i) {
        if (kMenuRows[i].shown())
            zolui::listboxAppendIndex(list, zolui::menuRowText(MessageText(kMenuRows[i].labelId)),
                                      i);
    }
    newtComponent close =
        dialog.add(zolui::button(-1, -1, MessageText("BUTTON_CLOSE_ID")), zolui::kCancelId);

    zolui::Grid grid(1, 2);
    grid.set(0, 0, list, {}, NEWT_ANCHOR_TOP);
    grid.set(0, 1, close, {.top = 1}, NEWT_ANCHOR_TOP);
    dialog.open(grid, MessageText("TITTLE_MAIN_ID"));

    // The Close button, Ctrl-O or F12 end the menu, as does a row whose data cannot be loaded.
    MenuState state;
    dialog.run({{kMenuListId, [&] {
                     return EnterRow(zolui::listboxCurrentIndex(list), state) ? zolui::Next::Stay
                                                                              : zolui::Next::Close;
                 }}});
}

}  // namespace

int32_t CheckVntInstalled() {
    ZOL_TRACE(TRACE_LEVEL_TRACE, ">");
    const LibResult installed = CallLibrary(hLibRPTSET, rptset::kCheckInstVantrel);
    if (installed.unbound()) {
        ShowFuncCallErr("GetProcAddress for CheckInstVantrel");
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<GetProcAddress for CheckInstVantrel failed.return FALSE.");
        return 0;
    }
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<return %d.", installed.value);
    return installed.value;
}

void EditParameter() {
    ZOL_TRACE(TRACE_LEVEL_TRACE, ">");
    const int32_t installed = CheckVntInstalled();
    if (installed == 1 && !LoadVantrelPkgDLL()) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "LoadVantrelPkgDLL failed!");
    }
    ZOL_TRACE(TRACE_LEVEL_INFO, "CheckVntInstalled() return %d", installed);
    Vantrel_Installed = installed;

    RunMenu();

    FreeDestTable();
    FreeReportID();
    FreeVantrelPkgDLL();
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<");
}

void suspend_callback() {
    const zolui::Suspended handBack;
    std::printf("\n");
    std::printf("\nPress a key to continue: ");
    std::fflush(stdout);
    std::getchar();
}
