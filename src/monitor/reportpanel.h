// What the per-event and per-item report-settings screens build the same way: the header, the
// one-line lists of choices, the two destination-ID lists with Add and Remove, the confirmation
// of a whole-source change, and the write of every listed ID.
#pragma once

#include <newt.h>

#include <cstring>
#include <span>
#include <string>
#include <vector>

#include "monitor/monitor.h"
#include "ui/dialog.h"

namespace reportpanel {

// Component ids of the destination lists' buttons (OK and Cancel are the dialog's own).
inline constexpr int kAddId = 1;
inline constexpr int kRemoveId = 2;

// A label and its field one column right of it, anchored left.
zolui::Grid LabelledRow(zolui::Dialog& dialog, const char* labelId, newtComponent field);

// "Source:" with the source and, `rowGap` lines below, "Event ID:" with the event ID, or the
// text of "AGENT_ALL_ID" for a whole source.
zolui::Grid HeaderGrid(zolui::Dialog& dialog, const char* source, const char* eventid,
                       bool wholeSource, int rowGap = 1);

// A one-line list of choices, `width` columns wide, keyed by row, on row `row`.
newtComponent ChoiceList(zolui::Dialog& dialog, std::span<const ListChoice> choices, int width,
                         int row);
// The value of the list's current row.
int32_t ChoiceValue(newtComponent list, std::span<const ListChoice> choices);
// The level list: kLevelCount rows formatted as the screen wants them, on row `row`.
newtComponent LevelList(zolui::Dialog& dialog, const char* format, int width, int row);

// The other-IDs list, Add and Remove one above the other, and the report-to list, added to the
// dialog in that focus order. Add and Remove move IDs through the DestinationChoice and show
// the two lists again; each warns when its list holds nothing to move.
class DestinationLists {
  public:
    DestinationLists(zolui::Dialog& dialog, DestinationChoice& choice);
    DestinationLists(const DestinationLists&) = delete;
    DestinationLists& operator=(const DestinationLists&) = delete;

    // The three columns, with their labels above the lists.
    zolui::Grid Grid(zolui::Dialog& dialog);
    zolui::Next Add();
    zolui::Next Remove();

  private:
    DestinationChoice& choice_;
    newtComponent others_;
    newtComponent add_;
    newtComponent remove_;
    newtComponent reportTo_;
};

// OK and Cancel, `gap` columns apart.
zolui::Grid OkCancelRow(zolui::Dialog& dialog, int gap);

// Asks before a whole-source change ("SETALL_ALARM_ID"): true for OK.
bool ConfirmSetAll();

// The screens' writes: for every listed node in order, its name into lplpszDestID[0], its flag
// into ReportFlag, and one call of put. Every call is made whatever the earlier ones returned.
// True when at least one succeeded.
template <class Record, class Put>
bool WriteEveryID(Record& record, const std::vector<IDListNode*>& nodes, Put put) {
    bool done = false;
    for (const IDListNode* node : nodes) {
        const std::size_t n = strnlen(node->Name, sizeof node->Name - 1);
        std::memcpy(record.lplpszDestID[0], node->Name, n);
        record.lplpszDestID[0][n] = '\0';
        record.ReportFlag = node->ReportFlag == 1 ? 1 : 0;
        if (put(record))
            done = true;
    }
    return done;
}

}  // namespace reportpanel
