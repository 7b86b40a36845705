// The remote report service's internet-mail destination: the addresses its reports are mailed to
// and their subject, stored together with the service's destination record, and the test and
// opening reports an administrator sends from here.
#include <string>

#include "frame/check_boxes.h"
#include "frame/libraries.h"
#include "frame/msgfile.h"
#include "frame/rptset_calls.h"
#include "frame/screens.h"
#include "remote/vantrel_dest.h"
#include "ui/dialog.h"
#include "ui/toolkit.h"

namespace {

constexpr int kMessageWidth = 60;
constexpr int kMessageHeight = 3;
constexpr int kEntryWidth = 50;

enum ControlId : int { kTestId = 1, kCriticalTestId, kOpeningId };

std::string Text(const char* id) {
    return MessageText(id);
}

void MailBox(const std::string& text) {
    const std::string title = Text("IMAIL_DEST_TITLE_ID");
    msgWindowEx(title.c_str(), " ok ", text.c_str());
}

// Sends a test report through the destination and shows what came of it: the library's own
// reason when it gave one.
void TestReport(HMODULE lib, const DestData& record, bool critical) {
    std::string reason;
    const LibResult r = SendTestReport(lib, critical, record.ID, &reason);
    if (r.unbound()) {
        ShowFuncCallErr(critical ? "GetProcAddress for TestFatalReport"
                                 : "GetProcAddress for AMAMVantrelTestReport");
        return;
    }
    if (r.ok()) {
        MailBox(Text(critical ? "IMAIL_FATAL_TEST_SUCC" : "IMAIL_TEST_REPORT_SUCC"));
        return;
    }
    MailBox(!reason.empty() ? reason : Text(critical ? "IMAIL_FATAL_TEST_ERR" : "IDS_TEST_FAILED"));
}

bool AskOpening() {
    const std::string title = Text("IMAIL_DEST_TITLE_ID");
    const std::string text = Text("IMAIL_QUE_OPEN_ID");
    newtComponent buttons[2] = {zolui::button(-1, -1, Text("BUTTON_OK_ID")),
                                zolui::button(-1, -1, Text("BUTTON_CANCEL_ID"))};
    const newtComponent ok = buttons[0];
    return SelectFromButtons(title.c_str(), text.c_str(), buttons, 2) == ok;
}

// Sends the opening report after the administrator confirms it, and shows what came of it.
void OpeningReport(HMODULE lib) {
    if (!AskOpening())
        return;
    std::string reason;
    const LibResult r = SendOpeningReport(lib, &reason);
    if (r.unbound()) {
        ShowFuncCallErr("GetProcAddress for AMAMVantrelOpeningReport");
        return;
    }
    if (r.ok()) {
        MailBox(Text("IMAIL_OPEN_TEST_SUCC"));
        return;
    }
    MailBox(!reason.empty() ? reason : Text("OPEN_REPORT_FAILED_ID"));
}

struct MailForm {
    newtComponent to = nullptr, subject = nullptr;
};

// The service's set-up state, the two entries, the test buttons, then OK and Cancel.
MailForm OpenMailForm(zolui::Dialog& dialog, const VxMLDestData& mail, const std::string& message) {
    MailForm form;
    newtComponent state =
        dialog.add(zolui::textbox(-1, -1, kMessageWidth, kMessageHeight, NEWT_FLAG_WRAP, message));
    form.to = dialog.add(zolui::entry(-1, -1, mail.MailTo, kEntryWidth, NEWT_FLAG_SCROLL));
    form.subject = dialog.add(zolui::entry(-1, -1, mail.Subject, kEntryWidth, NEWT_FLAG_SCROLL));
    zolui::Grid fields(2, 2);
    fields.set(0, 0, dialog.add(zolui::label(-1, -1, Text("IMAIL_DEST_SENT_ID"))), {},
               NEWT_ANCHOR_LEFT);
    fields.set(1, 0, form.to, {.left = 1}, NEWT_ANCHOR_LEFT);
    fields.set(0, 1, dialog.add(zolui::label(-1, -1, Text("IMAIL_DEST_SUBJ_ID"))), {.top = 1},
               NEWT_ANCHOR_LEFT);
    fields.set(1, 1, form.subject, {.left = 1, .top = 1}, NEWT_ANCHOR_LEFT);
    zolui::Grid grid(1, 5);
    grid.set(0, 0, dialog.add(zolui::label(-1, -1, Text("IMAIL_DEST_SET_ID"))), {},
             NEWT_ANCHOR_LEFT);
    grid.set(0, 1, state, {}, NEWT_ANCHOR_LEFT);
    grid.set(0, 2, std::move(fields), {.top = 1}, NEWT_ANCHOR_LEFT);
    grid.set(0, 3,
             dialog.buttonRow({{Text("IMAIL_BUTTON_TEST_ID"), kTestId},
                               {Text("IMAIL_BUTTON_FATAL_ID"), kCriticalTestId},
                               {Text("IMAIL_BUTTON_OPEN_ID"), kOpeningId}},
                              2),
             {.top = 1}, NEWT_ANCHOR_LEFT);
    grid.set(0, 4,
             dialog.buttonRow({{Text("BUTTON_OK_ID"), zolui::kOkId},
                               {Text("BUTTON_CANCEL_ID"), zolui::kCancelId}}),
             {.top = 1});
    dialog.open(grid, Text("IMAIL_DEST_TITLE_ID"));
    return form;
}

}  // namespace

