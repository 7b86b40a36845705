// The agent event list: the catalogue of events the monitoring agent reports, by source; a
// source and one of its events (or the whole source) are chosen and their report settings opened.
#include <newt.h>

#include <string>

#include "frame/libraries.h"
#include "frame/msgfile.h"
#include "frame/screens.h"
#include "frame/startup.h"
#include "monitor/monitor.h"
#include "ui/dialog.h"
#include "ui/toolkit.h"

namespace {

constexpr int kSetId = 1;
constexpr int kListWidth = 40;
constexpr int kTrapWidth = 40;

// The screen's components and what its callbacks share.
struct AgentListView {
    explicit AgentListView(AgentCatalogue& c) : catalogue(c) {}

    AgentCatalogue& catalogue;
    std::string trapName;  // of the current event
    newtComponent form = nullptr;
    newtComponent sources = nullptr;
    newtComponent wholeSource = nullptr;
    newtComponent oneEvent = nullptr;
    zolui::RadioGroup scope;  // whole source (row 0) or one entry (row 1)
    newtComponent events = nullptr;
    newtComponent trapBox = nullptr;

    bool wholeSourceChosen() const { return scope.currentIndex() == 0; }
    // The current source's name; empty when the list is empty.
    std::string currentSource() const {
        const int row = zolui::listboxCurrentIndex(sources);
        const auto& names = catalogue.sourceNames;
        return row >= 0 && static_cast<std::size_t>(row) < names.size() ? names[row]
                                                                        : std::string();
    }
    // The current event ID (meaningless while the whole source is chosen).
    std::string currentEvent() const {
        const int row = zolui::listboxCurrentIndex(events);
        const auto& ids = catalogue.eventIDs;
        return row >= 0 && static_cast<std::size_t>(row) < ids.size() ? ids[row] : std::string();
    }
};

// Whole source chosen: the event list holds the single "all events" entry, the trap is blank.
void RadioCallFunc3(AgentListView& view) {
    newtListboxClear(view.events);
    zolui::listboxAppendIndex(view.events, MessageText("AGENT_ALL_ID"), 0);
    zolui::setTextboxText(view.trapBox, " ");
    newtDrawForm(view.form);
}

// Event changed: its trap, or with the whole source chosen the "all events" entry.
void CheckListboxFunc2(AgentListView& view) {
    view.trapName.clear();
    if (view.wholeSourceChosen()) {
        RadioCallFunc3(view);
        return;
    }
    // An event without a trap leaves the cleared name: the box shows nothing.
    FindTrap(view.catalogue, view.currentSource(), view.currentEvent(), view.trapName);
    zolui::setTextboxText(view.trapBox, view.trapName);
    newtDrawForm(view.form);
}

// Source changed: its event IDs, then the current event's trap.
void CheckListboxFunc(AgentListView& view) {
    newtListboxClear(view.events);
    // Without a source (every name empty) there are no events to show either.
    const std::string source = view.currentSource();
    if (source.empty())
        view.catalogue.eventIDs.clear();
    else
        view.catalogue.FindEventID(source);
    for (std::size_t i = 0; i < view.catalogue.eventIDs.size(); ++i)
        zolui::listboxAppendIndex(view.events, view.catalogue.eventIDs[i], static_cast<int>(i));
    CheckListboxFunc2(view);
    newtDrawForm(view.form);
}

// One event chosen again: the event list is filled from the current source.
void RadioCallFunc4(AgentListView& view) {
    CheckListboxFunc(view);
}

newtComponent OneLineList(zolui::Dialog& dialog) {
    newtComponent list = dialog.add(zolui::listbox(1, NEWT_FLAG_RETURNEXIT, kListWidth));
    return list;
}

zolui::Grid Row(newtComponent left, newtComponent right, int gap, int lead = 0) {
    zolui::Grid row(2, 1);
    row.set(0, 0, left, {.left = lead}, NEWT_ANCHOR_LEFT);
    row.set(1, 0, right, {.left = gap}, NEWT_ANCHOR_LEFT);
    return row;
}

// Creates the components in focus order and lays them out.
zolui::Grid BuildAgentList(zolui::Dialog& dialog, AgentListView& view) {
    auto label = [&](const char* id) { return dialog.add(zolui::label(-1, -1, MessageText(id))); };
    view.form = dialog.form().get();
    view.sources = OneLineList(dialog);
    for (std::size_t i = 0; i < view.catalogue.sourceNames.size(); ++i)
        zolui::listboxAppendIndex(view.sources, view.catalogue.sourceNames[i], static_cast<int>(i));
    zolui::listboxSetCurrentIndex(view.sources, 0);
    view.wholeSource = dialog.add(view.scope.add(MessageText("AGENT_RADIO_ON_ID"), false));
    view.oneEvent = dialog.add(view.scope.add(MessageText("AGENT_RADIO_OFF_ID"), true));
    view.events = OneLineList(dialog);
    view.trapBox = dialog.add(zolui::textbox(-1, -1, kTrapWidth, 1, 0, ""));
    newtComponent set =
        dialog.add(zolui::button(-1, -1, MessageText("AGENT_BUTTON_SET_ID")), kSetId);
    newtComponent close =
        dialog.add(zolui::button(-1, -1, MessageText("BUTTON_CLOSE_ID")), zolui::kCancelId);

    zolui::Grid grid(1, 6);
    grid.set(0, 0, Row(label("AGENT_SOURCE_ID"), view.sources, 1), {}, NEWT_ANCHOR_LEFT);
    grid.set(0, 1, label("AGENT_OPERATIONONSOURCE_ID"), {.top = 1}, NEWT_ANCHOR_LEFT);
    grid.set(0, 2, Row(view.wholeSource, view.oneEvent, 4, 20), {}, NEWT_ANCHOR_LEFT);
    grid.set(0, 3, Row(label("AGENT_EVENTID_ID"), view.events, 1), {.top = 1}, NEWT_ANCHOR_LEFT);
    grid.set(0, 4, Row(label("AGENT_TRAPNAME_ID"), view.trapBox, 1), {.top = 1}, NEWT_ANCHOR_LEFT);
    grid.set(0, 5, Row(set, close, 12, 1), {.top = 1}, NEWT_ANCHOR_LEFT);
    return grid;
}

// The set button: the per-event screen for the current event, or for "All" of the source.
zolui::Next OpenEventSetting(const AgentListView& view, HMODULE lib) {
    const std::string source = view.currentSource();
    const std::string event = view.wholeSourceChosen() ? EVENT_ID_ALL : view.currentEvent();
    if (source.empty() || event.empty())
        return zolui::Next::Stay;
    if (Adm_Flag != 0)
        Adm_MonitorEventSetting(source.c_str(), event.c_str(), lib);
    else
        MonitorEventSetting(source.c_str(), event.c_str(), lib);
    return zolui::Next::Stay;
}

}  // namespace

