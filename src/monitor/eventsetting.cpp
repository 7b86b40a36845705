// Per-event report settings: to which destination IDs one agent event (or every event of one
// source) is reported and, for one event, what follows the report and the handling method, or in
// administrator mode the error kind and level.
#include <algorithm>
#include <cstring>
#include <string>

#include "frame/libraries.h"
#include "frame/msgfile.h"
#include "frame/rptset_calls.h"
#include "frame/screens.h"
#include "monitor/monitor.h"
#include "monitor/reportpanel.h"
#include "ui/dialog.h"
#include "ui/toolkit.h"

namespace {

constexpr int kDealMethodWidth = 41;
constexpr int kActionWidth = 20;
constexpr int kErrorKindWidth = 20;
constexpr int kLevelWidth = 2;

enum class Variant { User, Administrator };

// Copies text into a record's name field of `size` bytes, cut to fit.
void CopyName(char* field, std::size_t size, const char* text) {
    const std::size_t n = strnlen(text, size - 1);
    std::memcpy(field, text, n);
    field[n] = '\0';
}

// A record with its names set and nothing else, or null (traced) when memory runs out.
std::unique_ptr<AgentRecord> NewAgentRecord(const char* source, const char* eventid) {
    if (source == nullptr || eventid == nullptr) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<Input parameter err,return FALSE");
        return nullptr;
    }
    std::unique_ptr<AgentRecord> record = AgentRecord::Allocate("CPAgntData");
    if (record == nullptr)
        return nullptr;
    CopyName((*record)->SourceName, sizeof(*record)->SourceName, source);
    CopyName((*record)->EventID, sizeof(*record)->EventID, eventid);
    (*record)->DestNum = 0;
    (*record)->Action = 0;
    return record;
}

// The per-event fields of the screen; the ones a variant leaves out stay null.
struct EventFields {
    newtComponent action = nullptr;
    newtComponent dealMethod = nullptr;
    newtComponent errorKind = nullptr;
    newtComponent level = nullptr;
};

// The action row and, below it, the handling method or the error kind and level.
zolui::Grid EventRows(zolui::Dialog& dialog, AgentEventData& record, Variant variant,
                      EventFields& fields) {
    namespace rp = reportpanel;
    fields.action = rp::ChoiceList(dialog, kActionChoices, kActionWidth,
                                   ChoiceRow(kActionChoices, record.Action));
    if (variant == Variant::User) {
        fields.dealMethod = dialog.add(zolui::entry(-1, -1, DealMethodShown(record.DealMethod),
                                                    kDealMethodWidth, NEWT_FLAG_SCROLL));
        zolui::Grid rows(1, 2);
        rows.set(0, 0, rp::LabelledRow(dialog, "SUBAGENT_ACTION_ID", fields.action), {},
                 NEWT_ANCHOR_LEFT);
        rows.set(0, 1, rp::LabelledRow(dialog, "AGENT_DEALMETHOD_ID", fields.dealMethod),
                 {.top = 1}, NEWT_ANCHOR_LEFT);
        return rows;
    }
    fields.errorKind = rp::ChoiceList(dialog, kErrorKindChoices, kErrorKindWidth,
                                      ChoiceRow(kErrorKindChoices, record.ErrKind));
    fields.level = rp::LevelList(dialog, "%ld", kLevelWidth, LevelRow(record.Level));
    zolui::Grid rows(1, 3);
    rows.set(0, 0, rp::LabelledRow(dialog, "SUBAGENT_ACTION_ID", fields.action), {},
             NEWT_ANCHOR_LEFT);
    rows.set(0, 1, rp::LabelledRow(dialog, "ADMAGENT_ERRKIND_LABEL_ID", fields.errorKind), {},
             NEWT_ANCHOR_LEFT);
    rows.set(0, 2, rp::LabelledRow(dialog, "ADMAGENT_LEVEL_LABEL_ID", fields.level), {},
             NEWT_ANCHOR_LEFT);
    return rows;
}

// OK for one event: the fields into the record, then one write per listed ID. The handling
// method is judged against the text read when the screen opened, however often OK is pressed.
zolui::Next SaveEvent(HMODULE lib, AgentEventData& record, const std::string& readMethod,
                      const EventFields& fields, const DestinationChoice& choice) {
    record.Action = reportpanel::ChoiceValue(fields.action, kActionChoices);
    int changed = 0;
    if (fields.dealMethod != nullptr) {
        CopyName(record.DealMethod, sizeof record.DealMethod, readMethod.c_str());
        changed = ApplyDealMethod(record.DealMethod, zolui::entryText(fields.dealMethod));
    } else {
        record.ErrKind = reportpanel::ChoiceValue(fields.errorKind, kErrorKindChoices);
        record.Level = std::max(0, zolui::listboxCurrentIndex(fields.level));
    }
    const bool written = reportpanel::WriteEveryID(record, choice.nodes(), [&](AgentEventData& r) {
        return PutAgntDatatoReg(lib, r, changed);
    });
    return written ? zolui::Next::Close : zolui::Next::Stay;
}

// OK for a whole source: asked first; only the report flags are written.
zolui::Next SaveSource(HMODULE lib, AgentEventData& record, const DestinationChoice& choice) {
    if (!reportpanel::ConfirmSetAll())
        return zolui::Next::Stay;
    const bool written = reportpanel::WriteEveryID(
        record, choice.nodes(), [&](AgentEventData& r) { return PutAgntDataForAll(lib, r); });
    return written ? zolui::Next::Close : zolui::Next::Stay;
}

