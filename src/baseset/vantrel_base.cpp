// The remote report service's base screen (the service's switch, its delivery method and the
// suppression dialog) and the internet-mail delivery's base screen (mail server and sender).
#include "baseset/vantrel_base.h"

#include <newt.h>

#include <array>
#include <cstdio>
#include <cstring>
#include <string>

#include "baseset/baseset.h"
#include "baseset/mailserver_input.h"
#include "baseset/popsmtp.h"
#include "frame/check_boxes.h"
#include "frame/checks.h"
#include "frame/libraries.h"
#include "frame/msgfile.h"
#include "frame/screens.h"
#include "records.h"
#include "ui/toolkit.h"

namespace {

// ---- Delivery methods ----

struct DeliveryMethod {
    int value;                   // VANTREL_*
    const char* labelId;         // its radio button
    int (*settings)(HINSTANCE);  // its settings screen; null while this version has none
};

constexpr std::array<DeliveryMethod, 4> kMethods = {{
    {VANTREL_INTERNETMAIL, "VNT_BASE_IMAIL_ID", IMailBaseSetting},
    {VANTREL_DIALUP, "VNT_BASE_DIALUP_ID", nullptr},
    {VANTREL_TRANSTOMANAGER, "VNT_BASE_MANAG_ID", ViaFWManagerSet},
    {VANTREL_HTTPS, "VNT_BASE_HTTPS_ID", nullptr},
}};
static_assert(std::size(kVantrelRecordNames) == kMethods.size());

bool isMethod(int value) {
    return value >= 0 && value < static_cast<int>(kMethods.size()) &&
           kMethods[static_cast<std::size_t>(value)].value == value;
}

// What reading a method's base-setting record gave.
enum class RecordRead { Found, Absent, Unbound };

RecordRead readRecord(HINSTANCE lib, int method, BaseData& record) {
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

// Keeps CheckboxStruct pointing at this screen's radio buttons for the screen's life only.
class RangeRecordGuard {
  public:
    RangeRecordGuard(newtComponent* components, int count, char* result) {
        CheckboxStruct = {components, 0, count - 1, result};
    }
    ~RangeRecordGuard() { CheckboxStruct = {nullptr, 0, -1, nullptr}; }
    RangeRecordGuard(const RangeRecordGuard&) = delete;
    RangeRecordGuard& operator=(const RangeRecordGuard&) = delete;
};

void warningBox(const char* textId) {
    const std::string title = MessageText("TITTLE_WARNING_ID");
    msgWindow(title.c_str(), " ok ", CPGetText(textId, ReadString, ZOL_RcFileBuf));
}

// Stores the method (when one is chosen and it changed) and the service's switch in one
// transaction: only the chosen method's record is enabled, and only while the service is on.
// The name of the library call that failed, or null.
const char* storeMethod(HINSTANCE lib, int storedMethod, int chosen, bool enabled) {
    if (ZolRegBeginTransaction() != ERROR_SUCCESS)
        return "ZolRegBeginTransaction";
    const char* failed = nullptr;
    if (chosen >= 0 && chosen != storedMethod && SetVntMethod(lib, chosen) != 0)
        failed = "SetVntMethod";
    for (const DeliveryMethod& method : kMethods) {
        if (failed != nullptr)
            break;
        BaseData record;
        const RecordRead read = readRecord(lib, method.value, record);
        if (read == RecordRead::Unbound) {
            failed = "InitBaseSetting";
            break;
        }
        const int32_t want = enabled && method.value == chosen ? 1 : 0;
        // An absent record already means off; it is written only to switch a method on.
        if ((read == RecordRead::Absent && want == 0) ||
            (read == RecordRead::Found && record.Enable == want))
            continue;
        record.Enable = want;
        if (PutBaseSetting(lib, &record) != 1)
            failed = "PutBaseSetting";
    }
    if (failed != nullptr) {
        ZolRegRollbackTransaction();
        return failed;
    }
    return ZolRegCommitTransaction() == ERROR_SUCCESS ? nullptr : "ZolRegCommitTransaction";
}

// Opens the chosen method's own settings screen, or says that this version has none yet.
void openMethodSettings(HINSTANCE lib, int chosen) {
    const DeliveryMethod& method = kMethods[static_cast<std::size_t>(chosen)];
    if (method.settings != nullptr) {
        method.settings(lib);
        return;
    }
    const std::string title = MessageText(method.labelId);
    msgWindow(title.c_str(), " ok ", CPGetText("SCREEN_NOT_BUILT_ID", ReadString, ZOL_RcFileBuf));
}

enum BaseControlId : int { kBaseOkId = 1, kBaseCancelId, kSuppressId };

// Ctrl-O closes a screen as its Cancel button does, as the help line says.
constexpr int kCloseKey = 15;

// ---- Internet-mail base screen ----

enum MailControlId : int { kMailOkId = 1, kMailCancelId, kLoginId };

constexpr int kMailTextWidth = 30;
constexpr int kMailPortWidth = 7;
constexpr uint32_t kDateLocal = 0;
constexpr uint32_t kDateUniversal = 1;

bool isChecked(char value) {
    return value != ' ';
}

}  // namespace

// The check box switches the service on, the radio buttons choose its delivery method (only while
// it is on), and the Suppression button opens the suppression dialog. OK stores the method and
// the switch together and, while the service is on, opens the chosen method's settings screen.
int VantrelBaseSetting(HINSTANCE hLibRPTSET) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] hLibRPTSET=%p", hLibRPTSET);
    int storedMethod = -1;
    if (GetVntMethod(hLibRPTSET, &storedMethod) != 0) {
        // The library refuses a stored number outside the methods. The screen still opens, with
        // no method chosen, so that the administrator can choose one; nothing is stored before.
        ShowFuncCallErr("GetVntMethod");
        ZOL_TRACE(TRACE_LEVEL_ERROR, "GetVntMethod failed.");
        storedMethod = -1;
    }
    bool enabled = false;
    if (isMethod(storedMethod)) {
        BaseData record;
        const RecordRead read = readRecord(hLibRPTSET, storedMethod, record);
        if (read == RecordRead::Unbound) {
            // The base-setting menu reports the failed screen.
            ZOL_TRACE(TRACE_LEVEL_ERROR, "<InitBaseSetting failed.return -1.");
            return -1;
        }
        enabled = read == RecordRead::Found && record.Enable == 1;
    }

    char enableValue = enabled ? '*' : ' ';
    zolui::Window window;
    zolui::Form form;
    newtComponent enable = form.add(zolui::checkbox(-1, -1, MessageText("VNT_SUB_ENABLE_ID"),
                                                    enableValue, nullptr, &enableValue));
    newtComponent chooseLabel = form.add(zolui::label(-1, -1, MessageText("VNT_BASE_CHOUSE_ID")));
    std::array<newtComponent, kMethods.size()> radios{};
    for (std::size_t i = 0; i < kMethods.size(); ++i) {
        radios[i] = form.add(zolui::radioButton(-1, -1, MessageText(kMethods[i].labelId),
                                                kMethods[i].value == storedMethod,
                                                i == 0 ? nullptr : radios[i - 1]));
    }
    newtComponent suppress =
        form.add(zolui::button(-1, -1, MessageText("VNT_BASE_BUTTON_SUPPRESS_ID")), kSuppressId);
    newtComponent ok = form.add(zolui::button(-1, -1, MessageText("BUTTON_OK_ID")), kBaseOkId);
    newtComponent cancel =
        form.add(zolui::button(-1, -1, MessageText("BUTTON_CANCEL_ID")), kBaseCancelId);

    // The methods can be chosen only while the service is switched on.
    RangeRecordGuard rangeRecord(radios.data(), static_cast<int>(radios.size()), &enableValue);
    form.onActivate(enable, [] { CheckBoxFunc(nullptr, nullptr); });
    CheckBoxFunc(nullptr, nullptr);

    zolui::Grid methods(1, static_cast<int>(radios.size()));
    for (std::size_t i = 0; i < radios.size(); ++i)
        methods.set(0, static_cast<int>(i), radios[i], {.left = 3}, NEWT_ANCHOR_LEFT);
    zolui::Grid buttons(3, 1);
    buttons.set(0, 0, suppress, {.right = 3});
    buttons.set(1, 0, ok, {.right = 1});
    buttons.set(2, 0, cancel);
    zolui::Grid grid(1, 4);
    grid.set(0, 0, enable, {}, NEWT_ANCHOR_LEFT);
    grid.set(0, 1, chooseLabel, {.top = 1}, NEWT_ANCHOR_LEFT);
    grid.set(0, 2, std::move(methods), {}, NEWT_ANCHOR_LEFT);
    grid.set(0, 3, std::move(buttons), {.top = 1});
    window.openWrapped(grid, MessageText("BASE_REPORT_VANTREL_ID"));
    form.addHotKey(kCloseKey);

    for (;;) {
        const zolui::RunResult result = form.run();
        if (result.reason != zolui::RunResult::Reason::Component || result.id == kBaseCancelId)
            break;
        if (result.id == kSuppressId) {
            const int rc = vntSuppressSet();
            if (rc != 0) {
                ZOL_TRACE(TRACE_LEVEL_ERROR, "vntSuppressSet() return %d.", rc);
                ShowFuncCallErr("vntSuppressSet");
            }
            continue;
        }
        if (result.id != kBaseOkId)
            continue;
        int chosen = -1;
        const newtComponent current = newtRadioGetCurrent(radios[0]);
        for (std::size_t i = 0; i < radios.size(); ++i)
            if (radios[i] == current)
                chosen = kMethods[i].value;
        const bool on = isChecked(enableValue);
        if (on && chosen < 0) {
            warningBox("WARN_INVALID_ID");
            continue;
        }
        if (const char* failed = storeMethod(hLibRPTSET, storedMethod, chosen, on)) {
            ShowFuncCallErr(failed);
            continue;
        }
        ZOL_TRACE(TRACE_LEVEL_INFO, "method %d, service %s.", chosen, on ? "on" : "off");
        if (on)
            openMethodSettings(hLibRPTSET, chosen);
        break;
    }
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<return 0.");
    return 0;
}

