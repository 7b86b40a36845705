// The base-setting menu: the report methods and the other settings, each row opening its panel.
#include <newt.h>
#include <slang.h>

#include <array>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>

#include "baseset/baseset.h"
#include "frame/libraries.h"
#include "frame/msgfile.h"
#include "frame/screens.h"
#include "ui/toolkit.h"

// ---- The base-setting menu ----

namespace {

// Rows of the report list; a row's listbox key is its index. The remote report row is offered
// only in internet-mail mode.
enum ReportRow : int { kSnmpRow = 0, kInbandRow, kOutbandRow, kVantrelRow };
constexpr std::array<const char*, 4> kReportLabelIds = {
    "BASE_REPORT_SNMP_ID", "BASE_REPORT_INBAND_ID", "BASE_REPORT_OUTBAND_ID",
    "BASE_REPORT_VANTREL_ID"};
// The one row of the "other" list.
constexpr int kShutdownRow = 0;

// Rows are 40 columns: the label padded to 41 and cut to 40, as in the main menu.
constexpr std::size_t kRowWidth = 40;

enum MenuId : int { kReportListId = 1, kOtherListId, kCloseId };

std::string RowText(std::string_view label) {
    std::string row(label);
    if (row.size() < kRowWidth + 1)
        row.resize(kRowWidth + 1, ' ');
    row.resize(kRowWidth);
    return row;
}

// The remote report base screen is drawn with newt's textbox colours set to black on light gray;
// the product's own textbox colours come back however that screen ends.
class VantrelTextboxColours {
  public:
    VantrelTextboxColours() {
        SLtt_set_color(NEWT_COLORSET_TEXTBOX, nullptr, const_cast<char*>("black"),
                       const_cast<char*>("lightgray"));
    }
    ~VantrelTextboxColours() {
        SLtt_set_color(NEWT_COLORSET_TEXTBOX, nullptr, const_cast<char*>("blue"),
                       const_cast<char*>("lightgray"));
    }
    VantrelTextboxColours(const VantrelTextboxColours&) = delete;
    VantrelTextboxColours& operator=(const VantrelTextboxColours&) = delete;
};

void EnterReportRow(HMODULE hLibRPTSET, int row) {
    int result = 0;
    const char* screen = nullptr;
    switch (row) {
        case kSnmpRow:
            screen = "SubSNMPPanel";
            result = SubSNMPPanel(hLibRPTSET);
            break;
        case kInbandRow:
            screen = "SubSimplePanel";
            result = SubSimplePanel(BASE_METHOD_INBAND, hLibRPTSET);
            break;
        case kOutbandRow:
            screen = "SubSimplePanel";
            result = SubSimplePanel(BASE_METHOD_OUTBAND, hLibRPTSET);
            break;
        case kVantrelRow: {
            screen = "VantrelBaseSetting";
            const VantrelTextboxColours colours;
            result = VantrelBaseSetting(hLibRPTSET);
            break;
        }
        default: {
            const std::string title = MessageText("TITTLE_WARNING_ID");
            msgWindow(title.c_str(), " ok ",
                      CPGetText("WARN_INVALID_ID", ReadString, ZOL_RcFileBuf));
            return;
        }
    }
    if (result == -1)
        ShowFuncCallErr(screen);
}

void EnterOtherRow(HMODULE hLibRPTSET, int row) {
    if (row == kShutdownRow) {
        if (SubShutdownPanel(hLibRPTSET) == -1)
            ShowFuncCallErr("SubShutdownPanel");
        return;
    }
    // No other row exists; the box stays for the rows a later release may add.
    msgWindow("Warning", "Return", "Not implemented yet!");
}

// Frees the base records on every way out of the menu.
struct BaseRecordsGuard {
    ~BaseRecordsGuard() { FreeAllBaseSetting(); }
};

}  // namespace

void BaseSetting(HMODULE hLibRPTSET) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] hLibRPTSET=%p", hLibRPTSET);
    const bool internetMail = CheckIMMode(hLibRPTSET);
    std::array<std::string, kReportLabelIds.size()> reportLabels;
    for (std::size_t i = 0; i < reportLabels.size(); ++i)
        reportLabels[i] = MessageText(kReportLabelIds[i]);
    const std::string shutdownLabel = MessageText("BASE_OTHER_SHUTDOWN_ID");

    const BaseRecordsGuard records;
    if (!InitAllBaseSetting(hLibRPTSET)) {
        ShowFuncCallErr("InitAllBaseSetting");
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<InitAllBaseSetting() failed.");
        return;
    }

    const int reportRows = internetMail ? 4 : 3;
    zolui::Window window;
    zolui::Form form;
    newtComponent reportLabel = form.add(zolui::label(-1, -1, MessageText("BASE_REPORT_ID")));
    newtComponent reportList =
        form.add(newtListbox(-1, -1, reportRows, NEWT_FLAG_RETURNEXIT), kReportListId);
    for (int i = 0; i < reportRows; ++i)
        zolui::listboxAppendIndex(reportList, RowText(reportLabels[i]), i);
    newtListboxSetCurrent(reportList, 0);
    newtComponent otherList = form.add(newtListbox(-1, -1, 1, NEWT_FLAG_RETURNEXIT), kOtherListId);
    zolui::listboxAppendIndex(otherList, RowText(shutdownLabel), kShutdownRow);
    newtListboxSetCurrent(otherList, 0);
    newtComponent otherLabel = form.add(zolui::label(-1, -1, MessageText("BASE_OTHER_ID")));
    newtComponent close = form.add(zolui::button(-1, -1, MessageText("BUTTON_CLOSE_ID")), kCloseId);

    zolui::Grid lists(1, 4);
    lists.set(0, 0, reportLabel, {}, NEWT_ANCHOR_LEFT);
    lists.set(0, 1, reportList, {.top = 1}, NEWT_ANCHOR_LEFT);
    lists.set(0, 2, otherLabel, {.top = 1}, NEWT_ANCHOR_LEFT);
    lists.set(0, 3, otherList, {.top = 1}, NEWT_ANCHOR_LEFT);
    zolui::Grid grid(1, 2);
    grid.set(0, 0, std::move(lists), {}, NEWT_ANCHOR_TOP);
    grid.set(0, 1, close, {.top = 2}, NEWT_ANCHOR_TOP);
    window.openWrapped(grid, MessageText("TITTLE_BASE_ID"));
    form.addHotKey(15);

    for (;;) {
        const zolui::RunResult result = form.run();
        if (result.isComponent(kReportListId)) {
            EnterReportRow(hLibRPTSET, zolui::listboxCurrentIndex(reportList));
        } else if (result.isComponent(kOtherListId)) {
            EnterOtherRow(hLibRPTSET, zolui::listboxCurrentIndex(otherList));
        } else {
            // The Close button, a hot key or anything else ends the menu.
            break;
        }
    }
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<");
}
