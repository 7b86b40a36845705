// The shutdown-delay panel and the on/off panel of the manager's TCP/IP report methods: each edits
// one base-setting record read and written through the report-settings library.
#include <climits>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>

#include "baseset/baseset.h"
#include "baseset/baseset_private.h"
#include "frame/libraries.h"
#include "frame/msgfile.h"
#include "frame/textformat.h"
#include "ui/toolkit.h"

namespace {

// Characters of the delay entry: its width and what OK reads of it.
constexpr int kDelayEntryWidth = 5;

// Ids of what can end a run of a panel's form.
enum PanelId : int { kOkId = 1, kCancelId };

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

// The range-enable record governing the delay entry for the panel's life only.
class DelayEntryRange {
  public:
    DelayEntryRange(newtComponent entry, char* mark) : fields_{entry} {
        CheckStruct = {fields_, 0, 0, mark};
    }
    ~DelayEntryRange() { CheckStruct = {nullptr, 0, -1, nullptr}; }
    DelayEntryRange(const DelayEntryRange&) = delete;
    DelayEntryRange& operator=(const DelayEntryRange&) = delete;

  private:
    newtComponent fields_[1];
};

// OK and Cancel, each 3 columns in.
zolui::Grid OkCancelRow(zolui::Form& form) {
    zolui::Grid row(2, 1);
    row.set(0, 0, form.add(zolui::button(-1, -1, MessageText("BUTTON_OK_ID")), kOkId), {.left = 3});
    row.set(1, 0, form.add(zolui::button(-1, -1, MessageText("BUTTON_CANCEL_ID")), kCancelId),
            {.left = 3});
    return row;
}

}  // namespace

unsigned int DelayFromText(const char* text) {
    if (text == nullptr)
        return UINT_MAX;
    const char* digits = text[0] == '-' ? text + 1 : text;
    if (digits[0] == '\0')
        return UINT_MAX;
    for (const char* p = digits; *p != '\0'; ++p) {
        if (*p < '0' || *p > '9')
            return UINT_MAX;
    }
    // Read as a signed number and taken unsigned, so a minus sign makes it far too large.
    const long long value = std::strtoll(text, nullptr, 10);
    return static_cast<unsigned int>(value);
}

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

int PutDelayValue(BaseData* record, HMODULE hLibRPTSET) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] hLibRPTSET=%p", hLibRPTSET);
    if (!PutBaseSetting(hLibRPTSET, record)) {
        ShowFuncCallErr("PutBaseSetting");
        ZOL_TRACE(TRACE_LEVEL_ERROR, "PutBaseSetting failed.");
    }
    // The panel closes whether or not the write went through: its error box has said so.
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<return 1.");
    return 1;
}

