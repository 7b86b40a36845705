// The base-setting menu: the report methods and the other settings, each row opening its panel.
#include <newt.h>
#include <slang.h>

#include <iterator>
#include <string>
#include <vector>

#include "baseset/baseset.h"
#include "frame/libraries.h"
#include "frame/msgfile.h"
#include "frame/screens.h"
#include "ui/dialog.h"
#include "ui/palette.h"
#include "ui/toolkit.h"

// ---- The base-setting menu ----

namespace {

// The remote report base screen is drawn with newt's textbox colours set to black on light gray;
// the screen's own textbox colours (the administrator's, if NEWT_COLORS names them) come back
// however that screen ends.
class VantrelTextboxColours {
  public:
    VantrelTextboxColours() {
        SLtt_set_color(NEWT_COLORSET_TEXTBOX, nullptr, const_cast<char*>("black"),
                       const_cast<char*>("lightgray"));
    }
    ~VantrelTextboxColours() {
        const newtColors& palette = zolui::StartupPalette();
        SLtt_set_color(NEWT_COLORSET_TEXTBOX, nullptr, palette.textboxFg, palette.textboxBg);
    }
    VantrelTextboxColours(const VantrelTextboxColours&) = delete;
    VantrelTextboxColours& operator=(const VantrelTextboxColours&) = delete;
};

// The menu's two lists: the report methods, and the other settings.
enum class MenuList { Report, Other };

// One row of the menu: its list, label, when it shows, the screen it opens and the name the
// error box gives that screen when it cannot open (-1). A row's listbox key is its index here.
struct BaseMenuRow {
    MenuList list;
    const char* labelId;
    bool (*shown)(bool internetMail);
    const char* screen;
    int (*open)(HMODULE lib);
};

bool Always(bool) {
    return true;
}
bool InInternetMailMode(bool internetMail) {
    return internetMail;
}

constexpr BaseMenuRow kBaseMenuRows[] = {
    {MenuList::Report, "BASE_REPORT_SNMP_ID", Always, "SubSNMPPanel", SubSNMPPanel},
    {MenuList::Report, "BASE_REPORT_INBAND_ID", Always, "SubSimplePanel",
     [](HMODULE lib) { return SubSimplePanel(BASE_METHOD_INBAND, lib); }},
    {MenuList::Report, "BASE_REPORT_OUTBAND_ID", Always, "SubSimplePanel",
     [](HMODULE lib) { return SubSimplePanel(BASE_METHOD_OUTBAND, lib); }},
    {MenuList::Report, "BASE_REPORT_VANTREL_ID", InInternetMailMode, "VantrelBaseSetting",
     [](HMODULE lib) {
         const VantrelTextboxColours colours;
         return VantrelBaseSetting(lib);
     }},
    {MenuList::Other, "BASE_OTHER_SHUTDOWN_ID", Always, "SubShutdownPanel", SubShutdownPanel},
};
constexpr int kRowCount = static_cast<int>(std::size(kBaseMenuRows));

enum MenuId : int { kReportListId = 1, kOtherListId };

// Opens the screen of the chosen row of a list; a failed screen leaves the menu open after its
// error box.
void EnterRow(HMODULE lib, MenuList list, int row) {
    if (row < 0 || row >= kRowCount || kBaseMenuRows[row].list != list) {
        // No such row exists; the boxes stay for the rows a later release may add.
        if (list == MenuList::Other) {
            msgWindow("Warning", "Return", "Not implemented yet!");
        } else {
            const std::string title = MessageText("TITTLE_WARNING_ID");
            msgWindow(title.c_str(), " ok ",
                      CPGetText("WARN_INVALID_ID", ReadString, ZOL_RcFileBuf));
        }
        return;
    }
    const BaseMenuRow& entry = kBaseMenuRows[row];
    if (entry.open(lib) == -1)
        ShowFuncCallErr(entry.screen);
}

// One list of the menu with the rows that show in it, its first row current.
newtComponent AddList(zolui::Dialog& dialog, MenuList list, bool internetMail, int id) {
    std::vector<int> rows;
    for (int i = 0; i < kRowCount; ++i) {
        if (kBaseMenuRows[i].list == list && kBaseMenuRows[i].shown(internetMail))
            rows.push_back(i);
    }
    newtComponent listbox =
        dialog.add(zolui::listbox(static_cast<int>(rows.size()), NEWT_FLAG_RETURNEXIT), id);
    for (int row : rows)
        zolui::listboxAppendIndex(listbox,
                                  zolui::menuRowText(MessageText(kBaseMenuRows[row].labelId)), row);
    if (!rows.empty())
        zolui::listboxSetCurrentIndex(listbox, rows.front());
    return listbox;
}

// Frees the base records on every way out of the menu.
struct BaseRecordsGuard {
    ~BaseRecordsGuard() { FreeAllBaseSetting(); }
};

}  // namespace

void BaseSetting(HMODULE lib) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] lib=%p", lib);
    const bool internetMail = CheckIMMode(lib);
    const BaseRecordsGuard records;
    if (!InitAllBaseSetting(lib)) {
        ShowFuncCallErr("InitAllBaseSetting");
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<InitAllBaseSetting() failed.");
        return;
    }

    // Build: the report label and list, the other label and list, Close.
    zolui::Dialog dialog;
    newtComponent reportLabel = dialog.add(zolui::label(-1, -1, MessageText("BASE_REPORT_ID")));
    newtComponent reportList = AddList(dialog, MenuList::Report, internetMail, kReportListId);
    newtComponent otherList = AddList(dialog, MenuList::Other, internetMail, kOtherListId);
    newtComponent otherLabel = dialog.add(zolui::label(-1, -1, MessageText("BASE_OTHER_ID")));
    newtComponent close =
        dialog.add(zolui::button(-1, -1, MessageText("BUTTON_CLOSE_ID")), zolui::kCancelId);
    zolui::Grid lists(1, 4);
    lists.set(0, 0, reportLabel, {}, NEWT_ANCHOR_LEFT);
    lists.set(0, 1, reportList, {.top = 1}, NEWT_ANCHOR_LEFT);
    lists.set(0, 2, otherLabel, {.top = 1}, NEWT_ANCHOR_LEFT);
    lists.set(0, 3, otherList, {.top = 1}, NEWT_ANCHOR_LEFT);
    zolui::Grid grid(1, 2);
    grid.set(0, 0, std::move(lists), {}, NEWT_ANCHOR_TOP);
    grid.set(0, 1, close, {.top = 2}, NEWT_ANCHOR_TOP);
    dialog.open(grid, MessageText("TITTLE_BASE_ID"));

    // Handlers: a chosen row opens its screen; Close, Ctrl-O or F12 end the menu.
    auto enter = [lib](MenuList list, newtComponent listbox) {
        return [lib, list, listbox] {
            EnterRow(lib, list, zolui::listboxCurrentIndex(listbox));
            return zolui::Next::Stay;
        };
    };
    dialog.run({{kReportListId, enter(MenuList::Report, reportList)},
                {kOtherListId, enter(MenuList::Other, otherList)}});
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<");
}
