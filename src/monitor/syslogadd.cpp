// Adding a syslog monitoring item: source (fixed when the list hands one in), event ID, up to
// three keywords, trap name and handling method, checked in a fixed order before the library
// creates the item.
#include <cstdio>
#include <cstring>
#include <new>
#include <string>

#include "frame/checks.h"
#include "frame/libraries.h"
#include "frame/msgfile.h"
#include "frame/rptset_calls.h"
#include "monitor/monitor.h"
#include "ui/dialog.h"
#include "ui/encoding.h"
#include "ui/toolkit.h"

bool IsSyslogEventID(std::string_view id) {
    if (id.size() != 8 || std::strchr("48cC", id[0]) == nullptr)
        return false;
    for (char c : id.substr(1)) {
        const bool hex = (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
        if (!hex)
            return false;
    }
    return true;
}

const char* SyslogAddFault(const SyslogAddInput& input, int* keyword) {
    for (int i = 0; i < 3; ++i) {
        if (input.keywords[i].size() > kKeywordMax) {
            if (keyword != nullptr)
                *keyword = i + 1;
            return "SYSLOGADD_KeywordError_ID";
        }
    }
    if (input.trapName.size() > kTrapNameMax)
        return "SYSLOGADD_TrapnameError_ID";
    if (input.dealMethod.size() > kDealMethodMax)
        return "SYSLOGADD_DealmethodError_ID";
    const bool anyKeyword =
        !input.keywords[0].empty() || !input.keywords[1].empty() || !input.keywords[2].empty();
    if (input.source.empty() || input.eventID.empty() || !anyKeyword)
        return "SYSLOGADD_NotCompleteError_ID";
    if (!IsSyslogEventID(input.eventID))
        return "SYSLOGADD_InvalidEventError_ID";
    return nullptr;
}

namespace {

// Copies text into a field of `size` bytes, cut to fit on a whole character.
void CopyField(char* field, std::size_t size, std::string_view text) {
    const std::string_view cut = zolui::CutEuc(text, size - 1);
    std::memcpy(field, cut.data(), cut.size());
    field[cut.size()] = '\0';
}

}  // namespace

void FillSyslogAddRecord(const SyslogAddInput& input, SyslogData& record) {
    CopyField(record.SourceName, sizeof record.SourceName, input.source);
    CopyField(record.EventID, sizeof record.EventID, input.eventID);
    CopyField(record.Keyword1, sizeof record.Keyword1, input.keywords[0]);
    CopyField(record.Keyword2, sizeof record.Keyword2, input.keywords[1]);
    CopyField(record.Keyword3, sizeof record.Keyword3, input.keywords[2]);
    CopyField(record.TrapName, sizeof record.TrapName, input.trapName);
    CopyField(record.DealMethod, sizeof record.DealMethod, input.dealMethod);
}

namespace {

constexpr int kConfirmId = 1;
constexpr int kIDWidth = 16;
constexpr int kTextWidth = 22;

// The dialog's entries; source stays null when the source is handed in.
struct AddFields {
    newtComponent source = nullptr;
    newtComponent eventID = nullptr;
    newtComponent keywords[3] = {};
    newtComponent trapName = nullptr;
    newtComponent dealMethod = nullptr;
};

void ErrorBox(const char* messageId) {
    msgWindow("Error", " ok ", CPGetText(messageId, ReadString, ZOL_RcFileBuf));
}

// The trace line of a refused check, in the dialog's own words.
void TraceFault(const char* fault, int keyword) {
    if (std::strcmp(fault, "SYSLOGADD_KeywordError_ID") == 0)
        ZOL_TRACE(TRACE_LEVEL_ERROR, "keyword%d length more than 256", keyword);
    else if (std::strcmp(fault, "SYSLOGADD_TrapnameError_ID") == 0)
        ZOL_TRACE(TRACE_LEVEL_ERROR, "Trapname length more than 81");
    else if (std::strcmp(fault, "SYSLOGADD_DealmethodError_ID") == 0)
        ZOL_TRACE(TRACE_LEVEL_ERROR, "Dealmethod length more than 512");
}

SyslogAddInput Gather(const AddFields& fields, const std::string& fixedSource) {
    SyslogAddInput input;
    input.source = fields.source != nullptr
                       ? std::string(zolui::CutEuc(zolui::entryText(fields.source), kSourceMax))
                       : fixedSource;
    input.eventID = zolui::entryText(fields.eventID);
    for (int i = 0; i < 3; ++i)
        input.keywords[i] = zolui::entryText(fields.keywords[i]);
    input.trapName = zolui::entryText(fields.trapName);
    input.dealMethod = zolui::entryText(fields.dealMethod);
    return input;
}

// Confirm: the checks, then "AddSyslogItem". Refusals keep the dialog open with what was typed.
zolui::Next Confirm(HMODULE lib, const AddFields& fields, const std::string& fixedSource,
                    int& result) {
    const SyslogAddInput input = Gather(fields, fixedSource);
    int keyword = 0;
    if (const char* fault = SyslogAddFault(input, &keyword)) {
        TraceFault(fault, keyword);
        ErrorBox(fault);
        return zolui::Next::Stay;
    }
    std::unique_ptr<SyslogData> record(new (std::nothrow) SyslogData{});
    if (record == nullptr) {
        ZOL_TRACE(TRACE_LEVEL_FAILURE, "malloc for AddSyslogData failed");
        result = -1;
        return zolui::Next::Close;
    }
    FillSyslogAddRecord(input, *record);
    const LibResult r = AddSyslogRecord(lib, record.get());
    if (r.unbound()) {
        ShowFuncCallErr("GetProcAddress for AddSyslogItem");
        ZOL_TRACE(TRACE_LEVEL_ERROR, "Get AddSyslogItem address failed");
        result = -1;
        return zolui::Next::Close;
    }
    if (r.value == -3 || r.value == -4) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "AddSyslogItem return %d", r.value);
        ErrorBox(r.value == -3 ? "SYSLOGADD_EventExistedError_ID"
                               : "SYSLOGADD_SourceExistedError_ID");
        return zolui::Next::Stay;
    }
    if (r.value == -1) {
        // The library refused the record (a source it cannot store, a failed write): say so and
        // keep what was typed, so that it can be corrected or the dialog cancelled.
        ZOL_TRACE(TRACE_LEVEL_ERROR, "AddSyslogItem return -1");
        ShowFuncCallErr("AddSyslogItem");
        return zolui::Next::Stay;
    }
    if (r.value == 1) {
        msgWindow("Add Syslog Item", " ok ",
                  CPGetText("SYSLOGADD_SucceedMessage_ID", ReadString, ZOL_RcFileBuf));
    }
    result = 1;
    return zolui::Next::Close;
}

