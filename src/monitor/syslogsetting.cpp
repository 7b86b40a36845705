// Per-item syslog report settings: to which destination IDs one syslog monitoring item (or every
// item of one source) is reported and, for one item, its time table, count, action and handling
// method, with its keywords shown; in administrator mode its error kind and level as well.
#include <algorithm>
#include <charconv>
#include <climits>
#include <cstring>
#include <string>

#include "dscopy_api.h"
#include "frame/dscopy_calls.h"
#include "frame/libraries.h"
#include "frame/msgfile.h"
#include "frame/rptset_calls.h"
#include "frame/screens.h"
#include "monitor/monitor.h"
#include "monitor/reportpanel.h"
#include "ui/dialog.h"
#include "ui/toolkit.h"

// ---- Rules of the screen ----

int AffirmSingleCharASCNum(const char* text) {
    if (text == nullptr) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<KeywordName is NULL!");
        return -1;
    }
    if (std::strlen(text) <= kKeywordColumns - 1) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<%s len is err", text);
        return -1;
    }
    int single = 0;
    for (std::size_t i = 0; i < kKeywordColumns; ++i)
        single += static_cast<unsigned char>(text[i]) < 128 ? 1 : 0;
    return single;
}

std::optional<std::string> KeywordLabelText(const char* keyword) {
    if (keyword == nullptr)
        return std::nullopt;
    std::string text(keyword, strnlen(keyword, sizeof SyslogData::Keyword1 - 1));
    if (text.size() <= kKeywordColumns) {
        text.resize(kKeywordColumns, ' ');
        return text;
    }
    const int single = AffirmSingleCharASCNum(text.c_str());
    if (single < 0)
        return std::nullopt;
    // An odd number of single-byte characters leaves the 40th byte the first half of a
    // two-byte character.
    text.resize(single % 2 != 0 ? kKeywordColumns - 1 : kKeywordColumns);
    return text;
}

int32_t CountFromText(std::string_view text) {
    long long value = 0;
    const auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), value);
    (void)end;
    if (ec == std::errc::result_out_of_range)
        return text.starts_with('-') ? 0 : INT32_MAX;
    if (ec != std::errc() || value < 0)
        return 0;
    return static_cast<int32_t>(std::min<long long>(value, INT32_MAX));
}

std::string TimeTableText::Show(HMODULE dscopyLib, uint32_t value) {
    char text[SCHEDULE_TEXT_MAX] = {};
    if (!ScheduletoOutString(value, text, dscopyLib))
        return {};
    return {text, strnlen(text, sizeof text - 1)};
}

uint32_t TimeTableText::Accept(const std::string& typed) {
    uint32_t value = 0;
    InStringtoSchedule(typed.c_str(), &value, dscopyLib);
    if (value != 0) {
        accepted = typed;
        return value;
    }
    // An invalid or empty time table silently keeps the one accepted before.
    InStringtoSchedule(accepted.c_str(), &value, dscopyLib);
    return value;
}

// ---- Reading and writing the record ----

namespace {

std::unique_ptr<SyslogRecord> NewSyslogRecord(const char* source, const char* eventid) {
    if (source == nullptr || eventid == nullptr) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<Input parameter err,return FALSE");
        return nullptr;
    }
    std::unique_ptr<SyslogRecord> record = SyslogRecord::Allocate("CPSyslogData");
    if (record == nullptr)
        return nullptr;
    std::snprintf((*record)->SourceName, sizeof(*record)->SourceName, "%s", source);
    std::snprintf((*record)->EventID, sizeof(*record)->EventID, "%s", eventid);
    (*record)->DestNum = 0;
    (*record)->Action = 0;
    return record;
}

