// The POP before SMTP / SMTP authentication dialog and the accessors of its stored values.
// Passwords are plain only in memory: they are encoded with Ras_Encode on their way into the
// store, decoded after reading, shown only as a password entry and never traced.
#include "baseset/popsmtp.h"

#include <newt.h>
#include <string.h>  // explicit_bzero: a wipe the compiler keeps

#include <array>
#include <cstdio>
#include <cstring>
#include <string>

#include "baseset/mailserver_input.h"
#include "frame/check_boxes.h"
#include "frame/checks.h"
#include "frame/libraries.h"
#include "frame/msgfile.h"
#include "rptset_api.h"
#include "ui/toolkit.h"

namespace {

// ---- Stored values ----

// Reads one REG_SZ value into a field; an unreadable value leaves the field empty.
void readText(AMAMRegReadEx_fn* read, const char* value, char (&field)[REG_TEXT_SIZE]) {
    std::memset(field, 0, sizeof field);
    if (read(HKEY_LOCAL_MACHINE, kMailLoginKey, value, REG_SZ, field, sizeof field) == 0)
        std::memset(field, 0, sizeof field);
    field[REG_TEXT_SIZE - 1] = '\0';
}

void readPassword(AMAMRegReadEx_fn* read, const char* value, char (&field)[REG_TEXT_SIZE]) {
    readText(read, value, field);
    Ras_Decode(field, static_cast<int>(std::strlen(field)));
}

DWORD readDword(AMAMRegReadEx_fn* read, const char* value, DWORD whenMissing) {
    DWORD data = 0;
    if (read(HKEY_LOCAL_MACHINE, kMailLoginKey, value, REG_DWORD, &data, sizeof data) == 0)
        return whenMissing;
    return data;
}

// Writes the values of one record in one transaction. Every write is attempted (each failure is
// traced), and finish() commits only when all of them succeeded: a record is never stored half.
class RecordWriter {
  public:
    explicit RecordWriter(AMAMRegWrite_fn* write) : write_(write) {
        if (ZolRegBeginTransaction() != ERROR_SUCCESS)
            ok_ = false;
        else
            open_ = true;
    }
    ~RecordWriter() {
        if (open_)
            ZolRegRollbackTransaction();
    }
    RecordWriter(const RecordWriter&) = delete;
    RecordWriter& operator=(const RecordWriter&) = delete;

    void text(const char* value, const char* data) {
        check(value, write_(HKEY_LOCAL_MACHINE, kMailLoginKey, value, REG_SZ, data,
                            static_cast<DWORD>(std::strlen(data) + 1)));
    }
    void password(const char* value, const char* plain) {
        std::array<char, REG_TEXT_SIZE> encoded{};
        const std::size_t length = strnlen(plain, encoded.size() - 1);
        std::memcpy(encoded.data(), plain, length);
        Ras_Encode(encoded.data(), static_cast<int>(length));
        text(value, encoded.data());
        // The plain text does not linger in a second buffer.
        explicit_bzero(encoded.data(), encoded.size());
    }
    void dword(const char* value, DWORD data) {
        check(value,
              write_(HKEY_LOCAL_MACHINE, kMailLoginKey, value, REG_DWORD, &data, sizeof data));
    }
    // 0 when the whole record was stored, else -1 (and nothing of it was).
    int finish() {
        if (!open_)
            return -1;
        open_ = false;
        if (!ok_) {
            ZolRegRollbackTransaction();
            return -1;
        }
        return ZolRegCommitTransaction() == ERROR_SUCCESS ? 0 : -1;
    }

  private:
    void check(const char* value, int written) {
        if (written == 0) {
            ZOL_TRACE(TRACE_LEVEL_ERROR, "pAMAMRegWrite %s/%s failed.", kMailLoginKey, value);
            ok_ = false;
        }
    }

    AMAMRegWrite_fn* write_;
    bool ok_ = true;
    bool open_ = false;
};

// ---- The dialog ----

enum ControlId : int { kOkId = 1, kCancelId, kPortDefaultId, kWaitDefaultId };

constexpr int kTextEntryWidth = 30;
constexpr int kPortEntryWidth = 8;
constexpr int kWaitEntryWidth = 6;
constexpr const char* kWarningTitle = "WARNING";

void showRefusal(const mailinput::Refusal& refusal) {
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
        case mailinput::Box::AlreadyShown:
            break;
    }
}

// This dialog's error boxes are titled " Error ", with blanks, unlike the program's others.
void showWriteError(const char* function) {
    msgWindow(" Error ", " ok ", FuncCallErrText(function).c_str());
}

