// The POP before SMTP / SMTP authentication dialog. Passwords are plain only in memory: the
// library encodes them on their way into the store, the call layer decodes them after reading;
// the dialog shows them only as password entries and never traces them.
#include "baseset/popsmtp.h"

#include <newt.h>
#include <string.h>  // explicit_bzero: a wipe the compiler keeps

#include <cstdint>
#include <string>
#include <utility>

#include "frame/checks.h"
#include "frame/libraries.h"
#include "frame/msgfile.h"
#include "frame/rptset_calls.h"
#include "ui/dialog.h"
#include "ui/toolkit.h"

// ---- What OK does ----

LoginSave SaveLogin(const LoginState& state, const mailinput::ServerCheck& checkServer,
                    const LoginWriters& write) {
    LoginSave result;
    if (state.pop) {
        POPParam record{};
        std::uint32_t wait = 0;
        result.refusal = mailinput::CheckPopInput(state.popInput, checkServer, &record, &wait);
        if (result.refusal)
            return result;
        if (write.pop(record, wait) == -1)
            result.failedWrites.push_back("PutPopParam");
        explicit_bzero(&record, sizeof record);
    }
    if (!state.smtp)
        return result;
    SMTPParam record{};
    result.refusal = mailinput::CheckSmtpInput(state.smtpInput, &record);
    if (!result.refusal && write.smtp(record) == -1)
        result.failedWrites.push_back("PutSMTPParam");
    explicit_bzero(&record, sizeof record);
    return result;
}

namespace {

// ---- The dialog ----

enum ControlId : int { kPortDefaultId = 1, kWaitDefaultId };

constexpr int kTextEntryWidth = 30;
constexpr int kPortEntryWidth = 8;
constexpr int kWaitEntryWidth = 6;
constexpr const char* kWarningTitle = "WARNING";

void ShowRefusal(const mailinput::Refusal& refusal) {
    const char* text = CPGetText(refusal.messageId, ReadString, ZOL_RcFileBuf);
    switch (refusal.box) {
        case mailinput::Box::Warning:
            msgWindow(kWarningTitle, " ok ", text);
            break;
        case mailinput::Box::WarningWide:
            msgWindowEx(kWarningTitle, "ok", text);
            break;
        case mailinput::Box::WarningShort:
            msgWindow(kWarningTitle, "ok", text);
            break;
        case mailinput::Box::MailAddress: {
            const std::string title = MessageText("IMAIL_DEST_TITLE_ID");
            msgWindow(title.c_str(), " ok ", text);
            break;
        }
    }
}

// This dialog's error boxes are titled " Error ", with blanks, unlike the program's others.
void ShowWriteError(const char* function) {
    msgWindow(" Error ", " ok ", FuncCallErrText(function).c_str());
}

// The stored logins, as the dialog starts with them. The records hold the passwords in plain
// text: they are wiped once the entries have them.
struct StoredLogins {
    POPParam pop{};
    DWORD wait = kDefaultPopWait;
    SMTPParam smtp{};

