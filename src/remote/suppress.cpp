// The report suppression dialog: a check box that turns suppression on or off and the interval
// it holds reports back for, both kept by the remote report package's library.
#include "remote/suppress.h"

#include <string>

#include "frame/checks.h"
#include "frame/libraries.h"
#include "frame/msgfile.h"
#include "ui/toolkit.h"

namespace {

enum ControlId : int { kOkId = 1, kCancelId };

constexpr int kIntervalEntryWidth = 5;  // a non-scrolling entry of 5 columns takes 4 digits
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

int vntSuppressSet() {
    ZOL_TRACE(TRACE_LEVEL_TRACE, ">");
    if (pGetVntSuppressMode == nullptr || pSetVntSuppressMode == nullptr ||
        pGetVntSuppressInterval == nullptr || pSetVntSuppressInterval == nullptr) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<suppression functions are not bound.return -1.");
        return -1;
    }
    // The getters answer -1 on failure, which as an unsigned value is out of range too.
    const auto mode = static_cast<std::uint32_t>(pGetVntSuppressMode());
    if (mode > 1) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<getVntSuppressMode() return %u.return -1.", mode);
        return -1;
    }
    const auto interval = static_cast<std::uint32_t>(pGetVntSuppressInterval());
    if (interval > kMaxSuppressInterval) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<getVntSuppressInterval() return %u.return -1.", interval);
        return -1;
    }

    char checkValue = mode == 1 ? '*' : ' ';
    zolui::Window window;
    zolui::Form form;
    newtComponent check = form.add(zolui::checkbox(
        -1, -1, MessageText("CHECK_VNT_SUPPRESS_INTERVAL_ID"), checkValue, nullptr, &checkValue));
    newtComponent front = zolui::label(-1, -1, MessageText("LABEL_VNT_SUPPRESS_INTERVAL_FRONT_ID"));
    newtComponent entry = zolui::entry(-1, -1, std::to_string(interval), kIntervalEntryWidth,
                                       mode == 1 ? 0 : NEWT_FLAG_DISABLED);
    newtComponent rear = zolui::label(-1, -1, MessageText("LABEL_VNT_SUPPRESS_INTERVAL_REAR_ID"));
    form.add(front);
    form.add(entry);
    form.add(rear);
    newtComponent ok = form.add(zolui::button(-1, -1, MessageText("BUTTON_OK_ID")), kOkId);
    newtComponent cancel =
        form.add(zolui::button(-1, -1, MessageText("BUTTON_CANCEL_ID")), kCancelId);
    form.setFilter(entry, [entry](int ch, int cursor) {
        return EntryNumricFilter(entry, nullptr, ch, cursor);
    });
    SuppressCheckState state{&checkValue, entry};
    form.onActivate(check, [check, &state] { vntSuppressBtnCallBack(check, &state); });

    zolui::Grid intervalRow(3, 1);
    intervalRow.set(0, 0, front, {.right = 1});
    intervalRow.set(1, 0, entry, {.right = 1});
    intervalRow.set(2, 0, rear);
    zolui::Grid buttonRow(2, 1);
    buttonRow.set(0, 0, ok);
    buttonRow.set(1, 0, cancel, {.left = kButtonGap});
    zolui::Grid grid(1, 3);
    grid.set(0, 0, check, {.left = 1}, NEWT_ANCHOR_LEFT);
    grid.set(0, 1, std::move(intervalRow), {.top = 1}, NEWT_ANCHOR_LEFT);
    grid.set(0, 2, std::move(buttonRow), {.top = 1});
    window.openWrapped(grid, MessageText("TITLE_VNT_SUPPRESS_ID"));

    int result = 0;
    for (;;) {
        const zolui::RunResult run = form.run();
        if (run.reason == zolui::RunResult::Reason::Error || run.isComponent(kCancelId))
            break;
        if (!run.isComponent(kOkId))
            continue;
        if (checkValue == ' ') {
            // Off: the interval is left as stored, whatever the disabled entry holds.
            if (pSetVntSuppressMode(0) == -1) {
                ZOL_TRACE(TRACE_LEVEL_ERROR, "setVntSuppressMode(0) failed.");
                result = -1;
            }
            break;
        }
        const auto minutes = ParseSuppressInterval(zolui::entryText(entry));
        if (!minutes) {
            msgWindowEx("Error", "ok",
                        CPGetText("MSG_VNT_SUPPRESS_INTERVAL_ERR_ID", ReadString, ZOL_RcFileBuf));
            continue;
        }
        // Two separate settings: when only the interval cannot be written, suppression is on
        // with the interval stored before. The first failure is the result.
        if (pSetVntSuppressMode(1) == -1) {
            ZOL_TRACE(TRACE_LEVEL_ERROR, "setVntSuppressMode(1) failed.");
            result = -1;
        }
        if (pSetVntSuppressInterval(static_cast<int>(*minutes)) == -1) {
            ZOL_TRACE(TRACE_LEVEL_ERROR, "setVntSuppressInterval(%u) failed.", *minutes);
            result = -1;
        }
        break;
    }
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<return %d.", result);
    return result;
}
