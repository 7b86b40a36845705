// The syslog monitoring list: the items the log monitor watches for, by source. An item can be
// tested by writing its line into the system log; items are added and deleted here, and an
// item's (or a whole source's) report settings opened.
#include <newt.h>
#include <syslog.h>

#include <cstdio>
#include <cstring>
#include <string>

#include "frame/libraries.h"
#include "frame/msgfile.h"
#include "frame/rptset_calls.h"
#include "frame/screens.h"
#include "frame/startup.h"
#include "frame/textformat.h"
#include "monitor/monitor.h"
#include "ui/dialog.h"
#include "ui/toolkit.h"

namespace {

// Bytes of the test line once converted for the system log.
constexpr std::size_t kTestLineSize = 2048;

std::string FieldText(const char* field, std::size_t size) {
    return {field, strnlen(field, size - 1)};
}

}  // namespace

std::string SyslogTestLine(const SyslogData& record) {
    return "[TEST - AlertManager] " + FieldText(record.Keyword1, sizeof record.Keyword1) + " " +
           FieldText(record.Keyword2, sizeof record.Keyword2) + " " +
           FieldText(record.Keyword3, sizeof record.Keyword3);
}

int WriteSyslogTestLines(const SyslogData& record) {
    const std::string line = SyslogTestLine(record);
    char converted[kTestLineSize];
    // A line that is not EUC-JP (typed on a UTF-8 terminal in English) goes out as it is.
    const char* text = CodeConvertFromEUC(line.c_str(), converted, sizeof converted) == 0
                           ? converted
                           : line.c_str();
    int written = 0;
    for (; written < record.Count; ++written) {
        // The line is the argument of a fixed format: a '%' in a keyword is written as it is.
        syslog(LOG_INFO, "%s", text);
        ZOL_TRACE(TRACE_LEVEL_TRACE, "%s write in syslog file", text);
    }
    closelog();
    return written;
}

BOOL GetSyslogMainDataformReg(const char* source, const char* eventid, HMODULE lib,
                              SyslogData& record) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] lib=%p", lib);
    if (lib == nullptr || source == nullptr || eventid == nullptr) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<Input parameter err,return FALSE");
        return FALSE;
    }
    record.DestNum = 0;
    std::snprintf(record.SourceName, sizeof record.SourceName, "%s", source);
    std::snprintf(record.EventID, sizeof record.EventID, "%s", eventid);
    if (!GetSyslogRecord(lib, &record)) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<GetSyslogSetting failed.return FALSE.");
        return FALSE;
    }
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<return TRUE.");
    return TRUE;
}

namespace {

enum ButtonId : int { kTestId = 1, kAddId, kDeleteId, kSetId };
constexpr int kSourceWidth = 40;
constexpr int kItemWidth = 25;
constexpr int kTrapWidth = 30;
constexpr int kTrapHeight = 3;

// The screen's components and what its callbacks share.
struct SyslogListView {
    explicit SyslogListView(SyslogCatalogue& c) : catalogue(c) {}

    SyslogCatalogue& catalogue;
    int IsForSource = 0;  // 1 while the whole-source radio is selected
    newtComponent form = nullptr;
    newtComponent sources = nullptr;
    newtComponent wholeSource = nullptr;
    newtComponent oneItem = nullptr;
    zolui::RadioGroup scope;  // whole source (row 0) or one entry (row 1)
    newtComponent items = nullptr;
    newtComponent trapBox = nullptr;

