// The remote report service's base screen (the service's switch, its delivery method and the
// suppression dialog) and the internet-mail delivery's base screen (mail server and sender).
#include "baseset/vantrel_base.h"

#include <newt.h>

#include <array>
#include <cstdio>
#include <cstring>
#include <string>

#include "baseset/baseset.h"
#include "baseset/popsmtp.h"
#include "frame/checks.h"
#include "frame/libraries.h"
#include "frame/msgfile.h"
#include "frame/rptset_calls.h"
#include "frame/screens.h"
#include "ui/dialog.h"
#include "ui/toolkit.h"

// ---- What OK does ----

const char* CheckVantrelBase(const VantrelBaseState& state) {
    return state.enabled && state.chosen < 0 ? "WARN_INVALID_ID" : nullptr;
}

SwitchResult ApplyServiceSwitch(const VantrelBaseState& state, const ServiceSwitchSteps& steps) {
    if (const char* refusal = CheckVantrelBase(state))
        return {SwitchOutcome::Refused, refusal};
    if (state.enabled) {
        if (!steps.keyFloppyRead())
            return {SwitchOutcome::Refused, "IMAIL_INSERT_FD_ID"};
        if (steps.openMethod(state.chosen) != 1)
            return {SwitchOutcome::NotSaved};
    }
    // No method chosen (allowed only while switching off) keeps the stored one.
    return {steps.store(state.chosen, state.enabled) ? SwitchOutcome::Stored
                                                     : SwitchOutcome::StoreFailed};
}

std::optional<mailinput::Refusal> ApplyMailBase(const MailBaseState& state,
                                                const mailinput::ServerCheck& checkServer,
                                                AMBIBaseData& record) {
    AMBIBaseData changed = record;
    if (auto refusal = mailinput::CheckMailBaseInput(state.input, checkServer, &changed))
        return refusal;
    if (state.dateFormat >= 0)
        changed.DateFormat = static_cast<uint32_t>(state.dateFormat);
    changed.PopBeforeSMTP = state.pop ? 1 : 0;
    changed.SMTPAuth = state.auth ? 1 : 0;
    record = changed;
    return std::nullopt;
}

