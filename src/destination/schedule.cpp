// The report schedule of a destination ID: the hours reports may be sent in, and how often and
// for how long a failed report is tried again. The hours are kept as a mask that "dscopy.dll"
// turns into text and back; this screen checks only the text's form (docs/schedules.md).
#include <strings.h>

#include <string>
#include <string_view>

#include "destination/destination.h"
#include "frame/checks.h"
#include "frame/dscopy_calls.h"
#include "frame/libraries.h"
#include "frame/msgfile.h"
#include "frame/rptset_calls.h"
#include "ui/dialog.h"
#include "ui/toolkit.h"

namespace {

// Buffers of the schedule texts.
constexpr std::size_t kScheduleTextSize = 1024;
constexpr int kIntervalWidth = 3;
constexpr int kRetryTimeWidth = 4;
constexpr int kHoursWidth = 36;
constexpr int kHelpWidth = 30;
constexpr int kHelpHeight = 2;

// The remote report service's destination writes its record through the service's own call.
constexpr const char* kVantrelID = "VANTRELREPORT";

std::string Text(const char* id) {
    return MessageText(id);
}

void ShowScheduleBox(const std::string& text) {
    const std::string title = MessageText("TITTLE_SCHEDULE_ID");
    msgWindow(title.c_str(), " ok ", text.c_str());
}

// The service's destination: its record (and, by internet mail, its mail settings) in one
// write. The screen closes whatever happens; a failed write has said so.
void SaveVantrelSchedule(DestData* record, HMODULE rptsetLib) {
    int method = 0;
    if (GetVntMethod(rptsetLib, &method) != 0) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<GetVntMethod() failed.");
        return;
    }
    if (method < VANTREL_INTERNETMAIL || method > VANTREL_HTTPS) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "unsupported method %d: nothing written.", method);
        return;
    }
    const int flag = method == VANTREL_INTERNETMAIL ? 0 : 1;
    if (PutMLDestSetting(record, rptsetLib, flag) != TRUE)
        ShowFuncCallErr("PutMLDestSetting");
}

// What OK does once the entries passed: true closes the screen.
bool SaveSchedule(DestData* record, HMODULE rptsetLib, int status) {
    if (status == 0)
        return true;  // the ID editor writes the new ID's record
    if (strcasecmp(record->ID, kVantrelID) == 0) {
        SaveVantrelSchedule(record, rptsetLib);
        return true;
    }
    if (PutDestSetting(record, rptsetLib))
        return true;
    ShowFuncCallErr("PutDestSetting");
    return false;
}

// The schedule screen's entries.
struct ScheduleForm {
    newtComponent interval, retryTime, hours;
};

zolui::Grid NumberRows(zolui::Dialog& dialog, const ScheduleForm& form) {
    using zolui::label;
    zolui::Grid numbers(3, 2);
    numbers.set(0, 0, dialog.add(label(-1, -1, Text("IDSET_SCHE_RINTER_ID"))), {},
                NEWT_ANCHOR_LEFT);
    numbers.set(1, 0, form.interval, {.left = 2}, NEWT_ANCHOR_LEFT);
    numbers.set(2, 0, dialog.add(label(-1, -1, Text("IDSET_SCHE_MIN_ID"))), {.left = 2},
                NEWT_ANCHOR_LEFT);
    numbers.set(0, 1, dialog.add(label(-1, -1, Text("IDSET_SCHE_RTIME_ID"))), {.top = 1},
                NEWT_ANCHOR_LEFT);
    numbers.set(1, 1, form.retryTime, {.left = 2, .top = 1}, NEWT_ANCHOR_LEFT);
    numbers.set(2, 1, dialog.add(label(-1, -1, Text("IDSET_SCHE_HOUR_ID"))), {.left = 2, .top = 1},
                NEWT_ANCHOR_LEFT);
    return numbers;
}

// Builds and opens the screen: the two numbers, the hours with their help, OK and Cancel.
ScheduleForm OpenScheduleForm(zolui::Dialog& dialog, const DestData& record,
                              const std::string& shown) {
    ScheduleForm form{};
    // Number entries keep what they show however they are edited (see Dialog::numberEntry).
    form.interval = dialog.numberEntry(std::to_string(record.RetryInterval), kIntervalWidth);
    form.retryTime = dialog.numberEntry(std::to_string(record.RetryTime), kRetryTimeWidth);
    form.hours = dialog.add(zolui::entry(-1, -1, shown, kHoursWidth, NEWT_FLAG_SCROLL));
    dialog.form().setFilter(form.hours, [](int ch, int cursor) {
        return EntryScheduleFilter(nullptr, nullptr, ch, cursor);
    });
    zolui::Grid table(1, 3);
    table.set(0, 0, dialog.add(zolui::label(-1, -1, Text("IDSET_SCHE_TIMETAB_ID"))), {},
              NEWT_ANCHOR_LEFT);
    table.set(0, 1, form.hours, {.top = 1}, NEWT_ANCHOR_LEFT);
    table.set(0, 2,
              dialog.add(zolui::textbox(-1, -1, kHelpWidth, kHelpHeight, NEWT_FLAG_WRAP,
                                        Text("IDSET_SCHE_HELP_ID"))),
              {.top = 1}, NEWT_ANCHOR_LEFT);
    zolui::Grid grid(1, 3);
    grid.set(0, 0, NumberRows(dialog, form), {}, NEWT_ANCHOR_LEFT);
    grid.set(0, 1, std::move(table), {.top = 2}, NEWT_ANCHOR_LEFT);
    grid.set(0, 2,
             dialog.buttonRow({{Text("BUTTON_OK_ID"), zolui::kOkId},
                               {Text("BUTTON_CANCEL_ID"), zolui::kCancelId}}),
             {.top = 1});
    dialog.open(grid, Text("TITTLE_SCHEDULE_ID"));
    return form;
}

}  // namespace