    void SyncRadio() { IsForSource = scope.currentIndex() == 0 ? 1 : 0; }
    std::string currentSource() const {
        const int row = zolui::listboxCurrentIndex(sources);
        const auto& names = catalogue.sourceNames;
        return row >= 0 && static_cast<std::size_t>(row) < names.size() ? names[row]
                                                                        : std::string();
    }
    std::string currentItem() const {
        const int row = zolui::listboxCurrentIndex(items);
        const auto& ids = catalogue.eventIDs;
        return row >= 0 && static_cast<std::size_t>(row) < ids.size() ? ids[row] : std::string();
    }
};

// Item changed: the trap of the last item with its source and event ID.
void RefreshTrapName(SyslogListView& view) {
    if (view.IsForSource != 0)
        return;
    zolui::setTextboxText(view.trapBox,
                          SyslogTrapName(view.catalogue, view.currentSource(), view.currentItem()));
    newtDrawForm(view.form);
}

// Source changed: its items and the trap of the first.
void CheckListboxFunc(SyslogListView& view) {
    if (view.IsForSource != 0)
        return;
    newtListboxClear(view.items);
    const std::string source = view.currentSource();
    if (source.empty())
        return;
    if (view.catalogue.FindEventID(source) == 0) {
        ZOL_TRACE(TRACE_LEVEL_TRACE, "<SYS_Eventnum of %s is 0.", source.c_str());
        return;
    }
    for (std::size_t i = 0; i < view.catalogue.eventIDs.size(); ++i)
        zolui::listboxAppendIndex(view.items, view.catalogue.eventIDs[i], static_cast<int>(i));
    newtDrawForm(view.form);
    RefreshTrapName(view);
    newtRefresh();
}

// Either radio: the whole source holds the single "all events" entry and no trap; one item again
// refills the item list.
void OperateOnRadio(SyslogListView& view) {
    const int before = view.IsForSource;
    view.SyncRadio();
    if (view.IsForSource != 0) {
        newtListboxClear(view.items);
        zolui::listboxAppendIndex(view.items, MessageText("AGENT_ALL_ID"), 0);
        zolui::setTextboxText(view.trapBox, "");
        newtDrawForm(view.form);
    } else if (before != 0) {
        CheckListboxFunc(view);
    }
}

// Shows the source names again after the catalogue was reloaded.
void RefillSources(SyslogListView& view) {
    newtListboxClear(view.sources);
    for (std::size_t i = 0; i < view.catalogue.sourceNames.size(); ++i)
        zolui::listboxAppendIndex(view.sources, view.catalogue.sourceNames[i], static_cast<int>(i));
    zolui::listboxSetCurrentIndex(view.sources, 0);
    if (view.IsForSource == 0)
        CheckListboxFunc(view);
    newtDrawForm(view.form);
}

// After a delete or an add: the catalogue is read again and the lists rebuilt from it. Close
// when it cannot be read or holds nothing any more.
zolui::Next Reload(SyslogListView& view, HMODULE lib) {
    view.catalogue.data.reset();
    if (InitAllSyslogSetting(lib, view.catalogue) == -1) {
        ShowFuncCallErr("InitAllSyslogSetting");
        ZOL_TRACE(TRACE_LEVEL_ERROR, "InitAllSyslogSetting return -1");
        return zolui::Next::Close;
    }
    if (view.catalogue.data.count() == 0) {
        const std::string title = MessageText("TITTLE_WARNING_ID");
        msgWindow(title.c_str(), " ok ", CPGetText("WARN_NOIDNAME_ID", ReadString, ZOL_RcFileBuf));
        return zolui::Next::Close;
    }
    ZOL_TRACE(TRACE_LEVEL_INFO, "SYS_SNnum=%d", view.catalogue.FindAllSourceName());
    RefillSources(view);
    return zolui::Next::Stay;
}

// The test button: the current item's line into the system log, as often as its count says. A
// failed read ends the screen.
zolui::Next TestItem(SyslogListView& view, HMODULE lib, SyslogData& working) {
    view.SyncRadio();
    if (view.IsForSource != 0) {
        const std::string title = MessageText("TITTLE_WARNING_ID");
        msgWindow(title.c_str(), " ok ",
                  CPGetText("AGENT_TEST_NOALL_MES_ID", ReadString, ZOL_RcFileBuf));
        return zolui::Next::Stay;
    }
    const std::string source = view.currentSource();
    const std::string item = view.currentItem();
    if (source.empty() || item.empty())
        return zolui::Next::Stay;
    const std::string title = MessageText("AGENT_TEST_TITTLE_MES_ID");
    const std::string text = MessageText("AGENT_TEST_MES_ID");
    newtComponent buttons[2] = {zolui::button(-1, -1, MessageText("BUTTON_OK_ID")),
                                zolui::button(-1, -1, MessageText("BUTTON_CANCEL_ID"))};
    const newtComponent ok = buttons[0];
    if (SelectFromButtons(title.c_str(), text.c_str(), buttons, 2) != ok)
        return zolui::Next::Stay;
    if (!GetSyslogMainDataformReg(source.c_str(), item.c_str(), lib, working)) {
        // The name of the write is the one administrators have always been shown here.
        ShowFuncCallErr("SetSyslogSetting");
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<GetSyslogMainDataformReg return FALSE.");
        return zolui::Next::Close;
    }
    WriteSyslogTestLines(working);
    return zolui::Next::Stay;
}

// Asks before deleting: true for "ok".
bool ConfirmDelete(const std::string& source, const std::string& item, bool wholeSource) {
    const std::string title = MessageText("SYSLOGDEL_WINTITLE_ID");
    const std::string text =
        wholeSource ? FormatText(MessageText("SYSLOGDEL_CONFIRMSOURCE_ID"), {source})
                    : FormatText(MessageText("SYSLOGDEL_CONFIRMEVENT_ID"), {source, item});
    newtComponent buttons[2] = {zolui::button(-1, -1, "ok"), zolui::button(-1, -1, "cancel")};
    const newtComponent ok = buttons[0];
    return SelectFromButtonsEx(title.c_str(), text.c_str(), buttons, 2) == ok;
}

// The delete button: the current item, or in whole-source state every item of the source
// (the library's "All"), after the confirmation; the lists are then read again.
zolui::Next DeleteItem(SyslogListView& view, HMODULE lib, std::string& addSource) {
    view.SyncRadio();
    const bool wholeSource = view.IsForSource != 0;
    const std::string source = view.currentSource();
    const std::string item = wholeSource ? EVENT_ID_ALL : view.currentItem();
    if (source.empty() || item.empty())
        return zolui::Next::Stay;
    if (!ConfirmDelete(source, item, wholeSource))
        return zolui::Next::Stay;
    const LibResult r = DelSyslogRecord(lib, source.c_str(), item.c_str());
    if (r.unbound()) {
        ShowFuncCallErr("GetProcAddress for DelSyslogItem");
        ZOL_TRACE(TRACE_LEVEL_ERROR, "Get DelSyslogItem address failed");
        return zolui::Next::Stay;
    }
    if (r.value == -1) {
        ShowFuncCallErr("pDelSyslogItem");
        ZOL_TRACE(TRACE_LEVEL_ERROR, "DelSyslogItem return -1");
        return zolui::Next::Stay;
    }
    if (!r) {
        msgWindow("Error", " ok ",
                  CPGetText("SYSLOGDEL_DELERRORMESSAGE_ID", ReadString, ZOL_RcFileBuf));
        return zolui::Next::Stay;
    }
    const std::string title = MessageText("SYSLOGDEL_WINTITLE_ID");
    msgWindow(title.c_str(), " ok ",
              CPGetText("SYSLOGDEL_DELSUCCESSMESSAGE_ID", ReadString, ZOL_RcFileBuf));
    addSource = source;
    return Reload(view, lib);
}

// The add button: the new item goes into the current source while one item is chosen; else the
// dialog is given the source it was last given (or the one last deleted from).
zolui::Next AddItem(SyslogListView& view, HMODULE lib, std::string& addSource) {
    view.SyncRadio();
    if (view.catalogue.data.count() > 0 && view.IsForSource == 0)
        addSource = view.currentSource();
    if (SyslogAddItem(lib, addSource) != 1)
        return zolui::Next::Stay;
    return Reload(view, lib);
}

zolui::Next OpenItemSetting(SyslogListView& view, HMODULE rptsetLib, HMODULE dscopyLib) {
    view.SyncRadio();
    const std::string source = view.currentSource();
    const std::string item = view.IsForSource != 0 ? EVENT_ID_ALL : view.currentItem();
    if (source.empty() || item.empty())
        return zolui::Next::Stay;
    if (Adm_Flag != 0)
        Adm_MonitorSyslogSetting(source.c_str(), item.c_str(), rptsetLib, dscopyLib);
    else
        MonitorSyslogSetting(source.c_str(), item.c_str(), rptsetLib, dscopyLib);
    return zolui::Next::Stay;
}

zolui::Grid Pair(newtComponent left, newtComponent right, int gap, int lead = 0) {
    zolui::Grid row(2, 1);
    row.set(0, 0, left, {.left = lead}, NEWT_ANCHOR_LEFT);
    row.set(1, 0, right, {.left = gap}, NEWT_ANCHOR_LEFT);
    return row;
}

newtComponent OneLineList(zolui::Dialog& dialog, int width) {
    newtComponent list = dialog.add(zolui::listbox(1, NEWT_FLAG_RETURNEXIT, width));
    return list;
}

// The item label, list and test button over the trap label and box.
zolui::Grid ItemBlock(zolui::Dialog& dialog, SyslogListView& view, newtComponent test) {
    auto label = [&](const char* id) { return dialog.add(zolui::label(-1, -1, MessageText(id))); };
    zolui::Grid block(3, 2);
    block.set(0, 0, label("AGENT_EVENTID_ID"), {}, NEWT_ANCHOR_LEFT);
    block.set(1, 0, view.items, {.left = 1}, NEWT_ANCHOR_LEFT);
    block.set(2, 0, test, {.left = 2}, NEWT_ANCHOR_LEFT);
    // The test button's height already puts the trap a line below the item.
    block.set(0, 1, label("AGENT_TRAPNAME_ID"), {}, NEWT_ANCHOR_LEFT | NEWT_ANCHOR_TOP);
    block.set(1, 1, view.trapBox, {.left = 1}, NEWT_ANCHOR_LEFT);
    return block;
}

// Creates the components in focus order and lays them out.
zolui::Grid BuildSyslogList(zolui::Dialog& dialog, SyslogListView& view) {
    auto button = [&](const char* id, int key) {
        return dialog.add(zolui::button(-1, -1, MessageText(id)), key);
    };
    view.form = dialog.form().get();
    view.sources = OneLineList(dialog, kSourceWidth);
    for (std::size_t i = 0; i < view.catalogue.sourceNames.size(); ++i)
        zolui::listboxAppendIndex(view.sources, view.catalogue.sourceNames[i], static_cast<int>(i));
    zolui::listboxSetCurrentIndex(view.sources, 0);
    view.wholeSource = dialog.add(view.scope.add(MessageText("AGENT_RADIO_ON_ID"), false));
    view.oneItem = dialog.add(view.scope.add(MessageText("AGENT_RADIO_OFF_ID"), true));
    view.items = OneLineList(dialog, kItemWidth);
    newtComponent test = button("AGENT_BUTTON_TEST_ID", kTestId);
    view.trapBox = dialog.add(zolui::textbox(-1, -1, kTrapWidth, kTrapHeight, NEWT_FLAG_WRAP, ""));
    zolui::Grid buttons(4, 1);
    buttons.set(0, 0, button("AGENT_BUTTON_ADD_ID", kAddId));
    buttons.set(1, 0, button("AGENT_BUTTON_DEL_ID", kDeleteId), {.left = 4});
    buttons.set(2, 0, button("AGENT_BUTTON_SET_ID", kSetId), {.left = 4});
    buttons.set(3, 0, button("BUTTON_CLOSE_ID", zolui::kCancelId), {.left = 4});

    zolui::Grid grid(1, 5);
    grid.set(
        0, 0,
        Pair(dialog.add(zolui::label(-1, -1, MessageText("AGENT_SOURCE_ID"))), view.sources, 1), {},
        NEWT_ANCHOR_LEFT);
    grid.set(0, 1, dialog.add(zolui::label(-1, -1, MessageText("AGENT_OPERATIONONSOURCE_ID"))),
             {.top = 1}, NEWT_ANCHOR_LEFT);
    grid.set(0, 2, Pair(view.wholeSource, view.oneItem, 5, 12 + 10), {}, NEWT_ANCHOR_LEFT);
    grid.set(0, 3, ItemBlock(dialog, view, test), {.top = 1}, NEWT_ANCHOR_LEFT);
    grid.set(0, 4, std::move(buttons), {.top = 1});
    return grid;
}

}  // namespace