namespace {

// ---- Delivery methods ----

struct DeliveryMethod {
    int value;                 // VANTREL_*, also its place in the table
    const char* labelId;       // its radio button
    int (*settings)(HMODULE);  // its settings screen: 1 saved, 0 left, -1 failed
};

constexpr std::array<DeliveryMethod, 4> kMethods = {{
    {VANTREL_INTERNETMAIL, "VNT_BASE_IMAIL_ID", IMailBaseSetting},
    {VANTREL_DIALUP, "VNT_BASE_DIALUP_ID", VantrelDialUpSetting},
    {VANTREL_TRANSTOMANAGER, "VNT_BASE_MANAG_ID", ViaFWManagerSet},
    {VANTREL_HTTPS, "VNT_BASE_HTTPS_ID", VantrelHTTPSSetting},
}};
static_assert(std::size(kVantrelRecordNames) == kMethods.size());

bool IsMethod(int value) {
    return value >= 0 && value < static_cast<int>(kMethods.size()) &&
           kMethods[static_cast<std::size_t>(value)].value == value;
}

// What reading a method's base-setting record gave.
enum class RecordRead { Found, Absent, Unbound };

RecordRead ReadRecord(HMODULE lib, int method, BaseData& record) {
    std::memset(&record, 0, sizeof record);
    std::snprintf(record.MethodName, sizeof record.MethodName, "%s",
                  kVantrelRecordNames[static_cast<std::size_t>(method)]);
    const int rc = InitBaseSetting(lib, &record);
    if (rc == 0)
        return RecordRead::Found;
    // A record that was never written reads as a failure of the library: the method is off.
    ZOL_TRACE(TRACE_LEVEL_INFO, "InitBaseSetting(%s) return %d.", record.MethodName, rc);
    return rc == -1 ? RecordRead::Unbound : RecordRead::Absent;
}

void WarningBox(const char* textId) {
    const std::string title = MessageText("TITTLE_WARNING_ID");
    msgWindow(title.c_str(), " ok ", CPGetText(textId, ReadString, ZOL_RcFileBuf));
}

// The stored method and switch. A method the library cannot read (a stored number outside the
// methods) is said in the error box and shown as none chosen, so that one can be chosen; false
// when the method's record cannot be read at all.
bool ReadServiceSwitch(HMODULE lib, int& storedMethod, bool& enabled) {
    storedMethod = -1;
    enabled = false;
    if (GetVntMethod(lib, &storedMethod) != 0) {
        ShowFuncCallErr("GetVntMethod");
        ZOL_TRACE(TRACE_LEVEL_ERROR, "GetVntMethod failed.");
        storedMethod = -1;
    }
    if (!IsMethod(storedMethod))
        return true;
    BaseData record;
    const RecordRead read = ReadRecord(lib, storedMethod, record);
    if (read == RecordRead::Unbound)
        return false;
    enabled = read == RecordRead::Found && record.Enable == 1;
    return true;
}

enum BaseControlId : int { kSuppressId = 1 };

// OK of the service's base screen: switching off stores at once; switching on opens the chosen
// method's screen and stores the method and the switch once that screen has stored its settings.
zolui::Next SaveServiceSwitch(HMODULE lib, const VantrelBaseState& state) {
    const SwitchResult result = ApplyServiceSwitch(
        state,
        {[lib] { return CheckInstVantrelFD(lib) != FALSE; },
         [lib](int method) { return kMethods[static_cast<std::size_t>(method)].settings(lib); },
         [lib](int method, bool on) { return SetVntReport(lib, method, on) == 0; }});
    switch (result.outcome) {
        case SwitchOutcome::Refused: {
            // Wrapped: the key floppy's message is longer than a line.
            const std::string title = MessageText("TITTLE_WARNING_ID");
            const std::string text = MessageText(result.messageId);
            msgWindowEx(title.c_str(), " ok ", text.c_str());
            return zolui::Next::Stay;
        }
        case SwitchOutcome::NotSaved:
            ZOL_TRACE(TRACE_LEVEL_INFO, "method %d not set up: nothing stored.", state.chosen);
            return zolui::Next::Stay;
        case SwitchOutcome::StoreFailed:
            ShowFuncCallErr("SetVntReport");
            return zolui::Next::Stay;
        case SwitchOutcome::Stored:
            break;
    }
    ZOL_TRACE(TRACE_LEVEL_INFO, "method %d, service %s.", state.chosen,
              state.enabled ? "on" : "off");
    return zolui::Next::Close;
}

// The switch, the methods (chosen only while it is on), Suppression, OK and Cancel.
zolui::Grid BuildServiceBase(zolui::Dialog& dialog, char& enableValue, int storedMethod,
                             zolui::RadioGroup& methods) {
    newtComponent enable = dialog.add(zolui::checkbox(-1, -1, MessageText("VNT_SUB_ENABLE_ID"),
                                                      enableValue, nullptr, &enableValue));
    newtComponent chooseLabel = dialog.add(zolui::label(-1, -1, MessageText("VNT_BASE_CHOUSE_ID")));
    zolui::Grid methodColumn(1, static_cast<int>(kMethods.size()));
    for (const DeliveryMethod& method : kMethods) {
        newtComponent radio =
            dialog.add(methods.add(MessageText(method.labelId), method.value == storedMethod));
        methodColumn.set(0, method.value, radio, {.left = 3}, NEWT_ANCHOR_LEFT);
    }
    dialog.enableWhileChecked(enable, &enableValue, methods.buttons(),
                              zolui::RangeKind::Checkboxes);
    zolui::Grid buttons(2, 1);
    buttons.set(
        0, 0,
        dialog.add(zolui::button(-1, -1, MessageText("VNT_BASE_BUTTON_SUPPRESS_ID")), kSuppressId),
        {.right = 3});
    buttons.set(1, 0,
                dialog.buttonRow({{MessageText("BUTTON_OK_ID"), zolui::kOkId},
                                  {MessageText("BUTTON_CANCEL_ID"), zolui::kCancelId}},
                                 1));
    zolui::Grid grid(1, 4);
    grid.set(0, 0, enable, {}, NEWT_ANCHOR_LEFT);
    grid.set(0, 1, chooseLabel, {.top = 1}, NEWT_ANCHOR_LEFT);
    grid.set(0, 2, std::move(methodColumn), {}, NEWT_ANCHOR_LEFT);
    grid.set(0, 3, std::move(buttons), {.top = 1});
    return grid;
}

// ---- Internet-mail base screen ----

enum MailControlId : int { kLoginId = 1 };

constexpr int kMailTextWidth = 30;
constexpr int kMailPortWidth = 7;

bool IsChecked(char value) {
    return value != ' ';
}

// The entries and switches the internet-mail base screen reads back.
struct MailFields {
    newtComponent server, port, sender;
    zolui::RadioGroup dates;  // local time, universal time (the DateFormat values)
    char pop = ' ';
    char auth = ' ';
};

MailBaseState ReadMailFields(const MailFields& f) {
    return {{zolui::entryText(f.server), zolui::entryText(f.port), zolui::entryText(f.sender)},
            f.dates.currentIndex(),
            IsChecked(f.pop),
            IsChecked(f.auth)};
}

newtComponent Label(zolui::Dialog& dialog, const char* id) {
    return dialog.add(zolui::label(-1, -1, MessageText(id)));
}

// Server, port, sender and date format, one labelled row each.
zolui::Grid BuildMailFields(zolui::Dialog& dialog, const AMBIBaseData& stored, MailFields& f) {
    zolui::Grid fields(2, 4);
    auto row = [&](int r, const char* labelId) {
        fields.set(0, r, Label(dialog, labelId), {.right = 1}, NEWT_ANCHOR_LEFT);
    };
    row(0, "IMAIL_BASE_SMTP_ID");
    f.server =
        dialog.add(zolui::entry(-1, -1, stored.SMTPServer, kMailTextWidth, NEWT_FLAG_SCROLL));
    fields.set(1, 0, f.server, {}, NEWT_ANCHOR_LEFT);
    row(1, "IMAIL_BASE_PORT_ID");
    f.port = dialog.numberEntry(std::to_string(stored.SMTPPort), kMailPortWidth);
    fields.set(1, 1, f.port, {}, NEWT_ANCHOR_LEFT);
    row(2, "IMAIL_BASE_ADDS_ID");
    f.sender = dialog.add(zolui::entry(-1, -1, stored.MailFrom, kMailTextWidth, NEWT_FLAG_SCROLL));
    fields.set(1, 2, f.sender, {}, NEWT_ANCHOR_LEFT);
    row(3, "IMAIL_BASE_DATE_ID");
    zolui::Grid dates(2, 1);
    int column = 0;
    for (const char* id : {"IMAIL_BASE_DATE_LOCAL_ID", "IMAIL_BASE_DATE_GMT_ID"}) {
        const bool isStored = stored.DateFormat == static_cast<uint32_t>(column);
        dates.set(column, 0, dialog.add(f.dates.add(MessageText(id), isStored)),
                  {.right = column == 0 ? 2 : 0});
        ++column;
    }
    fields.set(1, 3, std::move(dates), {}, NEWT_ANCHOR_LEFT);
    return fields;
}

// The two login switches and the button that opens their dialog.
zolui::Grid BuildMailOptions(zolui::Dialog& dialog, const AMBIBaseData& stored, MailFields& f) {
    f.pop = stored.PopBeforeSMTP == 1 ? '*' : ' ';
    f.auth = stored.SMTPAuth == 1 ? '*' : ' ';
    zolui::Grid options(1, 4);
    options.set(0, 0, Label(dialog, "IMAIL_BASE_OPT_ID"), {}, NEWT_ANCHOR_LEFT);
    options.set(0, 1,
                dialog.add(zolui::checkbox(-1, -1, MessageText("IMAIL_BASE_POP_ID"), f.pop, nullptr,
                                           &f.pop)),
                {.left = 2}, NEWT_ANCHOR_LEFT);
    options.set(0, 2,
                dialog.add(zolui::checkbox(-1, -1, MessageText("IMAIL_BASE_SMTPAUTH_ID"), f.auth,
                                           nullptr, &f.auth)),
                {.left = 2}, NEWT_ANCHOR_LEFT);
    options.set(
        0, 3, dialog.add(zolui::compactButton(-1, -1, MessageText("BUTTON_POP_SET_ID")), kLoginId),
        {.left = 1}, NEWT_ANCHOR_LEFT);
    return options;
}

// Login settings: the dialog of the checked halves, or a warning when neither is checked.
void OpenLoginDialog(HMODULE lib, const MailFields& f) {
    const bool pop = IsChecked(f.pop);
    const bool auth = IsChecked(f.auth);
    if (!pop && !auth) {
        WarningBox("IMAIL_BASE_LOGIN_ERR1");
        return;
    }
    PopAndSMTPSet(lib, pop ? 1 : 0, auth ? 1 : 0);
}

void ShowMailRefusal(const mailinput::Refusal& refusal) {
    if (refusal.box == mailinput::Box::MailAddress) {
        const std::string title = MessageText("IMAIL_DEST_TITLE_ID");
        msgWindow(title.c_str(), " ok ", CPGetText(refusal.messageId, ReadString, ZOL_RcFileBuf));
        return;
    }
    WarningBox(refusal.messageId);
}

// OK of the internet-mail base screen: the checks, then the record written whole.
zolui::Next SaveMailBase(HMODULE lib, const MailBaseState& state) {
    AMBIBaseData record = g_AMBIBaseData;
    const auto refusal = ApplyMailBase(
        state,
        [lib](const std::string& name) {
            char address[REG_TEXT_SIZE] = {};
            const int rc = CheckPortAndIP(lib, 0, name.c_str(), address, 0);
            ZOL_TRACE(TRACE_LEVEL_INFO, "CheckPortAndIP() return %d.", rc);
            return rc;
        },
        record);
    if (refusal) {
        ShowMailRefusal(*refusal);
        return zolui::Next::Stay;
    }
    const AMBIBaseData stored = g_AMBIBaseData;
    g_AMBIBaseData = record;
    if (SetIMBaseSetting(lib) != 1) {
        g_AMBIBaseData = stored;
        ShowFuncCallErr("SetAMBIBaseSetting");
        return zolui::Next::Stay;
    }
    return zolui::Next::Close;
}

}  // namespace