int IMailBaseSetting(HINSTANCE hLibRPTSET) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] hLibRPTSET=%p", hLibRPTSET);
    if (InitIMBaseRegPath(hLibRPTSET) != 1) {
        ShowFuncCallErr("AMAMGetBaseRegPath");
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<InitIMBaseRegPath failed.return -1.");
        return -1;
    }
    if (InitIMBaseSetting(hLibRPTSET) != 1) {
        ShowFuncCallErr("GetAMBIBaseSetting");
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<InitIMBaseSetting failed.return -1.");
        return -1;
    }
    const AMBIBaseData stored = g_AMBIBaseData;

    char popValue = stored.PopBeforeSMTP == 1 ? '*' : ' ';
    char authValue = stored.SMTPAuth == 1 ? '*' : ' ';
    char port[16];
    std::snprintf(port, sizeof port, "%u", static_cast<unsigned>(stored.SMTPPort));

    zolui::Window window;
    zolui::Form form;
    auto text = [](const char* id) { return MessageText(id); };
    newtComponent serverLabel = form.add(zolui::label(-1, -1, text("IMAIL_BASE_SMTP_ID")));
    newtComponent server =
        form.add(zolui::entry(-1, -1, stored.SMTPServer, kMailTextWidth, NEWT_FLAG_SCROLL));
    newtComponent portLabel = form.add(zolui::label(-1, -1, text("IMAIL_BASE_PORT_ID")));
    newtComponent portEntry = form.add(zolui::entry(-1, -1, port, kMailPortWidth));
    newtComponent senderLabel = form.add(zolui::label(-1, -1, text("IMAIL_BASE_ADDS_ID")));
    newtComponent sender =
        form.add(zolui::entry(-1, -1, stored.MailFrom, kMailTextWidth, NEWT_FLAG_SCROLL));
    newtComponent dateLabel = form.add(zolui::label(-1, -1, text("IMAIL_BASE_DATE_ID")));
    newtComponent dateLocal = form.add(zolui::radioButton(
        -1, -1, text("IMAIL_BASE_DATE_LOCAL_ID"), stored.DateFormat == kDateLocal, nullptr));
    newtComponent dateUniversal = form.add(zolui::radioButton(
        -1, -1, text("IMAIL_BASE_DATE_GMT_ID"), stored.DateFormat == kDateUniversal, dateLocal));
    newtComponent optLabel = form.add(zolui::label(-1, -1, text("IMAIL_BASE_OPT_ID")));
    newtComponent pop =
        form.add(zolui::checkbox(-1, -1, text("IMAIL_BASE_POP_ID"), popValue, nullptr, &popValue));
    newtComponent auth = form.add(
        zolui::checkbox(-1, -1, text("IMAIL_BASE_SMTPAUTH_ID"), authValue, nullptr, &authValue));
    newtComponent login =
        form.add(zolui::compactButton(-1, -1, text("BUTTON_POP_SET_ID")), kLoginId);
    newtComponent ok = form.add(zolui::button(-1, -1, text("BUTTON_OK_ID")), kMailOkId);
    newtComponent cancel = form.add(zolui::button(-1, -1, text("BUTTON_CANCEL_ID")), kMailCancelId);
    form.setFilter(portEntry, [portEntry](int ch, int cursor) {
        return EntryNumricFilter(portEntry, nullptr, ch, cursor);
    });

    zolui::Grid dates(2, 1);
    dates.set(0, 0, dateLocal, {.right = 2});
    dates.set(1, 0, dateUniversal);
    zolui::Grid fields(2, 4);
    const newtComponent labels[] = {serverLabel, portLabel, senderLabel, dateLabel};
    for (int row = 0; row < 4; ++row)
        fields.set(0, row, labels[row], {.right = 1}, NEWT_ANCHOR_LEFT);
    fields.set(1, 0, server, {}, NEWT_ANCHOR_LEFT);
    fields.set(1, 1, portEntry, {}, NEWT_ANCHOR_LEFT);
    fields.set(1, 2, sender, {}, NEWT_ANCHOR_LEFT);
    fields.set(1, 3, std::move(dates), {}, NEWT_ANCHOR_LEFT);
    zolui::Grid options(1, 4);
    options.set(0, 0, optLabel, {}, NEWT_ANCHOR_LEFT);
    options.set(0, 1, pop, {.left = 2}, NEWT_ANCHOR_LEFT);
    options.set(0, 2, auth, {.left = 2}, NEWT_ANCHOR_LEFT);
    options.set(0, 3, login, {.left = 1}, NEWT_ANCHOR_LEFT);
    zolui::Grid buttons(2, 1);
    buttons.set(0, 0, ok, {.right = 4});
    buttons.set(1, 0, cancel);
    zolui::Grid grid(1, 3);
    grid.set(0, 0, std::move(fields), {}, NEWT_ANCHOR_LEFT);
    grid.set(0, 1, std::move(options), {.top = 1}, NEWT_ANCHOR_LEFT);
    grid.set(0, 2, std::move(buttons), {.top = 1});
    window.openWrapped(grid, text("VNT_BASE_IMAIL_ID"));
    form.addHotKey(kCloseKey);

    for (;;) {
        const zolui::RunResult result = form.run();
        if (result.reason != zolui::RunResult::Reason::Component || result.id == kMailCancelId)
            break;
        if (result.id == kLoginId) {
            const bool popOn = isChecked(popValue), authOn = isChecked(authValue);
            if (!popOn && !authOn)
                warningBox("IMAIL_BASE_LOGIN_ERR1");
            else
                PopAndSMTPSet(hLibRPTSET, popOn ? 1 : 0, authOn ? 1 : 0);
            continue;
        }
        if (result.id != kMailOkId)
            continue;

        AMBIBaseData record = stored;
        const mailinput::MailBaseInput in{zolui::entryText(server), zolui::entryText(portEntry),
                                          zolui::entryText(sender)};
        const auto refusal = mailinput::CheckMailBaseInput(
            in,
            [hLibRPTSET](const std::string& name) {
                char address[REG_TEXT_SIZE] = {};
                const int rc = CheckPortAndIP(hLibRPTSET, 0, name.c_str(), address, 0);
                ZOL_TRACE(TRACE_LEVEL_INFO, "CheckPortAndIP() return %d.", rc);
                return rc;
            },
            [](const std::string& address) { return CheckSingleMailAddr(address.c_str()) != 0; },
            &record);
        if (refusal) {
            if (refusal->messageId != nullptr)
                warningBox(refusal->messageId);
            continue;
        }
        // A date format the screen does not know stays as stored while neither is chosen.
        const newtComponent date = newtRadioGetCurrent(dateLocal);
        if (date == dateLocal)
            record.DateFormat = kDateLocal;
        else if (date == dateUniversal)
            record.DateFormat = kDateUniversal;
        record.PopBeforeSMTP = isChecked(popValue) ? 1 : 0;
        record.SMTPAuth = isChecked(authValue) ? 1 : 0;

        g_AMBIBaseData = record;
        if (SetIMBaseSetting(hLibRPTSET) != 1) {
            g_AMBIBaseData = stored;
            ShowFuncCallErr("SetAMBIBaseSetting");
            continue;
        }
        break;
    }
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<return 0.");
    return 0;
}