// The box of a refused syslog write: -2 is a destination ID deleted meanwhile.
BOOL SyslogWriteFailed(const LibResult& r, const char* failedWhat, const char* trace) {
    if (r.value == -2)
        msgWindow("Error", " ok ", CPGetText("ERR_DEST_NOEXIST_ID", ReadString, ZOL_RcFileBuf));
    else
        ShowFuncCallErr(failedWhat);
    ZOL_TRACE(TRACE_LEVEL_ERROR, "%s", trace);
    return FALSE;
}

}  // namespace

BOOL GetSyslogDataformReg(const char* source, const char* eventid, HMODULE lib,
                          std::unique_ptr<SyslogRecord>& record) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] lib=%p", lib);
    record = NewSyslogRecord(source, eventid);
    if (record == nullptr)
        return FALSE;
    const LibResult r = GetSyslogRecord(lib, record->get());
    if (!r) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, r.unbound()
                                         ? "<GetProcAddress(GetSyslogSetting) Failed,return FALSE."
                                         : "<pGetSyslogSetting() failed.return FALSE");
        record.reset();
        return FALSE;
    }
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<return TRUE.");
    return TRUE;
}

BOOL InitForSyslogSetAll(const char* source, const char* eventid, HMODULE lib,
                         std::unique_ptr<SyslogRecord>& record) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] lib=%p", lib);
    record = NewSyslogRecord(source, eventid);
    if (record == nullptr)
        return FALSE;
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<return TRUE.");
    return TRUE;
}

BOOL PutSyslogDatatoReg(HMODULE lib, SyslogData& record, int changed) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] lib=%p changed=%d id=%s flag=%d", lib, changed,
              record.lplpszDestID[0], record.ReportFlag);
    const LibResult r = SetSyslogRecord(lib, &record, changed);
    if (r.unbound()) {
        ShowFuncCallErr("GetProcAddress for SetSyslogSetting");
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<GetProcAddress(SetSyslogSetting) failed.return FALSE.");
        return FALSE;
    }
    if (!r)
        return SyslogWriteFailed(r, "SetSyslogSetting", "<SetSyslogSetting() failed.return FALSE.");
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<return TRUE.");
    return TRUE;
}

BOOL PutSyslogDataForAll(HMODULE lib, SyslogData& record) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] lib=%p id=%s flag=%d", lib, record.lplpszDestID[0],
              record.ReportFlag);
    const LibResult r = SetSyslogSourceFlag(lib, &record);
    if (r.unbound()) {
        ShowFuncCallErr("GetProcAddress for SetSyslogDataForSN");
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<GetProcAddress(SetSyslogDataForSN) failed.return FALSE.");
        return FALSE;
    }
    if (!r)
        return SyslogWriteFailed(r, "PPutForSetAll", "<SetSyslogDataForSN() failed.return FALSE.");
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<return TRUE.");
    return TRUE;
}

// ---- The screen ----

