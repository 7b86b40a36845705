// ZOLamsadm entry point: start-up in a fixed order, the main menu, and shutdown in reverse.
#include <newt.h>
#include <zolwin.h>

#include <clocale>
#include <cstdio>
#include <cstdlib>

#include "frame/heap.h"
#include "frame/libraries.h"
#include "frame/menu.h"
#include "frame/msgfile.h"
#include "frame/startup.h"
#include "ui/terminal_events.h"
#include "ui/toolkit.h"

namespace {

// Owns what start-up has brought up so far and takes it down, on every way out of main, in the
// order the product has always used: the two libraries, the message file, the screen, and last
// the screen libraries.
class StartupState {
  public:
    StartupState() = default;
    StartupState(const StartupState&) = delete;
    StartupState& operator=(const StartupState&) = delete;
    ~StartupState() { tearDown(); }

    void tearDown() {
        if (rptset)
            FreeRptsetDLL();
        if (dscopy)
            FreeDscopyDLL();
        if (messageFile)
            FreeRcFile();
        if (screen) {
            newtCls();
            newtFinished();
            zolui::stopWatchingTerminal();
        }
        if (newtLibrary)
            freenewtlib();
        if (slangLibrary)
            freeslanglib();
        rptset = dscopy = messageFile = screen = newtLibrary = slangLibrary = false;
    }

    bool messageFile = false;
    bool dscopy = false;
    bool rptset = false;
    bool newtLibrary = false;
    bool slangLibrary = false;
    bool screen = false;
};

}  // namespace

int main(int argc, char* argv[]) {
    // Before anything else is allocated, so that the event screens' catalogues land on the
    // reserved room (frame/heap.h).
    const bool hugeHeap = ReserveHeap(kHeapReserve);
    TraceLogInit(0, "ZOLamsadm", 0, 5, 0);
    ZOL_TRACE(TRACE_LEVEL_TRACE, ">");
    ZOL_TRACE(TRACE_LEVEL_INFO, "heap room on huge pages: %d.", hugeHeap ? 1 : 0);

    if (IsAdministratorCommandLine(argc, argv))
        Adm_Flag = 1;
    ZOL_TRACE(TRACE_LEVEL_INFO, "Adm_Flag= %d.", Adm_Flag);

    const bool japanese = GetSystemDefaultLangID() == LANGID_JAPANESE;
    const char* const rcFile = japanese ? "/data/J_report.rc" : "/data/E_report.rc";
    ZOL_TRACE(TRACE_LEVEL_INFO, "rc file=%s", rcFile);

    StartupState state;
    // LoadRcFile writes the trace line of its own failures.
    if (!LoadRcFile(rcFile))
        return 0;
    state.messageFile = true;

    if (!IsZOLntserverReady()) {
        std::puts("Please confirm ZOLntserver is running!");
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<NT server is not running!exit(0).");
        // Ends the process at once: nothing is released on this path.
        std::exit(0);
    }

    if (!LoadDscopyDLL()) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<LoadDscopyDLL() failed!return 0.");
        return 0;
    }
    state.dscopy = true;
    if (!LoadRptsetDLL()) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<LoadRptsetDLL() failed!return 0.");
        return 0;
    }
    state.rptset = true;

    if (initnewtlib() == -1) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<Init newtlib failed!return 0.");
        return 0;
    }
    state.newtLibrary = true;
    if (initslanglib() == -1) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<Init slanglib failed!return 0.");
        return 0;
    }
    state.slangLibrary = true;

    // newt draws multibyte text only in a UTF-8 locale; the toolkit converts the EUC-JP texts.
    std::setlocale(LC_ALL, "");
    zolui::SetJapaneseText(japanese);
    state.screen = true;
    NewtStartUp();
    EditParameter();

    state.tearDown();
    // SIGTERM or SIGHUP closed every screen: the terminal is back as it was, and the process
    // now ends by that signal.
    if (const int sig = zolui::terminationSignal(); sig != 0) {
        ZOL_TRACE(TRACE_LEVEL_INFO, "<ended by signal %d.", sig);
        zolui::finishBySignal();
    }
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<return 1.");
    return 1;
}