    explicit StoredLogins(HMODULE lib) {
        pop.Port = kDefaultPopPort;
        GetPopParam(lib, &pop, &wait);
        GetSMTPParam(lib, &smtp);
    }
    ~StoredLogins() {
        explicit_bzero(&pop, sizeof pop);
        explicit_bzero(&smtp, sizeof smtp);
    }
    StoredLogins(const StoredLogins&) = delete;
    StoredLogins& operator=(const StoredLogins&) = delete;
};

// The entries the dialog reads back on OK.
struct LoginFields {
    newtComponent server, popUser, popPass, port, wait, smtpUser, smtpPass;
};

LoginState ReadFields(const LoginFields& f, bool pop, bool smtp) {
    using zolui::entryText;
    return {pop,
            smtp,
            {entryText(f.server), entryText(f.popUser), entryText(f.popPass), entryText(f.port),
             entryText(f.wait)},
            {entryText(f.smtpUser), entryText(f.smtpPass)}};
}

// A label followed by its field (or cell) in one row of the fields grid.
template <class Field>
void SetRow(zolui::Grid& grid, int row, newtComponent label, Field&& field) {
    grid.set(0, row, label, {.left = 2, .right = 1}, NEWT_ANCHOR_LEFT);
    grid.set(1, row, std::forward<Field>(field), {}, NEWT_ANCHOR_LEFT);
}

newtComponent Label(const char* id) {
    return zolui::label(-1, -1, MessageText(id));
}

// A Default control beside the port and the wait time: a compact button while the POP half is
// enabled, else the same text in angle brackets, which cannot be pressed.
newtComponent DefaultControl(zolui::Dialog& dialog, bool pop, int id) {
    const std::string text = MessageText("POP_DEFAULT_ID");
    if (pop)
        return dialog.add(zolui::compactButton(-1, -1, text), id);
    return dialog.add(zolui::label(-1, -1, "<" + text + ">"));
}

// The POP half, in focus order: server, account, password, port and its Default, wait time and
// its Default. Fills rows 0 to 5 of the fields grid.
void BuildPopHalf(zolui::Dialog& dialog, const StoredLogins& stored, bool pop, LoginFields& f,
                  zolui::Grid& fields) {
    const int flags = pop ? 0 : NEWT_FLAG_DISABLED;
    // One labelled text entry per row, label first.
    auto textRow = [&](int row, const char* labelId, const char* value, int more) {
        newtComponent label = dialog.add(Label(labelId));
        newtComponent co = dialog.add(
            zolui::entry(-1, -1, value, kTextEntryWidth, NEWT_FLAG_SCROLL | flags | more));
        SetRow(fields, row, label, co);
        return co;
    };
    fields.set(0, 0, dialog.add(Label("LABEL_POP_TITLE_ID")), {}, NEWT_ANCHOR_LEFT);
    f.server = textRow(1, "POP_MAILSV_ID", stored.pop.Server, 0);
    f.popUser = textRow(2, "POP_ACCOUNT_ID", stored.pop.User, 0);
    f.popPass = textRow(3, "IDSET_OUTBAND_PASSWD_ID", stored.pop.Password, NEWT_FLAG_PASSWORD);

    newtComponent portLabel = dialog.add(Label("POP_PORT_NUM_ID"));
    f.port = dialog.numberEntry(std::to_string(stored.pop.Port), kPortEntryWidth, EntryNumricFilter,
                                flags);
    zolui::Grid portCell(2, 1);
    portCell.set(0, 0, f.port, {}, NEWT_ANCHOR_LEFT);
    portCell.set(1, 0, DefaultControl(dialog, pop, kPortDefaultId), {.left = 1}, NEWT_ANCHOR_LEFT);
    SetRow(fields, 4, portLabel, std::move(portCell));

    newtComponent waitLabel = dialog.add(Label("POP_WAIT_TIME_ID"));
    f.wait =
        dialog.numberEntry(std::to_string(stored.wait), kWaitEntryWidth, EntryNumricFilter, flags);
    zolui::Grid waitCell(3, 1);
    waitCell.set(0, 0, f.wait, {}, NEWT_ANCHOR_LEFT);
    waitCell.set(1, 0, dialog.add(Label("POP_SECOND_ID")), {.left = 1}, NEWT_ANCHOR_LEFT);
    waitCell.set(2, 0, DefaultControl(dialog, pop, kWaitDefaultId), {.left = 1}, NEWT_ANCHOR_LEFT);
    SetRow(fields, 5, waitLabel, std::move(waitCell));
}

// The SMTP half: account and password. Fills rows 6 to 8 of the fields grid.
void BuildSmtpHalf(zolui::Dialog& dialog, const StoredLogins& stored, bool smtp, LoginFields& f,
                   zolui::Grid& fields) {
    const int flags = NEWT_FLAG_SCROLL | (smtp ? 0 : NEWT_FLAG_DISABLED);
    fields.set(0, 6, dialog.add(Label("LABEL_SMTP_TITLE_ID")), {.top = 1}, NEWT_ANCHOR_LEFT);
    newtComponent userLabel = dialog.add(Label("SMTP_ACCOUNT_ID"));
    f.smtpUser = dialog.add(zolui::entry(-1, -1, stored.smtp.User, kTextEntryWidth, flags));
    SetRow(fields, 7, userLabel, f.smtpUser);
    newtComponent passLabel = dialog.add(Label("SMTP_PASS_ID"));
    f.smtpPass = dialog.add(
        zolui::entry(-1, -1, stored.smtp.Password, kTextEntryWidth, flags | NEWT_FLAG_PASSWORD));
    SetRow(fields, 8, passLabel, f.smtpPass);
}

// OK: the POP half, then the SMTP half, each written by the library in one call. A refusal keeps
// the dialog open (with the POP half written when only the SMTP half was refused).
zolui::Next Save(HMODULE lib, const LoginState& state) {
    const LoginSave saved =
        SaveLogin(state,
                  [lib](const std::string& server) {
                      char address[REG_TEXT_SIZE] = {};
                      const int rc = CheckPortAndIP(lib, 0, server.c_str(), address, 0);
                      ZOL_TRACE(TRACE_LEVEL_INFO, "CheckPortAndIP() return %d.", rc);
                      return rc;
                  },
                  {[lib](const POPParam& pop, DWORD wait) { return PutPopParam(lib, &pop, wait); },
                   [lib](const SMTPParam& smtp) { return PutSMTPParam(lib, &smtp); }});
    for (const char* function : saved.failedWrites)
        ShowWriteError(function);
    if (saved.refusal) {
        ShowRefusal(*saved.refusal);
        return zolui::Next::Stay;
    }
    return zolui::Next::Close;
}

}  // namespace

void PopAndSMTPSet(HMODULE lib, int popFlag, int smtpFlag) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] lib=%p popFlag=%d smtpFlag=%d", lib, popFlag, smtpFlag);
    if (lib == nullptr) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<[IN]param error.");
        return;
    }
    const bool pop = popFlag == 1;
    const bool smtp = smtpFlag == 1;

    // Build.
    zolui::Dialog dialog;
    LoginFields f{};
    zolui::Grid fields(2, 9);
    {
        const StoredLogins stored(lib);
        BuildPopHalf(dialog, stored, pop, f, fields);
        BuildSmtpHalf(dialog, stored, smtp, f, fields);
    }
    zolui::Grid outer(1, 2);
    outer.set(0, 0, std::move(fields));
    outer.set(0, 1,
              dialog.buttonRow({{MessageText("BUTTON_OK_ID"), zolui::kOkId},
                                {MessageText("BUTTON_CANCEL_ID"), zolui::kCancelId}},
                               4),
              {.top = 1});
    dialog.open(outer, MessageText("POP_SETTING_TITLE"));
    // The server check may look a name up, and a resolver can write to the terminal behind
    // newt's back: every run starts from a full redraw.
    dialog.redrawBeforeEachRun();

    // Handlers and save.
    dialog.run({
        {kPortDefaultId,
         [&] {
             zolui::setEntryText(f.port, std::to_string(kDefaultPopPort));
             return zolui::Next::Stay;
         }},
        {kWaitDefaultId,
         [&] {
             zolui::setEntryText(f.wait, std::to_string(kDefaultPopWait));
             return zolui::Next::Stay;
         }},
        {zolui::kOkId, [&] { return Save(lib, ReadFields(f, pop, smtp)); }},
    });
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<");
}