void SyslogSetting(HMODULE rptsetLib, HMODULE dscopyLib) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] hLibRPTSET=%p hLibDSCOPY=%p", rptsetLib, dscopyLib);
    std::unique_ptr<SyslogRecord> working = SyslogRecord::Allocate("CPSyslogData");
    if (working == nullptr)
        return;
    SyslogCatalogue catalogue;
    if (InitAllSyslogSetting(rptsetLib, catalogue) == -1) {
        ShowFuncCallErr("InitAllSyslogSetting");
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<InitAllSyslogSetting() failed.");
        return;
    }
    ZOL_TRACE(TRACE_LEVEL_INFO, "SYS_SNnum=%d", catalogue.FindAllSourceName());

    SyslogListView view(catalogue);
    std::string addSource;  // what the add dialog is given while no item is chosen
    zolui::Dialog dialog;
    const zolui::Grid grid = BuildSyslogList(dialog, view);
    dialog.form().onActivate(view.sources, [&view] { CheckListboxFunc(view); });
    dialog.form().onActivate(view.items, [&view] { RefreshTrapName(view); });
    dialog.form().onActivate(view.wholeSource, [&view] { OperateOnRadio(view); });
    dialog.form().onActivate(view.oneItem, [&view] { OperateOnRadio(view); });
    dialog.open(grid, MessageText("MAIN_SYSLOG_ID"));
    CheckListboxFunc(view);

    dialog.run({{kTestId, [&] { return TestItem(view, rptsetLib, **working); }},
                {kAddId, [&] { return AddItem(view, rptsetLib, addSource); }},
                {kDeleteId, [&] { return DeleteItem(view, rptsetLib, addSource); }},
                {kSetId, [&] { return OpenItemSetting(view, rptsetLib, dscopyLib); }}});
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<");
}
