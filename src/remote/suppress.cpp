// The report suppression dialog: a check box that turns suppression on or off and the interval
// it holds reports back for, both kept by the remote report package's library.
#include "remote/suppress.h"

#include <string>

#include "frame/checks.h"
#include "frame/libraries.h"
#include "frame/msgfile.h"
#include "ui/dialog.h"
#include "ui/toolkit.h"

namespace {

// The interval entry: 5 columns that take 4 digits (see Dialog::numberEntry), every interval
// there is.
constexpr int kIntervalEntryWidth = 5;
constexpr int kButtonGap = 5;

}  // namespace

std::optional<std::uint32_t> ParseSuppressInterval(std::string_view text) {
    const auto minutes = checks::ParseDecimal(text);
    if (!minutes || *minutes > kMaxSuppressInterval)
        return std::nullopt;
    return minutes;
}

void vntSuppressBtnCallBack(newtComponent /*checkbox*/, void* data) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] data=%p", data);
    const auto* state = static_cast<const SuppressCheckState*>(data);
    if (state == nullptr || state->checkValue == nullptr || state->intervalEntry == nullptr) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<[IN]param error.");
        return;
    }
    const bool checked = *state->checkValue != ' ';
    newtEntrySetFlags(state->intervalEntry, NEWT_FLAG_DISABLED,
                      checked ? NEWT_FLAGS_RESET : NEWT_FLAGS_SET);
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<interval entry %s.", checked ? "enabled" : "disabled");
}

std::optional<int> SaveSuppression(const SuppressState& state, const SuppressSetters& set) {
    if (!state.on) {
        // Off: the interval is left as stored, whatever the disabled entry holds.
        if (set.mode(0) == -1) {
            ZOL_TRACE(TRACE_LEVEL_ERROR, "setVntSuppressMode(0) failed.");
            return -1;
        }
        return 0;
    }
    const auto minutes = ParseSuppressInterval(state.intervalText);
    if (!minutes)
        return std::nullopt;
    // Two separate settings: when only the interval cannot be written, suppression is on with the
    // interval stored before.
    int result = 0;
    if (set.mode(1) == -1) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "setVntSuppressMode(1) failed.");
        result = -1;
    }
    if (set.interval(static_cast<int>(*minutes)) == -1) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "setVntSuppressInterval(%u) failed.", *minutes);
        result = -1;
    }
    return result;
}

namespace {

// The stored mode and interval, or nothing (traced) when the package is not bound or either is
// out of range: the dialog then does not appear.
bool ReadSuppression(std::uint32_t& mode, std::uint32_t& interval) {
    if (pGetVntSuppressMode == nullptr || pSetVntSuppressMode == nullptr ||
        pGetVntSuppressInterval == nullptr || pSetVntSuppressInterval == nullptr) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<suppression functions are not bound.return -1.");
        return false;
    }
    // The getters answer -1 on failure, which as an unsigned value is out of range too.
    mode = static_cast<std::uint32_t>(pGetVntSuppressMode());
    if (mode > 1) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<getVntSuppressMode() return %u.return -1.", mode);
        return false;
    }
    interval = static_cast<std::uint32_t>(pGetVntSuppressInterval());
    if (interval > kMaxSuppressInterval) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<getVntSuppressInterval() return %u.return -1.", interval);
        return false;
    }
    return true;
}

}  // namespace

int vntSuppressSet() {
    ZOL_TRACE(TRACE_LEVEL_TRACE, ">");
    std::uint32_t mode = 0;
    std::uint32_t interval = 0;
    if (!ReadSuppression(mode, interval))
        return -1;

    // Build: the check box, the interval between its two labels, OK and Cancel.
    char checkValue = mode == 1 ? '*' : ' ';
    zolui::Dialog dialog;
    newtComponent check = dialog.add(zolui::checkbox(
        -1, -1, MessageText("CHECK_VNT_SUPPRESS_INTERVAL_ID"), checkValue, nullptr, &checkValue));
    zolui::Grid intervalRow(3, 1);
    intervalRow.set(
        0, 0, dialog.add(zolui::label(-1, -1, MessageText("LABEL_VNT_SUPPRESS_INTERVAL_FRONT_ID"))),
        {.right = 1});
    newtComponent entry = dialog.numberEntry(std::to_string(interval), kIntervalEntryWidth,
                                             EntryNumricFilter, mode == 1 ? 0 : NEWT_FLAG_DISABLED);
    intervalRow.set(1, 0, entry, {.right = 1});
    intervalRow.set(
        2, 0, dialog.add(zolui::label(-1, -1, MessageText("LABEL_VNT_SUPPRESS_INTERVAL_REAR_ID"))));
    SuppressCheckState checkState{&checkValue, entry};
    dialog.form().onActivate(check,
                             [check, &checkState] { vntSuppressBtnCallBack(check, &checkState); });
    zolui::Grid grid(1, 3);
    grid.set(0, 0, check, {.left = 1}, NEWT_ANCHOR_LEFT);
    grid.set(0, 1, std::move(intervalRow), {.top = 1}, NEWT_ANCHOR_LEFT);
    grid.set(0, 2,
             dialog.buttonRow({{MessageText("BUTTON_OK_ID"), zolui::kOkId},
                               {MessageText("BUTTON_CANCEL_ID"), zolui::kCancelId}},
                              kButtonGap),
             {.top = 1});
    dialog.open(grid, MessageText("TITLE_VNT_SUPPRESS_ID"));

    // Handlers and save: Cancel and Ctrl-O leave without writing; a save failure is only traced
    // and returned, never shown.
    int result = 0;
    dialog.run({{zolui::kOkId, [&] {
                     const auto saved = SaveSuppression(
                         {checkValue != ' ', zolui::entryText(entry)},
                         {[](int m) { return pSetVntSuppressMode(m); },
                          [](int minutes) { return pSetVntSuppressInterval(minutes); }});
                     if (!saved) {
                         msgWindowEx("Error", "ok",
                                     CPGetText("MSG_VNT_SUPPRESS_INTERVAL_ERR_ID", ReadString,
                                               ZOL_RcFileBuf));
                         return zolui::Next::Stay;
                     }
                     result = *saved;
                     return zolui::Next::Close;
                 }}});
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<return %d.", result);
    return result;
}
