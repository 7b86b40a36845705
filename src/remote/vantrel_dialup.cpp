// The remote report service's dial-up method screen: the service centre's primary and secondary
// numbers, the user ID, the modem's serial line, tone or pulse dialling and the redial interval,
// stored together through the report-settings library; and the test reports through the dial-up
// delivery library.
#include <string>

#include "frame/delivery_calls.h"
#include "frame/libraries.h"
#include "frame/msgfile.h"
#include "frame/rptset_dial_calls.h"
#include "frame/screens.h"
#include "remote/vantrel_method.h"
#include "ui/dialog.h"
#include "ui/toolkit.h"

namespace {

constexpr const char* kDialLibrary = "dialsvc.dll";
constexpr const char* kDialEntry = "AM_Dll_ALV_Vnt";

constexpr int kPhoneWidth = 31;  // a full number and the cursor
constexpr int kUserWidth = 33;
constexpr int kDeviceWidth = 20;
constexpr int kRedialWidth = 4;

enum ControlId : int { kTestPrimaryId = 1, kTestSecondaryId };

std::string Text(const char* id) {
    return MessageText(id);
}

struct DialFields {
    newtComponent primary = nullptr, secondary = nullptr, user = nullptr, device = nullptr,
                  redial = nullptr;
    zolui::RadioGroup mode;  // tone, pulse
};

DialUpEntries ReadDialFields(const DialFields& f) {
    return {zolui::entryText(f.primary), zolui::entryText(f.secondary), zolui::entryText(f.user),
            zolui::entryText(f.device),  zolui::entryText(f.redial),    f.mode.currentIndex()};
}

// One labelled row per field, in focus order.
zolui::Grid BuildDialFields(zolui::Dialog& dialog, const VntDialData& stored, DialFields& f) {
    zolui::Grid fields(2, 6);
    int row = 0;
    auto put = [&](const char* labelId, newtComponent field) {
        fields.set(0, row, dialog.add(zolui::label(-1, -1, Text(labelId))), {.right = 1},
                   NEWT_ANCHOR_LEFT);
        fields.set(1, row++, field, {}, NEWT_ANCHOR_LEFT);
    };
    f.primary = dialog.numberEntry(stored.PhoneNo1, kPhoneWidth, EntryNumFilter, NEWT_FLAG_SCROLL);
    put("DIAL_FIRST_ID", f.primary);
    f.secondary =
        dialog.numberEntry(stored.PhoneNo2, kPhoneWidth, EntryNumFilter, NEWT_FLAG_SCROLL);
    put("DIAL_SECOND_ID", f.secondary);
    f.user = dialog.add(zolui::entry(-1, -1, stored.UserID, kUserWidth, NEWT_FLAG_SCROLL));
    put("DIAL_UP_USER_ID", f.user);
    f.device = dialog.add(zolui::entry(-1, -1, stored.Device, kDeviceWidth, NEWT_FLAG_SCROLL));
    put("DIAL_UP_PORT_ID", f.device);
    zolui::Grid modes(2, 1);
    const bool pulse = stored.DialMode == VNT_DIAL_MODE_PULSE;
    modes.set(0, 0, dialog.add(f.mode.add(Text("DIAL_UP_MODE_T"), !pulse)), {.right = 2});
    modes.set(1, 0, dialog.add(f.mode.add(Text("DIAL_UP_MODE_P"), pulse)));
    fields.set(0, row, dialog.add(zolui::label(-1, -1, Text("DIAL_UP_MODE"))), {.right = 1},
               NEWT_ANCHOR_LEFT);
    fields.set(1, row++, std::move(modes), {}, NEWT_ANCHOR_LEFT);
    f.redial = dialog.numberEntry(std::to_string(stored.RedialInterval), kRedialWidth);
    put("DIAL_UP_INTVAL", f.redial);
    return fields;
}

zolui::Grid BuildDialScreen(zolui::Dialog& dialog, const VntDialData& stored, DialFields& f) {
    // Built in focus order: the comment, the fields, the tests, OK and Cancel.
    newtComponent comment = dialog.add(zolui::label(-1, -1, Text("DIAL_UP_REPORT_COMMENT")));
    zolui::Grid fields = BuildDialFields(dialog, stored, f);
    zolui::Grid tests(2, 1);
    tests.set(0, 0, dialog.add(zolui::compactButton(-1, -1, Text("DIAL_TEST_1")), kTestPrimaryId),
              {.right = 2});
    tests.set(1, 0,
              dialog.add(zolui::compactButton(-1, -1, Text("DIAL_TEST_2")), kTestSecondaryId));
    zolui::Grid grid(1, 4);
    grid.set(0, 0, comment, {}, NEWT_ANCHOR_LEFT);
    grid.set(0, 1, std::move(fields), {.top = 1}, NEWT_ANCHOR_LEFT);
    grid.set(0, 2, std::move(tests), {.top = 1}, NEWT_ANCHOR_LEFT);
    grid.set(0, 3,
             dialog.buttonRow({{Text("BUTTON_OK_ID"), zolui::kOkId},
                               {Text("BUTTON_CANCEL_ID"), zolui::kCancelId}}),
             {.top = 1});
    return grid;
}

void WarningBox(const char* textId) {
    const std::string title = Text("TITTLE_WARNING_ID");
    const std::string text = Text(textId);
    msgWindow(title.c_str(), " ok ", text.c_str());
}

// OK: the checks, then the record written whole.
zolui::Next SaveDialUp(HMODULE lib, const DialUpEntries& entries, const VntDialData& stored) {
    VntDialData record = stored;
    if (const char* refusal = ApplyDialUpEntries(entries, record)) {
        WarningBox(refusal);
        return zolui::Next::Stay;
    }
    if (!PutDialUpParam(lib, record)) {
        ShowFuncCallErr("AMSetDialUpSetting");
        return zolui::Next::Stay;
    }
    return zolui::Next::Close;
}

// A test report to one of the stored numbers, through the dial-up delivery library.
zolui::Next TestDialUp(const char* kind) {
    ShowTestReport(CallDeliveryEntry(kDialLibrary, kDialEntry, kind), kDialLibrary, kDialEntry);
    return zolui::Next::Stay;
}

}  // namespace

int VantrelDialUpSetting(HMODULE rptsetLib) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] rptsetLib=%p", rptsetLib);
    VntDialData stored{};
    if (!GetDialUpParam(rptsetLib, &stored)) {
        ShowFuncCallErr("AMGetDialUpSetting");
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<AMGetDialUpSetting failed.return -1.");
        return -1;
    }

    // Build.
    zolui::Dialog dialog;
    DialFields f;
    dialog.open(BuildDialScreen(dialog, stored, f), Text("DIAL_DEST_SET_TITLE"));

    // Handlers and save.
    const int closedBy = dialog.run({
        {kTestPrimaryId, [] { return TestDialUp(kTestPrimaryKind); }},
        {kTestSecondaryId, [] { return TestDialUp(kTestSecondaryKind); }},
        {zolui::kOkId, [&] { return SaveDialUp(rptsetLib, ReadDialFields(f), stored); }},
    });
    const int saved = closedBy == zolui::kOkId ? 1 : 0;
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<return %d.", saved);
    return saved;
}