const char* ApplyMailDestEntries(const MailDestEntries& entries, VxMLDestData& mail) {
    if (entries.to.size() > kMailDestTextMax)
        return "IMAIL_DEST_MLTO_ERR2";
    if (entries.subject.size() > kMailDestTextMax)
        return "IMAIL_DEST_SUBJ_ERR1";
    entries.to.copy(mail.MailTo, kMailDestTextMax);
    mail.MailTo[entries.to.size()] = '\0';
    entries.subject.copy(mail.Subject, kMailDestTextMax);
    mail.Subject[entries.subject.size()] = '\0';
    return nullptr;
}

int InternetMailSetting(DestData* record, HMODULE rptsetLib) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] rptsetLib=%p", rptsetLib);
    VxMLDestData mail{};
    std::string message;
    if (record == nullptr || !ReadMLDestSetting(rptsetLib, &mail, &message)) {
        ShowFuncCallErr("GetAMAMDeseSetting");
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<GetAMAMDeseSetting failed.return -1.");
        return -1;
    }
    zolui::Dialog dialog;
    const MailForm form = OpenMailForm(dialog, mail, message);
    auto ok = [&] {
        const MailDestEntries entries{zolui::entryText(form.to), zolui::entryText(form.subject)};
        if (!CheckMailAddr(entries.to.c_str()))
            return zolui::Next::Stay;
        if (const char* refusal = ApplyMailDestEntries(entries, mail)) {
            MailBox(Text(refusal));
            return zolui::Next::Stay;
        }
        if (!WriteMLDestSetting(rptsetLib, &mail, record, 0)) {
            ShowFuncCallErr("SetAMAMDeseSetting");
            return zolui::Next::Stay;
        }
        return zolui::Next::Close;
    };
    auto test = [&](bool critical) {
        return [&, critical] {
            TestReport(rptsetLib, *record, critical);
            return zolui::Next::Stay;
        };
    };
    auto opening = [&] {
        OpeningReport(rptsetLib);
        return zolui::Next::Stay;
    };
    const int closedBy = dialog.run({{zolui::kOkId, ok},
                                     {kTestId, test(false)},
                                     {kCriticalTestId, test(true)},
                                     {kOpeningId, opening}});
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<%s.return 0.", closedBy == zolui::kOkId ? "saved" : "cancelled");
    return 0;
}
