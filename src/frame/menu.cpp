// The main menu: a listbox of the settings areas and a Close button, the guarded entry into the
// syslog settings, and the release of what the settings screens loaded.
#include "frame/menu.h"
#include "frame/screens.h"

#include <newt.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <string>
#include <string_view>

#include "frame/libraries.h"
#include "frame/msgfile.h"
#include "frame/screens.h"
#include "frame/startup.h"
#include "ui/toolkit.h"

namespace {

// Rows of the menu, in order; a row's listbox key is its index. The last row (the remote report
// service) is shown only when that service is installed.
enum MenuRow : int { kBaseRow = 0, kDestinationRow, kAgentEventRow, kSyslogRow, kVantrelRow };
constexpr std::array<const char*, 5> kRowLabelIds = {
    "MAIN_BASESET_ID", "MAIN_DESTSET_ID", "MAIN_AGENTS_ID", "MAIN_SYSLOG_ID", "MAIN_VANTREL_ID"};

// Menu rows are 40 columns: the label padded to 41 and cut to 40.
constexpr std::size_t kRowWidth = 40;
// Ids of what can end a run of the menu form.
constexpr int kCloseId = 1;

// The event-log monitoring service guards its settings with this mutex and rereads them when the
// event is signalled.
constexpr DWORD kSyncAccess = 0x1F0003;
constexpr const char* kEventLogMutex = "EVENTLOG_SEMA";
constexpr const char* kEventLogModified = "Eventlog_Mod_Event";
constexpr int kMutexAttempts = 3;
constexpr DWORD kMutexWaitMs = 1000;

std::string RowText(std::string_view label) {
    std::string row(label);
    if (row.size() < kRowWidth + 1)
        row.resize(kRowWidth + 1, ' ');
    row.resize(kRowWidth);
    return row;
}

void WarningBox(const char* textId) {
    const std::string title = MessageText("TITTLE_WARNING_ID");
    msgWindow(title.c_str(), " ok ", CPGetText(textId, ReadString, ZOL_RcFileBuf));
}

// Tells the event-log monitor that its settings may have changed, when it is running.
void SignalEventLogMonitor() {
    HANDLE event = OpenEvent(kSyncAccess, FALSE, kEventLogModified);
    if (event == nullptr)
        return;
    SetEvent(event);
    CloseHandle(event);
}

// Enters the syslog settings while holding the event-log monitor's mutex, or unguarded when the
// monitor is not running (no mutex). `acquiredOnce` is the menu's remembered flag: after one
// successful entry, a later entry that cannot get the mutex goes back to the menu silently and
// leaves its handle open. Old releases behaved so and administrators know it; keep it.
void EnterSyslogSetting(bool& acquiredOnce) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] acquiredOnce=%d", acquiredOnce ? 1 : 0);
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
        acquiredOnce = true;
        SyslogSetting(hLibRPTSET, hLibDSCOPY);
        SignalEventLogMonitor();
        ReleaseMutex(mutex);
        CloseHandle(mutex);
        ZOL_TRACE(TRACE_LEVEL_TRACE, "<return (guarded).");
        return;
    }
    if (acquiredOnce) {
        ZOL_TRACE(TRACE_LEVEL_TRACE, "<return (%s busy).", kEventLogMutex);
        return;
    }
    CloseHandle(mutex);
    const std::string title = MessageText("TITTLE_WARNING_ID");
    const std::string text = MessageText("ACCESS_REGISTRY_ERR");
    msgWindow(title.c_str(), " ok ", text.c_str());
    ZOL_TRACE(TRACE_LEVEL_ERROR, "%s.", text.c_str());
}

// Loads what the destination and event screens need. False ends the menu.
bool PrepareRow(int row) {
    if (row == kDestinationRow || row == kAgentEventRow || row == kSyslogRow) {
        if (InitialDS(hLibRPTSET) == -1) {
            ZOL_TRACE(TRACE_LEVEL_ERROR, "InitialDS(hLibRPTSET) == -1");
            ShowFuncCallErr("InitialDS");
            return false;
        }
    }
    if (row == kAgentEventRow || row == kSyslogRow) {
        GetReportIDformReg(hLibRPTSET);
        if (IDList == nullptr) {
            ZOL_TRACE(TRACE_LEVEL_ERROR, "GetReportIDformReg initialize for IDList failed.");
            return false;
        }
    }
    return true;
}

void EnterRow(int row, bool& syslogAcquiredOnce) {
    switch (row) {
        case kBaseRow:
            BaseSetting(hLibRPTSET);
            break;
        case kDestinationRow:
            DestinationSetting(hLibRPTSET, hLibDSCOPY);
            break;
        case kAgentEventRow:
            AgentEventSetting(hLibRPTSET);
            break;
        case kSyslogRow:
            EnterSyslogSetting(syslogAcquiredOnce);
            break;
        case kVantrelRow:
            VantrelReportSetting(hLibRPTSET);
            break;
        default:
            WarningBox("WARN_INVALID_ID");
            break;
    }
}

void RunMenu() {
    std::array<std::string, kRowLabelIds.size()> labels;
    for (std::size_t i = 0; i < labels.size(); ++i)
        labels[i] = MessageText(kRowLabelIds[i]);
    const int rows = Vantrel_Installed == 1 ? 5 : 4;

    zolui::Window window;
    zolui::Form form;
    newtComponent listbox = form.add(newtListbox(-1, -1, rows, NEWT_FLAG_RETURNEXIT));
    for (int i = 0; i < rows; ++i)
        zolui::listboxAppendIndex(listbox, RowText(labels[i]), i);
    newtListboxSetCurrent(listbox, 0);
    newtComponent close = form.add(zolui::button(-1, -1, MessageText("BUTTON_CLOSE_ID")), kCloseId);

    zolui::Grid grid(1, 2);
    grid.set(0, 0, listbox, {}, NEWT_ANCHOR_TOP);
    grid.set(0, 1, close, {.top = 1}, NEWT_ANCHOR_TOP);
    window.openWrapped(grid, MessageText("TITTLE_MAIN_ID"));
    form.addHotKey(1);
    form.addHotKey(15);

    bool syslogAcquiredOnce = false;
    for (;;) {
        const zolui::RunResult result = form.run();
        // The Close button, a hot key or anything but a chosen row ends the menu.
        if (result.reason != zolui::RunResult::Reason::Component || result.id == kCloseId)
            break;
        const int row = zolui::listboxCurrentIndex(listbox);
        if (!PrepareRow(row))
            break;
        EnterRow(row, syslogAcquiredOnce);
    }
}

}  // namespace

int32_t CheckVntInstalled() {
    ZOL_TRACE(TRACE_LEVEL_TRACE, ">");
    auto* check = BindFromHandle<CheckInstVantrel_fn>(hLibRPTSET, "CheckInstVantrel");
    if (check == nullptr) {
        ShowFuncCallErr("GetProcAddress for CheckInstVantrel");
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<GetProcAddress for CheckInstVantrel failed.return FALSE.");
        return 0;
    }
    const int32_t installed = check();
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<return %d.", installed);
    return installed;
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
    newtSuspend();
    std::printf("\n");
    std::printf("\nPress a key to continue: ");
    std::fflush(stdout);
    std::getchar();
    newtResume();
}