void AgentEventSetting(HMODULE rptsetLib) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] hLibRPTSET=%p", rptsetLib);
    if (rptsetLib == nullptr)
        ZOL_TRACE(TRACE_LEVEL_ERROR, "hLibRPTSET==NULL.");
    AgentCatalogue catalogue;
    if (InitAllAgntSetting(rptsetLib, catalogue) == -1) {
        ShowFuncCallErr("InitAllAgntSetting");
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<InitAllAgntSetting failed.");
        return;
    }
    if (catalogue.data.count() == 0) {
        const std::string title = MessageText("TITTLE_WARNING_ID");
        msgWindow(title.c_str(), " ok ", CPGetText("WARN_NOIDNAME_ID", ReadString, ZOL_RcFileBuf));
        ZOL_TRACE(TRACE_LEVEL_TRACE, "<Agntnum==0.");
        return;
    }
    ZOL_TRACE(TRACE_LEVEL_INFO, "FindAllSourceName return %d", catalogue.FindAllSourceName());

    AgentListView view{catalogue};
    zolui::Dialog dialog;
    const zolui::Grid grid = BuildAgentList(dialog, view);
    dialog.form().onActivate(view.sources, [&view] { CheckListboxFunc(view); });
    dialog.form().onActivate(view.events, [&view] { CheckListboxFunc2(view); });
    dialog.form().onActivate(view.wholeSource, [&view] { RadioCallFunc3(view); });
    dialog.form().onActivate(view.oneEvent, [&view] { RadioCallFunc4(view); });
    dialog.open(grid, MessageText("TITTLE_AGENT_ID"));
    CheckListboxFunc(view);

    dialog.run({{kSetId, [&] { return OpenEventSetting(view, rptsetLib); }}});
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<");
}
