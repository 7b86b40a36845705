// The shutdown-delay panel and the on/off panel of the manager's TCP/IP report methods: each edits
// one base-setting record read and written through the report-settings library.
#include <climits>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>

#include "baseset/baseset.h"
#include "baseset/baseset_private.h"
#include "frame/checks.h"
#include "frame/libraries.h"
#include "frame/msgfile.h"
#include "frame/textformat.h"
#include "ui/dialog.h"
#include "ui/toolkit.h"

namespace {

// Columns of the delay entry, which takes one character less (see Dialog::numberEntry): four
// digits hold every delay there is. OK reads at most this many characters of it.
constexpr int kDelayEntryWidth = 5;

// The error box of a shutdown delay out of range: "ERR_SHUTDOWN_ID" takes the two bounds.
void ShowDelayRangeError() {
    const std::string title = MessageText("BASE_OTHER_SHUTDOWN_ID");
    std::string format = MessageText("ERR_SHUTDOWN_ID");
    // The text's placeholders are "%d"; the formatter fills texts only, so the bounds go in as
    // text and no placeholder of a damaged file can read an argument that is not there.
    for (std::size_t at = format.find("%d"); at != std::string::npos; at = format.find("%d", at))
        format[at + 1] = 's';
    const std::string text = FormatText(format, {"0", std::to_string(kMaxShutdownDelay)});
    msgWindow(title.c_str(), " ok ", text.c_str());
}

// OK and Cancel, each 3 columns in.
zolui::Grid OkCancelRow(zolui::Dialog& dialog) {
    return dialog.buttonRow({{MessageText("BUTTON_OK_ID"), zolui::kOkId},
                             {MessageText("BUTTON_CANCEL_ID"), zolui::kCancelId}},
                            3, 3);
}

// Each manager panel says which method it switches; a method without a title of its own (none
// today) gets the common one.
const char* SimplePanelTitle(const char* method) {
    struct Title {
        const char* method;
        const char* titleId;
    };
    static constexpr Title kTitles[] = {
        {BASE_METHOD_INBAND, "BASE_SUBSIMPLE_INBAND_TITLE_ID"},
        {BASE_METHOD_OUTBAND, "BASE_SUBSIMPLE_OUTBAND_TITLE_ID"},
    };
    for (const Title& title : kTitles) {
        if (std::strcmp(method, title.method) == 0)
            return title.titleId;
    }
    return "BASE_SUBSIMPLE_TITLE_ID";
}

void ShowShutdownRefusal(const char* messageId) {
    if (std::strcmp(messageId, "ERR_SHUTDOWN_ID") == 0) {
        ShowDelayRangeError();
        return;
    }
    const std::string title = MessageText("BASE_OTHER_SHUTDOWN_ID");
    msgWindow(title.c_str(), " ok ", CPGetText(messageId, ReadString, ZOL_RcFileBuf));
}

}  // namespace

int TestInputValue(unsigned int data) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] data=%u", data);
    if (data > kMaxShutdownDelay) {
        ShowDelayRangeError();
        ZOL_TRACE(TRACE_LEVEL_TRACE, "<return 0.");
        return 0;
    }
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<return 1.");
    return 1;
}

int PutDelayValue(BaseData* record, HMODULE lib) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] lib=%p", lib);
    if (!PutBaseSetting(lib, record)) {
        ShowFuncCallErr("PutBaseSetting");
        ZOL_TRACE(TRACE_LEVEL_ERROR, "PutBaseSetting failed.");
    }
    // The panel closes whether or not the write went through: its error box has said so.
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<return 1.");
    return 1;
}

const char* ApplyShutdownPanel(const ShutdownPanelState& state, BaseData& record) {
    if (state.enabled) {
        const std::string text = state.delayText.substr(0, kDelayEntryWidth);
        if (text.empty())
            return "ERR_SHUTDOWN_NULL_ID";
        const unsigned int value = checks::DelayFromText(text);
        if (value > kMaxShutdownDelay)
            return "ERR_SHUTDOWN_ID";
        record.Value = static_cast<int32_t>(value);
    }
    // Switched off, the stored delay stays as it was, whatever the entry shows.
    record.Enable = state.enabled ? 1 : 0;
    return nullptr;
}

