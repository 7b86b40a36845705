// Start-up state shared by every screen and the newt screen bring-up of the main program.
#include "frame/startup.h"

#include <newt.h>
#include <zolwin.h>

#include <cstring>
#include <string>

#include "frame/msgfile.h"
#include "frame/textformat.h"
#include "ui/palette.h"
#include "ui/terminal_events.h"
#include "ui/toolkit.h"

int32_t Adm_Flag = 0;
int32_t Vantrel_Installed = 0;

bool IsAdministratorCommandLine(int argc, const char* const* argv) {
    return argc == 2 && argv != nullptr && argv[1] != nullptr && std::strcmp(argv[1], "-A") == 0;
}

void NewtStartUp() {
    ZOL_TRACE(TRACE_LEVEL_TRACE, ">");
    zolui::rememberTerminal();
    newtInit();
    // From here a new size redraws the screen and SIGTERM or SIGHUP closes it properly.
    zolui::watchTerminal();
    // The product's palette, with the administrator's NEWT_COLORS over it (ui/palette.h).
    newtSetColors(zolui::StartupPalette());
    newtCls();
    // newt keeps its own copy of the help line.
    newtPushHelpLine(
        zolui::toNewt(CPGetText("MAIN_HELPLINE_ID", ReadString, ZOL_RcFileBuf)).c_str());
    // The root text is its own format without arguments: "%%" in the message file shows as "%".
    char rootText[100];
    FormatTextInto(rootText, sizeof rootText,
                   CPGetText("MAIN_ROOTTEXT_ID", ReadString, ZOL_RcFileBuf));
    zolui::drawRootText(0, 0, rootText);
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<");
}
