// Mail-server logins of the remote report service's internet-mail delivery: the dialog for
// POP before SMTP and SMTP authentication, and what its OK does, without a screen. The stored
// values are read and written through the call layer (frame/rptset_calls.h: GetPopParam,
// PutPopParam, GetSMTPParam, PutSMTPParam).
#pragma once

#include <zolwin.h>

#include <functional>
#include <optional>
#include <vector>

#include "baseset/mailserver_input.h"
#include "records.h"
#include "regpaths.h"

// The modal dialog. A flag of 1 enables its half (POP before SMTP, SMTP authentication); any
// other value shows that half disabled and leaves its values alone.
void PopAndSMTPSet(HMODULE lib, int popFlag, int smtpFlag);

// What the dialog holds when OK is pressed: the halves it edits and their fields as typed.
struct LoginState {
    bool pop = false;
    bool smtp = false;
    mailinput::PopInput popInput;
    mailinput::SmtpInput smtpInput;
};

// The writes of OK: PutPopParam and PutSMTPParam on the screen (0 stored, -1 not).
struct LoginWriters {
    std::function<int(const POPParam&, DWORD wait)> pop;
    std::function<int(const SMTPParam&)> smtp;
};

// What OK did: the writes that failed, in order ("PutPopParam", "PutSMTPParam"), and the
// refusal that keeps the dialog open, if any. The POP half is checked and written first; a
// refused SMTP half leaves the POP half written.
struct LoginSave {
    std::vector<const char*> failedWrites;
    std::optional<mailinput::Refusal> refusal;
};
LoginSave SaveLogin(const LoginState& state, const mailinput::ServerCheck& checkServer,
                    const LoginWriters& write);