namespace {

enum class Variant { User, Administrator };

constexpr int kTimeTableWidth = 50;
constexpr int kCountWidth = 9;
constexpr int kDealMethodWidth = 20;
constexpr int kActionWidth = 20;
constexpr int kErrorKindWidth = 20;
constexpr int kLevelWidth = 4;
// Ids of the three keyword buttons.
constexpr int kKeywordIds[3] = {10, 11, 12};
constexpr const char* kKeywordLabelIds[3] = {"SUBAGENT_KEYWORD1_ID", "SUBAGENT_KEYWORD2_ID",
                                             "SUBAGENT_KEYWORD3_ID"};
constexpr const char* kKeywordTitleIds[3] = {
    "SUBAGENT_TITLE_KEYWORD1_ID", "SUBAGENT_TITLE_KEYWORD2_ID", "SUBAGENT_TITLE_KEYWORD3_ID"};

// The per-item fields; the ones a variant leaves out stay null.
struct ItemFields {
    newtComponent timeTable = nullptr;
    newtComponent count = nullptr;
    newtComponent action = nullptr;
    newtComponent errorKind = nullptr;
    newtComponent level = nullptr;
    newtComponent dealMethod = nullptr;
};

const char* KeywordOf(const SyslogData& record, int i) {
    return i == 0 ? record.Keyword1 : i == 1 ? record.Keyword2 : record.Keyword3;
}

// One keyword row: its label, the keyword cut to 40 columns, and the button that shows it whole.
zolui::Grid KeywordRow(zolui::Dialog& dialog, int i, const std::string& shown) {
    zolui::Grid row(3, 1);
    row.set(0, 0, dialog.add(zolui::label(-1, -1, MessageText(kKeywordLabelIds[i]))), {},
            NEWT_ANCHOR_LEFT);
    row.set(1, 0, dialog.add(zolui::label(-1, -1, shown)), {.left = 1}, NEWT_ANCHOR_LEFT);
    row.set(2, 0,
            dialog.add(zolui::compactButton(-1, -1, MessageText("SYSLOGSET_BUTTON_KEYWORD_ID")),
                       kKeywordIds[i]),
            {.left = 1}, NEWT_ANCHOR_LEFT);
    return row;
}

// The error kind and the level, side by side (the screen must fit 24 lines).
zolui::Grid AdminRow(zolui::Dialog& dialog, const SyslogData& record, ItemFields& fields) {
    namespace rp = reportpanel;
    fields.errorKind = rp::ChoiceList(dialog, kErrorKindChoices, kErrorKindWidth,
                                      ChoiceRow(kErrorKindChoices, record.ErrKind));
    fields.level = rp::LevelList(dialog, "  %ld", kLevelWidth, LevelRow(record.Level));
    zolui::Grid row(2, 1);
    row.set(0, 0, rp::LabelledRow(dialog, "ADMAGENT_ERRKIND_LABEL_ID", fields.errorKind), {},
            NEWT_ANCHOR_LEFT);
    row.set(1, 0, rp::LabelledRow(dialog, "ADMAGENT_LEVEL_LABEL_ID", fields.level), {.left = 3},
            NEWT_ANCHOR_LEFT);
    return row;
}

// Time table, count, the keywords, the action with the handling method, (error kind and level.)
zolui::Grid ItemRows(zolui::Dialog& dialog, const SyslogData& record, Variant variant,
                     const std::string (&keywords)[3], const std::string& timeTable,
                     ItemFields& fields) {
    namespace rp = reportpanel;
    fields.timeTable =
        dialog.add(zolui::entry(-1, -1, timeTable, kTimeTableWidth, NEWT_FLAG_SCROLL));
    dialog.form().setFilter(fields.timeTable, [](int ch, int cursor) {
        return EntryScheduleFilter(nullptr, nullptr, ch, cursor);
    });
    // Keeps what it shows however it is edited (see Dialog::numberEntry).
    fields.count = dialog.numberEntry(std::to_string(record.Count), kCountWidth);
    const bool admin = variant == Variant::Administrator;
    zolui::Grid rows(1, admin ? 7 : 6);
    int at = 0;
    rows.set(0, at++, rp::LabelledRow(dialog, "SYSLOG_TIMETABLE_ID", fields.timeTable), {},
             NEWT_ANCHOR_LEFT);
    rows.set(0, at++, rp::LabelledRow(dialog, "SUBSYSLOG_COUNT_ID", fields.count), {},
             NEWT_ANCHOR_LEFT);
    for (int i = 0; i < 3; ++i)
        rows.set(0, at++, KeywordRow(dialog, i, keywords[i]), {}, NEWT_ANCHOR_LEFT);
    // Action and handling method share a row, so that the screen fits 24 lines.
    fields.action = rp::ChoiceList(dialog, kActionChoices, kActionWidth,
                                   ChoiceRow(kActionChoices, record.Action));
    fields.dealMethod = dialog.add(zolui::entry(-1, -1, DealMethodShown(record.DealMethod),
                                                kDealMethodWidth, NEWT_FLAG_SCROLL));
    zolui::Grid actionRow(2, 1);
    actionRow.set(0, 0, rp::LabelledRow(dialog, "SUBAGENT_ACTION_ID", fields.action), {},
                  NEWT_ANCHOR_LEFT);
    actionRow.set(1, 0, rp::LabelledRow(dialog, "AGENT_DEALMETHOD_ID", fields.dealMethod),
                  {.left = 2}, NEWT_ANCHOR_LEFT);
    rows.set(0, at++, std::move(actionRow), {}, NEWT_ANCHOR_LEFT);
    if (admin)
        rows.set(0, at, AdminRow(dialog, record, fields), {}, NEWT_ANCHOR_LEFT);
    return rows;
}

// What OK of one item needs besides the fields.
struct ItemSave {
    HMODULE lib;
    std::string readMethod;  // the handling method as read when the screen opened
    TimeTableText timeTable;
};

// OK for one item, in the screen's order: action, count, handling method, time table, (error
// kind and level,) then one write per listed ID.
zolui::Next SaveItem(ItemSave& save, SyslogData& record, const ItemFields& fields,
                     const DestinationChoice& choice) {
    record.Action = reportpanel::ChoiceValue(fields.action, kActionChoices);
    record.Count = CountFromText(zolui::entryText(fields.count));
    std::snprintf(record.DealMethod, sizeof record.DealMethod, "%s", save.readMethod.c_str());
    const int changed = ApplyDealMethod(record.DealMethod, zolui::entryText(fields.dealMethod));
    record.TimeTable = save.timeTable.Accept(zolui::entryText(fields.timeTable));
    if (fields.errorKind != nullptr) {
        record.ErrKind = reportpanel::ChoiceValue(fields.errorKind, kErrorKindChoices);
        record.Level = std::max(0, zolui::listboxCurrentIndex(fields.level));
    }
    const bool written = reportpanel::WriteEveryID(record, choice.nodes(), [&](SyslogData& r) {
        return PutSyslogDatatoReg(save.lib, r, changed);
    });
    return written ? zolui::Next::Close : zolui::Next::Stay;
}

zolui::Next SaveSource(HMODULE lib, SyslogData& record, const DestinationChoice& choice) {
    if (!reportpanel::ConfirmSetAll())
        return zolui::Next::Stay;
    const bool written = reportpanel::WriteEveryID(
        record, choice.nodes(), [&](SyslogData& r) { return PutSyslogDataForAll(lib, r); });
    return written ? zolui::Next::Close : zolui::Next::Stay;
}

// Reads (or prepares) the record; null after the failure's box and trace line.
std::unique_ptr<SyslogRecord> OpenRecord(const char* source, const char* eventid, HMODULE lib,
                                         bool wholeSource, Variant variant) {
    const bool admin = variant == Variant::Administrator;
    std::unique_ptr<SyslogRecord> record;
    if (wholeSource) {
        if (!InitForSyslogSetAll(source, eventid, lib, record)) {
            ZOL_TRACE(TRACE_LEVEL_ERROR, admin ? "<InitForSyslogSetAll() return FALSE"
                                               : "<InitForSyslogSetAll return FALSE.");
            return nullptr;
        }
    } else if (!GetSyslogDataformReg(source, eventid, lib, record)) {
        // The write's name, though the read failed: what administrators have always been shown.
        ShowFuncCallErr("SetSyslogSetting");
        ZOL_TRACE(TRACE_LEVEL_ERROR, admin ? "<GetSyslogDataformReg() return FALSE"
                                           : "<GetSyslogDataformReg return FALSE.");
        return nullptr;
    }
    return record;
}

// The keyword labels of one item; false (traced) when one cannot be cut.
bool KeywordLabels(const SyslogData& record, std::string (&labels)[3]) {
    for (int i = 0; i < 3; ++i) {
        std::optional<std::string> shown = KeywordLabelText(KeywordOf(record, i));
        if (!shown) {
            ZOL_TRACE(TRACE_LEVEL_ERROR, "<AffirmSingleCharASCNum return error");
            return false;
        }
        labels[i] = std::move(*shown);
    }
    return true;
}

// The handlers of the keyword buttons: each shows its keyword whole; an empty one does nothing.
void AddKeywordHandlers(zolui::Handlers& handlers, const SyslogData& record) {
    for (int i = 0; i < 3; ++i) {
        handlers[kKeywordIds[i]] = [&record, i] {
            const char* keyword = KeywordOf(record, i);
            if (keyword[0] != '\0') {
                const std::string title = MessageText(kKeywordTitleIds[i]);
                msgWindowEx(title.c_str(), " ok ", keyword);
            }
            return zolui::Next::Stay;
        };
    }
}

void RunSyslogSetting(const char* source, const char* eventid, HMODULE rptsetLib, HMODULE dscopyLib,
                      Variant variant) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] lib=%p dscopyLib=%p", rptsetLib, dscopyLib);
    const bool wholeSource = eventid != nullptr && std::strcmp(eventid, EVENT_ID_ALL) == 0;
    std::unique_ptr<SyslogRecord> owned =
        OpenRecord(source, eventid, rptsetLib, wholeSource, variant);
    if (owned == nullptr)
        return;
    SyslogData& record = **owned;
    std::string keywords[3];
    if (!wholeSource && !KeywordLabels(record, keywords))
        return;
    MarkReportIDs(IDList, record.lplpszDestID, std::clamp(record.DestNum, 0, EVENT_DEST_SLOTS));
    DestinationChoice choice(ListedIDNodes(IDList, wholeSource));
    ItemSave save{rptsetLib,
                  std::string(record.DealMethod, strnlen(record.DealMethod, kDealMethodMax)),
                  {dscopyLib, TimeTableText::Show(dscopyLib, record.TimeTable)}};

    zolui::Dialog dialog;
    ItemFields fields;
    zolui::Grid grid(1, 4);
    // Rows closer than on the per-event screen: this one has more of them and must fit 24 lines.
    grid.set(0, 0, reportpanel::HeaderGrid(dialog, source, eventid, wholeSource, 0), {},
             NEWT_ANCHOR_LEFT);
    if (!wholeSource) {
        grid.set(0, 1, ItemRows(dialog, record, variant, keywords, save.timeTable.accepted, fields),
                 {}, NEWT_ANCHOR_LEFT);
    }
    reportpanel::DestinationLists lists(dialog, choice);
    grid.set(0, 2, lists.Grid(dialog), {.top = 1}, NEWT_ANCHOR_LEFT);
    // The buttons' own frame parts them from the lists: no blank line, to fit 24 lines.
    grid.set(0, 3, reportpanel::OkCancelRow(dialog, variant == Variant::Administrator ? 5 : 3));
    dialog.open(grid, MessageText("TITTLE_SUBSYSLOG_SET_ID"));

    zolui::Handlers handlers{{zolui::kOkId,
                              [&] {
                                  return wholeSource ? SaveSource(rptsetLib, record, choice)
                                                     : SaveItem(save, record, fields, choice);
                              }},
                             {reportpanel::kAddId, [&] { return lists.Add(); }},
                             {reportpanel::kRemoveId, [&] { return lists.Remove(); }}};
    if (!wholeSource)
        AddKeywordHandlers(handlers, record);
    dialog.run(handlers);
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<");
}

}  // namespace

void MonitorSyslogSetting(const char* source, const char* eventid, HMODULE rptsetLib,
                          HMODULE dscopyLib) {
    RunSyslogSetting(source, eventid, rptsetLib, dscopyLib, Variant::User);
}

void Adm_MonitorSyslogSetting(const char* source, const char* eventid, HMODULE rptsetLib,
                              HMODULE dscopyLib) {
    RunSyslogSetting(source, eventid, rptsetLib, dscopyLib, Variant::Administrator);
}