// A label followed by its field in one row of the fields grid.
void setRow(zolui::Grid& grid, int row, newtComponent label, newtComponent field, int top = 0) {
    grid.set(0, row, label, {.left = 2, .top = top, .right = 1}, NEWT_ANCHOR_LEFT);
    grid.set(1, row, field, {.top = top}, NEWT_ANCHOR_LEFT);
}

class LoginDialog {
  public:
    LoginDialog(HINSTANCE lib, bool pop, bool smtp) : lib_(lib), pop_(pop), smtp_(smtp) {}

    void run() {
        POPParam popRecord{};
        popRecord.Port = kDefaultPopPort;
        DWORD wait = kDefaultPopWait;
        SMTPParam smtpRecord{};
        GetPopParam(lib_, &popRecord, &wait);
        GetSMTPParam(lib_, &smtpRecord);
        build(popRecord, wait, smtpRecord);
        // The records held the passwords in plain text; the entries hold them from here on.
        explicit_bzero(&popRecord, sizeof popRecord);
        explicit_bzero(&smtpRecord, sizeof smtpRecord);
        loop();
    }

  private:
    void build(const POPParam& popRecord, DWORD wait, const SMTPParam& smtpRecord) {
        const int popFlags = pop_ ? 0 : NEWT_FLAG_DISABLED;
        const int smtpFlags = smtp_ ? 0 : NEWT_FLAG_DISABLED;
        const int textFlags = NEWT_FLAG_SCROLL;
        const int passwordFlags = NEWT_FLAG_SCROLL | NEWT_FLAG_PASSWORD;
        char number[16];

        auto text = [](const char* id) { return MessageText(id); };
        newtComponent popTitle = zolui::label(-1, -1, text("LABEL_POP_TITLE_ID"));
        newtComponent serverLabel = zolui::label(-1, -1, text("POP_MAILSV_ID"));
        newtComponent popUserLabel = zolui::label(-1, -1, text("POP_ACCOUNT_ID"));
        newtComponent popPassLabel = zolui::label(-1, -1, text("IDSET_OUTBAND_PASSWD_ID"));
        newtComponent portLabel = zolui::label(-1, -1, text("POP_PORT_NUM_ID"));
        newtComponent waitLabel = zolui::label(-1, -1, text("POP_WAIT_TIME_ID"));
        newtComponent secondLabel = zolui::label(-1, -1, text("POP_SECOND_ID"));
        server_ = zolui::entry(-1, -1, popRecord.Server, kTextEntryWidth, textFlags | popFlags);
        popUser_ = zolui::entry(-1, -1, popRecord.User, kTextEntryWidth, textFlags | popFlags);
        popPass_ =
            zolui::entry(-1, -1, popRecord.Password, kTextEntryWidth, passwordFlags | popFlags);
        std::snprintf(number, sizeof number, "%d", static_cast<int>(popRecord.Port));
        port_ = zolui::entry(-1, -1, number, kPortEntryWidth, popFlags);
        std::snprintf(number, sizeof number, "%d", static_cast<int>(wait));
        wait_ = zolui::entry(-1, -1, number, kWaitEntryWidth, popFlags);

        // Default controls: pressable only while the POP half is enabled.
        const std::string defaultText = text("POP_DEFAULT_ID");
        newtComponent portDefault, waitDefault;
        if (pop_) {
            portDefault = zolui::compactButton(-1, -1, defaultText);
            waitDefault = zolui::compactButton(-1, -1, defaultText);
        } else {
            portDefault = zolui::label(-1, -1, "<" + defaultText + ">");
            waitDefault = zolui::label(-1, -1, "<" + defaultText + ">");
        }

        newtComponent smtpTitle = zolui::label(-1, -1, text("LABEL_SMTP_TITLE_ID"));
        newtComponent smtpUserLabel = zolui::label(-1, -1, text("SMTP_ACCOUNT_ID"));
        newtComponent smtpPassLabel = zolui::label(-1, -1, text("SMTP_PASS_ID"));
        smtpUser_ = zolui::entry(-1, -1, smtpRecord.User, kTextEntryWidth, textFlags | smtpFlags);
        smtpPass_ =
            zolui::entry(-1, -1, smtpRecord.Password, kTextEntryWidth, passwordFlags | smtpFlags);
        newtComponent ok = zolui::button(-1, -1, text("BUTTON_OK_ID"));
        newtComponent cancel = zolui::button(-1, -1, text("BUTTON_CANCEL_ID"));

        // Focus order: the POP fields top to bottom with their default controls, the SMTP
        // fields, the buttons.
        form_.add(popTitle);
        for (newtComponent co : {serverLabel, server_, popUserLabel, popUser_, popPassLabel,
                                 popPass_, portLabel, port_})
            form_.add(co);
        form_.add(portDefault, pop_ ? kPortDefaultId : zolui::kNoId);
        form_.add(waitLabel);
        form_.add(wait_);
        form_.add(secondLabel);
        form_.add(waitDefault, pop_ ? kWaitDefaultId : zolui::kNoId);
        for (newtComponent co : {smtpTitle, smtpUserLabel, smtpUser_, smtpPassLabel, smtpPass_})
            form_.add(co);
        form_.add(ok, kOkId);
        form_.add(cancel, kCancelId);
        for (newtComponent numeric : {port_, wait_})
            form_.setFilter(numeric, [numeric](int ch, int cursor) {
                return EntryNumricFilter(numeric, nullptr, ch, cursor);
            });

        zolui::Grid portCell(2, 1);
        portCell.set(0, 0, port_, {}, NEWT_ANCHOR_LEFT);
        portCell.set(1, 0, portDefault, {.left = 1}, NEWT_ANCHOR_LEFT);
        zolui::Grid waitCell(3, 1);
        waitCell.set(0, 0, wait_, {}, NEWT_ANCHOR_LEFT);
        waitCell.set(1, 0, secondLabel, {.left = 1}, NEWT_ANCHOR_LEFT);
        waitCell.set(2, 0, waitDefault, {.left = 1}, NEWT_ANCHOR_LEFT);

        zolui::Grid fields(2, 9);
        fields.set(0, 0, popTitle, {}, NEWT_ANCHOR_LEFT);
        setRow(fields, 1, serverLabel, server_);
        setRow(fields, 2, popUserLabel, popUser_);
        setRow(fields, 3, popPassLabel, popPass_);
        fields.set(0, 4, portLabel, {.left = 2, .right = 1}, NEWT_ANCHOR_LEFT);
        fields.set(1, 4, std::move(portCell), {}, NEWT_ANCHOR_LEFT);
        fields.set(0, 5, waitLabel, {.left = 2, .right = 1}, NEWT_ANCHOR_LEFT);
        fields.set(1, 5, std::move(waitCell), {}, NEWT_ANCHOR_LEFT);
        fields.set(0, 6, smtpTitle, {.top = 1}, NEWT_ANCHOR_LEFT);
        setRow(fields, 7, smtpUserLabel, smtpUser_);
        setRow(fields, 8, smtpPassLabel, smtpPass_);

        zolui::Grid buttons(2, 1);
        buttons.set(0, 0, ok, {.right = 4});
        buttons.set(1, 0, cancel);
        zolui::Grid outer(1, 2);
        outer.set(0, 0, std::move(fields));
        outer.set(0, 1, std::move(buttons), {.top = 1});
        window_.openWrapped(outer, MessageText("POP_SETTING_TITLE"));
    }