int SubShutdownPanel(HMODULE lib) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] lib=%p", lib);
    BaseRecordPtr record = NewBaseRecord(BASE_METHOD_SHUTDOWN);
    if (record == nullptr) {
        ZOL_TRACE(TRACE_LEVEL_FAILURE, "<malloc CPBaseData2 Failed,return %d.", -1);
        return -1;
    }
    // Any result but 0 means the record was not read (a missing function, no such method, a
    // store error): the panel never offers to write a record it could not read.
    if (InitBaseSetting(lib, record.get()) != 0) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<InitBaseSetting() failed.return %d.", -1);
        return -1;
    }

    // Build.
    char enableMark = record->Enable != 0 ? '*' : ' ';
    zolui::Dialog dialog;
    newtComponent enable = dialog.add(zolui::checkbox(-1, -1, MessageText("BASE_SUB_ENABLE_ID"),
                                                      enableMark, nullptr, &enableMark));
    newtComponent label = dialog.add(zolui::label(-1, -1, MessageText("BASE_SUB_DELAY_ID")));
    newtComponent delay = dialog.numberEntry(std::to_string(record->Value), kDelayEntryWidth);
    dialog.enableWhileChecked(enable, &enableMark, {delay});

    zolui::Grid delayRow(2, 1);
    delayRow.set(0, 0, label);
    delayRow.set(1, 0, delay, {.left = 1});
    zolui::Grid grid(1, 3);
    grid.set(0, 0, enable, {}, NEWT_ANCHOR_LEFT);
    grid.set(0, 1, std::move(delayRow), {.top = 1}, NEWT_ANCHOR_LEFT);
    grid.set(0, 2, OkCancelRow(dialog), {.top = 1}, NEWT_ANCHOR_LEFT);
    dialog.open(grid, MessageText("BASE_SUB_TITTLE_ID"));
    dialog.redrawBeforeEachRun();

    // Handlers and save: the panel closes after a write, failed or not; its box has said so.
    auto ok = [&] {
        const ShutdownPanelState state{enableMark != ' ', zolui::entryText(delay)};
        if (const char* refusal = ApplyShutdownPanel(state, *record)) {
            ShowShutdownRefusal(refusal);
            return zolui::Next::Stay;
        }
        PutDelayValue(record.get(), lib);
        return zolui::Next::Close;
    };
    dialog.run({{zolui::kOkId, ok}});
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<return 0.");
    return 0;
}

int SubSimplePanel(const char* method, HMODULE lib) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] method=%s lib=%p", method ? method : "(null)", lib);
    BaseRecordPtr record = NewBaseRecord(method != nullptr ? method : "");
    if (record == nullptr) {
        ZOL_TRACE(TRACE_LEVEL_FAILURE, "<malloc CPBaseData1 Failed,return -1.");
        return -1;
    }
    // As in the shutdown panel, a record that was not read is never offered for writing.
    if (method == nullptr || InitBaseSetting(lib, record.get()) != 0) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<InitBaseSetting() Failed,return -1.");
        return -1;
    }

    char enableMark = record->Enable != 0 ? '*' : ' ';
    zolui::Dialog dialog;
    newtComponent enable = dialog.add(zolui::checkbox(-1, -1, MessageText("BASE_SUB_ENABLE_ID"),
                                                      enableMark, nullptr, &enableMark));
    zolui::Grid grid(1, 2);
    grid.set(0, 0, enable, {}, NEWT_ANCHOR_LEFT);
    grid.set(0, 1, OkCancelRow(dialog), {.top = 1}, NEWT_ANCHOR_LEFT);
    dialog.open(grid, MessageText(SimplePanelTitle(method)));

    auto ok = [&] {
        record->Enable = enableMark != ' ' ? 1 : 0;
        if (!PutBaseSetting(lib, record.get()))
            ShowFuncCallErr("PutBaseSetting");
        return zolui::Next::Close;
    };
    dialog.run({{zolui::kOkId, ok}});
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<return 0.");
    return 0;
}