int SubShutdownPanel(HMODULE hLibRPTSET) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] hLibRPTSET=%p", hLibRPTSET);
    BaseRecordPtr record = NewBaseRecord(BASE_METHOD_SHUTDOWN);
    if (record == nullptr) {
        ZOL_TRACE(TRACE_LEVEL_FAILURE, "<malloc CPBaseData2 Failed,return %d.", -1);
        return -1;
    }
    // Any result but 0 means the record was not read (a missing function, no such method, a
    // store error): the panel never offers to write a record it could not read.
    if (InitBaseSetting(hLibRPTSET, record.get()) != 0) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<InitBaseSetting() failed.return %d.", -1);
        return -1;
    }

    char enableMark = record->Enable != 0 ? '*' : ' ';
    zolui::Window window;
    zolui::Form form;
    newtComponent enable = form.add(zolui::checkbox(-1, -1, MessageText("BASE_SUB_ENABLE_ID"),
                                                    enableMark, nullptr, &enableMark));
    newtComponent label = form.add(zolui::label(-1, -1, MessageText("BASE_SUB_DELAY_ID")));
    newtComponent delay =
        form.add(zolui::entry(-1, -1, std::to_string(record->Value), kDelayEntryWidth));
    form.setFilter(
        delay, [](int ch, int cursor) { return EntryNumricFilter(nullptr, nullptr, ch, cursor); });
    const DelayEntryRange range(delay, &enableMark);
    form.onActivate(enable, [enable] { CheckButtonFunc(enable, nullptr); });
    CheckButtonFunc(enable, nullptr);

    zolui::Grid delayRow(2, 1);
    delayRow.set(0, 0, label);
    delayRow.set(1, 0, delay, {.left = 1});
    zolui::Grid grid(1, 3);
    grid.set(0, 0, enable, {}, NEWT_ANCHOR_LEFT);
    grid.set(0, 1, std::move(delayRow), {.top = 1}, NEWT_ANCHOR_LEFT);
    grid.set(0, 2, OkCancelRow(form), {.top = 1}, NEWT_ANCHOR_LEFT);
    window.openWrapped(grid, MessageText("BASE_SUB_TITTLE_ID"));

    for (;;) {
        newtRefresh();
        const zolui::RunResult result = form.run();
        if (!result.isComponent(kOkId)) {
            if (result.reason == zolui::RunResult::Reason::Component && result.id != kCancelId)
                continue;
            break;
        }
        const bool enabled = enableMark != ' ';
        if (enabled) {
            const std::string text = zolui::entryText(delay).substr(0, kDelayEntryWidth);
            if (text.empty()) {
                const std::string title = MessageText("BASE_OTHER_SHUTDOWN_ID");
                msgWindow(title.c_str(), " ok ",
                          CPGetText("ERR_SHUTDOWN_NULL_ID", ReadString, ZOL_RcFileBuf));
                continue;
            }
            const unsigned int value = DelayFromText(text.c_str());
            if (!TestInputValue(value))
                continue;
            record->Value = static_cast<int32_t>(value);
        }
        // Switched off, the stored delay stays as it was, whatever the entry shows.
        record->Enable = enabled ? 1 : 0;
        PutDelayValue(record.get(), hLibRPTSET);
        break;
    }
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<return 0.");
    return 0;
}

int SubSimplePanel(const char* method, HMODULE hLibRPTSET) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] method=%s hLibRPTSET=%p", method ? method : "(null)",
              hLibRPTSET);
    BaseRecordPtr record = NewBaseRecord(method != nullptr ? method : "");
    if (record == nullptr) {
        ZOL_TRACE(TRACE_LEVEL_FAILURE, "<malloc CPBaseData1 Failed,return -1.");
        return -1;
    }
    // As in the shutdown panel, a record that was not read is never offered for writing.
    if (method == nullptr || InitBaseSetting(hLibRPTSET, record.get()) != 0) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<InitBaseSetting() Failed,return -1.");
        return -1;
    }

    char enableMark = record->Enable != 0 ? '*' : ' ';
    zolui::Window window;
    zolui::Form form;
    newtComponent enable = form.add(zolui::checkbox(-1, -1, MessageText("BASE_SUB_ENABLE_ID"),
                                                    enableMark, nullptr, &enableMark));
    zolui::Grid grid(1, 2);
    grid.set(0, 0, enable, {}, NEWT_ANCHOR_LEFT);
    grid.set(0, 1, OkCancelRow(form), {.top = 1}, NEWT_ANCHOR_LEFT);
    window.openWrapped(grid, MessageText("BASE_SUBSIMPLE_TITLE_ID"));

    for (;;) {
        const zolui::RunResult result = form.run();
        if (result.reason == zolui::RunResult::Reason::Component && result.id != kOkId &&
            result.id != kCancelId)
            continue;
        if (result.isComponent(kOkId)) {
            record->Enable = enableMark != ' ' ? 1 : 0;
            if (!PutBaseSetting(hLibRPTSET, record.get()))
                ShowFuncCallErr("PutBaseSetting");
        }
        break;
    }
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<return 0.");
    return 0;
}