namespace {

// Why one item of a schedule text is refused (the trace line), or null. Every item before a comma
// is a whole range; the last item is left to the library.
const char* ScheduleItemFault(std::string_view item, bool last) {
    if (!item.empty() && item.front() == '-')
        return "<Invalid schedule.";
    const std::size_t dash = item.find('-');
    if (dash != std::string_view::npos && item.find('-', dash + 1) != std::string_view::npos)
        return "<Invalid schedule.return FALSE.";
    if (last)
        return nullptr;
    if (item.empty())  // a comma where an item begins
        return "<Invalid schedule.";
    const bool endHour = dash != std::string_view::npos &&
                         item.find_first_of("0123456789", dash + 1) != std::string_view::npos;
    return endHour ? nullptr : "<Invalid schedule.return FALSE.";
}

}  // namespace

BOOL JudgeSch(const char* text) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] text=%s", text != nullptr ? text : "(null)");
    if (text == nullptr)
        return FALSE;
    std::string_view rest(text);
    for (;;) {
        const std::size_t comma = rest.find(',');
        const bool last = comma == std::string_view::npos;
        if (const char* fault = ScheduleItemFault(rest.substr(0, comma), last)) {
            ZOL_TRACE(TRACE_LEVEL_TRACE, "%s", fault);
            return FALSE;
        }
        if (last)
            break;
        rest.remove_prefix(comma + 1);
    }
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<return TRUE.");
    return TRUE;
}

Refusal ApplyScheduleEntries(const ScheduleEntries& entries, DestData& record) {
    if (entries.interval.empty())
        return {"ERR_RINTER_EMPTY", {}};
    if (entries.retryTime.empty())
        return {"ERR_RTIME_EMPTY", {}};
    const auto interval = checks::ParseDecimal(entries.interval);
    if (!interval || *interval < kMinRetryInterval || *interval > kMaxRetryInterval) {
        return {"ERR_RINTER_ID",
                {std::to_string(kMinRetryInterval), std::to_string(kMaxRetryInterval)}};
    }
    const auto retryTime = checks::ParseDecimal(entries.retryTime);
    if (!retryTime || *retryTime > kMaxRetryTime)
        return {"ERR_SCHE_RINTER_ID", {"0", std::to_string(kMaxRetryTime)}};
    record.RetryInterval = *interval;
    record.RetryTime = *retryTime;
    if (!JudgeSch(entries.hours.c_str()))
        return {"ERR_RETRYTIME_ID", {}};
    return {};
}

std::uint32_t ChooseHourMask(std::string_view typed, std::string_view previous,
                             std::uint32_t current,
                             const std::function<std::uint32_t(const std::string&)>& convert) {
    if (const std::uint32_t mask = convert(std::string(typed)); mask != 0)
        return mask;
    if (const std::uint32_t mask = convert(std::string(previous)); mask != 0)
        return mask;
    // Neither text names an hour (or the library cannot read them): clearing the field never
    // switches reporting off.
    return current;
}

BOOL SchduleSet(DestData* record, HMODULE dscopyLib, HMODULE rptsetLib, int status) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] dscopyLib=%p rptsetLib=%p status=%d", dscopyLib, rptsetLib,
              status);
    if (record == nullptr) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<[IN]Param error.return FALSE.");
        return FALSE;
    }
    char shown[kScheduleTextSize] = {};
    ScheduletoOutString(record->HourMask, shown, dscopyLib);
    const std::string previous = shown;

    zolui::Dialog dialog;
    const ScheduleForm form = OpenScheduleForm(dialog, *record, previous);
    auto ok = [&] {
        const ScheduleEntries entries{zolui::entryText(form.interval),
                                      zolui::entryText(form.retryTime),
                                      zolui::entryText(form.hours)};
        if (const Refusal refusal = ApplyScheduleEntries(entries, *record)) {
            ShowScheduleBox(RefusalText(refusal, Text));
            return zolui::Next::Stay;
        }
        record->HourMask = ChooseHourMask(entries.hours, previous, record->HourMask,
                                          [dscopyLib](const std::string& text) {
                                              std::uint32_t mask = 0;
                                              InStringtoSchedule(text.c_str(), &mask, dscopyLib);
                                              return mask;
                                          });
        return SaveSchedule(record, rptsetLib, status) ? zolui::Next::Close : zolui::Next::Stay;
    };
    const int closedBy = dialog.run({{zolui::kOkId, ok}});
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<return %s.", closedBy == zolui::kOkId ? "TRUE" : "FALSE");
    return closedBy == zolui::kOkId ? TRUE : FALSE;
}