newtComponent TextEntry(zolui::Dialog& dialog, int width) {
    return dialog.add(zolui::entry(-1, -1, "", width, NEWT_FLAG_SCROLL));
}

}  // namespace

int SyslogAddItem(HMODULE lib, const std::string& sourcename) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] lib=%p sourcename=%s", lib, sourcename.c_str());
    zolui::Dialog dialog;
    AddFields fields;
    newtComponent sourceField = sourcename.empty() ? (fields.source = TextEntry(dialog, kIDWidth))
                                                   : dialog.add(zolui::label(-1, -1, sourcename));
    fields.eventID = TextEntry(dialog, kIDWidth);
    for (newtComponent& keyword : fields.keywords)
        keyword = TextEntry(dialog, kTextWidth);
    fields.trapName = TextEntry(dialog, kTextWidth);
    fields.dealMethod = TextEntry(dialog, kTextWidth);

    const std::pair<const char*, newtComponent> rows[] = {
        {"AGENT_SOURCE_ID", sourceField},
        {"AGENT_EVENTID_ID", fields.eventID},
        {"SUBAGENT_KEYWORD1_ID", fields.keywords[0]},
        {"SUBAGENT_KEYWORD2_ID", fields.keywords[1]},
        {"SUBAGENT_KEYWORD3_ID", fields.keywords[2]},
        {"AGENT_TRAPNAME_ID", fields.trapName},
        {"AGENT_DEALMETHOD_ID", fields.dealMethod},
    };
    zolui::Grid fieldGrid(2, 7);
    int at = 0;
    for (const auto& [labelId, field] : rows) {
        fieldGrid.set(0, at, dialog.add(zolui::label(-1, -1, MessageText(labelId))), {},
                      NEWT_ANCHOR_LEFT);
        fieldGrid.set(1, at++, field, {.left = 1}, NEWT_ANCHOR_LEFT);
    }
    zolui::Grid grid(1, 2);
    grid.set(0, 0, std::move(fieldGrid));
    grid.set(0, 1,
             dialog.buttonRow({{MessageText("SYSLOGADD_CONFIRM_ID"), kConfirmId},
                               {MessageText("BUTTON_CANCEL_ID"), zolui::kCancelId}}),
             {.top = 1});
    dialog.open(grid, MessageText("TITLE_SYSLOGADD_ID"));

    int result = 2;
    dialog.run({{kConfirmId, [&] { return Confirm(lib, fields, sourcename, result); }}});
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<return %d.", result);
    return result;
}
