// The destination-ID choice, the lists of choices and the handling-method rule of the two
// report-settings screens, and the parts of those screens that are built the same way.
#include "monitor/reportpanel.h"

#include <strings.h>

#include <algorithm>
#include <cstdio>
#include <string_view>

#include "frame/checks.h"
#include "frame/msgfile.h"
#include "ui/encoding.h"
#include "ui/toolkit.h"

// ---- Destination IDs ----

std::vector<IDListNode*> ListedIDNodes(IDListNode* head, bool wholeSource) {
    std::vector<IDListNode*> nodes;
    for (IDListNode* node = head; node != nullptr; node = node->Next) {
        if (node->Name[0] == '\0')
            break;
        // The whole name, without regard to case like every destination ID: the service's
        // delivery IDs ("VANTRELREPORT(HTTPS)" and so on) are other IDs.
        if (wholeSource && strcasecmp(node->Name, kVantrelReportID) == 0)
            continue;
        nodes.push_back(node);
    }
    return nodes;
}

void MarkReportIDs(IDListNode* head, char* const* ids, int count) {
    for (IDListNode* node = head; node != nullptr; node = node->Next) {
        node->ReportFlag = 0;
        for (int i = 0; i < count && ids != nullptr; ++i) {
            if (ids[i] != nullptr && strcasecmp(node->Name, ids[i]) == 0)
                node->ReportFlag = 1;
        }
    }
}

DestinationChoice::DestinationChoice(std::vector<IDListNode*> nodes) : nodes_(std::move(nodes)) {
    for (IDListNode* node : nodes_)
        (node->ReportFlag == 1 ? reportTo_ : others_).push_back(node);
}

namespace {

// Moves the node keyed `index` whose flag is `flag` from one list to the end of the other.
bool MoveNode(std::vector<IDListNode*>& from, std::vector<IDListNode*>& to, int index,
              uint32_t flag) {
    const auto it = std::find_if(from.begin(), from.end(), [&](const IDListNode* node) {
        return static_cast<int>(node->Index) == index && node->ReportFlag == flag;
    });
    if (it == from.end())
        return false;
    IDListNode* node = *it;
    from.erase(it);
    to.push_back(node);
    node->ReportFlag = flag == 0 ? 1 : 0;
    return true;
}

}  // namespace

bool DestinationChoice::Add(int index) {
    return MoveNode(others_, reportTo_, index, 0);
}

bool DestinationChoice::Remove(int index) {
    return MoveNode(reportTo_, others_, index, 1);
}

// ---- Lists of choices ----

int ChoiceRow(std::span<const ListChoice> choices, int32_t value) {
    for (std::size_t row = 0; row < choices.size(); ++row) {
        if (choices[row].value == value)
            return static_cast<int>(row);
    }
    return 0;
}

int LevelRow(int32_t level) {
    return level >= 0 && level < kLevelCount ? level : 0;
}

// ---- Handling method ----

std::string DealMethodShown(const char* stored) {
    const std::string_view text(stored, strnlen(stored, kDealMethodMax));
    if (text.find(NO_US_DEALMETHOD) != std::string_view::npos)
        return {};
    return std::string(text);
}

int ApplyDealMethod(char (&stored)[sizeof AgentEventData::DealMethod], std::string_view entry) {
    const std::string_view typed = zolui::CutEuc(entry, kDealMethodMax);
    const std::string_view current(stored, strnlen(stored, kDealMethodMax));
    if (typed == current)
        return 0;
    // A method the user never set stays unset while the entry is left empty.
    if (typed.empty() && current.find(NO_US_DEALMETHOD) != std::string_view::npos)
        return 0;
    std::memcpy(stored, typed.data(), typed.size());
    stored[typed.size()] = '\0';
    return 1;
}

// ---- Screen parts ----