// Reads (or prepares) the record; null after the failure's box and trace line.
std::unique_ptr<AgentRecord> OpenRecord(const char* source, const char* eventid, HMODULE lib,
                                        bool wholeSource, Variant variant) {
    const bool admin = variant == Variant::Administrator;
    std::unique_ptr<AgentRecord> record;
    if (wholeSource) {
        if (!InitForAgntSetAll(source, eventid, lib, record)) {
            ZOL_TRACE(TRACE_LEVEL_ERROR, admin ? "<Adm_InitForAgntSetAll() return FALSE"
                                               : "<InitForAgntSetAll() return FALSE.");
            return nullptr;
        }
    } else if (!GetAgntDataformReg(source, eventid, lib, record)) {
        ShowFuncCallErr("GetAgntDataformReg");
        ZOL_TRACE(TRACE_LEVEL_ERROR, admin ? "<Adm_GetAgntDataformReg return FALSE"
                                           : "<GetAgntDataformReg return FALSE");
        return nullptr;
    }
    return record;
}

void RunEventSetting(const char* source, const char* eventid, HMODULE lib, Variant variant) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] source=%s eventid=%s lib=%p", source ? source : "(null)",
              eventid ? eventid : "(null)", lib);
    if (source == nullptr || eventid == nullptr) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<Input parameter err.");
        return;
    }
    const bool wholeSource = std::strcmp(eventid, EVENT_ID_ALL) == 0;
    std::unique_ptr<AgentRecord> owned = OpenRecord(source, eventid, lib, wholeSource, variant);
    if (owned == nullptr)
        return;
    AgentEventData& record = **owned;
    MarkReportIDs(IDList, record.lplpszDestID, std::clamp(record.DestNum, 0, EVENT_DEST_SLOTS));
    DestinationChoice choice(ListedIDNodes(IDList, wholeSource));
    const std::string readMethod(record.DealMethod, strnlen(record.DealMethod, kDealMethodMax));

    zolui::Dialog dialog;
    EventFields fields;
    zolui::Grid grid(1, 4);
    grid.set(0, 0, reportpanel::HeaderGrid(dialog, source, eventid, wholeSource), {},
             NEWT_ANCHOR_LEFT);
    if (!wholeSource)
        grid.set(0, 1, EventRows(dialog, record, variant, fields), {.top = 1}, NEWT_ANCHOR_LEFT);
    reportpanel::DestinationLists lists(dialog, choice);
    grid.set(0, 2, lists.Grid(dialog), {.top = 1}, NEWT_ANCHOR_LEFT);
    const int gap = variant == Variant::Administrator ? 5 : 3;
    grid.set(0, 3, reportpanel::OkCancelRow(dialog, gap), {.top = 1});
    dialog.open(grid, MessageText("TITTLE_SUBAGENT_SET_ID"));

    auto ok = [&] {
        return wholeSource ? SaveSource(lib, record, choice)
                           : SaveEvent(lib, record, readMethod, fields, choice);
    };
    dialog.run({{zolui::kOkId, ok},
                {reportpanel::kAddId, [&] { return lists.Add(); }},
                {reportpanel::kRemoveId, [&] { return lists.Remove(); }}});
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<");
}

}  // namespace

BOOL GetAgntDataformReg(const char* source, const char* eventid, HMODULE lib,
                        std::unique_ptr<AgentRecord>& record) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] lib=%p", lib);
    record = NewAgentRecord(source, eventid);
    if (record == nullptr)
        return FALSE;
    const LibResult r = GetAgntRecord(lib, record->get());
    if (!r) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, r.unbound()
                                         ? "<GetProcAddress(GetAgntSetting) Failed.return FALSE."
                                         : "<pGetAgntSetting() failed.return FALSE.");
        record.reset();
        return FALSE;
    }
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<return TRUE.");
    return TRUE;
}

BOOL InitForAgntSetAll(const char* source, const char* eventid, HMODULE lib,
                       std::unique_ptr<AgentRecord>& record) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] lib=%p", lib);
    record = NewAgentRecord(source, eventid);
    if (record == nullptr)
        return FALSE;
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<return TRUE.");
    return TRUE;
}

BOOL PutAgntDatatoReg(HMODULE lib, AgentEventData& record, int changed) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] lib=%p changed=%d id=%s flag=%d", lib, changed,
              record.lplpszDestID[0], record.ReportFlag);
    const LibResult r = SetAgntRecord(lib, &record, changed);
    if (r.unbound()) {
        ShowFuncCallErr("GetProcAddress for SetAgntSetting");
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<GetProcAddress(SetAgntSetting) failed.return FALSE.");
        return FALSE;
    }
    if (!r) {
        ShowFuncCallErr("SetAgntSetting");
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<SetAgntSetting() failed.return FALSE.");
        return FALSE;
    }
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<return TRUE.");
    return TRUE;
}

BOOL PutAgntDataForAll(HMODULE lib, AgentEventData& record) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] lib=%p id=%s flag=%d", lib, record.lplpszDestID[0],
              record.ReportFlag);
    const LibResult r = SetAgntSourceFlag(lib, &record);
    if (r.unbound()) {
        ShowFuncCallErr("SetAgntDataForSN");
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<GetProcAddress(SetAgntDataForSN) failed.return FALSE.");
        return FALSE;
    }
    if (!r) {
        ShowFuncCallErr("PPutForSetAll");
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<SetAgntDataForSN() failed.return FALSE.");
        return FALSE;
    }
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<return TRUE.");
    return TRUE;
}

void MonitorEventSetting(const char* source, const char* eventid, HMODULE lib) {
    RunEventSetting(source, eventid, lib, Variant::User);
}

void Adm_MonitorEventSetting(const char* source, const char* eventid, HMODULE lib) {
    RunEventSetting(source, eventid, lib, Variant::Administrator);
}