    void loop() {
        for (;;) {
            // Every round hands the terminal back and takes it again. Taking it back repaints the
            // whole screen, so anything written to the terminal behind newt's back (by the name
            // look-up of the server check, say) is painted over before the form is drawn.
            { zolui::Suspended handBack; }
            newtDrawForm(form_.get());
            const zolui::RunResult result = form_.run();
            // Cancel, or a hot key (F12), closes without writing.
            if (result.reason != zolui::RunResult::Reason::Component || result.id == kCancelId)
                return;
            if (result.id == kPortDefaultId) {
                zolui::setEntryText(port_, std::to_string(kDefaultPopPort));
                continue;
            }
            if (result.id == kWaitDefaultId) {
                zolui::setEntryText(wait_, std::to_string(kDefaultPopWait));
                continue;
            }
            if (result.id == kOkId && save())
                return;
        }
    }

    // OK: checks and writes the POP half, then the SMTP half. False keeps the dialog open; the
    // POP values stay written when only the SMTP half was refused.
    bool save() {
        if (pop_) {
            POPParam record{};
            std::uint32_t wait = 0;
            const mailinput::PopInput in{zolui::entryText(server_), zolui::entryText(popUser_),
                                         zolui::entryText(popPass_), zolui::entryText(port_),
                                         zolui::entryText(wait_)};
            const auto refusal = mailinput::CheckPopInput(
                in,
                [this](const std::string& server) {
                    char address[REG_TEXT_SIZE] = {};
                    const int rc = CheckPortAndIP(lib_, 0, server.c_str(), address, 0);
                    ZOL_TRACE(TRACE_LEVEL_INFO, "CheckPortAndIP() return %d.", rc);
                    return rc;
                },
                &record, &wait);
            if (refusal) {
                showRefusal(*refusal);
                return false;
            }
            const int written = PutPopParam(lib_, &record, wait);
            explicit_bzero(&record, sizeof record);
            if (written == -1)
                showWriteError("PutPopParam");
        }
        if (!smtp_)
            return true;
        SMTPParam record{};
        const mailinput::SmtpInput in{zolui::entryText(smtpUser_), zolui::entryText(smtpPass_)};
        if (const auto refusal = mailinput::CheckSmtpInput(in, &record)) {
            showRefusal(*refusal);
            return false;
        }
        const int written = PutSMTPParam(lib_, &record);
        explicit_bzero(&record, sizeof record);
        if (written == -1)
            showWriteError("PutSMTPParam");
        return true;
    }