namespace reportpanel {

namespace {

constexpr int kListHeight = 3;
constexpr int kListWidth = 22;

// Shows `nodes` in a list (or the placeholder, keyed 0, when there are none) and puts the list on
// row `row` (the first row when that is gone).
void ShowNodes(newtComponent list, const std::vector<IDListNode*>& nodes, int row) {
    newtListboxClear(list);
    for (const IDListNode* node : nodes)
        zolui::listboxAppendIndex(list, node->Name, static_cast<int>(node->Index));
    if (nodes.empty())
        zolui::listboxAppendIndex(list, kNoneEntry, 0);
    const int rows = std::max<int>(1, static_cast<int>(nodes.size()));
    newtListboxSetCurrent(list, row < rows ? row : 0);
}

// The row of a list's current entry among `nodes` (0 for the placeholder).
int CurrentRow(newtComponent list, const std::vector<IDListNode*>& nodes) {
    const int key = zolui::listboxCurrentIndex(list);
    for (std::size_t row = 0; row < nodes.size(); ++row) {
        if (static_cast<int>(nodes[row]->Index) == key)
            return static_cast<int>(row);
    }
    return 0;
}

newtComponent IDListbox(zolui::Dialog& dialog) {
    return dialog.add(
        zolui::listbox(kListHeight, NEWT_FLAG_RETURNEXIT | NEWT_FLAG_SCROLL, kListWidth));
}

zolui::Grid ListColumn(zolui::Dialog& dialog, const char* labelId, newtComponent list) {
    zolui::Grid column(1, 2);
    column.set(0, 0, dialog.add(zolui::label(-1, -1, MessageText(labelId))), {}, NEWT_ANCHOR_LEFT);
    column.set(0, 1, list, {}, NEWT_ANCHOR_LEFT);
    return column;
}

}  // namespace

zolui::Grid LabelledRow(zolui::Dialog& dialog, const char* labelId, newtComponent field) {
    zolui::Grid row(2, 1);
    row.set(0, 0, dialog.add(zolui::label(-1, -1, MessageText(labelId))), {}, NEWT_ANCHOR_LEFT);
    row.set(1, 0, field, {.left = 1}, NEWT_ANCHOR_LEFT);
    return row;
}

zolui::Grid HeaderGrid(zolui::Dialog& dialog, const char* source, const char* eventid,
                       bool wholeSource, int rowGap) {
    const std::string event = wholeSource ? MessageText("AGENT_ALL_ID") : std::string(eventid);
    zolui::Grid header(2, 2);
    header.set(0, 0, dialog.add(zolui::label(-1, -1, MessageText("AGENT_SOURCE_ID"))), {},
               NEWT_ANCHOR_LEFT);
    header.set(1, 0, dialog.add(zolui::label(-1, -1, source)), {.left = 1}, NEWT_ANCHOR_LEFT);
    header.set(0, 1, dialog.add(zolui::label(-1, -1, MessageText("AGENT_EVENTID_ID"))),
               {.top = rowGap}, NEWT_ANCHOR_LEFT);
    header.set(1, 1, dialog.add(zolui::label(-1, -1, event)), {.left = 1, .top = rowGap},
               NEWT_ANCHOR_LEFT);
    return header;
}

newtComponent ChoiceList(zolui::Dialog& dialog, std::span<const ListChoice> choices, int width,
                         int row) {
    newtComponent list = dialog.add(zolui::listbox(1, NEWT_FLAG_RETURNEXIT, width));
    for (std::size_t i = 0; i < choices.size(); ++i)
        zolui::listboxAppendIndex(list, MessageText(choices[i].labelId), static_cast<int>(i));
    zolui::listboxSetCurrentIndex(list, row);
    return list;
}

int32_t ChoiceValue(newtComponent list, std::span<const ListChoice> choices) {
    const int row = zolui::listboxCurrentIndex(list);
    return row >= 0 && static_cast<std::size_t>(row) < choices.size() ? choices[row].value
                                                                      : choices[0].value;
}

newtComponent LevelList(zolui::Dialog& dialog, const char* format, int width, int row) {
    newtComponent list = dialog.add(zolui::listbox(1, NEWT_FLAG_RETURNEXIT, width));
    for (long level = 0; level < kLevelCount; ++level) {
        char text[16];
        std::snprintf(text, sizeof text, format, level);
        zolui::listboxAppendIndex(list, text, static_cast<int>(level));
    }
    zolui::listboxSetCurrentIndex(list, row);
    return list;
}

DestinationLists::DestinationLists(zolui::Dialog& dialog, DestinationChoice& choice)
    : choice_(choice),
      others_(IDListbox(dialog)),
      add_(dialog.add(zolui::compactButton(-1, -1, MessageText("GPSET_BUTTON_ADD_ID")), kAddId)),
      remove_(dialog.add(zolui::compactButton(-1, -1, MessageText("GPSET_BUTTON_REMOVE_ID")),
                         kRemoveId)),
      reportTo_(IDListbox(dialog)) {
    ShowNodes(others_, choice_.others(), 0);
    ShowNodes(reportTo_, choice_.reportTo(), 0);
}

zolui::Grid DestinationLists::Grid(zolui::Dialog& dialog) {
    zolui::Grid buttons(1, 2);
    buttons.set(0, 0, add_, {}, NEWT_ANCHOR_LEFT);
    buttons.set(0, 1, remove_, {}, NEWT_ANCHOR_LEFT);
    zolui::Grid grid(3, 1);
    grid.set(0, 0, ListColumn(dialog, "SUBAGENT_IDLIST_ID", others_), {}, NEWT_ANCHOR_TOP);
    grid.set(1, 0, std::move(buttons), {.left = 2, .top = 1}, NEWT_ANCHOR_TOP);
    grid.set(2, 0, ListColumn(dialog, "SUBAGENT_REPORTTO_ID", reportTo_), {.left = 2},
             NEWT_ANCHOR_TOP);
    return grid;
}

zolui::Next DestinationLists::Add() {
    if (choice_.NoReportIDnum() == 0) {
        // The Add warning puts its blanks around the title.
        const std::string title = "  " + MessageText("TITTLE_WARNING_ID") + "  ";
        msgWindow(title.c_str(), " ok ", CPGetText("WARN_INVALID_ID", ReadString, ZOL_RcFileBuf));
        return zolui::Next::Stay;
    }
    const int keep = CurrentRow(reportTo_, choice_.reportTo());
    if (choice_.Add(zolui::listboxCurrentIndex(others_))) {
        ShowNodes(others_, choice_.others(), 0);
        ShowNodes(reportTo_, choice_.reportTo(), keep);
    }
    return zolui::Next::Stay;
}

zolui::Next DestinationLists::Remove() {
    if (choice_.ReportIDnum() == 0) {
        // ... and the Remove warning around the text.
        const std::string title = MessageText("TITTLE_WARNING_ID");
        const std::string text = "   " + MessageText("WARN_INVALID_ID") + "    ";
        msgWindow(title.c_str(), " ok ", text.c_str());
        return zolui::Next::Stay;
    }
    const int keep = CurrentRow(others_, choice_.others());
    if (choice_.Remove(zolui::listboxCurrentIndex(reportTo_))) {
        ShowNodes(reportTo_, choice_.reportTo(), 0);
        ShowNodes(others_, choice_.others(), keep);
    }
    return zolui::Next::Stay;
}

zolui::Grid OkCancelRow(zolui::Dialog& dialog, int gap) {
    return dialog.buttonRow({{MessageText("BUTTON_OK_ID"), zolui::kOkId},
                             {MessageText("BUTTON_CANCEL_ID"), zolui::kCancelId}},
                            gap);
}

bool ConfirmSetAll() {
    const std::string title = MessageText("TITTLE_WARNING_ID");
    const std::string text = MessageText("SETALL_ALARM_ID");
    newtComponent buttons[2] = {zolui::button(-1, -1, MessageText("BUTTON_OK_ID")),
                                zolui::button(-1, -1, MessageText("BUTTON_CANCEL_ID"))};
    const newtComponent ok = buttons[0];
    return SelectFromButtonsEx(title.c_str(), text.c_str(), buttons, 2) == ok;
}

}  // namespace reportpanel