// The check box switches the service on, the radio buttons choose its delivery method (only while
// it is on), and the Suppression button opens the suppression dialog. OK switching the service on
// opens the chosen method's settings screen first (see ApplyServiceSwitch).
int VantrelBaseSetting(HMODULE lib) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] lib=%p", lib);
    int storedMethod = -1;
    bool enabled = false;
    if (!ReadServiceSwitch(lib, storedMethod, enabled)) {
        // The base-setting menu reports the failed screen.
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<InitBaseSetting failed.return -1.");
        return -1;
    }

    // Build.
    char enableValue = enabled ? '*' : ' ';
    zolui::Dialog dialog;
    zolui::RadioGroup methods;
    dialog.open(BuildServiceBase(dialog, enableValue, storedMethod, methods),
                MessageText("BASE_REPORT_VANTREL_ID"));

    // Handlers and save. The suppression dialog's own failures show nothing: its rules say so.
    dialog.run({
        {kSuppressId,
         [] {
             if (const int rc = vntSuppressSet(); rc != 0)
                 ZOL_TRACE(TRACE_LEVEL_ERROR, "vntSuppressSet() return %d.", rc);
             return zolui::Next::Stay;
         }},
        {zolui::kOkId,
         [&] {
             const int chosen = methods.currentIndex();
             return SaveServiceSwitch(
                 lib, {IsChecked(enableValue),
                       chosen >= 0 ? kMethods[static_cast<std::size_t>(chosen)].value : -1});
         }},
    });
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<return 0.");
    return 0;
}