    HINSTANCE lib_;
    bool pop_, smtp_;
    zolui::Window window_;
    zolui::Form form_;
    newtComponent server_ = nullptr, popUser_ = nullptr, popPass_ = nullptr, port_ = nullptr,
                  wait_ = nullptr, smtpUser_ = nullptr, smtpPass_ = nullptr;
};

AMAMRegReadEx_fn* bindRead(HINSTANCE lib) {
    return BindFromHandle<AMAMRegReadEx_fn>(lib, "AMAMRegReadEx");
}
AMAMRegWrite_fn* bindWrite(HINSTANCE lib) {
    return BindFromHandle<AMAMRegWrite_fn>(lib, "AMAMRegWrite");
}

}  // namespace

int GetSMTPParam(HINSTANCE hLibRPTSET, SMTPParam* smtp) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] hLibRPTSET=%p", hLibRPTSET);
    if (hLibRPTSET == nullptr || smtp == nullptr) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<[IN]Param error.");
        return -1;
    }
    AMAMRegReadEx_fn* read = bindRead(hLibRPTSET);
    if (read == nullptr) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<GetProcAddress(AMAMRegReadEx) failed.");
        return -1;
    }
    readText(read, "SMTPAuthUser", smtp->User);
    readPassword(read, "SMTPAuthPass", smtp->Password);
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<return 0.");
    return 0;
}

int PutSMTPParam(HINSTANCE hLibRPTSET, const SMTPParam* smtp) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] hLibRPTSET=%p", hLibRPTSET);
    if (hLibRPTSET == nullptr || smtp == nullptr) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<[IN]Param error.");
        return -1;
    }
    AMAMRegWrite_fn* write = bindWrite(hLibRPTSET);
    if (write == nullptr) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<GetProcAddress(AMAMRegWrite) failed.");
        return -1;
    }
    RecordWriter writer(write);
    writer.text("SMTPAuthUser", smtp->User);
    writer.password("SMTPAuthPass", smtp->Password);
    const int result = writer.finish();
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<return %d.", result);
    return result;
}

int GetPopParam(HINSTANCE hLibRPTSET, POPParam* pop, DWORD* waitTime) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] hLibRPTSET=%p", hLibRPTSET);
    if (hLibRPTSET == nullptr || pop == nullptr || waitTime == nullptr) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<[IN]Param error.");
        return -1;
    }
    AMAMRegReadEx_fn* read = bindRead(hLibRPTSET);
    if (read == nullptr) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<GetProcAddress(AMAMRegReadEx) failed.");
        return -1;
    }
    readText(read, "POPServer", pop->Server);
    readText(read, "POPUser", pop->User);
    readPassword(read, "POPPass", pop->Password);
    pop->Port = readDword(read, "POPPort", kDefaultPopPort);
    *waitTime = readDword(read, "POPTime", kDefaultPopWait);
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<return 0.");
    return 0;
}

int PutPopParam(HINSTANCE hLibRPTSET, const POPParam* pop, DWORD waitTime) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] hLibRPTSET=%p", hLibRPTSET);
    if (hLibRPTSET == nullptr || pop == nullptr) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<[IN]Param error.");
        return -1;
    }
    AMAMRegWrite_fn* write = bindWrite(hLibRPTSET);
    if (write == nullptr) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<GetProcAddress(AMAMRegWrite) failed.");
        return -1;
    }
    RecordWriter writer(write);
    writer.text("POPServer", pop->Server);
    writer.text("POPUser", pop->User);
    writer.password("POPPass", pop->Password);
    writer.dword("POPPort", pop->Port);
    writer.dword("POPTime", waitTime);
    const int result = writer.finish();
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<return %d.", result);
    return result;
}

void PopAndSMTPSet(HINSTANCE hLibRPTSET, int popFlag, int smtpFlag) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] hLibRPTSET=%p popFlag=%d smtpFlag=%d", hLibRPTSET, popFlag,
              smtpFlag);
    if (hLibRPTSET == nullptr) {
        ZOL_TRACE(TRACE_LEVEL_ERROR, "<[IN]param error.");
        return;
    }
    LoginDialog dialog(hLibRPTSET, popFlag == 1, smtpFlag == 1);
    dialog.run();
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<");
}