int IMailBaseSetting(HMODULE lib) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] lib=%p", lib);
    if (InitIMBaseRegPath(lib) != 1) {
        ShowFuncCallErr("AMAMGetBaseRegPath");
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<InitIMBaseRegPath failed.return -1.");
        return -1;
    }
    if (InitIMBaseSetting(lib) != 1) {
        ShowFuncCallErr("GetAMBIBaseSetting");
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<InitIMBaseSetting failed.return -1.");
        return -1;
    }

    // Build.
    zolui::Dialog dialog;
    MailFields f{};
    zolui::Grid fields = BuildMailFields(dialog, g_AMBIBaseData, f);
    zolui::Grid options = BuildMailOptions(dialog, g_AMBIBaseData, f);
    zolui::Grid grid(1, 3);
    grid.set(0, 0, std::move(fields), {}, NEWT_ANCHOR_LEFT);
    grid.set(0, 1, std::move(options), {.top = 1}, NEWT_ANCHOR_LEFT);
    grid.set(0, 2,
             dialog.buttonRow({{MessageText("BUTTON_OK_ID"), zolui::kOkId},
                               {MessageText("BUTTON_CANCEL_ID"), zolui::kCancelId}},
                              4),
             {.top = 1});
    dialog.open(grid, MessageText("VNT_BASE_IMAIL_ID"));

    // Handlers and save.
    const int closedBy = dialog.run({
        {kLoginId,
         [&] {
             OpenLoginDialog(lib, f);
             return zolui::Next::Stay;
         }},
        {zolui::kOkId, [&] { return SaveMailBase(lib, ReadMailFields(f)); }},
    });
    const int saved = closedBy == zolui::kOkId ? 1 : 0;
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<return %d.", saved);
    return saved;
}
